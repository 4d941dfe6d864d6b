#include "foundation/messages/UpdateHandler.h"

#include "foundation/Cast.h"
#include "foundation/Held.h"
#include "foundation/Singleton.h"
#include "foundation/messages/EventLoop.h"
#include "foundation/messages/FPostedMessage.h"
#include "foundation/messages/RootIdentity.h"

#include <algorithm>
#include <new>
#include <utility>

namespace qorl {

namespace {

constinit Singleton<UpdateHandler> handlerSlot;
/// Dependents are called through this face, so it stands for them in the table.
FDependent* dependentFace(FDependent* dependent) {
    if (FObject* own = borrowObject(dependent))
        return own;
    Ref<FDependent> face;
    if (dependent)
        dependent->queryInterface(FDependent::iid, face.out());
    return face.get();
}

void finish(FObject* object, int32_t message) {
    if (object && message != FDependent::objectDestroyed)
        object->updateDone(message);
}

} // namespace

namespace detail {
constinit std::atomic<uint32_t> notificationsUnderWay{0};
} // namespace detail

constinit std::atomic<UpdateHandler*> UpdateHandler::current_{nullptr};
constinit thread_local UpdateHandler::Told UpdateHandler::told_;
constinit std::atomic<const FInterface*> UpdateHandler::newestObject_{nullptr};
constinit std::atomic<int32_t> UpdateHandler::newestMessage_{0};

FUpdateRegistry* FUpdateRegistry::current() {
    return UpdateHandler::current();
}

UpdateHandler* UpdateHandler::instance() {
    return handlerSlot.get();
}

UpdateHandler::UpdateHandler() {
    UpdateHandler* none = nullptr;
    current_.compare_exchange_strong(none, this);
}

UpdateHandler::~UpdateHandler() {
    UpdateHandler* self = this;
    current_.compare_exchange_strong(self, nullptr);
    newestObject_ = nullptr;
}

// Dependents

int32_t UpdateHandler::add(const RootIdentity& object, FDependent* dependent) {
    FDependent* face = dependentFace(dependent);
    if (!object || !face)
        return 1;
    const FGuard guard(lock_);
    DependentEntry* entry = nullptr;
    try {
        entry = &table_.obtain(object.get());
        entry->dependents.push_back(face);
        entry->asCmObject = cast<CmObject>(object.own());
        return 0;
    } catch (const std::bad_alloc&) {
        if (entry)
            table_.dropIfUnused(*entry);
        return 1;
    }
}

int32_t UpdateHandler::addDependent(FInterface* object, FDependent* dependent) {
    return add(RootIdentity(object), dependent);
}

int32_t UpdateHandler::addDependent(FObject* object, FDependent* dependent) {
    return add(RootIdentity(object), dependent);
}

int32_t UpdateHandler::remove(const RootIdentity& object, FDependent* dependent) {
    FDependent* face = dependentFace(dependent);
    // One that has no such face, as while it goes down, was never added; it doesn't stand for all of them.
    if (!object || (dependent && !face))
        return 0;
    const FGuard guard(lock_);
    if (face)
        blankRunning(object.get(), face);
    if (DependentEntry* entry = table_.find(object.get()))
        removeFrom(*entry, face);
    return 0;
}

int32_t UpdateHandler::removeEverywhere(FDependent* dependent) {
    FDependent* face = dependentFace(dependent);
    if (!face)
        return 0;
    const FGuard guard(lock_);
    blankRunning(nullptr, face);
    table_.forEach([this, face](DependentEntry& entry) {
        // Nobody has a reason to take an object out again that has no dependents: it may go at any time.
        if (std::erase(entry.dependents, face) > 0 && entry.dependents.empty())
            cancelQueued(entry);
    });
    return 0;
}

int32_t UpdateHandler::removeDependent(FInterface* object, FDependent* dependent) {
    return object ? remove(RootIdentity(object), dependent) : removeEverywhere(dependent);
}

int32_t UpdateHandler::removeDependent(FObject* object, FDependent* dependent) {
    return object ? remove(RootIdentity(object), dependent) : removeEverywhere(dependent);
}

void UpdateHandler::blankRunning(const FInterface* object, const FDependent* dependent) {
    for (Notification* record = running_; record; record = record->outer) {
        if (object && record->object != object)
            continue;
        for (uint32_t i = 0; i < record->length; ++i) {
            // Another thread may be walking this snapshot without the lock.
            std::atomic_ref<FDependent*> place(record->snapshot[i]);
            if (place.load(std::memory_order_relaxed) == dependent)
                place.store(nullptr, std::memory_order_relaxed);
        }
    }
}

void UpdateHandler::removeFrom(DependentEntry& entry, FDependent* dependent) {
    if (!dependent)
        entry.dependents.clear();
    else if (std::erase(entry.dependents, dependent) == 0)
        return;
    if (!entry.dependents.empty())
        return;
    cancelQueued(entry);
    table_.dropIfUnused(entry);
}

// Notifications

void UpdateHandler::enter(Notification& record, const DependentEntry& entry) {
    const std::vector<FDependent*>& dependents = entry.dependents;
    if (dependents.empty())
        return;
    uint32_t most = stackSnapshot;
    if (dependents.size() > stackSnapshot) {
        record.heap.reset(new (std::nothrow) FDependent*[largestSnapshot]);
        if (record.heap) {
            record.snapshot = record.heap.get();
            most = largestSnapshot;
        }
    }
    record.known = entry.asCmObject;
    record.length = static_cast<uint32_t>(std::min<size_t>(dependents.size(), most));
    // Most have one: that is not worth a call of the copying routine.
    if (record.length == 1)
        record.snapshot[0] = dependents[0];
    else
        std::copy_n(dependents.begin(), record.length, record.snapshot);
    record.outer = running_;
    record.isRunning = true;
    running_ = &record;
    detail::notificationsUnderWay.store(detail::notificationsUnderWay.load(std::memory_order_relaxed) + 1,
                                        std::memory_order_release);
}

void UpdateHandler::leave(Notification& record) {
    bool isWaitedFor = false;
    {
        const FGuard guard(lock_);
        // Not always the innermost one: other threads notify too.
        Notification** link = &running_;
        while (*link != &record)
            link = &(*link)->outer;
        *link = record.outer;
        record.isRunning = false;
        // Off the stack it would go with the last reference of another thread, before its `updateDone`.
        if (record.isToHold && record.own && !record.holdsObject) {
            record.holdsObject = record.own->addRefUnlessGone();
            // That thread waits for the lock to end it.
            if (!record.holdsObject)
                record.own = nullptr;
        }
        detail::notificationsUnderWay.store(detail::notificationsUnderWay.load(std::memory_order_relaxed) - 1,
                                            std::memory_order_release);
        if (isWaiting_.load(std::memory_order_relaxed)) {
            const DependentEntry* entry = table_.find(record.object);
            isWaitedFor = entry && entry->deferred;
        }
    }
    // The GUI thread may be asleep over a change that had to wait for this notification.
    if (isWaitedFor)
        EventLoop::wake();
}

UpdateHandler::Notification::~Notification() {
    if (isRunning)
        handler.leave(*this);
    if (holdsObject)
        own->release();
}

template <typename Call>
void UpdateHandler::callDependents(const Notification& record, Call call) {
    const Held telling(told_, {record.object, record.known});
    for (uint32_t i = 0; i < record.length; ++i) {
        const std::atomic_ref<FDependent*> place(record.snapshot[i]);
        if (FDependent* dependent = place.load(std::memory_order_relaxed))
            call(dependent);
    }
}

int32_t UpdateHandler::tell(Notification& record, int32_t message, UpdateDone done) {
    if (record.length > 0) {
        // Nobody keeps it on its account; without dependents it may be gone since it was queued.
        const Ref<FInterface> foreign = record.own ? nullptr : retain(record.object);
        callDependents(record, [&](FDependent* dependent) { dependent->update(record.object, message); });
        leave(record);
    }
    if (done == UpdateDone::call)
        finish(record.own, message);
    return record.length > 0 ? 0 : 1;
}

int32_t UpdateHandler::trigger(const RootIdentity& object, int32_t message, UpdateDone done) {
    if (!object)
        return 1;
    Notification record(*this);
    begin(record, object);
    return tell(record, message, done);
}

void UpdateHandler::begin(Notification& record, const RootIdentity& object) {
    record.object = object.get();
    record.own = object.own();
    const FGuard guard(lock_);
    if (const DependentEntry* entry = table_.find(record.object))
        enter(record, *entry);
}

int32_t UpdateHandler::triggerUpdates(FInterface* object, int32_t message) {
    return trigger(RootIdentity(object), message, UpdateDone::call);
}

int32_t UpdateHandler::triggerUpdates(FObject* object, int32_t message, UpdateDone done) {
    return trigger(RootIdentity(object), message, done);
}

void UpdateHandler::tellMessage(FObject* object, FMessage& message) {
    const RootIdentity root(object);
    if (!root)
        return;
    Notification record(*this);
    begin(record, root);
    callDependents(record, [&](FDependent* dependent) {
        FPostedMessage::handOver(message, *dependent, borrowObject(dependent));
    });
}

/// Called for an object that has just lost its last reference. True when a notification keeps it.
bool UpdateHandler::keepNotified(FObject& object) {
    UpdateHandler* handler = current_.load(std::memory_order_acquire);
    return handler && handler->handOver(object);
}

bool UpdateHandler::handOver(FObject& object) {
    const FGuard guard(lock_);
    Notification* record = running_;
    while (record && record->own != &object)
        record = record->outer;
    if (!record)
        return false;
    object.count_.store(1, std::memory_order_relaxed);
    record->holdsObject = true;
    return true;
}

// Deferred changes

int32_t UpdateHandler::defer(const RootIdentity& object, int32_t message) {
    if (!object)
        return 1;
    try {
        if (!queue(object, message))
            finish(object.own(), message);
        return 0;
    } catch (const std::bad_alloc&) {
        return EventLoop::isGuiThread() ? trigger(object, message, UpdateDone::call) : 1;
    }
}

int32_t UpdateHandler::deferUpdates(FInterface* object, int32_t message) {
    return defer(RootIdentity(object), message);
}

int32_t UpdateHandler::defer(FObject* object, int32_t message) {
    return defer(RootIdentity(object), message);
}

/// False when nobody hears of the change.
bool UpdateHandler::queue(const RootIdentity& object, int32_t message) {
    {
        const FGuard guard(lock_);
        DependentEntry* entry = table_.find(object.get());
        if ((!entry || entry->dependents.empty()) && message != FDependent::objectDestroyed)
            return false;
        if (entry && DeferredQueue::find(*entry, message))
            return true;
        deferred_.reserve();
        deferred_.add(entry ? *entry : table_.obtain(object.get()), object.own(), message);
        isWaiting_.store(true, std::memory_order_release);
        if (EventLoop::isGuiThread()) {
            newestMessage_.store(message, std::memory_order_relaxed);
            newestObject_.store(object.get(), std::memory_order_release);
        }
    }
    // Also behind others: the GUI thread sleeps over those whose objects are being notified.
    EventLoop::wake();
    return true;
}

int32_t UpdateHandler::cancelUpdates(FInterface* object) {
    const RootIdentity root(object);
    if (!root)
        return 1;
    const FGuard guard(lock_);
    if (DependentEntry* entry = table_.find(root.get())) {
        cancelQueued(*entry);
        table_.dropIfUnused(*entry);
    }
    return 0;
}

void UpdateHandler::cancelQueued(DependentEntry& entry) {
    while (entry.deferred)
        takeOff(entry, *entry.deferred);
}

void UpdateHandler::takeOff(DependentEntry& entry, DeferredChange& change) {
    // The GUI thread must not take the change for one that waits.
    if (newestObject_.load(std::memory_order_relaxed) == change.object)
        newestObject_.store(nullptr, std::memory_order_release);
    deferred_.remove(entry, change);
    isWaiting_.store(deferred_.first() != nullptr, std::memory_order_release);
}

bool UpdateHandler::isNotified(const FInterface* object) const {
    const Notification* record = running_;
    while (record && record->object != object)
        record = record->outer;
    return record != nullptr;
}

bool UpdateHandler::hasDeliverable() {
    if (!isWaiting_.load(std::memory_order_acquire))
        return false;
    const FGuard guard(lock_);
    DeferredChange* change = deferred_.first();
    while (change && isNotified(change->object))
        change = deferred_.next(*change);
    return change != nullptr;
}

void UpdateHandler::holdBack(Pass& pass, DeferredChange& change) {
    DeferredQueue::holdBack(change, pass.held);
    pass.isHolding = true;
}

/// The next change of the pass; those of objects that are being notified are held back.
DeferredChange* UpdateHandler::findDeliverable(Pass& pass) {
    if (!pass.object) {
        DeferredChange* change = deferred_.first();
        for (; change && isNotified(change->object); change = deferred_.first())
            holdBack(pass, *change);
        return change;
    }
    const DependentEntry* entry = table_.find(pass.object);
    const bool isRunning = isNotified(pass.object);
    DeferredChange* change = entry ? entry->deferred : nullptr;
    for (; change; change = change->nextOfObject) {
        if (change->isHeld)
            continue;
        if (!isRunning)
            return change;
        holdBack(pass, *change);
    }
    return nullptr;
}

/// Takes the next change off the queue and begins its notification, both at once, so that the object can't go
/// in between.
bool UpdateHandler::enterNext(Pass& pass, Notification& record, int32_t& message) {
    const FGuard guard(lock_);
    DeferredChange* change = findDeliverable(pass);
    if (!change)
        return false;
    record.object = change->object;
    record.own = change->own;
    message = change->message;
    DependentEntry& entry = *table_.find(change->object);
    takeOff(entry, *change);
    enter(record, entry);
    // One that tells its destruction may have gone already.
    record.isToHold = message != FDependent::objectDestroyed;
    table_.dropIfUnused(entry);
    return true;
}

void UpdateHandler::giveBack(Pass& pass) {
    const FGuard guard(lock_);
    while (!pass.held.isAlone()) {
        auto& change = static_cast<DeferredChange&>(*pass.held.behind);
        deferred_.giveBack(*table_.find(change.object), change);
    }
    isWaiting_.store(deferred_.first() != nullptr, std::memory_order_release);
}

int32_t UpdateHandler::triggerDeferredUpdates(FInterface* object) {
    const RootIdentity root(object);
    if (object && !root)
        return 1;
    Pass pass(*this, root.get());
    while (pass.isHolding || isWaiting_.load(std::memory_order_acquire)) {
        Notification record(*this);
        int32_t message = 0;
        if (!enterNext(pass, record, message))
            break;
        tell(record, message, UpdateDone::call);
    }
    return 0;
}

} // namespace qorl
