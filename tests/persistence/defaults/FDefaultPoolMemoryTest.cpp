#include "persistence/defaults/DefaultPoolFixture.h"
#include "support/FailingAllocation.h"
#include "support/FailingDisk.h"

namespace qorl {
namespace {

/// Settings of which each run holds one number everywhere, and of which nothing may be lost for want of
/// memory.
class FDefaultPoolMemoryTest : public DefaultPoolFixture, public ::testing::WithParamInterface<StoreForm> {
protected:
    FDefaultPoolMemoryTest() : DefaultPoolFixture(GetParam()) {}

    void start() {
        saver_.state = 0;
        loadAfterRestart();
    }
    bool storeAll(int number) {
        start();
        setAll(number);
        return save();
    }
    void setAll(int number) {
        for (const char* name : groups)
            set(number, name);
        saver_.state = number;
    }
    static int64_t numberOf(const char* name) {
        const FDefaults* group = pool().getGroup(name, 0, false);
        return group ? group->values().getInteger("n") : 0;
    }
    std::vector<int64_t> found() const { return {numberOf(groups[0]), numberOf(groups[1]), saver_.state}; }
    /// After a fresh start. What was stored group by group may be of both runs where the save failed.
    void expectNumber(int number, int orElse) {
        start();
        for (const int64_t one : found()) {
            EXPECT_TRUE(one == number || one == orElse) << one;
            EXPECT_TRUE(one == found()[0] || isFolder()) << "half of one state, half of the other";
        }
    }
    void expectNothingPutAway() const {
        for (const std::string& name : {std::string(), "/" + groupFile, std::string("/AutoSaver")})
            EXPECT_FALSE(folder_.has("settings/Defaults" + name + " (Damaged).xml"))
                << "nothing is wrong with it";
    }

    static constexpr const char* groups[] = {"Group", "Another"};

    const DebugOutput told_;
    const FailingDisk::WithoutFlushing withoutFlushing_;
    Saver saver_;
};

TEST_P(FDefaultPoolMemoryTest, SavesAllThatItSaysOrLeavesWhatWasThere) {
    failEachAllocation([&](FailingAllocation& allocation) {
        ASSERT_TRUE(storeAll(1));
        set(1, "Gone");
        ASSERT_TRUE(save());
        setAll(2);
        const bool isSaved = allocation.during([] { return pool().removeGroup("Gone") && save(); });
        EXPECT_TRUE(isSaved || allocation.hasFailed());
        expectNumber(2, isSaved ? 2 : 1);
        EXPECT_TRUE(numberOf("Gone") == 0 || (!isSaved && numberOf("Gone") == 1));
        EXPECT_TRUE(isFolder() || isSaved == (numberOf("Gone") == 0));
        EXPECT_TRUE(isFolder() || isSaved == (saver_.state == 2)) << "it said something else";
        expectNothingPutAway();
    });
}

TEST_P(FDefaultPoolMemoryTest, SavesNothingOverWhatItHadNoMemoryToLoad) {
    storeAll(1);
    const char* file = isFolder() ? "settings/Defaults/AutoSaver.xml" : "settings/Defaults.xml";
    const std::string whole = folder_.read(file);
    failEachAllocation([&](FailingAllocation& allocation) {
        restart();
        saver_.state = 0;
        allocation.during([] {
            pool().load();
            pool().finishLoad();
            return pool().getGroup("Group") != nullptr;
        });
        const bool isSaved = save();
        EXPECT_TRUE(isSaved || allocation.hasFailed());
        EXPECT_TRUE(saver_.state == 1 || !isSaved);
        ASSERT_EQ(folder_.read(file), whole);
        expectNothingPutAway();
        expectNumber(1, 1);
    });
}

TEST_P(FDefaultPoolMemoryTest, BringsBackWhatItSaysThatItPutAside) {
    failEachAllocation([&](FailingAllocation& allocation) {
        ASSERT_TRUE(storeAll(1));
        const bool isPutAside = allocation.during([] { return pool().backup(); });
        EXPECT_TRUE(isPutAside || allocation.hasFailed());
        ASSERT_TRUE(storeAll(2));
        restart();
        const bool isBroughtBack = pool().restore();
        EXPECT_TRUE(isBroughtBack || !isPutAside);
        expectNumber(isBroughtBack ? 1 : 2, isBroughtBack ? 1 : 2);
    });
}

TEST_P(FDefaultPoolMemoryTest, KeepsWhatItHadNoMemoryToBringBack) {
    failEachAllocation([&](FailingAllocation& allocation) {
        ASSERT_TRUE(storeAll(1));
        ASSERT_TRUE(pool().backup());
        ASSERT_TRUE(storeAll(2));
        restart();
        const bool isBroughtBack = allocation.during([] { return pool().restore(); });
        EXPECT_TRUE(isBroughtBack || allocation.hasFailed());
        restart();
        // What was brought back and not said to be is not there a second time.
        EXPECT_FALSE(isBroughtBack && pool().restore());
        if (!isBroughtBack)
            pool().restore();
        expectNumber(1, 1);
    });
}

TEST_P(FDefaultPoolMemoryTest, TrashesOnlyToWhereItCanBeFound) {
    const std::string trashed =
        isFolder() ? "settings/Defaults (Trashed)/" + groupFile + ".xml" : "settings/Defaults (Trashed).xml";
    failEachAllocation([&](FailingAllocation& allocation) {
        ASSERT_TRUE(storeAll(1));
        const bool isTrashed = allocation.during([] { return pool().trash(); });
        EXPECT_TRUE(isTrashed || allocation.hasFailed());
        start();
        const int64_t number = numberOf("Group");
        EXPECT_TRUE(number == 1 || folder_.has(trashed));
        EXPECT_TRUE(number == 0 || !isTrashed);
    });
}

INSTANTIATE_TEST_SUITE_P(Forms, FDefaultPoolMemoryTest,
                         ::testing::Values(StoreForm::oneFile, StoreForm::oneFileForEachGroup),
                         ::testing::PrintToStringParamName());

/// Settings that lie in one file and move to the folder.
class MovingDefaultsMemoryTest : public FDefaultPoolMemoryTest {};

TEST_P(MovingDefaultsMemoryTest, MovesToAFolderWholeOrNotAtAll) {
    failEachAllocation([&](FailingAllocation& allocation) {
        platform::deleteTree(folder_ / "settings");
        form_ = StoreForm::oneFile;
        ASSERT_TRUE(storeAll(1));
        pool().setFolderMode();
        setAll(2);
        const bool hasMoved = allocation.during([] { return save(); });
        EXPECT_TRUE(hasMoved || allocation.hasFailed());
        form_ = StoreForm::oneFileForEachGroup;
        start();
        for (const int64_t number : found())
            EXPECT_TRUE(number == found()[0] && (number == 2 || (number == 1 && !hasMoved))) << number;
        EXPECT_FALSE(hasMoved && folder_.has("settings/Defaults.xml"));
    });
}

INSTANTIATE_TEST_SUITE_P(Forms, MovingDefaultsMemoryTest, ::testing::Values(StoreForm::oneFile),
                         ::testing::PrintToStringParamName());

} // namespace
} // namespace qorl
