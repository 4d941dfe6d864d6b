#include "foundation/Singleton.h"

#include "foundation/threads/FLock.h"

#include <new>
#include <vector>

namespace qorl {

/// The slots in the order of their creation. Built before every other static object of the library, so that
/// its destructor, which releases them all, runs after those of the others.
class SingletonList {
public:
    // Not a constant initialisation on purpose: the destructor takes its place in the order of the
    // constructor.
    SingletonList() { slots_.reserve(64); }
    ~SingletonList();

    void add(SingletonSlot* slot) { slots_.push_back(slot); }
    void remove(SingletonSlot* slot) { std::erase(slots_, slot); }

private:
    std::vector<SingletonSlot*> slots_;
};

namespace {

constinit std::atomic<FLock*> lockInstance{nullptr};
constinit std::atomic<bool> gone{false};

[[gnu::init_priority(101)]] SingletonList singletons;

} // namespace

FLock* globalLock() {
    FLock* lock = lockInstance.load(std::memory_order_acquire);
    if (lock || gone.load(std::memory_order_acquire))
        return lock;
    auto* created = new (std::nothrow) FLock("FLock");
    if (!created)
        return nullptr;
    if (lockInstance.compare_exchange_strong(lock, created, std::memory_order_acq_rel))
        return created;
    delete created;
    return lock;
}

SingletonList::~SingletonList() {
    gone.store(true, std::memory_order_release);
    for (SingletonSlot* slot : slots_) {
        slot->object_.load(std::memory_order_acquire)->release();
        slot->object_.store(nullptr, std::memory_order_release);
    }
    slots_.clear();
    delete lockInstance.exchange(nullptr);
}

bool SingletonSlot::areGone() {
    return gone.load(std::memory_order_acquire);
}

void SingletonSlot::drop() {
    FLock* lock = globalLock();
    if (areGone() || !lock)
        return;
    FObject* object = nullptr;
    {
        const FGuard guard(*lock);
        object = object_.exchange(nullptr);
        if (object)
            singletons.remove(this);
    }
    if (object)
        object->release();
}

FObject* SingletonSlot::createOnce(FObject* (*create)()) {
    FLock* lock = globalLock();
    if (areGone() || !lock)
        return load();
    const FGuard guard(*lock);
    if (FObject* object = load())
        return object;
    FObject* object = nullptr;
    try {
        object = create();
        // Behind `create`: what the object makes for itself is older than the object.
        singletons.add(this);
    } catch (const std::bad_alloc&) {
        if (object)
            object->release();
        return nullptr;
    }
    object_.store(object, std::memory_order_release);
    return object;
}

} // namespace qorl
