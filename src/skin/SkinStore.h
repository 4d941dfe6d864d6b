#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qorl {

/// The memory of a document's elements and their texts: taken bit by bit, given back all at once.
///
/// Counted like an object, since included documents share the store of the document that includes them and
/// their elements move into it. Threading: one thread at a time.
class SkinStore final {
public:
    SkinStore() = default;
    SkinStore(const SkinStore&) = delete;
    SkinStore& operator=(const SkinStore&) = delete;

    uint32_t addRef() { return ++references_; }
    uint32_t release();

    /// Uninitialised memory, aligned for pointers and 64-bit numbers.
    void* allocate(size_t bytes);
    template <typename T>
    T* allocateArray(size_t count) {
        static_assert(alignof(T) <= alignment);
        return static_cast<T*>(allocate(count * sizeof(T)));
    }

    /// A copy of `text` with a terminator behind it.
    std::string_view keep(std::string_view text);

    /// Of this store alone, as long as the process runs: tells one load of a document from the next.
    uint64_t serial() const { return serial_; }
    /// Bytes handed out so far.
    size_t used() const { return used_; }

private:
    static constexpr size_t alignment = 8;

    struct Chunk;

    ~SkinStore();
    void addChunk(size_t atLeast);

    Chunk* chunks_ = nullptr;
    char* next_ = nullptr;
    char* end_ = nullptr;
    size_t used_ = 0;
    uint32_t references_ = 1;
    uint64_t serial_ = ++lastSerial_;

    static inline constinit std::atomic<uint64_t> lastSerial_ = 0;
};

} // namespace qorl
