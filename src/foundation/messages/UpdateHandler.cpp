#include "foundation/messages/UpdateHandler.h"

#include "foundation/Singleton.h"
#include "foundation/messages/EventLoop.h"

#include <qorl/Ref.h>

#include <algorithm>
#include <atomic>

namespace qorl {

namespace {

constinit Singleton<UpdateHandler> handlerSlot;
constinit std::atomic<FUpdateRegistry*> currentRegistry{nullptr};

/// The pointer by which an object is known, whatever face it came through. Holds the object meanwhile: it may
/// lose its last other reference while dependents hear of it.
Ref<FInterface> rootOf(FInterface* object) {
    Ref<FInterface> root;
    if (object)
        object->queryInterface(FInterface::iid, root.out());
    return root;
}

/// Dependents are called through this face, so it stands for them in the table.
FDependent* dependentFace(FDependent* dependent) {
    Ref<FDependent> face;
    if (dependent)
        dependent->queryInterface(FDependent::iid, face.out());
    return face.get();
}

void finish(FInterface* root, int32_t message) {
    if (message == FDependent::objectDestroyed)
        return;
    if (FObject* object = borrowObject(root))
        object->updateDone(message);
}

} // namespace

FUpdateRegistry* FUpdateRegistry::current() {
    return currentRegistry.load(std::memory_order_acquire);
}

UpdateHandler* UpdateHandler::instance() {
    return handlerSlot.get();
}

UpdateHandler::UpdateHandler() {
    FUpdateRegistry* none = nullptr;
    currentRegistry.compare_exchange_strong(none, this);
}

UpdateHandler::~UpdateHandler() {
    FUpdateRegistry* self = this;
    currentRegistry.compare_exchange_strong(self, nullptr);
}

// FNV-1a over the eight bytes of the address (Fowler, Noll, Vo), lowest first.
size_t UpdateHandler::AddressHash::operator()(const FInterface* address) const noexcept {
    uint64_t rest = reinterpret_cast<uintptr_t>(address);
    uint64_t hash = 0xCBF29CE484222325;
    for (int i = 0; i < 8; ++i, rest >>= 8)
        hash = (hash ^ (rest & 0xFF)) * 0x100000001B3;
    return static_cast<size_t>(hash);
}

UpdateHandler::LinkMap& UpdateHandler::mapOf(const FInterface* object) {
    return maps_[reinterpret_cast<uintptr_t>(object) >> 12 & (mapCount - 1)];
}

UpdateHandler::Links* UpdateHandler::find(FInterface* object) {
    LinkMap& map = mapOf(object);
    const auto found = map.find(object);
    return found != map.end() ? &found->second : nullptr;
}

void UpdateHandler::dropIfUnused(FInterface* object) {
    const Links* links = find(object);
    if (links && links->dependents.empty() && links->queued.empty())
        mapOf(object).erase(object);
}

int32_t UpdateHandler::addDependent(FInterface* object, FDependent* dependent) {
    const Ref<FInterface> root = rootOf(object);
    FDependent* face = dependentFace(dependent);
    if (!root || !face)
        return 1;
    const FGuard guard(lock_);
    mapOf(root.get())[root.get()].dependents.push_back(face);
    return 0;
}

int32_t UpdateHandler::removeDependent(FInterface* object, FDependent* dependent) {
    if (!object && !dependent)
        return 0;
    const Ref<FInterface> root = rootOf(object);
    FDependent* face = dependentFace(dependent);
    const FGuard guard(lock_);
    if (face)
        blankRunning(root.get(), face);
    if (root)
        removeFrom(root.get(), face);
    else if (face)
        removeEverywhere(face);
    return 0;
}

void UpdateHandler::blankRunning(const FInterface* object, const FDependent* dependent) {
    for (Notification* record = running_; record; record = record->outer) {
        if (object && record->object != object)
            continue;
        for (uint32_t i = 0; i < record->length; ++i) {
            // Another thread may be walking this snapshot without the lock.
            std::atomic_ref<FDependent*> entry(record->snapshot[i]);
            if (entry.load(std::memory_order_relaxed) == dependent)
                entry.store(nullptr, std::memory_order_relaxed);
        }
    }
}

void UpdateHandler::removeFrom(FInterface* object, FDependent* dependent) {
    Links* links = find(object);
    if (!links)
        return;
    if (dependent)
        std::erase(links->dependents, dependent);
    else
        links->dependents.clear();
    if (links->dependents.empty())
        cancelQueued(object);
}

void UpdateHandler::removeEverywhere(FDependent* dependent) {
    for (LinkMap& map : maps_) {
        for (auto it = map.begin(); it != map.end();) {
            Links& links = it->second;
            std::erase(links.dependents, dependent);
            it = links.dependents.empty() && links.queued.empty() ? map.erase(it) : std::next(it);
        }
    }
}

void UpdateHandler::enter(Notification& record, FDependent** local, std::unique_ptr<FDependent*[]>& heap) {
    const FGuard guard(lock_);
    const Links* links = find(record.object);
    if (!links || links->dependents.empty())
        return;
    const std::vector<FDependent*>& dependents = links->dependents;
    if (dependents.size() > stackSnapshot)
        heap.reset(new FDependent*[largestSnapshot]);
    record.snapshot = heap ? heap.get() : local;
    record.length = static_cast<uint32_t>(std::min<size_t>(dependents.size(), largestSnapshot));
    std::copy_n(dependents.begin(), record.length, record.snapshot);
    record.outer = running_;
    running_ = &record;
}

void UpdateHandler::leave(const Notification& record) {
    const FGuard guard(lock_);
    // Not always the innermost one: other threads notify too.
    Notification** link = &running_;
    while (*link != &record)
        link = &(*link)->outer;
    *link = record.outer;
}

int32_t UpdateHandler::triggerUpdates(FInterface* object, int32_t message, UpdateDone done) {
    const Ref<FInterface> root = rootOf(object);
    if (!root)
        return 1;
    FDependent* local[stackSnapshot];
    std::unique_ptr<FDependent*[]> heap;
    Notification record{root.get(), nullptr, 0, nullptr};
    enter(record, local, heap);
    for (uint32_t i = 0; i < record.length; ++i) {
        const std::atomic_ref<FDependent*> entry(record.snapshot[i]);
        if (FDependent* dependent = entry.load(std::memory_order_relaxed))
            dependent->update(root.get(), message);
    }
    if (record.length > 0)
        leave(record);
    if (done == UpdateDone::call)
        finish(root.get(), message);
    return record.length > 0 ? 0 : 1;
}

int32_t UpdateHandler::deferUpdates(FInterface* object, int32_t message) {
    const Ref<FInterface> root = rootOf(object);
    if (!root)
        return 1;
    {
        const FGuard guard(lock_);
        Links* links = find(root.get());
        if ((links && !links->dependents.empty()) || message == FDependent::objectDestroyed) {
            if (!links)
                links = &mapOf(root.get())[root.get()];
            if (std::find(links->queued.begin(), links->queued.end(), message) != links->queued.end())
                return 0;
            links->queued.push_back(message);
            deferred_.push_back({root.get(), message, nullptr});
            if (deferred_.size() == 1)
                EventLoop::wake();
            return 0;
        }
    }
    finish(root.get(), message);
    return 0;
}

int32_t UpdateHandler::cancelUpdates(FInterface* object) {
    const Ref<FInterface> root = rootOf(object);
    if (!root)
        return 1;
    const FGuard guard(lock_);
    cancelQueued(root.get());
    return 0;
}

void UpdateHandler::cancelQueued(FInterface* object) {
    Links* links = find(object);
    if (!links)
        return;
    if (!links->queued.empty()) {
        links->queued.clear();
        std::erase_if(deferred_, [object](const Deferred& pair) { return pair.object == object; });
    }
    dropIfUnused(object);
}

bool UpdateHandler::isNotified(const FInterface* object) const {
    for (const Notification* record = running_; record; record = record->outer)
        if (record->object == object)
            return true;
    return false;
}

bool UpdateHandler::hasDeliverable() {
    const FGuard guard(lock_);
    return std::any_of(deferred_.begin(), deferred_.end(),
                       [this](const Deferred& pair) { return !isNotified(pair.object); });
}

bool UpdateHandler::takeDeferred(const FInterface* object, const Pass& pass, Deferred& taken) {
    const FGuard guard(lock_);
    for (auto it = deferred_.begin(); it != deferred_.end(); ++it) {
        if (it->heldBy || (object && it->object != object))
            continue;
        if (isNotified(it->object)) {
            it->heldBy = &pass;
            continue;
        }
        taken = *it;
        deferred_.erase(it);
        std::erase(find(taken.object)->queued, taken.message);
        dropIfUnused(taken.object);
        return true;
    }
    return false;
}

void UpdateHandler::giveBack(const Pass& pass) {
    const FGuard guard(lock_);
    const auto isFree = [&pass](const Deferred& pair) { return pair.heldBy != &pass; };
    const auto held = std::stable_partition(deferred_.begin(), deferred_.end(), isFree);
    std::for_each(held, deferred_.end(), [](Deferred& pair) { pair.heldBy = nullptr; });
}

int32_t UpdateHandler::triggerDeferredUpdates(FInterface* object) {
    const Ref<FInterface> root = rootOf(object);
    if (object && !root)
        return 1;
    const Pass pass;
    Deferred taken;
    while (takeDeferred(root.get(), pass, taken))
        triggerUpdates(taken.object, taken.message);
    giveBack(pass);
    return 0;
}

} // namespace qorl
