#include "foundation/threads/PreferWorkerThread.h"

#include "ProbeJob.h"
#include "foundation/CmObject.h"
#include "support/FailingAllocation.h"

#include <qorl/Ref.h>

#include <gtest/gtest.h>
#include <memory>
#include <thread>

namespace qorl {
namespace {

using testing::ProbeJob;
using testing::StubbornJob;
using testing::ThreadLog;
using Kind = ProbeJob::Kind;

class ProbeWorker : public PreferWorkerThread {
public:
    explicit ProbeWorker(ThreadLog& log) : log_(log) {}
    ~ProbeWorker() override { log_.add("deleted"); }

private:
    ThreadLog& log_;
};

/// What a job works for.
struct Owner {
    Ref<CmObject> object = make<CmObject>();

    FInterface* face() const { return static_cast<FDependent*>(object.get()); }
    uint32_t references() const {
        object->addRef();
        return object->release();
    }
};

/// A queue of records that nobody runs.
struct Line {
    JobRecord records[3];
    Owner owners[3];
    PreferQueue queue;

    Line() {
        for (int i = 0; i < 3; ++i) {
            records[i].argument = i;
            queue.append(&records[i], owners[i].face());
        }
    }
    /// What is taken from one end until it is empty, as the numbers of the records.
    std::string drain(JobRecord* (PreferQueue::*pop)(FInterface*&)) {
        std::string text;
        FInterface* owner = nullptr;
        while (const JobRecord* record = (queue.*pop)(owner)) {
            EXPECT_EQ(owner, owners[record->argument].face()) << "the two lists fell out of step";
            text += std::to_string(record->argument);
        }
        EXPECT_EQ(owner, nullptr);
        return text;
    }
};

TEST(PreferQueue, IsAnOrderThatCanBeChangedInFront) {
    Line line;
    EXPECT_EQ(line.drain(&PreferQueue::popFront), "012");
    line.queue.append(&line.records[0], line.owners[0].face());
    line.queue.prepend(&line.records[1], line.owners[1].face());
    line.queue.prepend(&line.records[2], line.owners[2].face());
    EXPECT_TRUE(line.queue.contains(line.owners[1].face()));
    EXPECT_EQ(line.drain(&PreferQueue::popBack), "012");
    EXPECT_FALSE(line.queue.contains(line.owners[1].face()));
}

TEST(PreferQueue, PutsThePreferredOwnerInFront) {
    const Owner stranger;
    for (const auto& [preferred, order] : {std::pair{0, "012"}, {1, "102"}, {2, "201"}}) {
        Line line;
        EXPECT_TRUE(line.queue.prefer(line.owners[preferred].face()));
        EXPECT_FALSE(line.queue.prefer(stranger.face()));
        EXPECT_FALSE(line.queue.prefer(nullptr));
        EXPECT_EQ(line.drain(&PreferQueue::popFront), order);
        EXPECT_FALSE(line.queue.prefer(line.owners[preferred].face())) << "in an empty queue";
    }
}

TEST(PreferWorkerThread, RunsPreferredOwnersFirstAndLetsEachWaitOnce) {
    ThreadLog log;
    ProbeJob a("a", log);
    ProbeJob b("b", log);
    ProbeJob c("c", log);
    ProbeJob d("d", log);
    ProbeJob e("e", log);
    const Owner owners[3];
    auto* worker = new PreferWorkerThread;
    EXPECT_EQ(worker->getName(), "Prefer Worker Thread");
    EXPECT_FALSE(worker->isStarted());
    worker->setPriority(4);
    worker->pause();
    EXPECT_TRUE(worker->addJob(&a, owners[0].face(), 1));
    EXPECT_EQ(worker->getPriority(), 0) << "it always runs at the lowest";
    EXPECT_TRUE(worker->addJob(&b, owners[1].face(), 2));
    EXPECT_TRUE(worker->addJob(&c, owners[2].face(), 3));
    EXPECT_FALSE(worker->addJob(&c, owners[1].face(), 4));
    EXPECT_EQ(owners[1].references(), 2u) << "a refused owner isn't counted";
    EXPECT_TRUE(worker->prefer(owners[2].face()));
    EXPECT_TRUE(worker->addJob(&d, 5));
    EXPECT_TRUE(worker->addJob(&e, 6)) << "no owner is never refused";
    EXPECT_EQ(log.text(), "");
    worker->resume();
    e.released.wait();
    worker->stop();
    EXPECT_EQ(log.text(), "run c3, release c, run a1, release a, run b2, release b, run d5, release d, "
                          "run e6, release e");
    for (const Owner& owner : owners)
        EXPECT_EQ(owner.references(), 1u);
}

TEST(PreferWorkerThread, QueuesAnOwnerAgainWhileItsJobRuns) {
    ThreadLog log;
    ProbeJob a("a", log, Kind::obedient);
    ProbeJob b("b", log);
    const Owner owner;
    auto* worker = new PreferWorkerThread;
    EXPECT_TRUE(worker->addJob(&a, owner.face(), 1));
    a.entered.wait();
    EXPECT_FALSE(worker->contains(owner.face()));
    EXPECT_TRUE(worker->addJob(&b, owner.face(), 2));
    EXPECT_TRUE(worker->contains(owner.face()));
    EXPECT_TRUE(worker->prefer(owner.face()));
    EXPECT_EQ(owner.references(), 3u);
    a.mayEnd.set();
    b.released.wait();
    worker->stop();
    EXPECT_EQ(log.text(), "run a1, release a, run b2, release b");
    EXPECT_EQ(owner.references(), 1u);
}

TEST(PreferWorkerThread, AsksTheRunningJobToGiveUpWhenPaused) {
    ThreadLog log;
    ProbeJob a("a", log, Kind::obedient);
    ProbeJob b("b", log);
    ProbeJob c("c", log);
    auto* worker = new PreferWorkerThread;
    worker->addJob(&a, 1);
    a.entered.wait();
    worker->addJob(&b, 2);
    worker->pause();
    a.released.wait();
    worker->addJob(&c, 3);
    EXPECT_EQ(log.text(), "run a1, hold a, release a");
    worker->resume();
    c.released.wait();
    worker->stop();
    EXPECT_EQ(log.text(), "run a1, hold a, release a, run b2, release b, run c3, release c");
}

TEST(PreferWorkerThread, CancelsAllAndGoesOnWithNewJobs) {
    ThreadLog log;
    ProbeJob a("a", log, Kind::obedient);
    ProbeJob b("b", log);
    ProbeJob c("c", log);
    const Owner owners[2];
    auto* worker = new PreferWorkerThread;
    worker->addJob(&a, owners[0].face(), 1);
    a.entered.wait();
    worker->addJob(&b, owners[1].face(), 2);
    worker->cancelAll();
    EXPECT_EQ(log.text(), "run a1, cancel a, cancel b, release b, release a");
    for (const Owner& owner : owners)
        EXPECT_EQ(owner.references(), 1u);
    worker->pause();
    worker->cancelAll();
    worker->addJob(&c, 3);
    c.released.wait();
    worker->stop();
    EXPECT_EQ(log.text(), "run a1, cancel a, cancel b, release b, release a, run c3, release c")
        << "the pause has ended too";
}

TEST(PreferWorkerThread, RefusesAJobThatItFindsNoMemoryFor) {
    failEachAllocation([](FailingAllocation& allocation) {
        ThreadLog log;
        ProbeJob a("a", log);
        ProbeJob b("b", log);
        const Owner owner;
        auto* worker = new PreferWorkerThread;
        const bool added = allocation.during([&] { return worker->addJob(&a, owner.face(), 1); });
        EXPECT_TRUE(worker->addJob(&b, 2));
        b.released.wait();
        worker->stop();
        EXPECT_EQ(log.text(), added ? "run a1, release a, run b2, release b" : "run b2, release b");
        EXPECT_EQ(owner.references(), 1u);
    });
}

/// Something whose end waits for another thread, which asks the queue.
class AskedOwner : public CmObject {
public:
    explicit AskedOwner(PreferWorkerThread* worker) : worker_(worker) {}
    ~AskedOwner() override {
        const auto answered = std::make_shared<platform::Event>(platform::Reset::manual);
        std::thread asker([answered, worker = worker_] {
            worker->contains(nullptr);
            answered->set();
        });
        const bool isFree = answered->wait(2000);
        EXPECT_TRUE(isFree) << "released under the queue's lock";
        isFree ? asker.join() : asker.detach();
    }

private:
    PreferWorkerThread* worker_;
};

TEST(PreferWorkerThread, ReleasesOwnersBehindItsLock) {
    ThreadLog log;
    ProbeJob ran("a", log);
    ProbeJob running("b", log, Kind::obedient);
    ProbeJob queued("c", log);
    auto* worker = new PreferWorkerThread;
    const auto add = [worker](ProbeJob& job) {
        const auto owner = make<AskedOwner>(worker);
        EXPECT_TRUE(worker->addJob(&job, static_cast<FDependent*>(owner.get()), 0));
    };
    add(ran);
    add(running);
    running.entered.wait();
    add(queued);
    worker->cancelAll();
    worker->stop();
    EXPECT_EQ(log.text(), "run a0, release a, run b0, cancel b, cancel c, release c, release b");
}

enum class State { notStarted, waiting, running, paused };

TEST(PreferWorkerThread, StopsInEveryState) {
    struct Row {
        State state;
        const char* log;
    } rows[] = {
        {State::notStarted, "deleted"},
        {State::waiting, "run a1, release a, deleted"},
        {State::running, "run a1, cancel a, cancel b, release b, release a, deleted"},
        {State::paused, "cancel a, release a, cancel b, release b, deleted"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.state));
        ThreadLog log;
        ProbeJob a("a", log, row.state == State::waiting ? Kind::quick : Kind::obedient);
        ProbeJob b("b", log);
        const Owner owners[2];
        auto* worker = new ProbeWorker(log);
        JobQueue* queue = worker;
        if (row.state == State::paused)
            queue->pause();
        if (row.state != State::notStarted)
            worker->addJob(&a, owners[0].face(), 1);
        if (row.state == State::running || row.state == State::paused)
            worker->addJob(&b, owners[1].face(), 2);
        if (row.state == State::running)
            a.entered.wait();
        if (row.state == State::waiting)
            a.released.wait();
        queue->stop();
        EXPECT_EQ(log.text(), row.log);
        for (const Owner& owner : owners)
            EXPECT_EQ(owner.references(), 1u);
    }
}

TEST(PreferWorkerThread, EndsAJobThatDoesNotAnswerAndGivesItBackOnce) {
    StubbornJob job;
    ThreadLog log;
    const Owner owner;
    auto* worker = new ProbeWorker(log);
    worker->addJob(&job, owner.face(), 0);
    job.entered.wait();
    worker->stop();
    const uint64_t rounds = job.rounds;
    EXPECT_EQ(job.releases, 1);
    EXPECT_EQ(owner.references(), 1u);
    EXPECT_EQ(log.text(), "deleted");
    EXPECT_EQ(job.rounds, rounds) << "it still runs";
}

} // namespace
} // namespace qorl
