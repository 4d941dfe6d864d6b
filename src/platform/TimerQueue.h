#pragma once

#include "platform/DesktopServices.h"

#include <cstdint>
#include <vector>

namespace qorl::platform {

/// The periodic timers of a desktop, by the time at which they are due. Knows no clock of its own.
class TimerQueue {
public:
    static constexpr int64_t never = -1;

    TimerId start(int64_t now, int64_t period, TimerClient& client);
    void stop(TimerId timer);

    /// When the first timer is due, or `never`.
    int64_t getNextDue() const;
    bool isDue(int64_t now) const;

    /// Calls the client of the timer that has been due the longest; of two equal ones the older. False when
    /// none is. The timer's next time is set before the call, so that a loop within the call goes on getting
    /// it.
    bool dispatch(int64_t now);

    bool isEmpty() const { return timers_.empty(); }

private:
    struct Timer {
        TimerId id;
        int64_t period;
        int64_t due;
        TimerClient* client;
    };

    const Timer* findFirst() const;

    std::vector<Timer> timers_; ///< in the order of their ids
    /// Of all queues, so that a timer of a desktop that went doesn't end another one on the next.
    static inline TimerId lastId_ = noTimer;
};

} // namespace qorl::platform
