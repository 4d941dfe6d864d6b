#pragma once

#include "schemes/UScheme.h"

namespace qorl {

/// The scheme that looks like the desktop: its own controls, plain frames, no bold data fonts.
class USystemScheme : public UScheme {
    QORL_CLASS(USystemScheme, UScheme)
    QORL_CLONE(USystemScheme)

public:
    /// Registers itself as the scheme class "system".
    USystemScheme();
    ~USystemScheme() override;

    const UColor& getColor(int32_t index) const override;
    const UBrush& getBrush(int32_t index) const override;
    const UPen& getPen(int32_t index) const override;
    const UFont& getFont(int32_t index) const override;
    UControl* createControl(int32_t kind, const CmRect& rect, int32_t style, Binding::Value* value,
                            const ConstString& title) override;
    void drawWorkArea(UDrawDevice& device, const CmRect& rect, bool withScrollbars) override;

private:
    int32_t framed(int32_t colorKey) const;

    bool plainFrameMode_ = false; ///< The bottom line of a frame vanishes into the window.
};

} // namespace qorl
