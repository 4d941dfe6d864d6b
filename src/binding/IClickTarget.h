#pragma once

#include <qorl/IBoundValue.h>

namespace qorl::Binding {

/// What a value's target answers when it wants to know of presses on the controls of the value.
class IClickTarget : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{4D675C54-8A93-4D4C-A071-DF0584A61872}");

    /// `modifiers` in the platform's word of held keys.
    virtual void valueClicked(IBoundValue* value, uint32_t modifiers) = 0;

protected:
    ~IClickTarget() = default;
};

} // namespace qorl::Binding
