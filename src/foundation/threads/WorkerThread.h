#pragma once

#include "foundation/threads/FLock.h"
#include "foundation/threads/FThread.h"
#include "foundation/threads/JobList.h"

namespace qorl {

/// Runs jobs in the order in which they come, on one thread that the first job starts.
///
///     auto* worker = new WorkerThread("Thumbnails", 1);
///     worker->addJob(new ThumbnailJob(file), 0);
///     ...
///     worker->stop(); // deletes it
///
/// Paused, it finishes the job that runs and begins no other one.
class WorkerThread : public FThread, public JobQueue {
public:
    /// How long `stop` waits for the thread, in milliseconds.
    static constexpr uint32_t stopLimit = 1000;

    /// Without a name it is called "Worker Thread". The priority is an index as `FThread::setPriority` takes
    /// it, for the start. No thread runs before the first job.
    explicit WorkerThread(const char* name = nullptr, int32_t priority = defaultPriority);

    /// When the system gives no thread the job waits, and the next one tries again.
    bool addJob(Job* job, int64_t argument) override;

    /// Hooks around each job, on its thread and without a lock. In `afterJob` the job may be gone, if it was
    /// cancelled while it ran.
    virtual void beforeJob(Job* job);
    virtual void afterJob(Job* job);
    /// Called on the thread each time before it waits for a new job.
    virtual void idle();

    /// Waits up to `stopLimit` for the running job, which is asked to give up; a thread that has not ended
    /// then is terminated (see `FThread::terminate`) and its job released. One that even the system can't end
    /// keeps this object and its job for itself, for ever.
    void stop() override;
    void pause() override;
    void resume() override;

    /// Asks the job that runs to give up, if there is one. Final, it is released at once; else it goes behind
    /// all others to be run again. The job itself has to see the request and return.
    void cancelCurrent(bool isFinal);

    /// The thread's work: the jobs.
    uint32_t run() override;

    /// The first one made, while it stands.
    static WorkerThread* first();

protected:
    /// `stop` deletes.
    ~WorkerThread() override;

private:
    void runNext();
    bool isQueueEmpty();

    platform::Event wakeEvent_{platform::Reset::automatic};
    platform::Event resumeEvent_{platform::Reset::manual, platform::Event::State::set};
    FLock lock_{"FLock"}; ///< guards the queue, the current job and the changes of the flags
    JobList queue_;
    bool notStarted_ = true;
    std::atomic<bool> stopping_{false};
    std::atomic<bool> paused_{false};
    int32_t startPriority_;
    JobRecord* currentJob_ = nullptr;
};

} // namespace qorl
