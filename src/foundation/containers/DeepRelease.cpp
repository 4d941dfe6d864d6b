#include "foundation/containers/DeepRelease.h"

#include "foundation/CmObject.h"

#include <new>
#include <vector>

namespace qorl {

namespace {

// Ordinary nesting is released at once, as destructors expect; the rest fits into any thread's stack.
constexpr int32_t mostAtOnce = 64;

constinit thread_local int32_t releasing = 0;
// What waits while an object goes at the last level.
constinit thread_local std::vector<CmObject*>* waitingObjects = nullptr;

bool letWait(CmObject* object) {
    try {
        waitingObjects->push_back(object);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void releaseWithThoseThatWait(CmObject* object) {
    std::vector<CmObject*> waiting;
    waitingObjects = &waiting;
    object->release();
    while (!waiting.empty()) {
        CmObject* next = waiting.back();
        waiting.pop_back();
        next->release();
    }
    waitingObjects = nullptr;
}

} // namespace

void releaseInTurn(CmObject* object) {
    if (releasing < mostAtOnce) {
        ++releasing;
        object->release();
        --releasing;
    } else if (!waitingObjects) {
        releaseWithThoseThatWait(object);
    } else if (!letWait(object)) {
        object->release();
    }
}

} // namespace qorl
