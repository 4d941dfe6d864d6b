#include "platform/Trash.h"

#include "platform/System.h"
#include "support/EnvironmentScope.h"
#include "support/TestPaths.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>
#include <sys/stat.h>
#include <unistd.h>

namespace qorl::platform {
namespace {

namespace fs = std::filesystem;

class TrashTest : public ::testing::Test {
protected:
    static void write(const fs::path& path, const std::string& text) {
        fs::create_directories(path.parent_path());
        std::ofstream(path) << text;
    }
    static std::string read(const fs::path& path) {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    static std::string list(const fs::path& folder) {
        std::vector<FolderEntry> entries;
        listFolder(folder.string(), entries);
        std::string all;
        for (const FolderEntry& entry : entries)
            all += entry.name + ' ';
        return all;
    }
    std::string canonical(const std::string& name) const {
        return (fs::canonical(home.path()) / name).string();
    }

    FileError trash(const std::string& name) const { return moveToTrash((home / name).string()); }

    qorl::testing::TemporaryFolder home;
    fs::path bin = home / "data/Trash";
    qorl::testing::EnvironmentScope environment{"XDG_DATA_HOME", (home / "data").c_str()};
};

TEST_F(TrashTest, PutsFilesIntoTheBinOfTheUserWithTheWayBack) {
    write(home / "a b\xC3\xA4%.txt", "one");
    ASSERT_FALSE(trash("a b\xC3\xA4%.txt"));
    EXPECT_EQ(read(bin / "files/a b\xC3\xA4%.txt"), "one");
    const std::string info = read(bin / "info/a b\xC3\xA4%.txt.trashinfo");
    const std::string start = "[Trash Info]\nPath=" + canonical("a%20b%C3%A4%25.txt") + "\nDeletionDate=";
    EXPECT_EQ(info.substr(0, start.size()), start);
    EXPECT_TRUE(std::regex_match(info.substr(start.size()),
                                 std::regex("\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\n")))
        << info;
    for (const fs::path& made : {bin, home / "data"}) {
        struct stat status = {};
        stat(made.c_str(), &status);
        EXPECT_EQ(status.st_mode & 0777, 0700U) << made;
    }
}

TEST_F(TrashTest, KeepsWhatLiesInTheBinAlready) {
    for (const char* text : {"one", "two", "three"}) {
        write(home / "song.wav", text);
        ASSERT_FALSE(trash("song.wav"));
    }
    write(bin / "files/left.txt", "without a description");
    write(home / "left.txt", "new");
    ASSERT_FALSE(trash("left.txt"));
    EXPECT_EQ(list(bin / "files"), "left.2.txt left.txt song.2.wav song.3.wav song.wav ");
    EXPECT_EQ(list(bin / "info"),
              "left.2.txt.trashinfo song.2.wav.trashinfo song.3.wav.trashinfo song.wav.trashinfo ");
    EXPECT_EQ(read(bin / "files/song.2.wav"), "two");
    const std::string longName(250, 'n');
    write(home / longName, "long");
    ASSERT_FALSE(trash(longName));
    EXPECT_EQ(read(bin / "files" / longName.substr(0, 230)), "long");
    EXPECT_NE(read(bin / "info" / (longName.substr(0, 230) + ".trashinfo")).find(longName + '\n'),
              std::string::npos);
    for (const char* text : {"first", "second"}) {
        write(home / (std::string(228, 's') + ".wav"), text);
        ASSERT_FALSE(moveToTrash((home / (std::string(228, 's') + ".wav")).string()));
    }
    const std::string second = std::string(226, 's') + ".2.wav";
    EXPECT_EQ(read(bin / "files" / second), "second");
    EXPECT_NE(read(bin / "info" / (second + ".trashinfo")), "") << "the way back";
}

TEST_F(TrashTest, TakesFoldersWholeAndLinksAlone) {
    write(home / "tree/sub/file", "x");
    write(home / "kept/file", "kept");
    fs::create_directory_symlink(home / "kept", home / "link");
    ASSERT_FALSE(trash("tree/"));
    fs::create_directory_symlink(home.path(), home / "above");
    for (const char* link : {"link", "above"})
        ASSERT_FALSE(trash(link)) << link;
    EXPECT_EQ(read(bin / "files/tree/sub/file"), "x");
    EXPECT_TRUE(fs::is_symlink(bin / "files/link"));
    EXPECT_EQ(read(home / "kept/file"), "kept");
}

TEST_F(TrashTest, LeavesWhatCannotGoThereWithoutATrace) {
    EXPECT_TRUE(trash("none").isNotFound());
    write(home / "file", "x");
    ASSERT_FALSE(trash("file"));
    for (const fs::path& inside : {bin, bin / "files/file", home / "data", home.path()})
        EXPECT_EQ(moveToTrash(inside.string()).code, EINVAL) << inside;
    EXPECT_EQ(list(bin / "info"), "file.trashinfo ");
    EXPECT_EQ(read(bin / "files/file"), "x");
}

TEST_F(TrashTest, MovesNoRootAndNoFolderByItsDots) {
    const fs::path earlier = fs::current_path();
    fs::create_directories(home / "here/sub");
    fs::current_path(home / "here/sub");
    for (const char* path : {"/", "//", "", ".", "..", "./", "../"})
        EXPECT_TRUE(moveToTrash(path)) << path;
    fs::current_path(earlier);
    EXPECT_TRUE(fs::exists(home / "here/sub"));
    EXPECT_EQ(list(bin / "files"), "");
}

dev_t volumeOf(const fs::path& path) {
    struct stat found = {};
    stat(path.c_str(), &found);
    return found.st_dev;
}

TEST_F(TrashTest, UsesTheBinOfAnotherVolume) {
    // Memory files are a volume of their own; where they are not, everything goes to the user's bin.
    const std::string name = "qorl-trash-" + std::to_string(getProcessId());
    const fs::path file = "/dev/shm/" + name;
    write(file, "x");
    ASSERT_FALSE(moveToTrash(file));
    const bool isOther = volumeOf(home.path()) != volumeOf("/dev/shm");
    fs::path top = "/dev/shm";
    while (top.has_relative_path() && volumeOf(top.parent_path()) == volumeOf(top))
        top = top.parent_path();
    const fs::path used = isOther ? top / (".Trash-" + std::to_string(geteuid())) : bin;
    EXPECT_EQ(read(used / "files" / name), "x");
    const std::string info = read(used / "info" / (name + ".trashinfo"));
    const fs::path stored = isOther ? file.lexically_relative(top) : file;
    EXPECT_NE(info.find("Path=" + stored.string() + '\n'), std::string::npos) << info;
    deleteFile(used / "files" / name);
    deleteFile(used / "info" / (name + ".trashinfo"));
    for (const char* part : {"files", "info", ""})
        deleteFolder(used / part);
}

} // namespace
} // namespace qorl::platform
