#pragma once

#include "platform/Threads.h"

#include <atomic>
#include <cstdint>
#include <thread>

namespace qorl {

/// A re-entrant lock. The thread that holds it may lock it again and unlocks as often as it locked.
///
/// Hold it through a `FGuard`. Locks have no fixed order; never call out of a class with its lock held unless
/// the operation says so. A lock that nobody else wants costs one exchange to take and one to give back
/// (U. Drepper, Futexes Are Tricky, 2011, the mutex of section 6), and next to nothing in a process of one
/// thread. A lock may be taken before the first thread is started and given back behind that: the thread
/// finds it held, and each step asks anew whether there is one.
class FLock {
public:
    /// The name tells a reader what the lock is for; it isn't stored.
    explicit FLock(const char* = "FLock") {}
    FLock(const FLock&) = delete;
    FLock& operator=(const FLock&) = delete;
    virtual ~FLock() = default;

    virtual void lock() {
        const std::thread::id self = std::this_thread::get_id();
        if (owner_.load(std::memory_order_relaxed) == self)
            ++depth_;
        else
            enter(self);
    }
    virtual void unlock() {
        if (depth_ > 0) {
            --depth_;
            return;
        }
        owner_.store({}, std::memory_order_relaxed);
        if (platform::isSingleThreaded())
            state_.store(open, std::memory_order_relaxed);
        else if (state_.exchange(open, std::memory_order_release) == awaited)
            state_.notify_one();
    }
    /// True when this thread holds the lock now.
    virtual bool tryLock();

private:
    enum State : int32_t {
        open,
        held,
        awaited ///< Held, and somebody may be waiting.
    };

    void enter(std::thread::id self) {
        int32_t expected = open;
        if (platform::isSingleThreaded())
            state_.store(held, std::memory_order_relaxed);
        else if (!state_.compare_exchange_strong(expected, held, std::memory_order_acquire,
                                                 std::memory_order_relaxed))
            wait();
        owner_.store(self, std::memory_order_relaxed);
    }
    void wait();

    std::atomic<int32_t> state_{open};
    uint32_t depth_ = 0; ///< How often the owner locked again.
    /// Only a thread itself makes this its own id, so that none finds that by mistake.
    std::atomic<std::thread::id> owner_{};
};

/// Holds a lock while it stands.
class [[nodiscard]] FGuard {
public:
    explicit FGuard(FLock& lock) : lock_(lock) { lock_.lock(); }
    ~FGuard() { lock_.unlock(); }
    FGuard(const FGuard&) = delete;
    FGuard& operator=(const FGuard&) = delete;

private:
    FLock& lock_;
};

/// The library's one global lock: creation of singletons. Null after the singletons
/// are gone.
FLock* globalLock();

} // namespace qorl
