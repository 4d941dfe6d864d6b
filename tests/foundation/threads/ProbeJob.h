#pragma once

#include "foundation/threads/FLock.h"
#include "foundation/threads/JobQueue.h"
#include "platform/Threads.h"

#include <atomic>
#include <string>

namespace qorl::testing {

/// What threads did, in the order in which they did it.
class ThreadLog {
public:
    void add(const std::string& entry) {
        const FGuard guard(lock_);
        text_ += text_.empty() ? entry : ", " + entry;
    }
    std::string text() {
        const FGuard guard(lock_);
        return text_;
    }

private:
    FLock lock_;
    std::string text_;
};

/// Writes down what is done with it. It belongs to the test, not to the thread.
class ProbeJob : public Job {
public:
    enum class Kind {
        quick,    ///< returns at once
        obedient, ///< returns when it is cancelled or `mayEnd` is set
        resolute  ///< the same, but stays when it is cancelled for later
    };

    ProbeJob(std::string name, ThreadLog& log, Kind kind = Kind::quick)
        : name_(std::move(name)), log_(log), kind_(kind) {}

    void run(int64_t argument) override {
        log_.add("run " + name_ + std::to_string(argument));
        entered.set();
        if (kind_ != Kind::quick)
            mayEnd.wait();
    }
    void release() override {
        log_.add("release " + name_);
        released.set();
    }
    void cancel(bool isFinal) override {
        log_.add((isFinal ? "cancel " : "hold ") + name_);
        if (isFinal || kind_ != Kind::resolute)
            mayEnd.set();
    }

    platform::Event entered{platform::Reset::automatic};
    platform::Event mayEnd{platform::Reset::automatic};
    platform::Event released{platform::Reset::automatic};

private:
    std::string name_;
    ThreadLog& log_;
    Kind kind_;
};

/// Never looks whether it was cancelled.
class StubbornJob : public Job {
public:
    void run(int64_t) override {
        entered.set();
        for (;;)
            ++rounds;
    }
    void release() override { ++releases; }
    void cancel(bool) override {}

    platform::Event entered{platform::Reset::manual};
    std::atomic<uint64_t> rounds{0};
    std::atomic<int> releases{0};
};

} // namespace qorl::testing
