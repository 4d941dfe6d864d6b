#pragma once

#include <qorl/Geometry.h>

#include <cstdint>

namespace qorl {

/// Decides for one window which press and release form a click, and which press is the second of a double
/// click.
///
/// A press starts a timer of `doubleClickTime`; a second press of the same button within it and within `slop`
/// pixels is a double click. A third press begins anew, so that fast clicking alternates. A release within
/// `slop` pixels of its press is a click, however long the button was held.
class ClickTracker {
public:
    static constexpr int64_t doubleClickTime = 400;
    static constexpr int32_t slop = 4;

    /// `time` in milliseconds of the user-interface clock.
    void press(CmPoint point, uint32_t buttons, int64_t time);

    /// True when this release ends a click. The tracker then forgets the press.
    bool release(CmPoint point);

    /// Forgets a press that will never be released here (the capture was lost).
    void cancel() { pressed_ = false; }

    bool isDoubleClick() const { return doubleClick_; }
    /// The buttons of the latest press; the release no longer carries them.
    uint32_t buttons() const { return buttons_; }

private:
    CmPoint point_;
    uint32_t buttons_ = 0;
    int64_t time_ = 0;
    bool pressed_ = false;
    bool doubleClick_ = false;
    bool mayDouble_ = false;
};

} // namespace qorl
