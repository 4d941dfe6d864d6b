#include "platform/Poller.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace qorl::platform {

namespace {

/// How long a wait is that nobody can end.
constexpr int64_t blindWait = 100;

short toPollEvents(uint16_t wanted) {
    return static_cast<short>((wanted & PollEntry::readable ? POLLIN : 0) |
                              (wanted & PollEntry::writable ? POLLOUT : 0));
}

uint16_t fromPollEvents(short events) {
    return static_cast<uint16_t>((events & POLLIN ? PollEntry::readable : 0) |
                                 (events & POLLOUT ? PollEntry::writable : 0) |
                                 (events & (POLLERR | POLLHUP | POLLNVAL) ? PollEntry::failed : 0));
}

} // namespace

Poller::Poller() : descriptor_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

Poller::~Poller() {
    if (descriptor_ >= 0)
        close(descriptor_);
}

void Poller::wakeUp() {
    if (descriptor_ >= 0)
        eventfd_write(descriptor_, 1);
    else
        isWoken_ = true;
}

bool Poller::takeWakeUp() {
    if (descriptor_ < 0)
        return isWoken_.exchange(false);
    eventfd_t count = 0;
    return eventfd_read(descriptor_, &count) == 0;
}

bool Poller::wait(std::vector<PollEntry>& entries, int64_t milliseconds) {
    std::vector<pollfd> descriptors;
    descriptors.reserve(entries.size() + 1);
    for (const PollEntry& entry : entries)
        descriptors.push_back({static_cast<int>(entry.descriptor), toPollEvents(entry.wanted), 0});
    descriptors.push_back({descriptor_, POLLIN, 0});

    if (descriptor_ < 0 && (milliseconds < 0 || milliseconds > blindWait || isWoken_))
        milliseconds = isWoken_ ? 0 : blindWait;
    constexpr int64_t longest = std::numeric_limits<int>::max();
    const int timeout = milliseconds < 0 ? -1 : static_cast<int>(std::min(milliseconds, longest));
    // A signal ends the wait early; callers look at the clock anyway.
    if (poll(descriptors.data(), descriptors.size(), timeout) < 0)
        return false;
    bool isReady = false;
    for (size_t i = 0; i < entries.size(); ++i) {
        entries[i].got = fromPollEvents(descriptors[i].revents);
        isReady |= entries[i].got != 0;
    }
    return isReady;
}

} // namespace qorl::platform
