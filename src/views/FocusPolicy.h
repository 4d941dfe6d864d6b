#pragma once

#include "commands/UKeyCode.h"
#include "foundation/CmObject.h"

#include <qorl/FInterface.h>

#include <cstdint>
#include <span>

namespace qorl {

class UView;

/// Where keyboard navigation goes. The numbers are those of the published key table.
enum class FocusDirection : int32_t {
    back = 0,
    forward = 1,
    left = 2,
    right = 3,
    up = 4,
    down = 5,
    none = 12
};

/// Tab goes forward, Shift+Tab back, arrows their way. Tab with any other modifier, and all other keys, are
/// none.
FocusDirection focusDirectionOf(const UKeyCode& key);
constexpr bool isArrow(FocusDirection direction) {
    return direction >= FocusDirection::left && direction <= FocusDirection::down;
}

/// Chooses which view the keyboard goes to next within one part of the tree.
///
/// The base class keeps the order of reading: forward and back follow the tree and wrap at the ends; arrows
/// go to the nearest view that lies that way, preferring views in line with the start. The root of a tree
/// uses it unless it was given another policy; a view below has one only when it was given one.
class FocusPolicy : public CmObject {
    QORL_CLASS(FocusPolicy, CmObject)

public:
    /// The view that follows `start` in `scope` when going `direction`, never one of `skipped`. `start`
    /// itself means the edge; null means that this policy has nothing to offer. The views are not counted.
    virtual UView* nextFocus(UView* scope, UView* start, FocusDirection direction,
                             std::span<UView* const> skipped);

    /// The policy of every scope that has none of its own. The library keeps the reference.
    static FocusPolicy* standard();
};

/// Consumes directions that run into the edge of a policy's scope.
class IFocusNavigation : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{2F7A9D14-58C3-4E60-B1A7-D93C4E0586FB}");

    /// `edge` is 6 left, 2 right, 0 up, 4 down. True when the direction was used.
    virtual bool navigate(int32_t edge) = 0;

protected:
    ~IFocusNavigation() = default;
};

/// Sees the keys of a focused view before its key commands are tried.
class IFocusDelegate : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{A90C3B7E-64D1-4F2A-8E52-C1F670BD9A35}");

    virtual bool handleKey(UView* view, const UKeyCode& key) = 0;

protected:
    ~IFocusDelegate() = default;
};

/// The first view from `start` upwards whose scope has a policy, together with that policy; both null when
/// there is none. Neither is counted.
struct FocusScope {
    UView* view = nullptr;
    FocusPolicy* policy = nullptr;
};
FocusScope findFocusScope(UView* start);

/// Moves the focus from `start` in `direction`. True when the key was navigation, also when it ended at an
/// edge.
bool navigateFocus(UView* start, FocusDirection direction, std::span<UView* const> skipped = {});

/// True for a view that the keyboard can go to now: focusable, visible, enabled.
bool canTakeFocus(UView* view);

} // namespace qorl
