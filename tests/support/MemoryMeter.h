#pragma once

#include <cstdint>

namespace qorl {

/// Counts the bytes that the calling thread asks for while it lives, as `FailingAllocation` counts
/// allocations: what bad input may cost. One at a time.
class MemoryMeter {
public:
    MemoryMeter();
    MemoryMeter(const MemoryMeter&) = delete;
    ~MemoryMeter();

    /// In all, whether they were given back or not.
    int64_t bytes() const { return bytes_; }

private:
    int64_t bytes_ = 0;
};

} // namespace qorl
