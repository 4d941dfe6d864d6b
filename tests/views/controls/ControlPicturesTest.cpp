#include "StripeBitmap.h"
#include "persistence/urls/FUrl.h"
#include "support/GoldenImage.h"
#include "support/HeadlessShell.h"
#include "support/TestPaths.h"
#include "views/controls/UControl.h"
#include "windows/UWindow.h"

#include <algorithm>
#include <fstream>
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

/// From top to bottom: normal, with the rollover look that its owner may give it, pressed, on, on and
/// pressed, disabled, on and disabled, focused.
Picture statesOf(HeadlessShell& shell, UView& view, Binding::Value& value) {
    const auto with = [&](int32_t number, bool enabled) {
        value.bound()->setEnabled(enabled);
        value.setValue(number);
        shell.move({-100, -100});
    };
    std::vector<Picture> states;
    shell.desktop().setFocus(nullptr);
    with(value.getMin(), true);
    states.push_back(shell.screenshot(view));
    view.setRollover(stateRollover, true);
    states.push_back(shell.screenshot(view));
    view.setRollover(stateRollover, false);
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
    {"checkbox-cross", "<checkbox name='v' style='cross' size='10,10,20,20'/>"},
    {"switch", "<switch name='v' title='Solo' style='onoff' size='10,10,60,22'/>"},
    {"radio", "<checkbox name='v' title='Left' style='radio' size='10,10,90,20'/>"},
    {"slider", "<slider name='v' style='horizontal' size='10,10,120,20'/>", "v = 0 in 0..100"},
    {"slider-vertical", "<slider name='v' style='vertical' size='10,10,20,80'/>", "v = 0 in 0..100"},
    {"slider-strip",
     "<slider name='v' style='horizontal lightstripbilinear' stripcolor='#C04040' handlecolor='#40C040' "
     "bgcolor='#202020' size='10,10,120,20'/>",
     "v = 20 in 20..100"},
    {"slider-inverted", "<slider name='v' style='horizontal invert lightstriplinear' size='10,10,120,20'/>",
     "v = 0 in 0..100"},
    {"text", "<text name='v' style='border' size='10,10,80,20'/>", "v = 0 in 0..100"},
    {"text-led", "<text name='v' style='border led' units='dB' size='10,10,80,20'/>", "v = 0 in 0..100"},
    {"edit", "<edit name='v' style='border' size='10,10,80,20'/>", "v = 0 in 0..100"},
};

Picture statesOf(HeadlessShell& shell) {
    return statesOf(shell, shell.view(0), shell.value("v"));
}

TEST(ControlPictures, ShowEachState) {
    for (const ControlCase& control : controls) {
        SCOPED_TRACE(control.name);
        HeadlessShell shell{control.element, control.values};
        EXPECT_GOLDEN(statesOf(shell), std::string("controls/") + control.name);
    }
}

TEST(ControlPictures, ShowEachStateInLarge) {
    for (const std::string_view name : {"button", "checkbox", "slider", "text-led"}) {
        const auto& control = *std::ranges::find(controls, name, &ControlCase::name);
        for (const int32_t percent : {150, 200}) {
            SCOPED_TRACE(::testing::Message() << name << " at " << percent);
            HeadlessShell shell{HeadlessShell::Setup{.scale = percent / 100.0}, control.element,
                                control.values};
            EXPECT_GOLDEN(statesOf(shell), "controls/" + std::string(name) + "-" + std::to_string(percent));
        }
    }
}

/// Pictures that stand beside a skin, in colours that tell them apart.
class SkinOfBitmaps {
public:
    SkinOfBitmaps() {
        write("track.png", {60, 6}, {0xFF202080, 0xFF8080C0});
        write("cap.png", {6, 16}, {0xFFC0C000, 0xFF808000});
        write("lamp.png", {20, 20}, {0xFF400000, 0xFF800000, 0xFF00C000, 0xFF80FF80});
        write("half.png", {5, 5}, {0xFFC04040, 0xFF4040C0});
        std::ofstream(folder_ / "skin.xml")
            << "<skin><resources><bitmap name='track' path='track.png'/><bitmap name='cap' path='cap.png'/>"
               "<bitmap name='half' path='half.png'/><bitmap name='lamp' path='lamp.png'/>"
               "<filmstrip name='lamps' path='lamp' framecount='4' framealign='horizontal'/></resources>"
               "<templates><template name='slider' size='0,0,140,40'><slider name='slider' "
               "style='horizontal jump' background='track' handle='cap' size='10,10,120,20'/></template>"
               "<template name='switch' size='0,0,60,40'><switch name='switch' style='onoff' "
               "bitmap='lamps' size='10,10,24,24'/></template>"
               "<template name='image' size='0,0,190,60'><image bitmap='half' size='4,4,40,20'/>"
               "<image bitmap='half' style='scale' size='50,4,40,20'/>"
               "<image bitmap='half' style='hrepeat' size='96,4,40,20'/>"
               "<image bitmap='half' style='vrepeat' size='142,4,40,20'/>"
               "<image bitmap='half' style='hrepeat vrepeat' size='4,30,40,20'/>"
               "<image bitmap='half' style='scale keepaspect' size='50,30,20,20'/>"
               "<image bitmap='lamps' size='96,30,20,20'/></template></templates></skin>";
        EXPECT_TRUE(wizard_->load(FUrl(ConstString((folder_ / "skin.xml").string()))))
            << wizard_->getErrorText();
    }
    Ref<UView> build(const char* name, IController* controller) {
        Ref<UView> view = wizard_->createView(name, controller, nullptr);
        EXPECT_TRUE(wizard_->diagnostics().empty());
        return view;
    }

private:
    void write(const char* name, CmSize field, const std::vector<uint32_t>& colors) {
        const auto png = testing::makeStripes(field, colors)->toPng();
        std::ofstream(folder_ / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));
    }

    testing::TemporaryFolder folder_;
    Ref<UIWizard> wizard_ = make<UIWizard>();
};

TEST(ControlPictures, ShowBitmapsOfASkin) {
    HeadlessShell shell;
    SkinOfBitmaps skin;
    const auto controller = make<PreviewController>();
    for (const std::string name : {"slider", "switch", "image"}) {
        SCOPED_TRACE(name);
        const Ref<UView> view = skin.build(name.c_str(), controller.get());
        shell.window().addSubView(view);
        if (name == "switch")
            controller->getValue("switch")->setMax(1);
        EXPECT_GOLDEN(name == "image"
                          ? shell.screenshot(*view)
                          : statesOf(shell, *view->getSubView(0), *controller->getValue(name.c_str())),
                      "controls/" + name + "-bitmap");
        shell.window().removeSubView(view.get());
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
        "<edit name='empty' placeholder='Search' style='border' size='195,90,60,20'/>"
        "<decor style='groupframe' title='Group' size='5,80,120,50'/>"
        "<decor style='workarea' size='130,80,60,50'/>"
        "<decor style='separator' size='195,80,60,4'/>"
        "<decor style='solidrect' bgcolor='#C04040' size='5,140,40,40'/>"
        "<decor style='solidroundrect' radius='10' bgcolor='#40C040' size='50,140,40,40'/>"
        "<decor style='solidoval' bgcolor='#4040C0' size='95,140,40,40'/>"
        "<decor style='framerect' pen-width='3' bgcolor='#C04040' size='140,140,40,40'/>"
        "<decor style='frameroundrect' radius='10' bgcolor='#40C040' size='185,140,40,40'/>",
        "empty = \"\""};
    EXPECT_GOLDEN(shell.screenshot(), "controls/static");
}

} // namespace
} // namespace qorl
