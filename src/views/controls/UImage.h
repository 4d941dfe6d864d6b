#pragma once

#include "views/UView.h"

namespace qorl {

/// A bitmap in the tree.
class UImage : public UView {
    QORL_CLASS(UImage, UView)

public:
    /// Bits of the style word. Without any the bitmap stands at the top left in its own size.
    enum Style : uint32_t { scale = 1, hrepeat = 2, vrepeat = 4, keepAspect = 0x10000 };

    /// `bitmap` may be null: then nothing is drawn. An empty frame takes the bitmap's size.
    UImage(const CmRect& frame, Ref<UBitmap> bitmap, uint32_t style = 0);

    bool drawContent(const CmRect& rect) override;
    /// The bitmap's size, or, where the bitmap fills any, the one of the subviews.
    void resizeToFit(int32_t extraWidth, int32_t extraHeight) override;
    AccessibleRole getAccessibleRole() const override { return AccessibleRole::image; }

    UBitmap* getBitmap() const { return bitmap_.get(); }
    void setBitmap(Ref<UBitmap> bitmap);

protected:
    ~UImage() override;

private:
    CmRect imageRect() const;

    Ref<UBitmap> bitmap_;
    uint32_t style_;
};

} // namespace qorl
