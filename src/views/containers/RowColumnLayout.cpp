#include "views/containers/RowColumnLayout.h"

#include "foundation/Cast.h"
#include "foundation/Held.h"
#include "views/Reach.h"
#include "views/UView.h"
#include "windows/UWindow.h"

#include <algorithm>
#include <utility>

namespace qorl {

void RowColumnLayout::update(UView& view) {
    arrange(view, {0, 0});
}

void RowColumnLayout::resizeToFit(UView& view, int32_t extraWidth, int32_t extraHeight) {
    arrange(view, {extraWidth, extraHeight});
}

void RowColumnLayout::arrange(UView& view, CmSize extra) {
    // A listener that always changes something must not keep the program here.
    constexpr int32_t mostRounds = 8;
    isStale_ = true;
    if (placing_ || suspended_ || (view.getSubViewCount() == 0 && !view.isRealized()))
        return;
    const Ref<UView> keep = retain(&view);
    const Held held(placing_);
    for (int32_t round = 0; isStale_ && round < mostRounds; ++round) {
        isStale_ = false;
        if (!has(RowColumnStyle::fitInParent)) {
            place(view, extra);
            continue;
        }
        growAcross(view, std::exchange(acrossGrowth_, 0));
        if (view.isRealized())
            stretch(view);
    }
}

bool RowColumnLayout::frameChanged(UView& view, const CmRect& oldClientRect) {
    // The size of a plain row follows from children that stand where they shall.
    if (!has(RowColumnStyle::fitInParent))
        return placing_;
    if (suspended_ || view.getSubViewCount() == 0)
        return true;
    const CmRect& client = view.getClientRect();
    acrossGrowth_ +=
        isHorizontal() ? client.height() - oldClientRect.height() : client.width() - oldClientRect.width();
    update(view);
    return true;
}

void RowColumnLayout::place(UView& view, CmSize extra) {
    CmSize used;
    std::vector<Placing> placings = stack(view, used);
    if (has(RowColumnStyle::equalSize | RowColumnStyle::alignCenter | RowColumnStyle::alignFar))
        evenOut(placings, used);
    assign(view, placings);
    if (has(RowColumnStyle::resizeParents) && view.getParent())
        view.getParent()->resizeToFit(0, 0);
    takeUsedSize(view, used, extra);
    if (!has(RowColumnStyle::sizeWindow))
        return;
    for (Ref<UView> ancestor = retain(view.getParent()); ancestor; ancestor = retain(ancestor->getParent())) {
        ancestor->resizeToFit(0, 0);
        if (cast<UWindow>(ancestor.get()))
            break;
    }
}

std::vector<RowColumnLayout::Placing> RowColumnLayout::stack(UView& view, CmSize& used) const {
    const bool horizontal = isHorizontal();
    const int32_t spacing = horizontal ? spacingX : spacingY;
    CmPoint origin = margin();
    int32_t& cursor = horizontal ? origin.x : origin.y;
    std::vector<Placing> placings;
    view.forEachSubView([&](UView& child) {
        const CmRect& frame = child.getFrameRect();
        if (frame.isEmpty() || !child.isShown())
            return;
        const CmRect placed = CmRect::ofSize(origin, withinReach(frame.size()));
        used.width = std::max(used.width, placed.right);
        used.height = std::max(used.height, placed.bottom);
        cursor = withinReach(int64_t{cursor} + (rowPitch < 0 ? extentOf(placed) : rowPitch) + spacing);
        placings.push_back({retain(&child), placed.moved(offset())});
    });
    return placings;
}

void RowColumnLayout::evenOut(std::vector<Placing>& placings, CmSize used) const {
    const bool horizontal = isHorizontal();
    const int32_t room = horizontal ? used.height - margin().y : used.width - margin().x;
    for (Placing& placing : placings) {
        int32_t& nearEdge = horizontal ? placing.frame.top : placing.frame.left;
        int32_t& farEdge = horizontal ? placing.frame.bottom : placing.frame.right;
        if (has(RowColumnStyle::equalSize)) {
            farEdge = nearEdge + room;
        } else {
            const int32_t left = room - (farEdge - nearEdge);
            const int32_t shift = has(RowColumnStyle::alignCenter) ? left / 2 : left;
            nearEdge += shift;
            farEdge += shift;
        }
    }
}

void RowColumnLayout::assign(const UView& view, const std::vector<Placing>& placings) {
    // Each placing is heard of, and whoever hears it may take subviews out.
    for (const Placing& placing : placings)
        if (placing.child->getParent() == &view)
            placing.child->setFrame(placing.frame, true);
}

void RowColumnLayout::takeUsedSize(UView& view, CmSize used, CmSize extra) {
    const CmSize old = view.getFrameSize();
    const CmSize client = view.getClientSize();
    const CmSize needed{
        withinReach(int64_t{margin().x} + used.width + old.width - client.width + extra.width),
        withinReach(int64_t{margin().y} + used.height + old.height - client.height + extra.height)};
    const CmSize size{extra.width < 0 ? old.width : needed.width,
                      extra.height < 0 ? old.height : needed.height};
    if (size == old)
        return;
    const CmRect frame = CmRect::ofSize(view.getFrameRect().origin(), size);
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

CmPoint RowColumnLayout::margin() const {
    return withinReach(CmPoint{marginX, marginY});
}

CmPoint RowColumnLayout::offset() const {
    return withinReach(CmPoint{offsetX, offsetY});
}

void RowColumnLayout::growAcross(UView& view, int32_t growth) const {
    const bool horizontal = isHorizontal();
    const uint32_t nearFlag = horizontal ? viewAttachTop : viewAttachLeft;
    const uint32_t farFlag = horizontal ? viewAttachBottom : viewAttachRight;
    if (growth == 0)
        return;
    view.forEachSubView([&](UView& child) {
        if (!child.hasFlag(nearFlag) || !child.hasFlag(farFlag))
            return;
        CmRect frame = child.getFrameRect();
        (horizontal ? frame.bottom : frame.right) += growth;
        child.setFrame(frame, true);
    });
}

void RowColumnLayout::stretch(UView& view) {
    rememberShares(view);
    const bool horizontal = isHorizontal();
    const uint32_t stretchFlag = horizontal ? viewAttachRight : viewAttachBottom;
    const int32_t spacing = horizontal ? spacingX : spacingY;
    const auto forEachPart = [&](const auto& visit) {
        for (const Share& share : shares_) {
            const CmSize size = withinReach(share.view->getFrameSize());
            if (share.view->isShown() && share.size > 0 && (horizontal ? size.height : size.width) > 0)
                visit(share, size, share.view->hasFlag(stretchFlag));
        }
    };

    // What can't stretch counts with the size that it has now.
    double fixed = 0;
    double stretchable = 0;
    forEachPart([&](const Share& share, CmSize size, bool stretches) {
        fixed += spacing;
        if (stretches)
            stretchable += share.size;
        else
            fixed += horizontal ? size.width : size.height;
    });
    const double free = std::max(0.0, extentOf(view.getFrameRect()) - fixed);
    const auto factor = static_cast<float>(stretchable > 0 ? free / stretchable : 0);

    CmPoint origin = margin();
    int32_t& cursor = horizontal ? origin.x : origin.y;
    std::vector<Placing> placings;
    forEachPart([&](const Share& share, CmSize size, bool stretches) {
        int32_t& along = horizontal ? size.width : size.height;
        if (stretches)
            along = withinReach(static_cast<int64_t>(factor * static_cast<float>(share.size)));
        placings.push_back({retain(share.view), CmRect::ofSize(origin, size).moved(offset())});
        cursor = withinReach(int64_t{cursor} + along + spacing);
    });
    assign(view, placings);
}

} // namespace qorl
