#include "foundation/containers/Elements.h"
#include "foundation/threads/FThread.h"
#include "platform/System.h"
#include "platform/Threads.h"
#include "support/TypeNames.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

namespace qorl {
namespace {

struct Visit {
    int32_t number;
    std::thread::id thread;
};

class Collector : public CmVisitor {
public:
    bool visit(CmObject* element) override {
        const std::lock_guard guard(mutex_);
        visits.push_back({Number::of(element), std::this_thread::get_id()});
        return Number::of(element) != stopAt;
    }
    Numbers numbers() const {
        Numbers seen;
        for (const Visit& visit : visits)
            seen.push_back(visit.number);
        return seen;
    }

    std::vector<Visit> visits;
    int32_t stopAt = -1;

private:
    std::mutex mutex_;
};

template <typename Container>
class ForEachParallel : public ::testing::Test {
protected:
    void SetUp() override {
        container.setOwnership(Ownership::adopt);
        addNumbers(container, numbersBelow(103));
    }
    Container container;
};

TYPED_TEST_SUITE(ForEachParallel, AllContainers, testing::TypeNames);

/// What became of the threads beside the calling one.
class Observer : public ThreadObserver {
public:
    Observer() { setThreadObserver(this); }
    ~Observer() { setThreadObserver(nullptr); }
    void threadCreated(FThread* thread) override {
        ++created;
        EXPECT_EQ(thread->getName(), "ConcurrencyIteratorThread");
    }
    void threadDestroyed(FThread* thread) override {
        ++destroyed;
        EXPECT_TRUE(thread->join(0)) << "it still runs";
    }
    int32_t created = 0;
    int32_t destroyed = 0;
};

TYPED_TEST(ForEachParallel, VisitsEachElementOnce) {
    const Numbers all = numbersOf(this->container);
    const int32_t processors = std::min(platform::getProcessorCount(), 103);
    for (const auto& [asked, threads] : {std::pair{INT32_MIN, processors},
                                         {-1, processors},
                                         {0, processors},
                                         {1, 1},
                                         {2, 2},
                                         {7, 7},
                                         {103, 103}}) {
        SCOPED_TRACE(asked);
        const Observer observer;
        Collector collector;
        EXPECT_TRUE(this->container.forEachParallel(collector, asked, 1));
        Numbers seen = collector.numbers();
        EXPECT_TRUE(std::is_permutation(seen.begin(), seen.end(), all.begin(), all.end()));
        EXPECT_EQ(observer.created, threads - 1);
        EXPECT_EQ(observer.destroyed, threads - 1);
    }
}

TYPED_TEST(ForEachParallel, StaysOnTheCallingThreadWithTooFewElements) {
    struct Case {
        int32_t threads, minimum;
    };
    for (const Case& c : {Case{8, 104}, Case{8, 103}, Case{1, 1}, Case{1000, 1000}, Case{104, 0},
                          Case{INT32_MAX, -5}, Case{INT32_MAX, 52}}) {
        Collector collector;
        EXPECT_TRUE(this->container.forEachParallel(collector, c.threads, c.minimum));
        EXPECT_EQ(collector.numbers(), numbersOf(this->container)) << "in order";
        for (const Visit& visit : collector.visits)
            EXPECT_EQ(visit.thread, std::this_thread::get_id());
    }
    TypeParam empty;
    Collector nothing;
    EXPECT_TRUE(empty.forEachParallel(nothing, 1'000'000, 0)) << "and starts no thread for nothing";
    EXPECT_TRUE(nothing.visits.empty());
}

TYPED_TEST(ForEachParallel, EndsInOrderOnOneThread) {
    Collector stopping;
    const Numbers all = numbersOf(this->container);
    stopping.stopAt = all[40];
    EXPECT_FALSE(this->container.forEachParallel(stopping, 1, 1));
    EXPECT_EQ(stopping.numbers(), Numbers(all.begin(), all.begin() + 41));
}

enum class Where { here, elsewhere };

/// Tells of the first `done` that a thread asks behind the visit with which it stops: the others must have
/// been told by then.
class WatchedIterator : public CmIterator {
public:
    WatchedIterator(const CmArray& array, platform::Event& told) : walk_(array), told_(told) {}
    bool done() const override {
        if (stopsHere)
            told_.set();
        return walk_.done();
    }
    CmObject* next() override { return walk_.next(); }
    CmObject* previous() override { return walk_.previous(); }
    CmObject* current() const override { return walk_.current(); }
    void first() override { walk_.first(); }
    void last() override { walk_.last(); }
    static inline thread_local bool stopsHere = false;

private:
    CmArrayIterator walk_;
    platform::Event& told_;
};

class WatchedArray : public CmArray {
public:
    using CmArray::CmArray;
    CmIterator* newIterator() const override { return new WatchedIterator(*this, told); }
    mutable platform::Event told{platform::Reset::manual};
};

/// Goes on in none of its threads before all are under way.
class Gathering : public CmVisitor {
public:
    Gathering(Where where, int32_t threads) : where_(where), left_(threads) {}

protected:
    /// Whether this is the thread, or one of those, in which something happens.
    bool gather() {
        if (--left_ == 0)
            underWay_.set();
        underWay_.wait();
        return (std::this_thread::get_id() == caller_) == (where_ == Where::here);
    }

private:
    Where where_;
    std::thread::id caller_ = std::this_thread::get_id();
    std::atomic<int32_t> left_;
    platform::Event underWay_{platform::Reset::manual};
};

/// One thread stops at its first element; the others stay in theirs until it has left.
class StopsAmongAll : public Gathering {
public:
    StopsAmongAll(Where where, int32_t threads, platform::Event& told)
        : Gathering(where, threads), told_(told) {}
    bool visit(CmObject*) override {
        ++visits;
        if (gather() && !isStopping_.exchange(true)) {
            WatchedIterator::stopsHere = true;
            return false;
        }
        if (!told_.wait(2000)) // a walk that asks no more has gone long before
            told_.set();
        return true;
    }
    std::atomic<int32_t> visits{0};

private:
    std::atomic<bool> isStopping_{false};
    platform::Event& told_;
};

TEST(ForEachParallelShares, EndAllAtTheirNextElement) {
    for (const Where where : {Where::elsewhere, Where::here}) {
        SCOPED_TRACE(where == Where::here ? "stopped by the caller" : "stopped by another thread");
        WatchedArray array(0, CmArray::doubling, Ownership::adopt);
        addNumbers(array, numbersBelow(103));
        constexpr int32_t threads = 4;
        StopsAmongAll visitor(where, threads, array.told);
        EXPECT_FALSE(array.forEachParallel(visitor, threads, 1));
        EXPECT_EQ(visitor.visits, threads);
        WatchedIterator::stopsHere = false;
    }
}

/// Throws on the calling thread, or on all others, and lets the rest go on.
class Throws : public Gathering {
public:
    Throws(Where where, int32_t threads, std::atomic<int32_t>& inside)
        : Gathering(where, threads), inside_(inside) {}
    bool visit(CmObject*) override {
        ++inside_;
        const bool isToThrow = gather();
        --inside_;
        if (isToThrow)
            throw std::runtime_error("visit");
        return true;
    }

private:
    std::atomic<int32_t>& inside_;
};

TYPED_TEST(ForEachParallel, LeavesNoThreadBehindWhenAVisitorThrows) {
    std::atomic<int32_t> inside{0};
    for (int32_t round = 0; round < 20; ++round) {
        Throws visitor(round % 2 ? Where::here : Where::elsewhere, 4, inside);
        EXPECT_THROW(this->container.forEachParallel(visitor, 4, 1), std::runtime_error);
        EXPECT_EQ(inside, 0) << "no thread uses the visitor any more";
    }
}

TEST(ForEachParallelShares, AreAsLargeAsAskedForAndTheRestIsTheCallers) {
    struct Case {
        int32_t count, threads, minimum, expected;
    };
    // The number of threads goes down until each has the minimum.
    for (const Case& c : {Case{103, 7, 1, 7}, Case{103, 7, 14, 7}, Case{103, 7, 15, 6}, Case{10, 4, 3, 3},
                          Case{11, 4, 3, 3}, Case{10, 4, 0, 4}, Case{4, 4, 0, 4}, Case{100, 100, 51, 1}}) {
        SCOPED_TRACE(::testing::Message() << c.count << " by " << c.threads << ", at least " << c.minimum);
        CmArray array(0, CmArray::doubling, Ownership::adopt);
        addNumbers(array, numbersBelow(c.count));
        Collector collector;
        EXPECT_TRUE(array.forEachParallel(collector, c.threads, c.minimum));
        Numbers here;
        for (const Visit& visit : collector.visits)
            if (visit.thread == std::this_thread::get_id())
                here.push_back(visit.number);
        const Numbers all = numbersOf(array);
        EXPECT_EQ(here, Numbers(all.begin() + (c.expected - 1) * (c.count / c.expected), all.end()));
        EXPECT_EQ(collector.visits.size(), all.size());
    }
}

} // namespace
} // namespace qorl
