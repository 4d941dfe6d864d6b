#pragma once

#include <benchmark/benchmark.h>
#include <cstdint>
#include <initializer_list>

namespace qorl::bench {

using Function = void (*)(benchmark::State&);

/// Registers `ours` and `floor` as benchmarks, at each size of `sizes` if there are any. After the run the
/// ratio of their processor times is printed with `target` beside it, and the growth from one size to the
/// next.
bool addRatio(const char* oursName, Function ours, const char* floorName, Function floor, double target,
              std::initializer_list<int64_t> sizes = {});

} // namespace qorl::bench

/// `QORL_RATIO(ours, floor, 1.05);` or with sizes `QORL_RATIO(ours, floor, 1.05, 1000, 10000);`
#define QORL_RATIO(OURS, FLOOR, TARGET, ...)                                                                 \
    static const bool ratioOf_##OURS##_##FLOOR =                                                             \
        ::qorl::bench::addRatio(#OURS, OURS, #FLOOR, FLOOR, TARGET, {__VA_ARGS__})
