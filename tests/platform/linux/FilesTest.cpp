#include "platform/Files.h"

#include "platform/System.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <initializer_list>
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

    /// Makes what each entry describes, with the folders above: "folder/", "file=contents", "link -> target"
    /// or "pipe|".
    void make(std::initializer_list<std::string> entries) const {
        for (const std::string& entry : entries) {
            const size_t arrow = entry.find(" -> ");
            const size_t end = std::min(entry.find_first_of("=|"), arrow);
            const std::string path = at(entry.substr(0, end));
            ASSERT_FALSE(createFolders(path.substr(0, path.rfind('/')))) << entry;
            if (end == std::string::npos)
                continue;
            const bool isMade = end == arrow        ? symlink(entry.c_str() + end + 4, path.c_str()) == 0
                                : entry[end] == '|' ? mkfifo(path.c_str(), 0600) == 0
                                                    : !replaceFile(path, toBytes(entry.substr(end + 1)));
            ASSERT_TRUE(isMade) << entry;
        }
    }

    mode_t rightsOf(const std::string& name) const {
        struct stat status = {};
        stat(at(name).c_str(), &status);
        return status.st_mode & 0777;
    }

    std::string linkAt(const std::string& name) const {
        char target[512] = {};
        return readlink(at(name).c_str(), target, sizeof target - 1) < 0 ? "no link" : target;
    }

    std::string folder;
    std::string away;
};

TEST_F(FilesTest, ReplacesAFileAsAWhole) {
    make({"settings=old"});
    chmod(at("settings").c_str(), 0640);
    File reader;
    ASSERT_FALSE(reader.open(at("settings"), openRead));

    ASSERT_FALSE(replaceFile(at("settings"), toBytes("new and longer")));
    EXPECT_EQ(read("settings"), "new and longer");
    char buffer[16] = {};
    EXPECT_EQ(reader.read(buffer, sizeof buffer), 3) << "whoever read the old file goes on reading it";
    EXPECT_STREQ(buffer, "old");
    EXPECT_EQ(list(), "settings ") << "nothing is left beside it";
    EXPECT_EQ(rightsOf("settings"), 0640U);
}

TEST_F(FilesTest, KeepsTheOldFileWhenItCannotBeReplaced) {
    make({"target/"});
    EXPECT_EQ(replaceFile(at("target"), toBytes("x")).code, EISDIR);
    EXPECT_TRUE(replaceFile(at("missing/file"), toBytes("x")).isNotFound());
    EXPECT_EQ(list(), "target/ ");
}

TEST_F(FilesTest, ReplacesBehindALinkWhetherItsTargetIsThereOrNot) {
    make({"real/file=one", "link -> real/file", "missing -> real/../real/new", "ring -> ring"});
    ASSERT_FALSE(replaceFile(at("link"), toBytes("two")));
    EXPECT_EQ(read("real/file"), "two");
    EXPECT_FALSE(replaceFile(at("missing"), toBytes("three")));
    EXPECT_EQ(read("real/new"), "three");
    EXPECT_TRUE(replaceFile(at("ring"), toBytes("x"))) << "a link to itself leads nowhere";
    EXPECT_EQ(list(), "link missing real/ ring ");
    FileInfo info;
    getFileInfo(at("link"), info);
    EXPECT_TRUE(info.isLink) << "the link itself stays";
}

TEST_F(FilesTest, WaitsForNobodyAtAPipeAndReplacesNone) {
    make({"pipe|", "file=x"});
    EXPECT_EQ(replaceFile(at("pipe"), toBytes("x")).code, ENOTSUP);
    EXPECT_EQ(copyFile(at("file"), at("pipe")).code, ENOTSUP);
    EXPECT_EQ(copyFile(at("pipe"), at("copy")).code, ENOTSUP);
    std::vector<uint8_t> bytes;
    EXPECT_TRUE(readWholeFile(at("pipe"), bytes, 100));
    EXPECT_EQ(list(), "file pipe ");
}

TEST_F(FilesTest, TellsApartWhyAnOpenFails) {
    make({"file=x", "folder/"});
    const struct {
        const char* name;
        const char* path;
        uint32_t mode;
        int32_t code;
    } cases[] = {
        {"missing", "none", openRead, ENOENT},
        {"below a file", "file/x", openRead, ENOTDIR},
        {"a folder", "folder", openRead, EISDIR},
        {"exclusive on an existing one", "file", openWrite | openCreate | openExclusive, EEXIST},
        {"truncating a missing one", "none", openWrite | openTruncate, ENOENT},
    };
    for (const auto& c : cases) {
        File file;
        const FileError error = file.open(at(c.path), c.mode);
        EXPECT_EQ(error.code, c.code) << c.name << ": " << error.getText();
        EXPECT_FALSE(file.isOpen()) << c.name;
    }
    EXPECT_EQ(list(), "file folder/ ");
}

TEST_F(FilesTest, ALockedFileIsNotCutByAnother) {
    make({"file=precious"});
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
    make({"file=x"});
    constexpr uint32_t r = openRead;
    constexpr uint32_t w = openRead | openWrite;
    constexpr uint32_t shareR = openSharesRead;
    constexpr uint32_t shareW = openSharesWrite;
    const struct {
        uint32_t first, second;
        bool isOpened;
    } cases[] = {
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
    for (const auto& c : cases) {
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
    make({"file=x"});
    constexpr uint32_t all = openRead | openWrite | openSharesRead | openSharesWrite | openLocked;
    std::atomic<int> refused{0};
    std::array<std::thread, 4> threads;
    for (std::thread& thread : threads)
        thread = std::thread([&] {
            for (int round = 0; round < 500; ++round) {
                File file;
                refused += file.open(at("file"), all) ? 1 : 0;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(refused, 0);
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
    make({"file=x"});
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
    make({"file=0123456789"});
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
    make({"tree/a/b/c/", "tree/a/file=x", "outside/keep=x", "link -> outside"});
    make({"tree/a/link -> " + at("outside")});
    EXPECT_TRUE(deleteFolder(at("tree")).isExisting()) << "not empty";
    EXPECT_FALSE(deleteTree(at("tree")));
    EXPECT_EQ(list(), "link/ outside/ ");
    EXPECT_TRUE(deleteTree(at("tree")).isNotFound());
    EXPECT_FALSE(deleteTree(at("link//"))) << "a link, whatever is behind its name";
    EXPECT_EQ(list(), "outside/ ");
    EXPECT_EQ(list("outside"), "keep ");
}

TEST_F(FilesTest, CopiesWithTimesAndRightsAndLeavesNoHalfFile) {
    make({"from=contents"});
    chmod(at("from").c_str(), 0750);
    const timespec times[2] = {{1'100'000'000, 0}, {1'000'000'000, 123'000'000}};
    ASSERT_EQ(utimensat(AT_FDCWD, at("from").c_str(), times, 0), 0);
    ASSERT_FALSE(copyFile(at("from"), at("to")));
    EXPECT_EQ(read("to"), "contents");
    FileInfo info;
    getFileInfo(at("to"), info);
    EXPECT_EQ(info.written, 1'000'000'000'123);
    EXPECT_EQ(rightsOf("to"), 0750U);

    EXPECT_TRUE(copyFile(at("from"), at("./from"))) << "onto itself";
    EXPECT_EQ(read("from"), "contents");
    make({"alias -> to"});
    EXPECT_TRUE(copyFile(at("to"), at("alias"))) << "onto itself by a link";
    EXPECT_EQ(link(at("to").c_str(), at("twin").c_str()), 0);
    EXPECT_TRUE(copyFile(at("to"), at("twin"))) << "onto itself by another name";
    EXPECT_EQ(read("to"), "contents");
    EXPECT_TRUE(copyFile("/proc/self/mem", at("half")));
    EXPECT_EQ(list(), "alias from to twin ");
}

TEST_F(FilesTest, KeepsPrivateWhatItStores) {
    make({"private=" + std::string(600'000, 'x'), "old=old"});
    chmod(at("private").c_str(), 0600);
    std::string rights;
    const auto look = [&](std::span<const uint8_t>, int64_t) {
        std::vector<FolderEntry> entries;
        listFolder(folder, entries);
        for (const FolderEntry& entry : entries)
            if (entry.name.ends_with(".new") && (rightsOf(entry.name) & 077) != 0)
                rights += entry.name + " can be read by others ";
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
    make({"tree/file=contents", "tree/toFile -> file", "tree/sub/up -> ..", "tree/dangling -> nowhere"});
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
    EXPECT_EQ(rightsOf("new/copy/sub"), 0700U);
}

TEST_F(FilesTest, DeletesTreesDeeperThanItMayOpenFiles) {
    make({"deep/"});
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
    make({"a=a", "b=b"});
    ASSERT_FALSE(moveFile(at("a"), at("b")));
    EXPECT_EQ(read("b"), "a");
    EXPECT_EQ(list(), "b ");
}

TEST_F(FilesTest, MovesTreesAcrossVolumesWithTheirLinks) {
    // Memory files are a volume of their own; where they are not, the move is a plain one with the same
    // outcome.
    const std::string other = "/dev/shm/qorl-move-" + std::to_string(getProcessId());
    make({"tree/sub/file=moved", "tree/sub/up -> ..", "tree/toFile -> sub/file", "outside/keep=kept"});
    make({"tree/toFolder -> " + at("outside")});
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
    make({"tree/file=x", "tree/pipe|"});
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
    make({"real/", "link -> real", "dangling -> real/none"});
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
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(getCanonicalPath(path), expected) << path;
}

TEST_F(FilesTest, DescribesFiles) {
    FileInfo info;
    EXPECT_FALSE(getFileInfo(at("none"), info)) << "nothing there is no error";
    EXPECT_EQ(info.kind, FileKind::none);
    make({".hidden=12345"});
    ASSERT_FALSE(getFileInfo(at(".hidden"), info));
    EXPECT_EQ(info.kind, FileKind::file);
    EXPECT_EQ(info.size, 5);
    EXPECT_TRUE(info.isHidden);
    for (const char* dots : {".", ".."}) {
        getFileInfo(dots, info);
        EXPECT_FALSE(info.isHidden) << dots;
    }
    ASSERT_FALSE(setReadOnly(at(".hidden"), true));
    EXPECT_EQ(rightsOf(".hidden") & 0222, 0U);
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
