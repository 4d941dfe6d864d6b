#include "support/FailingAllocation.h"

#include "support/MemoryMeter.h"

#include <cstdlib>

// The program is linked with --wrap for these three: calls of `malloc` in its objects come to
// `__wrap_malloc`. NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* block, size_t size);
}

namespace {

/// The count of the `during` that runs in this thread.
thread_local int64_t* leftToFail = nullptr;
/// That of the meter that stands in this thread.
thread_local int64_t* bytesAskedFor = nullptr;

bool isToFail(size_t size) {
    if (bytesAskedFor)
        *bytesAskedFor += static_cast<int64_t>(size);
    return leftToFail && --*leftToFail == 0;
}

} // namespace

extern "C" {
void* __wrap_malloc(size_t size) {
    return isToFail(size) ? nullptr : __real_malloc(size);
}
void* __wrap_calloc(size_t count, size_t size) {
    return isToFail(count * size) ? nullptr : __real_calloc(count, size);
}
void* __wrap_realloc(void* block, size_t size) {
    return isToFail(size) ? nullptr : __real_realloc(block, size);
}
}
// NOLINTEND(bugprone-reserved-identifier)

// The thread sanitizer brings operators of its own, which can't be replaced; `malloc` still fails there.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define QORL_OPERATORS_OF_SANITIZER
#endif
#endif

#ifndef QORL_OPERATORS_OF_SANITIZER
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size > 0 ? size : 1);
}
void* operator new[](size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}
void* operator new(size_t size) {
    void* block = operator new(size, std::nothrow);
    if (!block)
        throw std::bad_alloc();
    return block;
}
void* operator new[](size_t size) {
    return operator new(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, size_t) noexcept {
    std::free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}
#endif

namespace qorl {

FailingAllocation::Armed::Armed(int64_t& left) {
    leftToFail = &left;
}

FailingAllocation::Armed::~Armed() {
    leftToFail = nullptr;
}

MemoryMeter::MemoryMeter() {
    bytesAskedFor = &bytes_;
}

MemoryMeter::~MemoryMeter() {
    bytesAskedFor = nullptr;
}

} // namespace qorl
