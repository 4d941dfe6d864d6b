#include "compare/Settings.h"

#include "compare/Measure.h"
#include "support/StoredSettings.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace qorl::bench {

namespace {

constexpr double nanosecondsPerMillisecond = 1e6;

std::vector<Setting> readSettings(const std::string& path) {
    std::vector<Setting> settings;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        const size_t key = line.find('\t') + 1;
        const size_t type = line.find('\t', key) + 1;
        const size_t value = line.find('\t', type) + 1;
        Setting setting{line.substr(0, key - 1), line.substr(key, type - key - 1), line[type],
                        line.substr(value)};
        readSetting(setting);
        settings.push_back(std::move(setting));
    }
    return settings;
}

} // namespace

void measureSettings(const std::string& documents) {
    const std::vector<Setting> settings = readSettings(documents + "/kv_100k.tsv");
    const StoredSettings store(documents + "/../qorl_settings");
    std::vector<double> saves;
    std::vector<double> loads;
    for (int round = 0; round < 3; ++round) {
        store.forget();
        bool isSaved = false;
        int64_t loaded = 0;
        saves.push_back(timeOf([&] { isSaved = store.save(settings); }));
        loads.push_back(timeOf([&] { loaded = store.load(settings); }));
        if (settings.empty() || !isSaved || loaded != static_cast<int64_t>(settings.size())) {
            std::fprintf(stderr, "compare: a setting got lost\n");
            std::exit(1);
        }
    }
    report("settings", "save_100k", median(saves) / nanosecondsPerMillisecond, "ms");
    report("settings", "load_100k", median(loads) / nanosecondsPerMillisecond, "ms");
}

} // namespace qorl::bench
