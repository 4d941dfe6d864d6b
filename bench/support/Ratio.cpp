#include "support/Ratio.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace qorl::bench {

namespace {

struct Ratio {
    std::string ours;
    std::string floor;
    double target;
    std::vector<int64_t> sizes;
};

std::vector<Ratio>& ratios() {
    static std::vector<Ratio> list;
    return list;
}

void registerOnce(const std::string& name, Function function, const std::vector<int64_t>& sizes) {
    static std::set<std::string> known;
    const auto add = [&](std::string full) -> benchmark::internal::Benchmark* {
        return known.insert(std::move(full)).second ? benchmark::RegisterBenchmark(name.c_str(), function)
                                                    : nullptr;
    };
    if (sizes.empty())
        add(name);
    for (const int64_t size : sizes) {
        if (auto* benchmark = add(name + "/" + std::to_string(size)))
            benchmark->Arg(size);
    }
}

/// Keeps the best processor time of each benchmark, in nanoseconds a round. Of repeated benchmarks only the
/// aggregates are printed.
class BestTimes : public benchmark::ConsoleReporter {
public:
    BestTimes() : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const auto& run : runs) {
            if (run.error_occurred || run.run_type != Run::RT_Iteration || run.iterations == 0)
                continue;
            const double time = run.cpu_accumulated_time / static_cast<double>(run.iterations) * 1e9;
            const auto [place, isNew] = times_.try_emplace(run.run_name.function_name + suffix(run), time);
            if (!isNew)
                place->second = std::min(place->second, time);
        }
        const bool areRepetitions =
            !runs.empty() && runs.front().run_type == Run::RT_Iteration && runs.front().repetitions > 1;
        if (!areRepetitions)
            ConsoleReporter::ReportRuns(runs);
    }

    /// 0 when the benchmark did not run.
    double get(const std::string& name) const {
        const auto found = times_.find(name);
        return found == times_.end() ? 0 : found->second;
    }

private:
    static std::string suffix(const Run& run) {
        return run.run_name.args.empty() ? std::string() : "/" + run.run_name.args;
    }

    std::map<std::string, double> times_;
};

struct Row {
    std::string name;
    std::string floor;
    double ours;
    double base;
    double target;
    double growth; ///< against the row of the next smaller size; 0 without one
};

std::vector<Row> collect(const BestTimes& times) {
    std::vector<Row> rows;
    for (const auto& ratio : ratios()) {
        double smaller = 0;
        const auto add = [&](const std::string& suffix) {
            const double ours = times.get(ratio.ours + suffix);
            const double base = times.get(ratio.floor + suffix);
            if (ours > 0 && base > 0)
                rows.push_back({ratio.ours + suffix, ratio.floor + suffix, ours, base, ratio.target,
                                smaller > 0 ? ours / smaller : 0});
            smaller = ours;
        };
        if (ratio.sizes.empty())
            add("");
        for (const int64_t size : ratio.sizes)
            add("/" + std::to_string(size));
    }
    return rows;
}

void print(const std::vector<Row>& rows) {
    if (rows.empty())
        return;
    std::printf("\n%-40s %-32s %10s %8s %8s\n", "ratio of processor time", "to", "ratio", "target", "growth");
    for (const auto& row : rows) {
        std::printf("%-40s %-32s %10.3f %8.3f ", row.name.c_str(), row.floor.c_str(), row.ours / row.base,
                    row.target);
        if (row.growth > 0)
            std::printf("%8.2f", row.growth);
        else
            std::printf("%8s", "");
        std::printf("%s\n", row.ours / row.base > row.target ? "  over the target" : "");
    }
}

bool write(const std::vector<Row>& rows, const std::string& path) {
    std::ofstream out(path);
    out << "[";
    const char* separator = "\n";
    for (const auto& row : rows) {
        out << separator << R"(  {"name": ")" << row.name << R"(", "floor": ")" << row.floor
            << R"(", "nanoseconds": )" << row.ours << R"(, "floor_nanoseconds": )" << row.base
            << R"(, "ratio": )" << row.ours / row.base << R"(, "target": )" << row.target;
        if (row.growth > 0)
            out << R"(, "growth": )" << row.growth;
        out << "}";
        separator = ",\n";
    }
    out << "\n]\n";
    return out.good();
}

/// Takes `--ratios=FILE` out of the arguments; the library of benchmarks would refuse it.
std::string takeRatioFile(int& argc, char** argv) {
    constexpr std::string_view option = "--ratios=";
    std::string file;
    char** const end = std::remove_if(argv + 1, argv + argc, [&](const char* argument) {
        if (!std::string_view(argument).starts_with(option))
            return false;
        file = argument + option.size();
        return true;
    });
    argc = static_cast<int>(end - argv);
    return file;
}

int runAll(int argc, char** argv) {
    const std::string file = takeRatioFile(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    BestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    benchmark::Shutdown();
    const auto rows = collect(times);
    print(rows);
    if (!file.empty() && !write(rows, file)) {
        std::fprintf(stderr, "%s: cannot be written\n", file.c_str());
        return 1;
    }
    return 0;
}

} // namespace

bool addRatio(const char* oursName, Function ours, const char* floorName, Function floor, double target,
              std::initializer_list<int64_t> sizes) {
    const std::vector<int64_t> list(sizes);
    registerOnce(oursName, ours, list);
    registerOnce(floorName, floor, list);
    ratios().push_back({oursName, floorName, target, list});
    return true;
}

} // namespace qorl::bench

int main(int argc, char** argv) {
    return qorl::bench::runAll(argc, argv);
}
