#include "persistence/files/FFileIterator.h"
#include "persistence/files/FNFileSystem.h"
#include "support/FailingAllocation.h"
#include "support/SettingsFolder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace qorl {
namespace {

/// What lies in a folder, with the contents of its files.
std::string picture(const std::filesystem::path& folder) {
    std::vector<std::string> lines;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        std::string line = entry.path().string().substr(folder.string().size());
        if (entry.is_regular_file()) {
            std::ifstream file(entry.path());
            line += '=' + std::string(std::istreambuf_iterator<char>(file), {});
        }
        lines.push_back(line);
    }
    std::ranges::sort(lines);
    std::string all;
    for (const std::string& line : lines)
        all += line + ' ';
    return all;
}

/// A folder with "a", "b" and "sub/c", and a name in it that is free.
struct Places {
    explicit Places(const SettingsFolder& folder)
        : a(folder.at("a")), b(folder.at("b")), sub(folder.at("sub", true)), n(folder.at("n")),
          inN(folder.at("n/d")) {}

    FNPath a;
    FNPath b;
    FNPath sub;
    FNPath n;
    FNPath inN;
};

using Files = FNFileSystem;

struct MemoryCase {
    const char* name;
    bool (*run)(Files& files, Places& at);
    const char* after; ///< what then lies there
};

constexpr const char* before = "a=A b=B sub sub/c=C ";

const MemoryCase memoryCases[] = {
    {"createFile",
     [](Files& files, Places& at) {
         return files.createFile(at.inN, FFileStream::writeAccess | FFileStream::createPath) != nullptr;
     },
     "a=A b=B n n/d= sub sub/c=C "},
    {"createFile in place of another",
     [](Files& files, Places& at) { return files.createFile(at.a, FFileStream::writeAccess) != nullptr; },
     "a= b=B sub sub/c=C "},
    {"openFile",
     [](Files& files, Places& at) { return files.openFile(at.a, FFileStream::readAccess) != nullptr; },
     before},
    {"deleteFile", [](Files& files, Places& at) { return files.deleteFile(at.a); }, "b=B sub sub/c=C "},
    {"rename", [](Files& files, Places& at) { return files.rename(at.a, "n"); }, "b=B n=A sub sub/c=C "},
    {"move", [](Files& files, Places& at) { return files.move(at.a, at.sub); }, "b=B sub sub/a=A sub/c=C "},
    {"copy", [](Files& files, Places& at) { return files.copy(at.a, at.b); }, "a=A b=A sub sub/c=C "},
    {"createParents", [](Files& files, Places& at) { return files.createParents(at.n, true); },
     "a=A b=B n sub sub/c=C "},
    {"deleteTree", [](Files& files, Places& at) { return files.deleteTree(at.a); }, "b=B sub sub/c=C "},
    {"getIterator",
     [](Files& files, Places& at) {
         const Ref<FFileIterator> entries = files.getIterator(at.sub);
         return entries && entries->next();
     },
     before},
    {"resolveShortcut",
     [](Files& files, Places& at) { return !files.resolveShortcut(at.a) && at.a.isValid(); }, before},
    {"getSystemFile", [](Files& files, Places& at) { return !files.getSystemFile(at.a); }, before},
    {"getVolumeInfo",
     [](Files& files, Places& at) { return files.getFreeSpace(at.a) > 0 && files.exists(at.b); }, before},
};

TEST(FNFileSystem, DoesAllOrNothingWithoutMemory) {
    auto& files = *FNFileSystem::instance();
    for (const MemoryCase& c : memoryCases) {
        SCOPED_TRACE(c.name);
        failEachAllocation([&](FailingAllocation& allocation) {
            const SettingsFolder folder;
            std::filesystem::create_directory(folder / "sub");
            for (const auto& [name, text] : {std::pair("a", "A"), {"b", "B"}, {"sub/c", "C"}})
                std::ofstream(folder / name) << text;
            Places places(folder);
            const bool isDone = allocation.during([&] { return c.run(files, places); });
            const std::string found = picture(folder / "");
            EXPECT_TRUE(isDone || allocation.hasFailed());
            if (isDone)
                EXPECT_EQ(found, c.after);
            else
                EXPECT_TRUE(found == before || found.starts_with("a=A b=B n ")) << found;
        });
    }
}

} // namespace
} // namespace qorl
