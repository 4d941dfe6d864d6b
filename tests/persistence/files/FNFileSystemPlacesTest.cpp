#include "persistence/files/FNFileSystem.h"
#include "support/EnvironmentScope.h"
#include "support/FailingAllocation.h"
#include "support/SettingsFolder.h"

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace qorl {
namespace {

namespace fs = std::filesystem;

FNFileSystem& files() {
    return *FNFileSystem::instance();
}

TEST(FNFileSystem, FindsNamesWrittenBeforeUtf8) {
    const SettingsFolder folder;
    folder.write("\xDCz.wav", "old");
    folder.write("\xC3\xA4", "not this one");
    FNPath path = folder.at("\xC3\x9Cz.wav");
    ASSERT_NE(files().openFile(path, FFileStream::readAccess), nullptr);
    EXPECT_EQ(path.getName().view16(), u"\xDCDCz.wav") << "the path takes the spelling";
    FPath url{ConstString(std::string_view("file://" + (folder / "%C3%9Cz.wav")))};
    EXPECT_NE(files().openFile(url, FFileStream::readAccess), nullptr) << "a name in the form of URLs";
    EXPECT_TRUE(files().exists(url)) << url.toUtf8();
    for (const char* name : {"\xC3\x83\xC2\xA4", "\xCE\xA9", "plain"}) {
        FNPath missing = folder.at(name);
        int32_t error = 0;
        EXPECT_EQ(files().openFile(missing, FFileStream::readAccess, &error), nullptr) << name;
        EXPECT_EQ(error, ENOENT);
        EXPECT_EQ(missing.toUtf8(), folder / name);
    }
}

TEST(FNFileSystem, MakesTemporaryFilesOfTheirOwn) {
    const SettingsFolder folder;
    FNPath::setKnownFolder(FNPath::temporary, folder / "");
    FNPath first;
    FNPath second;
    const Ref<FStream> one = files().createTempFile(first);
    const Ref<FStream> other = files().createTempFile(second);
    ASSERT_TRUE(one && other);
    EXPECT_NE(first.toUtf8(), second.toUtf8());
    EXPECT_TRUE(one->writeInt32(1));
    one->rewind();
    int32_t value = 0;
    EXPECT_TRUE(one->readInt32(value));
    EXPECT_EQ(fs::status(first.toUtf8()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    FNPath::setKnownFolder(FNPath::temporary, folder / "missing");
    EXPECT_EQ(files().createTempFile(first), nullptr);
    EXPECT_TRUE(first.toUtf8().starts_with(folder / "qorl")) << "left as it was";
    FNPath::setKnownFolder(FNPath::temporary, "");
}

TEST(FNFileSystem, LeavesNoTemporaryFileWithoutMemory) {
    const SettingsFolder folder;
    std::filesystem::create_directory(folder / "temporary");
    FNPath::setKnownFolder(FNPath::temporary, folder / "temporary");
    FNFileSystem& disk = files();
    failEachAllocation([&](FailingAllocation& allocation) {
        FNPath path;
        const Ref<FStream> stream = allocation.during([&] { return disk.createTempFile(path); });
        EXPECT_EQ(std::filesystem::is_empty(folder / "temporary"), stream == nullptr);
        if (stream)
            disk.deleteFile(path);
    });
    FNPath::setKnownFolder(FNPath::temporary, "");
}

TEST(FNFileSystem, PutsFilesIntoTheBin) {
    const SettingsFolder folder;
    const testing::EnvironmentScope data("XDG_DATA_HOME", (folder / "data").c_str());
    folder.write("song.wav", "x");
    folder.write("songs/one.wav", "y");
    EXPECT_TRUE(files().trash(folder.at("song.wav")));
    EXPECT_TRUE(files().trash(folder.at("songs")));
    EXPECT_FALSE(files().trash(folder.at("song.wav"))) << "it is gone";
    EXPECT_FALSE(files().trash(FNPath()));
    EXPECT_EQ(folder.read("data/Trash/files/song.wav"), "x");
    EXPECT_EQ(folder.read("data/Trash/files/songs/one.wav"), "y");
}

TEST(FNFileSystem, FindsFilesOfTheSystem) {
    const SettingsFolder folder;
    FNPath::setKnownFolder(FNPath::system, folder / "system");
    folder.write("system/colors/a.xml", "x");
    FNPath path("colors/a.xml");
    EXPECT_TRUE(files().getSystemFile(path));
    EXPECT_EQ(path.toUtf8(), folder / "system/colors/a.xml");
    for (const char* missing : {"colors", "colors/none.xml", "/etc/passwd", "", "../system/colors/a.xml"}) {
        FNPath other(missing);
        EXPECT_FALSE(files().getSystemFile(other)) << missing;
        EXPECT_EQ(other.toUtf8(), missing);
    }
    FNPath::setKnownFolder(FNPath::system, "");
}

TEST(FNFileSystem, KnowsItsVolumes) {
    const SettingsFolder folder;
    EXPECT_GT(files().getFreeSpace(folder.at("not/yet/there")), 0);
    EXPECT_EQ(files().getFreeSpace(FNPath()), -1);
    FVolumeInfo info;
    ASSERT_TRUE(files().getVolumeInfo(folder.at(""), info));
    String name;
    folder.at("").getDriveName(name);
    EXPECT_EQ(name.toUtf8(), info.name.toUtf8());
    EXPECT_FALSE(name.isEmpty());
    const auto drives = files().getDrives();
    const auto names = files().getRootNames();
    EXPECT_EQ(drives.size(), names.size());
    for (const FNPath& drive : drives)
        EXPECT_TRUE(files().exists(drive)) << drive.toUtf8();
    folder.write("locked", "x");
    const FNPath locked = folder.at("locked");
    EXPECT_FALSE(files().isWriteProtected(locked));
    EXPECT_TRUE(files().setReadOnly(locked, true));
    EXPECT_TRUE(files().isReadOnly(locked));
    EXPECT_TRUE(files().isWriteProtected(locked));
    EXPECT_TRUE(files().setReadOnly(locked, false));
    EXPECT_FALSE(files().isReadOnly(locked));
    EXPECT_TRUE(files().isWriteProtected(FNPath("/proc/version")));
    constexpr int64_t tera = int64_t{1} << 40;
    for (const auto& [bytes, expected] : {std::pair(int64_t{0}, "0.000 B"),
                                          {1023, "1023.000 B"},
                                          {1536, "1.500 KB"},
                                          {3 * tera, "3.000 TB"},
                                          {2048 * tera, "2048.000 TB"}}) {
        String text;
        FNFileSystem::formatSize(bytes, text);
        EXPECT_EQ(text.toUtf8(), expected);
    }
}

} // namespace
} // namespace qorl
