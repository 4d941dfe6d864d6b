#include "foundation/messages/FMessenger.h"

#include "foundation/Cast.h"
#include "foundation/messages/EventLoop.h"
#include "foundation/messages/FMessage.h"

#include <qorl/IPlugMessageTarget.h>

#include <utility>

namespace qorl {

namespace {

/// For the life of the library.
FMessenger theMessenger;
constinit std::atomic<FMessenger*> connected{&theMessenger};

bool isNamed(const FMessage& message, const FMessage& like) {
    return message.getName().string() == like.getName().string();
}

/// Removes the entries of `target`, and with `like` only those of that message name.
void removeEntries(CmLinkedList& list, const FInterface* target, const FMessage* like) {
    CmLinkedListIterator iterator(list);
    while (!iterator.done()) {
        const auto* entry = static_cast<FPostedMessage*>(iterator.current());
        if (entry->target() == target && (!like || isNamed(*entry->message(), *like)))
            list.removeAtIterator(&iterator);
        else
            iterator.next();
    }
}

bool isQueued(const CmLinkedList& list, const FInterface* target, const FMessage& like) {
    for (CmLinkedListIterator iterator(list); !iterator.done(); iterator.next()) {
        const auto* entry = static_cast<FPostedMessage*>(iterator.current());
        if (entry->target() == target && isNamed(*entry->message(), like))
            return true;
    }
    return false;
}

/// One target may come in through several faces; it is known by its root.
FInterface* rootOf(FInterface* target) {
    Ref<FInterface> root;
    if (target)
        target->queryInterface(FInterface::iid, root.out());
    return root ? root.get() : target;
}

} // namespace

FPostedMessage::FPostedMessage(FInterface* target, Ref<FMessage> message, uint32_t delay)
    : delay(delay), message_(std::move(message)), target_(target) {}

FPostedMessage::~FPostedMessage() = default;

FMessenger::~FMessenger() {
    FMessenger* self = this;
    connected.compare_exchange_strong(self, nullptr);
}

FMessenger* FMessenger::instance() {
    return connected.load(std::memory_order_acquire);
}

void FMessenger::connect() {
    connected.store(&theMessenger, std::memory_order_release);
}

void FMessenger::disconnect() {
    connected.store(nullptr, std::memory_order_release);
    const FGuard guard(theMessenger.queueLock_);
    theMessenger.queue_.removeAll();
}

void FMessenger::postForeign(FInterface* target, Ref<FMessage> message, Duplicates duplicates,
                             uint32_t delay) {
    FInterface* root = rootOf(target);
    if (!root || !message)
        return;
    {
        const FGuard guard(queueLock_);
        if (duplicates == Duplicates::drop && isQueued(queue_, root, *message))
            return;
        queue_.add(new FPostedMessage(root, std::move(message), delay));
    }
    EventLoop::wake();
}

void FMessenger::post(CmObject* target, Ref<FMessage> message, Duplicates duplicates, uint32_t delay) {
    postForeign(target, std::move(message), duplicates, delay);
}

void FMessenger::post(CmObject* target, const char* name, Duplicates duplicates) {
    postForeign(target, make<FMessage>(name), duplicates);
}

bool FMessenger::post(FInterface* target, FInterface* message) {
    auto* own = cast<FMessage>(message);
    if (!own)
        return false;
    postForeign(target, Ref<FMessage>::adopt(own));
    return true;
}

void FMessenger::removeQueued(const FInterface* root, const FMessage* like) {
    const FGuard deliveryGuard(deliveryLock_);
    const FGuard queueGuard(queueLock_);
    removeEntries(queue_, root, like);
    removeEntries(deliveryList_, root, like);
}

void FMessenger::cancel(CmObject* target, const FMessage* message) {
    removeQueued(rootOf(target), message);
}

void FMessenger::cancel(FInterface* target, FInterface* message) {
    removeQueued(rootOf(target), cast<FMessage>(message));
}

bool FMessenger::hasPending() {
    const FGuard guard(queueLock_);
    return !paused_ && !queue_.isEmpty();
}

bool FMessenger::setPaused(bool flag) {
    return paused_.exchange(flag);
}

void FMessenger::collectDue() {
    const FGuard guard(queueLock_);
    CmLinkedList later(Ownership::adopt);
    while (CmObject* object = queue_.takeFirst()) {
        auto* entry = static_cast<FPostedMessage*>(object);
        if (entry->delay == 0) {
            deliveryList_.add(entry);
            continue;
        }
        --entry->delay;
        later.add(entry);
    }
    queue_.splice(later);
}

void FMessenger::deliverPending() {
    if (!hasPending())
        return;
    const FGuard guard(deliveryLock_);
    collectDue();
    while (CmObject* object = deliveryList_.takeFirst()) {
        const Ref<CmObject> entry = Ref<CmObject>::adopt(object);
        deliver(*static_cast<FPostedMessage*>(object));
    }
}

void FMessenger::deliver(const FPostedMessage& entry) {
    Ref<IPlugMessageTarget> foreign;
    if (entry.target()->queryInterface(IPlugMessageTarget::iid, foreign.out()) == Result::ok)
        foreign->receiveMessage(static_cast<IMessageAttributes*>(entry.message()));
    else if (CmObject* target = castToCmObject(entry.target()))
        target->handleMessage(entry.message());
}

} // namespace qorl
