#pragma once

#include "platform/PollSource.h"

#include <atomic>
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

    /// Ends the wait that runs, or the next one; within a tenth of a second in a process that has no file
    /// descriptors left.
    void wakeUp();

    /// Whether `wakeUp` was called since it was last asked.
    bool takeWakeUp();

    /// Waits until an entry is ready, for at most `milliseconds` of real time, without limit if negative;
    /// fills `got` of each. True when an entry is ready.
    bool wait(std::vector<PollEntry>& entries, int64_t milliseconds);

private:
    int descriptor_ = -1;
    std::atomic<bool> isWoken_{false}; ///< Stands in for the descriptor where the system gave none.
};

} // namespace qorl::platform
