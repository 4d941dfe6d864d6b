#include "platform/Region.h"

#include "support/WindowRecorder.h"

#include <bitset>
#include <gtest/gtest.h>
#include <random>

namespace qorl::platform {
namespace {

constexpr int32_t edge = 24;
using Pixels = std::bitset<edge * edge>;

Pixels toPixels(const Region& region) {
    Pixels pixels;
    for (const CmRect& rect : region.getRects())
        for (int32_t y = rect.top; y < rect.bottom; ++y)
            for (int32_t x = rect.left; x < rect.right; ++x) {
                const auto place = size_t(y) * edge + size_t(x);
                EXPECT_FALSE(pixels[place]) << "rects overlap at " << x << "," << y;
                pixels.set(place);
            }
    return pixels;
}

/// Rects of a band share top and bottom and leave gaps; bands do not overlap, and touching bands differ.
void expectBands(const Region& region) {
    const auto rects = region.getRects();
    for (size_t i = 0; i + 1 < rects.size(); ++i) {
        const CmRect& a = rects[i];
        const CmRect& b = rects[i + 1];
        if (a.top == b.top) {
            EXPECT_EQ(a.bottom, b.bottom);
            EXPECT_LT(a.right, b.left) << "two rects of a band touch";
        } else {
            EXPECT_LE(a.bottom, b.top);
        }
    }
}

class Dice {
public:
    CmRect rect() {
        const int32_t left = number(0, edge - 1);
        const int32_t top = number(0, edge - 1);
        return {left, top, number(left, edge), number(top, edge)};
    }
    int32_t number(int32_t from, int32_t to) {
        return from + static_cast<int32_t>(engine_() % static_cast<uint32_t>(to - from + 1));
    }

private:
    std::mt19937 engine_{20240131};
};

TEST(Region, AgreesWithASetOfPixels) {
    Dice dice;
    for (int round = 0; round < 300; ++round) {
        Region region;
        Pixels pixels;
        for (int i = 0; i < 12; ++i) {
            const CmRect rect = dice.rect();
            const Pixels other = toPixels(Region(rect));
            const int operation = dice.number(0, 5);
            if (operation == 0) {
                region.subtract(rect);
                pixels &= ~other;
            } else if (operation == 1) {
                Region two(rect);
                const CmRect second = dice.rect();
                two.add(second);
                region.intersect(two);
                pixels &= other | toPixels(Region(second));
            } else {
                region.add(rect);
                pixels |= other;
            }
            ASSERT_EQ(toPixels(region), pixels) << "round " << round << " step " << i;
            expectBands(region);
        }
        EXPECT_EQ(region.getArea(), static_cast<int64_t>(pixels.count()));
    }
}

TEST(Region, HasOneFormWhateverTheOrder) {
    Dice dice;
    for (int round = 0; round < 100; ++round) {
        const CmRect rects[] = {dice.rect(), dice.rect(), dice.rect(), dice.rect()};
        Region forward;
        Region backward;
        for (int i = 0; i < 4; ++i) {
            forward.add(rects[i]);
            backward.add(rects[3 - i]);
        }
        EXPECT_EQ(forward, backward) << "round " << round;
    }
}

TEST(Region, JoinsWhatTouches) {
    const struct {
        const char* name;
        std::vector<CmRect> parts;
        size_t rects;
    } cases[] = {
        {"side by side", {{0, 0, 5, 5}, {5, 0, 9, 5}}, 1},
        {"on top of each other", {{0, 0, 5, 5}, {0, 5, 5, 9}}, 1},
        {"four quarters", {{0, 0, 5, 5}, {5, 5, 9, 9}, {5, 0, 9, 5}, {0, 5, 5, 9}}, 1},
        {"a gap of one", {{0, 0, 5, 5}, {6, 0, 9, 5}}, 2},
        {"an L", {{0, 0, 5, 5}, {0, 5, 9, 9}}, 2},
        {"empty rects", {{3, 3, 3, 9}, {4, 9, 8, 2}}, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Region region;
        for (const CmRect& part : c.parts)
            region.add(part);
        EXPECT_EQ(region.getRects().size(), c.rects);
    }
}

TEST(Region, SimplifiesToFewerRectsThatHoldAll) {
    Dice dice;
    for (size_t most = 1; most < 6; ++most) {
        Region region;
        for (int i = 0; i < 20; ++i) {
            const CmPoint at{dice.number(0, edge - 2), dice.number(0, edge - 2)};
            region.add({at.x, at.y, at.x + 1, at.y + 1});
        }
        Region simple = region;
        simple.simplify(most);
        EXPECT_LE(simple.getRects().size(), most);
        EXPECT_TRUE(simple.getBounds() == region.getBounds());
        region.subtract(simple);
        EXPECT_TRUE(region.isEmpty()) << "pixels were lost";
    }
}

TEST(Region, AsksForPointsAndRects) {
    Region region({0, 0, 10, 10});
    region.subtract({4, 4, 6, 6});
    EXPECT_TRUE(region.contains(CmPoint{3, 4}));
    EXPECT_FALSE(region.contains(CmPoint{4, 4}));
    EXPECT_TRUE(region.contains(CmPoint{6, 6}));
    EXPECT_TRUE(region.contains(CmRect{0, 0, 10, 4})) << "spread over several rects";
    EXPECT_FALSE(region.contains(CmRect{3, 3, 5, 5}));
    EXPECT_FALSE(region.intersects(CmRect{4, 4, 6, 6}));
    EXPECT_TRUE(region.intersects(CmRect{5, 5, 7, 7}));
}

TEST(Region, ScalesOutwardWithoutLosingPixels) {
    const struct {
        CmRect from;
        double factor;
        CmRect to;
    } cases[] = {
        {{1, 1, 2, 2}, 1.5, {1, 1, 3, 3}},       {{2, 2, 4, 4}, 1.5, {3, 3, 6, 6}},
        {{3, 3, 6, 6}, 1.0 / 1.5, {2, 2, 4, 4}}, {{-3, -3, -1, -1}, 1.25, {-4, -4, -1, -1}},
        {{0, 0, 7, 7}, 1.0 / 3, {0, 0, 3, 3}},   {{3, 3, 9, 9}, 1.0 / 3, {1, 1, 3, 3}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(test::toText(scaledOutward(c.from, c.factor)), test::toText(c.to)) << test::toText(c.from);
}

TEST(SquaredDistance, CountsToTheNearestPixelInside) {
    constexpr CmRect rect{10, 20, 30, 40};
    const struct {
        CmPoint point;
        int64_t distance;
    } cases[] = {
        {{10, 20}, 0}, {{29, 39}, 0},  {{30, 39}, 1}, {{9, 25}, 1},
        {{15, 40}, 1}, {{32, 43}, 25}, {{7, 16}, 25}, {{-2147483647, 20}, 4611686057082093649},
    };
    for (const auto& c : cases)
        EXPECT_EQ(squaredDistance(rect, c.point), c.distance) << c.point.x << "," << c.point.y;
}

} // namespace
} // namespace qorl::platform
