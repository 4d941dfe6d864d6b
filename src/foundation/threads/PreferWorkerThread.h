#pragma once

#include "foundation/threads/FThread.h"
#include "foundation/threads/PreferQueue.h"

namespace qorl {

/// Runs jobs that each work for an owner, at the lowest priority; the owner that the user looks at comes
/// first.
///
///     previews->addJob(new PreviewJob(file), file, 0);
///     previews->prefer(selectedFile);
///
/// An owner stands in the queue once; while its job runs it may be queued again. Paused, the running job is
/// asked to give up and no other one begins.
class PreferWorkerThread : public FThread, public JobQueue {
public:
    /// How long `stop` waits for the thread, in milliseconds.
    static constexpr uint32_t stopLimit = 1000;

    /// Without a name it is called "Prefer Worker Thread". No thread runs before the first job.
    explicit PreferWorkerThread(const char* name = nullptr);

    /// Asks the running job to give up and releases it at once, cancels what is queued, and ends a pause. The
    /// thread stays for new jobs.
    virtual void cancelAll();

    /// Queues a job without an owner.
    bool addJob(Job* job, int64_t argument) override;
    /// `cancelAll`, then as `WorkerThread::stop`.
    void stop() override;
    void pause() override;
    void resume() override;

    /// Queues a job for an owner, which is counted until the job has gone. False, and nothing happens, when
    /// the owner stands in the queue, or memory ran out: the reference on the job stays with the caller.
    bool addJob(Job* job, FInterface* owner, int64_t argument);

    bool contains(const FInterface* owner) { return queue_.contains(owner); }
    /// Lets the owner's queued job run next. False when there is none.
    bool prefer(const FInterface* owner) { return queue_.prefer(owner); }

    /// The thread's work: the jobs.
    uint32_t run() override;

protected:
    /// `stop` deletes.
    ~PreferWorkerThread() override;

private:
    enum class Found : bool { nothing, job };
    Found runNext();
    void cancelQueued(DoneRecords& done);
    void giveBackCurrent(DoneRecords& done);

    // The queue's lock guards the current record and the changes of the flags too.
    platform::Event wakeEvent_{platform::Reset::automatic};
    PreferQueue queue_;
    bool notStarted_ = true;
    std::atomic<bool> stopping_{false};
    std::atomic<bool> paused_{false};
    JobRecord* currentRecord_ = nullptr;
    FInterface* currentOwner_ = nullptr; ///< that of the record, which counts it
};

} // namespace qorl
