#include "foundation/threads/PreferWorkerThread.h"

#include <new>
#include <utility>

namespace qorl {

PreferWorkerThread::PreferWorkerThread(const char* name)
    : FThread(name && *name ? name : "Prefer Worker Thread") {}

PreferWorkerThread::~PreferWorkerThread() {
    DoneRecords done;
    cancelQueued(done);
}

bool PreferWorkerThread::addJob(Job* job, int64_t argument) {
    return addJob(job, nullptr, argument);
}

bool PreferWorkerThread::addJob(Job* job, FInterface* owner, int64_t argument) {
    if (!job)
        return false;
    DoneRecords done;
    const FGuard guard(queue_.lock());
    if (owner && queue_.contains(owner))
        return false;
    auto* record = new (std::nothrow) JobRecord;
    if (!record)
        return false;
    record->job = job;
    record->argument = argument;
    if (stopping_) {
        done.cancel(record);
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

void PreferWorkerThread::cancelQueued(DoneRecords& done) {
    FInterface* owner = nullptr;
    while (JobRecord* record = queue_.popFront(owner))
        done.cancel(record);
}

void PreferWorkerThread::giveBackCurrent(DoneRecords& done) {
    currentOwner_ = nullptr;
    if (JobRecord* record = std::exchange(currentRecord_, nullptr))
        done.take(record);
}

PreferWorkerThread::Found PreferWorkerThread::runNext() {
    Job* job = nullptr;
    int64_t argument = 0;
    {
        const FGuard guard(queue_.lock());
        // Under the lock, so that `pause` finds each job that it has to ask.
        if (paused_)
            return Found::nothing;
        currentRecord_ = queue_.popFront(currentOwner_);
        if (!currentRecord_)
            return Found::nothing;
        job = currentRecord_->job;
        argument = currentRecord_->argument;
    }
    runJob(*job, argument);
    // Unless `cancelAll` has done it meanwhile.
    DoneRecords done;
    const FGuard guard(queue_.lock());
    giveBackCurrent(done);
    return Found::job;
}

uint32_t PreferWorkerThread::run() {
    // Whoever changes what is asked here sets the event afterwards, so that no change is slept over.
    while (!stopping_)
        if (runNext() == Found::nothing)
            wakeEvent_.wait();
    return 0;
}

void PreferWorkerThread::cancelAll() {
    DoneRecords done;
    const FGuard guard(queue_.lock());
    paused_ = false;
    if (currentRecord_)
        currentRecord_->job->cancel(true);
    cancelQueued(done);
    wakeEvent_.set();
    giveBackCurrent(done);
}

void PreferWorkerThread::stop() {
    {
        const FGuard guard(queue_.lock());
        stopping_ = true;
    }
    cancelAll();
    {
        // Whatever an own `cancelAll` left or brought.
        DoneRecords done;
        const FGuard guard(queue_.lock());
        if (currentRecord_)
            currentRecord_->job->cancel(true);
        cancelQueued(done);
        wakeEvent_.set();
    }
    if (!join(stopLimit)) {
        // As in `WorkerThread::stop`: the thread first, then its job.
        DoneRecords done;
        const FGuard guard(queue_.lock());
        if (!terminate())
            return;
        giveBackCurrent(done);
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
