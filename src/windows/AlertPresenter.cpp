#include "windows/AlertPresenter.h"

#include "persistence/files/ReplaceQuestion.h"
#include "platform/System.h"

namespace qorl {

namespace {

/// For programs in which nobody could see an alert.
class DebugAlertPresenter final : public AlertPresenter {
public:
    int32_t show(const AlertRecord& alert) override {
        platform::debugOutput(alert.text.toUtf8());
        return alert.text.isEmpty() ? nothing : first;
    }
};

constinit DebugAlertPresenter debugPresenter;
constinit AlertPresenter* presenterInForce = nullptr;

bool askByAlert(const ConstString& text, const ConstString& first, const ConstString& second) {
    AlertRecord alert;
    alert.kind = AlertRecord::Kind::question;
    alert.text = text;
    alert.button1 = first;
    alert.button2 = second;
    return AlertPresenter::current().show(alert) == AlertPresenter::first;
}

const ReplaceQuestionRecord askBeforeReplacing{&askByAlert};

} // namespace

AlertPresenter& AlertPresenter::current() {
    return presenterInForce ? *presenterInForce : debugPresenter;
}

void AlertPresenter::setCurrent(AlertPresenter* presenter) {
    presenterInForce = presenter;
}

} // namespace qorl
