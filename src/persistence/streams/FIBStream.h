#pragma once

#include "persistence/streams/FStream.h"

namespace qorl {

/// The binary layer of another stream, as a whole stream again.
class FIBStream : public FStream {
    QORL_CLASS(FIBStream, FStream)

public:
    /// Takes over the byte order. `target` is not counted: the caller keeps it for as long as this stands.
    explicit FIBStream(FBinaryStream& target) : target_(target) { setByteOrder(target.byteOrder()); }
    /// Takes over the URL too, and passes `flush` on.
    explicit FIBStream(FStream& target) : target_(target), whole_(&target) { takeOver(target); }
    FIBStream(const FIBStream&) = delete;

    int64_t read(void* buffer, int64_t count) override { return target_.read(buffer, count); }
    int64_t write(const void* buffer, int64_t count) override { return target_.write(buffer, count); }
    int64_t seek(int64_t offset, int32_t mode) override { return target_.seek(offset, mode); }
    int64_t tell() override { return target_.tell(); }
    void rewind() override { seek(0, fromStart); }
    void flush() override {
        if (whole_)
            whole_->flush();
    }
    bool isValid() const override { return !whole_ || whole_->isValid(); }

private:
    FBinaryStream& target_;
    FStream* whole_ = nullptr;
};

} // namespace qorl
