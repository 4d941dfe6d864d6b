#pragma once

#include "persistence/streams/FStream.h"

namespace qorl {

/// Stores nothing and counts what is written: to learn how long something will be.
class FStreamCounter : public FStream {
    QORL_CLASS(FStreamCounter, FStream)

public:
    /// 0, and nothing changed.
    int64_t read(void*, int64_t) override { return 0; }
    int64_t write(const void* buffer, int64_t count) override;
    /// `fromEnd` goes back from the length by `offset`. A place below 0 becomes 0; one behind the length
    /// raises that.
    int64_t seek(int64_t offset, int32_t mode) override;
    int64_t tell() override { return position_; }
    /// Counts from 0 again.
    void rewind() override { length_ = position_ = 0; }

    int64_t length() const { return length_; }

private:
    int64_t length_ = 0;
    int64_t position_ = 0;
};

} // namespace qorl
