#include "foundation/threads/WorkerThread.h"

#include "ProbeJob.h"
#include "foundation/threads/PreferWorkerThread.h"
#include "support/DebugOutput.h"
#include "support/FailingAllocation.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace qorl {
namespace {

using testing::ProbeJob;
using testing::StubbornJob;
using testing::ThreadLog;
using Kind = ProbeJob::Kind;

class ProbeWorker : public WorkerThread {
public:
    explicit ProbeWorker(ThreadLog& log, const char* name = nullptr, int32_t priority = defaultPriority)
        : WorkerThread(name, priority), log_(log) {}
    ~ProbeWorker() override { log_.add("deleted"); }

    void beforeJob(Job*) override { hooks += '<'; }
    void afterJob(Job*) override {
        hooks += '>';
        ended.set();
    }
    void idle() override { idling.set(); }

    std::string hooks; ///< of the worker's thread
    platform::Event idling{platform::Reset::automatic};
    platform::Event ended{platform::Reset::automatic}; ///< a job did

private:
    ThreadLog& log_;
};

TEST(WorkerThread, HasNoThreadBeforeItsFirstJob) {
    ThreadLog log;
    auto* worker = new ProbeWorker(log, "Reader", 1);
    EXPECT_EQ(worker->getHandle(), 0u);
    EXPECT_FALSE(worker->isStarted());

    ProbeJob job("a", log);
    EXPECT_FALSE(worker->addJob(nullptr, 0));
    EXPECT_TRUE(worker->addJob(&job, 7));
    worker->idling.wait();
    EXPECT_TRUE(worker->isStarted());
    EXPECT_EQ(worker->getName(), "Reader");
    EXPECT_EQ(worker->getPriority(), 1);
    EXPECT_EQ(worker->hooks, "<>");
    worker->stop();
    EXPECT_EQ(log.text(), "run a7, release a, deleted");
}

enum class State {
    notStarted,
    waiting,
    pausedWhileWaiting,
    paused,
    running,
    pausedWhileRunning,
    endedInPause ///< the first job did, by itself
};
enum class Action { stop, pauseAndResume, cancelForGood, cancelForLater };

/// A worker with the jobs a, b and c, of which the first runs until it is told.
struct WorkerIn {
    explicit WorkerIn(State given) : state(given) {
        const bool isWaiting = state == State::waiting || state == State::pausedWhileWaiting;
        if (isWaiting)
            a.mayEnd.set();
        if (state == State::paused)
            worker->pause();
        if (state == State::notStarted)
            return;
        worker->addJob(&a, 1);
        if (isWaiting)
            worker->idling.wait();
        if (state == State::pausedWhileWaiting)
            worker->pause();
        if (state >= State::running)
            a.entered.wait();
        if (state == State::waiting)
            return;
        worker->addJob(&b, 2);
        worker->addJob(&c, 3);
        if (state >= State::pausedWhileRunning)
            worker->pause();
        if (state == State::endedInPause) {
            a.mayEnd.set();
            a.released.wait();
        }
    }
    bool isRunning() const { return state == State::running || state == State::pausedWhileRunning; }
    /// The log of it all; but for `stop`, of a last job too, which shows that the worker goes on.
    std::string logAfter(Action action) {
        if (action == Action::stop) {
            worker->stop();
            return log.text();
        }
        if (action == Action::pauseAndResume) {
            worker->pause();
            worker->pause();
            worker->resume();
        } else {
            worker->cancelCurrent(action == Action::cancelForGood);
            if (isRunning())
                worker->ended.wait();
            if (state == State::pausedWhileRunning) {
                EXPECT_EQ(log.text(),
                          action == Action::cancelForGood ? "run a1, cancel a, release a" : "run a1, hold a")
                    << "the next one waits for the end of the pause";
            }
        }
        worker->addJob(&last, 9);
        a.mayEnd.set();
        worker->resume();
        worker->resume();
        last.released.wait();
        worker->stop();
        return log.text();
    }

    State state;
    ThreadLog log;
    ProbeJob a{"a", log, Kind::obedient};
    ProbeJob b{"b", log};
    ProbeJob c{"c", log};
    ProbeJob last{"last", log};
    ProbeWorker* worker = new ProbeWorker(log); ///< `stop` deletes it.
};

TEST(WorkerThread, IsStoppedPausedAndCancelledInEveryState) {
    const std::string ran = "run a1, release a, ";
    const std::string allRun = ran + "run b2, release b, run c3, release c, ";
    const std::string restCancelled = "cancel b, release b, cancel c, release c, ";
    const std::string stopped = "run a1, cancel a, " + restCancelled + "release a, ";
    const std::string cancelled = "run a1, cancel a, release a, run b2, release b, run c3, release c, ";
    const std::string later = "run a1, hold a, run b2, release b, run c3, release c, " + ran;
    const struct {
        State state;
        std::string logs[4]; ///< by action
    } rows[] = {
        {State::notStarted, {"", "", "", ""}},
        {State::waiting, {ran, ran, ran, ran}},
        {State::pausedWhileWaiting, {ran + restCancelled, allRun, allRun, allRun}},
        {State::paused, {"cancel a, release a, " + restCancelled, allRun, allRun, allRun}},
        {State::running, {stopped, allRun, cancelled, later}},
        {State::pausedWhileRunning, {stopped, allRun, cancelled, later}},
        {State::endedInPause, {ran + restCancelled, allRun, allRun, allRun}},
    };
    for (const auto& row : rows)
        for (size_t action = 0; action < 4; ++action) {
            SCOPED_TRACE(::testing::Message()
                         << "state " << static_cast<int>(row.state) << ", action " << action);
            EXPECT_EQ(WorkerIn(row.state).logAfter(static_cast<Action>(action)),
                      row.logs[action] + (action ? "run last9, release last, deleted" : "deleted"));
        }
}

TEST(WorkerThread, EndsAJobThatDoesNotAnswerAndGivesItBackOnce) {
    StubbornJob job;
    ThreadLog log;
    auto* worker = new ProbeWorker(log);
    worker->addJob(&job, 0);
    job.entered.wait();
    worker->stop();
    const uint64_t rounds = job.rounds;
    EXPECT_EQ(job.releases, 1);
    EXPECT_EQ(log.text(), "deleted");
    EXPECT_EQ(job.rounds, rounds) << "it still runs";
}

TEST(WorkerThread, CancelsWhatAJobQueuesWhileTheThreadStops) {
    struct Successor : ProbeJob {
        using ProbeJob::ProbeJob;
        void run(int64_t argument) override {
            ProbeJob::run(argument);
            EXPECT_TRUE(queue->addJob(next, 2));
        }
        JobQueue* queue = nullptr;
        Job* next = nullptr;
    };
    ThreadLog log;
    ProbeJob b("b", log);
    Successor a("a", log, Kind::obedient);
    auto* worker = new WorkerThread;
    a.queue = worker;
    a.next = &b;
    worker->addJob(&a, 1);
    a.entered.wait();
    worker->stop();
    EXPECT_EQ(log.text(), "run a1, cancel a, cancel b, release b, release a");
}

TEST(WorkerThread, RunsEachJobOfManyThreadsOnce) {
    constexpr int threads = 8;
    constexpr int jobs = 200;
    struct Counter : Job {
        void run(int64_t argument) override { sum += argument; }
        void release() override {
            if (++releases == threads * jobs)
                done.set();
        }
        void cancel(bool) override {}
        int64_t sum = 0; // of one thread
        int releases = 0;
        platform::Event done{platform::Reset::manual};
    } counter;
    auto* worker = new WorkerThread;
    EXPECT_EQ(worker->getName(), "Worker Thread");
    std::vector<std::thread> adders;
    adders.reserve(threads);
    for (int i = 0; i < threads; ++i)
        adders.emplace_back([&] {
            for (int job = 1; job <= jobs; ++job) {
                worker->addJob(&counter, job);
                if (job % 50 == 0)
                    worker->pause();
                if (job % 50 == 10)
                    worker->resume();
            }
            worker->resume();
        });
    for (std::thread& adder : adders)
        adder.join();
    counter.done.wait();
    worker->stop();
    EXPECT_EQ(counter.sum, threads * jobs * (jobs + 1) / 2);
    EXPECT_EQ(counter.releases, threads * jobs);
}

TEST(WorkerThread, DropsAJobThatItFindsNoMemoryForAndGoesOn) {
    failEachAllocation([](FailingAllocation& allocation) {
        ThreadLog log;
        ProbeJob a("a", log);
        ProbeJob b("b", log);
        auto* worker = new WorkerThread;
        const bool added = allocation.during([&] { return worker->addJob(&a, 1); });
        EXPECT_TRUE(worker->addJob(&b, 2));
        b.released.wait();
        worker->stop();
        EXPECT_EQ(log.text(), added ? "run a1, release a, run b2, release b" : "run b2, release b");
    });
}

TEST(WorkerThread, GoesOnBehindAJobThatFoundNoMemory) {
    struct Starving : ProbeJob {
        using ProbeJob::ProbeJob;
        void run(int64_t) override { throw std::bad_alloc(); }
    };
    const DebugOutput said;
    ThreadLog log;
    Starving a("a", log);
    ProbeJob b("b", log);
    JobQueue* const queues[] = {new WorkerThread, new PreferWorkerThread};
    for (JobQueue* queue : queues) {
        queue->addJob(&a, 1);
        queue->addJob(&b, 2);
        b.released.wait();
        queue->stop();
    }
    EXPECT_EQ(log.text(), "release a, run b2, release b, release a, run b2, release b");
    EXPECT_EQ(said.text, "a job ended: no memory\na job ended: no memory\n");
}

TEST(WorkerThread, KnowsTheFirstOneWhileItStands) {
    ThreadLog log;
    EXPECT_EQ(WorkerThread::first(), nullptr);
    auto* a = new ProbeWorker(log);
    auto* b = new ProbeWorker(log);
    EXPECT_EQ(WorkerThread::first(), a);
    b->stop();
    EXPECT_EQ(WorkerThread::first(), a);
    a->stop();
    EXPECT_EQ(WorkerThread::first(), nullptr);
}

} // namespace
} // namespace qorl
