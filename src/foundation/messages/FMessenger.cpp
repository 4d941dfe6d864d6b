#include "foundation/messages/FMessenger.h"

#include "foundation/Cast.h"
#include "foundation/messages/EventLoop.h"
#include "foundation/messages/FPostedMessage.h"

#include <new>
#include <utility>

namespace qorl {

namespace {

/// For the life of the library.
FMessenger theMessenger;
constinit std::atomic<FMessenger*> connected{&theMessenger};

/// Moves the entries of `target`, and with `like` only those of that message name, into `removed`.
void takeOut(CmLinkedList& list, const FInterface* target, const FMessage* like, CmLinkedList& removed) {
    CmLinkedList kept(Ownership::adopt);
    for (int32_t left = list.count(); left > 0; --left) {
        const auto& entry = static_cast<const FPostedMessage&>(*CmLinkedListIterator(list).current());
        const bool isMeant = like ? entry.isLike(target, *like) : entry.isFor(target);
        list.moveFirst(isMeant ? removed : kept);
    }
    list.splice(kept);
}

} // namespace

FMessenger::~FMessenger() {
    FMessenger* self = this;
    connected.compare_exchange_strong(self, nullptr);
}

FMessenger* FMessenger::instance() {
    return connected.load(std::memory_order_acquire);
}

void FMessenger::connect() {
    if (instance())
        return;
    // A thread that got the pointer in time may have posted since, to a target that found none to cancel by.
    theMessenger.dropQueued();
    connected.store(&theMessenger, std::memory_order_release);
}

void FMessenger::disconnect() {
    connected.store(nullptr, std::memory_order_release);
    theMessenger.dropQueued();
}

void FMessenger::dropQueued() {
    CmLinkedList dropped(Ownership::adopt);
    const FGuard deliveryGuard(deliveryLock_);
    const FGuard queueGuard(queueLock_);
    dropped.splice(deliveryList_);
    dropped.splice(queue_);
    queueChanged();
}

// Posting

void FMessenger::queueChanged() {
    isQueueEmpty_.store(queue_.isEmpty(), std::memory_order_release);
}

bool FMessenger::isQueued(const FInterface* target, const FMessage& like) {
    for (CmLinkedListIterator iterator(queue_); !iterator.done(); iterator.next())
        if (static_cast<const FPostedMessage*>(iterator.current())->isLike(target, like))
            return true;
    return false;
}

/// Takes the message when it is queued. Else it stays with the caller, who may hold a lock under which it
/// must not go.
bool FMessenger::postTo(const RootIdentity& target, Ref<FMessage>& message, Duplicates duplicates,
                        uint32_t delay) {
    if (!target || !message)
        return false;
    auto entry = Ref<FPostedMessage>::adopt(new (std::nothrow) FPostedMessage(target, delay));
    if (!entry)
        return false;
    bool wasEmpty = false;
    {
        const FGuard guard(queueLock_);
        if (duplicates == Duplicates::drop && isQueued(target.get(), *message))
            return true;
        if (!queue_.add(entry.get()))
            return false;
        entry.detach()->carry(std::move(message));
        wasEmpty = isQueueEmpty_.load(std::memory_order_relaxed);
        isQueueEmpty_.store(false, std::memory_order_release);
    }
    // The loop doesn't sleep while it has something to deliver.
    if (wasEmpty)
        EventLoop::wake();
    return true;
}

bool FMessenger::postForeign(FInterface* target, Ref<FMessage> message, Duplicates duplicates,
                             uint32_t delay) {
    return postTo(RootIdentity(target), message, duplicates, delay);
}

bool FMessenger::post(CmObject* target, Ref<FMessage> message, Duplicates duplicates, uint32_t delay) {
    return postTo(RootIdentity(target), message, duplicates, delay);
}

bool FMessenger::post(CmObject* target, const char* name, Duplicates duplicates, uint32_t delay) {
    Ref<FMessage> message = FMessage::named(name);
    return postTo(RootIdentity(target), message, duplicates, delay);
}

bool FMessenger::post(FInterface* target, FInterface* message) {
    Ref<FMessage> own = Ref<FMessage>::adopt(cast<FMessage>(message));
    const bool isPosted = postTo(RootIdentity(target), own, Duplicates::allow, 0);
    // The reference of one that wasn't is still the caller's.
    static_cast<void>(own.detach());
    return isPosted;
}

void FMessenger::removeQueued(const RootIdentity& target, const FMessage* like) {
    if (!target)
        return;
    // Goes last: what a message holds may cancel messages of its own.
    CmLinkedList removed(Ownership::adopt);
    const FGuard deliveryGuard(deliveryLock_);
    const FGuard queueGuard(queueLock_);
    takeOut(queue_, target.get(), like, removed);
    takeOut(deliveryList_, target.get(), like, removed);
    queueChanged();
}

void FMessenger::cancel(CmObject* target, const FMessage* message) {
    removeQueued(RootIdentity(target), message);
}

void FMessenger::cancel(FInterface* target, FInterface* message) {
    const FMessage* own = cast<FMessage>(message);
    if (own || !message)
        removeQueued(RootIdentity(target), own);
}

// Delivery

bool FMessenger::hasPending() const {
    return !paused_ && !isQueueEmpty_.load(std::memory_order_acquire);
}

bool FMessenger::setPaused(bool flag) {
    const bool old = paused_.exchange(flag);
    if (old && !flag)
        EventLoop::wake();
    return old;
}

void FMessenger::collectDue() {
    const FGuard guard(queueLock_);
    CmLinkedList later(Ownership::adopt);
    while (!queue_.isEmpty()) {
        auto& entry = static_cast<FPostedMessage&>(*CmLinkedListIterator(queue_).current());
        const bool isDue = entry.delay == 0;
        if (!isDue)
            --entry.delay;
        queue_.moveFirst(isDue ? deliveryList_ : later);
    }
    queue_.splice(later);
    queueChanged();
}

/// In front of the queue, with what an exception left of the pass.
void FMessenger::requeueLeft() {
    if (deliveryList_.isEmpty())
        return;
    const FGuard guard(queueLock_);
    deliveryList_.splice(queue_);
    queue_.splice(deliveryList_);
    queueChanged();
}

/// A pass under way: has the delivery lock, and leaves nothing behind in the list.
class FMessenger::DeliveryScope {
public:
    explicit DeliveryScope(FMessenger& messenger) : messenger_(messenger), guard_(messenger.deliveryLock_) {}
    DeliveryScope(const DeliveryScope&) = delete;
    DeliveryScope& operator=(const DeliveryScope&) = delete;
    ~DeliveryScope() { messenger_.requeueLeft(); }

private:
    FMessenger& messenger_;
    FGuard guard_;
};

void FMessenger::deliverPending() {
    if (!hasPending())
        return;
    const DeliveryScope scope(*this);
    collectDue();
    while (CmObject* object = deliveryList_.takeFirst()) {
        const Ref<CmObject> entry = Ref<CmObject>::adopt(object);
        static_cast<FPostedMessage*>(object)->deliver();
    }
}

} // namespace qorl
