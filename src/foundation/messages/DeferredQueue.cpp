#include "foundation/messages/DeferredQueue.h"

#include <utility>

namespace qorl {

DeferredQueue::~DeferredQueue() {
    while (DeferredChange* change = first()) {
        change->unlink();
        delete change;
    }
    while (spares_)
        delete std::exchange(spares_, spares_->nextOfObject);
}

void DeferredQueue::holdBack(DeferredChange& change, DeferredLink& held) {
    change.isHeld = true;
    change.unlink();
    change.linkBefore(held);
}

void DeferredQueue::giveBack(DependentEntry& entry, DeferredChange& change) {
    takeOff(entry, change);
    hang(entry, change);
    change.isHeld = false;
    change.unlink();
    change.linkBefore(ring_);
}

} // namespace qorl
