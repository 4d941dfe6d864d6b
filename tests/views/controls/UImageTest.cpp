#include "views/controls/UImage.h"

#include "StripeBitmap.h"
#include "support/HeadlessShell.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::HeadlessShell;
using testing::makeStripes;

constexpr uint32_t red = 0xFFFF0000;
constexpr uint32_t blue = 0xFF0000FF;

/// An image of 40 x 20 with a bitmap of 10 x 5, whose left half is red and right half blue.
TEST(UImage, PlacesScalesAndRepeats) {
    const struct {
        uint32_t style;
        uint32_t colors[4]; ///< at 2,2, at 14,2, at 34,2 and at 2,14; 0 is the background
    } cases[] = {
        {0, {red, 0, 0, 0}},
        {UImage::scale, {red, red, blue, red}},
        {UImage::hrepeat, {red, red, red, 0}},
        {UImage::vrepeat, {red, 0, 0, red}},
        {UImage::hrepeat | UImage::vrepeat, {red, red, red, red}},
        {UImage::scale | UImage::keepAspect, {red, red, blue, red}},
        {UImage::scale | UImage::vrepeat, {red, red, blue, red}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "style " << c.style);
        const auto image = make<UImage>(CmRect{0, 0, 40, 20}, makeStripes({5, 5}, {red, blue}), c.style);
        HeadlessShell shell{image};
        const auto picture = shell.screenshot();
        const uint32_t background = picture.at(200, 200);
        const CmPoint points[] = {{2, 2}, {14, 2}, {34, 2}, {2, 14}};
        for (size_t i = 0; i < std::size(points); ++i)
            EXPECT_EQ(picture.at(points[i].x, points[i].y), c.colors[i] ? c.colors[i] : background)
                << "at " << points[i].x << "," << points[i].y;
    }
}

TEST(UImage, KeepsTheAspectInTheMiddle) {
    HeadlessShell shell{make<UImage>(CmRect{0, 0, 40, 40}, makeStripes({5, 5}, {red, blue}),
                                     UImage::scale | UImage::keepAspect)};
    const auto picture = shell.screenshot();
    const uint32_t background = picture.at(200, 200);
    EXPECT_EQ(picture.at(4, 8), background);
    EXPECT_EQ(picture.at(4, 12), red);
    EXPECT_EQ(picture.at(36, 27), blue);
    EXPECT_EQ(picture.at(36, 31), background);
}

TEST(UImage, TakesTheSizeOfItsBitmapUnlessGivenOne) {
    HeadlessShell shell;
    const auto bitmap = makeStripes({5, 5}, {red, blue});
    EXPECT_EQ(make<UImage>(CmRect{3, 4, 3, 4}, bitmap)->getFrameRect(), (CmRect{3, 4, 13, 9}));
    EXPECT_EQ(make<UImage>(CmRect{3, 4, 8, 8}, bitmap)->getFrameRect(), (CmRect{3, 4, 8, 8}));
    const auto none = make<UImage>(CmRect{0, 0, 8, 8}, nullptr);
    none->resizeToFit(0, 0);
    EXPECT_EQ(none->getFrameRect(), (CmRect{0, 0, 8, 8}));
}

} // namespace
} // namespace qorl
