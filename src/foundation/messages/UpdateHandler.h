#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/FObject.h"
#include "foundation/threads/FLock.h"

#include <deque>
#include <memory>
#include <unordered_map>
#include <vector>

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

enum class UpdateDone { call, suppress };

/// The one table of who depends on whom, and the queue of changes that are told later.
///
/// The table keeps no references: whoever adds a dependent removes it before either object goes. Objects are
/// known by their root interface, so it doesn't matter through which face one comes in.
///
/// Threading: any thread; dependents hear a change on the thread that triggers it. The lock is never held
/// while a dependent is called.
class UpdateHandler : public FObject, public FUpdateRegistry, public FUpdateQueue {
    QORL_CLASS(UpdateHandler, FObject)
    QORL_FACES(UpdateHandler, FObject, FUpdateRegistry, FUpdateQueue)

public:
    /// Past this number of dependents a notification allocates.
    static constexpr uint32_t stackSnapshot = 1024;
    /// Dependents past this number are not told.
    static constexpr uint32_t largestSnapshot = 10240;

    UpdateHandler();
    UpdateHandler(const UpdateHandler&) = delete;
    UpdateHandler& operator=(const UpdateHandler&) = delete;
    ~UpdateHandler() override;

    /// The one handler, made on first use.
    static UpdateHandler* instance();

    // The signatures of `FObject` and of the faces share names, not slots.
    using FObject::addDependent;
    using FObject::removeDependent;

    /// The same dependent may stand twice and hears a change twice then. 1 when either is null.
    int32_t addDependent(FInterface* object, FDependent* dependent) override;
    /// A null `dependent` removes all of `object`; a null `object` removes `dependent` everywhere. A running
    /// notification skips what was removed.
    int32_t removeDependent(FInterface* object, FDependent* dependent) override;
    /// 1 when there was nobody to tell.
    int32_t triggerUpdates(FInterface* object, int32_t message) override {
        return triggerUpdates(object, message, UpdateDone::call);
    }
    int32_t triggerUpdates(FInterface* object, int32_t message, UpdateDone done);
    /// Queues the pair once. Without dependents `updateDone` is called at once instead.
    int32_t deferUpdates(FInterface* object, int32_t message) override;

    int32_t cancelUpdates(FInterface* object) override;
    /// Delivers in the order of arrival. The change of an object whose notification is running waits for a
    /// later pass.
    int32_t triggerDeferredUpdates(FInterface* object) override;

    /// Whether a pass would deliver anything now.
    bool hasDeliverable();

private:
    static constexpr size_t mapCount = 256;

    struct AddressHash {
        size_t operator()(const FInterface* address) const noexcept;
    };
    struct Links {
        std::vector<FDependent*> dependents;
        std::vector<int32_t> queued; ///< Messages of this object in the deferred queue.
    };
    using LinkMap = std::unordered_map<FInterface*, Links, AddressHash>;

    /// A delivery of deferred changes under way, which holds back the objects that are being notified.
    struct Pass {};
    struct Deferred {
        FInterface* object;
        int32_t message;
        const Pass* heldBy;
    };
    /// A notification under way.
    struct Notification {
        FInterface* object;
        FDependent** snapshot;
        uint32_t length;
        Notification* outer;
    };

    LinkMap& mapOf(const FInterface* object);
    Links* find(FInterface* object);
    void dropIfUnused(FInterface* object);
    void blankRunning(const FInterface* object, const FDependent* dependent);
    void removeFrom(FInterface* object, FDependent* dependent);
    void removeEverywhere(FDependent* dependent);
    void cancelQueued(FInterface* object);
    bool isNotified(const FInterface* object) const;
    bool takeDeferred(const FInterface* object, const Pass& pass, Deferred& taken);
    void giveBack(const Pass& pass);
    void enter(Notification& record, FDependent** local, std::unique_ptr<FDependent*[]>& heap);
    void leave(const Notification& record);

    FLock lock_{"FLock"};
    LinkMap maps_[mapCount];
    std::deque<Deferred> deferred_;
    Notification* running_ = nullptr; ///< The update stack, innermost first.
};

} // namespace qorl
