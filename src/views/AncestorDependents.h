#pragma once

#include "views/ViewFlags.h"

#include <functional>

namespace qorl {

class UView;

/// Which change of an ancestor a view follows, with the marks and the list by which the change finds its way
/// down.
///
/// A view that wants to hear of it is entered in a list of its parent; the parent, marked as a relay, in a
/// list of its own parent, and so on. So every view on the way knows the next ones only, and a tree without
/// such views pays for two flags.
struct AncestorKind {
    uint32_t wants;
    uint32_t relays;
    const char* attribute;
};
inline constexpr AncestorKind ancestorSize{viewWantsAncestorSized, viewRelaysAncestorSized,
                                           "AncestorSizeDependents"};
inline constexpr AncestorKind ancestorMove{viewWantsAncestorMoved, viewRelaysAncestorMoved,
                                           "AncestorMoveDependents"};

/// Enters `view` in the chain above it, which begins at `parent`, for each kind that it wants.
void enterAncestorDependents(UView& view, UView* parent);
void leaveAncestorDependents(UView& view, UView* parent);

/// Calls `visit` for each view in the list of `view`. Views may come and go meanwhile.
void forEachAncestorDependent(UView& view, const AncestorKind& kind,
                              const std::function<void(UView&)>& visit);

} // namespace qorl
