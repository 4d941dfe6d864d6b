#include "views/controls/UTextDisplay.h"

#include "binding/StringValue.h"
#include "binding/UColorValue.h"
#include "foundation/messages/FMessage.h"
#include "support/HeadlessShell.h"
#include "support/ProbeView.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::HeadlessShell;

TEST(UTextDisplay, TellsTheWholeTextInATipOnlyWhenItIsCut) {
    HeadlessShell shell{"<text name='name' style='autotooltip fit-string' size='0,0,80,20'/>",
                        "name = \"Main\""};
    const auto tip = [&] {
        String text;
        CmRect area;
        return shell.view<UControl>(0).getTooltip(text, {1, 1}, area) ? text.toUtf8() : "none";
    };
    EXPECT_EQ(tip(), "none");
    shell.controller().setValue("name", "A name that is too long for its place");
    EXPECT_EQ(tip(), "A name that is too long for its place");
}

TEST(UTextDisplay, CutsAnEightBitTextBetweenItsCharacters) {
    for (const char* style : {"fit-string", "fit-left-string"}) {
        const auto pictureOf = [&](const ConstString& text) {
            HeadlessShell shell{std::string("<text name='name' style='") + style + "' size='0,0,60,20'/>",
                                "name = \"\""};
            cast<Binding::StringValue>(&shell.value("name"))->setString(text);
            shell.settle();
            return shell.screenshot(shell.view(0));
        };
        const String wide(u"\u00E4\u00F6\u00FC\u00E4\u00F6\u00FC\u00E4\u00F6\u00FC\u00E4\u00F6\u00FC");
        EXPECT_EQ(pictureOf(ConstString(wide.toUtf8())), pictureOf(wide)) << style;
    }
}

TEST(UTextDisplay, OffersThePressToTheTarget) {
    HeadlessShell shell{"<switch name='behind' style='onoff immediate' size='0,0,80,20'/>"
                        "<text name='name' size='0,0,80,20'/>",
                        "name = \"Main\"\nbehind = 0 in 0..1"};
    const auto target = make<testing::ProbeController>();
    int32_t answer = CmObject::handled;
    target->answer = [&](FMessage& message) {
        EXPECT_EQ(message.getInt("Tag"), 9);
        EXPECT_EQ(message.getObject("Control"), &shell.view(1));
        return answer;
    };
    shell.click({10, 10});
    EXPECT_EQ(shell.value("behind").getValue(), 1) << "without a target";
    shell.value("name").setTarget(target.get(), 9, false);
    shell.click({10, 10});
    EXPECT_EQ(target->messages, std::vector<std::string>{"TD Mouse Down"});
    EXPECT_EQ(shell.value("behind").getValue(), 1) << "taken";
    answer = CmObject::notHandled;
    shell.click({10, 10});
    EXPECT_EQ(shell.value("behind").getValue(), 0) << "not taken";
    shell.value("name").setTarget(nullptr, 0, false);
}

TEST(UTextDisplay, ShowsItsValueWithItsUnitsOrElseItsTitle) {
    HeadlessShell shell{"<text name='name' size='0,0,80,20'/><text name='count' size='0,20,80,20'/>"
                        "<text name='level' units='dB' size='0,40,80,20'/>"
                        "<text name='none' units='dB' size='0,60,80,20'/>",
                        "name = \"Main\"\ncount = 12\nlevel = 12\nnone = \"\""};
    const auto shown = [&](int32_t index) {
        String text;
        shell.view<UTextDisplay>(index).getShownText(text);
        return text.toUtf8();
    };
    EXPECT_EQ(shown(0), "Main");
    EXPECT_EQ(shown(1), "12");
    shell.value("count").setValue(13);
    EXPECT_EQ(shown(1), "13");
    shell.view<UControl>(1).setTitle(ConstString("Count"));
    shell.view<UControl>(1).setValue(nullptr);
    EXPECT_EQ(shown(1), "Count");
    EXPECT_EQ(shown(2), "12 dB");
    EXPECT_EQ(shown(3), "") << "units are added to what there is";
}

/// Whether some pixel of the view has exactly that colour.
bool shows(HeadlessShell& shell, UView& view, uint32_t color) {
    const auto picture = shell.screenshot(view);
    return std::ranges::find(picture.pixels, color) != picture.pixels.end();
}

TEST(UTextDisplay, HintsAtWhatIsMissingOnlyWhileItIs) {
    HeadlessShell shell{"<text name='name' placeholder='IIII' size='0,0,80,20'/>"
                        "<text name='name' size='0,20,80,20'/>",
                        "name = \"\""};
    EXPECT_FALSE(shell.screenshot(shell.view(0)) == shell.screenshot(shell.view(1)));
    shell.controller().setValue("name", "x");
    shell.settle();
    EXPECT_TRUE(shell.screenshot(shell.view(0)) == shell.screenshot(shell.view(1)));
}

TEST(UTextDisplay, TakesItsGroundFromAColourThatChanges) {
    HeadlessShell shell{"<text name='name' bgcolor='#112233' size='0,0,80,20'/>", "name = \"x\""};
    auto& text = shell.view<UControl>(0);
    EXPECT_TRUE(shows(shell, text, 0xFF112233));
    const auto color = make<UColorValue>(0xFF445566);
    text.setSecondValue(color.get());
    text.update();
    shell.settle();
    EXPECT_TRUE(shows(shell, text, 0xFF445566));
    color->setValue(static_cast<int32_t>(0xFF778899u));
    shell.settle();
    EXPECT_TRUE(shows(shell, text, 0xFF778899));
    color->setValue(0);
    shell.settle();
    EXPECT_TRUE(shows(shell, text, 0xFF112233)) << "none falls back";
}

TEST(UTextDisplay, PaintsATitleInItsColourAndPlace) {
    HeadlessShell shell{"<text title='MMMM' titlecolor='#FF0000' size='0,0,80,20'/>"
                        "<text title='MMMM' titlecolor='#FF0000' offset='200,0' size='0,20,80,20'/>"
                        "<text name='name' titlecolor='#FF0000' size='0,40,80,20'/>",
                        "name = \"MMMM\""};
    EXPECT_TRUE(shows(shell, shell.view(0), 0xFFFF0000));
    EXPECT_FALSE(shows(shell, shell.view(1), 0xFFFF0000)) << "moved out of the view";
    EXPECT_FALSE(shows(shell, shell.view(2), 0xFFFF0000)) << "a value is no title";
}

} // namespace
} // namespace qorl
