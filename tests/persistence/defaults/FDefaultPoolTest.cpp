#include "persistence/defaults/FDefaultPool.h"

#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"
#include "persistence/SettingsFolder.h"
#include "persistence/files/FNFileSystem.h"
#include "persistence/xml/XmlFile.h"
#include "support/FailingAllocation.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/stat.h>

namespace qorl {
namespace {

std::string calls;

const std::string damaged = "<Defaults><list name='Entries' type='li";
// MD5 of "Group", in UTF-16 and in 8 bits
const std::string groupFile = "782743F1529D5384B5C3C8AFE48ECBC4";
const std::string earlierGroupFile = "03937134CEDAB9078BE39A77EE3A48A0";

std::string groupDocument(int number) {
    return "<Defaults><string name=\"Group\" value=\"Group\"/><member name=\"Values\"><int name=\"n\" "
           "value=\"" +
           std::to_string(number) + "\"/></member></Defaults>";
}

bool refuse() {
    calls += "refused ";
    return false;
}

class Saver : public AutoSaver {
    QORL_CLASS(Saver, AutoSaver)

public:
    bool storeAttributes(FAttributes* attributes) override {
        attributes->setInteger("state", state);
        return true;
    }
    bool restoreAttributes(FAttributes* attributes) override {
        state = attributes->getInteger("state");
        return true;
    }

    int64_t state = 0;
};

/// An object of a module that isn't there in every run.
class Curve : public CmObject {
    QORL_CLASS(Curve, CmObject)

public:
    bool storeAttributes(FAttributes* attributes) override {
        attributes->setInteger("level", level);
        attributes->setObject("next", next, FAttributes::Hold::plain);
        return true;
    }
    bool restoreAttributes(FAttributes* attributes) override {
        level = attributes->getInteger("level");
        return true;
    }

    int64_t level = 0;
    CmObject* next = nullptr;
};

/// The pool of the process, fresh for each test and with a folder of its own.
class FDefaultPoolTest : public ::testing::TestWithParam<bool> {
protected:
    FDefaultPoolTest() { restart(); }
    ~FDefaultPoolTest() override { pool().clear(); }

    static FGlobalDefaultPool& pool() { return *FGlobalDefaultPool::instance(); }

    /// As if the program had ended and begun again.
    void restart() {
        pool().clear();
        calls.clear();
        if (GetParam())
            pool().setFolderMode();
    }
    bool loadAll() {
        const bool isLoaded = pool().load();
        pool().finishLoad();
        return isLoaded;
    }

    SettingsFolder folder_;
};

TEST_P(FDefaultPoolTest, KeepsGroupsFromRunToRun) {
    EXPECT_FALSE(loadAll());
    pool().getGroup("Window \xC3\xA4", 3)->values().setInteger("left", 12);
    pool().getGroup("Empty");
    EXPECT_TRUE(pool().save(true));
    restart();
    EXPECT_TRUE(loadAll());
    EXPECT_EQ(pool().getGroup("Window \xC3\xA4", 2), nullptr) << "another version";
    FDefaults* group = pool().getGroup("Window \xC3\xA4", 3);
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(group->values().getInteger("left"), 12);
    EXPECT_EQ(group->version(), 3);
    EXPECT_EQ(pool().getGroup(""), nullptr);
    EXPECT_EQ(pool().getGroup("Unknown", 0, false), nullptr);
    pool().setDisabled(true);
    EXPECT_EQ(pool().getGroup("Window \xC3\xA4", 3), nullptr);
}

TEST_P(FDefaultPoolTest, SavesNothingBeforeItWasLoaded) {
    pool().getGroup("Group")->values().setInteger("n", 1);
    EXPECT_FALSE(pool().save(true));
    EXPECT_FALSE(folder_.has("settings"));
}

TEST_P(FDefaultPoolTest, AsksItsHooks) {
    pool().setLoadHook(&refuse);
    pool().setSaveHook(&refuse);
    pool().addAfterLoadCallback(+[] { calls += "loaded "; });
    pool().addBeforeSaveCallback(+[] { calls += "saving "; });
    EXPECT_FALSE(loadAll());
    pool().getGroup("Group")->values().setInteger("n", 1);
    EXPECT_TRUE(pool().save(false));
    EXPECT_TRUE(pool().save(true));
    EXPECT_EQ(calls, "refused loaded refused saving refused ");
    EXPECT_FALSE(folder_.has("settings"));
}

TEST_P(FDefaultPoolTest, RestoresAutoSaversAtTheEndOfTheLoad) {
    loadAll();
    {
        Saver saver;
        saver.state = 7;
        EXPECT_TRUE(pool().save(true));
    }
    restart();
    Saver saver;
    EXPECT_TRUE(pool().load());
    EXPECT_EQ(saver.state, 0);
    pool().finishLoad();
    EXPECT_EQ(saver.state, 7);
}

TEST_P(FDefaultPoolTest, ForgetsRemovedGroups) {
    loadAll();
    pool().getGroup("Old")->values().setInteger("n", 1);
    pool().getGroup("Other")->values().setInteger("n", 2);
    pool().save(true);
    pool().removeGroup("Old");
    EXPECT_EQ(pool().getGroup("Old"), nullptr);
    pool().save(true);
    restart();
    loadAll();
    EXPECT_TRUE(pool().getGroup("Old")->isEmpty());
    EXPECT_EQ(pool().getGroup("Other")->values().getInteger("n"), 2);
}

TEST_P(FDefaultPoolTest, DisablesSettingsForOneRun) {
    loadAll();
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    EXPECT_FALSE(pool().restore()) << "nothing was put aside";
    // The run in which they are disabled saves settings of its own.
    EXPECT_TRUE(pool().backup());
    pool().getGroup("Group")->values().setInteger("n", 2);
    pool().save(true);
    restart();
    EXPECT_TRUE(pool().restore());
    EXPECT_FALSE(pool().restore());
    loadAll();
    EXPECT_EQ(pool().getGroup("Group")->values().getInteger("n"), 1);
}

TEST_P(FDefaultPoolTest, PutsBadSettingsAway) {
    loadAll();
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    EXPECT_TRUE(pool().trash());
    EXPECT_EQ(folder_.has("settings/Defaults (Trashed).xml"), !GetParam());
    restart();
    EXPECT_FALSE(loadAll());
    EXPECT_TRUE(pool().getGroup("Group")->isEmpty());
    pool().getGroup("Group")->values().setInteger("n", 3);
    pool().save(true);
    EXPECT_TRUE(pool().trash()) << "an earlier one is replaced";
}

TEST_P(FDefaultPoolTest, StartsAfreshOverADamagedFile) {
    folder_.write("settings/Defaults.xml", damaged);
    EXPECT_FALSE(loadAll());
    EXPECT_TRUE(pool().getGroup("Group")->isEmpty());
    pool().getGroup("Group")->values().setInteger("n", 1);
    EXPECT_EQ(folder_.read("settings/Defaults.xml"), damaged) << "until something else is stored";
    EXPECT_TRUE(pool().save(true));
    EXPECT_EQ(folder_.read("settings/Defaults (Damaged).xml"), damaged);
    restart();
    EXPECT_TRUE(loadAll());
    EXPECT_EQ(pool().getGroup("Group")->values().getInteger("n"), 1);
    EXPECT_TRUE(pool().save(true));
    EXPECT_FALSE(folder_.has("settings/Defaults (Damaged 2).xml"));
}

TEST_P(FDefaultPoolTest, KeepsEachDamagedFile) {
    const std::string name = GetParam() ? "Defaults/" + groupFile : "Defaults";
    folder_.write("settings/" + name + " (Damaged).xml", "earlier");
    folder_.write("settings/" + name + ".xml", damaged);
    EXPECT_EQ(loadAll(), GetParam());
    EXPECT_TRUE(pool().getGroup("Group")->isEmpty());
    pool().getGroup("Group")->values().setInteger("n", 1);
    EXPECT_TRUE(pool().save(true));
    EXPECT_EQ(folder_.read("settings/" + name + " (Damaged).xml"), "earlier");
    EXPECT_EQ(folder_.read("settings/" + name + " (Damaged 2).xml"), damaged);
    EXPECT_NE(folder_.read("settings/" + name + ".xml").find("name=\"n\""), std::string::npos);
}

TEST_P(FDefaultPoolTest, TouchesOnlyFilesThatChanged) {
    loadAll();
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    const std::string path =
        folder_ / (GetParam() ? "settings/Defaults/" + groupFile + ".xml" : "settings/Defaults.xml");
    platform::FileInfo before;
    platform::FileInfo after;
    platform::getFileInfo(path, before);
    pool().save(true);
    platform::getFileInfo(path, after);
    EXPECT_EQ(after.serial, before.serial);
    pool().getGroup("Group")->values().setInteger("n", 2);
    pool().save(true);
    platform::getFileInfo(path, after);
    EXPECT_NE(after.serial, before.serial);
}

TEST_P(FDefaultPoolTest, LosesNoSettingsWithoutMemory) {
    loadAll();
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    const std::string name = GetParam() ? "settings/Defaults/" + groupFile : "settings/Defaults";
    const std::string whole = folder_.read(name + ".xml");
    failEachAllocation([&](FailingAllocation& allocation) {
        restart();
        const FDefaults* group = allocation.during([] {
            pool().load();
            return pool().getGroup("Group");
        });
        pool().finishLoad();
        const bool isSaved = allocation.during([] { return pool().save(true); });
        EXPECT_TRUE((group && isSaved) || allocation.hasFailed());
        const std::string damagedName = name + " (Damaged).xml";
        if (folder_.has(damagedName))
            platform::moveFile(folder_ / damagedName, folder_ / (name + ".xml"));
        ASSERT_EQ(folder_.read(name + ".xml"), whole);
    });
}

TEST_P(FDefaultPoolTest, SavesNothingOverAutoSaversItHadNoMemoryToRestore) {
    loadAll();
    Saver saver;
    saver.state = 7;
    pool().save(true);
    const std::string name = GetParam() ? "settings/Defaults/AutoSaver.xml" : "settings/Defaults.xml";
    const std::string whole = folder_.read(name);
    failEachAllocation([&](FailingAllocation& allocation) {
        restart();
        saver.state = 0;
        pool().load();
        allocation.during([] {
            pool().finishLoad();
            return true;
        });
        EXPECT_TRUE(saver.state == 7 || !pool().save(true));
        EXPECT_EQ(folder_.read(name), whole);
    });
}

TEST_P(FDefaultPoolTest, RunsCallbacksThatAddOthers) {
    pool().addAfterLoadCallback(+[] {
        calls += "first ";
        pool().addAfterLoadCallback(+[] { calls += "second "; });
    });
    loadAll();
    EXPECT_EQ(calls, "first second ");
}

TEST_P(FDefaultPoolTest, RemembersTheFoldersOfDialogs) {
    const FNPath path("/music/takes/one.wav");
    path.saveDefault("Import");
    FNPath other("x.wav");
    EXPECT_TRUE(other.loadDefault("Import"));
    EXPECT_EQ(other.toUtf8(), "/music/takes/x.wav");
    EXPECT_FALSE(other.loadDefault("Export"));
}

INSTANTIATE_TEST_SUITE_P(Forms, FDefaultPoolTest, ::testing::Values(false, true),
                         [](const auto& form) { return form.param ? "OneFileForEachGroup" : "OneFile"; });

TEST_P(FDefaultPoolTest, TakesNothingOfAFileThatWasCut) {
    loadAll();
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    const std::string name = GetParam() ? "settings/Defaults/" + groupFile + ".xml" : "settings/Defaults.xml";
    const std::string whole = folder_.read(name);
    for (size_t size = 0; size + 3 < whole.size(); size += 1) {
        folder_.write(name, whole.substr(0, size));
        restart();
        EXPECT_EQ(loadAll(), GetParam()) << size;
        EXPECT_TRUE(pool().getGroup("Group")->isEmpty()) << size;
    }
}

TEST_P(FDefaultPoolTest, KeepsObjectsWhoseModuleIsMissingForARun) {
    loadAll();
    const auto curve = make<Curve>();
    curve->level = 7;
    curve->next = curve.get();
    pool().getGroup("Group")->values().setObject("curve", curve.get(), FAttributes::Hold::retain);
    pool().getGroup("Group")->values().setObject("again", curve.get(), FAttributes::Hold::retain);
    ASSERT_TRUE(pool().save(true));
    for (const int run : {1, 2}) {
        restart();
        ASSERT_TRUE(loadAll());
        FAttributes& values = pool().getGroup("Group")->values();
        EXPECT_EQ(values.getObject("curve", "Curve"), nullptr);
        values.setInteger("run", run);
        ASSERT_TRUE(pool().save(true));
    }
    restart();
    ClassRecord record("Curve", &createObject<Curve>, &CmObject::classRecord());
    ASSERT_TRUE(loadAll());
    const FAttributes& values = pool().getGroup("Group")->values();
    const Ref<CmObject> found = values.getObject("curve");
    EXPECT_EQ(values.getObject("again"), found);
    ClassFactory::instance()->removeRecord(record);
    ASSERT_NE(cast<Curve>(found.get()), nullptr) << "lost while its class was missing";
    EXPECT_EQ(cast<Curve>(found.get())->level, 7);
}

TEST_P(FDefaultPoolTest, CopiesItsGroups) {
    loadAll();
    pool().getGroup("Group", 2)->values().setInteger("n", 1);
    const Ref<CmObject> copy = Ref<CmObject>::adopt(pool().clone());
    auto* other = cast<FGlobalDefaultPool>(copy.get());
    ASSERT_NE(other, nullptr);
    other->getGroup("Group", 2)->values().setInteger("n", 2);
    EXPECT_EQ(pool().getGroup("Group", 2)->values().getInteger("n"), 1);
    EXPECT_EQ(other->isFolderMode(), GetParam());
}

class FDefaultPoolFormTest : public FDefaultPoolTest {
protected:
    void begin(int number) {
        pool().setFolderMode();
        loadAll();
        pool().getGroup("Group")->values().setInteger("n", number);
    }
    int64_t numberAfterRestart() {
        restart();
        pool().setFolderMode();
        pool().restore();
        loadAll();
        return pool().getGroup("Group")->values().getInteger("n");
    }
};

TEST_P(FDefaultPoolFormTest, WritesTheDocuments) {
    loadAll();
    Saver saver;
    saver.state = 7;
    pool().getGroup("FGlobalDefaultPool")->values().removeAll();
    pool().getGroup("Z", 3)->values().setString("t", "x");
    pool().getGroup("Empty", 3);
    EXPECT_TRUE(pool().save(true));
    const std::string head = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n";
    EXPECT_EQ(folder_.read("settings/Defaults.xml"), head +
                                                         "<Defaults>\r\n"
                                                         "   <list name=\"Entries\" type=\"list\">\r\n"
                                                         "      <item>\r\n"
                                                         "         <string name=\"Group\" value=\"Z\"/>\r\n"
                                                         "         <int name=\"Version\" value=\"3\"/>\r\n"
                                                         "         <member name=\"Values\">\r\n"
                                                         "            <string name=\"t\" value=\"x\"/>\r\n"
                                                         "         </member>\r\n"
                                                         "      </item>\r\n"
                                                         "   </list>\r\n"
                                                         "   <member name=\"AutoSavers\">\r\n"
                                                         "      <member name=\"Saver\">\r\n"
                                                         "         <int name=\"state\" value=\"7\"/>\r\n"
                                                         "      </member>\r\n"
                                                         "   </member>\r\n"
                                                         "</Defaults>\r\n");
    pool().setFolderMode();
    EXPECT_TRUE(pool().save(true));
    // MD5 of "Z" in UTF-16
    EXPECT_EQ(folder_.read("settings/Defaults/BF7DFE4BBE9619E219FD63F902180762.xml"),
              head + "<Defaults>\r\n"
                     "   <string name=\"Group\" value=\"Z\"/>\r\n"
                     "   <int name=\"Version\" value=\"3\"/>\r\n"
                     "   <member name=\"Values\">\r\n"
                     "      <string name=\"t\" value=\"x\"/>\r\n"
                     "   </member>\r\n"
                     "</Defaults>\r\n");
    EXPECT_EQ(folder_.read("settings/Defaults/AutoSaver.xml"),
              head + "<AutoSaver>\r\n"
                     "   <member name=\"Saver\">\r\n"
                     "      <int name=\"state\" value=\"7\"/>\r\n"
                     "   </member>\r\n"
                     "</AutoSaver>\r\n");
    std::vector<platform::FolderEntry> entries;
    platform::listFolder(folder_ / "settings/Defaults", entries);
    EXPECT_EQ(entries.size(), 2u);
}

TEST_P(FDefaultPoolFormTest, NamesAFileByTheWideFormOfItsGroup) {
    // MD5 of "\xC4\xA7" (h with stroke), in UTF-16: 27 01
    begin(0);
    pool().getGroup("\xC4\xA7")->values().setInteger("n", 1);
    pool().getGroup(ConstString(u"\u0127"))->values().setInteger("m", 2);
    EXPECT_TRUE(pool().save(true));
    EXPECT_TRUE(folder_.has("settings/Defaults/561E978B7276894F98B030DF25EA8112.xml"));
}

TEST_P(FDefaultPoolFormTest, FindsAGroupUnderItsEarlierName) {
    const std::string earlier = "settings/Defaults/" + earlierGroupFile + ".xml";
    const std::string now = "settings/Defaults/" + groupFile + ".xml";
    folder_.write(earlier, groupDocument(1));
    EXPECT_EQ(numberAfterRestart(), 1);
    pool().getGroup("Group")->values().setInteger("n", 2);
    EXPECT_TRUE(pool().save(true));
    EXPECT_TRUE(folder_.has(now));
    EXPECT_FALSE(folder_.has(earlier)) << "it would come back";
    folder_.write(earlier, groupDocument(1));
    EXPECT_EQ(numberAfterRestart(), 2);
    pool().removeGroup("Group");
    EXPECT_TRUE(pool().save(true));
    EXPECT_FALSE(folder_.has(now) || folder_.has(earlier));
    folder_.write(earlier, damaged);
    EXPECT_EQ(numberAfterRestart(), 0);
    pool().getGroup("Group")->values().setInteger("n", 3);
    EXPECT_TRUE(pool().save(true));
    EXPECT_EQ(folder_.read("settings/Defaults/" + earlierGroupFile + " (Damaged).xml"), damaged);
}

TEST_P(FDefaultPoolFormTest, BringsBackASingleFileThatWasDisabledBeforeItMoved) {
    loadAll();
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    restart();
    pool().setFolderMode();
    EXPECT_TRUE(pool().backup());
    pool().setLoadHook(&refuse);
    begin(2);
    EXPECT_TRUE(pool().save(true));
    EXPECT_TRUE(folder_.has("settings/Defaults"));
    EXPECT_EQ(numberAfterRestart(), 1);
    EXPECT_FALSE(pool().restore());
}

TEST_P(FDefaultPoolFormTest, KeepsABackupThatCouldNotBeBroughtBack) {
    begin(1);
    pool().save(true);
    EXPECT_TRUE(pool().backup());
    begin(2);
    pool().save(true);
    // A file where the store is put away to.
    folder_.write("settings/Defaults (Trashed)", "x");
    EXPECT_FALSE(pool().restore());
    EXPECT_FALSE(pool().backup()) << "it would replace the user's own settings";
    platform::deleteFile(folder_ / "settings/Defaults (Trashed)");
    EXPECT_EQ(numberAfterRestart(), 1);
}

TEST_P(FDefaultPoolFormTest, TrashesBothForms) {
    loadAll();
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    restart();
    pool().setFolderMode();
    EXPECT_TRUE(pool().trash());
    EXPECT_TRUE(folder_.has("settings/Defaults (Trashed).xml"));
    EXPECT_FALSE(pool().trash());
    begin(2);
    pool().save(true);
    EXPECT_TRUE(pool().trash());
    EXPECT_FALSE(folder_.has("settings/Defaults") || folder_.has("settings/Defaults (Trashed)"));
}

TEST(FDefaults, HoldsOnlyWhatItsFileHeld) {
    FAttributes stored;
    FDefaults group("Group", 4);
    group.values().setInteger("n", 1);
    EXPECT_TRUE(group.storeAttributes(&stored));
    group.values().setInteger("n", 2);
    group.values().setInteger("m", 3);
    EXPECT_TRUE(group.restoreAttributes(&stored));
    EXPECT_EQ(group.values().count(), 1);
    EXPECT_EQ(group.values().getInteger("n"), 1);
    EXPECT_EQ(group.version(), 4);
    const FDefaults same("Group", 5);
    const FDefaults later("Grouq");
    EXPECT_TRUE(group.isEqual(&same));
    EXPECT_LT(group.compare(&later), 0);
}

TEST_P(FDefaultPoolFormTest, MovesToOneFileForEachGroup) {
    loadAll();
    EXPECT_TRUE(pool().preferencesNeedExtraction());
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    const std::string single = folder_.read("settings/Defaults.xml");
    EXPECT_NE(single.find("<list name=\"Entries\" type=\"list\">"), std::string::npos);
    EXPECT_NE(single.find("<string name=\"Group\" value=\"Group\"/>"), std::string::npos);
    EXPECT_EQ(single.find("AutoSavers"), std::string::npos);
    restart();
    pool().setFolderMode();
    EXPECT_TRUE(loadAll());
    EXPECT_FALSE(pool().preferencesNeedExtraction());
    pool().save(true);
    EXPECT_FALSE(folder_.has("settings/Defaults.xml"));
    EXPECT_TRUE(folder_.has("settings/Defaults/" + groupFile + ".xml"));
    restart();
    pool().setFolderMode();
    loadAll();
    EXPECT_EQ(pool().getGroup("Group")->values().getInteger("n"), 1);
}

TEST_P(FDefaultPoolFormTest, KeepsTheSingleFileUntilAllGroupsAreStored) {
    loadAll();
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    restart();
    pool().setFolderMode();
    loadAll();
    // What stands in the way of the new folder fails the save.
    folder_.write("settings/Defaults (New)", "x");
    EXPECT_FALSE(pool().save(true));
    EXPECT_TRUE(folder_.has("settings/Defaults.xml"));
    EXPECT_FALSE(folder_.has("settings/Defaults"));
    restart();
    pool().setFolderMode();
    EXPECT_TRUE(loadAll());
    EXPECT_EQ(pool().getGroup("Group")->values().getInteger("n"), 1);
}

TEST_P(FDefaultPoolFormTest, KeepsAnEarlierBackupWhenANewOneFails) {
    pool().setFolderMode();
    loadAll();
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    EXPECT_TRUE(pool().backup());
    // A pipe can't be copied.
    ASSERT_EQ(mkfifo((folder_ / "settings/Defaults/pipe").c_str(), 0600), 0);
    EXPECT_FALSE(pool().backup());
    EXPECT_TRUE(pool().restore());
    EXPECT_TRUE(folder_.has("settings/Defaults/" + groupFile + ".xml"));
    EXPECT_FALSE(folder_.has("settings/Defaults/pipe"));
    EXPECT_FALSE(folder_.has("settings/Defaults (Backup)"));
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

TEST_P(FDefaultPoolFormTest, AsksNoAutoSaverThatAnotherOneReleased) {
    loadAll();
    Pair first;
    first.other = std::make_unique<Pair>();
    EXPECT_TRUE(pool().save(true));
    EXPECT_EQ(calls, "stored ");
}

INSTANTIATE_TEST_SUITE_P(Forms, FDefaultPoolFormTest, ::testing::Values(false));

} // namespace
} // namespace qorl
