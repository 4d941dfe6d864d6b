#pragma once

#include "platform/x11/X11Connection.h"

#include <utility>
#include <vector>

namespace qorl::platform {

/// How far a wheel turned, in notches, in the directions of `WheelEvent`.
struct WheelDistance {
    double x = 0;
    double y = 0;

    bool isZero() const { return x == 0 && y == 0; }
};

/// Reads smooth wheels of XInput 2: axes of pointer devices that count on and on.
///
/// The server also sends presses of the buttons 4 to 7 for such a wheel, marked as emulated; they are to be
/// dropped.
class X11Wheel {
public:
    struct Axis {
        uint16_t device;
        uint16_t number;
        bool isVertical;
        double increment; ///< one notch; negative for a wheel that is turned round
        double position = 0;
        bool isKnown = false; ///< whether `position` is
    };

    /// Those that the server has now; they change with the devices.
    static std::vector<Axis> readAxes(X11Connection& connection);
    void setAxes(std::vector<Axis> axes) { axes_ = std::move(axes); }

    /// Forgets where the axes stand: they went on while the mouse was over another program.
    void forgetPositions();

    /// `source` is the device that moved, `mask` and `values` the axes that the event carries.
    WheelDistance move(uint16_t source, const uint32_t* mask, size_t maskWords, const double* values);

private:
    Axis* find(uint16_t device, uint16_t number);

    std::vector<Axis> axes_;
};

/// The notches of a press of one of the buttons 4 to 7; zero for all others.
WheelDistance wheelOfButton(uint32_t button);

} // namespace qorl::platform
