#include "foundation/Singleton.h"

#include "foundation/messages/UpdateHandler.h"
#include "foundation/threads/FLock.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <thread>
#include <vector>

namespace qorl {
namespace {

std::atomic<int> made{0};
std::atomic<int> released{0};
bool sawItself = false;

struct Single : FObject {
    Single() { ++made; }
    ~Single() override;
};

constinit Singleton<Single> slot;
constinit Singleton<FObject> unused;

Single::~Single() {
    ++released;
    sawItself = slot.peek() == this && unused.get() == nullptr;
}

/// Finds no memory at the first try.
struct Late : FObject {
    Late() {
        if (++tries == 1)
            throw std::bad_alloc();
    }
    static inline int tries = 0;
};

constinit Singleton<Late> late;

bool checksAtTheEnd = false;

/// Runs behind the destructors of all static objects.
[[gnu::destructor]] void checkAtTheEnd() {
    if (!checksAtTheEnd)
        return;
    const bool asPromised = SingletonSlot::areGone() && released == 1 && made == 1 && sawItself &&
                            !slot.get() && !slot.peek() && !unused.get() && !globalLock() &&
                            !UpdateHandler::instance() && !FUpdateRegistry::current();
    std::_Exit(asPromised ? 42 : 43);
}

TEST(Singleton, IsMadeOnceHoweverManyThreadsAsk) {
    const int before = made;
    const bool wasThere = slot.peek();
    std::vector<std::thread> threads;
    std::vector<Single*> found(8);
    for (Single*& single : found)
        threads.emplace_back([&single] { single = slot.get(); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(made - before, wasThere ? 0 : 1);
    for (const Single* single : found)
        EXPECT_EQ(single, slot.get());
}

TEST(Singleton, IsNullWhileThereIsNoMemoryAndMadeWhenThereIs) {
    Late::tries = 0;
    EXPECT_EQ(late.get(), nullptr);
    EXPECT_NE(late.get(), nullptr);
    EXPECT_EQ(Late::tries, 2);
}

TEST(Singleton, IsReleasedAtTheEndAndNeverComesBack) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            slot.get();
            UpdateHandler::instance();
            checksAtTheEnd = true;
            std::exit(1);
        },
        ::testing::ExitedWithCode(42), "");
}

} // namespace
} // namespace qorl
