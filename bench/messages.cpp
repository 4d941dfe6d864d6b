#include "foundation/ClassMacros.h"
#include "foundation/messages/EventLoop.h"
#include "foundation/messages/FMessage.h"
#include "foundation/messages/FMessenger.h"
#include "foundation/messages/UpdateHandler.h"
#include "support/Ratio.h"

#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace qorl::bench {
namespace {

class Source : public CmObject {
    QORL_CLASS(Source, CmObject)

public:
    int32_t value = 0;
};

class Heard : public CmObject {
    QORL_CLASS(Heard, CmObject)

public:
    void notify(CmObject* changed, int32_t) override { got = static_cast<Source*>(changed)->value; }
    int32_t handleMessage(FMessage* message) override {
        got += message->isNamed("Moved");
        return handled;
    }
    int32_t got = 0;
};

/// Before its first thread a program locks without atomic operations. All is measured as in one with threads.
[[maybe_unused]] const bool hasThreads = [] {
    std::thread([] {}).join();
    return true;
}();

/// A source and those who hear it, and what makes this thread the GUI thread.
class Subject {
public:
    explicit Subject(int64_t dependents) : heard_(new Heard[static_cast<size_t>(dependents)]) {
        UpdateHandler::instance();
        for (int64_t i = 0; i < dependents; ++i)
            source.addDependent(&heard_[i]);
    }
    ~Subject() { source.removeDependent(nullptr); }

    Source source;

private:
    EventLoop loop_;
    std::unique_ptr<Heard[]> heard_;
};

/// The plain thing that is as safe: functions in a list that is copied under a mutex.
class Signal {
public:
    explicit Signal(int64_t listeners) : got_(static_cast<size_t>(listeners)) {
        for (int32_t& got : got_)
            listeners_.emplace_back([&got](int32_t value) { got = value; });
    }
    void emit(int32_t value) {
        std::vector<std::function<void(int32_t)>> snapshot;
        {
            const std::lock_guard guard(mutex_);
            snapshot = listeners_;
        }
        for (const auto& listener : snapshot)
            listener(value);
    }

private:
    std::vector<int32_t> got_;
    std::mutex mutex_;
    std::vector<std::function<void(int32_t)>> listeners_;
};

void toldAtOnce(benchmark::State& state) {
    Subject subject(state.range(0));
    for (auto _ : state) {
        ++subject.source.value;
        subject.source.changed();
    }
}
void toldAtOnceFloor(benchmark::State& state) {
    Signal signal(state.range(0));
    int32_t value = 0;
    for (auto _ : state)
        signal.emit(++value);
}
QORL_RATIO(toldAtOnce, toldAtOnceFloor, 2.0, 1, 10, 1000);

/// Ten changes that lead to one notification, against ten that are told.
void tenDeferred(benchmark::State& state) {
    Subject subject(state.range(0));
    for (auto _ : state) {
        for (int i = 0; i < 10; ++i) {
            ++subject.source.value;
            subject.source.deferUpdate();
        }
        UpdateHandler::instance()->triggerDeferredUpdates(nullptr);
    }
}
void tenTold(benchmark::State& state) {
    Signal signal(state.range(0));
    int32_t value = 0;
    for (auto _ : state)
        for (int i = 0; i < 10; ++i)
            signal.emit(++value);
}
QORL_RATIO(tenDeferred, tenTold, 0.5, 1, 10, 1000);

/// An object that nobody hears, which is the most common one.
void toldNobody(benchmark::State& state) {
    Source source;
    UpdateHandler::instance();
    for (auto _ : state)
        source.changed();
}
void lockAndUnlock(benchmark::State& state) {
    FLock lock;
    for (auto _ : state) {
        const FGuard guard(lock);
        benchmark::ClobberMemory();
    }
}
QORL_RATIO(toldNobody, lockAndUnlock, 3.0);

void addAndRemove(benchmark::State& state) {
    Subject subject(state.range(0));
    Heard heard;
    for (auto _ : state) {
        subject.source.addDependent(&heard);
        subject.source.removeDependent(&heard);
    }
}
QORL_RATIO(addAndRemove, lockAndUnlock, 10.0, 1, 10);

/// A message on its way: made, posted, delivered, released. Where a lock costs 10 ns the target is 250 ns.
void postAndDeliver(benchmark::State& state) {
    const EventLoop loop;
    FMessenger messenger;
    Heard heard;
    for (auto _ : state) {
        messenger.post(&heard, make<FMessage>("Moved"));
        messenger.deliverPending();
    }
    benchmark::DoNotOptimize(heard.got);
}
QORL_RATIO(postAndDeliver, lockAndUnlock, 25.0);

void postAndDeliverMany(benchmark::State& state) {
    const EventLoop loop;
    FMessenger messenger;
    Heard heard;
    for (auto _ : state) {
        for (int64_t i = 0; i < state.range(0); ++i)
            messenger.post(&heard, make<FMessage>("Moved"));
        messenger.deliverPending();
    }
    benchmark::DoNotOptimize(heard.got);
}
void lockAndUnlockMany(benchmark::State& state) {
    FLock lock;
    for (auto _ : state)
        for (int64_t i = 0; i < state.range(0); ++i) {
            const FGuard guard(lock);
            benchmark::ClobberMemory();
        }
}
QORL_RATIO(postAndDeliverMany, lockAndUnlockMany, 25.0, 1000, 10000);

} // namespace
} // namespace qorl::bench
