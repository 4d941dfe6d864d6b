#include "compare/Measure.h"

#include <cstdio>
#include <ctime>
#include <fstream>
#include <malloc.h>
#include <string>

namespace qorl::bench {

namespace {

/// A figure of /proc/self/status in kilobytes; -1 without it.
long statusOf(std::string_view key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(key))
            return std::strtol(line.c_str() + key.size() + 1, nullptr, 10);
    return -1;
}

} // namespace

double clockNow() {
    static const char* const asked = std::getenv("PB_CLOCK");
    static const clockid_t clock =
        asked && std::string_view(asked) == "cpu" ? CLOCK_PROCESS_CPUTIME_ID : CLOCK_MONOTONIC;
    timespec time;
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

PeakMemory::PeakMemory() {
    malloc_trim(0); // pages that were freed before must not hide what is used from here on
    std::ofstream("/proc/self/clear_refs") << '5';
    before_ = statusOf("VmRSS");
}

double PeakMemory::megabytes() const {
    return static_cast<double>(statusOf("VmHWM") - before_) / 1024;
}

void report(std::string_view workload, std::string_view metric, double value, std::string_view unit) {
    std::printf("%.*s qorl %.*s %.6g %.*s\n", static_cast<int>(workload.size()), workload.data(),
                static_cast<int>(metric.size()), metric.data(), value, static_cast<int>(unit.size()),
                unit.data());
    std::fflush(stdout);
}

} // namespace qorl::bench
