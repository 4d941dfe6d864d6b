#include "persistence/streams/StreamBufferPool.h"

#include <algorithm>

namespace qorl {

Ref<CmBuffer> StreamBufferPool::make(int32_t size) try {
    if (size < 1)
        return nullptr;
    auto block = qorl::make<CmBuffer>(size, size);
    return block->capacity() == size ? block : nullptr;
} catch (const std::bad_alloc&) {
    return nullptr;
}

Ref<CmBuffer> StreamBufferPool::take(int32_t size) {
    Ref<CmBuffer> taken;
    {
        const FGuard guard(lock_);
        // The larger ones are kept for who needs them.
        Ref<CmBuffer>* best = nullptr;
        for (auto& block : blocks_)
            if (block && block->capacity() >= size && (!best || block->capacity() < (*best)->capacity()))
                best = &block;
        if (best && size > 0)
            taken = std::move(*best);
    }
    if (!taken)
        return make(size);
    taken->clear();
    return taken;
}

void StreamBufferPool::giveBack(Ref<CmBuffer> block) {
    const FGuard guard(lock_);
    const auto place = std::find(blocks_.begin(), blocks_.end(), nullptr);
    if (place != blocks_.end())
        *place = std::move(block);
}

} // namespace qorl
