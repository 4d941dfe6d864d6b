#pragma once

#include <cstdint>

namespace qorl {

/// A piece of work for a thread that runs jobs.
///
/// Whoever gives a job to a thread gives a reference with it. The thread gives it back by `release`, once the
/// job has run or was cancelled for good. The latter may be while it still runs (`PreferWorkerThread` does
/// so at each cancelling, `WorkerThread` in `cancelCurrent`): a job that can be cancelled there holds a
/// reference on itself during `run`.
class Job {
public:
    virtual ~Job() = default;

    /// The work, on the job-running thread and without any lock held. It looks often whether it was
    /// cancelled: a thread that is stopped waits a second for it, then the job is ended with the thread. A
    /// std::bad_alloc that it lets out ends it as a return does; whoever is to hear of that is told before.
    virtual void run(int64_t argument) = 0;

    /// Gives one reference back, with the queue's lock held. So the end of a job must neither wait for
    /// another thread nor take a lock under which somebody asks the queue. The last reference on a message
    /// target, for one, takes the lock under which messages are delivered: what a job works for goes with it
    /// as its owner, or with the end of `run`.
    virtual void release() = 0;

    /// Asks the job to give up; `isFinal` says that it will not be run again. From any thread, with the
    /// queue's lock held: it only notes the request and must not wait for the job.
    virtual void cancel(bool isFinal) = 0;
};

/// Runs a job. The lack of memory that it lets out ends here, with a line in the debug output: nobody on the
/// thread can do more, and the next job may find some.
void runJob(Job& job, int64_t argument);

/// How work is given to a thread that runs jobs one after another, of whatever kind.
///
/// All operations may be called from any thread, `stop` not from the one that runs the jobs.
class JobQueue {
public:
    /// Queues a job with a word that its `run` gets. True unless memory ran out: then the reference stays
    /// with the caller. A thread that is being stopped cancels the job at once.
    virtual bool addJob(Job* job, int64_t argument) = 0;

    /// Cancels everything, ends the thread and deletes it. Nobody may touch it afterwards.
    virtual void stop() = 0;

    virtual void pause() = 0;
    virtual void resume() = 0;

protected:
    ~JobQueue() = default;
};

} // namespace qorl
