#include "foundation/messages/UTimer.h"

#include "foundation/messages/FMessage.h"
#include "platform/Platform.h"

#include <new>
#include <utility>

namespace qorl {

UTimer::UTimer(CmObject* target, int32_t period) : target_(target), period_(period) {}

UTimer::~UTimer() {
    stop();
}

bool UTimer::start(int32_t period) try {
    stop();
    if (period > 0)
        period_ = period;
    platform::DesktopServices* desktop = platform::desktop();
    if (!desktop)
        return false;
    timer_ = desktop->startTimer(period_ > 0 ? period_ : 1, *this);
    return isRunning();
} catch (const std::bad_alloc&) {
    return false;
}

void UTimer::stop() {
    const platform::TimerId timer = std::exchange(timer_, platform::noTimer);
    platform::DesktopServices* desktop = platform::desktop();
    if (timer != platform::noTimer && desktop)
        desktop->stopTimer(timer);
}

void UTimer::timerElapsed(platform::TimerId) {
    // Goes last, since this timer and the message may be in it.
    const Ref<CmObject> target = retain(target_);
    const Ref<UTimer> self = retain(this);
    const Ref<FMessage> message = FMessage::named("Timer");
    if (!message)
        return; // short of memory: the next tick may find some again
    try {
        message->setObject("Timer", this);
    } catch (const std::bad_alloc&) {
        return;
    }
    target->handleMessage(message.get());
}

} // namespace qorl
