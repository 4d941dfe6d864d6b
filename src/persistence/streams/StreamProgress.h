#pragma once

#include <cstdint>

namespace qorl {

class ConstString;

/// What long stream operations report to. Not owned by the stream; the caller keeps it alive while attached.
class StreamProgress {
public:
    /// Asked before each transfer; true makes it return -1 without touching the file.
    virtual bool isCancelled(const void* buffer, int64_t count) = 0;
    virtual int64_t position() const = 0;
    virtual void setPosition(int64_t position) = 0;
    /// What there is to do, in the unit of the work: bytes or files.
    virtual int64_t total() const = 0;
    virtual void setTotal(int64_t) {}
    /// What has been done, from 0 to 1.
    virtual void report(double) {}
    /// What is being done, for the user.
    virtual void setText(const ConstString&) {}

protected:
    ~StreamProgress() = default;
};

} // namespace qorl
