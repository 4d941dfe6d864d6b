#include "views/controls/UTextEdit.h"

#include "foundation/messages/FMessage.h"
#include "views/controls/ControlStyle.h"

namespace qorl {

UTextEdit::UTextEdit(const CmRect& frame, const ConstString& title, Binding::Value* value, uint32_t style)
    : UTextDisplay(frame, title, value, style) {
    setFocusable(!(style & TextStyle::noNavigation));
    setJust(TextJust::left);
}

bool UTextEdit::mouseDown(CmPoint point) {
    UTextDisplay::mouseDown(point);
    return true;
}

int32_t UTextEdit::handleMessage(FMessage* message) {
    return message->isNamed("FocusHit") ? handled : UTextDisplay::handleMessage(message);
}

} // namespace qorl
