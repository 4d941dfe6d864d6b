#pragma once

#include "graphics/UFont.h"
#include "views/controls/USwitchBase.h"

#include <memory>

namespace qorl {

class UDrawDevice;

/// A mark that is on or off, with a title beside it. Pressed it is a switch of behaviour `onoff`; a radio
/// button sets its maximum, one of style `push` is a push button.
class UCheckBoxBase : public USwitchBase {
    QORL_CLASS(UCheckBoxBase, USwitchBase)

public:
    using USwitchBase::USwitchBase;

    bool drawContent(const CmRect& rect) override;
    void resizeToFit(int32_t extraWidth, int32_t extraHeight) override;
    AccessibleRole getAccessibleRole() const override;

    /// The scheme's label font until then. The colour of a disabled box is the scheme's in any case.
    void setFont(const UFont& font);

protected:
    SwitchBehaviour pressBehaviour() const override;
    virtual void drawMark(UDrawDevice& device, const CmRect& mark) = 0;
    virtual CmSize getMarkSize() const = 0;
    bool isRadio() const { return hasStyle(CheckBoxStyle::radio); }

private:
    /// At the left edge of the client, in the middle of its height.
    CmRect markRect() const;
    UFont titleFont() const;

    std::unique_ptr<UFont> font_;
};

/// The check box and radio button that the scheme draws.
class UCustomCheckBox : public UCheckBoxBase {
    QORL_CLASS(UCustomCheckBox, UCheckBoxBase)

public:
    using UCheckBoxBase::UCheckBoxBase;

protected:
    void drawMark(UDrawDevice& device, const CmRect& mark) override;
    CmSize getMarkSize() const override;
};

} // namespace qorl
