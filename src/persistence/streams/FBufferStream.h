#pragma once

#include "foundation/containers/CmBuffer.h"
#include "persistence/streams/FStream.h"

namespace qorl {

/// A buffer seen as a stream: what counts in the buffer is the stream's position, the buffer's capacity its
/// end. The caller keeps the buffer as well, and finds in use what was written.
class FBufferStream : public FStream {
    QORL_CLASS(FBufferStream, FStream)

public:
    /// Keeps a reference.
    explicit FBufferStream(Ref<CmBuffer> buffer) : buffer_(std::move(buffer)) {}

    /// 0 at the end, at the start then.
    int64_t read(void* buffer, int64_t count) override;
    /// All of it, or 0 when the buffer can't grow.
    int64_t write(const void* buffer, int64_t count) override;
    /// The buffer grows to hold the place. `fromEnd` goes back from the capacity by `offset`. A place before
    /// the start becomes the start. -1, and nothing moved, when the buffer can't grow so far.
    int64_t seek(int64_t offset, int32_t mode) override;
    int64_t tell() override { return buffer_ ? buffer_->used() : 0; }
    void rewind() override;
    bool isValid() const override { return buffer_ != nullptr; }

private:
    Ref<CmBuffer> buffer_;
};

} // namespace qorl
