#include "foundation/threads/FThread.h"

#include <algorithm>

namespace qorl {

namespace {

constinit std::atomic<ThreadObserver*> threadObserver{nullptr};

/// The system's relative priorities, by index, for a process in the normal class and in any other.
constexpr int32_t priorityTable[FThread::priorities][2] = {{-15, -15}, {-1, -2}, {0, -1},
                                                           {1, 0},     {2, 1},   {15, 15}};

} // namespace

void setThreadObserver(ThreadObserver* observer) {
    threadObserver = observer;
}

FThread::FThread(const char* name) : name_(name ? name : "") {
    if (ThreadObserver* observer = threadObserver)
        observer->threadCreated(this);
}

FThread::~FThread() {
    if (ThreadObserver* observer = threadObserver)
        observer->threadDestroyed(this);
    if (handle_)
        platform::closeThread(handle_);
}

int32_t FThread::relativePriority(int32_t index, platform::PriorityClass processClass) {
    const int32_t row = std::clamp(index, 0, priorities - 1);
    return priorityTable[row][processClass == platform::PriorityClass::normal ? 0 : 1];
}

void FThread::setPriority(int32_t index) {
    priority_ = std::clamp(index, 0, priorities - 1);
    if (handle_)
        platform::setThreadPriority(handle_, relativePriority(priority_, platform::getPriorityClass()));
}

void FThread::threadStarted() {}

uint32_t FThread::body(void* argument) {
    auto* thread = static_cast<FThread*>(argument);
    thread->resumed_.wait();
    thread->threadStarted();
    // The object may delete itself at the end of `run`.
    return thread->run();
}

bool FThread::start() {
    if (handle_ && !join(0))
        return false;
    platform::closeThread(handle_);
    handle_ = 0;
    started_ = true;
    resumed_.reset();
    if (!platform::startThread(&FThread::body, this, name_.c_str(), handle_))
        return false;
    threadId_ = platform::getThreadId(handle_);
    setPriority(priority_);
    resumed_.set();
    return true;
}

bool FThread::join(uint32_t milliseconds) {
    if (!started_ || !handle_)
        return true;
    return platform::joinThread(handle_, milliseconds == noLimit ? -1 : static_cast<int64_t>(milliseconds));
}

bool FThread::terminate() {
    if (!handle_)
        return true;
    if (!platform::terminateThread(handle_))
        return false;
    platform::closeThread(handle_);
    handle_ = 0;
    return true;
}

bool FThread::isCurrent() const {
    return platform::isCurrentThread(handle_);
}

} // namespace qorl
