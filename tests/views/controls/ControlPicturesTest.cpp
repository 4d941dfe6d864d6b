#include "support/GoldenImage.h"
#include "support/HeadlessShell.h"
#include "views/controls/UControl.h"
#include "windows/UWindow.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace qorl {

namespace {

using testing::HeadlessShell;
using testing::Picture;

/// One below the other, with a black line between.
Picture stack(const std::vector<Picture>& pictures) {
    constexpr int32_t gap = 4;
    Picture sheet;
    for (const Picture& picture : pictures)
        sheet.size = {std::max(sheet.size.width, picture.size.width),
                      sheet.size.height + picture.size.height + gap};
    sheet.pixels.assign(size_t(sheet.size.width) * size_t(sheet.size.height), 0xFF000000);
    auto row = sheet.pixels.begin();
    for (const Picture& picture : pictures) {
        for (int32_t y = 0; y < picture.size.height; ++y, row += sheet.size.width)
            std::copy_n(picture.pixels.begin() + std::ptrdiff_t{y} * picture.size.width, picture.size.width,
                        row);
        row += std::ptrdiff_t{gap} * sheet.size.width;
    }
    return sheet;
}

/// From top to bottom: normal, pressed, on, on and pressed, disabled, on and disabled, focused.
Picture statesOf(HeadlessShell& shell) {
    UView& view = shell.view(0);
    Binding::Value& value = shell.value("v");
    const auto with = [&](int32_t number, bool enabled) {
        value.bound()->setEnabled(enabled);
        value.setValue(number);
        shell.move({-100, -100});
    };
    std::vector<Picture> states;
    shell.desktop().setFocus(nullptr);
    with(value.getMin(), true);
    states.push_back(shell.screenshot(view));
    states.push_back(shell.screenshotPressed(view));
    with(value.getMax(), true);
    shell.desktop().setFocus(nullptr);
    states.push_back(shell.screenshot(view));
    states.push_back(shell.screenshotPressed(view));
    with(value.getMin(), false);
    states.push_back(shell.screenshot(view));
    with(value.getMax(), false);
    states.push_back(shell.screenshot(view));
    with(value.getMin(), true);
    shell.desktop().setFocus(&view);
    states.push_back(shell.screenshot(view));
    return stack(states);
}

struct ControlCase {
    const char* name;
    const char* element;
    const char* values = "v = 0 in 0..1";
};

constexpr ControlCase controls[] = {
    {"button", "<button name='v' title='Apply' size='10,10,90,24'/>"},
    {"button-default", "<button name='v' title='Apply' style='default' size='10,10,90,24'/>"},
    {"checkbox", "<checkbox name='v' title='Mute' size='10,10,90,20'/>"},
    {"switch", "<switch name='v' title='Solo' style='onoff' size='10,10,60,22'/>"},
    {"slider", "<slider name='v' style='horizontal' size='10,10,120,20'/>", "v = 0 in 0..100"},
    {"slider-vertical", "<slider name='v' style='vertical' size='10,10,20,80'/>", "v = 0 in 0..100"},
    {"text", "<text name='v' style='border' size='10,10,80,20'/>", "v = 0 in 0..100"},
    {"text-led", "<text name='v' style='border led' size='10,10,80,20'/>", "v = 0 in 0..100"},
    {"edit", "<edit name='v' style='border' size='10,10,80,20'/>", "v = 0 in 0..100"},
};

TEST(ControlPictures, ShowEachState) {
    for (const ControlCase& control : controls) {
        SCOPED_TRACE(control.name);
        HeadlessShell shell{control.element, control.values};
        EXPECT_GOLDEN(statesOf(shell), std::string("controls/") + control.name);
    }
}

TEST(ControlPictures, ShowEachStateAtOneAndAHalf) {
    for (const char* name : {"button", "checkbox", "slider"}) {
        SCOPED_TRACE(name);
        const auto& control = *std::ranges::find_if(
            controls, [&](const ControlCase& c) { return std::string_view(c.name) == name; });
        HeadlessShell shell{HeadlessShell::Setup{.scale = 1.5}, control.element, control.values};
        EXPECT_GOLDEN(statesOf(shell), std::string("controls/") + name + "-150");
    }
}

TEST(ControlPictures, ShowWhatHasNoStates) {
    HeadlessShell shell{
        HeadlessShell::Setup{.size = {260, 190}},
        "<label title='Left' just='left' size='5,5,80,16'/>"
        "<label title='Middle' size='90,5,80,16'/>"
        "<label title='Right' just='right' size='175,5,80,16'/>"
        "<label title='Broken where it would leave its place' just='left top wordwrap' size='5,25,120,54'/>"
        "<text title='A text that is too long' style='border fit-string' size='130,25,125,20'/>"
        "<decor style='groupframe' title='Group' size='5,80,120,50'/>"
        "<decor style='workarea' size='130,80,60,50'/>"
        "<decor style='separator' size='195,80,60,4'/>"
        "<decor style='solidrect' bgcolor='#C04040' size='5,140,40,40'/>"
        "<decor style='solidroundrect' radius='10' bgcolor='#40C040' size='50,140,40,40'/>"
        "<decor style='solidoval' bgcolor='#4040C0' size='95,140,40,40'/>"
        "<decor style='framerect' pen-width='3' bgcolor='#C04040' size='140,140,40,40'/>"
        "<decor style='frameroundrect' radius='10' bgcolor='#40C040' size='185,140,40,40'/>"};
    EXPECT_GOLDEN(shell.screenshot(), "controls/static");
}

} // namespace

} // namespace qorl
