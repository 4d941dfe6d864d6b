#include "views/controls/UTextEdit.h"

#include "binding/Value.h"
#include "support/EditRecorder.h"
#include "support/HeadlessShell.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::EditRecorder;
using testing::HeadlessShell;

TEST(UTextEdit, TakesPressesAndTheFocusAndKeepsItsValue) {
    HeadlessShell shell{"<switch name='behind' style='onoff immediate' size='0,0,80,20'/>"
                        "<edit name='name' size='0,0,80,20'/>",
                        "name = 1 in 0..1\nbehind = 0 in 0..1"};
    EditRecorder edits;
    shell.desktop().setFocus(&shell.view(0));
    shell.click({10, 10});
    EXPECT_EQ(shell.desktop().getFocus(), &shell.view(1));
    shell.key("Space");
    EXPECT_EQ(edits.take(), "");
}

TEST(UTextEdit, LeavesNavigationWhenItIsToldTo) {
    HeadlessShell shell{
        "<edit name='a' style='no-navigation' size='0,0,80,20'/><edit name='b' size='0,30,80,20'/>"};
    EXPECT_FALSE(shell.view(0).isFocusable());
    EXPECT_TRUE(shell.view(1).isFocusable());
}

} // namespace
} // namespace qorl
