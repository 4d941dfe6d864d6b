#include "persistence/files/StoredFile.h"

#include "persistence/streams/FBufferedStream.h"
#include "platform/FileReplacement.h"
#include "support/DebugOutput.h"
#include "support/FailingAllocation.h"
#include "support/FailingDisk.h"
#include "support/LittleCost.h"
#include "support/SettingsFolder.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace qorl {
namespace {

const FFileType xml = FFileType::settingsFile();
const FFileType copy = FFileType::settingsBackupFile();

/// Files whose contents are good when they begin with "good".
class StoredFileTest : public ::testing::Test {
protected:
    static bool save(const std::string& bytes, int32_t* error = nullptr) {
        const auto size = static_cast<int64_t>(bytes.size());
        return StoredFile("Keys", xml)
            .save([&](FStream& stream) { return stream.write(bytes.data(), size) == size; }, error);
    }

    /// What a load gives; empty when it fails.
    std::string load() {
        std::string bytes;
        const bool isLoaded = StoredFile("Keys", xml)
                                  .load(
                                      [&](FStream& stream) {
                                          char text[64] = {};
                                          stream.read(text, sizeof text - 1);
                                          const bool isGood = std::string_view(text).starts_with("good");
                                          if (isGood)
                                              bytes = text;
                                          return isGood;
                                      },
                                      &found_);
        EXPECT_EQ(isLoaded, !bytes.empty());
        return bytes;
    }

    std::string path(const std::string& name = "Keys.xml") const { return folder_ / ("settings/" + name); }
    bool has(const std::string& name) const { return folder_.has("settings/" + name); }
    void write(const std::string& name, const std::string& bytes) const {
        folder_.write("settings/" + name, bytes);
    }
    std::string read(const std::string& name) const { return folder_.read("settings/" + name); }

    /// What lies in the folder, each file with its bytes.
    std::vector<std::string> files() const {
        std::vector<platform::FolderEntry> entries;
        platform::listFolder(folder_ / "settings", entries);
        std::vector<std::string> files;
        files.reserve(entries.size());
        for (const auto& entry : entries)
            files.push_back(entry.name + '=' + read(entry.name));
        std::sort(files.begin(), files.end());
        return files;
    }
    /// Saves in several threads at once, with `meanwhile` beside them. How many of the saves failed.
    template <typename Meanwhile>
    static int storeAtOnce(int rounds, const char* bytes, Meanwhile meanwhile) {
        std::vector<std::thread> writers;
        std::atomic<int> failures = 0;
        for (size_t writer = 1; writer <= 4; ++writer)
            writers.emplace_back([=, &failures] {
                for (int i = 0; i < rounds; ++i)
                    failures += !save(bytes + std::string(writer * 10, 'x'));
            });
        meanwhile();
        for (std::thread& writer : writers)
            writer.join();
        return failures;
    }

    SettingsFolder folder_;
    StoredFile::Found found_ = StoredFile::Found::missing;
    DebugOutput said_;
};

TEST_F(StoredFileTest, ReplacesTheFileAndLeavesNothingBeside) {
    EXPECT_TRUE(save("good 1"));
    EXPECT_TRUE(save("good 2"));
    EXPECT_EQ(load(), "good 2");
    EXPECT_EQ(found_, StoredFile::Found::whole);
    EXPECT_EQ(files(), std::vector<std::string>{"Keys.xml=good 2"});
    EXPECT_EQ(said_.text, "");
}

TEST_F(StoredFileTest, KeepsTheEarlierFileWhenTheWriterGivesUp) {
    EXPECT_TRUE(save("good 1"));
    for (const bool hasMemory : {true, false})
        EXPECT_FALSE(StoredFile("Keys", xml).save([=](FStream& stream) {
            stream.write("good half", 9);
            return hasMemory ? false : throw std::bad_alloc();
        }));
    EXPECT_EQ(files(), std::vector<std::string>{"Keys.xml=good 1"});
}

TEST_F(StoredFileTest, IsAsLongAsWhatABufferedStreamWrote) {
    EXPECT_TRUE(StoredFile("Keys", xml).save([](FStream& stream) {
        const auto buffered = FBufferedStream::openBuffered(retain(&stream), 65536);
        const bool isWritten = buffered->write("good ....", 9) == 9 &&
                               buffered->seek(5, FStream::fromStart) == 5 && buffered->write("back", 4) == 4;
        buffered->flush();
        return isWritten && buffered->isValid();
    }));
    EXPECT_EQ(read("Keys.xml"), "good back");
}

TEST_F(StoredFileTest, TellsWhyItCouldNotSave) {
    folder_.write("settings", "a file where the folder should be");
    int32_t error = 0;
    EXPECT_FALSE(save("good", &error));
    EXPECT_NE(error, 0);
    EXPECT_EQ(said_.text, path() + ": its folder can't be made: File exists\n");
}

TEST_F(StoredFileTest, TakesOnlyNamesOfFilesInItsFolder) {
    for (const std::string_view name :
         {std::string_view(), std::string_view("Sub/"), std::string_view("."), std::string_view("Sub/."),
          std::string_view("../Keys"), std::string_view("Sub/.."), std::string_view("Ke\0ys", 5)}) {
        SCOPED_TRACE(name);
        said_.text.clear();
        const ConstString given(name);
        const StoredFile file(given, xml);
        int32_t error = 0;
        EXPECT_FALSE(file.save([](FStream&) { return true; }, &error));
        EXPECT_EQ(error, EINVAL);
        EXPECT_FALSE(StoredFile("Keys", xml).rename(given));
        EXPECT_FALSE(file.load([](FStream&) { return true; }, &found_));
        EXPECT_EQ(found_, StoredFile::Found::missing);
        EXPECT_TRUE(said_.mentions("is no name of a file in the user's settings"));
        EXPECT_FALSE(said_.mentions("memory")) << said_.text;
    }
    EXPECT_FALSE(folder_.has("settings") || folder_.has("settings.xml"));
}

TEST_F(StoredFileTest, MakesNoFoldersForANameThatIsTooLong) {
    std::string name;
    while (name.size() < 20'000)
        name += "a/";
    name += 'x';
    const ConstString given{std::string_view(name)};
    const LittleCost cost(name.size());
    int32_t error = 0;
    EXPECT_FALSE(StoredFile(given, xml).save([](FStream&) { return true; }, &error));
    EXPECT_EQ(error, ENAMETOOLONG);
    EXPECT_FALSE(has("a"));
}

/// What a crash or a user left in the folder, and what a load makes of it. "-" stands for no file.
struct Leftover {
    const char* name;
    const char* file;
    const char* old;
    const char* shared;
    const char* loaded;
    StoredFile::Found found;
    const char* fileAfter;
};

void PrintTo(const Leftover& row, std::ostream* out) {
    *out << row.name;
}

class StoredFileLeftoverTest : public StoredFileTest, public ::testing::WithParamInterface<Leftover> {};

TEST_P(StoredFileLeftoverTest, LoadsTheLastGoodState) {
    const Leftover& row = GetParam();
    const auto put = [&](const char* name, std::string_view bytes) {
        if (bytes != "-")
            folder_.write(name, std::string(bytes));
    };
    put("settings/Keys.xml", row.file);
    put("settings/Keys_old.xml", row.old);
    put("shared/Keys.xml", row.shared);
    write(".Keys.xml.new", "good, but not finished");
    EXPECT_EQ(load(), row.loaded);
    EXPECT_EQ(found_, row.found);
    EXPECT_EQ(has("Keys.xml") ? read("Keys.xml") : "-", row.fileAfter);
    const bool isOldUsed =
        row.loaded == std::string_view(row.old) || row.fileAfter != std::string_view(row.file);
    EXPECT_EQ(said_.text.empty(), !isOldUsed) << said_.text;
    EXPECT_FALSE(has(".Keys.xml.new"));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, StoredFileLeftoverTest,
    ::testing::Values(
        Leftover{"Nothing", "-", "-", "-", "", StoredFile::Found::missing, "-"},
        Leftover{"OnlyTheShared", "-", "-", "good s", "good s", StoredFile::Found::missing, "-"},
        Leftover{"BetweenTwoRenames", "-", "good o", "good s", "good o", StoredFile::Found::whole, "good o"},
        Leftover{"HalfAFile", "goo", "good o", "good s", "good o", StoredFile::Found::kept, "goo"},
        Leftover{"HalfAFileAlone", "goo", "-", "good s", "", StoredFile::Found::unreadable, "goo"},
        Leftover{"BothBroken", "goo", "go", "good s", "", StoredFile::Found::unreadable, "goo"},
        Leftover{"OnlyTheOldAndBroken", "-", "go", "good s", "", StoredFile::Found::unreadable, "go"},
        Leftover{"OldNotDeleted", "good", "good o", "good s", "good", StoredFile::Found::whole, "good"}),
    ::testing::PrintToStringParamName());

TEST_F(StoredFileTest, GivesANameBackOnlyWhereNobodyHasIt) {
    for (const char* bytes : {"good 1", "good 2"}) {
        write("Keys_old.xml", bytes);
        const platform::FileError error = platform::FileReplacement::putBack(path("Keys_old.xml"), path());
        EXPECT_EQ(error.isExisting(), bytes == std::string_view("good 2")) << error.getText();
    }
    EXPECT_EQ(read("Keys.xml"), "good 1");
    EXPECT_EQ(read("Keys_old.xml"), "good 2");
}

TEST_F(StoredFileTest, PutsAwayWhatAnInterruptedSaveKeptUnlessItIsTheLastGoodState) {
    for (const bool isGood : {false, true}) {
        write("Keys.xml", "goo");
        write("Keys_old.xml", isGood ? "good o" : "go");
        load();
        EXPECT_TRUE(StoredFile("Keys", xml).setAside(found_));
        EXPECT_EQ(has("Keys_old.xml"), isGood);
        EXPECT_TRUE(save("good 2"));
    }
    EXPECT_EQ(read("Keys (Damaged).xml"), "goo");
    EXPECT_EQ(read("Keys (Damaged 2).xml"), "go");
    EXPECT_EQ(read("Keys (Damaged 3).xml"), "goo");
    EXPECT_FALSE(has("Keys (Damaged 4).xml"));
}

TEST_F(StoredFileTest, TakesNothingElseForAFileThatCannotBeOpened) {
    folder_.write("shared/Keys.xml", "good s");
    platform::createFolders(path());
    EXPECT_EQ(load(), "") << "the shared data would be saved over the user's own";
    EXPECT_EQ(found_, StoredFile::Found::unreadable);
}

TEST_F(StoredFileTest, LeavesWhatAnotherProgramStillWrites) {
    platform::FileReplacement other;
    platform::createFolders(folder_ / "settings");
    ASSERT_FALSE(other.open(path()));
    other.file().write("good other", 10);
    EXPECT_EQ(load(), "");
    EXPECT_TRUE(save("good 1"));
    EXPECT_EQ(load(), "good 1");
    ASSERT_FALSE(other.putInPlace());
    EXPECT_EQ(load(), "good other");
}

TEST_F(StoredFileTest, StaysWholeWhileSeveralStoreIt) {
    ASSERT_TRUE(save("good 0"));
    const int failures = storeAtOnce(8, "good ", [this] {
        for (int i = 0; i < 50; ++i)
            EXPECT_NE(load(), "");
    });
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(load().size() % 10, 5u);
    EXPECT_EQ(files().size(), 1u);
}

TEST_F(StoredFileTest, IsSavedByAllWhoStoreItOnAVolumeThatKnowsNoLinks) {
    const FailingDisk::WithoutLinks withoutLinks;
    const FailingDisk::WithoutFlushing withoutFlushing;
    ASSERT_TRUE(save("good 0"));
    EXPECT_EQ(storeAtOnce(200, "good ", [] {}), 0) << said_.text;
    EXPECT_EQ(load().size() % 10, 5u);
}

TEST_F(StoredFileTest, KeepsLinksAndRights) {
    folder_.write("dotfiles/keys", "good 1");
    chmod((folder_ / "dotfiles/keys").c_str(), 0640);
    platform::createFolders(folder_ / "settings");
    ASSERT_EQ(symlink((folder_ / "dotfiles/keys").c_str(), path().c_str()), 0);
    const auto isLink = [&] {
        platform::FileInfo info;
        platform::getFileInfo(path(), info);
        return info.isLink;
    };
    EXPECT_TRUE(save("good 2"));
    EXPECT_TRUE(StoredFile("Keys", xml).backup(copy));
    EXPECT_TRUE(save("good 3"));
    EXPECT_TRUE(isLink());
    EXPECT_EQ(folder_.read("dotfiles/keys"), "good 3");
    EXPECT_TRUE(StoredFile("Keys", xml).restore(copy));
    EXPECT_TRUE(isLink());
    EXPECT_EQ(load(), "good 2");
    EXPECT_TRUE(StoredFile("Keys", xml).setAside());
    EXPECT_EQ(folder_.read("dotfiles/keys (Damaged)"), "good 2");
    // A link whose file is missing leads on.
    EXPECT_TRUE(save("good 4"));
    EXPECT_TRUE(isLink());
    struct stat status = {};
    stat((folder_ / "dotfiles/keys (Damaged)").c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
}

TEST_F(StoredFileTest, ForgetsAFileWithWhatACrashLeftOfIt) {
    EXPECT_TRUE(save("good 1"));
    write("Keys_old.xml", "good 0");
    EXPECT_TRUE(StoredFile("Keys", xml).rename("Other"));
    EXPECT_EQ(read("Other.xml"), "good 1");
    EXPECT_EQ(load(), "") << "the earlier state must not come back";
    write("Desk/Layout.xml", "good 2");
    write("Desk/Other_old.xml", "good 0");
    EXPECT_TRUE(StoredFile("Desk/Layout", xml).rename("Other"));
    EXPECT_EQ(read("Desk/Other.xml"), "good 2") << "a name alone stays in the folder";
    EXPECT_FALSE(has("Desk/Other_old.xml"));
    EXPECT_EQ(read("Other.xml"), "good 1");
    write("Keys_old.xml", "good 0");
    EXPECT_TRUE(StoredFile("Keys", xml).exists());
    EXPECT_TRUE(StoredFile("Keys", xml).remove());
    EXPECT_EQ(load(), "");
    EXPECT_FALSE(StoredFile("Keys", xml).remove());
}

TEST_F(StoredFileTest, NamesCopiesAfterTheWholeName) {
    const struct {
        const char* name;
        const char* copy;
    } rows[] = {{"Plain", "Plain.xml.backup"},
                {"With.xml", "With.xml.backup"},
                {"Sub/With.settings", "Sub/With.settings.xml.backup"}};
    for (const auto& row : rows) {
        const ConstString name(row.name);
        const StoredFile file(name, xml);
        EXPECT_FALSE(file.backup(copy)) << row.name;
        EXPECT_TRUE(file.save([](FStream& stream) { return stream.write("good", 4) == 4; }));
        EXPECT_TRUE(file.backup(copy)) << row.name;
        EXPECT_TRUE(has(row.copy)) << row.copy;
    }
}

TEST_F(StoredFileTest, DoesWhatItSaysOrNothingWithoutMemory) {
    const struct {
        const char* name;
        std::vector<std::string> files;
        bool (*act)(const StoredFile& file);
    } cases[] = {
        {"exists", {"Keys_old.xml"}, [](const StoredFile& file) { return file.exists(); }},
        {"remove", {"Keys.xml"}, [](const StoredFile& file) { return file.remove(); }},
        {"rename", {"Keys.xml"}, [](const StoredFile& file) { return file.rename("Other"); }},
        {"set aside", {"Keys.xml"}, [](const StoredFile& file) { return file.setAside(); }},
        {"back up", {"Keys.xml"}, [](const StoredFile& file) { return file.backup(copy); }},
        {"restore",
         {"Keys.xml", "Keys.xml.backup"},
         [](const StoredFile& file) { return file.restore(copy); }},
        {"forget a backup",
         {"Keys.xml", "Keys.xml.backup"},
         [](const StoredFile& file) { return file.removeBackup(copy); }},
    };
    const FailingDisk::WithoutFlushing withoutFlushing;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto begin = [&] {
            platform::deleteTree(folder_ / "settings");
            for (const std::string& file : c.files)
                write(file, file);
            return files();
        };
        begin();
        ASSERT_TRUE(c.act(StoredFile("Keys", xml)));
        const std::vector<std::string> done = files();
        failEachAllocation([&](FailingAllocation& allocation) {
            const std::vector<std::string> before = begin();
            ASSERT_NE(before, done);
            const bool isDone = allocation.during([&] { return c.act(StoredFile("Keys", xml)); });
            EXPECT_TRUE(isDone || allocation.hasFailed());
            // Behind the change itself there may be no memory to flush it, and to tell of it.
            const std::vector<std::string> found = files();
            EXPECT_TRUE(found == done || (!isDone && found == before)) << ::testing::PrintToString(found);
        });
    }
}

TEST_F(StoredFileTest, LosesNothingWithoutMemory) {
    failEachAllocation([&](FailingAllocation& allocation) {
        save("good 1");
        const bool isSaved = allocation.during([] { return save("good 2"); });
        const std::string expected = isSaved ? "good 2" : "good 1";
        std::string bytes;
        const bool isLoaded = allocation.during([&] {
            return StoredFile("Keys", xml).load([&](FStream& stream) {
                bytes.resize(6);
                return stream.read(bytes.data(), 6) == 6;
            });
        });
        EXPECT_TRUE((isSaved && isLoaded) || allocation.hasFailed());
        EXPECT_TRUE(!isLoaded || bytes == expected) << bytes;
        EXPECT_EQ(load(), expected);
        EXPECT_FALSE(has(".Keys.xml.new"));
    });
}

} // namespace
} // namespace qorl
