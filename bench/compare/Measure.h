#pragma once

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace qorl::bench {

/// Nanoseconds: of this process's processor time when the environment says PB_CLOCK=cpu, else of the wall
/// clock.
double clockNow();

/// Nanoseconds of one call.
template <typename Call>
double timeOf(Call&& call) {
    const double start = clockNow();
    call();
    return clockNow() - start;
}

/// Of at least one.
double median(std::vector<double> values);

template <typename Call>
double medianOf(int repetitions, Call&& call) {
    std::vector<double> values;
    for (int i = 0; i < repetitions; ++i)
        values.push_back(timeOf(call));
    return median(std::move(values));
}

/// Peak resident memory since the object was made, above what was resident then.
class PeakMemory {
public:
    PeakMemory();
    double megabytes() const;

private:
    long before_;
};

/// A line of the protocol: `workload qorl metric value unit`.
void report(std::string_view workload, std::string_view metric, double value, std::string_view unit);

} // namespace qorl::bench
