#pragma once

#include "views/ViewCore.h"

#include <cstdint>
#include <span>

namespace qorl {

class UView;
class ViewFields;

/// A walk over the subviews of a view that stays right while subviews come and go. Lives on the stack.
///
///     SubViewIterator walk(view);
///     while (UView* subView = walk.next())
///         ...
class SubViewIterator {
public:
    using Walk = App::Layout::ItemIterator::Walk;

    explicit SubViewIterator(ViewFields& view, Walk walk = Walk::forward);
    /// Begins behind the subview at `index`, in the direction of `walk`.
    SubViewIterator(ViewFields& view, Walk walk, int32_t index);

    UView* next() {
        App::Layout::Item* item = items_.next();
        return item ? &ViewItem::viewOf(*item) : nullptr;
    }
    /// Index of the subview that `next` gave last.
    int32_t index() const { return items_.index(); }

private:
    App::Layout::ItemIterator items_;
};

/// The subviews that a resize goes through: all of a view, or a chosen few that must outlive the call.
class SubViewList {
public:
    static SubViewList allOf(ViewFields& view) { return SubViewList(&view, {}); }
    explicit SubViewList(std::span<UView* const> chosen) : SubViewList(nullptr, chosen) {}

    template <typename Visit>
    void forEach(Visit&& visit) const {
        if (!all_) {
            for (UView* view : chosen_)
                visit(*view);
            return;
        }
        SubViewIterator walk(*all_);
        while (UView* view = walk.next())
            visit(*view);
    }

private:
    SubViewList(ViewFields* all, std::span<UView* const> chosen) : all_(all), chosen_(chosen) {}

    ViewFields* all_;
    std::span<UView* const> chosen_;
};

} // namespace qorl
