#pragma once

#include "graphics/UFont.h"
#include "views/UView.h"

#include <memory>

namespace qorl {

/// A title that stands by itself.
class ULabel : public UView {
    QORL_CLASS(ULabel, UView)

public:
    /// Bits of the style word: the label takes the extent of its text on that axis, also when the text
    /// changes.
    enum Style : uint32_t { autoWidth = 1, autoHeight = 2 };

    ULabel(const CmRect& frame, const ConstString& title, uint32_t just, uint32_t style = 0);

    void setTitle(const ConstString& title) override;
    bool drawContent(const CmRect& rect) override;
    void resizeToFit(int32_t extraWidth, int32_t extraHeight) override;
    AccessibleRole getAccessibleRole() const override { return AccessibleRole::label; }

    /// The scheme's label font until then.
    void setFont(const UFont& font);
    /// A word of `TextJust`.
    uint32_t getJust() const { return just_; }
    /// Takes the size that the style asks for; done by whoever built the label once its font is set. Goes
    /// last: who hears of the new size may take the label away.
    void applyAutoSize();

protected:
    ~ULabel() override;

private:
    const UFont& measureFont() const;

    std::unique_ptr<UFont> font_;
    uint16_t just_;
    uint16_t style_;
};

} // namespace qorl
