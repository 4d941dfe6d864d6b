#pragma once

#include "graphics/UFont.h"
#include "views/controls/UControl.h"

#include <memory>

namespace qorl {

class UDrawDevice;

/// The text of a value, or, for a display that was given none, its title.
class UTextDisplay : public UControl {
    QORL_CLASS(UTextDisplay, UControl)

public:
    /// `style` of `TextStyle`. With a null value the display shows its title until it is given a value.
    UTextDisplay(const CmRect& frame, const ConstString& title, Binding::Value* value, uint32_t style);

    void setValue(Binding::Value* value) override;
    bool drawContent(const CmRect& rect) override;
    /// The target may take a press as "TD Mouse Down".
    bool mouseDown(CmPoint point) override;
    void resizeToFit(int32_t extraWidth, int32_t extraHeight) override;
    bool getTooltip(String& text, CmPoint point, CmRect& area) const override;
    AccessibleRole getAccessibleRole() const override { return AccessibleRole::text; }

    /// The scheme's data font until then.
    void setFont(const UFont& font);
    /// A word of `TextJust`.
    void setJust(uint32_t just);
    /// Stands behind a second value that is a colour.
    void setBackground(const UColor& color);
    /// Of a title that is shown; else the text's own.
    void setTitleColor(const UColor& color);
    /// Stands behind the text of a value, after a blank.
    void setUnits(const ConstString& units);
    /// Shown, as if disabled, while there is no text.
    void setHint(const ConstString& hint);
    /// Moves the text in its field.
    void setTextOffset(CmPoint offset);
    /// What is shown now, without the hint.
    void getShownText(String& text) const;

protected:
    ~UTextDisplay() override;

    /// The field behind the text, with its border; the rect that is left for the text.
    CmRect drawField(UDrawDevice& device);
    UFont textFont() const;
    uint32_t getJust() const { return just_; }

private:
    /// What few texts have.
    struct Look;

    Look& look();
    /// False for the scheme's own.
    bool getFieldColor(UColor& color) const;

    std::unique_ptr<UFont> font_;
    std::unique_ptr<Look> look_;
    uint32_t just_ = 0;
    bool showsTitle_;
};

} // namespace qorl
