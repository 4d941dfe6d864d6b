#include "views/containers/RowColumnLayout.h"

#include "foundation/Cast.h"
#include "views/UView.h"
#include "windows/UWindow.h"

#include <algorithm>
#include <utility>

namespace qorl {

namespace {

/// Holds a flag for the length of a scope.
class Held {
public:
    explicit Held(bool& flag) : flag_(flag) { flag_ = true; }
    ~Held() { flag_ = false; }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

private:
    bool& flag_;
};

} // namespace

void RowColumnLayout::update(UView& view) {
    if (suspended_ || placing_ || (view.getSubViewCount() == 0 && !view.isRealized()))
        return;
    arrange(view, 0);
}

void RowColumnLayout::subViewsChanged(UView& view) {
    isStale_ = true;
    update(view);
}

void RowColumnLayout::arrange(UView& view, int32_t crossDelta) {
    // A listener that always changes something must not keep the program here.
    constexpr int32_t mostRounds = 8;
    const Ref<UView> keep = retain(&view);
    const Held held(placing_);
    for (int32_t round = 0; round < mostRounds; ++round) {
        isStale_ = false;
        if (!has(RowColumnStyle::fitInParent))
            place(view);
        else if (view.isRealized())
            stretch(view, std::exchange(crossDelta, 0));
        if (!isStale_)
            return;
    }
}

bool RowColumnLayout::frameChanged(UView& view, const CmRect& oldClientRect) {
    if (!has(RowColumnStyle::fitInParent))
        return false;
    if (suspended_ || placing_ || resizing_ || !view.isRealized())
        return true;
    const CmRect& client = view.getClientRect();
    arrange(view, isHorizontal() ? client.height() - oldClientRect.height()
                                 : client.width() - oldClientRect.width());
    return true;
}

void RowColumnLayout::place(UView& view) {
    CmSize used = stackChildren(view);
    if (has(RowColumnStyle::equalSize | RowColumnStyle::alignCenter | RowColumnStyle::alignFar))
        evenOut(view, used);
    if (has(RowColumnStyle::resizeParents) && view.getParent()) {
        const Held held(resizing_);
        view.getParent()->resizeToFit(0, 0);
    }
    takeUsedSize(view, used);
    if (!has(RowColumnStyle::sizeWindow))
        return;
    for (UView* ancestor = view.getParent(); ancestor; ancestor = ancestor->getParent()) {
        ancestor->resizeToFit(0, 0);
        if (cast<UWindow>(ancestor))
            break;
    }
}

CmSize RowColumnLayout::stackChildren(UView& view) {
    const bool horizontal = isHorizontal();
    int32_t cursor = horizontal ? marginX : marginY;
    CmSize used;
    view.forEachSubView([&](UView& child) {
        const CmRect& frame = child.getFrameRect();
        if (frame.isEmpty() || !child.isShown())
            return;
        const CmPoint origin = horizontal ? CmPoint{cursor, marginY} : CmPoint{marginX, cursor};
        const CmRect placed = CmRect::ofSize(origin, frame.size());
        used.width = std::max(used.width, placed.right);
        used.height = std::max(used.height, placed.bottom);
        const int32_t size = rowPitch < 0 ? extentOf(placed) : rowPitch;
        cursor += size + (horizontal ? spacingX : spacingY);
        child.setFrame(placed.moved(offsetX, offsetY), true);
    });
    return used;
}

void RowColumnLayout::evenOut(UView& view, CmSize used) {
    const bool horizontal = isHorizontal();
    const int32_t room = horizontal ? used.height - marginY : used.width - marginX;
    view.forEachSubView([&](UView& child) {
        CmRect frame = child.getFrameRect();
        if (frame.isEmpty() || !child.isShown())
            return;
        int32_t& nearEdge = horizontal ? frame.top : frame.left;
        int32_t& farEdge = horizontal ? frame.bottom : frame.right;
        if (has(RowColumnStyle::equalSize)) {
            farEdge = nearEdge + room;
        } else {
            const int32_t left = room - (farEdge - nearEdge);
            const int32_t shift = has(RowColumnStyle::alignCenter) ? left / 2 : left;
            nearEdge += shift;
            farEdge += shift;
        }
        child.setFrame(frame, true);
    });
}

void RowColumnLayout::takeUsedSize(UView& view, CmSize used) {
    const CmSize border{view.getFrameSize().width - view.getClientSize().width,
                        view.getFrameSize().height - view.getClientSize().height};
    const CmSize size{marginX + used.width + border.width, marginY + used.height + border.height};
    const CmRect frame = CmRect::ofSize(view.getFrameRect().origin(), size);
    if (frame == view.getFrameRect())
        return;
    const Held held(resizing_);
    if (UView* parent = view.getParent())
        parent->childFrameRequest(&view, frame, true);
    else
        view.setFrame(frame, true);
}

void RowColumnLayout::rememberShares(UView& view) {
    const auto count = static_cast<size_t>(view.getSubViewCount());
    const auto isRemembered = [&] {
        for (size_t i = 0; i < count; ++i)
            if (shares_[i].view != view.getSubView(static_cast<int32_t>(i)))
                return false;
        return true;
    };
    if (shares_.size() == count && isRemembered())
        return;
    std::vector<Share> shares;
    shares.reserve(count);
    view.forEachSubView([&](UView& child) {
        const auto known = std::find_if(shares_.begin(), shares_.end(),
                                        [&](const Share& share) { return share.view == &child; });
        const Geometry::Rect& frame = child.getItem().frame();
        const double size = known != shares_.end() ? known->size
                            : isHorizontal()       ? frame.width
                                                   : frame.height;
        shares.push_back({&child, size});
    });
    shares_ = std::move(shares);
}

void RowColumnLayout::childResized(const UView& child) {
    // A size that the layout itself has led to says nothing about the share.
    if (placing_)
        return;
    for (Share& share : shares_)
        if (share.view == &child)
            share.size = extentOf(child.getFrameRect());
}

void RowColumnLayout::childRemoved(const UView& child) {
    std::erase_if(shares_, [&](const Share& share) { return share.view == &child; });
}

CmRect RowColumnLayout::alongAndAcross(const CmRect& frame, int32_t start, int32_t size) const {
    if (isHorizontal())
        return {start, frame.top, start + size, frame.bottom};
    return {frame.left, start, frame.right, start + size};
}

void RowColumnLayout::stretch(UView& view, int32_t crossDelta) {
    rememberShares(view);
    const bool horizontal = isHorizontal();
    const uint32_t stretchFlag = horizontal ? viewAttachRight : viewAttachBottom;
    const uint32_t crossNear = horizontal ? viewAttachTop : viewAttachLeft;
    const uint32_t crossFar = horizontal ? viewAttachBottom : viewAttachRight;
    const int32_t spacing = horizontal ? spacingX : spacingY;

    // What can't stretch counts with the size that it has now.
    double fixed = 0;
    double stretchable = 0;
    for (const Share& share : shares_) {
        if (!share.view->isShown() || share.size <= 0)
            continue;
        fixed += spacing;
        if (share.view->hasFlag(stretchFlag))
            stretchable += share.size;
        else
            fixed += extentOf(share.view->getFrameRect());
    }
    const double free = std::max(0.0, extentOf(view.getFrameRect()) - fixed);
    const auto factor = static_cast<float>(stretchable > 0 ? free / stretchable : 0);

    int32_t cursor = (horizontal ? marginX + offsetX : marginY + offsetY);
    // Each placing is heard of, and whoever hears it may take subviews out.
    struct Placing {
        Ref<UView> child;
        double size;
    };
    std::vector<Placing> placings;
    placings.reserve(shares_.size());
    for (const Share& share : shares_)
        if (share.view->isShown() && share.size > 0)
            placings.push_back({retain(share.view), share.size});
    for (const Placing& placing : placings) {
        UView& child = *placing.child;
        if (child.getParent() != &view)
            continue;
        const int32_t size = child.hasFlag(stretchFlag)
                                 ? static_cast<int32_t>(factor * static_cast<float>(placing.size))
                                 : extentOf(child.getFrameRect());
        CmRect frame = alongAndAcross(child.getFrameRect(), cursor, size);
        if (crossDelta != 0 && child.hasFlag(crossFar)) {
            (horizontal ? frame.bottom : frame.right) += crossDelta;
            if (!child.hasFlag(crossNear))
                (horizontal ? frame.top : frame.left) += crossDelta;
        }
        cursor += size + spacing;
        child.setFrame(frame, true);
    }
}

void RowColumnLayout::resizeToFit(UView& view, int32_t extraWidth, int32_t extraHeight) {
    update(view);
    const CmRect frame = view.getFrameRect();
    if (extraWidth <= 0 && extraHeight <= 0)
        return;
    const CmSize size{frame.width() + std::max(extraWidth, 0), frame.height() + std::max(extraHeight, 0)};
    const Held held(resizing_);
    view.setFrame(CmRect::ofSize(frame.origin(), size), true);
}

} // namespace qorl
