#include "views/ClickTracker.h"

#include <cstdlib>

namespace qorl {

namespace {

bool isNear(CmPoint a, CmPoint b) {
    return std::abs(a.x - b.x) <= ClickTracker::slop && std::abs(a.y - b.y) <= ClickTracker::slop;
}

} // namespace

void ClickTracker::press(CmPoint point, uint32_t buttons, int64_t time) {
    doubleClick_ =
        mayDouble_ && buttons == buttons_ && time - time_ <= doubleClickTime && isNear(point, point_);
    mayDouble_ = !doubleClick_;
    pressed_ = true;
    point_ = point;
    buttons_ = buttons;
    time_ = time;
}

bool ClickTracker::release(CmPoint point) {
    const bool isClick = pressed_ && isNear(point, point_);
    pressed_ = false;
    return isClick;
}

} // namespace qorl
