#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"
#include "persistence/defaults/DefaultPoolFixture.h"
#include "persistence/files/FNFileSystem.h"
#include "persistence/urls/FUrl.h"
#include "persistence/xml/XmlFile.h"
#include "support/LittleCost.h"

namespace qorl {
namespace {

class FDefaultPoolTest : public DefaultPoolFixture, public ::testing::WithParamInterface<DefaultsForm> {
protected:
    FDefaultPoolTest() : DefaultPoolFixture(GetParam()) {}
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

TEST_P(FDefaultPoolTest, HidesNothingThatIsStoredByWhatWasSetBeforeTheLoad) {
    loadAll();
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    pool().clear();
    pool().getGroup("Group")->values().setInteger("late", 1);
    if (isFolder())
        pool().setFolderMode();
    loadAll();
    EXPECT_EQ(pool().getGroup("Group")->values().getInteger("n"), 1);
}

TEST_P(FDefaultPoolTest, GivesWhatIsStoredToThoseWhoOnlyAsk) {
    loadAll();
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    restart();
    EXPECT_EQ(pool().getGroup("Group", 0, false), nullptr) << "before the load";
    loadAll();
    const FDefaults* group = pool().getGroup("Group", 0, false);
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(group->values().getInteger("n"), 1);
    EXPECT_EQ(pool().getGroup("Unknown", 0, false), nullptr);
    pool().removeGroup("Group");
    EXPECT_EQ(pool().getGroup("Group", 0, false), nullptr);
}

TEST_P(FDefaultPoolTest, ForgetsAllWhenALoadIsRefused) {
    loadAll();
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    loadAll();
    EXPECT_FALSE(pool().getGroup("Group")->isEmpty());
    pool().setLoadHook(&refuse);
    EXPECT_FALSE(loadAll());
    EXPECT_TRUE(pool().getGroup("Group")->isEmpty()) << "factory settings apply";
}

TEST_P(FDefaultPoolTest, BeginsAfreshWithEachLoad) {
    const std::string name = isFolder() ? "settings/Defaults/" + groupFile : "settings/Defaults";
    loadAll();
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    const std::string whole = folder_.read(name + ".xml");
    restart();
    folder_.write(name + ".xml", damaged);
    loadAll();
    EXPECT_TRUE(pool().getGroup("Group")->isEmpty());
    EXPECT_EQ(pool().preferencesNeedExtraction(), !isFolder());
    folder_.write(name + ".xml", whole);
    EXPECT_TRUE(pool().load());
    EXPECT_FALSE(pool().preferencesNeedExtraction());
    EXPECT_FALSE(pool().save(true)) << "it is not finished";
    pool().finishLoad();
    pool().getGroup("Group")->values().setInteger("n", 2);
    EXPECT_TRUE(pool().save(true));
    EXPECT_FALSE(folder_.has(name + " (Damaged).xml")) << "it is mended";
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
    EXPECT_TRUE(pool().save(true)) << "it is gone before the end";
    restart();
    loadAll();
    EXPECT_TRUE(pool().save(true)) << "it is missing for a run";
    restart();
    Saver saver;
    EXPECT_TRUE(pool().load());
    EXPECT_EQ(saver.state, 0);
    pool().finishLoad();
    EXPECT_EQ(saver.state, 7);
}

TEST_P(FDefaultPoolTest, KeepsWhatIsStoredOfALateAutoSaverUntilThatWasRestored) {
    const auto stored = [this] {
        restart();
        Saver saver;
        loadAll();
        return saver.state;
    };
    loadAll();
    {
        Saver saver;
        for (saver.state = 6; saver.state < 8; ++saver.state)
            EXPECT_TRUE(pool().save(true)) << "there is nothing to restore";
    }
    EXPECT_EQ(stored(), 7);
    {
        Saver late;
        EXPECT_TRUE(pool().save(true));
        EXPECT_EQ(late.state, 0);
    }
    EXPECT_EQ(stored(), 7) << "its factory state has nothing to say";
    {
        Saver late;
        EXPECT_TRUE(pool().restoreAutoSaver(late));
        EXPECT_EQ(late.state, 7);
        EXPECT_FALSE(pool().restoreAutoSaver(late)) << "once";
        late.state = 8;
        EXPECT_TRUE(pool().save(true));
    }
    EXPECT_EQ(stored(), 8);
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

TEST_P(FDefaultPoolTest, PutsTheGoodSettingsAsideThatAnInterruptedSaveKept) {
    restart();
    folder_.write("settings/Defaults.xml", damaged);
    folder_.write("settings/Defaults_old.xml", "<Defaults><list name=\"Entries\" type=\"list\"><item>" +
                                                   groupDocument(1).substr(10, groupDocument(1).size() - 21) +
                                                   "</item></list></Defaults>");
    EXPECT_TRUE(pool().backup());
    EXPECT_EQ(folder_.read("settings/Defaults (Damaged).xml"), damaged);
    pool().setLoadHook(&refuse);
    loadAll();
    pool().getGroup("Group")->values().setInteger("n", 2);
    EXPECT_TRUE(pool().save(true));
    restart();
    EXPECT_TRUE(pool().restore());
    loadAll();
    EXPECT_EQ(pool().getGroup("Group")->values().getInteger("n"), 1);
}

TEST_P(FDefaultPoolTest, PutsBadSettingsAway) {
    loadAll();
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    EXPECT_TRUE(pool().trash());
    EXPECT_EQ(folder_.has("settings/Defaults (Trashed).xml"), !isFolder());
    EXPECT_EQ(folder_.has("settings/Defaults (Trashed)/" + groupFile + ".xml"), isFolder());
    EXPECT_FALSE(pool().restore());
    EXPECT_TRUE(folder_.has("settings/Defaults (Trashed).xml") || folder_.has("settings/Defaults (Trashed)"))
        << "until the next ones replace it";
    restart();
    EXPECT_FALSE(loadAll());
    EXPECT_TRUE(pool().getGroup("Group")->isEmpty());
    pool().getGroup("Group")->values().setInteger("n", 3);
    pool().save(true);
    EXPECT_TRUE(pool().trash());
    const std::string trashed = isFolder() ? "Defaults (Trashed)/" + groupFile : "Defaults (Trashed)";
    EXPECT_NE(folder_.read("settings/" + trashed + ".xml").find("value=\"3\""), std::string::npos)
        << "an earlier one is replaced";
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
    const std::string name = isFolder() ? "Defaults/" + groupFile : "Defaults";
    folder_.write("settings/" + name + " (Damaged).xml", "earlier");
    folder_.write("settings/" + name + ".xml", damaged);
    EXPECT_EQ(loadAll(), isFolder());
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
        folder_ / (isFolder() ? "settings/Defaults/" + groupFile + ".xml" : "settings/Defaults.xml");
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

TEST_P(FDefaultPoolTest, RunsCallbacksThatAddOthers) {
    pool().addAfterLoadCallback(+[] {
        calls += "first ";
        pool().addAfterLoadCallback(+[] { calls += "second "; });
    });
    loadAll();
    EXPECT_EQ(calls, "first second ");
}

TEST_P(FDefaultPoolTest, RemembersTheFoldersOfDialogs) {
    FNPath located("takes/one.wav", FNPath::temporary);
    FNPath::setKnownFolder(FNPath::temporary, "/te mp");
    const FUrl away(ConstString("vfs://host/a%20b/one.wav"));
    const FUrl host(ConstString("vfs://host/one.wav"));
    const FNPath plain("/my music/one.wav");
    const FUrl onDisk(plain);
    const FPath root("/");
    struct Case {
        const FPath* saved;
        const char* path; ///< what "x y.wav" then is as a path of the disk; null where it can't be one
        const char* url;  ///< and "x%20y.wav" as a URL
    };
    for (const Case& c :
         {Case{&plain, "/my music/x y.wav", "file:///my%20music/x%20y.wav"},
          Case{&located, "/te mp/takes/x y.wav", "file:///te%20mp/takes/x%20y.wav"},
          Case{&onDisk, "/my music/x y.wav", "file:///my%20music/x%20y.wav"},
          Case{&root, "/x y.wav", "file:///x%20y.wav"}, Case{&away, nullptr, "vfs://host/a%20b/x%20y.wav"},
          Case{&host, nullptr, "vfs://host/x%20y.wav"}}) {
        SCOPED_TRACE(c.saved->toUtf8());
        c.saved->saveDefault("Import");
        FNPath path("x y.wav");
        EXPECT_EQ(path.loadDefault("Import"), c.path != nullptr);
        EXPECT_EQ(path.toUtf8(), c.path ? c.path : "x y.wav");
        for (const char* from : {"http://other/z/x%20y.wav", "x y.wav"}) {
            FUrl url{ConstString(from)};
            EXPECT_TRUE(url.loadDefault("Import"));
            EXPECT_EQ(url.toUtf8(), c.url);
        }
        EXPECT_FALSE(path.loadDefault("Export"));
    }
    FNPath::setKnownFolder(FNPath::temporary, "");
}

TEST_P(FDefaultPoolTest, TakesNothingOfAFileThatWasCut) {
    loadAll();
    Saver saver;
    saver.state = 7;
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    const std::string ofGroup = isFolder() ? "/" + groupFile : "";
    const std::string ofSaver = isFolder() ? "/AutoSaver" : "";
    for (const std::string& file : {ofGroup, ofSaver}) {
        const std::string name = "settings/Defaults" + file + ".xml";
        const std::string whole = folder_.read(name);
        for (size_t size = 0; size + 3 < whole.size(); size += 1) {
            SCOPED_TRACE(::testing::Message() << name << " cut behind " << size << " bytes");
            folder_.write(name, whole.substr(0, size));
            restart();
            saver.state = 0;
            EXPECT_EQ(loadAll(), isFolder());
            EXPECT_EQ(pool().getGroup("Group")->isEmpty(), file == ofGroup);
            EXPECT_EQ(saver.state, file == ofSaver ? 0 : 7);
        }
        folder_.write(name, whole);
    }
}

TEST_P(FDefaultPoolTest, ReadsHostileFilesAtLittleCost) {
    std::string deep;
    for (int i = 0; i < 100'000; ++i)
        deep += "<member name='m'>";
    const std::string_view ring = "<obj class='Gone' name='a' ID='1'><obj class='Gone' name='b' ID='2'>"
                                  "<obj name='a' ID='1'/><obj name='b' ID='2'/></obj></obj></member>";
    const std::string name = isFolder() ? "settings/Defaults/" + groupFile + ".xml" : "settings/Defaults.xml";
    for (const std::string_view values : {std::string_view(deep), ring}) {
        std::string group = "<string name='Group' value='Group'/><member name='Values'>";
        group += values;
        const bool isRing = values == ring;
        if (!isFolder())
            group = "<list name='Entries' type='list'><item>" + group + (isRing ? "</item></list>" : "");
        folder_.write(name, "<Defaults>" + group + (isRing ? "</Defaults>" : ""));
        restart();
        const LittleCost cost(group.size());
        EXPECT_EQ(loadAll(), isRing || isFolder());
        EXPECT_EQ(pool().getGroup("Group")->values().contains("a"), isRing);
        if (isRing) {
            pool().getGroup("Group")->values().setInteger("n", 1);
            EXPECT_TRUE(pool().save(true));
        }
    }
    restart();
    EXPECT_TRUE(loadAll());
    const FAttributes* object = pool().getGroup("Group")->values().findAttributes("a|b");
    ASSERT_NE(object, nullptr);
    EXPECT_TRUE(object->contains("a") && object->contains("b")) << "the ring is stored as it was";
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
    EXPECT_EQ(other->isFolderMode(), isFolder());
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

TEST_P(FDefaultPoolTest, TellsNamesApartThatAreNoUtf8) {
    loadAll();
    pool().getGroup("\xE9")->values().setInteger("n", 1);
    pool().getGroup("\xE8")->values().setInteger("n", 2);
    EXPECT_TRUE(pool().save(true));
    restart();
    loadAll();
    EXPECT_EQ(pool().getGroup("\xE9")->values().getInteger("n"), 1);
    EXPECT_EQ(pool().getGroup("\xC3\xA8")->values().getInteger("n"), 2) << "the same character in UTF-8";
}

TEST_P(FDefaultPoolTest, SavesNothingOverSettingsThatAnotherStartBroughtBack) {
    loadAll();
    pool().getGroup("Group")->values().setInteger("n", 1);
    pool().save(true);
    EXPECT_TRUE(pool().backup());
    pool().getGroup("Group")->values().setInteger("n", 2);
    EXPECT_TRUE(pool().save(true)) << "while its copy stands";
    FGlobalDefaultPool another;
    if (isFolder())
        another.setFolderMode();
    EXPECT_TRUE(another.restore());
    const DebugOutput output;
    EXPECT_FALSE(pool().save(true));
    EXPECT_TRUE(output.mentions("nothing is saved over them"));
    restart();
    loadAll();
    EXPECT_EQ(pool().getGroup("Group")->values().getInteger("n"), 1);
}

TEST_P(FDefaultPoolTest, RestoreMakesNoFolder) {
    EXPECT_FALSE(pool().restore());
    EXPECT_TRUE(pool().trash());
    EXPECT_FALSE(folder_.has("settings"));
}

TEST_P(FDefaultPoolTest, SavesTheOthersWhenOneGroupCantBeWritten) {
    loadAll();
    Saver saver;
    saver.state = 7;
    pool().getGroup("Bad")->values().setInteger("n", 1);
    pool().getGroup("Good")->values().setInteger("n", 1);
    EXPECT_TRUE(pool().save(true));
    pool().getGroup("Bad")->values().setInteger(std::string(3000, 'k'), 2);
    pool().getGroup("Good")->values().setInteger("n", 2);
    saver.state = 8;
    {
        const DebugOutput output;
        EXPECT_FALSE(pool().save(true));
        EXPECT_TRUE(output.mentions("\"Bad\"")) << output.text;
        EXPECT_FALSE(output.mentions("\"Good\"")) << output.text;
    }
    saver.state = 0;
    restart();
    loadAll();
    EXPECT_EQ(pool().getGroup("Bad")->values().getInteger("n"), 1) << "as it was stored before";
    EXPECT_EQ(pool().getGroup("Good")->values().getInteger("n"), 2);
    EXPECT_EQ(saver.state, 8);
}

TEST_P(FDefaultPoolTest, LoadsNoGroupThatWasRemoved) {
    loadAll();
    pool().getGroup("Old")->values().setInteger("n", 1);
    pool().save(true);
    pool().removeGroup("Old");
    loadAll();
    EXPECT_EQ(pool().getGroup("Old"), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Forms, FDefaultPoolTest,
                         ::testing::Values(DefaultsForm::oneFile, DefaultsForm::oneFileForEachGroup),
                         ::testing::PrintToStringParamName());

} // namespace
} // namespace qorl
