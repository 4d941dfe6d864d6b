#include "skin/FController.h"
#include "skin/UIWizard.h"
#include "skin/UViewClass.h"
#include "support/HeadlessShell.h"
#include "views/UBaseView.h"
#include "windows/UModalDialog.h"
#include "windows/UPopupWindow.h"

#include <gtest/gtest.h>

namespace qorl::testing {
namespace {

class WizardWindowsTest : public ::testing::Test {
protected:
    WizardWindowsTest() {
        EXPECT_TRUE(wizard_->loadFromString(
            "<template name='T' title='Panel' style='windowstyle' focus-id='b' size='0,0,120,80'><label/>"
            "<edit id='a'/><edit id='b'/></template>"
            "<template name='D' style='dialogstyle' size='0,0,120,80'><view name='answers "
            "seven'/></template>"));
    }

    HeadlessShell shell_{platform::HeadlessSettings{}};
    Ref<UIWizard> wizard_ = make<UIWizard>();
    Ref<FController> controller_ = make<FController>();
};

TEST_F(WizardWindowsTest, ShowsATemplateAsItOrTheCallerSays) {
    const Ref<UWindow> own = wizard_->showInWindow("T", controller_.get());
    ASSERT_TRUE(own);
    EXPECT_EQ(own->getTitle().toUtf8(), "Panel");
    EXPECT_EQ(own->getClientSize(), (CmSize{120, 80}));
    EXPECT_EQ(own->getController(), controller_.get());
    EXPECT_TRUE(own->isVisible());
    shell_.desktop().chooseFocus(own.get());
    ASSERT_TRUE(own->getFocusView());
    EXPECT_EQ(own->getFocusView()->getItem().name(), "b") << "the one that the template names";
    const Ref<UWindow> told = wizard_->showInWindow("T", nullptr, 0xD0, 0, ConstString("Other"));
    EXPECT_EQ(told->getTitle().toUtf8(), "Other");
    EXPECT_EQ(told->getStyle() & 0xFFu, 0xD0u);
    EXPECT_FALSE(wizard_->showInWindow("gone", nullptr));
}

TEST_F(WizardWindowsTest, OpensAPopupThatAPressOutsideCloses) {
    const Ref<UWindow> popup = wizard_->openPopup("T", nullptr, {50, 40});
    ASSERT_TRUE(cast<UPopupWindow>(popup));
    EXPECT_EQ(popup->clientToScreen({}), (CmPoint{50, 40}));
    EXPECT_EQ(shell_.desktop().getOpenPopup(), popup.get());
    EXPECT_TRUE(popup->hasWindowFlag(UPopupWindow::closesOnOutsideClick));
    EXPECT_FALSE(wizard_->openPopup("gone", nullptr, {}));
}

class AnswersSeven : public UView {
    void attached(UView* parent) override {
        UView::attached(parent);
        if (auto* dialog = cast<UModalDialog>(getWindow()))
            dialog->endModal(7);
    }
};

TEST_F(WizardWindowsTest, RunsADialogToItsResult) {
    UViewClass::add("answers seven",
                    [](const ViewElement&, IController*) -> UView* { return new AnswersSeven; });
    EXPECT_EQ(wizard_->runDialog("D", controller_.get()), 7);
    EXPECT_EQ(wizard_->runDialog("gone", controller_.get()), UModalDialog::canceledResult);
}

} // namespace
} // namespace qorl::testing
