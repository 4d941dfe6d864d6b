#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"
#include "persistence/defaults/DefaultPoolFixture.h"
#include "persistence/files/FNFileSystem.h"
#include "persistence/urls/FUrl.h"
#include "persistence/xml/XmlFile.h"
#include "support/LittleCost.h"

#include <memory>
#include <set>

namespace qorl {
namespace {

class FDefaultPoolTest : public DefaultPoolFixture, public ::testing::WithParamInterface<StoreForm> {
protected:
    FDefaultPoolTest() : DefaultPoolFixture(GetParam()) {}
};

TEST_P(FDefaultPoolTest, KeepsGroupsFromRunToRun) {
    EXPECT_FALSE(loadAll());
    pool().getGroup("Window \xC3\xA4", 3)->values().setInteger("left", 12);
    pool().getGroup("Empty");
    EXPECT_TRUE(save());
    EXPECT_TRUE(loadAfterRestart());
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
    store(1);
    pool().clear();
    pool().getGroup("Group")->values().setInteger("late", 1);
    if (isFolder())
        pool().setFolderMode();
    loadAll();
    EXPECT_EQ(number(), 1);
}

TEST_P(FDefaultPoolTest, GivesWhatIsStoredToThoseWhoOnlyAsk) {
    const auto asked = [] { return pool().getGroup("Group", 0, false); };
    store(1);
    restart();
    EXPECT_EQ(asked(), nullptr) << "before the load";
    loadAll();
    ASSERT_NE(asked(), nullptr);
    EXPECT_EQ(asked()->values().getInteger("n"), 1);
    pool().removeGroup("Group");
    EXPECT_EQ(asked(), nullptr);
}

TEST_P(FDefaultPoolTest, ForgetsAllWhenALoadIsRefused) {
    store(1);
    loadAll();
    EXPECT_FALSE(isEmpty());
    pool().setLoadHook(&refuse);
    EXPECT_FALSE(loadAll());
    EXPECT_TRUE(isEmpty()) << "factory settings apply";
}

TEST_P(FDefaultPoolTest, BeginsAfreshWithEachLoad) {
    store(1);
    const std::string whole = folder_.read(fileOfGroup() + ".xml");
    restart();
    folder_.write(fileOfGroup() + ".xml", damaged);
    loadAll();
    EXPECT_TRUE(isEmpty());
    EXPECT_EQ(pool().preferencesNeedExtraction(), !isFolder());
    folder_.write(fileOfGroup() + ".xml", whole);
    EXPECT_TRUE(pool().load());
    EXPECT_FALSE(pool().preferencesNeedExtraction());
    EXPECT_FALSE(save()) << "it is not finished";
    pool().finishLoad();
    set(2);
    EXPECT_TRUE(save());
    EXPECT_FALSE(folder_.has(fileOfGroup() + " (Damaged).xml")) << "it is mended";
}

TEST_P(FDefaultPoolTest, MakesNoFolderBeforeItWasLoaded) {
    EXPECT_FALSE(pool().restore());
    EXPECT_TRUE(pool().trash());
    set(1);
    EXPECT_FALSE(save());
    EXPECT_FALSE(folder_.has("settings"));
}

TEST_P(FDefaultPoolTest, AsksItsHooksAndCallbacks) {
    pool().setLoadHook(&refuse);
    pool().setSaveHook(&refuse);
    pool().addAfterLoadCallback(+[] {
        calls += "loaded ";
        pool().addAfterLoadCallback(+[] { calls += "later "; });
    });
    pool().addBeforeSaveCallback(+[] { calls += "saving "; });
    EXPECT_FALSE(loadAll());
    set(1);
    EXPECT_TRUE(pool().save(false));
    EXPECT_TRUE(save());
    EXPECT_EQ(calls, "refused loaded later refused saving refused ");
    EXPECT_FALSE(folder_.has("settings"));
    calls.clear();
    pool().setLoadHook(nullptr);
    loadAll();
    EXPECT_EQ(calls, "loaded later ") << "behind a load that nobody refuses";
}

TEST_P(FDefaultPoolTest, KeepsWhatIsStoredOfAnAutoSaverUntilThatWasRestored) {
    const auto stored = [this] {
        restart();
        Saver saver;
        pool().load();
        EXPECT_EQ(saver.state, 0) << "before the end of the load";
        pool().finishLoad();
        return saver.state;
    };
    loadAll();
    {
        Saver saver;
        for (saver.state = 6; saver.state < 8; ++saver.state)
            EXPECT_TRUE(save()) << "there is nothing to restore";
    }
    EXPECT_TRUE(save()) << "it is gone before the end";
    loadAfterRestart();
    EXPECT_TRUE(save()) << "it is missing for a run";
    EXPECT_EQ(stored(), 7);
    {
        Saver late;
        EXPECT_TRUE(save());
        EXPECT_EQ(late.state, 0);
    }
    EXPECT_EQ(stored(), 7) << "its factory state has nothing to say";
    {
        Saver late;
        EXPECT_TRUE(pool().restoreAutoSaver(late));
        EXPECT_EQ(late.state, 7);
        EXPECT_FALSE(pool().restoreAutoSaver(late)) << "once";
        late.state = 8;
        EXPECT_TRUE(pool().registerAutoSaver(&late)) << "it is registered already";
        EXPECT_TRUE(save());
    }
    EXPECT_EQ(stored(), 8);
    static std::unique_ptr<Saver> made;
    restart();
    pool().addAfterLoadCallback(+[] { made = std::make_unique<Saver>(); });
    loadAll();
    EXPECT_TRUE(save());
    EXPECT_TRUE(pool().restoreAutoSaver(*made)) << "it was made when the others had been restored";
    made.reset();
    EXPECT_EQ(stored(), 8);
}

/// Looks into the settings and changes them while it is restored.
class Asking : public CmObject {
    QORL_CLASS(Asking, CmObject)
    QORL_RECORD(Asking)

public:
    bool storeAttributes(FAttributes* attributes) override {
        attributes->setInteger("level", 1);
        return true;
    }
    bool restoreAttributes(FAttributes* attributes) override {
        auto* pool = FGlobalDefaultPool::instance();
        calls += "made ";
        pool->getGroup("Later");
        return pool->removeGroup("Gone") && attributes->contains("level");
    }
};
QORL_REGISTER(Asking, "Asking", CmObject, 0)

TEST_P(FDefaultPoolTest, MakesObjectsOnlyWhenTheirGroupIsLoaded) {
    loadAll();
    pool().getGroup("Group")->values().setObject("asks", make<Asking>().get(), FAttributes::Hold::retain);
    set(2, "Later");
    EXPECT_TRUE(save());
    restart();
    EXPECT_TRUE(pool().backup());
    EXPECT_EQ(calls, "") << "it may be what keeps the program from starting";
    EXPECT_TRUE(loadAll());
    EXPECT_FALSE(isEmpty());
    EXPECT_EQ(calls, "made ");
    EXPECT_EQ(number("Later"), 2);
    set(3, "Later");
    EXPECT_TRUE(save());
    EXPECT_FALSE(folder_.has("settings/Defaults (Damaged).xml")) << "no group is stored twice";
    EXPECT_TRUE(loadAll());
    calls.clear();
    pool().removeGroup("Group");
    EXPECT_TRUE(save());
    EXPECT_EQ(calls, "");
    EXPECT_EQ(number("Later"), 3);
}

TEST_P(FDefaultPoolTest, ForgetsRemovedGroups) {
    loadAll();
    set(1, "Old");
    set(2, "Other");
    save();
    pool().removeGroup("Old");
    EXPECT_EQ(pool().getGroup("Old"), nullptr);
    loadAll();
    EXPECT_EQ(pool().getGroup("Old"), nullptr) << "nor is it loaded again";
    save();
    loadAfterRestart();
    EXPECT_TRUE(isEmpty("Old"));
    EXPECT_EQ(number("Other"), 2);
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
    set(2);
    EXPECT_TRUE(save());
    restart();
    EXPECT_TRUE(pool().restore());
    loadAll();
    EXPECT_EQ(number(), 1);
}

TEST_P(FDefaultPoolTest, PutsBadSettingsAway) {
    const std::string trashed =
        isFolder() ? "settings/Defaults (Trashed)/" + groupFile + ".xml" : "settings/Defaults (Trashed).xml";
    store(1);
    EXPECT_TRUE(pool().trash());
    EXPECT_TRUE(folder_.has(trashed));
    EXPECT_FALSE(pool().restore());
    EXPECT_TRUE(folder_.has(trashed)) << "until the next ones replace it";
    EXPECT_FALSE(loadAfterRestart());
    EXPECT_TRUE(isEmpty());
    set(3);
    save();
    EXPECT_TRUE(pool().trash());
    EXPECT_NE(folder_.read(trashed).find("value=\"3\""), std::string::npos) << "an earlier one is replaced";
}

TEST_P(FDefaultPoolTest, StartsAfreshOverADamagedFileAndKeepsIt) {
    // A store that moves to a folder has the single file.
    for (const std::string& name : {std::string("settings/Defaults"), fileOfGroup()}) {
        SCOPED_TRACE(name);
        platform::deleteTree(folder_ / "settings");
        folder_.write(name + " (Damaged).xml", "earlier");
        folder_.write(name + ".xml", damaged);
        EXPECT_EQ(loadAfterRestart(), name != "settings/Defaults");
        EXPECT_TRUE(isEmpty());
        set(1);
        EXPECT_EQ(folder_.read(name + ".xml"), damaged) << "until something else is stored";
        EXPECT_TRUE(save());
        EXPECT_EQ(folder_.read(name + " (Damaged).xml"), "earlier");
        EXPECT_EQ(folder_.read(name + " (Damaged 2).xml"), damaged);
        EXPECT_TRUE(loadAfterRestart());
        EXPECT_EQ(number(), 1);
        EXPECT_TRUE(save());
        EXPECT_FALSE(folder_.has(name + " (Damaged 3).xml"));
    }
}

TEST_P(FDefaultPoolTest, TouchesOnlyFilesThatChanged) {
    const auto serialAfterSave = [this] {
        platform::FileInfo info;
        EXPECT_TRUE(save());
        platform::getFileInfo(folder_ / (fileOfGroup() + ".xml"), info);
        return info.serial;
    };
    loadAll();
    set(1);
    const uint64_t before = serialAfterSave();
    EXPECT_EQ(serialAfterSave(), before);
    set(2);
    EXPECT_NE(serialAfterSave(), before);
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
    Saver saver;
    saver.state = 7;
    store(1);
    const std::string ofGroup = fileOfGroup() + ".xml";
    const std::string ofSaver = isFolder() ? "settings/Defaults/AutoSaver.xml" : ofGroup;
    for (const std::string& name : std::set{ofGroup, ofSaver}) {
        const std::string whole = folder_.read(name);
        for (size_t size = 0; size + 3 < whole.size(); ++size) {
            SCOPED_TRACE(::testing::Message() << name << " cut behind " << size << " bytes");
            folder_.write(name, whole.substr(0, size));
            restart();
            saver.state = 0;
            EXPECT_EQ(loadAll(), isFolder());
            EXPECT_EQ(isEmpty(), name == ofGroup);
            EXPECT_EQ(saver.state, name == ofSaver ? 0 : 7);
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
    const std::string name = fileOfGroup() + ".xml";
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
            set(1);
            EXPECT_TRUE(save());
        }
    }
    EXPECT_TRUE(loadAfterRestart());
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
    ASSERT_TRUE(save());
    for (const int run : {1, 2}) {
        restart();
        ASSERT_TRUE(loadAll());
        FAttributes& values = pool().getGroup("Group")->values();
        EXPECT_EQ(values.getObject("curve", "Curve"), nullptr);
        values.setInteger("run", run);
        ASSERT_TRUE(save());
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
    set(1, "\xE9");
    set(2, "\xE8");
    EXPECT_TRUE(save());
    loadAfterRestart();
    EXPECT_EQ(number("\xE9"), 1);
    EXPECT_EQ(number("\xC3\xA8"), 2) << "the same character in UTF-8";
}

TEST_P(FDefaultPoolTest, SavesNothingOverSettingsThatAnotherStartBroughtBack) {
    store(1);
    EXPECT_TRUE(pool().backup());
    set(2);
    EXPECT_TRUE(save()) << "while its copy stands";
    FGlobalDefaultPool another;
    if (isFolder())
        another.setFolderMode();
    EXPECT_TRUE(another.restore());
    const DebugOutput output;
    EXPECT_FALSE(save());
    EXPECT_TRUE(output.mentions("nothing is saved over them"));
    loadAfterRestart();
    EXPECT_EQ(number(), 1);
}

TEST_P(FDefaultPoolTest, SavesTheOthersWhenOneGroupCantBeWritten) {
    loadAll();
    Saver saver;
    saver.state = 7;
    set(1, "Bad");
    set(1, "Good");
    EXPECT_TRUE(save());
    pool().getGroup("Bad")->values().setInteger(std::string(3000, 'k'), 2);
    set(2, "Good");
    saver.state = 8;
    {
        const DebugOutput output;
        EXPECT_FALSE(save());
        EXPECT_TRUE(output.mentions("\"Bad\"")) << output.text;
        EXPECT_FALSE(output.mentions("\"Good\"")) << output.text;
    }
    saver.state = 0;
    loadAfterRestart();
    EXPECT_EQ(number("Bad"), 1) << "as it was stored before";
    EXPECT_EQ(number("Good"), 2);
    EXPECT_EQ(saver.state, 8);
}

INSTANTIATE_TEST_SUITE_P(Forms, FDefaultPoolTest,
                         ::testing::Values(StoreForm::oneFile, StoreForm::oneFileForEachGroup),
                         ::testing::PrintToStringParamName());

} // namespace
} // namespace qorl
