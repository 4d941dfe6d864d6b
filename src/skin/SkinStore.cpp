#include "skin/SkinStore.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace qorl {

struct SkinStore::Chunk {
    Chunk* next;
};

SkinStore::~SkinStore() {
    while (chunks_) {
        Chunk* next = chunks_->next;
        ::operator delete(chunks_);
        chunks_ = next;
    }
}

uint32_t SkinStore::release() {
    const uint32_t left = --references_;
    if (left == 0)
        delete this;
    return left;
}

void SkinStore::addChunk(size_t atLeast) {
    constexpr size_t smallest = 2048, largest = size_t{256} << 10;
    const size_t size = std::max(atLeast + sizeof(Chunk), std::clamp(used_, smallest, largest));
    auto* chunk = static_cast<Chunk*>(::operator new(size));
    chunk->next = chunks_;
    chunks_ = chunk;
    next_ = reinterpret_cast<char*>(chunk + 1);
    end_ = reinterpret_cast<char*>(chunk) + size;
}

void* SkinStore::allocate(size_t bytes) {
    const size_t padding = -reinterpret_cast<uintptr_t>(next_) % alignment;
    if (static_cast<size_t>(end_ - next_) < bytes + padding)
        addChunk(bytes);
    else
        next_ += padding;
    void* memory = next_;
    next_ += bytes;
    used_ += bytes;
    return memory;
}

std::string_view SkinStore::keep(std::string_view text) {
    if (text.empty())
        return {"", 0};
    const size_t bytes = text.size() + 1;
    if (static_cast<size_t>(end_ - next_) < bytes)
        addChunk(bytes);
    char* copy = next_;
    next_ += bytes;
    used_ += bytes;
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return {copy, text.size()};
}

} // namespace qorl
