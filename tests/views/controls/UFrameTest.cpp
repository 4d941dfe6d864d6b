#include "views/controls/UFrame.h"

#include "binding/Value.h"
#include "schemes/UScheme.h"
#include "support/HeadlessShell.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::HeadlessShell;

/// A frame over a switch, and one inside of a slider.
TEST(UFrame, TakesTheMouseOnlyWhenItIsMadeTo) {
    const struct {
        int32_t kind;
        int32_t afterClick;
        int32_t afterWheel;
    } cases[] = {
        {UFrame::invisible, 1, 1},
        {FrameKind::solidRect, 1, 1},
        {UFrame::mouseDownTrue, 0, 1},
        {UFrame::wheelMoveTrue, 1, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "kind " << c.kind);
        HeadlessShell shell{"<switch name='pressed' style='onoff' size='0,0,60,20'/>"
                            "<slider name='turned' style='horizontal' size='0,30,60,20'/>",
                            "pressed = 0 in 0..1\nturned = 0"};
        const auto frame = [&] {
            return make<UFrame>(CmRect{0, 0, 60, 20}, ConstString(), c.kind, UColor(), 0, 1);
        };
        shell.content().addSubView(frame());
        shell.view(1).addSubView(frame());
        shell.click({30, 10});
        EXPECT_EQ(shell.value("pressed").getValue(), c.afterClick);
        shell.wheel({30, 40}, 1);
        EXPECT_EQ(shell.value("turned").getValue(), c.afterWheel);
    }
}

} // namespace
} // namespace qorl
