#include "platform/Poller.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <vector>

namespace qorl::platform {
namespace {

TEST(Poller, IsWokenInAProcessWithoutDescriptors) {
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    Poller poller;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);

    EXPECT_FALSE(poller.takeWakeUp());
    poller.wakeUp();
    std::vector<PollEntry> entries;
    EXPECT_FALSE(poller.wait(entries, -1));
    EXPECT_TRUE(poller.takeWakeUp());
    EXPECT_FALSE(poller.takeWakeUp());
}

} // namespace
} // namespace qorl::platform
