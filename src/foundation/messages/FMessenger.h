#pragma once

#include "foundation/containers/CmLinkedList.h"
#include "foundation/threads/FLock.h"

#include <qorl/Ref.h>

#include <atomic>

namespace qorl {

class FMessage;

/// The messenger as modules see it.
class IMessenger : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{C3BB1A7E-4A00-42AB-9514-3F8E6042499D}");

    /// Takes over one reference on `message`. False, and nothing taken, for a message that is not one of
    /// ours.
    virtual bool post(FInterface* target, FInterface* message) = 0;
    /// Takes back all messages to `target` with the name of `message`, or all for null.
    virtual void cancel(FInterface* target, FInterface* message) = 0;
    virtual void cancelAll(FInterface* target) = 0;

protected:
    ~IMessenger() = default;
};

/// An entry of the messenger's queue.
class FPostedMessage : public CmObject {
    QORL_CLASS(FPostedMessage, CmObject)

public:
    FPostedMessage(FInterface* target, Ref<FMessage> message, uint32_t delay);
    ~FPostedMessage() override;

    FMessage* message() const { return message_.get(); }
    /// Not counted.
    FInterface* target() const { return target_; }
    /// Delivery passes to wait.
    uint32_t delay = 0;

private:
    Ref<FMessage> message_;
    FInterface* target_;
};

/// Takes messages from any thread and delivers them later on the GUI thread, in the order of posting.
///
/// Targets are not counted: a target takes its messages back with `cancel(this, nullptr)` in its destructor.
/// Messages that are posted during a delivery pass wait for the next one.
class FMessenger : public CmObject, public IMessenger {
    QORL_CLASS(FMessenger, CmObject)
    QORL_FACES(FMessenger, CmObject, IMessenger)

public:
    enum class Duplicates { allow, drop };

    FMessenger() = default;
    /// Releases what is queued without delivering it.
    ~FMessenger() override;

    /// The messenger of the library; null between the teardown of the application and its next start.
    static FMessenger* instance();
    /// Called by the application's start.
    static void connect();
    /// Called by its teardown: what is queued is released without being delivered.
    static void disconnect();

    /// With `drop`, nothing happens when a message of this name is queued for `target` already. `delay`
    /// counts delivery passes: 2 is delivered in the third.
    void post(CmObject* target, Ref<FMessage> message, Duplicates duplicates = Duplicates::allow,
              uint32_t delay = 0);
    /// The same for a message that carries nothing but its name.
    void post(CmObject* target, const char* name, Duplicates duplicates = Duplicates::allow);
    /// For a target of another module.
    void postForeign(FInterface* target, Ref<FMessage> message, Duplicates duplicates = Duplicates::allow,
                     uint32_t delay = 0);
    bool post(FInterface* target, FInterface* message) override;

    void cancel(CmObject* target, const FMessage* message);
    void cancel(FInterface* target, FInterface* message) override;
    void cancelAll(CmObject* target) { cancel(target, static_cast<const FMessage*>(nullptr)); }
    void cancelAll(FInterface* target) override { cancel(target, static_cast<FInterface*>(nullptr)); }

    /// One delivery pass. GUI thread.
    void deliverPending();
    /// Whether a pass would find anything.
    bool hasPending();
    /// The old state. While paused nothing is delivered and the queue grows.
    bool setPaused(bool flag);

private:
    static void deliver(const FPostedMessage& entry);
    void collectDue();
    void removeQueued(const FInterface* root, const FMessage* like);

    FLock queueLock_{"FLock"};
    CmLinkedList queue_{Ownership::adopt};
    FLock deliveryLock_{"FLock"};
    CmLinkedList deliveryList_{Ownership::adopt};
    std::atomic<bool> paused_{false};
};

} // namespace qorl
