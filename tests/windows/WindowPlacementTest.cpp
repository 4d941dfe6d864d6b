#include "windows/WindowPlacement.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

constexpr CmRect left{0, 0, 1000, 800};
constexpr CmRect right{1000, 0, 2000, 600};
constexpr CmRect both[] = {left, right};

TEST(WindowPlacement, KeepsAWindowWhereEnoughOfItIsSeen) {
    const struct {
        const char* what;
        CmRect frame;
        CmPoint expected;
    } cases[] = {
        {"inside", {100, 100, 400, 300}, {100, 100}},
        {"50 columns left at the left edge", {-250, 100, 50, 300}, {-250, 100}},
        {"49 columns left at the left edge", {-251, 100, 49, 300}, {0, 100}},
        {"50 rows left at the bottom", {100, 750, 400, 950}, {100, 750}},
        {"49 rows left at the bottom", {100, 751, 400, 951}, {100, 600}},
        {"enough columns but too few rows on the second monitor", {1500, 551, 1800, 751}, {1500, 400}},
        {"on no monitor at all", {5000, 5000, 5300, 5200}, {700, 600}},
        {"title bar above the top", {100, -180, 400, 20}, {100, 24}},
        {"larger than the monitor", {-3000, -3000, -500, -500}, {0, 24}},
        {"small, but wholly seen", {10, 30, 30, 50}, {10, 30}},
        {"small and half seen", {-10, 30, 10, 50}, {0, 30}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(correctedPosition(c.frame, both, 24), c.expected)
            << correctedPosition(c.frame, both, 24).x << ", " << correctedPosition(c.frame, both, 24).y;
    }
}

TEST(WindowPlacement, MovesToTheMonitorOfTheLargestOverlap) {
    const CmRect frame{960, 560, 1260, 760}; // 40 x 200 of it on the left monitor, 260 x 40 on the right one
    EXPECT_EQ(correctedPosition(frame, both, 0), (CmPoint{1000, 400}));
    EXPECT_EQ(correctedPosition(frame, {}, 0), frame.origin()) << "without monitors nothing can be corrected";
}

} // namespace
} // namespace qorl
