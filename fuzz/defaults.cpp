#include "persistence/defaults/FDefaultPool.h"
#include "persistence/files/FNPath.h"
#include "platform/Files.h"
#include "platform/System.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <stdlib.h>
#include <string>
#include <vector>

namespace {

using namespace qorl;

/// Bits of the first byte: which file of the store holds the rest of the input.
enum : uint8_t { folderMode = 1, earlierName = 2, autoSaverFile = 4, withOld = 8 };

class Saver : public AutoSaver {
    QORL_CLASS(Saver, AutoSaver)

public:
    bool storeAttributes(FAttributes* attributes) override {
        *attributes = held;
        return true;
    }
    bool restoreAttributes(FAttributes* attributes) override {
        held = *attributes;
        return true;
    }

    FAttributes held;
};

void require(bool condition) {
    if (!condition)
        std::abort();
}

/// As a program that starts. What the load found.
bool start(uint8_t mode) {
    FGlobalDefaultPool& pool = *FGlobalDefaultPool::instance();
    pool.clear();
    if (mode & folderMode)
        pool.setFolderMode();
    const bool isLoaded = pool.load();
    pool.finishLoad();
    return isLoaded;
}

std::string fileOf(uint8_t mode) {
    if (!(mode & folderMode))
        return "Defaults.xml";
    if (mode & autoSaverFile)
        return "Defaults/AutoSaver.xml";
    // MD5 of "Group", in 8 bits and in UTF-16
    return mode & earlierName ? "Defaults/03937134CEDAB9078BE39A77EE3A48A0.xml"
                              : "Defaults/782743F1529D5384B5C3C8AFE48ECBC4.xml";
}

/// A folder that goes when the program ends.
struct Folder {
    Folder() : path((std::filesystem::temp_directory_path() / "qorl-fuzz-XXXXXX").string()) {
        require(mkdtemp(path.data()) != nullptr);
    }
    Folder(const Folder&) = delete;
    ~Folder() { platform::deleteTree(path); }

    std::string path;
};

bool holds(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::vector<uint8_t> found;
    return !platform::readWholeFile(path, found, static_cast<int64_t>(bytes.size()) + 1) && found == bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Folder folder;
    if (size == 0)
        return 0;
    platform::setDebugOutput([](std::string_view, void*) {}, nullptr);
    const uint8_t mode = data[0];
    const std::vector<uint8_t> bytes(data + 1, data + size);
    const std::string settings = folder.path + "/settings";
    platform::deleteTree(settings);
    FNPath::setKnownFolder(FNPath::userSettings, settings);
    const std::string path = settings + '/' + fileOf(mode);
    platform::createFolders(path.substr(0, path.find_last_of('/')));
    require(!platform::replaceFile(path, bytes));
    if (mode & withOld)
        require(!platform::replaceFile(std::string(path).insert(path.size() - 4, "_old"), bytes));

    FGlobalDefaultPool& pool = *FGlobalDefaultPool::instance();
    const Saver saver;
    const bool isLoaded = start(mode);
    FDefaults* group = pool.getGroup("Group");
    if (group)
        group->values().setInteger("fuzzed", 42);
    require(pool.save(true));
    // A store that could not be read is put away as it was.
    if (!isLoaded && !(mode & folderMode))
        require(holds(settings + "/Defaults (Damaged).xml", bytes));
    require(start(mode));
    FDefaults* again = pool.getGroup("Group");
    require(!group || (again && again->values().getInteger("fuzzed") == 42));
    pool.clear();
    return 0;
}
