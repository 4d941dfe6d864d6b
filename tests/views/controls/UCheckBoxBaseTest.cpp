#include "views/controls/UCheckBoxBase.h"

#include "binding/IntValue.h"
#include "support/EditRecorder.h"
#include "support/HeadlessShell.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::EditRecorder;
using testing::HeadlessShell;

TEST(UCheckBoxBase, TurnsOverByItsStyle) {
    const struct {
        uint32_t style;
        int32_t before;
        const char* edits;
    } cases[] = {
        {0, 0, "1"},
        {0, 1, "0"},
        {CheckBoxStyle::cross, 1, "0"},
        {CheckBoxStyle::radio, 0, "1"},
        {CheckBoxStyle::radio, 1, "1"},
        {CheckBoxStyle::push, 0, "1 0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "style " << c.style << " at " << c.before);
        const auto value = make<Binding::IntValue>(0, 1);
        value->setValue(c.before);
        const auto box =
            make<UCustomCheckBox>(CmRect{0, 0, 80, 20}, ConstString("Mute"), value.get(), c.style);
        HeadlessShell shell{box};
        EditRecorder edits;
        shell.click({60, 10});
        EXPECT_EQ(edits.take(), c.edits) << "on the title";
    }
}

TEST(UCheckBoxBase, TakesTheSizeOfItsMarkAndTitle) {
    HeadlessShell shell{"<checkbox name='a' title='A' size='0,0,10,10'/>"
                        "<checkbox name='b' title='A longer title' size='0,0,10,10'/>"
                        "<checkbox name='c' size='0,0,10,10'/>"};
    int32_t widths[3];
    for (int32_t i = 0; i < 3; ++i) {
        UView& box = shell.view(i);
        box.resizeToFit(0, -1);
        widths[i] = box.getFrameSize().width;
        EXPECT_EQ(box.getFrameSize().height, 10);
        box.resizeToFit(5, 0);
        EXPECT_EQ(box.getFrameSize().width, widths[i] + 5);
    }
    EXPECT_GT(widths[1], widths[0]);
    EXPECT_GT(widths[0], widths[2]);
    EXPECT_EQ(widths[2], 14);
}

} // namespace
} // namespace qorl
