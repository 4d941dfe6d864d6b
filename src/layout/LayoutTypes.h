#pragma once

#include <qorl/Geometry.h>

#include <limits>

namespace qorl::App::Layout {

/// What an item asks of the layout that places it. An item without limits may have any size from nothing up.
struct SizeLimits {
    static constexpr double unlimited = std::numeric_limits<double>::max();

    Geometry::Size size;
    Geometry::Size minSize;
    Geometry::Size maxSize{unlimited, unlimited};

    friend constexpr bool operator==(const SizeLimits&, const SizeLimits&) = default;
};

/// What the frame of an item keeps for itself on each side; the client rect is the frame without it. Negative
/// numbers let the client rect reach beyond the frame.
struct Insets {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;

    friend constexpr bool operator==(const Insets&, const Insets&) = default;
};

} // namespace qorl::App::Layout
