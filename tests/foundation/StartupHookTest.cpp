#include "foundation/StartupHook.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace qorl {
namespace {

std::vector<std::string> log;
bool failing = false;

template <char name>
bool note() {
    log.emplace_back(1, name);
    return !(failing && name == 'C');
}

/// Hooks of a program of its own: the lists of the library are dropped first, since hooks run only once.
class StartupHooks : public ::testing::Test {
protected:
    void SetUp() override {
        dropHooks();
        log.clear();
        failing = false;
    }
    void TearDown() override { dropHooks(); }
    std::vector<std::string> take() { return std::exchange(log, {}); }
};

using Names = std::vector<std::string>;

TEST_F(StartupHooks, RunOnceInThreeGroupsInTheOrderOfLevelThenRegistration) {
    const StartupHook a{"A", StartupHook::ready, &note<'A'>};
    const StartupHook b{"B", StartupHook::early, &note<'B'>};
    const StartupHook c{"C", StartupHook::ready, &note<'C'>};
    const StartupHook d{"D", StartupHook::finish, &note<'D'>};
    const StartupHook e{"E", StartupHook::lastOfMain, &note<'E'>};
    const StartupHook f{"F", StartupHook::early, &note<'F'>};
    EXPECT_TRUE(runStartupHooks(0));
    EXPECT_EQ(take(), (Names{"B", "F"}));
    EXPECT_TRUE(runStartupHooks(99));
    EXPECT_EQ(take(), (Names{"A", "C", "E"}));
    EXPECT_TRUE(runStartupHooks(100));
    EXPECT_EQ(take(), (Names{"D"}));
    EXPECT_TRUE(runStartupHooks(100));
    EXPECT_EQ(take(), Names{});
}

TEST_F(StartupHooks, AFailureEndsTheWalkForGood) {
    const StartupHook a{"A", 0, &note<'A'>};
    const StartupHook c{"C", 0, &note<'C'>};
    const StartupHook d{"D", 0, &note<'D'>};
    const StartupHook e{"E", 50, &note<'E'>};
    failing = true;
    EXPECT_FALSE(runStartupHooks(0));
    EXPECT_EQ(take(), (Names{"A", "C"}));
    EXPECT_TRUE(runStartupHooks(100)) << "the list is gone";
    EXPECT_EQ(take(), Names{});
}

TEST_F(StartupHooks, AHookMayDropTheLists) {
    const StartupHook a{"A", 0, [] {
                            dropHooks();
                            return note<'A'>();
                        }};
    const StartupHook b{"B", 0, &note<'B'>};
    const StartupHook c{"C", 50, &note<'C'>};
    EXPECT_TRUE(runStartupHooks(0));
    EXPECT_TRUE(runStartupHooks(100));
    EXPECT_EQ(take(), (Names{"A"})) << "the walk ends with the list";
}

TEST_F(StartupHooks, AHookThatRunsTheOthersLeavesNoneToRunTwice) {
    const StartupHook a{"A", 0, [] {
                            note<'A'>();
                            return runStartupHooks(50);
                        }};
    const StartupHook b{"B", 0, &note<'B'>};
    const StartupHook c{"C", 50, &note<'C'>};
    EXPECT_TRUE(runStartupHooks(0));
    EXPECT_EQ(take(), (Names{"A", "B", "C"}));
}

TEST_F(StartupHooks, AShutdownHookMayDropTheLists) {
    const ShutdownHook a{"A", 50, [] {
                             dropHooks();
                             return note<'A'>();
                         }};
    const ShutdownHook b{"B", 50, &note<'B'>};
    runStartupHooks(0);
    runShutdownHooks();
    EXPECT_EQ(take(), Names{"A"});
}

TEST_F(StartupHooks, ShutdownHooksAllRunOnceWhateverTheyAnswer) {
    const ShutdownHook c{"C", 50, &note<'C'>};
    const ShutdownHook a{"A", 50, &note<'A'>};
    failing = true;
    runStartupHooks(0);
    runShutdownHooks();
    EXPECT_EQ(take(), (Names{"C", "A"}));
    runShutdownHooks();
    EXPECT_EQ(take(), Names{}) << "the second time the list is gone";
}

TEST_F(StartupHooks, ShutdownHooksDoNotRunInALibraryThatWasNeverStarted) {
    // In a process of its own, in which nothing was started.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto shutDownUnstarted = [] {
        const ShutdownHook hook{"A", 50, &note<'A'>};
        runShutdownHooks();
        std::_Exit(log.empty() ? 0 : 1);
    };
    EXPECT_EXIT(shutDownUnstarted(), ::testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace qorl
