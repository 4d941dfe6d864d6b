#pragma once

#include <qorl/Geometry.h>
#include <qorl/Ref.h>

#include <cstdint>
#include <vector>

namespace qorl {

class UView;

/// Bits of the style word of rows and columns. Without a direction they stack downwards.
namespace RowColumnStyle {
enum : uint32_t {
    horizontal = 0x1,
    vertical = 0x2,
    sizeWindow = 0x4,
    wordWrap = 0x10,
    clip = 0x20,
    clipFirst = 0x40,
    equalSize = 0x100,
    equalSizeAttached = 0x200,
    table = 0x400,
    wrapKeepsAspect = 0x800,
    stretchMargin = 0x1000,
    stretchSpacing = 0x2000,
    stretchViews = 0x4000,
    alignCenter = 0x8000,
    alignFar = 0x10000, ///< `alignright` of a column, `alignbottom` of a row.
    fitInParent = 0x20000,
    fitInParentAttached = 0x40000,
    resizeParents = 0x80000,
};
} // namespace RowColumnStyle

/// Stacks the shown subviews of a view along one axis. One layout serves one view.
///
/// Plain placing puts child behind child and gives the view the size that they need. With `fitInParent` the
/// view keeps its size, and the children that are attached on their far side share what the others leave,
/// anew with each change of its frame. Their shares come from the sizes that they had before the first
/// stretch, so that shrinking and growing again gives the same picture. Across, a child stands at the margin,
/// and grows with the view when it is attached on both sides. All numbers are logical pixels. A child with an
/// empty frame takes no space.
class RowColumnLayout {
public:
    int32_t marginX = 0;
    int32_t marginY = 0;
    int32_t spacingX = 0;
    int32_t spacingY = 0;
    /// The fixed step from child to child; negative goes by each child's size.
    int32_t rowPitch = -1;
    /// Moves all children at the end of placing.
    int32_t offsetX = 0;
    int32_t offsetY = 0;
    uint32_t style = 0;

    bool has(uint32_t bits) const { return (style & bits) != 0; }
    bool isHorizontal() const { return has(RowColumnStyle::horizontal); }

    /// While suspended nothing is placed; whoever ends that calls `update`.
    void setSuspended(bool suspended) { suspended_ = suspended; }
    bool isSuspended() const { return suspended_; }

    /// Places the subviews of `view` anew. While they are being placed, in answer to what a listener of one
    /// of them does, all are placed once more afterwards.
    void update(UView& view);
    /// The view got another size: children that share its room follow. False when the attach rule shall place
    /// them alone.
    bool frameChanged(UView& view, const CmRect& oldClientRect);
    /// Places and gives a view that doesn't keep its size the one of its children plus the extra room; -1
    /// keeps that dimension.
    void resizeToFit(UView& view, int32_t extraWidth, int32_t extraHeight);
    /// `child` took another size by itself: that is what its share is measured by from now on.
    void childResized(const UView& child);
    void childRemoved(const UView& child);

private:
    struct Share {
        UView* view;
        double size;
    };

    struct Placing {
        Ref<UView> child;
        CmRect frame;
    };

    void arrange(UView& view, CmSize extra);
    void place(UView& view, CmSize extra);
    /// Child behind child; `used` gets the far edges before the offset.
    std::vector<Placing> stack(UView& view, CmSize& used) const;
    void evenOut(std::vector<Placing>& placings, CmSize used) const;
    static void assign(const UView& view, const std::vector<Placing>& placings);
    void takeUsedSize(UView& view, CmSize used, CmSize extra);
    void growAcross(UView& view, int32_t growth) const;
    void stretch(UView& view);
    void rememberShares(UView& view);
    CmPoint margin() const;
    CmPoint offset() const;
    int32_t extentOf(const CmRect& rect) const { return isHorizontal() ? rect.width() : rect.height(); }

    std::vector<Share> shares_;
    int32_t acrossGrowth_ = 0; ///< Of the view, that its subviews have not followed yet.
    bool suspended_ = false;
    bool placing_ = false; ///< Also while the view takes the size that follows.
    bool isStale_ = false; ///< The subviews changed while they were placed.
};

} // namespace qorl
