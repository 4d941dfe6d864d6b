#pragma once

#include "platform/Files.h"

#include <chrono>
#include <optional>

namespace qorl {

/// Keeps other programs from reading and changing the store while it lives, by the lock of a file in the
/// user's settings folder. Without that folder there is nothing to keep them from. A lock inside of another
/// one does nothing. A program that hangs with the lock costs the others a wait of `longestWait`, and a
/// message. Threading: the user-interface thread.
class DefaultsLock {
public:
    enum class Patience : uint8_t {
        full,
        once ///< no wait while the one before was in vain, as for work of many small parts
    };

    explicit DefaultsLock(Patience patience = Patience::full);
    DefaultsLock(const DefaultsLock&) = delete;
    ~DefaultsLock();

    /// Another program may be changing the store.
    bool isBusy() const { return lock_ && lock_->state() == platform::FileLock::State::busy; }

    /// Much longer than anybody needs who works.
    static inline constinit std::chrono::milliseconds longestWait{5000};

private:
    std::optional<platform::FileLock> lock_;
};

} // namespace qorl
