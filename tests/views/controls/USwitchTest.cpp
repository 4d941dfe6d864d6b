#include "views/controls/USwitch.h"

#include "StripeBitmap.h"
#include "binding/IntValue.h"
#include "graphics/UBitmapFamily.h"
#include "support/HeadlessShell.h"
#include "views/controls/UBitmapSlider.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::HeadlessShell;
using testing::makeStripes;
using testing::Picture;

constexpr uint32_t frameColors[] = {0xFF000000, 0xFF200000, 0xFF400000, 0xFF600000,
                                    0xFF800000, 0xFFA00000, 0xFFC00000, 0xFFE00000};

TEST(USwitch, ShowsTheFrameOfItsState) {
    const struct {
        int32_t frames;
        int32_t max;
        int32_t value;
        const char* style;
        size_t released;
        size_t held;
    } cases[] = {
        {2, 1, 0, "onoff", 0, 1},    {2, 1, 1, "onoff", 1, 1},       {2, 1, 0, "onoff invert", 1, 1},
        {4, 1, 0, "onoff", 0, 1},    {4, 1, 1, "onoff", 2, 3},       {3, 2, 1, "multiple", 1, 1},
        {6, 2, 1, "multiple", 2, 3}, {5, 100, 50, "multiple", 2, 2}, {5, 100, 100, "multiple", 4, 4},
        {1, 1, 1, "onoff", 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message()
                     << c.frames << " frames, " << c.value << " of " << c.max << ", " << c.style);
        HeadlessShell shell{std::string("<switch name='v' size='0,0,20,20' style='") + c.style + "'/>",
                            "v = " + std::to_string(c.value) + " in 0.." + std::to_string(c.max)};
        auto& view = shell.view<USwitch>(0);
        view.setBitmap(make<UFilmStrip>(makeStripes({12, 12}, {frameColors, frameColors + c.frames}),
                                        c.frames, UFilmStrip::FrameAlign::horizontal));
        EXPECT_EQ(shell.screenshot(view).at(10, 10), frameColors[c.released]);
        EXPECT_EQ(shell.screenshotPressed(view).at(10, 10), frameColors[c.held]);
    }
}

TEST(USwitch, StandsInTheMiddleAndTakesTheSizeOfOneFrame) {
    HeadlessShell shell{"<switch name='v' style='onoff' size='0,0,20,20'/>", "v = 0 in 0..1"};
    auto& view = shell.view<USwitch>(0);
    const uint32_t background = shell.screenshot().at(100, 100);
    view.setBitmap(make<UFilmStrip>(makeStripes({12, 8}, {0xFFFF0000, 0xFF00FF00}), 2,
                                    UFilmStrip::FrameAlign::horizontal));
    const Picture picture = shell.screenshot(view);
    EXPECT_EQ(picture.at(3, 10), background);
    EXPECT_EQ(picture.at(4, 6), 0xFFFF0000);
    EXPECT_EQ(picture.at(15, 13), 0xFFFF0000);
    EXPECT_EQ(picture.at(16, 13), background);
    EXPECT_EQ(picture.at(10, 14), background);
    view.resizeToFit(0, 3);
    EXPECT_EQ(view.getFrameSize(), (CmSize{12, 11}));
}

TEST(UBitmapSlider, MovesItsHandleByTheHandlesSize) {
    HeadlessShell shell{"<switch name='unused' size='300,0,10,10'/>"};
    const auto value = make<Binding::IntValue>(0, 90);
    const auto slider = make<UBitmapSlider>(CmRect{0, 0, 100, 20}, ConstString(), value.get(),
                                            SliderStyle::horizontal | SliderStyle::jump);
    slider->setBitmaps(makeStripes({100, 4}, {0xFF0000FF}), makeStripes({10, 16}, {0xFFFF0000}));
    shell.window().addSubView(slider);
    shell.click({65, 10});
    EXPECT_EQ(value->getValue(), 60);
    shell.move({300, 200});
    const Picture picture = shell.screenshot(*slider);
    EXPECT_EQ(picture.at(59, 10), 0xFF0000FF);
    EXPECT_EQ(picture.at(60, 10), 0xFFFF0000);
    EXPECT_EQ(picture.at(69, 3), 0xFFFF0000);
    EXPECT_EQ(picture.at(70, 10), 0xFF0000FF);
}

} // namespace
} // namespace qorl
