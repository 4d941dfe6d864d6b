#pragma once

#include "views/controls/UTextDisplay.h"

namespace qorl {

/// A line of text that the user edits. It shows its value in a field and takes the keyboard.
class UTextEdit : public UTextDisplay {
    QORL_CLASS(UTextEdit, UTextDisplay)

public:
    UTextEdit(const CmRect& frame, const ConstString& title, Binding::Value* value, uint32_t style);

    /// Takes the press, so that a click gives the focus and goes no further.
    bool mouseDown(CmPoint point) override;
    /// Return and Space stay with the text.
    int32_t handleMessage(FMessage* message) override;
    AccessibleRole getAccessibleRole() const override { return AccessibleRole::edit; }
};

} // namespace qorl
