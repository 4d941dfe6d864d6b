#include "foundation/threads/ParallelQueue.h"

#include "foundation/StartupHook.h"

#include <utility>

namespace qorl {

namespace {

// Empty before anything can ask, by constant initialisation: no lock guards the first use.
constinit std::shared_ptr<ParallelService> parallelService;
constinit std::shared_ptr<ParallelWorkQueue> preRender;

const StartupHook startupHook{"ParallelQueue", StartupHook::ready, &ParallelQueue::createPreRenderQueue};
const ShutdownHook shutdownHook{"ParallelQueue", StartupHook::ready, &ParallelQueue::dropPreRenderQueue};

} // namespace

std::shared_ptr<ParallelService>& ParallelQueue::service() {
    return parallelService;
}

const std::shared_ptr<ParallelWorkQueue>& ParallelQueue::preRenderQueue() {
    return preRender;
}

bool ParallelQueue::createPreRenderQueue() {
    if (parallelService)
        preRender = parallelService->createQueue("UWindow PreRender", 1, 0);
    return true;
}

bool ParallelQueue::dropPreRenderQueue() {
    preRender.reset();
    return true;
}

SerialQueueUser::SerialQueueUser(std::shared_ptr<ParallelWorkQueue> queue, int32_t priority)
    : queue_(std::move(queue)) {
    if (!queue_ && parallelService)
        queue_ = parallelService->createQueue("FutureSerialQueue", 0, priority);
}

} // namespace qorl
