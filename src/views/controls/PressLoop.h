#pragma once

#include "platform/DesktopServices.h"

#include <qorl/Geometry.h>

#include <cstdint>

namespace qorl {

class UView;

/// The rounds of a gesture that holds the thread while a mouse button is down.
///
/// Each round runs the event loop once, so that paints, timers and other input go on. Lives on the stack of a
/// `mouseDown`; the view must be kept alive around it.
///
///     PressLoop press(*this);
///     while (press.next())
///         follow(press.point());
class PressLoop : private platform::TimerClient {
public:
    /// With `wakeEvery` milliseconds a round comes even without an event; 0 waits for events only.
    explicit PressLoop(UView& view, int64_t wakeEvery = 0);
    PressLoop(const PressLoop&) = delete;
    PressLoop& operator=(const PressLoop&) = delete;
    ~PressLoop();

    /// False when the buttons that were down at the start are up, the capture was lost, or the view was
    /// hidden or left its window. The first call comes back at once.
    bool next();
    /// Where the last event of the mouse had it, in client coordinates of the view; at the end that is the
    /// place of the release, even if the mouse has gone on since.
    CmPoint point() const { return point_; }
    bool isInside() const;
    /// Milliseconds of the user-interface clock since the press.
    int64_t elapsed() const;
    /// The gesture ended by something else than the release: it has no effect.
    bool wasInterrupted() const { return interrupted_; }

private:
    bool runOneRound();
    void readMouse();
    void timerElapsed(platform::TimerId) override {}

    UView& view_;
    CmPoint point_;
    int64_t start_ = 0;
    uint32_t buttons_ = 0;
    platform::TimerId timer_ = platform::noTimer;
    bool began_ = false;
    bool interrupted_ = false;
};

} // namespace qorl
