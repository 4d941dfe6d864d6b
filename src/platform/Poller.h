#pragma once

#include "platform/PollSource.h"

#include <cstdint>
#include <vector>

namespace qorl::platform {

/// Waits for descriptors of the system and for other threads. Threading: one waiting thread; `wakeUp` from
/// any.
class Poller {
public:
    Poller();
    ~Poller();
    Poller(const Poller&) = delete;
    Poller& operator=(const Poller&) = delete;

    /// Ends the wait that runs, or the next one.
    void wakeUp();

    /// Whether `wakeUp` was called since it was last asked.
    bool takeWakeUp();

    /// Waits until an entry is ready, for at most `milliseconds` of real time, without limit if negative;
    /// fills `got` of each. True when an entry is ready.
    bool wait(std::vector<PollEntry>& entries, int64_t milliseconds);

private:
    int descriptor_ = -1;
};

} // namespace qorl::platform
