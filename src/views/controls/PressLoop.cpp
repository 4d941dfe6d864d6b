#include "views/controls/PressLoop.h"

#include "foundation/messages/EventLoop.h"
#include "platform/Platform.h"
#include "views/UView.h"
#include "windows/UWindow.h"

namespace qorl {

PressLoop::PressLoop(UView& view, int64_t wakeEvery) : view_(view) {
    auto* desktop = platform::desktop();
    if (!desktop)
        return;
    start_ = desktop->getTicks();
    buttons_ = desktop->eventMouseButtons();
    if (wakeEvery > 0)
        timer_ = desktop->startTimer(wakeEvery, *this);
    readMouse();
}

PressLoop::~PressLoop() {
    if (auto* desktop = platform::desktop())
        desktop->stopTimer(timer_);
}

void PressLoop::readMouse() {
    CmPoint point;
    if (const UWindow* window = view_.getWindow(); window && window->getMouseLocation(point))
        point_ = view_.windowToClient(point);
}

bool PressLoop::runOneRound() {
    EventLoop* loop = EventLoop::current();
    return loop && loop->step() != EventLoop::Step::ended;
}

bool PressLoop::next() {
    auto* desktop = platform::desktop();
    if (!desktop || interrupted_)
        return false;
    if (began_ && !runOneRound()) {
        desktop->releaseCapture();
        interrupted_ = true;
        return false;
    }
    began_ = true;
    if (!view_.isAttached()) {
        interrupted_ = true;
        return false;
    }
    readMouse();
    if ((desktop->eventMouseButtons() & buttons_) == 0)
        return false;
    interrupted_ = !desktop->isCapturing();
    return !interrupted_;
}

bool PressLoop::isInside() const {
    return view_.getClientBounds().contains(point_);
}

int64_t PressLoop::elapsed() const {
    return platform::desktop()->getTicks() - start_;
}

} // namespace qorl
