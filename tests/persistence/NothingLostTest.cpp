#include "foundation/text/CmString.h"
#include "persistence/archive/ObjectFiles.h"
#include "persistence/defaults/DefaultPoolFixture.h"
#include "persistence/xml/XmlFile.h"
#include "support/DebugOutput.h"
#include "support/FailingDisk.h"
#include "support/SettingsFolder.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace qorl {
namespace {

using Outcome = FailingDisk::Outcome;

/// What the defaults hold after a fresh start; each test begins with 1 and stores 2.
enum Expected { before = 1, after = 2 };

/// Everything that the library stores, with each call that changes the disk failing, cut short, and ending
/// the program. What follows is as a program that starts afresh sees it.
class NothingLostTest : public ::testing::Test {
protected:
    ~NothingLostTest() override { pool().clear(); }

    static FGlobalDefaultPool& pool() { return *FGlobalDefaultPool::instance(); }

    void beginAnew() { folder_.emplace(); }

    /// As a program that starts.
    void start() const {
        pool().clear();
        if (isFolder_)
            pool().setFolderMode();
        pool().restore();
        pool().load();
        pool().finishLoad();
    }

    static void set(int number) {
        for (const char* name : groups)
            pool().getGroup(name)->values().setInteger("n", number);
    }

    bool store(int number) const {
        start();
        set(number);
        return pool().save(true);
    }

    /// The number in each group; the same in all of them, but with one file for each group.
    void expectNumbers(const Outcome& outcome) const {
        start();
        const int64_t first = numberOf(groups[0]);
        for (const char* name : groups) {
            const int64_t number = numberOf(name);
            EXPECT_TRUE(number == before || number == after) << name << " holds " << number;
            EXPECT_TRUE(isFolder_ || number == first) << "half of one state, half of the other";
            if (!outcome.hasCrashed && outcome.answer) {
                EXPECT_EQ(number, after);
            }
        }
        if (!outcome.hasCrashed && !outcome.answer && !isFolder_) {
            EXPECT_EQ(first, before) << "it said that it failed";
        }
    }

    static int64_t numberOf(const char* name) { return pool().getGroup(name)->values().getInteger("n"); }

    /// Whatever was left, the next run stores as ever, and tidies up.
    void expectToGoOn() const {
        ASSERT_TRUE(store(3));
        start();
        for (const char* name : groups)
            EXPECT_EQ(numberOf(name), 3);
        expectTidy(*folder_ / "settings");
    }

    static void expectTidy(const std::string& path) {
        std::vector<platform::FolderEntry> entries;
        platform::listFolder(path, entries);
        for (const auto& entry : entries) {
            EXPECT_EQ(entry.name.find("_old"), std::string::npos) << entry.name;
            EXPECT_FALSE(entry.name.ends_with(".new")) << entry.name;
            EXPECT_EQ(entry.name.find("(Earlier)"), std::string::npos) << entry.name;
            EXPECT_EQ(entry.name.find("(New"), std::string::npos) << entry.name;
            if (entry.kind == platform::FileKind::folder)
                expectTidy(path + '/' + entry.name);
        }
    }

    void losesNothingWhenSaved() {
        failEachDiskCall(
            [&] {
                beginAnew();
                ASSERT_TRUE(store(before));
                start();
            },
            [&] {
                set(after);
                return pool().save(true);
            },
            [&](const Outcome& outcome) {
                expectNumbers(outcome);
                expectToGoOn();
            });
    }

    static constexpr const char* groups[] = {"One", "Two", "Three"};

    DebugOutput output_;
    std::optional<SettingsFolder> folder_;
    bool isFolder_ = false;
};

class NothingLostFormTest : public NothingLostTest, public ::testing::WithParamInterface<DefaultsForm> {
protected:
    NothingLostFormTest() { isFolder_ = GetParam() == DefaultsForm::oneFileForEachGroup; }
};

TEST_P(NothingLostFormTest, WhenDefaultsAreSaved) {
    losesNothingWhenSaved();
}

TEST_P(NothingLostFormTest, WhenThePowerIsCutBehindTheFirstSave) {
    beginAnew();
    ASSERT_TRUE(FailingDisk::runToPowerCut([&] { return store(before); }).answer);
    start();
    for (const char* name : groups)
        EXPECT_EQ(numberOf(name), before);
}

TEST_P(NothingLostFormTest, WhenDefaultsAreBackedUp) {
    failEachDiskCall(
        [&] {
            beginAnew();
            ASSERT_TRUE(store(before));
        },
        [&] { return pool().backup(); },
        [&](const Outcome& outcome) {
            if (!outcome.hasCrashed && outcome.answer) {
                // The run without the user's settings.
                pool().clear();
                if (isFolder_)
                    pool().setFolderMode();
                pool().finishLoad();
                set(after);
                pool().save(true);
            }
            start();
            for (const char* name : groups)
                EXPECT_EQ(numberOf(name), before);
            expectToGoOn();
        });
}

TEST_P(NothingLostFormTest, WhenDefaultsAreRestored) {
    failEachDiskCall(
        [&] {
            beginAnew();
            ASSERT_TRUE(store(before));
            ASSERT_TRUE(pool().backup());
            set(after);
            ASSERT_TRUE(pool().save(true));
        },
        [&] { return pool().restore(); },
        [&](const Outcome&) {
            start();
            for (const char* name : groups)
                EXPECT_EQ(numberOf(name), before);
            expectToGoOn();
        });
}

INSTANTIATE_TEST_SUITE_P(Forms, NothingLostFormTest,
                         ::testing::Values(DefaultsForm::oneFile, DefaultsForm::oneFileForEachGroup),
                         ::testing::PrintToStringParamName());

TEST_F(NothingLostTest, WhenDefaultsMoveToOneFileForEachGroup) {
    failEachDiskCall(
        [&] {
            isFolder_ = false;
            beginAnew();
            ASSERT_TRUE(store(before));
            isFolder_ = true;
            start();
        },
        [&] { return pool().save(true); },
        [&](const Outcome&) {
            start();
            for (const char* name : groups)
                EXPECT_EQ(numberOf(name), before);
            expectToGoOn();
        });
}

TEST_F(NothingLostTest, WhenDefaultsAreSavedOnAVolumeThatKnowsNoLinks) {
    const FailingDisk::WithoutLinks withoutLinks;
    losesNothingWhenSaved();
}

/// A form in which one object has a file of its own.
struct ObjectForm {
    const char* name;
    bool (*save)(CmString& object);
    bool (*load)(CmString& object);
    bool (*exists)();
    /// What an interrupted save has kept before; null for nothing.
    const char* kept = nullptr;
};

void PrintTo(const ObjectForm& form, std::ostream* out) {
    *out << form.name;
}

class NothingLostObjectTest : public NothingLostTest, public ::testing::WithParamInterface<ObjectForm> {
protected:
    static bool save(const char* text) {
        CmString object(text);
        return GetParam().save(object);
    }
};

TEST_P(NothingLostObjectTest, WhenAnObjectIsSaved) {
    const char* longer = "after, and a little longer";
    failEachDiskCall(
        [&] {
            beginAnew();
            ASSERT_TRUE(save("before"));
            if (GetParam().kept)
                folder_->write(GetParam().kept, "<State><string name='s' value='kept'/></State>");
        },
        [&] { return save(longer); },
        [&](const Outcome& outcome) {
            CmString object;
            EXPECT_TRUE(GetParam().load(object));
            const bool isNew = object.string() == ConstString(longer);
            EXPECT_TRUE(isNew || object.string() == ConstString("before"));
            EXPECT_TRUE(outcome.hasCrashed || isNew == outcome.answer);
            EXPECT_TRUE(save("again"));
            expectTidy(*folder_ / "settings/Layouts");
        });
}

TEST_P(NothingLostObjectTest, WhenAnObjectIsSavedForTheFirstTime) {
    failEachDiskCall([&] { beginAnew(); }, [&] { return save("first"); },
                     [&](const Outcome& outcome) {
                         CmString object;
                         const bool isThere = GetParam().load(object);
                         EXPECT_EQ(isThere, GetParam().exists());
                         EXPECT_TRUE(outcome.hasCrashed || isThere == outcome.answer);
                         EXPECT_TRUE(!isThere || object.string() == ConstString("first"));
                     });
}

ObjectForm xmlForm(const char* name, const char* kept = nullptr) {
    return {name, [](CmString& object) { return saveXml("Layouts/Main", "State", object); },
            [](CmString& object) { return loadXml("Layouts/Main", "State", object); },
            [] { return xmlExists("Layouts/Main"); }, kept};
}

INSTANTIATE_TEST_SUITE_P(
    Forms, NothingLostObjectTest,
    ::testing::Values(xmlForm("Xml"), xmlForm("XmlOverWhatACrashKept", "settings/Layouts/Main_old.xml"),
                      ObjectForm{"Binary",
                                 [](CmString& object) { return saveObjectFile("Layouts/Main", &object); },
                                 [](CmString& object) { return loadObjectFile("Layouts/Main", &object); },
                                 [] { return objectFileExists("Layouts/Main"); }}),
    ::testing::PrintToStringParamName());

} // namespace
} // namespace qorl
