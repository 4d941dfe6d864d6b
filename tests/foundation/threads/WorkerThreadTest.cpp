#include "foundation/threads/WorkerThread.h"

#include "ProbeJob.h"
#include "support/FailingAllocation.h"

#include <gtest/gtest.h>
#include <memory>
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
    void afterJob(Job*) override { hooks += '>'; }
    void idle() override { idling.set(); }

    std::string hooks; ///< of the worker's thread
    platform::Event idling{platform::Reset::automatic};

private:
    ThreadLog& log_;
};

TEST(WorkerThread, HasNoThreadBeforeItsFirstJob) {
    ThreadLog log;
    auto* worker = new ProbeWorker(log, "Reader", 1);
    worker->pause();
    worker->resume();
    worker->cancelCurrent(true);
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

enum class State { notStarted, waiting, running, paused, pausedWhileRunning };

TEST(WorkerThread, StopsInEveryState) {
    struct Row {
        State state;
        const char* log;
    } rows[] = {
        {State::notStarted, "deleted"},
        {State::waiting, "run a1, release a, deleted"},
        {State::running, "run a1, cancel a, cancel b, release b, cancel c, release c, release a, deleted"},
        {State::paused, "cancel a, release a, cancel b, release b, cancel c, release c, deleted"},
        {State::pausedWhileRunning,
         "run a1, cancel a, cancel b, release b, cancel c, release c, release a, deleted"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.state));
        ThreadLog log;
        ProbeJob a("a", log, row.state == State::waiting ? Kind::quick : Kind::obedient);
        ProbeJob b("b", log);
        ProbeJob c("c", log);
        auto* worker = new ProbeWorker(log);
        JobQueue* queue = worker;
        if (row.state == State::paused)
            queue->pause();
        if (row.state != State::notStarted)
            queue->addJob(&a, 1);
        if (row.state == State::waiting) {
            worker->idling.wait();
        } else if (row.state != State::notStarted) {
            queue->addJob(&b, 2);
            queue->addJob(&c, 3);
        }
        if (row.state == State::running || row.state == State::pausedWhileRunning)
            a.entered.wait();
        if (row.state == State::pausedWhileRunning)
            queue->pause();
        queue->stop();
        EXPECT_EQ(log.text(), row.log);
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

TEST(WorkerThread, CancelsTheRunningJobForGoodOrForLater) {
    struct Row {
        bool isFinal;
        const char* log;
    } rows[] = {
        {true, "run a1, cancel a, release a, run b2, release b"},
        {false, "run a1, hold a, run b2, release b, run a1, release a"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.log);
        ThreadLog log;
        ProbeJob a("a", log, Kind::obedient);
        ProbeJob b("b", log);
        auto* worker = new WorkerThread;
        worker->addJob(&a, 1);
        worker->addJob(&b, 2);
        a.entered.wait();
        worker->cancelCurrent(row.isFinal);
        b.released.wait();
        if (!row.isFinal) {
            a.entered.wait();
            a.mayEnd.set();
        }
        a.released.wait();
        worker->stop();
        EXPECT_EQ(log.text(), row.log);
    }
}

TEST(WorkerThread, LetsTheRunningJobEndAndHoldsTheNextWhilePaused) {
    ThreadLog log;
    ProbeJob a("a", log, Kind::obedient);
    ProbeJob b("b", log);
    auto* worker = new WorkerThread;
    worker->addJob(&a, 1);
    a.entered.wait();
    worker->addJob(&b, 2);
    worker->pause();
    worker->pause();
    a.mayEnd.set();
    a.released.wait();
    EXPECT_EQ(log.text(), "run a1, release a") << "not asked to give up";
    worker->resume();
    b.released.wait();
    worker->resume();
    worker->stop();
    EXPECT_EQ(log.text(), "run a1, release a, run b2, release b");
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
