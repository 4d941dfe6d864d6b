#include "foundation/threads/PreferWorkerThread.h"

#include <new>
#include <utility>

namespace qorl {

PreferWorkerThread::PreferWorkerThread(const char* name)
    : FThread(name && *name ? name : "Prefer Worker Thread") {}

PreferWorkerThread::~PreferWorkerThread() {
    cancelQueued();
}

bool PreferWorkerThread::addJob(Job* job, int64_t argument) {
    return addJob(job, nullptr, argument);
}

bool PreferWorkerThread::addJob(Job* job, FInterface* owner, int64_t argument) {
    if (!job)
        return false;
    const FGuard guard(queue_.lock());
    if (owner && queue_.contains(owner))
        return false;
    auto* record = new (std::nothrow) JobRecord;
    if (!record)
        return false;
    record->job = job;
    record->argument = argument;
    if (stopping_) {
        cancelRecord(record);
        return true;
    }
    if (owner)
        owner->addRef();
    queue_.append(record, owner);
    if (notStarted_) {
        setPriority(0);
        notStarted_ = !start();
    }
    if (!paused_ && !currentRecord_)
        wakeEvent_.set();
    return true;
}

void PreferWorkerThread::cancelQueued() {
    FInterface* owner = nullptr;
    while (JobRecord* record = queue_.popFront(owner))
        cancelRecord(record);
}

void PreferWorkerThread::releaseCurrent() {
    if (JobRecord* record = std::exchange(currentRecord_, nullptr)) {
        record->job->release();
        delete record;
    }
    if (FInterface* owner = std::exchange(currentOwner_, nullptr))
        owner->release();
}

PreferWorkerThread::Found PreferWorkerThread::runNext() {
    Job* job = nullptr;
    int64_t argument = 0;
    {
        const FGuard guard(queue_.lock());
        currentRecord_ = queue_.popFront(currentOwner_);
        if (!currentRecord_)
            return Found::nothing;
        job = currentRecord_->job;
        argument = currentRecord_->argument;
    }
    job->run(argument);
    // Unless `cancelAll` has done it meanwhile.
    const FGuard guard(queue_.lock());
    releaseCurrent();
    return Found::job;
}

uint32_t PreferWorkerThread::run() {
    while (!stopping_) {
        // In a loop, since a job that came before the pause has left the event set.
        while (paused_ && !stopping_)
            wakeEvent_.wait();
        const Found found = runNext();
        // The event that woke a paused thread may have been the last one: that of `stop`.
        if ((found == Found::nothing || paused_) && !stopping_)
            wakeEvent_.wait();
    }
    return 0;
}

void PreferWorkerThread::cancelAll() {
    const FGuard guard(queue_.lock());
    paused_ = false;
    if (currentRecord_)
        currentRecord_->job->cancel(true);
    cancelQueued();
    wakeEvent_.set();
    releaseCurrent();
}

void PreferWorkerThread::stop() {
    {
        const FGuard guard(queue_.lock());
        stopping_ = true;
    }
    cancelAll();
    {
        // Whatever an own `cancelAll` left or brought.
        const FGuard guard(queue_.lock());
        if (currentRecord_)
            currentRecord_->job->cancel(true);
        cancelQueued();
        wakeEvent_.set();
    }
    if (!join(stopLimit)) {
        // As in `WorkerThread::stop`: the thread first, then its job.
        const FGuard guard(queue_.lock());
        if (!terminate())
            return;
        releaseCurrent();
    }
    delete this;
}

void PreferWorkerThread::pause() {
    const FGuard guard(queue_.lock());
    if (currentRecord_)
        currentRecord_->job->cancel(false);
    paused_ = true;
}

void PreferWorkerThread::resume() {
    const FGuard guard(queue_.lock());
    if (!paused_)
        return;
    paused_ = false;
    wakeEvent_.set();
}

} // namespace qorl
