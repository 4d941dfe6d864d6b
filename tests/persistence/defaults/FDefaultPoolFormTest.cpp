#include "persistence/defaults/DefaultPoolFixture.h"
#include "persistence/defaults/DefaultsLock.h"
#include "support/FailingDisk.h"

#include <chrono>
#include <memory>
#include <regex>
#include <sys/stat.h>
#include <utility>

namespace qorl {
namespace {

using FailingDisk::Outcome;

class FDefaultPoolFormTest : public DefaultPoolFixture {
protected:
    /// The next program has folders.
    bool loadInFolder() {
        form_ = StoreForm::oneFileForEachGroup;
        return loadAfterRestart();
    }
    void begin(int number) {
        loadInFolder();
        set(number);
    }
    int64_t numberAfterRestart() {
        form_ = StoreForm::oneFileForEachGroup;
        restart();
        pool().restore();
        loadAll();
        return number();
    }
    /// A document of the settings without its line ends and indents.
    std::string flat(const std::string& name) const {
        return std::regex_replace(folder_.read("settings/" + name), std::regex("\r\n *"), "");
    }
};

TEST_F(FDefaultPoolFormTest, WaitsOnceForAProgramThatHangs) {
    begin(1);
    EXPECT_TRUE(save());
    restart();
    folder_.write("settings/Defaults (New)/half.xml", "made");
    const auto patience = std::exchange(DefaultsLock::longestWait, std::chrono::milliseconds(0));
    {
        const platform::FileLock other(folder_ / "settings/.Defaults.lock", {});
        DebugOutput output;
        pool().restore();
        EXPECT_TRUE(folder_.has("settings/Defaults (New)/half.xml")) << "it may be that program's";
        loadAll();
        EXPECT_TRUE(output.mentions("too long"));
        output.text.clear();
        EXPECT_EQ(number(), 1);
        EXPECT_EQ(pool().getGroup("Other", 0, false), nullptr);
        EXPECT_EQ(output.text, "") << "each group would wait";
        EXPECT_TRUE(save());
        EXPECT_TRUE(output.mentions("too long"));
    }
    DefaultsLock::longestWait = patience;
    pool().restore();
    EXPECT_FALSE(folder_.has("settings/Defaults (New)"));
}

TEST_F(FDefaultPoolFormTest, WritesTheDocuments) {
    loadAll();
    Saver saver;
    saver.state = 7;
    pool().getGroup("FGlobalDefaultPool")->values().removeAll();
    pool().getGroup("Z", 3)->values().setString("t", "x");
    pool().getGroup("Empty", 3);
    EXPECT_TRUE(save());
    const std::string head = "<?xml version=\"1.0\" encoding=\"utf-8\"?>";
    const std::string group = R"(<string name="Group" value="Z"/><int name="Version" value="3"/>)"
                              R"(<member name="Values"><string name="t" value="x"/></member>)";
    const std::string savers = R"(<member name="Saver"><int name="state" value="7"/></member>)";
    EXPECT_EQ(flat("Defaults.xml"), head + R"(<Defaults><list name="Entries" type="list"><item>)" + group +
                                        R"(</item></list><member name="AutoSavers">)" + savers +
                                        "</member></Defaults>");
    pool().setFolderMode();
    EXPECT_TRUE(save());
    // MD5 of "Z" in UTF-16
    EXPECT_EQ(flat("Defaults/BF7DFE4BBE9619E219FD63F902180762.xml"),
              head + "<Defaults>" + group + "</Defaults>");
    EXPECT_EQ(folder_.read("settings/Defaults/AutoSaver.xml"),
              head + "\r\n<AutoSaver>\r\n   <member name=\"Saver\">\r\n"
                     "      <int name=\"state\" value=\"7\"/>\r\n   </member>\r\n</AutoSaver>\r\n");
    std::vector<platform::FolderEntry> entries;
    platform::listFolder(folder_ / "settings/Defaults", entries);
    EXPECT_EQ(entries.size(), 2u);
}

TEST_F(FDefaultPoolFormTest, NamesAFileByTheWideFormOfItsGroup) {
    // MD5 of "\xC4\xA7" (h with stroke), in UTF-16: 27 01
    begin(0);
    set(1, "\xC4\xA7");
    pool().getGroup(ConstString(u"\u0127"))->values().setInteger("m", 2);
    EXPECT_TRUE(save());
    EXPECT_TRUE(folder_.has("settings/Defaults/561E978B7276894F98B030DF25EA8112.xml"));
}

TEST_F(FDefaultPoolFormTest, FindsAGroupUnderItsEarlierName) {
    const std::string earlier = "settings/Defaults/" + earlierGroupFile + ".xml";
    const std::string now = "settings/Defaults/" + groupFile + ".xml";
    folder_.write(earlier, groupDocument(1));
    EXPECT_EQ(numberAfterRestart(), 1);
    set(2);
    EXPECT_TRUE(save());
    EXPECT_TRUE(folder_.has(now));
    EXPECT_FALSE(folder_.has(earlier)) << "it would come back";
    folder_.write(earlier, groupDocument(1));
    EXPECT_EQ(numberAfterRestart(), 2);
    pool().removeGroup("Group");
    EXPECT_TRUE(save());
    EXPECT_FALSE(folder_.has(now) || folder_.has(earlier));
    folder_.write(earlier, damaged);
    EXPECT_EQ(numberAfterRestart(), 0);
    set(3);
    EXPECT_TRUE(save());
    const std::string away = "settings/Defaults/" + earlierGroupFile + " (Damaged";
    EXPECT_EQ(folder_.read(away + ").xml"), damaged);
    const std::string noList = "<Defaults><string name=\"Group\" value=\"Group\"/>"
                               "<string name=\"Values\" value=\"1\"/></Defaults>";
    folder_.write(earlier, noList);
    EXPECT_EQ(numberAfterRestart(), 3);
    EXPECT_TRUE(save());
    EXPECT_FALSE(folder_.has(earlier));
    EXPECT_EQ(folder_.read(away + " 2).xml"), noList) << "not deleted unread";
    folder_.write(now, noList);
    begin(0);
    pool().removeGroup("Group");
    EXPECT_TRUE(save());
    EXPECT_FALSE(folder_.has(now));
    EXPECT_EQ(folder_.read("settings/Defaults/" + groupFile + " (Damaged).xml"), noList);
}

TEST_F(FDefaultPoolFormTest, KeepsABackupThatCouldNotBeBroughtBack) {
    begin(1);
    save();
    EXPECT_TRUE(pool().backup());
    begin(2);
    save();
    const Outcome outcome = FailingDisk::run(1, DiskFault::error, [] {
        return !pool().restore() && !pool().backup(); // it would replace the user's own settings
    });
    EXPECT_TRUE(outcome.isMet && outcome.answer);
    EXPECT_EQ(numberAfterRestart(), 1);
}

TEST_F(FDefaultPoolFormTest, MovesToOneFileForEachGroup) {
    loadAll();
    EXPECT_TRUE(pool().preferencesNeedExtraction());
    set(1);
    save();
    EXPECT_EQ(flat("Defaults.xml").find("AutoSavers"), std::string::npos);
    EXPECT_TRUE(loadInFolder());
    EXPECT_FALSE(pool().preferencesNeedExtraction());
    save();
    EXPECT_FALSE(folder_.has("settings/Defaults.xml"));
    EXPECT_TRUE(folder_.has("settings/Defaults/" + groupFile + ".xml"));
    EXPECT_EQ(numberAfterRestart(), 1);
}

TEST_F(FDefaultPoolFormTest, KeepsTheSingleFileUntilAllGroupsAreStored) {
    store(1);
    loadInFolder();
    pool().getGroup("Bad")->values().setInteger(std::string(3000, 'k'), 2);
    set(3, "Good");
    EXPECT_FALSE(save());
    EXPECT_TRUE(folder_.has("settings/Defaults.xml"));
    EXPECT_FALSE(folder_.has("settings/Defaults"));
    EXPECT_TRUE(loadInFolder());
    EXPECT_EQ(number(), 1);
    EXPECT_EQ(number("Good"), 3) << "the bad one costs nobody else";
}

TEST_F(FDefaultPoolFormTest, KeepsAnEarlierBackupWhenANewOneFails) {
    begin(1);
    save();
    EXPECT_TRUE(pool().backup());
    // A pipe can't be copied.
    ASSERT_EQ(mkfifo((folder_ / "settings/Defaults/pipe").c_str(), 0600), 0);
    EXPECT_FALSE(pool().backup());
    EXPECT_TRUE(pool().restore());
    EXPECT_TRUE(folder_.has("settings/Defaults/" + groupFile + ".xml"));
    EXPECT_FALSE(folder_.has("settings/Defaults/pipe") || folder_.has("settings/Defaults (Backup)"));
}

/// Goes with the other one.
class Pair : public Saver {
    QORL_CLASS(Pair, Saver)

public:
    bool storeAttributes(FAttributes* attributes) override {
        calls += "stored ";
        other.reset();
        return Saver::storeAttributes(attributes);
    }

    std::unique_ptr<Pair> other;
};

TEST_F(FDefaultPoolFormTest, AsksNoAutoSaverThatAnotherOneReleased) {
    loadAll();
    Pair first;
    first.other = std::make_unique<Pair>();
    EXPECT_TRUE(save());
    EXPECT_EQ(calls, "stored ");
}

TEST_F(FDefaultPoolFormTest, RestoresNothingInFoldersFromACopyOfTheSingleFile) {
    begin(1);
    EXPECT_TRUE(save());
    folder_.write("settings/Defaults.xml.backup", "<Defaults/>");
    EXPECT_EQ(numberAfterRestart(), 1);
    EXPECT_TRUE(folder_.has("settings/Defaults.xml.backup"));
}

TEST_F(FDefaultPoolFormTest, NeverTakesTheFileOfAnotherGroup) {
    const DebugOutput output;
    const std::string file = "settings/Defaults/" + groupFile;
    for (const char* name : {"<string name=\"Group\" value=\"Other\"/>", ""}) {
        SCOPED_TRACE(name);
        const std::string other =
            std::string("<Defaults>") + name + "<int name=\"Version\" value=\"0\"/></Defaults>";
        folder_.write(file + ".xml", other);
        begin(1);
        EXPECT_TRUE(output.mentions("\"Group\" asked for"));
        EXPECT_EQ(pool().getGroup("Group")->values().count(), 1);
        EXPECT_TRUE(save());
        EXPECT_EQ(folder_.read(file + " (Damaged).xml"), other);
        EXPECT_EQ(numberAfterRestart(), 1);
        platform::deleteFile(folder_ / (file + " (Damaged).xml"));
    }
}

TEST_F(FDefaultPoolFormTest, LeavesAFileUnderItsEarlierNameToTheGroupThatOwnsIt) {
    // In 16 bits this name has the bytes that "Group!" has in 8.
    const ConstString wide(u"\u7247\u756F\u2170");
    begin(0);
    pool().getGroup(wide)->values().setInteger("n", 7);
    EXPECT_TRUE(save());
    begin(0);
    EXPECT_TRUE(isEmpty("Group!"));
    set(8, "Group!");
    EXPECT_TRUE(save());
    pool().removeGroup("Group!");
    EXPECT_TRUE(save());
    begin(0);
    EXPECT_EQ(pool().getGroup(wide)->values().getInteger("n"), 7);
}

TEST_F(FDefaultPoolFormTest, PutsPlainFilesOutOfTheWayOfItsFolders) {
    begin(1);
    for (const char* name : {"Defaults", "Defaults (New)", "Defaults (Trashed)", "Defaults (Earlier)"})
        folder_.write(std::string("settings/") + name, name);
    EXPECT_TRUE(save());
    EXPECT_TRUE(pool().trash());
    EXPECT_EQ(folder_.read("settings/Defaults (New) (File)"), "Defaults (New)");
    EXPECT_EQ(folder_.read("settings/Defaults (Trashed) (File)"), "Defaults (Trashed)");
    EXPECT_EQ(folder_.read("settings/Defaults (File)"), "Defaults");
}

TEST_F(FDefaultPoolFormTest, KeepsASingleFileWithMoreInItThanItCouldTake) {
    const auto entry = [](const char* name, int number) {
        return "<item>" + std::string(name) + "<member name=\"Values\"><int name=\"n\" value=\"" +
               std::to_string(number) + "\"/></member></item>";
    };
    const char* group = "<string name=\"Group\" value=\"Group\"/>";
    const struct {
        const char* what;
        std::string content;
        bool isLoaded;
        int64_t number;
    } rows[] = {
        {"no name", entry("", 5) + entry(group, 1), true, 1},
        {"one name twice", entry(group, 1) + entry(group, 2), true, 2},
        {"values that are no list",
         std::string("<item>") + group + "<int name=\"Values\" value=\"1\"/></item>", false, 0},
    };
    const auto document = [](const std::string& entries) {
        return "<Defaults><list name=\"Entries\" type=\"list\">" + entries + "</list></Defaults>";
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const std::string bytes = document(row.content);
        folder_.write("settings/Defaults.xml", bytes);
        EXPECT_EQ(loadAfterRestart(), row.isLoaded);
        EXPECT_EQ(number(), row.number);
        pool().getGroup("Group")->values().setInteger("m", 3);
        EXPECT_TRUE(save());
        EXPECT_EQ(folder_.read("settings/Defaults (Damaged).xml"), bytes);
        platform::deleteFile(folder_ / "settings/Defaults (Damaged).xml");
    }
    folder_.write("settings/Defaults.xml", document(rows[0].content + rows[2].content));
    folder_.write("settings/Defaults_old.xml", document(entry(group, 1)));
    EXPECT_TRUE(loadAfterRestart());
    set(2);
    EXPECT_TRUE(save());
    EXPECT_FALSE(folder_.has("settings/Defaults (Damaged 2).xml")) << "all of what was kept is taken";
    folder_.write("settings/Defaults.xml", "<Defaults><int name=\"Entries\" value=\"1\"/></Defaults>");
    restart();
    set(1, "Early");
    EXPECT_FALSE(loadAll()) << "entries that are no list";
    EXPECT_EQ(pool().getGroup("Early", 0, false), nullptr) << "the pool is empty then";
}

} // namespace
} // namespace qorl
