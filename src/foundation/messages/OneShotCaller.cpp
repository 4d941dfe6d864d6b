#include "foundation/messages/OneShotCaller.h"

#include "foundation/messages/EventLoop.h"
#include "foundation/messages/FMessage.h"
#include "foundation/threads/Ticks.h"

#include <utility>

namespace qorl {

OneShotCaller::OneShotCaller(std::function<void()> call) : call_(std::move(call)) {}

OneShotCaller::~OneShotCaller() {
    cancel();
}

bool OneShotCaller::start(uint32_t milliseconds) {
    EventLoop* loop = EventLoop::current();
    if (!loop)
        return false;
    due_ = getTicks() + milliseconds;
    // Also off and on again: it may be pending in a loop that ended.
    cancel();
    isPending_ = loop->addIdleClient(this);
    return isPending_;
}

void OneShotCaller::cancel() {
    EventLoop* loop = EventLoop::current();
    if (std::exchange(isPending_, false) && loop)
        loop->removeIdleClient(this);
}

int32_t OneShotCaller::handleMessage(FMessage* message) {
    if (!message->isNamed("Idle"))
        return notHandled;
    // The count wraps.
    if (!isPending_ || static_cast<int32_t>(getTicks() - due_) < 0)
        return handled;
    cancel();
    call_();
    return handled;
}

} // namespace qorl
