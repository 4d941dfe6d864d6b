#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qorl::platform {

/// A descriptor that a `PollSource` waits for. Bits of `wanted` and `got`: see `Ready`.
struct PollEntry {
    enum Ready : uint16_t { readable = 1, writable = 2, failed = 4 };

    intptr_t descriptor = -1;
    uint16_t wanted = readable;
    uint16_t got = 0;
};

/// Another event loop's input that is waited for beside the desktop's own, such as GLib's main context or a
/// socket. Not owned by the desktop; must leave before it goes. Called on the user-interface thread only.
class PollSource {
public:
    /// Appends what to wait for. Returns the longest wait in milliseconds, -1 for no limit, 0 when work is
    /// ready.
    virtual int64_t prepare(std::vector<PollEntry>& entries) = 0;

    /// Looks at its own entries, in the order in which `prepare` gave them. True when `dispatch` has work to
    /// do.
    virtual bool check(const PollEntry* entries, size_t count) = 0;

    /// Does one piece of work.
    virtual void dispatch() = 0;

protected:
    ~PollSource() = default;
};

} // namespace qorl::platform
