#include "foundation/threads/WorkerThread.h"

#include <new>
#include <utility>

namespace qorl {

namespace {

constinit std::atomic<WorkerThread*> firstWorker{nullptr};

} // namespace

WorkerThread::WorkerThread(const char* name, int32_t priority)
    : FThread(name && *name ? name : "Worker Thread"), startPriority_(priority) {
    WorkerThread* none = nullptr;
    firstWorker.compare_exchange_strong(none, this);
}

WorkerThread::~WorkerThread() {
    WorkerThread* self = this;
    firstWorker.compare_exchange_strong(self, nullptr);
    DoneRecords done;
    while (JobRecord* record = queue_.popFront())
        done.cancel(record);
}

WorkerThread* WorkerThread::first() {
    return firstWorker;
}

void WorkerThread::beforeJob(Job*) {}
void WorkerThread::afterJob(Job*) {}
void WorkerThread::idle() {}

bool WorkerThread::addJob(Job* job, int64_t argument) {
    if (!job)
        return false;
    auto* record = new (std::nothrow) JobRecord;
    if (!record)
        return false;
    record->job = job;
    record->argument = argument;

    DoneRecords done;
    const FGuard guard(lock_);
    if (stopping_) {
        done.cancel(record);
        return true;
    }
    queue_.append(record);
    if (notStarted_) {
        setPriority(startPriority_);
        notStarted_ = !start();
    }
    wakeEvent_.set();
    return true;
}

bool WorkerThread::isQueueEmpty() {
    const FGuard guard(lock_);
    return queue_.isEmpty();
}

void WorkerThread::runNext() {
    Job* job = nullptr;
    int64_t argument = 0;
    {
        const FGuard guard(lock_);
        // The pause may have begun since `run` looked; from here on it is the job that runs.
        if (paused_)
            return;
        currentJob_ = queue_.popFront();
        if (!currentJob_)
            return;
        job = currentJob_->job;
        argument = currentJob_->argument;
    }
    beforeJob(job);
    runJob(*job, argument);
    afterJob(job);

    DoneRecords done;
    const FGuard guard(lock_);
    // `cancelCurrent` may have taken the record meanwhile.
    if (JobRecord* record = std::exchange(currentJob_, nullptr))
        done.take(record);
}

uint32_t WorkerThread::run() {
    if (stopping_)
        return 0;
    for (;;) {
        if (paused_ && !stopping_)
            resumeEvent_.wait();
        runNext();
        if (stopping_ && paused_)
            return 0;
        if (!isQueueEmpty())
            continue;
        if (stopping_)
            return 0;
        idle();
        wakeEvent_.wait();
    }
}

void WorkerThread::stop() {
    {
        // Set under the lock: between the flag and the end of the queue a paused thread would take a job.
        DoneRecords done;
        const FGuard guard(lock_);
        stopping_ = true;
        if (currentJob_)
            currentJob_->job->cancel(true);
        while (JobRecord* record = queue_.popFront())
            done.cancel(record);
        wakeEvent_.set();
        resumeEvent_.set();
    }
    if (!join(stopLimit)) {
        // With the lock held the thread can't be ended while it holds it itself. The job goes behind the
        // thread: until then it may still use what `release` frees.
        DoneRecords done;
        const FGuard guard(lock_);
        if (!terminate())
            return;
        if (JobRecord* record = std::exchange(currentJob_, nullptr))
            done.take(record);
    }
    delete this;
}

void WorkerThread::cancelCurrent(bool isFinal) {
    DoneRecords done;
    const FGuard guard(lock_);
    JobRecord* record = std::exchange(currentJob_, nullptr);
    if (!record)
        return;
    record->job->cancel(isFinal);
    if (isFinal)
        done.take(record);
    else
        queue_.append(record);
}

void WorkerThread::pause() {
    const FGuard guard(lock_);
    if (paused_)
        return;
    resumeEvent_.reset();
    paused_ = true;
}

void WorkerThread::resume() {
    const FGuard guard(lock_);
    paused_ = false;
    resumeEvent_.set();
}

} // namespace qorl
