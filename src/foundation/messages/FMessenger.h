#pragma once

#include "foundation/containers/CmLinkedList.h"
#include "foundation/containers/dictionaries/CmBTreeDictionary.h"
#include "foundation/messages/FMessage.h"
#include "foundation/threads/FLock.h"

#include <atomic>
#include <memory>
#include <vector>

namespace qorl {

class RootIdentity;

/// The messenger as modules see it.
class IMessenger : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{C3BB1A7E-4A00-42AB-9514-3F8E6042499D}");

    /// Takes over one reference on `message`. False, and nothing taken, for a message that is not one of ours
    /// or when memory is short.
    virtual bool post(FInterface* target, FInterface* message) = 0;
    /// Takes back all messages to `target` with the name of `message`, or all for null.
    virtual void cancel(FInterface* target, FInterface* message) = 0;
    virtual void cancelAll(FInterface* target) = 0;

protected:
    ~IMessenger() = default;
};

/// Takes messages from any thread and delivers them later on the GUI thread, in the order of posting.
///
/// Targets are not counted: a target takes its messages back with `cancel(this, nullptr)` in its destructor.
/// Messages that are posted during a delivery pass wait for the next one. A target is held while it is
/// called. What a target throws comes out of the pass; the messages behind it are the first of the next one.
///
/// Threading: any thread, but for `deliverPending`. Locks are taken in the order delivery, names, queue,
/// since a target may use all of this while it is called; a pass holds the delivery lock, so `cancel` of
/// another thread waits for its end. No message is released under the queue's or the names' lock: what it
/// holds may take back messages of its own.
class FMessenger : public CmObject, public IMessenger {
    QORL_CLASS(FMessenger, CmObject)
    QORL_FACES(FMessenger, CmObject, IMessenger)

public:
    enum class Duplicates { allow, drop };
    enum class NameObserver { skip, tell };

    FMessenger() = default;
    /// Releases what is queued without delivering it.
    ~FMessenger() override;

    /// The messenger of the library; null between the teardown of the application and its next start.
    static FMessenger* instance();
    /// Called by the application's start. What other threads posted behind the teardown is dropped.
    static void connect();
    /// Called by its teardown: what is queued, or left of a pass under way, is released without being
    /// delivered.
    static void disconnect();

    /// With `drop`, nothing happens when a message of this name is queued for `target` already. `delay`
    /// counts delivery passes: 2 is delivered in the third. False when there is no target or message, or
    /// memory is short.
    bool post(CmObject* target, Ref<FMessage> message, Duplicates duplicates = Duplicates::allow,
              uint32_t delay = 0);
    /// The same for a message that carries nothing but its name.
    bool post(CmObject* target, const char* name, Duplicates duplicates = Duplicates::allow,
              uint32_t delay = 0);
    /// For a target of another module.
    bool postForeign(FInterface* target, Ref<FMessage> message, Duplicates duplicates = Duplicates::allow,
                     uint32_t delay = 0);
    bool post(FInterface* target, FInterface* message) override;

    void cancel(CmObject* target, const FMessage* message);
    void cancel(FInterface* target, FInterface* message) override;
    void cancelAll(CmObject* target) { cancel(target, static_cast<const FMessage*>(nullptr)); }
    void cancelAll(FInterface* target) override { cancel(target, static_cast<FInterface*>(nullptr)); }

    /// `target` hears messages to `name` from now on. False, and nothing done, when another one does already,
    /// without a target, or when memory is short.
    bool registerName(const ConstString& name, CmObject* target);
    /// False when nobody has that name.
    bool unregisterName(const ConstString& name);
    /// Hears, by `handleMessage`, of the messages sent by name that are sent so, before their targets do. Not
    /// counted; null takes it away. Names are looked up under their lock, but observer and target are called
    /// outside of it, as locks would be taken in the wrong order otherwise: when the name is given up in
    /// between, the observer has heard of a message that then has no target.
    void setNameObserver(CmObject* observer);
    /// Hands the message over at once, on this thread. The target's answer; 0 for an unknown name.
    int32_t sendByName(const ConstString& name, FMessage* message,
                       NameObserver observer = NameObserver::skip);
    /// The same for later. False, and the message released, for an unknown name or when memory is short.
    bool postByName(const ConstString& name, Ref<FMessage> message,
                    NameObserver observer = NameObserver::skip);

    /// A number from 1 up that was not in use before; 0 when memory is short.
    int32_t createChannel();
    /// Nothing for a number that is no channel.
    void releaseChannel(int32_t channel);
    /// From now on `target` hears what is posted to the channel, once however often it subscribes. False for
    /// an unknown channel, without a target, or when memory is short.
    bool subscribe(int32_t channel, CmObject* target);
    void unsubscribe(int32_t channel, CmObject* target);
    /// Posts a clone of the message to each subscriber, in the order in which they subscribed, and releases
    /// the message. False for an unknown channel, and when memory was short for one of them.
    bool postToChannel(int32_t channel, Ref<FMessage> message);

    /// One delivery pass. GUI thread.
    void deliverPending();
    /// Whether a pass would find anything.
    bool hasPending() const;
    /// The old state. While paused nothing is delivered and the queue grows.
    bool setPaused(bool flag);

private:
    bool isQueued(const FInterface* target, const FMessage& like);
    class DeliveryScope;

    void collectDue();
    void requeueLeft();
    bool postTo(const RootIdentity& target, Ref<FMessage>& message, Duplicates duplicates, uint32_t delay);
    void dropQueued();
    void removeQueued(const RootIdentity& target, const FMessage* like);
    void queueChanged();
    CmObject* findNamed(const CmObject& name) const;
    bool observe(const CmObject& name, FMessage* message);
    std::vector<CmObject*>* findChannel(int32_t channel) const;

    FLock queueLock_{"FLock"};
    CmLinkedList queue_{Ownership::adopt};
    std::atomic<bool> isQueueEmpty_{true}; ///< Written under `queueLock_`.
    FLock deliveryLock_{"FLock"};
    CmLinkedList deliveryList_{Ownership::adopt};
    std::atomic<bool> paused_{false};
    FLock namesLock_{"FLock"}; ///< Guards what follows.
    CmBTreeDictionary names_{CmBTree::leastOrder, Ownership::adopt};
    CmObject* nameObserver_ = nullptr;
    std::vector<std::unique_ptr<std::vector<CmObject*>>> channels_; ///< By number less 1; null when released.
};

} // namespace qorl
