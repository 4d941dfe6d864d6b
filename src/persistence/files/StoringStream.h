#pragma once

#include "persistence/streams/FStream.h"
#include "platform/Files.h"

namespace qorl {

/// The new file of a save, which outlives it. It remembers the first failure of its bytes, so that those that
/// got lost fail the save also when nobody looked at the results.
class StoringStream : public FStream, public ISizeableStream {
    QORL_CLASS(StoringStream, FStream)
    QORL_FACES(StoringStream, FStream, ISizeableStream)

public:
    explicit StoringStream(platform::File& file) : file_(file) {}

    int64_t read(void* buffer, int64_t count) override;
    int64_t write(const void* buffer, int64_t count) override;
    int64_t seek(int64_t offset, int32_t mode) override;
    int64_t tell() override { return file_.getPosition(); }
    void rewind() override { seek(0, fromStart); }
    bool isValid() const override { return !error_; }
    Result getStreamSize(int64_t& size) override;
    Result setStreamSize(int64_t size) override;

    const platform::FileError& error() const { return error_; }

private:
    platform::File& file_;
    platform::FileError error_;
};

} // namespace qorl
