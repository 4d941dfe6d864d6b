#include "views/FocusPolicy.h"

#include "foundation/Singleton.h"
#include "views/UView.h"
#include "windows/UDesktop.h"
#include "windows/UWindow.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace qorl {

namespace {

constinit Singleton<FocusPolicy> standardPolicy;

struct ArrowEdge {
    FocusDirection direction;
    int32_t edge;
};

/// The numbers by which `IFocusNavigation` knows the edges.
constexpr ArrowEdge arrowEdges[] = {{FocusDirection::left, 6},
                                    {FocusDirection::right, 2},
                                    {FocusDirection::up, 0},
                                    {FocusDirection::down, 4}};

/// How much a step across the direction counts beside one along it.
constexpr int64_t acrossWeight = 3;

bool isIn(std::span<UView* const> views, const UView* view) {
    return std::find(views.begin(), views.end(), view) != views.end();
}

void collectFocusable(UView& scope, std::vector<UView*>& found) {
    scope.forEachSubView([&](UView& view) {
        if (!view.isShown() || view.hasFlag(viewDisabled))
            return;
        if (view.isFocusable() && !view.getClientSize().isEmpty())
            found.push_back(&view);
        collectFocusable(view, found);
    });
}

CmRect windowRectOf(const UView& view) {
    return CmRect::ofSize(view.frameToWindow({}), view.getFrameSize());
}

struct Span {
    int32_t from;
    int32_t to;

    int32_t center() const { return from + (to - from) / 2; }
    int32_t gapTo(Span other) const { return std::max({0, other.from - to, from - other.to}); }
};

/// The extents of a rect along and across a direction, turned so that "along" always grows.
struct Turned {
    Span along;
    Span across;
};

Turned turn(const CmRect& rect, FocusDirection direction) {
    const Span x{rect.left, rect.right};
    const Span y{rect.top, rect.bottom};
    switch (direction) {
    case FocusDirection::left: return {{-x.to, -x.from}, y};
    case FocusDirection::up: return {{-y.to, -y.from}, x};
    case FocusDirection::down: return {y, x};
    default: return {x, y};
    }
}

UView* nearestThatWay(const std::vector<UView*>& views, UView* start, FocusDirection direction) {
    const Turned from = turn(windowRectOf(*start), direction);
    UView* best = nullptr;
    int64_t bestCost = 0;
    for (UView* view : views) {
        const Turned to = turn(windowRectOf(*view), direction);
        if (view == start || to.along.center() <= from.along.center())
            continue;
        // A view that only overlaps along the way but lies aside is no neighbour that way.
        const int32_t aside = from.across.gapTo(to.across);
        if (aside > 0 && to.along.from < from.along.to)
            continue;
        const int64_t cost = int64_t{from.along.gapTo(to.along)} + acrossWeight * aside +
                             std::abs(to.across.center() - from.across.center());
        if (!best || cost < bestCost) {
            best = view;
            bestCost = cost;
        }
    }
    return best ? best : start;
}

UView* nextInOrder(const std::vector<UView*>& views, UView* start, FocusDirection direction) {
    const auto count = static_cast<ptrdiff_t>(views.size());
    const bool forward = direction == FocusDirection::forward;
    const auto at = std::find(views.begin(), views.end(), start);
    if (at == views.end())
        return forward ? views.front() : views.back();
    const ptrdiff_t step = forward ? 1 : count - 1;
    return views[static_cast<size_t>((at - views.begin() + step) % count)];
}

/// A base view embedded in another one is no scope, or the tab key would never leave it.
bool isStandardScope(const UView& view) {
    return !view.getParent();
}

bool consumeAtEdge(UView* start, FocusDirection direction) {
    for (const ArrowEdge& entry : arrowEdges) {
        if (entry.direction != direction)
            continue;
        for (UView* view = start; view; view = view->getParent())
            if (IFocusNavigation* navigation = view->getFocusNavigation())
                if (navigation->navigate(entry.edge))
                    return true;
    }
    return false;
}

} // namespace

FocusDirection focusDirectionOf(const UKeyCode& key) {
    if (key.virtualKey == Key::tab) {
        if (key.modifiers == 0)
            return FocusDirection::forward;
        return key.modifiers == UKeyCode::shift ? FocusDirection::back : FocusDirection::none;
    }
    switch (key.virtualKey) {
    case Key::left: return FocusDirection::left;
    case Key::right: return FocusDirection::right;
    case Key::up: return FocusDirection::up;
    case Key::down: return FocusDirection::down;
    default: return FocusDirection::none;
    }
}

FocusPolicy* FocusPolicy::standard() {
    return standardPolicy.get();
}

UView* FocusPolicy::nextFocus(UView* scope, UView* start, FocusDirection direction,
                              std::span<UView* const> skipped) {
    std::vector<UView*> views;
    collectFocusable(*scope, views);
    std::erase_if(views, [&](UView* view) { return view != start && isIn(skipped, view); });
    if (views.empty())
        return nullptr;
    return isArrow(direction) ? nearestThatWay(views, start, direction)
                              : nextInOrder(views, start, direction);
}

FocusScope findFocusScope(UView* start) {
    for (UView* view = start; view; view = view->getParent()) {
        if (FocusPolicy* policy = view->getFocusPolicy())
            return {view, policy};
        if (isStandardScope(*view))
            return {view, FocusPolicy::standard()};
    }
    return {};
}

bool navigateFocus(UView* start, FocusDirection direction, std::span<UView* const> skipped) {
    UDesktop* desktop = UDesktop::instance();
    if (!start || !desktop || direction == FocusDirection::none)
        return false;
    const FocusScope scope = findFocusScope(start);
    const Ref<FocusPolicy> policy = retain(scope.policy);
    if (!policy)
        return false;
    UView* next = policy->nextFocus(scope.view, start, direction, skipped);
    if (!next)
        return false;
    if (next != start)
        return desktop->setFocus(next->getFocusView());
    consumeAtEdge(start, direction);
    return true;
}

bool canTakeFocus(UView* view) {
    return view->isFocusable() && view->isVisible() && view->isEnabled();
}

} // namespace qorl
