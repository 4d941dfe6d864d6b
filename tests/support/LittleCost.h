#pragma once

#include "support/MemoryMeter.h"

#include <cstdint>
#include <ctime>
#include <gtest/gtest.h>

namespace qorl {

/// Expects of what runs while it lives no more than bad input may cost: 64 MB above the input's size, and 2 s
/// of processor time. That ceiling is hundreds of times what each such input takes: it compares no speeds and
/// depends on no clock on the wall, but work that grows with the square of the input, or with a number that
/// the input claims, goes through it. What shared libraries ask for by themselves is not counted.
class LittleCost {
public:
    explicit LittleCost(size_t inputBytes) : mostBytes_(static_cast<int64_t>(inputBytes) + (64 << 20)) {}
    LittleCost(const LittleCost&) = delete;
    ~LittleCost() {
        EXPECT_LT(meter_.bytes(), mostBytes_) << "bytes asked for";
        EXPECT_LT(std::clock() - begin_, 2 * CLOCKS_PER_SEC) << "units of processor time";
    }

private:
    int64_t mostBytes_;
    std::clock_t begin_ = std::clock();
    MemoryMeter meter_;
};

} // namespace qorl
