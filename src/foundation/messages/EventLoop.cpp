#include "foundation/messages/EventLoop.h"

#include "foundation/Held.h"
#include "foundation/messages/FMessage.h"
#include "foundation/messages/FMessenger.h"
#include "foundation/messages/UpdateHandler.h"
#include "foundation/threads/Ticks.h"
#include "platform/DesktopServices.h"
#include "platform/Platform.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

namespace qorl {

namespace {

constinit std::atomic<EventLoop*> currentLoop{nullptr};

/// How early an idle step may be before it gives up time, and how much it gives up.
constexpr int32_t pacing = 5;

/// Not positive once the next idle step is due.
int32_t ticksUntil(uint32_t due) {
    const auto left = static_cast<int32_t>(due - getTicks());
    // The count wraps: for a loop that has slept for weeks what is long past looks far ahead.
    return left > static_cast<int32_t>(EventLoop::idlePeriod) ? 0 : left;
}

} // namespace

constinit thread_local char EventLoop::threadMark_ = 0;
constinit std::atomic<const char*> EventLoop::guiThread_{nullptr};

EventLoop::EventLoop() {
    EventLoop* none = nullptr;
    if (!currentLoop.compare_exchange_strong(none, this))
        return;
    guiThread_ = &threadMark_;
    nextDue_ = getTicks();
}

EventLoop::~EventLoop() {
    releaseAll();
    if (currentLoop != this)
        return;
    currentLoop = nullptr;
    guiThread_ = nullptr;
}

EventLoop* EventLoop::current() {
    return currentLoop.load(std::memory_order_acquire);
}

void EventLoop::wakeGuiThread() {
    platform::wakeUp();
}

void EventLoop::deliver() {
    if (FMessenger* messenger = FMessenger::instance())
        messenger->deliverPending();
    if (UpdateHandler* handler = UpdateHandler::current())
        handler->triggerDeferredUpdates(nullptr);
}

bool EventLoop::processEvent() {
    platform::DesktopServices* desktop = platform::desktop();
    if (desktop && desktop->hasEvent()) {
        desktop->dispatchEvent();
        return true;
    }
    deliver();
    return false;
}

void EventLoop::flushEvents() {
    if (platform::DesktopServices* desktop = platform::desktop())
        desktop->processEvents();
    deliver();
}

EventLoop::Step EventLoop::step() {
    if (stopped_)
        return Step::ended;
    if (processEvent())
        return Step::event;
    if (stopped_)
        return Step::ended;
    int64_t limit = noLimit;
    // Within an idle step there is no other one to wait for.
    if (!isIdling_ && needsIdle()) {
        limit = ticksUntil(nextDue_);
        if (limit <= 0) {
            idle();
            return Step::idle;
        }
    }
    return wait(limit) ? Step::idle : Step::ended;
}

void EventLoop::run() {
    while (step() != Step::ended) {}
}

bool EventLoop::needsIdle() {
    if (timeListener_ && timeListener_->isWaitingForTime())
        return true;
    {
        const FGuard guard(releaseLock_);
        if (!releaseList_.empty())
            return true;
    }
    const FGuard guard(idleLock_);
    return !idleClients_.empty();
}

bool EventLoop::wait(int64_t limit) {
    const FMessenger* messenger = FMessenger::instance();
    UpdateHandler* handler = UpdateHandler::current();
    if ((messenger && messenger->hasPending()) || (handler && handler->hasDeliverable()))
        return true;
    platform::DesktopServices* desktop = platform::desktop();
    return desktop && desktop->waitForEvent(limit) != platform::WaitResult::exhausted;
}

void EventLoop::idle(Pace pace) {
    if (isIdling_ || stopped_)
        return;
    const Held idling(isIdling_);
    const uint32_t ticks = getTicks();
    if (pace == Pace::sleepWhenEarly && ticksUntil(nextDue_) > pacing)
        sleep(pacing);
    nextDue_ = ticks + idlePeriod;
    if (timeListener_)
        timeListener_->timePassed(ticks);
    callIdleClients();
    releaseAll();
}

/// The one behind the last that was given; null at the end of the list.
Ref<CmObject> EventLoop::nextIdleClient() {
    const FGuard guard(idleLock_);
    while (nextClient_ < idleClients_.size()) {
        CmObject* client = idleClients_[nextClient_++];
        if (client->addRefUnlessGone())
            return Ref<CmObject>::adopt(client);
    }
    return nullptr;
}

void EventLoop::callIdleClients() {
    {
        const FGuard guard(idleLock_);
        nextClient_ = 0;
    }
    Ref<FMessage> message;
    // Read afresh at each step, since clients come and go meanwhile.
    while (const Ref<CmObject> client = nextIdleClient()) {
        if (!message)
            message = FMessage::named("Idle");
        if (!message)
            return; // short of memory: the next idle step is soon
        client->handleMessage(message.get());
    }
}

bool EventLoop::addIdleClient(CmObject* client) {
    try {
        const FGuard guard(idleLock_);
        idleClients_.push_back(client);
    } catch (const std::bad_alloc&) {
        return false;
    }
    wake();
    return true;
}

void EventLoop::removeIdleClient(CmObject* client) {
    const FGuard guard(idleLock_);
    const auto found = std::find(idleClients_.begin(), idleClients_.end(), client);
    if (found == idleClients_.end())
        return;
    if (static_cast<size_t>(found - idleClients_.begin()) < nextClient_)
        --nextClient_;
    idleClients_.erase(found);
}

void EventLoop::releaseLater(Ref<FObject> object) {
    try {
        const FGuard guard(releaseLock_);
        // No reference stays here, on what may be another thread: the idle step has the last one.
        std::swap(releaseList_.emplace_back(), object);
    } catch (const std::bad_alloc&) {
        static_cast<void>(object.detach());
    }
    wake();
}

void EventLoop::releaseAll() {
    std::vector<Ref<FObject>> due;
    {
        const FGuard guard(releaseLock_);
        due.swap(releaseList_);
    }
}

} // namespace qorl
