#pragma once

#include "persistence/files/FNPath.h"
#include "platform/Files.h"
#include "support/TestPaths.h"

#include <string>
#include <vector>

namespace qorl {

/// A folder of its own for each test, in which the user's settings ("settings") and the shared data
/// ("shared") lie while it stands.
class SettingsFolder {
public:
    SettingsFolder() {
        FNPath::setKnownFolder(FNPath::userSettings, *this / "settings");
        FNPath::setKnownFolder(FNPath::sharedData, *this / "shared");
    }
    SettingsFolder(const SettingsFolder&) = delete;
    ~SettingsFolder() {
        FNPath::setKnownFolder(FNPath::userSettings, "");
        FNPath::setKnownFolder(FNPath::sharedData, "");
    }

    std::string operator/(const std::string& name) const { return (folder_ / name).string(); }

    FNPath at(const std::string& name, bool isFolder = false) const {
        return FNPath(std::string_view(*this / name), isFolder);
    }

    void write(const std::string& name, const std::string& bytes) const {
        const std::string path = *this / name;
        platform::createFolders(path.substr(0, path.rfind('/')));
        platform::replaceFile(path, {reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
    }
    std::string read(const std::string& name) const {
        std::vector<uint8_t> bytes;
        platform::readWholeFile(*this / name, bytes, 1 << 20);
        return {bytes.begin(), bytes.end()};
    }
    bool has(const std::string& name) const {
        return platform::fileExists(*this / name) || platform::folderExists(*this / name);
    }

private:
    testing::TemporaryFolder folder_;
};

} // namespace qorl
