#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qorl::bench {

/// One value of a group. `type` is 'i', 'd', 'b' or 's'; `text` is the value as people write it.
struct Setting {
    std::string group;
    std::string key;
    char type = 's';
    std::string text;
    int64_t integer = 0;
    double number = 0;
};

/// Fills in what `text` says in the type of the setting.
void readSetting(Setting& setting);

/// `count` settings of all types in groups of 500, the same each time.
std::vector<Setting> makeSettings(int64_t count);

/// The defaults store in a folder of its own, which goes with the object.
class StoredSettings {
public:
    explicit StoredSettings(std::string folder);
    StoredSettings(const StoredSettings&) = delete;
    ~StoredSettings();

    /// A store that knows nothing and may be saved.
    void begin() const;
    /// Sets all of them and saves the store.
    bool save(const std::vector<Setting>& settings) const;
    /// Loads the store as a program does that starts. The number of settings that hold what was saved.
    int64_t load(const std::vector<Setting>& settings) const;
    /// So that the next save writes all of it.
    void forget() const;

private:
    std::string folder_;
};

} // namespace qorl::bench
