#include "platform/TimerQueue.h"

#include <algorithm>

namespace qorl::platform {

TimerId TimerQueue::start(int64_t now, int64_t period, TimerClient& client) {
    period = std::max<int64_t>(period, 1);
    timers_.push_back({++lastId_, period, now + period, &client});
    return lastId_;
}

void TimerQueue::stop(TimerId timer) {
    std::erase_if(timers_, [timer](const Timer& candidate) { return candidate.id == timer; });
}

const TimerQueue::Timer* TimerQueue::findFirst() const {
    const auto first = std::min_element(timers_.begin(), timers_.end(),
                                        [](const Timer& a, const Timer& b) { return a.due < b.due; });
    return first == timers_.end() ? nullptr : &*first;
}

int64_t TimerQueue::getNextDue() const {
    const Timer* first = findFirst();
    return first ? first->due : never;
}

bool TimerQueue::isDue(int64_t now) const {
    const Timer* first = findFirst();
    return first && first->due <= now;
}

bool TimerQueue::dispatch(int64_t now) {
    if (!isDue(now))
        return false;
    Timer& timer = timers_[static_cast<size_t>(findFirst() - timers_.data())];
    timer.due += timer.period;
    if (timer.due <= now)
        timer.due = now + timer.period;
    timer.client->timerElapsed(timer.id);
    return true;
}

} // namespace qorl::platform
