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
    {
        const FGuard guard(lock_);
        for (auto& block : blocks_) {
            if (!block || size < 1 || block->capacity() < size)
                continue;
            block->clear();
            return std::move(block);
        }
    }
    return make(size);
}

void StreamBufferPool::giveBack(Ref<CmBuffer> block) {
    const FGuard guard(lock_);
    const auto place = std::find(blocks_.begin(), blocks_.end(), nullptr);
    if (place != blocks_.end())
        *place = std::move(block);
}

} // namespace qorl
