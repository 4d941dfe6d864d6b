#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qorl {

/// Bits of `viewFlags`.
enum ViewFlag : uint32_t {
    viewVisible = 0x1,
    viewFocusable = 0x4,
    viewTakesRightClick = 0x8,
    viewHighlighted = 0x10,
    viewResizeSuspended = 0x20, ///< `resizeSubViews` returns at once.
    viewAlwaysSizeChanged =
        0x40, ///< Hears `sizeChanged` when the parent resized, even with its frame unchanged.
    viewDisabled = 0x80,
    viewAttachLeft = 0x100,
    viewAttachTop = 0x200,
    viewAttachRight = 0x400,
    viewAttachBottom = 0x800,
    viewAttachAll = 0xF00,
    viewPersistent = 0x1000,   ///< Takes part in the lists of subview states.
    viewNoDragScroll = 0x2000, ///< A drag at its edge does not scroll.
    viewMarked = 0x4000,
    viewResizeSkipsHidden = 0x8000,
    viewCapturePreference = 0x10000,
    viewWantsAncestorSized = 0x20000,
    viewRelaysAncestorSized = 0x40000,
    viewWantsAncestorMoved = 0x80000,
    viewRelaysAncestorMoved = 0x100000,
    viewAttached = 0x200000, ///< In a live window.
    viewStopsResizeRequests = 0x400000,
    viewFrameFrozen = 0x800000,    ///< `setFrame` has no effect.
    viewDirectPaint = 0x1000000,   ///< Draws everything of its client itself; registers with its window.
    viewNoRemoteFocus = 0x2000000, ///< A remote control passes it over.
};

/// Bits of `viewState`.
enum ViewStateBit : uint16_t {
    stateDrawingEnabled = 0x1,
    stateRollover = 0x2,
    stateRolloverInside = 0x4,
    stateRolloverChild = 0x8,
    stateRolloverSibling = 0x10,
    stateRolloverAny = 0x1E,
    stateFocused = 0x20,
    statePressed = 0x80,
    stateSelected = 0x100,
    stateDraggedOver = 0x200,
    stateOverlayDrawn = 0x400,
    stateVisualMask = 0xFBFE,
};

/// What the overlay state sink is told to have changed.
enum class StateKind : int32_t { rollover = 1, focused = 2, pressed = 3, selected = 4, draggedOver = 5 };

/// What a view tells its dependents.
enum ViewChange : int32_t { viewSized = 11, viewMoved = 12 };

/// "left|top" and "left top" as attach flags, and "all", which stands alone. An unknown word is left out and
/// makes the answer false; `flags` holds what the known words say.
bool parseAttach(std::string_view text, uint32_t& flags);

/// "all" for all four edges, else the words joined by "|" in the order left, top, right, bottom.
std::string attachToText(uint32_t flags);

} // namespace qorl
