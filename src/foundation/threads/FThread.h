#pragma once

#include "platform/Threads.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace qorl {

class FThread;

/// Hears of each thread object.
class ThreadObserver {
public:
    virtual void threadCreated(FThread* thread) = 0;
    virtual void threadDestroyed(FThread* thread) = 0;

protected:
    ~ThreadObserver() = default;
};

/// Null, the default, tells nobody. Not owned.
void setThreadObserver(ThreadObserver* observer);

/// A thread of its own for work that must not hold up the user interface.
///
/// Derive and give it a `run`. The object is owned by its maker, is not counted, and does not stop the thread
/// when it goes: join it first. It reaches the GUI thread by `FMessenger::post` only.
class FThread {
public:
    static constexpr int32_t defaultPriority = 2;
    static constexpr int32_t priorities = 6;
    static constexpr uint32_t noLimit = 0xFFFFFFFF;

    /// Starts nothing.
    explicit FThread(const char* name);
    FThread(const FThread&) = delete;
    FThread& operator=(const FThread&) = delete;
    virtual ~FThread();

    /// An index from 0 (idle) over 2 (normal) to 5 (time critical); kept for the start, applied at once to a
    /// running thread. Indices beyond that are limited.
    virtual void setPriority(int32_t index);
    /// Called on the new thread in front of `run`.
    virtual void threadStarted();
    /// The thread's work. The result is its exit code.
    virtual uint32_t run() = 0;

    /// False when the system gives no thread, and while this one still runs. The thread has its priority
    /// before it calls anything.
    bool start();
    /// True when the thread has ended within that many milliseconds, or was never started.
    bool join(uint32_t milliseconds = noLimit);
    /// Ends a thread that does not answer where it stands, and closes the handle. What that leaves behind is
    /// told at `platform::terminateThread`: its stack, locks that it holds, its unfinished work. False, with
    /// the thread going on, when the system can't end it.
    bool terminate();
    /// Whether the calling thread is this one.
    bool isCurrent() const;

    /// The platform's relative priority that an index stands for in a process of the given class.
    static int32_t relativePriority(int32_t index, platform::PriorityClass processClass);

    bool isStarted() const { return started_; }
    int32_t getPriority() const { return priority_; }
    uint32_t getThreadId() const { return threadId_; }
    platform::ThreadHandle getHandle() const { return handle_; }
    const std::string& getName() const { return name_; }

protected:
    std::atomic<int32_t> priority_{defaultPriority};
    std::atomic<bool> started_{false};
    platform::ThreadHandle handle_ = 0;
    std::atomic<uint32_t> threadId_{0}; ///< 0 until the start

private:
    static uint32_t body(void* argument);

    std::string name_;
    platform::Event resumed_{platform::Reset::manual};
};

} // namespace qorl
