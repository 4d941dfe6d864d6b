#pragma once

#include "foundation/text/String.h"

namespace qorl {

/// What an alert shows. Texts are as the user reads them.
struct AlertRecord {
    enum class Kind : int32_t { warning = 0, question = 1, information = 2 };

    Kind kind = Kind::warning;
    String text;
    /// Empty is the localised "OK".
    String button1;
    /// Empty buttons don't show.
    String button2;
    String button3;
};

/// Shows alerts and waits for the user. One a process, replaceable. GUI thread.
class AlertPresenter {
public:
    /// What the user chose.
    enum Choice : int32_t { nothing = -1, first = 0, second = 1, third = 2, closed = 3 };

    virtual int32_t show(const AlertRecord& alert) = 0;

    /// The presenter in force. The default writes the text to the debug output and chooses the first button.
    static AlertPresenter& current();
    /// Not owned; null brings the default back.
    static void setCurrent(AlertPresenter* presenter);

protected:
    ~AlertPresenter() = default;
};

} // namespace qorl
