#include "platform/headless/HeadlessDesktop.h"

#include "platform/Platform.h"
#include "platform/headless/HeadlessWindow.h"

#include <algorithm>
#include <utility>

namespace qorl::platform {

namespace {

constexpr int32_t hiddenCursor = -1;
constexpr int32_t pictureCursor = -2;

class HeadlessCursor : public PlatformCursor {
public:
    explicit HeadlessCursor(int32_t shape) : shape_(shape) {}
    int32_t getShape() const { return shape_; }

private:
    int32_t shape_;
};

HeadlessWindow* toHeadless(WindowBase* window) {
    return static_cast<HeadlessWindow*>(window);
}

bool takesActivation(const WindowBase& window) {
    return !(window.getStyle() & WindowStyle::noActivate) && window.getKind() != WindowKind::overlay &&
           window.getKind() != WindowKind::child;
}

} // namespace

HeadlessDesktop::HeadlessDesktop(HeadlessSettings settings) : settings_(std::move(settings)) {
    if (settings_.monitors.empty())
        settings_.monitors.emplace_back();
}

HeadlessDesktop::~HeadlessDesktop() {
    closeAllWindows();
}

Ref<PlatformWindow> HeadlessDesktop::createWindow(const WindowDescription& description,
                                                  PlatformWindowClient& client) {
    WindowDescription placed = description;
    if (placed.position == WindowDescription::Position::byDesktop) {
        const CmRect& work = settings_.monitors.front().workArea;
        placed.frame = placed.frame.moved(work.left - placed.frame.left, work.top - placed.frame.top);
    }
    auto window = make<HeadlessWindow>(*this, placed, client);
    windowCreated(*window);
    return window;
}

void HeadlessDesktop::setMousePosition(CmPoint screen) {
    // As on a screen: windows hear of it by an event, the position holds at once.
    mouse_ = screen;
    post([this, screen] { moveMouse(screen); });
}

bool HeadlessDesktop::hasNativeEvent() {
    return !queue_.empty() && now_ >= pauseEnd_;
}

bool HeadlessDesktop::dispatchNativeEvent() {
    const Step step = std::move(queue_.front());
    queue_.pop_front();
    lastInput_ = now_.load();
    if (step.pause > 0)
        pauseEnd_ = now_ + step.pause;
    if (step.run)
        step.run();
    return true;
}

int64_t HeadlessDesktop::getNextTime() const {
    const int64_t timer = timers_.getNextDue();
    const int64_t queue = queue_.empty() ? TimerQueue::never : pauseEnd_;
    if (timer == TimerQueue::never || queue == TimerQueue::never)
        return std::max(timer, queue);
    return std::min(timer, queue);
}

bool HeadlessDesktop::isStarving(int64_t until) const {
    return isCapturing() && queue_.empty() && until - lastInput_ >= starvationLimit;
}

void HeadlessDesktop::starve() {
    lastInput_ = now_.load();
    if (!isCapturing())
        return;
    buttons_ = noButton;
    pressed_ = nullptr;
    loseCapture();
    if (feeder_)
        feeder_->captureStarved();
}

WaitResult HeadlessDesktop::waitForEvent(int64_t milliseconds) {
    if (hasEvent())
        return WaitResult::event;
    if (poller_.takeWakeUp())
        return WaitResult::wakeUp;
    if (feeder_ && queue_.empty() && !isFeeding_) {
        isFeeding_ = true;
        const bool isFed = feeder_->feed(*this);
        isFeeding_ = false;
        if (isFed && hasEvent())
            return WaitResult::event;
    }
    const int64_t next = getNextTime();
    const int64_t limit = milliseconds < 0 ? TimerQueue::never : now_ + milliseconds;
    const bool isEventFirst = next != TimerQueue::never && (limit == TimerQueue::never || next <= limit);
    const int64_t until = isEventFirst ? next : limit;
    if (until == TimerQueue::never || isStarving(until)) {
        starve();
        return WaitResult::exhausted;
    }
    now_ = std::max(now_.load(), until);
    return isEventFirst ? WaitResult::event : WaitResult::timeout;
}

void HeadlessDesktop::sleep(int64_t milliseconds) {
    const int64_t until = now_ + std::max<int64_t>(milliseconds, 0);
    // A loop that sleeps and looks again is a wait too, and must see what comes next.
    if (feeder_ && queue_.empty() && !isFeeding_ && !hasEvent()) {
        isFeeding_ = true;
        feeder_->feed(*this);
        isFeeding_ = false;
    }
    if (isStarving(until))
        starve();
    now_ = until;
}

void HeadlessDesktop::advance(int64_t milliseconds) {
    const int64_t end = now_ + milliseconds;
    processEvents();
    for (int64_t next = getNextTime(); next != TimerQueue::never && next <= end; next = getNextTime()) {
        now_ = std::max(now_.load(), next);
        processEvents();
    }
    now_ = std::max(now_.load(), end);
    processEvents();
}

bool HeadlessDesktop::getMonitorRect(int32_t index, MonitorArea area, CmRect& rect) const {
    if (index < 0 || index >= monitorCount())
        return false;
    const HeadlessMonitor& monitor = settings_.monitors[static_cast<size_t>(index)];
    rect = area == MonitorArea::work ? monitor.workArea : monitor.bounds;
    return true;
}

std::string HeadlessDesktop::getMonitorName(int32_t index) const {
    return index < 0 || index >= monitorCount() ? std::string()
                                                : settings_.monitors[static_cast<size_t>(index)].name;
}

double HeadlessDesktop::getMonitorScale(int32_t index) const {
    return index < 0 || index >= monitorCount() ? 1.0 : settings_.monitors[static_cast<size_t>(index)].scale;
}

double HeadlessDesktop::getScaleAt(const CmRect& window) const {
    if (getDpiAwareness() == DpiAwareness::system)
        return getMonitorScale(0);
    return getMonitorScale(monitorAt({window.left + window.width() / 2, window.top + window.height() / 2}));
}

void HeadlessDesktop::setMonitors(std::vector<HeadlessMonitor> monitors) {
    if (monitors.empty())
        return;
    settings_.monitors = std::move(monitors);
    for (const Ref<WindowBase>& window : keepWindows())
        toHeadless(window.get())->updateScale();
}

void HeadlessDesktop::setAppearance(Appearance appearance) {
    settings_.appearance = appearance;
    for (const Ref<WindowBase>& window : keepWindows()) {
        if (!window->isClosed())
            window->getClient()->colorSchemeChanged();
    }
}

Ref<PlatformCursor> HeadlessDesktop::createCursor(CursorShape shape) {
    return make<HeadlessCursor>(static_cast<int32_t>(shape));
}

Ref<PlatformCursor> HeadlessDesktop::createPictureCursor(const PixelSurface& picture, CmPoint) {
    if (picture.isEmpty())
        return nullptr;
    return make<HeadlessCursor>(pictureCursor);
}

int32_t HeadlessDesktop::getShownCursor() const {
    if (!isCursorShown())
        return hiddenCursor;
    return getCursor() ? static_cast<HeadlessCursor*>(getCursor())->getShape()
                       : static_cast<int32_t>(CursorShape::arrow);
}

bool HeadlessDesktop::getSystemColor(SystemColor, uint32_t&) const {
    return false;
}

void HeadlessDesktop::post(std::function<void()> run) {
    queue_.push_back({std::move(run)});
}

void HeadlessDesktop::postMouseMove(CmPoint screen) {
    post([this, screen] { moveMouse(screen); });
}

void HeadlessDesktop::postButtonDown(uint32_t button) {
    post([this, button] { pressButton(button); });
}

void HeadlessDesktop::postButtonUp(uint32_t button) {
    post([this, button] { releaseButton(button); });
}

void HeadlessDesktop::postWheel(double deltaX, double deltaY, uint8_t flags) {
    post([this, deltaX, deltaY, flags] { turnWheel(deltaX, deltaY, flags); });
}

void HeadlessDesktop::postKey(KeyKind kind, char16_t character, uint8_t virtualKey) {
    post([this, kind, character, virtualKey] {
        if (WindowBase* active = getActive())
            active->deliverKey({kind, false, character, virtualKey, modifiers_, now_});
    });
}

void HeadlessDesktop::postModifiers(uint32_t modifiers) {
    post([this, modifiers] { modifiers_ = modifiers; });
}

void HeadlessDesktop::postCall(std::function<void()> call) {
    post(std::move(call));
}

void HeadlessDesktop::postPause(int64_t milliseconds) {
    queue_.push_back({{}, milliseconds});
}

void HeadlessDesktop::postClosePress(PlatformWindow& window) {
    post([target = retain(static_cast<HeadlessWindow*>(&window))] { target->pressClose(); });
}

void HeadlessDesktop::postUserSize(PlatformWindow& window, CmSize size) {
    post([target = retain(static_cast<HeadlessWindow*>(&window)), size] { target->sizeByUser(size); });
}

void HeadlessDesktop::postUserMove(PlatformWindow& window, CmPoint position) {
    post(
        [target = retain(static_cast<HeadlessWindow*>(&window)), position] { target->moveByUser(position); });
}

void HeadlessDesktop::postShowState(PlatformWindow& window, ShowState state) {
    post([target = retain(static_cast<HeadlessWindow*>(&window)), state] { target->setShowState(state); });
}

void HeadlessDesktop::postActivation(PlatformWindow* window) {
    post([this, target = retain(static_cast<HeadlessWindow*>(window))] {
        if (!target || !target->isClosed())
            setActive(target.get());
    });
}

void HeadlessDesktop::forget(WindowBase& window) {
    if (hover_ == &window)
        hover_ = nullptr;
    if (pressed_ == &window)
        pressed_ = nullptr;
}

WindowBase* HeadlessDesktop::findTarget() const {
    if (WindowBase* capture = getCaptureWindow())
        return capture;
    if (pressed_)
        return pressed_;
    return static_cast<WindowBase*>(windowAt(eventMouse_));
}

void HeadlessDesktop::sendMouse(WindowBase* target, MouseKind kind, uint32_t buttons) {
    if (target)
        target->deliverMouse({kind, toHeadless(target)->toDevice(eventMouse_), modifiers_, buttons, now_});
}

void HeadlessDesktop::updateHover(WindowBase* under) {
    if (under == hover_)
        return;
    WindowBase* left = std::exchange(hover_, under);
    sendMouse(left, MouseKind::leave, buttons_);
    // The window that was left may have closed the other.
    if (hover_ == under)
        sendMouse(under, MouseKind::enter, buttons_);
}

void HeadlessDesktop::moveMouse(CmPoint screen) {
    mouse_ = eventMouse_ = screen;
    if (!isCapturing() && !pressed_)
        updateHover(static_cast<WindowBase*>(windowAt(screen)));
    sendMouse(findTarget(), MouseKind::move, buttons_);
}

void HeadlessDesktop::pressButton(uint32_t button) {
    const bool isFirst = buttons_ == noButton;
    buttons_ |= button;
    WindowBase* target = findTarget();
    if (!target)
        target = getOpenPopup();
    if (!target)
        return;
    if (isFirst)
        pressed_ = target;
    const Ref<WindowBase> self = retain(target);
    if (takesActivation(*target) && !isModalBlocking(*target)) {
        raiseInOrder(*target);
        setActive(target);
    }
    sendMouse(target, MouseKind::down, button);
}

void HeadlessDesktop::releaseButton(uint32_t button) {
    buttons_ &= ~button;
    WindowBase* target = findTarget();
    if (buttons_ == noButton)
        pressed_ = nullptr;
    sendMouse(target, MouseKind::up, button);
    if (buttons_ == noButton && !isCapturing())
        updateHover(static_cast<WindowBase*>(windowAt(eventMouse_)));
}

void HeadlessDesktop::turnWheel(double deltaX, double deltaY, uint8_t flags) {
    WindowBase* target = getCaptureWindow();
    if (!target)
        target = static_cast<WindowBase*>(windowAt(eventMouse_));
    if (target)
        target->deliverWheel(
            {toHeadless(target)->toDevice(eventMouse_), deltaX, deltaY, flags, modifiers_, now_});
}

void HeadlessDesktop::windowMinimized(WindowBase& window) {
    windowHidden(window);
}

WindowBase* HeadlessDesktop::chooseNextActive(WindowBase& gone) {
    const auto canTake = [&](const WindowBase& window) {
        return &window != &gone && window.isVisible() && window.getShowState() != ShowState::minimized &&
               takesActivation(window);
    };
    if (WindowBase* owner = gone.getOwner(); owner && canTake(*owner))
        return owner;
    const auto& windows = getWindows();
    const auto next =
        std::find_if(windows.rbegin(), windows.rend(), [&](const WindowBase* w) { return canTake(*w); });
    return next == windows.rend() ? nullptr : *next;
}

} // namespace qorl::platform
