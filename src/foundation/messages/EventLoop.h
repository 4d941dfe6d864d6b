#pragma once

#include "foundation/CmObject.h"
#include "foundation/threads/FLock.h"

#include <qorl/Ref.h>

#include <atomic>
#include <vector>

namespace qorl {

/// The heart of the GUI thread: takes events from the platform and, whenever there are none, lets posted
/// messages and then deferred changes run.
///
/// One at a time, made by whoever owns the program's life and reached by everyone through `current`. A nested
/// loop, such as one that follows the mouse or a modal dialog, is just a further `while` around `step`:
///
///     while (dialog.isOpen() && loop->step() != EventLoop::Step::ended) {}
///
/// Threading: GUI thread, but for idle clients and `releaseLater`, which any thread may use that ends before
/// the loop does. `current` and `wake` are safe at any time.
class EventLoop {
public:
    /// Idle clients are called about every ten milliseconds.
    static constexpr uint32_t idlePeriod = 10;

    /// What a step found to do.
    enum class Step {
        event, ///< An event was dispatched.
        idle,  ///< There was none: messages and deferred changes ran, and idle clients or some time passed.
        ended  ///< The loop was stopped, or no event can ever come (virtual time only).
    };

    /// Hears the time in each idle step, before the idle clients.
    class TimeListener {
    public:
        virtual void timePassed(uint32_t ticks) = 0;
        /// Whether time has to be told soon; without that the loop sleeps until something happens.
        virtual bool isWaitingForTime() const = 0;

    protected:
        ~TimeListener() = default;
    };

    EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;
    ~EventLoop();

    /// Null before the first and after the last loop.
    static EventLoop* current();
    /// Whether the calling thread is the GUI thread.
    static bool isGuiThread() { return guiThread_.load(std::memory_order_relaxed) == &threadMark_; }
    /// Ends the GUI thread's wait, because something was queued for it. Any thread.
    static void wake() {
        if (!isGuiThread())
            wakeGuiThread();
    }

    /// Dispatches one waiting event; without one, delivers what was posted and deferred. True for an event.
    bool processEvent();
    /// Dispatches all waiting events, then delivers what was posted and deferred. Events that keep others
    /// coming are left to the next step after a second.
    void flushEvents();

    /// `processEvent`; if there was no event, runs the idle step when it is due and else waits for an event
    /// or for that time.
    Step step();
    /// Steps until `stop` is called. A loop that was stopped doesn't start again.
    void run();
    void stop() { stopped_ = true; }
    bool isStopped() const { return stopped_; }

    enum class Pace { none, sleepWhenEarly };
    /// Tells the time and the idle clients, then releases what was handed in. Nothing within itself, where a
    /// nested loop waits for events alone, or once stopped. With `sleepWhenEarly` it first gives up five
    /// milliseconds if it is far from due.
    void idle(Pace pace = Pace::none);

    /// A client hears the message "Idle" until it is removed; it may remove and release itself meanwhile. Not
    /// counted. False when memory is short.
    bool addIdleClient(CmObject* client);
    void removeIdleClient(CmObject* client);

    /// Releases `object` at the end of the next idle step: for objects that can't go while they are in use.
    /// When memory is short it is never released, since it can't go now.
    void releaseLater(Ref<FObject> object);
    /// Null takes it away. Not owned.
    void setTimeListener(TimeListener* listener) { timeListener_ = listener; }

private:
    static constexpr int64_t noLimit = -1;

    /// Its address tells threads apart, for less than a call of the system.
    static constinit thread_local char threadMark_;
    static constinit std::atomic<const char*> guiThread_;

    static void wakeGuiThread();
    void deliver();
    bool needsIdle();
    bool wait(int64_t limit);
    Ref<CmObject> nextIdleClient();
    void callIdleClients();
    void releaseAll();

    FLock idleLock_{"FLock"};
    FLock releaseLock_{"FLock"};
    std::vector<CmObject*> idleClients_;
    std::vector<Ref<FObject>> releaseList_;
    TimeListener* timeListener_ = nullptr;
    size_t nextClient_ = 0; ///< Place of the walk over the idle clients; under `idleLock_`.
    uint32_t nextDue_ = 0;
    bool isIdling_ = false;
    bool stopped_ = false;
};

} // namespace qorl
