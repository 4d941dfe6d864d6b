#pragma once

#include "binding/ValueActivity.h"

#include <string>

namespace qorl::testing {

/// Writes down what users do to values: "begin" and "end" for the brackets of a gesture, and between them
/// each number that was performed. One at a time.
class EditRecorder final : private Binding::ValueActivityListener {
public:
    EditRecorder();
    EditRecorder(const EditRecorder&) = delete;
    ~EditRecorder();

    /// "begin 100 110 end"; what comes later starts anew.
    std::string take();

private:
    void valueChanged(Binding::IBoundValue* value) override;
    void editStateChanged(Binding::IBoundValue* value) override;
    void write(const std::string& word);

    std::string text_;
};

} // namespace qorl::testing
