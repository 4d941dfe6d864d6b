#include "platform/Files.h"

#include "platform/System.h"
#include "platform/Threads.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qorl::platform {
namespace {

std::span<const uint8_t> toBytes(std::string_view text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

class FilesTest : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = "/tmp/qorl-files-XXXXXX";
        folder = mkdtemp(pattern.data());
    }
    void TearDown() override { deleteTree(folder); }

    std::string at(const std::string& name) const { return folder + "/" + name; }

    std::string read(const std::string& name) const {
        std::vector<uint8_t> bytes;
        const FileError error = readWholeFile(at(name), bytes, 1 << 20);
        return error ? "error: " + error.getText() : std::string(bytes.begin(), bytes.end());
    }

    std::string list(const std::string& name = ".") const {
        std::vector<FolderEntry> entries;
        EXPECT_FALSE(listFolder(at(name), entries));
        std::string all;
        for (const FolderEntry& entry : entries)
            all += entry.name + (entry.kind == FileKind::folder ? "/ " : " ");
        return all;
    }

    std::string folder;
};

TEST_F(FilesTest, ReplacesAFileAsAWhole) {
    ASSERT_FALSE(replaceFile(at("settings"), toBytes("old")));
    chmod(at("settings").c_str(), 0640);
    File reader;
    ASSERT_FALSE(reader.open(at("settings"), openRead));

    ASSERT_FALSE(replaceFile(at("settings"), toBytes("new and longer")));
    EXPECT_EQ(read("settings"), "new and longer");
    char buffer[16] = {};
    EXPECT_EQ(reader.read(buffer, sizeof buffer), 3) << "whoever read the old file goes on reading it";
    EXPECT_STREQ(buffer, "old");
    EXPECT_EQ(list(), "settings ") << "nothing is left beside it";
    struct stat status = {};
    stat(at("settings").c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0640U);
}

TEST_F(FilesTest, KeepsTheOldFileWhenItCannotBeReplaced) {
    ASSERT_FALSE(createFolder(at("target")));
    EXPECT_EQ(replaceFile(at("target"), toBytes("x")).code, EISDIR);
    EXPECT_TRUE(replaceFile(at("missing/file"), toBytes("x")).isNotFound());
    EXPECT_EQ(list(), "target/ ");
}

TEST_F(FilesTest, ReplacesBehindALink) {
    ASSERT_FALSE(createFolder(at("real")));
    ASSERT_FALSE(replaceFile(at("real/file"), toBytes("one")));
    ASSERT_EQ(symlink("real/file", at("link").c_str()), 0);
    ASSERT_FALSE(replaceFile(at("link"), toBytes("two")));
    EXPECT_EQ(read("real/file"), "two");
    FileInfo info;
    getFileInfo(at("link"), info);
    EXPECT_TRUE(info.isLink) << "the link itself stays";
}

TEST_F(FilesTest, TellsApartWhyAnOpenFails) {
    ASSERT_FALSE(replaceFile(at("file"), toBytes("x")));
    ASSERT_FALSE(createFolder(at("folder")));
    struct Case {
        const char* name;
        const char* path;
        uint32_t mode;
        int32_t code;
    };
    const Case cases[] = {
        {"missing", "none", openRead, ENOENT},
        {"below a file", "file/x", openRead, ENOTDIR},
        {"a folder", "folder", openRead, EISDIR},
        {"exclusive on an existing one", "file", openWrite | openCreate | openExclusive, EEXIST},
        {"truncating a missing one", "none", openWrite | openTruncate, ENOENT},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        File file;
        const FileError error = file.open(at(c.path), c.mode);
        EXPECT_EQ(error.code, c.code) << error.getText();
        EXPECT_FALSE(file.isOpen());
    }
    EXPECT_EQ(list(), "file folder/ ");
}

TEST_F(FilesTest, ALockedFileIsNotCutByAnother) {
    ASSERT_FALSE(replaceFile(at("file"), toBytes("precious")));
    File first;
    File second;
    ASSERT_FALSE(first.open(at("file"), openRead | openWrite | openLocked));
    EXPECT_TRUE(second.open(at("file"), openWrite | openTruncate | openLocked));
    EXPECT_EQ(read("file"), "precious");
    first.close();
    EXPECT_FALSE(second.open(at("file"), openWrite | openTruncate | openLocked));
    EXPECT_EQ(read("file"), "");
}

TEST_F(FilesTest, SeeksCutsAndGrows) {
    File file;
    ASSERT_FALSE(file.open(at("file"), openRead | openWrite | openCreate));
    EXPECT_EQ(file.write("0123456789", 10), 10);
    EXPECT_EQ(file.seek(-3, SeekOrigin::end), 7);
    char buffer[8] = {};
    EXPECT_EQ(file.read(buffer, 8), 3);
    EXPECT_STREQ(buffer, "789");
    EXPECT_EQ(file.read(buffer, 8), 0) << "at the end";
    EXPECT_EQ(file.seek(-1, SeekOrigin::start), -1);
    EXPECT_FALSE(file.setSize(4));
    EXPECT_EQ(file.getSize(), 4);
    EXPECT_EQ(file.seek(6, SeekOrigin::start), 6);
    EXPECT_EQ(file.write("x", 1), 1);
    EXPECT_EQ(read("file"), std::string("0123\0\0x", 7));
}

TEST_F(FilesTest, ReportsAFailedWrite) {
    ASSERT_FALSE(replaceFile(at("file"), toBytes("x")));
    File file;
    ASSERT_FALSE(file.open(at("file"), openRead));
    FileError error;
    EXPECT_EQ(file.write("y", 1, &error), -1);
    EXPECT_EQ(error.code, EBADF);
    File full;
    if (!full.open("/dev/full", openWrite)) {
        EXPECT_EQ(full.write("y", 1, &error), -1);
        EXPECT_TRUE(error.isFull());
    }
}

TEST_F(FilesTest, RefusesFilesAboveALimit) {
    ASSERT_FALSE(replaceFile(at("file"), toBytes("0123456789")));
    std::vector<uint8_t> bytes;
    EXPECT_FALSE(readWholeFile(at("file"), bytes, 10));
    EXPECT_EQ(bytes.size(), 10U);
    EXPECT_EQ(readWholeFile(at("file"), bytes, 9).code, EFBIG);
    EXPECT_TRUE(bytes.empty());
    EXPECT_EQ(readWholeFile("/dev/zero", bytes, 100'000).code, EFBIG) << "a file without a size";
    EXPECT_FALSE(readWholeFile("/proc/self/cmdline", bytes, 100'000));
    EXPECT_FALSE(bytes.empty()) << "says that its size is 0";
}

TEST_F(FilesTest, DeletesTreesWithoutFollowingLinks) {
    ASSERT_FALSE(createFolders(at("tree/a/b/c")));
    ASSERT_FALSE(createFolder(at("outside")));
    ASSERT_FALSE(replaceFile(at("outside/keep"), toBytes("x")));
    ASSERT_FALSE(replaceFile(at("tree/a/file"), toBytes("x")));
    ASSERT_EQ(symlink(at("outside").c_str(), at("tree/a/link").c_str()), 0);
    EXPECT_TRUE(deleteFolder(at("tree")).isExisting()) << "not empty";
    EXPECT_FALSE(deleteTree(at("tree")));
    EXPECT_EQ(list(), "outside/ ");
    EXPECT_EQ(list("outside"), "keep ");
    EXPECT_TRUE(deleteTree(at("tree")).isNotFound());
}

TEST_F(FilesTest, CopiesWithTimesAndRightsAndLeavesNoHalfFile) {
    ASSERT_FALSE(replaceFile(at("from"), toBytes("contents")));
    chmod(at("from").c_str(), 0750);
    ASSERT_FALSE(setFileTimes(at("from"), 1'000'000'000'123, 1'100'000'000'000));
    ASSERT_FALSE(copyFile(at("from"), at("to")));
    EXPECT_EQ(read("to"), "contents");
    FileInfo info;
    getFileInfo(at("to"), info);
    EXPECT_EQ(info.written, 1'000'000'000'123);
    struct stat status = {};
    stat(at("to").c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0750U);

    EXPECT_TRUE(copyFile(at("from"), at("./from"))) << "onto itself";
    EXPECT_EQ(read("from"), "contents");
    EXPECT_TRUE(copyFile("/proc/self/mem", at("half")));
    EXPECT_FALSE(fileExists(at("half")));
}

TEST_F(FilesTest, MovesOntoExistingFiles) {
    ASSERT_FALSE(replaceFile(at("a"), toBytes("a")));
    ASSERT_FALSE(replaceFile(at("b"), toBytes("b")));
    ASSERT_FALSE(moveFile(at("a"), at("b")));
    EXPECT_EQ(read("b"), "a");
    EXPECT_EQ(list(), "b ");
}

TEST_F(FilesTest, MovesTreesAcrossVolumes) {
    // Memory files are a volume of their own; where they are not, the move is a plain one with the same
    // outcome.
    const std::string other = "/dev/shm/qorl-move-" + std::to_string(getProcessId());
    ASSERT_FALSE(createFolders(at("tree/sub")));
    ASSERT_FALSE(replaceFile(at("tree/sub/file"), toBytes("moved")));
    EXPECT_FALSE(moveFile(at("tree"), other));
    EXPECT_FALSE(folderExists(at("tree")));
    std::vector<uint8_t> bytes;
    EXPECT_FALSE(readWholeFile(other + "/sub/file", bytes, 100));
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "moved");
    deleteTree(other);
}

TEST_F(FilesTest, ResolvesPathsThatDoNotExistYet) {
    ASSERT_FALSE(createFolder(at("real")));
    ASSERT_EQ(symlink("real", at("link").c_str()), 0);
    const std::string base = getCanonicalPath(folder);
    const std::pair<std::string, std::string> cases[] = {
        {at("link"), base + "/real"},
        {at("link/new/file.xml"), base + "/real/new/file.xml"},
        {at("real/../real/./x"), base + "/real/x"},
        {at("real/"), base + "/real"},
        {"/", "/"},
    };
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(getCanonicalPath(path), expected) << path;
}

TEST_F(FilesTest, DescribesFiles) {
    FileInfo info;
    EXPECT_FALSE(getFileInfo(at("none"), info)) << "nothing there is no error";
    EXPECT_EQ(info.kind, FileKind::none);
    ASSERT_FALSE(replaceFile(at(".hidden"), toBytes("12345")));
    ASSERT_FALSE(getFileInfo(at(".hidden"), info));
    EXPECT_EQ(info.kind, FileKind::file);
    EXPECT_EQ(info.size, 5);
    EXPECT_TRUE(info.isHidden);
    ASSERT_FALSE(setReadOnly(at(".hidden"), true));
    struct stat status = {};
    stat(at(".hidden").c_str(), &status);
    EXPECT_EQ(status.st_mode & 0222, 0U);
    ASSERT_FALSE(setReadOnly(at(".hidden"), false));
    getFileInfo(at(".hidden"), info);
    EXPECT_FALSE(info.isReadOnly);

    std::string name;
    ASSERT_FALSE(createTemporaryFile(folder, "pre", name));
    EXPECT_TRUE(fileExists(name));
    EXPECT_EQ(name.find(folder + "/pre"), 0U);

    VolumeInfo volume;
    ASSERT_FALSE(getVolumeInfo(folder, volume));
    EXPECT_GT(volume.totalBytes, 0);
    EXPECT_GE(volume.totalBytes, volume.freeBytes);
    EXPECT_EQ(volume.root.front(), '/');
}

} // namespace
} // namespace qorl::platform
