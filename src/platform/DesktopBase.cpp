#include "platform/DesktopBase.h"

#include "platform/PollSource.h"

#include <algorithm>
#include <limits>

namespace qorl::platform {

namespace {

constexpr int64_t tipDelay = 500;        // milliseconds
constexpr int64_t longestInputTurn = 20; // milliseconds

bool canBeMain(const WindowBase& window) {
    return window.getKind() == WindowKind::document || window.getKind() == WindowKind::full;
}

} // namespace

DesktopBase::~DesktopBase() = default;

PlatformWindow* DesktopBase::windowAt(CmPoint screen) const {
    for (auto it = windows_.rbegin(); it != windows_.rend(); ++it) {
        const WindowBase& window = **it;
        if (window.getKind() != WindowKind::overlay && window.isVisible() &&
            window.getShowState() != ShowState::minimized && window.getRect().contains(screen))
            return *it;
    }
    return nullptr;
}

bool DesktopBase::isModalBlocking(const PlatformWindow& window) const {
    const auto& own = static_cast<const WindowBase&>(window);
    if (own.getKind() == WindowKind::popup)
        return false;
    for (auto it = windows_.rbegin(); it != windows_.rend(); ++it) {
        const WindowBase& modal = **it;
        if (modal.getKind() == WindowKind::modal && modal.isVisible())
            return &modal != &own && !own.isOwnedBy(modal);
    }
    return false;
}

void DesktopBase::setCapture(PlatformWindow& window) {
    auto& next = static_cast<WindowBase&>(window);
    if (capture_ == &next || next.isClosed())
        return;
    WindowBase* earlier = capture_;
    capture_ = &next;
    nativeSetCapture(&next);
    if (earlier && earlier->getClient())
        earlier->getClient()->captureLost();
}

void DesktopBase::releaseCapture() {
    if (!capture_)
        return;
    capture_ = nullptr;
    nativeSetCapture(nullptr);
}

void DesktopBase::loseCapture() {
    WindowBase* earlier = capture_;
    releaseCapture();
    if (earlier && earlier->getClient())
        earlier->getClient()->captureLost();
}

bool DesktopBase::needsPaint() const {
    return std::any_of(windows_.begin(), windows_.end(), [](const WindowBase* w) { return w->needsPaint(); });
}

bool DesktopBase::hasEvent() {
    if (hasNativeEvent() || timers_.isDue(getTicks()) || needsPaint() || readySource_)
        return true;
    if (sources_.empty())
        return false;
    std::vector<PollEntry> none;
    poll(none, 0);
    return readySource_ != nullptr;
}

bool DesktopBase::dispatchEvent() {
    return dispatchInput() || dispatchTimerOrPaint() || (hasNativeEvent() && dispatchNativeEvent()) ||
           dispatchSource();
}

/// A mouse that moves faster than its moves are handled must keep neither timers nor paints waiting.
bool DesktopBase::dispatchInput() {
    if (!hasNativeEvent()) {
        inputSince_ = TimerQueue::never;
        return false;
    }
    const int64_t now = getTicks();
    if (inputSince_ == TimerQueue::never)
        inputSince_ = now;
    if (now - inputSince_ < longestInputTurn)
        return dispatchNativeEvent();
    inputSince_ = TimerQueue::never;
    return false;
}

bool DesktopBase::dispatchTimerOrPaint() {
    // A timer that is always due must not keep the screen from being painted.
    if (wasTimerLast_ && dispatchPaint())
        return true;
    if (timers_.isDue(getTicks())) {
        wasTimerLast_ = true;
        return timers_.dispatch(getTicks());
    }
    return dispatchPaint();
}

bool DesktopBase::dispatchPaint() {
    wasTimerLast_ = false;
    const auto window =
        std::find_if(windows_.begin(), windows_.end(), [](WindowBase* w) { return w->needsPaint(); });
    if (window == windows_.end())
        return false;
    (*window)->update();
    return true;
}

bool DesktopBase::dispatchSource() {
    if (!readySource_)
        hasEvent();
    if (!readySource_)
        return false;
    PollSource* source = readySource_;
    readySource_ = nullptr;
    source->dispatch();
    return true;
}

void DesktopBase::processEvents() {
    constexpr int most = 100'000;
    constexpr int64_t longest = 1000; // milliseconds
    const int64_t start = getTicks();
    for (int i = 0; i < most && getTicks() - start < longest; ++i) {
        if (!dispatchEvent())
            return;
    }
}

std::vector<Ref<WindowBase>> DesktopBase::keepWindows() const {
    std::vector<Ref<WindowBase>> windows;
    windows.reserve(windows_.size());
    for (WindowBase* window : windows_)
        windows.push_back(retain(window));
    return windows;
}

void DesktopBase::flushAll() {
    for (const Ref<WindowBase>& window : keepWindows())
        window->update();
    nativeFlush();
}

void DesktopBase::addPollSource(PollSource& source) {
    if (std::find(sources_.begin(), sources_.end(), &source) == sources_.end())
        sources_.push_back(&source);
}

void DesktopBase::removePollSource(PollSource& source) {
    std::erase(sources_, &source);
    if (readySource_ == &source)
        readySource_ = nullptr;
}

void DesktopBase::poll(std::vector<PollEntry>& extra, int64_t milliseconds) {
    std::vector<PollEntry> entries = extra;
    std::vector<size_t> starts;
    const std::vector<PollSource*> sources = sources_;
    for (PollSource* source : sources) {
        starts.push_back(entries.size());
        const int64_t longest = source->prepare(entries);
        if (longest >= 0 && (milliseconds < 0 || longest < milliseconds))
            milliseconds = longest;
    }
    poller_.wait(entries, milliseconds);
    std::copy_n(entries.begin(), extra.size(), extra.begin());
    for (size_t i = 0; i < sources.size(); ++i) {
        const size_t end = i + 1 < starts.size() ? starts[i + 1] : entries.size();
        if (sources[i]->check(entries.data() + starts[i], end - starts[i]) && !readySource_)
            readySource_ = sources[i];
    }
}

TimerId DesktopBase::startTimer(int64_t period, TimerClient& client) {
    return timers_.start(getTicks(), period, client);
}

void DesktopBase::stopTimer(TimerId timer) {
    timers_.stop(timer);
}

int32_t DesktopBase::monitorAt(CmPoint screen) const {
    int32_t best = 0;
    int64_t bestDistance = std::numeric_limits<int64_t>::max();
    for (int32_t i = 0; i < monitorCount(); ++i) {
        CmRect rect;
        getMonitorRect(i, MonitorArea::whole, rect);
        const int64_t distance = squaredDistance(rect, screen);
        if (distance < bestDistance) {
            bestDistance = distance;
            best = i;
        }
    }
    return best;
}

void DesktopBase::setCursor(PlatformCursor* cursor) {
    if (cursor == cursor_.get())
        return;
    cursor_ = retain(cursor);
    nativeSetCursor();
}

void DesktopBase::showCursor(CursorVisibility visibility) {
    const bool isShown = visibility == CursorVisibility::shown;
    if (isShown == isCursorShown_)
        return;
    isCursorShown_ = isShown;
    nativeSetCursor();
}

void DesktopBase::windowShown(WindowBase& window) {
    raiseInOrder(window);
}

void DesktopBase::windowHidden(WindowBase& window) {
    if (tipWindow_ == &window)
        setTip(window, {}, {});
    if (capture_ == &window)
        loseCapture();
    if (active_ == &window)
        setActive(chooseNextActive(window));
}

void DesktopBase::windowDisabled(WindowBase& window) {
    if (capture_ == &window)
        loseCapture();
}

void DesktopBase::windowClosed(WindowBase& window) {
    std::erase(windows_, &window);
    forget(window);
    if (tipWindow_ == &window)
        setTip(window, {}, {});
    if (capture_ == &window)
        releaseCapture();
    const bool wasActive = active_ == &window;
    if (main_ == &window) {
        main_ = nullptr;
        isMainActive_ = false;
    }
    if (wasActive)
        setActive(chooseNextActive(window));
}

void DesktopBase::closeOwnedWindows(WindowBase& owner) {
    // One that is closing already stays in the list until what it owns is closed.
    const auto isOwned = [&](const WindowBase* w) { return w->getOwner() == &owner && !w->isClosed(); };
    for (;;) {
        const auto found = std::find_if(windows_.rbegin(), windows_.rend(), isOwned);
        if (found == windows_.rend())
            return;
        const Ref<WindowBase> owned = retain(*found);
        owned->getClient()->ownerClosed();
        owned->close(CloseMode::withOwner);
    }
}

void DesktopBase::closeAllWindows() {
    for (;;) {
        const auto isOpen = [](const WindowBase* w) { return !w->isClosed(); };
        const auto found = std::find_if(windows_.rbegin(), windows_.rend(), isOpen);
        if (found == windows_.rend())
            break;
        (*found)->close(CloseMode::normal);
    }
    setTipPresenter(nullptr);
    cursor_.reset();
}

/// What a window owns stays above it.
void DesktopBase::raiseInOrder(WindowBase& window) {
    const auto isRaised = [&](const WindowBase* w) { return w == &window || w->isOwnedBy(window); };
    std::stable_partition(windows_.begin(), windows_.end(),
                          [&](const WindowBase* w) { return !isRaised(w); });
}

void DesktopBase::setActive(WindowBase* window) {
    if (window == active_)
        return;
    using Main = PlatformWindowClient::MainWindow;
    WindowBase* earlier = active_;
    WindowBase* earlierMain = isMainActive_ ? main_ : nullptr;
    active_ = window;
    if (window && canBeMain(*window))
        main_ = window;
    isMainActive_ = window && main_;
    WindowBase* nextMain = isMainActive_ ? main_ : nullptr;
    const bool isChanged = earlierMain != nextMain;

    const Ref<WindowBase> keepEarlier = retain(earlier), keepMain = retain(earlierMain),
                          keep = retain(window), keepNextMain = retain(nextMain);
    if (earlier && earlier->getClient())
        earlier->getClient()->deactivated(isChanged && earlier == earlierMain ? Main::changed : Main::kept);
    if (isChanged && earlierMain && earlierMain != earlier && earlierMain->getClient())
        earlierMain->getClient()->deactivated(Main::changed);
    // Whoever was told may have activated another window meanwhile.
    if (active_ != window)
        return;
    if (isChanged && nextMain && nextMain != window && nextMain->getClient())
        nextMain->getClient()->activated(Main::changed);
    if (active_ == window && window && window->getClient())
        window->getClient()->activated(isChanged && window == nextMain ? Main::changed : Main::kept);
}

WindowBase* DesktopBase::getOpenPopup() const {
    for (auto it = windows_.rbegin(); it != windows_.rend(); ++it) {
        const WindowBase& window = **it;
        if (window.getKind() == WindowKind::popup && window.isVisible() && active_ == &window)
            return *it;
    }
    return nullptr;
}

void DesktopBase::setTipPresenter(TipPresenter* presenter) {
    hideTip();
    tipPresenter_ = presenter;
}

void DesktopBase::setTip(WindowBase& window, const CmRect& rect, std::u16string_view text) {
    hideTip();
    tipText_ = text;
    tipRect_ = rect;
    tipWindow_ = text.empty() ? nullptr : &window;
    if (tipWindow_)
        tipTimer_ = startTimer(tipDelay, *this);
}

void DesktopBase::stopTipTimer() {
    stopTimer(tipTimer_);
    tipTimer_ = noTimer;
}

void DesktopBase::hideTip() {
    stopTipTimer();
    if (isTipShown_ && tipPresenter_)
        tipPresenter_->hideTip();
    isTipShown_ = false;
}

void DesktopBase::timerElapsed(TimerId) {
    stopTipTimer();
    if (!tipWindow_ || !tipPresenter_)
        return;
    CmPoint mouse = getMousePosition();
    tipWindow_->screenToClient(mouse);
    if (!tipRect_.isEmpty() && !tipRect_.contains(mouse))
        return;
    isTipShown_ = true;
    tipPresenter_->showTip(*tipWindow_, tipRect_, tipText_, getMousePosition());
}

} // namespace qorl::platform
