#pragma once

#include <qorl/Geometry.h>
#include <qorl/Ref.h>

#include <cstdint>

namespace qorl {

class UView;

/// Along which axis subviews slide, and towards which side.
enum ShiftFlag : uint32_t { shiftVertical = 1, shiftFar = 2 };

/// Adds `view` to `parent` where its frame says, and slides what stands in its strip away by its extent and
/// `gap`: to the far edge with `shiftFar`, else to the near one. What touches a sliding subview slides along;
/// one that is attached to both edges of the axis stretches instead. False for null
/// and for a view that has a parent.
bool insertShifting(UView& parent, Ref<UView> view, int32_t gap, uint32_t flags);

/// Removes `view` and slides the others back into its place. Null when it is no subview of `parent`.
Ref<UView> removeShifting(UView& parent, UView* view, int32_t gap, uint32_t flags);

} // namespace qorl
