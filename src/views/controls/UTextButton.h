#pragma once

#include "views/controls/USwitchBase.h"

namespace qorl {

/// The push button of a scheme: a bevel with its title. Pressed it is a switch of behaviour `push`.
class UTextButton : public USwitchBase {
    QORL_CLASS(UTextButton, USwitchBase)

public:
    /// Bits of the style word.
    enum Style : uint32_t { isDefault = 1 };

    UTextButton(const CmRect& frame, const ConstString& title, Binding::Value* value, uint32_t style = 0);

    bool drawContent(const CmRect& rect) override;
    void resizeToFit(int32_t extraWidth, int32_t extraHeight) override;
    AccessibleRole getAccessibleRole() const override { return AccessibleRole::button; }

protected:
    SwitchBehaviour pressBehaviour() const override { return SwitchBehaviour::push; }
};

} // namespace qorl
