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

enum class State { notStarted, waiting, pausedWhileWaiting, paused, running, pausedWhileRunning };
enum class Action { stop, pauseAndResume, cancelAll };

/// The log of a worker with the jobs a and b for an owner each, of which the first goes on when it is asked
/// to give up for later. But for `stop`, a last job shows that the worker goes on.
std::string logOf(State state, Action action) {
    ThreadLog log;
    ProbeJob a("a", log, Kind::resolute);
    ProbeJob b("b", log);
    ProbeJob last("last", log);
    const Owner owners[2];
    auto* worker = new ProbeWorker(log);
    const bool isWaiting = state == State::waiting || state == State::pausedWhileWaiting;
    if (isWaiting)
        a.mayEnd.set();
    if (state == State::paused)
        worker->pause();
    if (state != State::notStarted)
        worker->addJob(&a, owners[0].face(), 1);
    if (isWaiting)
        a.released.wait();
    if (state == State::pausedWhileWaiting)
        worker->pause();
    if (state == State::running || state == State::pausedWhileRunning)
        a.entered.wait();
    if (state != State::notStarted && state != State::waiting)
        worker->addJob(&b, owners[1].face(), 2);
    if (state == State::pausedWhileRunning)
        worker->pause();
    if (action == Action::pauseAndResume) {
        worker->pause();
        worker->resume();
    } else if (action == Action::cancelAll) {
        worker->cancelAll();
        EXPECT_FALSE(worker->contains(owners[0].face()) || worker->contains(owners[1].face()));
    }
    if (action != Action::stop) {
        worker->addJob(&last, 9);
        a.mayEnd.set();
        last.released.wait();
    }
    worker->stop();
    for (const Owner& owner : owners)
        EXPECT_EQ(owner.references(), 1u);
    return log.text();
}

TEST(PreferWorkerThread, IsStoppedPausedAndCancelledInEveryState) {
    const std::string ran = "run a1, release a, ";
    const std::string bothRun = ran + "run b2, release b, ";
    const std::string restCancelled = "cancel b, release b, ";
    const std::string cancelled = "run a1, cancel a, " + restCancelled + "release a, ";
    const std::string cancelledLater = "run a1, hold a, cancel a, " + restCancelled + "release a, ";
    const struct {
        State state;
        std::string stopped, resumed, cancelled;
    } rows[] = {
        {State::notStarted, "", "", ""},
        {State::waiting, ran, ran, ran},
        {State::pausedWhileWaiting, ran + restCancelled, bothRun, ran + restCancelled},
        {State::paused, "cancel a, release a, " + restCancelled, bothRun,
         "cancel a, release a, " + restCancelled},
        {State::running, cancelled, "run a1, hold a, release a, run b2, release b, ", cancelled},
        {State::pausedWhileRunning, cancelledLater, "run a1, hold a, hold a, release a, run b2, release b, ",
         cancelledLater},
    };
    const std::string last = "run last9, release last, deleted";
    for (const auto& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.state));
        EXPECT_EQ(logOf(row.state, Action::stop), row.stopped + "deleted");
        EXPECT_EQ(logOf(row.state, Action::pauseAndResume), row.resumed + last);
        EXPECT_EQ(logOf(row.state, Action::cancelAll), row.cancelled + last);
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
