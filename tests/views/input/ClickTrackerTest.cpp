#include "views/ClickTracker.h"

#include "platform/PlatformEvents.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

constexpr auto left = platform::leftButton;

TEST(ClickTracker, TakesTheSecondPressForADoubleClickWithinTimeAndPlace) {
    const struct {
        const char* what;
        CmPoint second;
        uint32_t button;
        int64_t time;
        bool isDouble;
    } cases[] = {
        {"at once, same place", {50, 50}, left, 1000, true},
        {"last millisecond", {50, 50}, left, 1000 + ClickTracker::doubleClickTime, true},
        {"too late", {50, 50}, left, 1001 + ClickTracker::doubleClickTime, false},
        {"at the edge of the slop", {54, 46}, left, 1100, true},
        {"too far", {55, 50}, left, 1100, false},
        {"other button", {50, 50}, platform::rightButton, 1100, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ClickTracker tracker;
        tracker.press({50, 50}, left, 1000);
        EXPECT_FALSE(tracker.isDoubleClick());
        EXPECT_TRUE(tracker.release({50, 50}));
        tracker.press(c.second, c.button, c.time);
        EXPECT_EQ(tracker.isDoubleClick(), c.isDouble);
    }
}

TEST(ClickTracker, BeginsAnewWithTheThirdPress) {
    ClickTracker tracker;
    const bool expected[] = {false, true, false, true};
    for (int i = 0; i < 4; ++i) {
        tracker.press({5, 5}, left, 100 * i);
        EXPECT_EQ(tracker.isDoubleClick(), expected[i]) << "press " << i;
        tracker.release({5, 5});
    }
}

TEST(ClickTracker, TellsADragFromAClick) {
    ClickTracker tracker;
    tracker.press({10, 10}, left, 0);
    EXPECT_TRUE(tracker.release({14, 6}));
    EXPECT_FALSE(tracker.release({10, 10})) << "a release without a press is no click";
    tracker.press({10, 10}, left, 5000);
    EXPECT_FALSE(tracker.release({15, 10}));
    tracker.press({10, 10}, left, 9000);
    tracker.cancel();
    EXPECT_FALSE(tracker.release({10, 10}));
}

} // namespace
} // namespace qorl
