#include "foundation/Cast.h"
#include "persistence/SettingsFolder.h"
#include "persistence/files/FNFileIterator.h"
#include "persistence/files/FNFileSystem.h"
#include "persistence/files/PathText.h"
#include "persistence/urls/FUrl.h"
#include "support/FailingAllocation.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace qorl {
namespace {

namespace fs = std::filesystem;

FNFileSystem& files() {
    return *FNFileSystem::instance();
}

FNPath pathOf(const SettingsFolder& folder, const std::string& name) {
    return FNPath(std::string_view(folder / name));
}

std::string walk(FFileIterator& iterator) {
    std::string found;
    while (const FPath* entry = iterator.next()) {
        const std::string name = toNativeText(entry->getName().view16());
        found += name + (entry->isFolder() ? "/ " : " ");
        EXPECT_EQ((entry->getPathKind() & FPath::hiddenFlag) != 0, name.starts_with('.')) << name;
    }
    return found;
}

TEST(FNFileIterator, GivesWhatItsMaskAndModeAskFor) {
    const SettingsFolder folder;
    for (const char* name : {"walk/a.wav", "walk/b.WAV", "walk/c.aif", "walk/d.wav.txt", "walk/wav",
                             "walk/.wav", "walk/sub/x", "walk/two\nlines.wav", "walk/\xE4\xFF.wav"})
        folder.write(name, "x");
    fs::create_directory_symlink(folder / "walk", folder / "walk/loop");
    fs::create_symlink("self", folder / "walk/self");
    struct Case {
        const char* mask;
        int32_t mode;
        const char* found;
    };
    const Case cases[] = {
        {"", 0, ".wav a.wav b.WAV c.aif d.wav.txt loop/ self sub/ two\nlines.wav wav \xE4\xFF.wav "},
        {"*", FFileSystem::folders, "loop/ sub/ "},
        {"*.wav", FFileSystem::files, "a.wav b.WAV two\nlines.wav \xE4\xFF.wav "},
        {"aif", 0, "c.aif loop/ sub/ "},
        {".aif;*.txt;", FFileSystem::files, "c.aif d.wav.txt "},
        {"*.WAV.txt", FFileSystem::files, "d.wav.txt "},
        {"*.*", FFileSystem::files, ".wav a.wav b.WAV c.aif d.wav.txt self two\nlines.wav wav \xE4\xFF.wav "},
        {"none", FFileSystem::files, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.mask);
        const auto iterator = FNFileIterator::open(pathOf(folder, "walk"), c.mode, c.mask);
        ASSERT_NE(iterator, nullptr);
        EXPECT_EQ(iterator->getCurrent(), nullptr) << "in front of the first";
        EXPECT_EQ(walk(*iterator), c.found);
        EXPECT_EQ(iterator->next(), nullptr);
    }
    EXPECT_EQ(FNFileIterator::open(pathOf(folder, "missing")), nullptr);
    EXPECT_EQ(FNFileIterator::open(pathOf(folder, "walk/a.wav")), nullptr) << "a file is no folder";
    FNPath noFolder;
    noFolder.setFolder(ConstString(std::string_view(folder / "missing")));
    EXPECT_EQ(FNFileIterator::open(noFolder), nullptr);
    FNFileSearch search;
    EXPECT_FALSE(files().findFirst(pathOf(folder, "missing"), "", search));
    ASSERT_TRUE(files().findFirst(pathOf(folder, "walk"), "*.wav", search, FFileSystem::files));
    EXPECT_EQ(search.found.toUtf8(), folder / "walk/a.wav");
    fs::remove_all(folder / "walk");
    EXPECT_TRUE(files().findNext(search)) << "the folder as it was";
}

TEST(FNFileIterator, OpensWhateverItFinds) {
    const SettingsFolder folder;
    folder.write("odd/\xE4\xFF\n.wav", "bytes");
    const auto iterator = FNFileIterator::open(pathOf(folder, "odd"));
    auto* path = cast<FNPath>(iterator->next());
    ASSERT_NE(path, nullptr);
    const Ref<FStream> stream = files().openFile(*path, FFileStream::readAccess | FFileStream::shareRead);
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(files().getFileSize(*stream), 5);
    FNPath copy = pathOf(folder, "copy");
    EXPECT_TRUE(files().copy(*path, copy));
    EXPECT_TRUE(files().rename(*path, "plain.wav"));
    EXPECT_TRUE(folder.has("odd/plain.wav"));
}

TEST(FNFileSystem, FindsNamesWrittenBeforeUtf8) {
    const SettingsFolder folder;
    folder.write("\xDC"
                 "bung.wav",
                 "old");
    folder.write("\xC3\xA4", "not this one");
    FNPath path = pathOf(folder, "\xC3\x9C"
                                 "bung.wav");
    ASSERT_NE(files().openFile(path, FFileStream::readAccess), nullptr);
    EXPECT_EQ(path.toUtf8(), folder / "\xDC"
                                      "bung.wav")
        << "the path takes the spelling";
    EXPECT_EQ(path.getName().view16(), u"\xDCDC"
                                       u"bung.wav");
    for (const char* name : {"\xC3\x83\xC2\xA4", "\xCE\xA9", "plain"}) {
        FNPath missing = pathOf(folder, name);
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
    const char* earlier = std::getenv("XDG_DATA_HOME");
    const std::string kept = earlier ? earlier : "";
    setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    folder.write("song.wav", "x");
    folder.write("songs/one.wav", "y");
    EXPECT_TRUE(files().trash(pathOf(folder, "song.wav")));
    EXPECT_TRUE(files().trash(pathOf(folder, "songs")));
    EXPECT_FALSE(files().trash(pathOf(folder, "song.wav"))) << "it is gone";
    EXPECT_FALSE(files().trash(FNPath()));
    EXPECT_EQ(folder.read("data/Trash/files/song.wav"), "x");
    EXPECT_EQ(folder.read("data/Trash/files/songs/one.wav"), "y");
    if (earlier)
        setenv("XDG_DATA_HOME", kept.c_str(), 1);
    else
        unsetenv("XDG_DATA_HOME");
}

/// A ".lnk" file with a list of ids, a name and a relative path, in UTF-16 or in bytes.
std::string linkTo(const std::string& relative, bool isWide) {
    std::string link("\x4C\0\0\0\x01\x14\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 20);
    link += static_cast<char>(isWide ? 0x8D : 0x0D);
    link.resize(0x4C);
    link += std::string("\3\0id!", 5);
    const auto addText = [&](const std::string& text) {
        link += static_cast<char>(text.size());
        link += '\0';
        for (const char c : text) {
            link += c;
            if (isWide)
                link += '\0';
        }
    };
    addText("A name");
    addText(relative);
    return link;
}

TEST(FNFileSystem, ResolvesShortcuts) {
    const SettingsFolder folder;
    folder.write("songs/one.wav", "x");
    folder.write("links/wide.lnk", linkTo("..\\songs\\one.wav", true));
    folder.write("links/narrow.LNK", linkTo("..\\songs", false));
    folder.write("links/away.lnk", linkTo("..\\songs\\none.wav", true));
    folder.write("links/url.desktop", "[Other]\nURL=file:///no\n[Desktop Entry]\r\nType=Link\r\nURL=file://" +
                                          (folder / "songs/one.wav") + "\r\n");
    folder.write("links/web.desktop", "[Desktop Entry]\nType=Link\nURL=http://example.org/\n");
    folder.write("links/program.desktop", "[Desktop Entry]\nType=Application\nURL=file:///etc\n");
    fs::create_symlink("../songs/one.wav", folder / "links/symbolic");
    fs::create_symlink("ring", folder / "links/ring");
    struct Case {
        const char* name;
        const char* target;
    };
    const Case cases[] = {
        {"links/wide.lnk", "songs/one.wav"},
        {"links/narrow.LNK", "songs"},
        {"links/url.desktop", "songs/one.wav"},
        {"links/symbolic", "songs/one.wav"},
        {"links/away.lnk", nullptr},
        {"links/web.desktop", nullptr},
        {"links/program.desktop", nullptr},
        {"links/ring", nullptr},
        {"songs/one.wav", nullptr},
        {"missing.lnk", nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        FNPath path = pathOf(folder, c.name);
        EXPECT_EQ(files().resolveShortcut(path), c.target != nullptr);
        EXPECT_EQ(platform::getCanonicalPath(path.toUtf8()),
                  platform::getCanonicalPath(folder / (c.target ? c.target : c.name)));
    }
    FNPath songs = pathOf(folder, "links/narrow.LNK");
    files().resolveShortcut(songs);
    EXPECT_TRUE(songs.isFolder());
}

TEST(FNFileSystem, TakesNoDamagedShortcutForOne) {
    const SettingsFolder folder;
    const auto write = [&folder](const std::string& name, const std::string& bytes) {
        std::ofstream(folder / name, std::ios::binary) << bytes;
    };
    folder.write("target", "x");
    const std::string whole = linkTo("target", true);
    for (size_t length = 0; length < whole.size(); ++length) {
        write("cut.lnk", whole.substr(0, length));
        FNPath path = pathOf(folder, "cut.lnk");
        EXPECT_FALSE(files().resolveShortcut(path)) << "cut behind " << length << " bytes";
    }
    std::string huge = whole;
    for (size_t at = 0x4C; at < huge.size(); ++at) {
        const char kept = std::exchange(huge[at], '\xFF');
        write("huge.lnk", huge);
        FNPath path = pathOf(folder, "huge.lnk");
        files().resolveShortcut(path);
        huge[at] = kept;
    }
    write("large.lnk", whole + std::string(70'000, 'x'));
    FNPath large = pathOf(folder, "large.lnk");
    EXPECT_FALSE(files().resolveShortcut(large));
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
    EXPECT_GT(files().getFreeSpace(pathOf(folder, "not/yet/there")), 0);
    EXPECT_EQ(files().getFreeSpace(FNPath()), -1);
    FVolumeInfo info;
    ASSERT_TRUE(files().getVolumeInfo(pathOf(folder, ""), info));
    String name;
    pathOf(folder, "").getDriveName(name);
    EXPECT_EQ(name.toUtf8(), info.name.toUtf8());
    EXPECT_FALSE(name.isEmpty());
    const auto drives = files().getDrives();
    const auto names = files().getRootNames();
    EXPECT_EQ(drives.size(), names.size());
    for (const FNPath& drive : drives)
        EXPECT_TRUE(files().exists(drive)) << drive.toUtf8();
    folder.write("locked", "x");
    const FNPath locked = pathOf(folder, "locked");
    EXPECT_FALSE(files().isWriteProtected(locked));
    EXPECT_TRUE(files().setReadOnly(locked, true));
    EXPECT_TRUE(files().isReadOnly(locked));
    EXPECT_TRUE(files().isWriteProtected(locked));
    EXPECT_TRUE(files().setReadOnly(locked, false));
    EXPECT_FALSE(files().isReadOnly(locked));
    EXPECT_TRUE(files().isWriteProtected(FNPath("/proc/version")));
    struct Size {
        int64_t bytes;
        const char* text;
    };
    for (const Size& c : {Size{0, "0.000 B"}, Size{1023, "1023.000 B"}, Size{1536, "1.500 KB"},
                          Size{int64_t{3} << 40, "3.000 TB"}, Size{int64_t{2048} << 40, "2048.000 TB"}}) {
        String text;
        FNFileSystem::formatSize(c.bytes, text);
        EXPECT_EQ(text.toUtf8(), c.text);
    }
}

} // namespace
} // namespace qorl
