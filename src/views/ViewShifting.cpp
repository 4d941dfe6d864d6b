#include "views/ViewShifting.h"

#include "views/UView.h"

#include <algorithm>
#include <vector>

namespace qorl {

namespace {

/// One axis of a rect.
struct Extent {
    int32_t near;
    int32_t far;

    bool overlaps(const Extent& other) const { return near < other.far && other.near < far; }
};

Extent along(const CmRect& rect, bool vertical) {
    return vertical ? Extent{rect.top, rect.bottom} : Extent{rect.left, rect.right};
}

Extent across(const CmRect& rect, bool vertical) {
    return along(rect, !vertical);
}

/// The siblings of one view in the order in which sliding reaches them.
class Shift {
public:
    Shift(UView& parent, UView& moved, uint32_t flags)
        : parent_(parent), moved_(moved), vertical_((flags & shiftVertical) != 0),
          far_((flags & shiftFar) != 0) {}

    /// Positive distances go away from the moved view.
    void slide(int32_t distance) {
        collect();
        // Each slide is heard of, and whoever hears it may take others out.
        for (const Ref<UView>& view : sliding_)
            if (view->getParent() == &parent_)
                slideOne(*view, far_ ? distance : -distance);
    }

private:
    /// In the strip of `origin`, at or beyond its near side.
    bool isReachedBy(const CmRect& origin, const UView& view) const {
        const CmRect& frame = view.getFrameRect();
        if (!across(frame, vertical_).overlaps(across(origin, vertical_)))
            return false;
        const Extent from = along(origin, vertical_);
        const Extent to = along(frame, vertical_);
        return far_ ? to.far > from.near : to.near < from.far;
    }

    void collect() {
        std::vector<CmRect> work{moved_.getFrameRect()};
        while (!work.empty()) {
            const CmRect origin = work.back();
            work.pop_back();
            parent_.forEachSubView([&](UView& view) {
                if (&view == &moved_ || contains(view) || !isReachedBy(origin, view))
                    return;
                sliding_.push_back(retain(&view));
                // What stretches stops the push.
                if (!stretches(view))
                    work.push_back(view.getFrameRect());
            });
        }
    }

    bool contains(const UView& view) const {
        return std::find(sliding_.begin(), sliding_.end(), &view) != sliding_.end();
    }

    bool stretches(const UView& view) const {
        const uint32_t both = vertical_ ? viewAttachTop | viewAttachBottom : viewAttachLeft | viewAttachRight;
        return (view.getAttach() & both) == both;
    }

    void slideOne(UView& view, int32_t distance) const {
        CmRect frame = view.getFrameRect();
        const bool moveNear = !stretches(view) || far_;
        const bool moveFar = !stretches(view) || !far_;
        int32_t& near = vertical_ ? frame.top : frame.left;
        int32_t& far = vertical_ ? frame.bottom : frame.right;
        near += moveNear ? distance : 0;
        far += moveFar ? distance : 0;
        near = std::min(near, far);
        view.setFrame(frame, view.isShown());
    }

    UView& parent_;
    UView& moved_;
    bool vertical_;
    bool far_;
    std::vector<Ref<UView>> sliding_;
};

int32_t distanceOf(const UView& view, int32_t gap, uint32_t flags) {
    const CmSize size = view.getFrameSize();
    return (flags & shiftVertical ? size.height : size.width) + gap;
}

} // namespace

bool insertShifting(UView& parent, Ref<UView> view, int32_t gap, uint32_t flags) {
    if (!view || view->getParent())
        return false;
    Shift(parent, *view, flags).slide(distanceOf(*view, gap, flags));
    return parent.addSubView(std::move(view));
}

Ref<UView> removeShifting(UView& parent, UView* view, int32_t gap, uint32_t flags) {
    Ref<UView> removed = parent.removeSubView(view);
    if (removed)
        Shift(parent, *removed, flags).slide(-distanceOf(*removed, gap, flags));
    return removed;
}

} // namespace qorl
