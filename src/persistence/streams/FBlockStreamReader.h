#pragma once

#include "foundation/containers/CmBuffer.h"
#include "persistence/streams/FStream.h"

namespace qorl {

/// Reads another stream from front to back in whole blocks. Large reads go straight to the caller; the rest
/// of a block that was begun is kept. Nobody else moves the inner stream meanwhile.
class FBlockStreamReader : public FStream {
    QORL_CLASS(FBlockStreamReader, FStream)

public:
    /// Keeps a reference on `inner`, takes over its URL and byte order, and begins at its position.
    /// `blockSize` in bytes; below 1 it is 4096.
    FBlockStreamReader(Ref<FStream> inner, int32_t blockSize);
    FBlockStreamReader(const FBlockStreamReader&) = delete;

    /// What came before the inner stream had or gave no more; whether it failed or ended there is told by
    /// `isValid`. -1 without a block.
    int64_t read(void* buffer, int64_t count) override;
    /// 0: it only reads.
    int64_t write(const void*, int64_t) override { return 0; }
    /// -1, and the place stays, for `fromEnd`, for a place before the start, and when the inner stream fails.
    /// Where that one can't be brought back, `isValid` is false, and what is read comes from elsewhere until
    /// a move works or `flush` takes its place over.
    int64_t seek(int64_t offset, int32_t mode) override;
    int64_t tell() override { return position_; }
    void rewind() override { seek(0, fromStart); }
    /// Forgets the block and goes on where the inner stream stands.
    void flush() override;
    /// False without a block and once the inner stream failed, until that could be moved to another place.
    bool isValid() const override { return block_ && !hasFailed_ && inner_->isValid(); }

private:
    int64_t takeKept(char* buffer, int64_t count);
    void forget();

    Ref<FStream> inner_;
    Ref<CmBuffer> block_;
    int64_t position_ = 0;
    /// What of the block was handed out, and how much is left behind that.
    int32_t blockOffset_ = 0;
    int32_t remaining_ = 0;
    bool hasFailed_ = false;
};

} // namespace qorl
