#include "platform/Files.h"

#include "platform/System.h"
#include "platform/Threads.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

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
    void TearDown() override {
        for (const std::string& made : {folder, away})
            deleteTree(made);
    }

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

    FileError createLink(const std::string& target, const std::string& name) const {
        return {symlink(target.c_str(), at(name).c_str()) == 0 ? 0 : errno};
    }

    std::string linkAt(const std::string& name) const {
        char target[512] = {};
        return readlink(at(name).c_str(), target, sizeof target - 1) < 0 ? "no link" : target;
    }

    std::string folder;
    std::string away;
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

TEST_F(FilesTest, ReplacesBehindALinkWhoseTargetIsMissing) {
    ASSERT_FALSE(createFolder(at("real")));
    ASSERT_EQ(symlink("real/../real/file", at("link").c_str()), 0);
    ASSERT_EQ(symlink("ring", at("ring").c_str()), 0);
    EXPECT_FALSE(replaceFile(at("link"), toBytes("new")));
    EXPECT_EQ(read("real/file"), "new");
    EXPECT_TRUE(replaceFile(at("ring"), toBytes("x"))) << "a link to itself leads nowhere";
    EXPECT_EQ(list(), "link real/ ring ");
}

TEST_F(FilesTest, RefusesToReplaceWhatIsNoFile) {
    ASSERT_EQ(mkfifo(at("pipe").c_str(), 0600), 0);
    ASSERT_FALSE(replaceFile(at("file"), toBytes("x")));
    EXPECT_EQ(replaceFile(at("pipe"), toBytes("x")).code, ENOTSUP);
    EXPECT_EQ(copyFile(at("file"), at("pipe")).code, ENOTSUP);
    EXPECT_EQ(copyFile(at("pipe"), at("copy")).code, ENOTSUP) << "without waiting for a writer";
    EXPECT_EQ(list(), "file pipe ");
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

TEST_F(FilesTest, SharesAFileAsItsOpenersSay) {
    ASSERT_FALSE(replaceFile(at("file"), toBytes("x")));
    constexpr uint32_t r = openRead;
    constexpr uint32_t w = openRead | openWrite;
    constexpr uint32_t shareR = openSharesRead;
    constexpr uint32_t shareW = openSharesWrite;
    struct Case {
        uint32_t first;
        uint32_t second;
        bool isOpened;
    };
    const Case cases[] = {
        {r | shareR, r | shareR, true},
        {r | shareR, w | shareR, false},
        {r | shareR, w | shareR | shareW, false},
        {w | shareR, r | shareR, false},
        {w | shareR, r | shareR | shareW, true},
        {w | shareR, w | shareR | shareW, false},
        {w | shareR | shareW, w | shareR | shareW, true},
        {w | shareR | shareW, r | shareR | shareW, true},
        {r, r | shareR, false},
        {r | shareR, r, false},
        {w, w, false},
        {w, r | shareR | shareW, false},
        {w | shareR | shareW, r | shareR, false},
        {w | shareR | shareW, w, false},
        {r | shareR | shareW, r, false},
        {openWrite | shareW, openWrite | shareW, true},
        {openWrite | shareR, r | shareR | shareW, true},
        {openWrite, r | shareR | shareW, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "modes " << c.first << " and " << c.second);
        File first;
        File second;
        ASSERT_FALSE(first.open(at("file"), c.first | openLocked));
        EXPECT_EQ(!second.open(at("file"), c.second | openLocked), c.isOpened);
        File unguarded;
        EXPECT_FALSE(unguarded.open(at("file"), w)) << "locks are advisory";
        const uint32_t open = c.first | (c.isOpened ? c.second : 0);
        EXPECT_EQ(replaceFile(at("file"), toBytes("y")).isInUse(), (open & openWrite) != 0);
    }
}

TEST_F(FilesTest, LetsAllInThatShareEverythingAtOneMoment) {
    ASSERT_FALSE(replaceFile(at("file"), toBytes("x")));
    constexpr uint32_t all = openRead | openWrite | openSharesRead | openSharesWrite | openLocked;
    std::atomic<int> refused{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < 500; ++round) {
                File file;
                refused += file.open(at("file"), all) ? 1 : 0;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(refused, 0);
}

TEST_F(FilesTest, DoesNotWaitForAPipeToReadItWhole) {
    ASSERT_EQ(mkfifo(at("pipe").c_str(), 0600), 0);
    std::vector<uint8_t> bytes;
    EXPECT_TRUE(readWholeFile(at("pipe"), bytes, 100));
}

TEST_F(FilesTest, GoesThroughTheCachesWhereItCannotGoPastThem) {
    for (const std::string& place :
         {at("file"), "/dev/shm/qorl-uncached-" + std::to_string(getProcessId())}) {
        SCOPED_TRACE(place);
        ASSERT_FALSE(replaceFile(place, toBytes(std::string(10'000, 'x'))));
        File file;
        ASSERT_FALSE(file.open(place, openRead | openWrite | openUncached | openWriteThrough));
        alignas(4096) char buffer[4096];
        EXPECT_EQ(file.read(buffer, sizeof buffer), 4096);
        EXPECT_EQ(file.read(buffer + 1, 5), 5) << "at no multiple of anything";
        EXPECT_EQ(file.write("y", 1), 1);
        EXPECT_EQ(file.getPosition(), 4102);
        EXPECT_EQ(file.read(buffer, sizeof buffer), 4096);
        deleteFile(place);
    }
    const int32_t size = getSectorSize(folder);
    EXPECT_GT(size, 0);
    EXPECT_EQ(size & (size - 1), 0) << "a power of two";
    EXPECT_EQ(getSectorSize(at("none")), 0);
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
    EXPECT_EQ(readWholeFile("/proc/self/maps", bytes, 10).code, EFBIG) << "a file without a size";
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
    ASSERT_FALSE(createLink("outside", "link"));
    EXPECT_FALSE(deleteTree(at("link//"))) << "a link, whatever is behind its name";
    EXPECT_EQ(list(), "outside/ ");
    EXPECT_EQ(list("outside"), "keep ");
}

TEST_F(FilesTest, CopiesWithTimesAndRightsAndLeavesNoHalfFile) {
    ASSERT_FALSE(replaceFile(at("from"), toBytes("contents")));
    chmod(at("from").c_str(), 0750);
    const timespec times[2] = {{1'100'000'000, 0}, {1'000'000'000, 123'000'000}};
    ASSERT_EQ(utimensat(AT_FDCWD, at("from").c_str(), times, 0), 0);
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
    ASSERT_FALSE(createLink("to", "alias"));
    EXPECT_TRUE(copyFile(at("to"), at("alias"))) << "onto itself by a link";
    EXPECT_EQ(link(at("to").c_str(), at("twin").c_str()), 0);
    EXPECT_TRUE(copyFile(at("to"), at("twin"))) << "onto itself by another name";
    EXPECT_EQ(read("to"), "contents");
    EXPECT_TRUE(copyFile("/proc/self/mem", at("half")));
    EXPECT_EQ(list(), "alias from to twin ");
}

TEST_F(FilesTest, KeepsPrivateWhatItStores) {
    ASSERT_FALSE(replaceFile(at("private"), toBytes(std::string(600'000, 'x'))));
    chmod(at("private").c_str(), 0600);
    ASSERT_FALSE(replaceFile(at("old"), toBytes("old")));
    std::string rights;
    const auto look = [&](std::span<const uint8_t>, int64_t) {
        std::vector<FolderEntry> entries;
        listFolder(folder, entries);
        for (const FolderEntry& entry : entries) {
            struct stat status = {};
            stat(at(entry.name).c_str(), &status);
            if (entry.name.ends_with(".new") && (status.st_mode & 077) != 0)
                rights += entry.name + " can be read by others ";
        }
        return true;
    };
    ASSERT_FALSE(copyFile(at("private"), at("copy"), look));
    EXPECT_EQ(rights, "");
    const auto stop = [](std::span<const uint8_t>, int64_t done) { return done == 0; };
    EXPECT_EQ(copyFile(at("private"), at("old"), stop).code, ECANCELED);
    EXPECT_EQ(read("old"), "old") << "a copy that ends half way leaves the earlier file";
    EXPECT_EQ(list(), "copy old private ");
}

TEST_F(FilesTest, CopiesTreesWithoutRunningInCircles) {
    ASSERT_FALSE(createFolders(at("tree/sub")));
    ASSERT_FALSE(replaceFile(at("tree/file"), toBytes("contents")));
    ASSERT_FALSE(createLink("file", "tree/toFile"));
    ASSERT_FALSE(createLink("..", "tree/sub/up"));
    ASSERT_FALSE(createLink("nowhere", "tree/dangling"));
    chmod(at("tree/sub").c_str(), 0700);
    for (const char* inside : {"tree", "tree/sub", "tree/sub/up/tree/new", "tree/new/deeper"})
        EXPECT_EQ(copyTree(at("tree"), at(inside), FileLinks::keep).code, EINVAL) << inside;
    EXPECT_EQ(list("tree"), "dangling file sub/ toFile ");

    ASSERT_FALSE(copyTree(at("tree"), at("links"), FileLinks::keep));
    EXPECT_EQ(linkAt("links/toFile"), "file");
    ASSERT_FALSE(copyTree(at("tree"), at("new/copy"), FileLinks::copyContents));
    EXPECT_EQ(list("new/copy"), "dangling file sub/ toFile ");
    EXPECT_EQ(linkAt("new/copy/toFile"), "no link");
    EXPECT_EQ(read("new/copy/toFile"), "contents");
    EXPECT_EQ(linkAt("new/copy/dangling"), "nowhere");
    EXPECT_EQ(linkAt("new/copy/sub/up"), "..");
    struct stat status = {};
    stat(at("new/copy/sub").c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
}

TEST_F(FilesTest, DeletesTreesDeeperThanItMayOpenFiles) {
    ASSERT_FALSE(createFolder(at("deep")));
    const std::string before = getCurrentFolder();
    ASSERT_FALSE(setCurrentFolder(at("deep")));
    for (int i = 0; i < 200; ++i) {
        ASSERT_FALSE(createFolder("level"));
        ASSERT_FALSE(setCurrentFolder("level"));
    }
    ASSERT_FALSE(setCurrentFolder(before));
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit few = {48, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    const FileError error = deleteTree(at("deep"));
    setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_FALSE(error) << error.getText();
    EXPECT_EQ(list(), "");
}

TEST_F(FilesTest, MovesOntoExistingFiles) {
    ASSERT_FALSE(replaceFile(at("a"), toBytes("a")));
    ASSERT_FALSE(replaceFile(at("b"), toBytes("b")));
    ASSERT_FALSE(moveFile(at("a"), at("b")));
    EXPECT_EQ(read("b"), "a");
    EXPECT_EQ(list(), "b ");
}

TEST_F(FilesTest, MovesTreesAcrossVolumesWithTheirLinks) {
    // Memory files are a volume of their own; where they are not, the move is a plain one with the same
    // outcome.
    const std::string other = "/dev/shm/qorl-move-" + std::to_string(getProcessId());
    ASSERT_FALSE(createFolders(at("tree/sub")));
    ASSERT_FALSE(createFolder(at("outside")));
    ASSERT_FALSE(replaceFile(at("tree/sub/file"), toBytes("moved")));
    ASSERT_FALSE(replaceFile(at("outside/keep"), toBytes("kept")));
    ASSERT_FALSE(createLink(at("outside"), "tree/toFolder"));
    ASSERT_FALSE(createLink("..", "tree/sub/up"));
    ASSERT_FALSE(createLink("sub/file", "tree/toFile"));
    EXPECT_FALSE(moveFile(at("tree"), other));
    EXPECT_EQ(list(), "outside/ ");
    EXPECT_EQ(read("outside/keep"), "kept") << "what a link leads to is not moved";
    away = folder;
    folder = other;
    EXPECT_EQ(read("sub/file"), "moved");
    EXPECT_EQ(linkAt("sub/up"), "..");
    EXPECT_EQ(linkAt("toFile"), "sub/file");
    EXPECT_EQ(linkAt("toFolder"), away + "/outside");
    ASSERT_EQ(symlink("/dev", (away + "/dev").c_str()), 0);
    EXPECT_FALSE(moveFile(away + "/dev", at("dev"))) << "in a link lies nothing";
    EXPECT_EQ(linkAt("dev"), "/dev");
}

TEST_F(FilesTest, LeavesATreeWholeThatCannotBeMoved) {
    const std::string other = "/dev/shm/qorl-stays-" + std::to_string(getProcessId());
    ASSERT_FALSE(createFolder(at("tree")));
    ASSERT_FALSE(replaceFile(at("tree/file"), toBytes("x")));
    ASSERT_EQ(mkfifo(at("tree/pipe").c_str(), 0600), 0);
    // A plain move, on one volume, takes pipes along.
    const FileError error = moveFile(at("tree"), other);
    EXPECT_EQ(error.code, error ? ENOTSUP : 0);
    EXPECT_EQ(folderExists(other), !error);
    away = folder;
    folder = error ? at("tree") : other;
    EXPECT_EQ(list(), "file pipe ");
    const std::string copy = "/dev/shm/qorl-copy-" + std::to_string(getProcessId());
    chmod(folder.c_str(), 0500);
    // The system's administrator may move what nobody may.
    const FileError heldError = moveFile(at("file"), copy);
    EXPECT_EQ(fileExists(at("file")), !!heldError);
    EXPECT_EQ(fileExists(copy), !heldError);
    chmod(folder.c_str(), 0700);
    deleteFile(copy);
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
        {at("missing/../real/x"), base + "/real/x"},
        {at("none/"), base + "/none"},
        {at("none//new///file"), base + "/none/new/file"},
        {at("dangling/file"), base + "/real/none/file"},
        {"/", "/"},
    };
    ASSERT_FALSE(createLink("real/none", "dangling"));
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
    for (const char* dots : {".", ".."}) {
        getFileInfo(dots, info);
        EXPECT_FALSE(info.isHidden) << dots;
    }
    ASSERT_FALSE(setReadOnly(at(".hidden"), true));
    struct stat status = {};
    stat(at(".hidden").c_str(), &status);
    EXPECT_EQ(status.st_mode & 0222, 0U);
    getFileInfo(at(".hidden"), info);
    EXPECT_TRUE(info.isReadOnly) << "also for the administrator";
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
    VolumeInfo future;
    ASSERT_FALSE(getVolumeInfo(at("not/yet/there"), future));
    EXPECT_EQ(future.root, volume.root);
}

} // namespace
} // namespace qorl::platform
