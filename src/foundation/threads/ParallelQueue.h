#pragma once

#include <cstdint>
#include <memory>
#include <type_traits>

namespace qorl {

/// A queue of the service below, held by whoever had it created.
class ParallelWorkQueue {
public:
    virtual ~ParallelWorkQueue() = default;
};

/// A function over the items of an array, without a copy of what it captures.
struct ItemFunction {
    void (*call)(void* context, void* first, int64_t index);
    void* context;

    void operator()(void* first, int64_t index) const { call(context, first, index); }
};

/// Spreads work over the processors. The library has no such service of its own: whoever brings one puts it
/// into `ParallelQueue::service` before the start-up hooks run.
class ParallelService {
public:
    virtual ~ParallelService() = default;

    virtual std::shared_ptr<ParallelWorkQueue> createQueue(const char* name, uint32_t flags,
                                                           int32_t priority) = 0;
    /// Null when there is no queue of that key.
    virtual std::shared_ptr<ParallelWorkQueue> findQueue(uint32_t key) = 0;
    /// Calls `function(first, index)` for each index below `count`, in any order and on any threads, and
    /// returns when all calls have. `queue` may be null: any one.
    virtual void run(ParallelWorkQueue* queue, void* first, int64_t count, const ItemFunction& function) = 0;
};

/// The place of the process for a parallel service. Everything works without one.
namespace ParallelQueue {

/// Empty unless somebody stored a service; that is done on the GUI thread while nothing uses it.
std::shared_ptr<ParallelService>& service();

/// The queue "UWindow PreRender" for the redraw of windows; empty without a service.
const std::shared_ptr<ParallelWorkQueue>& preRenderQueue();

/// The hooks "ParallelQueue" of the start-up and the shutdown: make that queue if there is a service, and
/// drop it. True.
bool createPreRenderQueue();
bool dropPreRenderQueue();

} // namespace ParallelQueue

/// Calls `function(item)` for each of `count` items from `first` on: through the service when there is one
/// and more than one item, else in order on the calling thread. The function must be safe for use from
/// several threads at once.
template <typename Item, typename Function>
void transformItems(Item* first, int64_t count, Function&& function) {
    ParallelService* service = ParallelQueue::service().get();
    if (!service || count < 2) {
        for (int64_t i = 0; i < count; ++i)
            function(first[i]);
        return;
    }
    const auto call = [](void* context, void* items, int64_t index) {
        (*static_cast<std::remove_reference_t<Function>*>(context))(static_cast<Item*>(items)[index]);
    };
    service->run(nullptr, first, count, {call, &function});
}

/// Hands work to a queue that runs one piece after the other.
class SerialQueueUser {
public:
    /// Without a queue of its own it creates one, "FutureSerialQueue", of that priority; when there is no
    /// service it has none.
    explicit SerialQueueUser(std::shared_ptr<ParallelWorkQueue> queue, int32_t priority = 0);

    ParallelWorkQueue* queue() const { return queue_.get(); }

    /// Calls `function()` on the queue; without one at once, on the calling thread.
    template <typename Function>
    void run(Function&& function) {
        ParallelService* service = ParallelQueue::service().get();
        if (!service || !queue_) {
            function();
            return;
        }
        const auto call = [](void* context, void*, int64_t) {
            (*static_cast<std::remove_reference_t<Function>*>(context))();
        };
        service->run(queue_.get(), nullptr, 1, {call, &function});
    }

private:
    std::shared_ptr<ParallelWorkQueue> queue_;
};

} // namespace qorl
