#include "foundation/text/CmString.h"
#include "persistence/xml/XmlFile.h"
#include "support/SettingsFolder.h"
#include "windows/AlertPresenter.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

class Answer final : public AlertPresenter {
public:
    int32_t show(const AlertRecord& alert) override {
        shown = alert;
        return choice;
    }

    AlertRecord shown;
    int32_t choice = closed;
};

TEST(ReplaceQuestion, IsAnAlertWithTwoButtons) {
    const SettingsFolder folder;
    Answer presenter;
    AlertPresenter::setCurrent(&presenter);
    CmString text("text");
    EXPECT_TRUE(saveXml("Keys", "State", text, true));
    EXPECT_TRUE(presenter.shown.text.isEmpty());
    EXPECT_FALSE(saveXml("Keys", "State", text, true)) << "an alert that is closed is no consent";
    EXPECT_EQ(presenter.shown.kind, AlertRecord::Kind::question);
    EXPECT_EQ(presenter.shown.button1, ConstString("Replace"));
    EXPECT_EQ(presenter.shown.button2, ConstString("Cancel"));
    EXPECT_TRUE(presenter.shown.button3.isEmpty());
    presenter.choice = AlertPresenter::first;
    EXPECT_TRUE(saveXml("Keys", "State", text, true));
    AlertPresenter::setCurrent(nullptr);
}

} // namespace
} // namespace qorl
