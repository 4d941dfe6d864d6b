#include "platform/x11/X11Desktop.h"

#include "platform/Clock.h"
#include "platform/PollSource.h"
#include "platform/Threads.h"
#include "platform/x11/X11State.h"
#include "platform/x11/X11Window.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <xcb/randr.h>
#include <xcb/xinput.h>

namespace qorl::platform {

namespace {

constexpr int64_t firstTick = 10'000;

constexpr uint32_t corePointerEvents =
    XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION;
constexpr uint32_t input2Events = XCB_INPUT_XI_EVENT_MASK_BUTTON_PRESS |
                                  XCB_INPUT_XI_EVENT_MASK_BUTTON_RELEASE | XCB_INPUT_XI_EVENT_MASK_MOTION;

struct Input2Mask {
    xcb_input_event_mask_t head;
    uint32_t events;
};

std::string getAtomName(const X11Connection& connection, xcb_atom_t atom) {
    const X11Reply<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(connection, xcb_get_atom_name(connection, atom), nullptr));
    if (!reply)
        return {};
    return {xcb_get_atom_name_name(reply.get()),
            static_cast<size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

} // namespace

/// Looks every tenth of a second whether the button that drags a window's border is still down.
class X11Desktop::SizeTracker final : public platform::TimerClient {
public:
    SizeTracker(X11Desktop& desktop, X11Window& window)
        : desktop_(desktop), window_(window), timer_(desktop.startTimer(100, *this)) {}
    ~SizeTracker() { desktop_.stopTimer(timer_); }

    const X11Window& getWindow() const { return window_; }

    void timerElapsed(TimerId) override {
        if (desktop_.currentMouseButtons() != noButton)
            return;
        const std::unique_ptr<SizeTracker> self = std::move(desktop_.sizeTracker_);
        if (window_.getClient())
            window_.getClient()->sizeTrackingEnded();
    }

private:
    X11Desktop& desktop_;
    X11Window& window_;
    TimerId timer_;
};

std::unique_ptr<DesktopServices> X11Desktop::create(const std::string& display, std::string& error) {
    std::unique_ptr<X11Connection> connection = X11Connection::open(display, error);
    if (!connection)
        return nullptr;
    std::unique_ptr<X11Desktop> desktop(new X11Desktop(std::move(connection)));
    if (!desktop->keyboard_.isUsable()) {
        error = "the X server \"" + display +
                "\" does not tell its keyboard layout: it lacks the extension XKEYBOARD";
        return nullptr;
    }
    return desktop;
}

X11Desktop::X11Desktop(std::unique_ptr<X11Connection> connection)
    : connection_(std::move(connection)), keyboard_(*connection_), settings_(*connection_),
      pointers_(*connection_), scale_(settings_.getLook().scale),
      start_(getMonotonicMilliseconds() - firstTick) {
    const uint32_t rootEvents = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(*connection_, connection_->getRoot(), XCB_CW_EVENT_MASK, &rootEvents);
    if (connection_->hasRandr()) {
        xcb_randr_select_input(*connection_, connection_->getRoot(),
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE);
    }
    if (connection_->getInputOpcode()) {
        wheel_.setAxes(X11Wheel::readAxes(*connection_));
        const Input2Mask mask = {{XCB_INPUT_DEVICE_ALL, 1}, XCB_INPUT_XI_EVENT_MASK_HIERARCHY};
        xcb_input_xi_select_events(*connection_, connection_->getRoot(), 1, &mask.head);
    }
    readMonitors();
    xcb_flush(*connection_);
}

X11Desktop::~X11Desktop() {
    closeAllWindows();
    sizeTracker_.reset();
    hiddenCursor_.reset();
}

Ref<PlatformWindow> X11Desktop::createWindow(const WindowDescription& description,
                                             PlatformWindowClient& client) {
    if (isConnectionLost_)
        return nullptr;
    auto window = make<X11Window>(*this, description, client);
    x11Windows_.push_back(window.get());
    windowCreated(*window);
    if (const xcb_cursor_t cursor = getShownCursor(); cursor != XCB_CURSOR_NONE)
        window->applyCursor(cursor);
    return window;
}

uint32_t X11Desktop::getWindowEventMask() const {
    return XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_FOCUS_CHANGE |
           XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE |
           XCB_EVENT_MASK_ENTER_WINDOW | XCB_EVENT_MASK_LEAVE_WINDOW |
           (connection_->getInputOpcode() ? 0 : corePointerEvents);
}

void X11Desktop::selectPointerEvents(xcb_window_t window) {
    if (!connection_->getInputOpcode())
        return;
    const Input2Mask mask = {{XCB_INPUT_DEVICE_ALL_MASTER, 1}, input2Events};
    xcb_input_xi_select_events(*connection_, window, 1, &mask.head);
}

CmPoint X11Desktop::toDevicePoint(CmPoint logical) const {
    return {static_cast<int32_t>(std::lround(logical.x * scale_)),
            static_cast<int32_t>(std::lround(logical.y * scale_))};
}

CmPoint X11Desktop::toLogicalPoint(CmPoint device) const {
    return {static_cast<int32_t>(std::lround(device.x / scale_)),
            static_cast<int32_t>(std::lround(device.y / scale_))};
}

CmSize X11Desktop::toLogicalSize(CmSize device) const {
    constexpr double slack = 0.001;
    return {std::max(static_cast<int32_t>(std::floor(device.width / scale_ + slack)), 1),
            std::max(static_cast<int32_t>(std::floor(device.height / scale_ + slack)), 1)};
}

CmPoint X11Desktop::getOriginOf(xcb_window_t window) const {
    const X11Reply<xcb_translate_coordinates_reply_t> reply(xcb_translate_coordinates_reply(
        *connection_, xcb_translate_coordinates(*connection_, window, connection_->getRoot(), 0, 0),
        nullptr));
    return reply ? CmPoint{reply->dst_x, reply->dst_y} : CmPoint{};
}

X11Reply<xcb_query_pointer_reply_t> X11Desktop::queryPointer() const {
    return X11Reply<xcb_query_pointer_reply_t>(xcb_query_pointer_reply(
        *connection_, xcb_query_pointer(*connection_, connection_->getRoot()), nullptr));
}

uint32_t X11Desktop::currentModifiers() const {
    const auto reply = queryPointer();
    return reply ? toModifiers(reply->mask) : static_cast<uint32_t>(noModifier);
}

uint32_t X11Desktop::currentMouseButtons() const {
    const auto reply = queryPointer();
    return reply ? toButtons(reply->mask) : static_cast<uint32_t>(noButton);
}

CmPoint X11Desktop::getMousePosition() const {
    const auto reply = queryPointer();
    return reply ? toLogicalPoint({reply->root_x, reply->root_y}) : CmPoint{};
}

void X11Desktop::setMousePosition(CmPoint screen) {
    const CmPoint device = toDevicePoint(screen);
    xcb_warp_pointer(*connection_, XCB_WINDOW_NONE, connection_->getRoot(), 0, 0, 0, 0,
                     static_cast<int16_t>(device.x), static_cast<int16_t>(device.y));
    xcb_flush(*connection_);
}

WaitResult X11Desktop::waitForEvent(int64_t milliseconds) {
    const int64_t end = milliseconds < 0 ? TimerQueue::never : getTicks() + milliseconds;
    for (;;) {
        // A flush reads what has come, too. Behind the look at the queue it would hide an event from the
        // poll.
        xcb_flush(*connection_);
        if (hasEvent())
            return WaitResult::event;
        if (poller_.takeWakeUp())
            return WaitResult::wakeUp;
        const int64_t now = getTicks();
        if ((end != TimerQueue::never && now >= end) || isConnectionLost_)
            return isConnectionLost_ ? WaitResult::exhausted : WaitResult::timeout;
        const int64_t due = timers_.getNextDue();
        int64_t wait = end == TimerQueue::never ? -1 : end - now;
        if (due != TimerQueue::never)
            wait = wait < 0 ? due - now : std::min(wait, due - now);
        std::vector<PollEntry> entries = {{xcb_get_file_descriptor(*connection_), PollEntry::readable, 0}};
        poll(entries, wait < 0 ? -1 : std::max<int64_t>(wait, 0));
    }
}

int64_t X11Desktop::getTicks() const {
    return getMonotonicMilliseconds() - start_;
}

void X11Desktop::sleep(int64_t milliseconds) {
    xcb_flush(*connection_);
    sleepThread(milliseconds);
}

void X11Desktop::readMonitors() {
    monitors_.clear();
    const auto logical = [this](int32_t x, int32_t y, int32_t width, int32_t height) {
        return CmRect::ofSize(toLogicalPoint({x, y}), toLogicalSize({width, height}));
    };
    if (connection_->hasRandr()) {
        const X11Reply<xcb_randr_get_monitors_reply_t> reply(xcb_randr_get_monitors_reply(
            *connection_, xcb_randr_get_monitors(*connection_, connection_->getRoot(), 1), nullptr));
        if (reply) {
            for (auto it = xcb_randr_get_monitors_monitors_iterator(reply.get()); it.rem;
                 xcb_randr_monitor_info_next(&it)) {
                const CmRect bounds = logical(it.data->x, it.data->y, it.data->width, it.data->height);
                const auto place = it.data->primary ? monitors_.begin() : monitors_.end();
                monitors_.insert(place, {getAtomName(*connection_, it.data->name), bounds, bounds});
            }
        }
    }
    if (monitors_.empty()) {
        const xcb_screen_t* screen = connection_->getScreen();
        const CmRect bounds = logical(0, 0, screen->width_in_pixels, screen->height_in_pixels);
        monitors_.push_back({"X11", bounds, bounds});
    }
    const auto desktops = connection_->getProperty32(
        connection_->getRoot(), (*connection_)[X11Atom::netCurrentDesktop], XCB_ATOM_CARDINAL);
    const auto areas = connection_->getProperty32(connection_->getRoot(),
                                                  (*connection_)[X11Atom::netWorkArea], XCB_ATOM_CARDINAL);
    const size_t first = desktops.empty() ? 0 : size_t{desktops.front()} * 4;
    if (areas.size() < first + 4)
        return;
    // One rect for the whole screen: what it leaves of each monitor is the best guess there is.
    const CmRect work =
        logical(static_cast<int32_t>(areas[first]), static_cast<int32_t>(areas[first + 1]),
                static_cast<int32_t>(areas[first + 2]), static_cast<int32_t>(areas[first + 3]));
    for (Monitor& monitor : monitors_) {
        if (monitor.bounds.intersects(work))
            monitor.work = monitor.bounds.intersect(work);
    }
}

bool X11Desktop::getMonitorRect(int32_t index, MonitorArea area, CmRect& rect) const {
    if (index < 0 || index >= monitorCount())
        return false;
    const Monitor& monitor = monitors_[static_cast<size_t>(index)];
    rect = area == MonitorArea::work ? monitor.work : monitor.bounds;
    return true;
}

std::string X11Desktop::getMonitorName(int32_t index) const {
    return index < 0 || index >= monitorCount() ? std::string() : monitors_[static_cast<size_t>(index)].name;
}

bool X11Desktop::getSystemColor(SystemColor, uint32_t&) const {
    return false; // An X desktop publishes theme names, no colours.
}

void X11Desktop::lookChanged() {
    const double scale = settings_.getLook().scale;
    const bool isScaled = scale != scale_;
    scale_ = scale;
    readMonitors();
    for (const Ref<WindowBase>& window : keepWindows()) {
        if (isScaled)
            static_cast<X11Window*>(window.get())->applyScale(scale);
        if (!window->isClosed())
            window->getClient()->colorSchemeChanged();
    }
}

xcb_cursor_t X11Desktop::getShownCursor() {
    if (!isCursorShown()) {
        if (!hiddenCursor_)
            hiddenCursor_ = pointers_.createHidden();
        return static_cast<X11Cursor*>(hiddenCursor_.get())->getId();
    }
    return getCursor() ? static_cast<X11Cursor*>(getCursor())->getId()
                       : static_cast<xcb_cursor_t>(XCB_CURSOR_NONE);
}

void X11Desktop::nativeSetCursor() {
    const xcb_cursor_t cursor = getShownCursor();
    for (X11Window* window : x11Windows_)
        window->applyCursor(cursor);
    xcb_flush(*connection_);
}

void X11Desktop::nativeFlush() {
    xcb_flush(*connection_);
}

void X11Desktop::nativeSetCapture(WindowBase*) {
    updateGrab();
}

void X11Desktop::updateGrab() {
    auto* wanted = static_cast<X11Window*>(getCaptureWindow());
    if (!wanted)
        wanted = static_cast<X11Window*>(getOpenPopup());
    if (wanted == grabber_)
        return;
    grabber_ = wanted;
    constexpr xcb_input_device_id_t masterPointer = 2;
    const bool hasInput2 = connection_->getInputOpcode();
    if (wanted && hasInput2) {
        constexpr uint32_t mask = input2Events;
        xcb_discard_reply(*connection_,
                          xcb_input_xi_grab_device(*connection_, wanted->getId(), XCB_CURRENT_TIME,
                                                   XCB_CURSOR_NONE, masterPointer,
                                                   XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_MODE_22_ASYNC,
                                                   XCB_INPUT_GRAB_OWNER_OWNER, 1, &mask)
                              .sequence);
    } else if (wanted) {
        xcb_discard_reply(*connection_, xcb_grab_pointer(*connection_, 1, wanted->getId(), corePointerEvents,
                                                         XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
                                                         XCB_WINDOW_NONE, XCB_CURSOR_NONE, XCB_CURRENT_TIME)
                                            .sequence);
    } else if (hasInput2) {
        xcb_input_xi_ungrab_device(*connection_, XCB_CURRENT_TIME, masterPointer);
    } else {
        xcb_ungrab_pointer(*connection_, XCB_CURRENT_TIME);
    }
    xcb_flush(*connection_);
}

void X11Desktop::requestFocus(X11Window& window) {
    // The first argument says that an application asks, the second when its user last did something.
    const uint32_t values[] = {1, lastTime_, focused_ ? focused_->getId() : 0, 0, 0};
    if (connection_->supports(X11Atom::netActiveWindow))
        connection_->sendToManager(window.getId(), X11Atom::netActiveWindow, values);
    else
        xcb_set_input_focus(*connection_, XCB_INPUT_FOCUS_POINTER_ROOT, window.getId(), XCB_CURRENT_TIME);
    xcb_flush(*connection_);
}

void X11Desktop::activatePopup(X11Window& window) {
    setActive(&window);
    updateGrab();
}

WindowBase* X11Desktop::chooseNextActive(WindowBase& gone) {
    if (WindowBase* owner = gone.getOwner();
        owner && owner->getKind() == WindowKind::popup && owner->isVisible())
        return owner;
    return focused_ != &gone ? focused_ : nullptr;
}

void X11Desktop::forget(WindowBase& window) {
    std::erase(x11Windows_, &window);
    if (focused_ == &window)
        focused_ = nullptr;
    if (hover_ == &window)
        hover_ = nullptr;
    if (sizeTracker_ && &sizeTracker_->getWindow() == &window)
        sizeTracker_.reset();
    if (grabber_ == &window)
        grabber_ = nullptr; // the server ends a grab with its window
}

void X11Desktop::trackSizing(X11Window& window) {
    if (window.isClosed() || sizeTracker_ || isPressed_ || currentMouseButtons() == noButton)
        return;
    sizeTracker_ = std::make_unique<SizeTracker>(*this, window);
    window.getClient()->sizeTrackingStarted();
}

X11Window* X11Desktop::findWindow(xcb_window_t id) const {
    const auto it = std::find_if(x11Windows_.begin(), x11Windows_.end(),
                                 [id](const X11Window* window) { return window->getId() == id; });
    return it == x11Windows_.end() ? nullptr : *it;
}

} // namespace qorl::platform
