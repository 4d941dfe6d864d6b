#pragma once

namespace qorl::Binding {

class IBoundValue;

/// Hears of every edit of every value that isn't silent: automation, remote control, "the document was
/// touched".
class ValueActivityListener {
public:
    virtual void valueChanged(IBoundValue* value) = 0;
    virtual void editStateChanged(IBoundValue* value) = 0;

protected:
    ~ValueActivityListener() = default;
};

/// The one listener of the process, null if none. Not owned; whoever set it clears it.
ValueActivityListener* getValueActivityListener();
void setValueActivityListener(ValueActivityListener* listener);

} // namespace qorl::Binding
