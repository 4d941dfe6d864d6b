#pragma once

#include <mutex>

namespace qorl {

/// A re-entrant lock. The thread that holds it may lock it again and unlocks as often as it locked.
///
/// Hold it through a `FGuard`. Locks have no fixed order; never call out of a class with its lock held unless
/// the operation says so.
class FLock {
public:
    /// The name tells a reader what the lock is for; it isn't stored.
    explicit FLock(const char* name = "FLock");
    FLock(const FLock&) = delete;
    FLock& operator=(const FLock&) = delete;
    virtual ~FLock() = default;

    virtual void lock();
    virtual void unlock();
    /// True when this thread holds the lock now.
    virtual bool tryLock();

private:
    std::recursive_mutex mutex_;
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
