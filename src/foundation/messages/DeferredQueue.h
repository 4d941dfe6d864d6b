#pragma once

#include "foundation/messages/DependentTable.h"

#include <utility>

namespace qorl {

class FObject;

/// A place in a ring of changes; also the head of one.
struct DeferredLink {
    DeferredLink* before = this;
    DeferredLink* behind = this;

    DeferredLink() = default;
    DeferredLink(const DeferredLink&) = delete;
    DeferredLink& operator=(const DeferredLink&) = delete;

    bool isAlone() const { return behind == this; }
    void unlink() {
        before->behind = behind;
        behind->before = before;
        before = behind = this;
    }
    /// Stands in the ring of `head`, as the last one.
    void linkBefore(DeferredLink& head) {
        before = head.before;
        behind = &head;
        before->behind = this;
        head.before = this;
    }
};

/// A change that is told later.
struct DeferredChange : DeferredLink {
    FInterface* object = nullptr;
    FObject* own = nullptr; ///< `object` as one of ours.
    int32_t message = 0;
    bool isHeld = false;
    DeferredChange* nextOfObject = nullptr;
};

/// The changes that wait, in the order of their arrival. Each also hangs on the entry of its object, so that
/// a second one of the same kind is recognised, and all of an object are found, without a walk over the rest.
///
/// Threading: guarded by its owner.
class DeferredQueue {
public:
    DeferredQueue() = default;
    DeferredQueue(const DeferredQueue&) = delete;
    DeferredQueue& operator=(const DeferredQueue&) = delete;
    ~DeferredQueue();

    static DeferredChange* find(const DependentEntry& entry, int32_t message) {
        DeferredChange* change = entry.deferred;
        while (change && change->message != message)
            change = change->nextOfObject;
        return change;
    }
    /// Sees to it that the next `add` needs no memory. Throws std::bad_alloc.
    void reserve();
    /// Needs a `reserve` before it.
    void add(DependentEntry& entry, FObject* own, int32_t message);
    /// Out of the queue, or of the changes that are held back, and off its entry.
    void remove(DependentEntry& entry, DeferredChange& change);

    /// The oldest; null when none waits.
    DeferredChange* first() { return changeAt(ring_.behind); }
    /// The one behind; null at the end.
    DeferredChange* next(DeferredChange& change) { return changeAt(change.behind); }

    /// Out of the queue, into the ring `held`: nobody else takes it from there, but its object still knows
    /// it.
    static void holdBack(DeferredChange& change, DeferredLink& held);
    /// Behind all others, also in the order of its object.
    void giveBack(DependentEntry& entry, DeferredChange& change);

private:
    static constexpr int32_t mostSpares = 64;

    DeferredChange* changeAt(DeferredLink* link) {
        return link == &ring_ ? nullptr : static_cast<DeferredChange*>(link);
    }
    static void hang(DependentEntry& entry, DeferredChange& change) {
        DeferredChange** last = &entry.deferred;
        while (*last)
            last = &(*last)->nextOfObject;
        *last = &change;
        change.nextOfObject = nullptr;
    }
    static void takeOff(DependentEntry& entry, DeferredChange& change) {
        DeferredChange** link = &entry.deferred;
        while (*link != &change)
            link = &(*link)->nextOfObject;
        *link = change.nextOfObject;
    }
    void keepSpare(DeferredChange* change) {
        change->nextOfObject = std::exchange(spares_, change);
        ++spareCount_;
    }

    DeferredLink ring_;
    DeferredChange* spares_ = nullptr; ///< A few that were told already, for the next ones.
    int32_t spareCount_ = 0;
};

// In the header, since a change that is deferred and told goes through each of these once.

inline void DeferredQueue::reserve() {
    if (!spares_)
        keepSpare(new DeferredChange);
}

inline void DeferredQueue::add(DependentEntry& entry, FObject* own, int32_t message) {
    DeferredChange* change = std::exchange(spares_, spares_->nextOfObject);
    --spareCount_;
    change->object = entry.object;
    change->own = own;
    change->message = message;
    change->isHeld = false;
    hang(entry, *change);
    change->linkBefore(ring_);
}

inline void DeferredQueue::remove(DependentEntry& entry, DeferredChange& change) {
    takeOff(entry, change);
    change.unlink();
    if (spareCount_ < mostSpares)
        keepSpare(&change);
    else
        delete &change;
}

} // namespace qorl
