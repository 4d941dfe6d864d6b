#include "support/StoredSettings.h"

#include "persistence/defaults/FDefaultPool.h"
#include "persistence/files/FNPath.h"
#include "platform/Files.h"

#include <charconv>
#include <utility>

namespace qorl::bench {

namespace {

constexpr int64_t settingsOfGroup = 500;

FGlobalDefaultPool& pool() {
    return *FGlobalDefaultPool::instance();
}

/// The values of a group, looked up only where the group changes: settings come group by group.
FAttributes& valuesOf(const Setting& setting, const Setting*& last, FDefaults*& group) {
    if (!last || last->group != setting.group)
        group = pool().getGroup(ConstString(std::string_view(setting.group)));
    last = &setting;
    return group->values();
}

} // namespace

void readSetting(Setting& setting) {
    const char* end = setting.text.data() + setting.text.size();
    switch (setting.type) {
    case 'i': std::from_chars(setting.text.data(), end, setting.integer); break;
    case 'd': std::from_chars(setting.text.data(), end, setting.number); break;
    case 'b': setting.integer = setting.text == "true" ? 1 : 0; break;
    default: break;
    }
}

std::vector<Setting> makeSettings(int64_t count) {
    constexpr const char* words[] = {"border", "speed", "count", "offset",
                                     "reset",  "Title", "Open",  "<level>"};
    std::vector<Setting> settings;
    uint32_t random = 12345;
    for (int64_t i = 0; i < count; ++i) {
        random = random * 1664525 + 1013904223;
        Setting setting{"group" + std::to_string(i / settingsOfGroup),
                        words[random >> 29] + std::to_string(i),
                        "idbs" [random >> 20 & 3],
                        {}};
        const uint32_t value = random >> 8;
        switch (setting.type) {
        case 'i': setting.text = std::to_string(value); break;
        case 'd': setting.text = std::to_string(value % 10000) + '.' + std::to_string(value % 99991); break;
        case 'b': setting.text = value & 1 ? "true" : "false"; break;
        default: setting.text = std::string(words[value & 7]) + ' ' + words[value >> 3 & 7]; break;
        }
        readSetting(setting);
        settings.push_back(std::move(setting));
    }
    return settings;
}

StoredSettings::StoredSettings(std::string folder) : folder_(std::move(folder)) {
    FNPath::setKnownFolder(FNPath::userSettings, folder_);
    platform::deleteTree(folder_);
}

StoredSettings::~StoredSettings() {
    pool().clear();
    platform::deleteTree(folder_);
    FNPath::setKnownFolder(FNPath::userSettings, "");
}

void StoredSettings::begin() const {
    pool().clear();
    pool().load();
    pool().finishLoad();
}

bool StoredSettings::save(const std::vector<Setting>& settings) const {
    const Setting* last = nullptr;
    FDefaults* group = nullptr;
    for (const Setting& setting : settings) {
        FAttributes& values = valuesOf(setting, last, group);
        switch (setting.type) {
        case 'd': values.setFloat(setting.key, setting.number); break;
        case 's': values.setString(setting.key, ConstString(std::string_view(setting.text))); break;
        default: values.setInteger(setting.key, setting.integer); break;
        }
    }
    return pool().save(true);
}

int64_t StoredSettings::load(const std::vector<Setting>& settings) const {
    begin();
    const Setting* last = nullptr;
    FDefaults* group = nullptr;
    int64_t found = 0;
    for (const Setting& setting : settings) {
        const FAttributes& values = valuesOf(setting, last, group);
        switch (setting.type) {
        case 'd': found += values.getFloat(setting.key, -1) == setting.number; break;
        case 's':
            found += values.getString(setting.key) == ConstString(std::string_view(setting.text));
            break;
        default: found += values.getInteger(setting.key, -1) == setting.integer; break;
        }
    }
    return found;
}

void StoredSettings::forget() const {
    platform::deleteTree(folder_);
    begin();
}

} // namespace qorl::bench
