#include "persistence/files/FNFileIterator.h"

#include "foundation/Cast.h"
#include "persistence/files/FNFileSystem.h"
#include "persistence/files/PathText.h"
#include "support/FailingAllocation.h"
#include "support/SettingsFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

namespace fs = std::filesystem;

FNFileSystem& files() {
    return *FNFileSystem::instance();
}

std::string walk(FFileIterator& iterator) {
    std::string found;
    while (const FPath* entry = iterator.next()) {
        const std::string name = PathText::toNative(entry->getName().view16());
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
        {"*.aif", 4, "c.aif loop/ sub/ "},
        {"none", FFileSystem::files, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.mask);
        const auto iterator = FNFileIterator::open(folder.at("walk"), c.mode, c.mask);
        ASSERT_NE(iterator, nullptr);
        EXPECT_EQ(iterator->getCurrent(), nullptr) << "in front of the first";
        EXPECT_EQ(walk(*iterator), c.found);
        EXPECT_EQ(iterator->next(), nullptr);
    }
    EXPECT_EQ(FNFileIterator::open(folder.at("missing")), nullptr);
    EXPECT_EQ(FNFileIterator::open(folder.at("walk/a.wav")), nullptr) << "a file is no folder";
    FNPath noFolder;
    noFolder.setFolder(ConstString(std::string_view(folder / "missing")));
    EXPECT_EQ(FNFileIterator::open(noFolder), nullptr);
    FNFileSearch search;
    EXPECT_FALSE(files().findFirst(folder.at("missing"), "", search));
    ASSERT_TRUE(files().findFirst(folder.at("walk"), "*.wav", search, FFileSystem::files));
    EXPECT_EQ(search.found.toUtf8(), folder / "walk/a.wav");
    fs::remove_all(folder / "walk");
    EXPECT_TRUE(files().findNext(search)) << "the folder as it was";
}

TEST(FNFileIterator, TakesNoFolderForEmptyWithoutMemory) {
    const SettingsFolder folder;
    folder.write("walk/a.wav", "x");
    const FNPath place = folder.at("walk");
    failEachAllocation([&](FailingAllocation& allocation) {
        const auto iterator = allocation.during([&] { return FNFileIterator::open(place, 0, "*.wav"); });
        EXPECT_TRUE(iterator ? iterator->next() != nullptr : allocation.hasFailed());
    });
}

TEST(FNFileIterator, OpensWhateverItFinds) {
    const SettingsFolder folder;
    folder.write("odd/\xE4\xFF\n.wav", "bytes");
    const auto iterator = FNFileIterator::open(folder.at("odd"));
    auto* path = cast<FNPath>(iterator->next());
    ASSERT_NE(path, nullptr);
    const Ref<FStream> stream = files().openFile(*path, FFileStream::readAccess | FFileStream::shareRead);
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(files().getFileSize(*stream), 5);
    FNPath copy = folder.at("copy");
    EXPECT_TRUE(files().copy(*path, copy));
    EXPECT_TRUE(files().rename(*path, "plain.wav"));
    EXPECT_TRUE(folder.has("odd/plain.wav"));
}

} // namespace
} // namespace qorl
