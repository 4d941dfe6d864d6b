#include "foundation/threads/FLock.h"

namespace qorl {

bool FLock::tryLock() {
    const std::thread::id self = std::this_thread::get_id();
    if (owner_.load(std::memory_order_relaxed) == self) {
        ++depth_;
        return true;
    }
    int32_t expected = open;
    if (!state_.compare_exchange_strong(expected, held, std::memory_order_acquire, std::memory_order_relaxed))
        return false;
    owner_.store(self, std::memory_order_relaxed);
    return true;
}

/// Whoever comes out of a wait takes the lock as one that is awaited: others may have waited beside it.
void FLock::wait() {
    while (state_.exchange(awaited, std::memory_order_acquire) != open)
        state_.wait(awaited, std::memory_order_relaxed);
}

} // namespace qorl
