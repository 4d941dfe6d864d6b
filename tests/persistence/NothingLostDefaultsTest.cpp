#include "persistence/NothingLostFixture.h"
#include "persistence/defaults/DefaultPoolFixture.h"
#include "persistence/defaults/GroupNames.h"
#include "support/FailingAllocation.h"

#include <algorithm>
#include <ostream>

namespace qorl {
namespace {

/// What an operation on a store of that form has too little of.
struct StoreCase {
    StoreForm form;
    enum Shortage { disk, memory } shortage = disk;
};

void PrintTo(const StoreCase& each, std::ostream* out) {
    PrintTo(each.form, out);
    *out << (each.shortage == StoreCase::memory ? "WithoutMemory" : "");
}

class NothingLostDefaultsTest : public NothingLostFixture, public ::testing::WithParamInterface<StoreCase> {
protected:
    ~NothingLostDefaultsTest() override { pool().clear(); }

    static FGlobalDefaultPool& pool() { return *FGlobalDefaultPool::instance(); }

    /// A program that starts, and has not looked for anything yet.
    void begin() {
        pool().clear();
        saver_.state = none;
        if (isFolder_)
            pool().setFolderMode();
    }
    void load() {
        begin();
        pool().load();
        pool().finishLoad();
    }
    void start() {
        begin();
        pool().restore();
        pool().load();
        pool().finishLoad();
    }

    void set(State state) {
        for (const char* name : groups)
            pool().getGroup(name)->values().setInteger("n", state);
        pool().getGroup(longGroup)->values().setString("text", ConstString(textOf(state, length_)));
        saver_.state = state;
        for (const char* name : passing)
            if (state == before)
                pool().getGroup(name)->values().setInteger("n", before);
    }
    static bool saveWithoutPassing() {
        return std::ranges::all_of(passing, [](const char* name) { return pool().removeGroup(name); }) &&
               pool().save(true);
    }
    bool save(State state) {
        set(state);
        return state == before ? pool().save(true) : saveWithoutPassing();
    }
    bool store(State state) {
        start();
        return save(state);
    }

    /// The state before, in the form that the test begins with; the program of the next form has begun.
    void prepare() {
        beginAnew();
        isFolder_ = GetParam().form == StoreForm::oneFileForEachGroup;
        ASSERT_TRUE(store(before));
        // As an earlier version named them.
        for (const char* name : {groups[2], passing[1]})
            if (isFolder_)
                std::filesystem::rename(settings() + "/Defaults/" + GroupNames::fileOf(name) + ".xml",
                                        settings() + "/Defaults/" + GroupNames::earlierFileOf(name) + ".xml");
        isFolder_ = GetParam().form != StoreForm::oneFile;
        begin();
    }

    /// The file that the long group is stored in.
    static std::string fileOfGroup() {
        return GetParam().form == StoreForm::oneFileForEachGroup
                   ? "Defaults/" + GroupNames::fileOf(longGroup) + ".xml"
                   : "Defaults.xml";
    }

    /// Of each part that has one: of the groups, of the object that saves itself.
    std::vector<int64_t> found() const {
        std::vector<int64_t> states;
        for (const char* name : groups)
            states.push_back(stateOf(name));
        states.push_back(saver_.state);
        return states;
    }
    int64_t stateOf(const char* name) const {
        FDefaults* group = pool().getGroup(name, 0, false);
        if (!group)
            return none;
        const int64_t state = group->values().getInteger("n", -1);
        EXPECT_TRUE(state >= none && state <= later) << name << " holds " << state;
        if (name == std::string_view(longGroup) && state >= none && state <= later) {
            EXPECT_TRUE(group->values().getString("text") == ConstString(textOf(state, length_)))
                << "half a text";
        }
        return state;
    }

    void expectAll(State state) {
        EXPECT_EQ(found(), std::vector<int64_t>(4, state));
        for (const char* name : passing)
            EXPECT_EQ(stateOf(name), state == before ? before : none) << name;
    }

    /// All of one state; with one file for each group each part may have its own.
    void expectEither(State earlier, const Outcome& outcome) {
        start();
        std::vector<int64_t> states = found();
        for (const char* name : passing)
            if (earlier == before)
                states.push_back(stateOf(name) == before ? before : after);
        const int64_t first = states[0];
        for (const int64_t state : states) {
            EXPECT_TRUE(state == earlier || state == after) << state;
            if (GetParam().form != StoreForm::oneFileForEachGroup) {
                EXPECT_EQ(state, first) << "half of one state, half of the other";
            }
            if (!outcome.hasCrashed && (outcome.answer || !isFolder_)) {
                EXPECT_EQ(state, outcome.answer ? after : earlier) << "not what was said";
            }
        }
        EXPECT_FALSE(isFolder_ && outcome.answer && folder_.has("settings/Defaults.xml")) << "it has moved";
    }

    /// Whatever was left, the next run stores as ever, and tidies up.
    void expectToGoOn() {
        ASSERT_TRUE(store(later));
        start();
        expectAll(later);
        expectTidy();
    }

    /// Behind `look`, which is at what a fresh start finds.
    template <typename Prepare, typename Act, typename Look>
    void failEach(Prepare prepareAll, Act act, Look look) {
        if (GetParam().shortage == StoreCase::disk) {
            failEachDiskCall(prepareAll, act, [&](const Outcome& outcome) {
                look(outcome);
                expectToGoOn();
            });
            return;
        }
        const FailingDisk::WithoutFlushing withoutFlushing;
        failEachAllocation([&](FailingAllocation& allocation) {
            prepareAll();
            Outcome outcome;
            outcome.answer = allocation.during(act);
            EXPECT_TRUE(outcome.answer || allocation.hasFailed());
            look(outcome);
            expectNone({"(Damaged"}); // Nothing is wrong with any.
        });
    }

    void expectNothingLostBySave() {
        failEach(
            [&] {
                prepare();
                start();
                set(after);
            },
            &saveWithoutPassing, [&](const Outcome& outcome) { expectEither(before, outcome); });
    }

    static constexpr const char* groups[] = {"One", "Two", "Three"};
    static constexpr const char* longGroup = groups[1];
    /// Groups of the state before that are removed.
    static constexpr const char* passing[] = {"Gone", "Gone under an earlier name"};

    bool isFolder_ = GetParam().form != StoreForm::oneFile;
    Saver saver_;
};

TEST_P(NothingLostDefaultsTest, WhenSaved) {
    if (GetParam().shortage == StoreCase::disk)
        length_ = Length::many;
    expectNothingLostBySave();
}

TEST_P(NothingLostDefaultsTest, WhenBackedUp) {
    failEach([&] { prepare(); }, [] { return pool().backup(); },
             [&](const Outcome& outcome) {
                 if (outcome.answer) {
                     // The run without the user's settings.
                     begin();
                     pool().finishLoad();
                     save(after);
                 }
                 start();
                 expectAll(before);
             });
}

TEST_P(NothingLostDefaultsTest, WhenRestored) {
    failEach(
        [&] {
            prepare();
            ASSERT_TRUE(pool().backup());
            ASSERT_TRUE(pool().load());
            pool().finishLoad();
            ASSERT_TRUE(save(after));
            begin();
        },
        [] { return pool().restore(); },
        [&](const Outcome& outcome) {
            if (outcome.answer) {
                begin();
                EXPECT_FALSE(pool().restore()) << "it is there once";
                load();
            } else {
                start();
            }
            expectAll(before);
        });
}

TEST_P(NothingLostDefaultsTest, WhenThrownAway) {
    const auto prepareTrash = [&] {
        prepare();
        pool().load();
        pool().finishLoad();
        ASSERT_TRUE(save(after));
        ASSERT_TRUE(pool().trash());
        prepare();
        ASSERT_TRUE(pool().backup());
    };
    failEach(
        prepareTrash, [] { return pool().trash(); },
        [&](const Outcome& outcome) {
            start();
            const bool isGone = stateOf(groups[0]) == none;
            EXPECT_TRUE(!outcome.answer || isGone);
            if (isGone) {
                expectAll(none);
                for (const std::string name : {"/Defaults", "/Defaults.xml"})
                    if (const auto trashed = settings() + "/Defaults (Trashed)" + name.substr(9);
                        std::filesystem::exists(trashed))
                        std::filesystem::rename(trashed, settings() + name);
                load();
            }
            expectAll(before);
        });
}

INSTANTIATE_TEST_SUITE_P(Forms, NothingLostDefaultsTest,
                         ::testing::Values(StoreCase{StoreForm::oneFile},
                                           StoreCase{StoreForm::oneFile, StoreCase::memory},
                                           StoreCase{StoreForm::oneFileForEachGroup},
                                           StoreCase{StoreForm::oneFileForEachGroup, StoreCase::memory},
                                           StoreCase{StoreForm::oneFileThatMoves},
                                           StoreCase{StoreForm::oneFileThatMoves, StoreCase::memory}),
                         ::testing::PrintToStringParamName());

class NothingLostOnDiskTest : public NothingLostDefaultsTest {};

TEST_P(NothingLostOnDiskTest, WhenSavedOverWhatIsDamaged) {
    const auto isKept = [&] {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(settings())) {
            const auto file = std::filesystem::relative(entry.path(), settings());
            if (entry.is_regular_file() && folder_.read("settings/" + file.string()) == damaged)
                return true;
        }
        return false;
    };
    failEach(
        [&] {
            prepare();
            folder_.write("settings/" + fileOfGroup(), damaged);
            start();
        },
        [&] { return save(after); },
        [&](const Outcome& outcome) {
            EXPECT_TRUE(isKept());
            start();
            EXPECT_TRUE(stateOf(longGroup) == none || stateOf(longGroup) == after);
            if (outcome.answer)
                expectAll(after);
        });
}
TEST_P(NothingLostOnDiskTest, WhenLoadedAfterACrash) {
    const auto loadsAll = [&](const auto& prepareLeftover) {
        failEach(
            [&] {
                prepare();
                prepareLeftover();
            },
            [&] {
                start();
                expectAll(before);
                return !HasFailure();
            },
            [&](const Outcome& outcome) {
                EXPECT_TRUE(outcome.hasCrashed || outcome.answer);
                start();
                expectAll(before);
            });
    };
    for (const Leftover leftover : leftovers)
        loadsAll([&] { leave(leftover, fileOfGroup(), damaged.c_str()); });
    if (!isFolder_)
        return;
    loadsAll([&] {
        for (const char* name :
             {"(New)", "(New Backup)", "(Earlier)", "(Backup) (Earlier)", "(Trashed) (Earlier)"})
            folder_.write("settings/Defaults " + std::string(name) + "/left.xml", "left");
    });
}
INSTANTIATE_TEST_SUITE_P(Forms, NothingLostOnDiskTest,
                         ::testing::Values(StoreCase{StoreForm::oneFile},
                                           StoreCase{StoreForm::oneFileForEachGroup},
                                           StoreCase{StoreForm::oneFileThatMoves}),
                         ::testing::PrintToStringParamName());

/// Where nothing is that could move.
class NothingLostPlainDefaultsTest : public NothingLostDefaultsTest {};

TEST_P(NothingLostPlainDefaultsTest, WhenSavedForTheFirstTime) {
    failEach(
        [&] {
            beginAnew();
            start();
        },
        [&] { return save(after); }, [&](const Outcome& outcome) { expectEither(none, outcome); });
}

TEST_P(NothingLostPlainDefaultsTest, WhenSavedOnAVolumeThatKnowsNoLinks) {
    const FailingDisk::WithoutLinks withoutLinks;
    expectNothingLostBySave();
}

TEST_P(NothingLostPlainDefaultsTest, WhenThereWasNoMemoryToLoadIt) {
    const FailingDisk::WithoutFlushing withoutFlushing;
    prepare();
    const char* file = isFolder_ ? "settings/Defaults/AutoSaver.xml" : "settings/Defaults.xml";
    const std::string whole = folder_.read(file);
    failEachAllocation([&](FailingAllocation& allocation) {
        begin();
        const bool isLoaded = allocation.during([] { return pool().load(); });
        EXPECT_TRUE(isLoaded || isFolder_ || stateOf(passing[0]) == none) << "half of the settings";
        allocation.during([] {
            pool().finishLoad();
            return pool().getGroup(groups[0]) != nullptr;
        });
        const bool isSaved = pool().save(true);
        EXPECT_TRUE(isSaved || allocation.hasFailed());
        EXPECT_TRUE(saver_.state == before || !isSaved);
        ASSERT_EQ(folder_.read(file), whole);
        expectNone({"(Damaged"});
        load();
        expectAll(before);
    });
}

INSTANTIATE_TEST_SUITE_P(Forms, NothingLostPlainDefaultsTest,
                         ::testing::Values(StoreCase{StoreForm::oneFile},
                                           StoreCase{StoreForm::oneFileForEachGroup}),
                         ::testing::PrintToStringParamName());

} // namespace
} // namespace qorl
