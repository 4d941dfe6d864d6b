#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/FObject.h"
#include "foundation/messages/DeferredQueue.h"
#include "foundation/messages/DependentTable.h"
#include "foundation/messages/EventLoop.h"
#include "foundation/threads/FLock.h"

#include <qorl/Ref.h>

#include <atomic>
#include <cstddef>
#include <memory>

namespace qorl {

/// The table of dependents, as objects and modules see it. Results are 0, or 1 when nothing was done.
class FUpdateRegistry : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{F5246D56-8654-4D60-B026-AFB57B697B37}");

    virtual int32_t addDependent(FInterface* object, FDependent* dependent) = 0;
    virtual int32_t removeDependent(FInterface* object, FDependent* dependent) = 0;
    virtual int32_t triggerUpdates(FInterface* object, int32_t message) = 0;
    virtual int32_t deferUpdates(FInterface* object, int32_t message) = 0;

    /// The handler that `FObject` forwards to; null before the first one is made and after it went.
    static FUpdateRegistry* current();

protected:
    ~FUpdateRegistry() = default;
};

/// The queue of deferred changes.
class FUpdateQueue : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{030B780C-D6E6-418D-8CE0-0BC209C834D4}");

    virtual int32_t cancelUpdates(FInterface* object) = 0;
    /// Null delivers the changes of all objects.
    virtual int32_t triggerDeferredUpdates(FInterface* object) = 0;

protected:
    ~FUpdateQueue() = default;
};

class CmObject;
class FMessage;
class RootIdentity;
template <typename T>
class Singleton;

enum class UpdateDone { call, suppress };

/// The one table of who depends on whom, and the queue of changes that are told later.
///
/// The table keeps no references: whoever adds a dependent removes it before either object goes. Objects are
/// known by their root interface, so it doesn't matter through which face one comes in. An object that loses
/// its last reference while its dependents hear of it goes when all have heard. What a dependent throws ends
/// the notification and comes out of the operation that told it; changes that wait go on waiting.
///
/// Threading: any thread; dependents hear a change on the thread that triggers it, deferred ones on the GUI
/// thread. The lock is never held while a dependent is called.
class UpdateHandler : public FObject, public FUpdateRegistry, public FUpdateQueue {
    QORL_CLASS(UpdateHandler, FObject)
    QORL_FACES(UpdateHandler, FObject, FUpdateRegistry, FUpdateQueue)

public:
    /// Past this number of dependents a notification allocates.
    static constexpr uint32_t stackSnapshot = 1024;
    /// Dependents past this number are not told. When memory is short those past `stackSnapshot` are not.
    static constexpr uint32_t largestSnapshot = 10240;

    UpdateHandler(const UpdateHandler&) = delete;
    UpdateHandler& operator=(const UpdateHandler&) = delete;
    ~UpdateHandler() override;

    /// The one handler, made on first use.
    static UpdateHandler* instance();
    /// The handler that objects forward to; null before the first one is made and after it went.
    static UpdateHandler* current() { return current_.load(std::memory_order_acquire); }

    // The signatures of `FObject` and of the faces share names, not slots.
    using FObject::addDependent;
    using FObject::removeDependent;

    /// The same dependent may stand twice and hears a change twice then. 1, and nothing done, when either is
    /// null or memory is short.
    int32_t addDependent(FInterface* object, FDependent* dependent) override;
    /// This and the other operations that take an `FObject`: the same for an object known to be one of ours.
    int32_t addDependent(FObject* object, FDependent* dependent);
    /// A null `dependent` removes all of `object`; a null `object` removes `dependent` everywhere. A running
    /// notification skips what was removed. The last one to leave an object takes its deferred changes along.
    int32_t removeDependent(FInterface* object, FDependent* dependent) override;
    int32_t removeDependent(FObject* object, FDependent* dependent);
    int32_t removeDependent(std::nullptr_t, FDependent* dependent) { return removeEverywhere(dependent); }
    /// 1 when there was nobody to tell.
    int32_t triggerUpdates(FInterface* object, int32_t message) override;
    int32_t triggerUpdates(FObject* object, int32_t message, UpdateDone done = UpdateDone::call);
    /// Hands `message` to each dependent of `object` that takes messages, now and on this thread.
    void tellMessage(FObject* object, FMessage& message);
    /// Queues the pair once. Without dependents `updateDone` is called at once instead. When memory is short
    /// the GUI thread tells the change at once; on another one the result is 1, and the change isn't told.
    int32_t deferUpdates(FInterface* object, int32_t message) override;
    int32_t deferUpdates(FObject* object, int32_t message) {
        return object && isNewestDeferred(object, message) ? 0 : defer(object, message);
    }

    int32_t cancelUpdates(FInterface* object) override;
    /// Delivers in the order of arrival. The change of an object whose notification is running waits for a
    /// later pass. GUI thread.
    int32_t triggerDeferredUpdates(FInterface* object) override;

    /// Whether a pass would deliver anything now.
    bool hasDeliverable();

    /// The object whose change this thread is telling now, if that is `root`: dependents needn't ask it then
    /// what it is. Null for any other, and when it is no `CmObject`.
    static CmObject* findBeingTold(const FInterface* root) {
        return told_.root == root ? told_.object : nullptr;
    }

private:
    friend class Singleton<UpdateHandler>;
    friend class FObject;

    /// A notification under way: an entry of the update stack, until it leaves it or goes.
    struct Notification {
        explicit Notification(UpdateHandler& handler) : handler(handler) {}
        Notification(const Notification&) = delete;
        Notification& operator=(const Notification&) = delete;
        ~Notification();

        UpdateHandler& handler;
        FInterface* object = nullptr; ///< The root interface.
        FObject* own = nullptr;       ///< The object as one of ours; null for a foreign one.
        CmObject* known = nullptr;    ///< The object as a `CmObject`, when it was known to be one.
        FDependent** snapshot = local;
        uint32_t length = 0;
        bool isRunning = false;   ///< It stands on the update stack.
        bool isToHold = false;    ///< Its change was deferred, so that nobody holds it up to the end.
        bool holdsObject = false; ///< It has a reference on `own`, perhaps the one that was the last.
        Notification* outer = nullptr;
        std::unique_ptr<FDependent*[]> heap;
        FDependent* local[stackSnapshot];
    };

    /// The object whose change a thread is telling.
    struct Told {
        const FInterface* root = nullptr;
        CmObject* object = nullptr;
    };

    /// A delivery of deferred changes under way. What it held back waits again when it goes.
    struct Pass {
        Pass(UpdateHandler& handler, const FInterface* object) : handler(handler), object(object) {}
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        ~Pass() {
            if (isHolding)
                handler.giveBack(*this);
        }

        UpdateHandler& handler;
        const FInterface* object; ///< Null for all.
        DeferredLink held;        ///< Changes of objects that are being notified.
        bool isHolding = false;   ///< Something came to `held`, for the thread that doesn't have the lock.
    };

    UpdateHandler();

    /// Whether this very change was the last one that the GUI thread, which asks, has deferred, and waits
    /// still. Then it needn't be queued, and nobody can be delivering it at this moment.
    static bool isNewestDeferred(const FInterface* root, int32_t message) {
        // Only the GUI thread writes a new object and message, so that it reads both as it wrote them.
        return newestObject_.load(std::memory_order_acquire) == root &&
               newestMessage_.load(std::memory_order_relaxed) == message && EventLoop::isGuiThread();
    }
    int32_t defer(FObject* object, int32_t message);

    static bool keepNotified(FObject& object);
    bool handOver(FObject& object);

    int32_t add(const RootIdentity& object, FDependent* dependent);
    int32_t remove(const RootIdentity& object, FDependent* dependent);
    int32_t removeEverywhere(FDependent* dependent);
    void blankRunning(const FInterface* object, const FDependent* dependent);
    void removeFrom(DependentEntry& entry, FDependent* dependent);
    void cancelQueued(DependentEntry& entry);
    void takeOff(DependentEntry& entry, DeferredChange& change);
    void begin(Notification& record, const RootIdentity& object);
    int32_t trigger(const RootIdentity& object, int32_t message, UpdateDone done);
    int32_t defer(const RootIdentity& object, int32_t message);
    bool queue(const RootIdentity& object, int32_t message);
    bool isNotified(const FInterface* object) const;
    static void holdBack(Pass& pass, DeferredChange& change);
    DeferredChange* findDeliverable(Pass& pass);
    bool enterNext(Pass& pass, Notification& record, int32_t& message);
    void giveBack(Pass& pass);
    void enter(Notification& record, const DependentEntry& entry);
    void leave(Notification& record);
    int32_t tell(Notification& record, int32_t message, UpdateDone done);
    template <typename Call>
    static void callDependents(const Notification& record, Call call);

    FLock lock_{"FLock"};
    DependentTable table_;
    DeferredQueue deferred_;
    std::atomic<bool> isWaiting_{false}; ///< Something stands in `deferred_`; written under the lock.
    Notification* running_ = nullptr;    ///< The update stack, innermost first.

    static constinit std::atomic<UpdateHandler*> current_;
    static constinit thread_local Told told_;
    static constinit std::atomic<const FInterface*> newestObject_;
    static constinit std::atomic<int32_t> newestMessage_;
};

} // namespace qorl
