#include "foundation/messages/EventLoop.h"

#include "foundation/messages/FMessage.h"
#include "foundation/messages/FMessenger.h"
#include "foundation/messages/UpdateHandler.h"
#include "foundation/threads/Ticks.h"
#include "platform/DesktopServices.h"
#include "platform/Platform.h"
#include "platform/Threads.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace qorl {

namespace {

constinit EventLoop* currentLoop = nullptr;
constinit std::atomic<uint32_t> guiThreadId{0};

/// How early an idle step may be before it gives up time, and how much it gives up.
constexpr int32_t pacing = 5;

int32_t ticksUntil(uint32_t due) {
    return static_cast<int32_t>(due - getTicks());
}

} // namespace

EventLoop::EventLoop() {
    if (currentLoop)
        return;
    currentLoop = this;
    guiThreadId = platform::currentThreadId();
    nextDue_ = getTicks();
}

EventLoop::~EventLoop() {
    releaseAll();
    if (currentLoop != this)
        return;
    currentLoop = nullptr;
    guiThreadId = 0;
}

EventLoop* EventLoop::current() {
    return currentLoop;
}

bool EventLoop::isGuiThread() {
    const uint32_t id = guiThreadId;
    return id != 0 && id == platform::currentThreadId();
}

void EventLoop::wake() {
    platform::DesktopServices* desktop = isGuiThread() ? nullptr : platform::desktop();
    if (desktop)
        desktop->wakeUp();
}

void EventLoop::deliver() {
    if (FMessenger* messenger = FMessenger::instance())
        messenger->deliverPending();
    UpdateHandler::instance()->triggerDeferredUpdates(nullptr);
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
    if (needsIdle()) {
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
    FMessenger* messenger = FMessenger::instance();
    if ((messenger && messenger->hasPending()) || UpdateHandler::instance()->hasDeliverable())
        return true;
    platform::DesktopServices* desktop = platform::desktop();
    return desktop && desktop->waitForEvent(limit) != platform::WaitResult::exhausted;
}

void EventLoop::idle(Pace pace) {
    if (isIdling_ || stopped_)
        return;
    isIdling_ = true;
    if (pace == Pace::sleepWhenEarly && ticksUntil(nextDue_) > pacing)
        sleep(pacing);
    const uint32_t ticks = getTicks();
    nextDue_ = ticks + idlePeriod;
    if (timeListener_)
        timeListener_->timePassed(ticks);
    callIdleClients();
    releaseAll();
    isIdling_ = false;
}

void EventLoop::callIdleClients() {
    Ref<FMessage> message;
    // Read afresh at each step, since clients come and go meanwhile.
    for (nextClient_ = 0;;) {
        CmObject* client = nullptr;
        {
            const FGuard guard(idleLock_);
            if (nextClient_ >= idleClients_.size())
                return;
            client = idleClients_[nextClient_++];
        }
        if (!message)
            message = make<FMessage>("Idle");
        client->handleMessage(message.get());
    }
}

void EventLoop::addIdleClient(CmObject* client) {
    {
        const FGuard guard(idleLock_);
        idleClients_.push_back(client);
    }
    wake();
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
    {
        const FGuard guard(releaseLock_);
        releaseList_.push_back(std::move(object));
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
