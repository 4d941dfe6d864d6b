#include "views/controls/UTextDisplay.h"

#include "foundation/messages/FMessage.h"
#include "support/HeadlessShell.h"

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

/// Hears of presses on text displays.
class PressTarget : public CmObject {
    QORL_CLASS(PressTarget, CmObject)

public:
    int32_t answer = handled;
    std::string heard;

    int32_t handleMessage(FMessage* message) override {
        heard += message->getName().string().toUtf8() + " " + std::to_string(message->getInt("Tag")) +
                 (message->getObject("Control") ? " control" : "") + "; ";
        return answer;
    }
};

TEST(UTextDisplay, OffersThePressToTheTarget) {
    HeadlessShell shell{"<switch name='behind' style='onoff immediate' size='0,0,80,20'/>"
                        "<text name='name' size='0,0,80,20'/>",
                        "name = \"Main\"\nbehind = 0 in 0..1"};
    const auto target = make<PressTarget>();
    shell.click({10, 10});
    EXPECT_EQ(shell.value("behind").getValue(), 1) << "without a target";
    shell.value("name").setTarget(target.get(), 9, false);
    shell.click({10, 10});
    EXPECT_EQ(target->heard, "TD Mouse Down 9 control; ");
    EXPECT_EQ(shell.value("behind").getValue(), 1) << "taken";
    target->answer = CmObject::notHandled;
    shell.click({10, 10});
    EXPECT_EQ(shell.value("behind").getValue(), 0) << "not taken";
    shell.value("name").setTarget(nullptr, 0, false);
}

TEST(UTextDisplay, ShowsItsValueOrElseItsTitle) {
    HeadlessShell shell{"<text name='name' size='0,0,80,20'/><text name='count' size='0,20,80,20'/>",
                        "name = \"Main\"\ncount = 12"};
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
}

} // namespace

} // namespace qorl
