#include "support/EditRecorder.h"

#include <qorl/IBoundValue.h>

#include <utility>

namespace qorl::testing {

EditRecorder::EditRecorder() {
    Binding::setValueActivityListener(this);
}

EditRecorder::~EditRecorder() {
    Binding::setValueActivityListener(nullptr);
}

std::string EditRecorder::take() {
    return std::exchange(text_, {});
}

void EditRecorder::valueChanged(Binding::IBoundValue* value) {
    write(std::to_string(value->getValue()));
}

void EditRecorder::editStateChanged(Binding::IBoundValue* value) {
    write(value->isEditing() ? "begin" : "end");
}

void EditRecorder::write(const std::string& word) {
    text_ += (text_.empty() ? "" : " ") + word;
}

} // namespace qorl::testing
