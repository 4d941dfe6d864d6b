#pragma once

#include <cstdint>

namespace qorl {

/// What long stream operations report to. Not owned by the stream; the caller keeps it alive while attached.
class StreamProgress {
public:
    /// Asked before each transfer; true makes it return -1 without touching the file.
    virtual bool isCancelled(const void* buffer, int64_t count) = 0;
    virtual int64_t position() const = 0;
    virtual void setPosition(int64_t position) = 0;
    virtual int64_t total() const = 0;

protected:
    ~StreamProgress() = default;
};

} // namespace qorl
