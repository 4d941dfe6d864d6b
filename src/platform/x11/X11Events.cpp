#include "platform/System.h"
#include "platform/x11/X11Desktop.h"
#include "platform/x11/X11State.h"
#include "platform/x11/X11Window.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <xcb/randr.h>
#include <xcb/xinput.h>

namespace qorl::platform {

namespace {

constexpr uint8_t kindMask = 0x7F; // the top bit marks events that another client sent

uint8_t kindOf(const xcb_generic_event_t& event) {
    return event.response_type & kindMask;
}

template <typename T>
const T& as(const xcb_generic_event_t& event) {
    return reinterpret_cast<const T&>(event);
}

uint32_t toButton(uint32_t number) {
    static constexpr uint32_t buttons[] = {noButton, leftButton, middleButton, rightButton, noButton,
                                           noButton, noButton,   noButton,     backButton,  forwardButton};
    return number < std::size(buttons) ? buttons[number] : static_cast<uint32_t>(noButton);
}

int32_t fromFixed(xcb_input_fp1616_t value) {
    return static_cast<int32_t>(std::floor(value / 65536.0));
}

/// The motion of the second input extension in `event`; null for anything else. A turn of a smooth wheel
/// comes as one, too, with more numbers than the two of the place: those must not be lost.
const xcb_input_motion_event_t* plainMotionOf(const xcb_generic_event_t& event, uint8_t opcode) {
    const auto& generic = as<xcb_ge_generic_event_t>(event);
    if (kindOf(event) != XCB_GE_GENERIC || opcode == 0 || generic.extension != opcode ||
        generic.event_type != XCB_INPUT_MOTION)
        return nullptr;
    const auto& motion = as<xcb_input_motion_event_t>(event);
    constexpr uint32_t place = 3;
    const uint32_t* numbers = xcb_input_button_press_valuator_mask(&motion);
    for (uint16_t i = 0; i < motion.valuators_len; ++i)
        if (numbers[i] & ~(i == 0 ? place : 0U))
            return nullptr;
    return &motion;
}

bool isReplacedMotion(const xcb_input_motion_event_t& earlier, const xcb_input_motion_event_t& later) {
    const auto buttonsOf = [](const xcb_input_motion_event_t& motion) {
        return motion.buttons_len > 0 ? *xcb_input_button_press_button_mask(&motion) : 0U;
    };
    return earlier.event == later.event && earlier.sourceid == later.sourceid &&
           earlier.mods.effective == later.mods.effective && buttonsOf(earlier) == buttonsOf(later);
}

/// Whether the event that follows makes an earlier one needless: a size by a later one of the same window,
/// and a move by a later one with the same keys and buttons.
bool isReplacedBy(const xcb_generic_event_t& earlier, const xcb_generic_event_t& later, uint8_t input2) {
    if (kindOf(earlier) != kindOf(later))
        return false;
    if (kindOf(earlier) == XCB_CONFIGURE_NOTIFY)
        return as<xcb_configure_notify_event_t>(earlier).window ==
               as<xcb_configure_notify_event_t>(later).window;
    if (kindOf(earlier) == XCB_MOTION_NOTIFY) {
        const auto& from = as<xcb_motion_notify_event_t>(earlier);
        const auto& to = as<xcb_motion_notify_event_t>(later);
        return from.event == to.event && from.state == to.state;
    }
    const auto* from = plainMotionOf(earlier, input2);
    const auto* to = plainMotionOf(later, input2);
    return from && to && isReplacedMotion(*from, *to);
}

} // namespace

void X11Desktop::pullEvents() {
    if (isConnectionLost_)
        return;
    while (X11Reply<xcb_generic_event_t> event{xcb_poll_for_event(*connection_)}) {
        if (!events_.empty() && isReplacedBy(*events_.back(), *event, connection_->getInputOpcode()))
            events_.back() = std::move(event);
        else
            events_.push_back(std::move(event));
    }
    if (xcb_connection_has_error(*connection_)) {
        isConnectionLost_ = true;
        events_.clear();
        debugOutput("the connection to the X server is lost");
    }
}

bool X11Desktop::hasNativeEvent() {
    if (events_.empty())
        pullEvents();
    return !events_.empty() || isFocusLost_;
}

bool X11Desktop::dispatchNativeEvent() {
    if (events_.empty()) {
        believeFocusLost();
        return true;
    }
    const X11Reply<xcb_generic_event_t> event = std::move(events_.front());
    events_.pop_front();
    dispatch(*event);
    return true;
}

/// The input went from a window of ours, and no event says where to. The server's answer stands behind all
/// that it sent before: with it comes what was still on its way.
void X11Desktop::believeFocusLost() {
    const X11Reply<xcb_get_input_focus_reply_t> holder(
        xcb_get_input_focus_reply(*connection_, xcb_get_input_focus(*connection_), nullptr));
    pullEvents();
    if (!events_.empty())
        return;
    isFocusLost_ = false;
    focusChanged(holder ? findWindow(holder->focus) : nullptr);
}

int64_t X11Desktop::toTicks(uint32_t serverTime) {
    lastTime_ = serverTime;
    const int64_t now = getTicks();
    const int64_t offset = now - int64_t{serverTime};
    constexpr int64_t longestDelay = 60'000;
    // The smallest distance ever seen is that of an event that was not held up on its way.
    if (!isTimeKnown_ || offset < timeOffset_ || offset - timeOffset_ > longestDelay)
        timeOffset_ = offset;
    isTimeKnown_ = true;
    return int64_t{serverTime} + timeOffset_;
}

void X11Desktop::dispatch(const xcb_generic_event_t& event) {
    if (settings_.handleEvent(event)) {
        lookChanged();
        return;
    }
    const uint8_t kind = kindOf(event);
    if (kind == connection_->getXkbEvent()) {
        keyboard_.handleXkbEvent(event);
        return;
    }
    if (connection_->hasRandr() && kind >= connection_->getRandrEvent() &&
        kind <= connection_->getRandrEvent() + 1) {
        readMonitors();
        return;
    }
    switch (kind) {
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE: dispatchKey(event); break;
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE: {
        const auto& button = as<xcb_button_press_event_t>(event);
        const Pointer pointer{
            {button.event_x, button.event_y}, {button.root_x, button.root_y}, button.state, button.time};
        if (kind == XCB_BUTTON_PRESS)
            pressButton(findWindow(button.event), button.detail, pointer);
        else
            releaseButton(findWindow(button.event), button.detail, pointer);
        break;
    }
    case XCB_MOTION_NOTIFY: {
        const auto& motion = as<xcb_motion_notify_event_t>(event);
        movePointer(
            findWindow(motion.event),
            {{motion.event_x, motion.event_y}, {motion.root_x, motion.root_y}, motion.state, motion.time});
        break;
    }
    case XCB_GE_GENERIC: dispatchInput2(event); break;
    case XCB_ENTER_NOTIFY:
    case XCB_LEAVE_NOTIFY: dispatchCrossing(event); break;
    case XCB_FOCUS_IN:
    case XCB_FOCUS_OUT: dispatchFocus(event); break;
    case XCB_CLIENT_MESSAGE: dispatchMessage(as<xcb_client_message_event_t>(event)); break;
    default: dispatchRoot(event); break;
    }
}

/// What happened to windows themselves.
void X11Desktop::dispatchRoot(const xcb_generic_event_t& event) {
    switch (kindOf(event)) {
    case XCB_EXPOSE: {
        const auto& expose = as<xcb_expose_event_t>(event);
        if (X11Window* window = findWindow(expose.window))
            window->handleExpose(expose);
        break;
    }
    case XCB_CONFIGURE_NOTIFY: {
        const auto& configure = as<xcb_configure_notify_event_t>(event);
        if (X11Window* window = findWindow(configure.window))
            window->handleConfigure(configure);
        break;
    }
    case XCB_MAP_NOTIFY:
        if (X11Window* window = findWindow(as<xcb_map_notify_event_t>(event).window))
            window->handleMap(true);
        break;
    case XCB_PROPERTY_NOTIFY: {
        const auto& change = as<xcb_property_notify_event_t>(event);
        if (X11Window* window = findWindow(change.window))
            window->handleProperty(change.atom);
        else if (change.window == connection_->getRoot() &&
                 change.atom == (*connection_)[X11Atom::netWorkArea])
            readMonitors();
        break;
    }
    default: break;
    }
}

void X11Desktop::dispatchInput2(const xcb_generic_event_t& event) {
    const auto& generic = as<xcb_ge_generic_event_t>(event);
    if (!connection_->getInputOpcode() || generic.extension != connection_->getInputOpcode())
        return;
    if (generic.event_type == XCB_INPUT_HIERARCHY) {
        wheel_.setAxes(X11Wheel::readAxes(*connection_));
        return;
    }
    if (generic.event_type != XCB_INPUT_BUTTON_PRESS && generic.event_type != XCB_INPUT_BUTTON_RELEASE &&
        generic.event_type != XCB_INPUT_MOTION)
        return;
    const auto& input = as<xcb_input_button_press_event_t>(event);
    // Buttons stand in a list of bits, the button n at place n: three of them go where the core protocol has
    // them.
    uint32_t state = input.mods.effective;
    if (input.buttons_len > 0)
        state |= (*xcb_input_button_press_button_mask(&input) >> 1 & 7) << 8;
    const Pointer pointer{{fromFixed(input.event_x), fromFixed(input.event_y)},
                          {fromFixed(input.root_x), fromFixed(input.root_y)},
                          state,
                          input.time};
    X11Window* window = findWindow(input.event);
    if (generic.event_type == XCB_INPUT_BUTTON_PRESS) {
        const bool isWheel = !wheelOfButton(input.detail).isZero();
        if (!isWheel || !(input.flags & XCB_INPUT_POINTER_EVENT_FLAGS_POINTER_EMULATED))
            pressButton(window, input.detail, pointer);
        return;
    }
    if (generic.event_type == XCB_INPUT_BUTTON_RELEASE) {
        releaseButton(window, input.detail, pointer);
        return;
    }
    std::vector<double> values;
    const auto* numbers = xcb_input_button_press_axisvalues(&input);
    const int count = xcb_input_button_press_axisvalues_length(&input);
    values.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        values.push_back(numbers[i].integral + numbers[i].frac / 4294967296.0);
    const WheelDistance distance = wheel_.move(input.sourceid, xcb_input_button_press_valuator_mask(&input),
                                               input.valuators_len, values.data());
    if (!distance.isZero())
        turnWheel(window, distance, pointer);
    else
        movePointer(window, pointer);
}

void X11Desktop::dispatchKey(const xcb_generic_event_t& event) {
    const auto& key = as<xcb_key_press_event_t>(event);
    const int64_t time = toTicks(key.time);
    std::vector<KeyEvent> events =
        kindOf(event) == XCB_KEY_PRESS ? keyboard_.press(key.detail) : keyboard_.release(key.detail);
    for (KeyEvent& keyEvent : events) {
        // Asked anew for each: the first may have closed the window.
        WindowBase* target = getActive() ? getActive() : findWindow(key.event);
        keyEvent.time = time;
        if (target)
            target->deliverKey(keyEvent);
    }
}

void X11Desktop::dispatchCrossing(const xcb_generic_event_t& event) {
    const auto& crossing = as<xcb_enter_notify_event_t>(event);
    X11Window* window = findWindow(crossing.event);
    eventButtons_ = toButtons(crossing.state);
    const Pointer pointer{{crossing.event_x, crossing.event_y},
                          {crossing.root_x, crossing.root_y},
                          crossing.state,
                          crossing.time};
    // Grabs of others that come and go send crossings of their own, while the mouse stays where it is.
    if (crossing.detail == XCB_NOTIFY_DETAIL_INFERIOR || crossing.mode == XCB_NOTIFY_MODE_GRAB || !window)
        return;
    if (kindOf(event) == XCB_ENTER_NOTIFY) {
        wheel_.forgetPositions();
        if (!isCapturing() && !isPressed_)
            updateHover(window, pointer);
    } else if (hover_ == window && !isCapturing() && !isPressed_) {
        updateHover(nullptr, pointer);
    }
}

void X11Desktop::dispatchFocus(const xcb_generic_event_t& event) {
    const auto& focus = as<xcb_focus_in_event_t>(event);
    if (focus.mode == XCB_NOTIFY_MODE_GRAB || focus.mode == XCB_NOTIFY_MODE_UNGRAB ||
        focus.detail >= XCB_NOTIFY_DETAIL_POINTER)
        return;
    X11Window* window = findWindow(focus.event);
    if (!window)
        return;
    if (kindOf(event) == XCB_FOCUS_IN) {
        isFocusLost_ = false;
        focusChanged(window);
    } else if (window == focused_) {
        // The input often goes from one window of ours to the next; what comes behind tells.
        isFocusLost_ = true;
    }
}

void X11Desktop::focusChanged(X11Window* window) {
    if (window == focused_)
        return;
    focused_ = window;
    if (!window)
        keyboard_.reset();
    if (window && getOpenPopup())
        return;
    if (window)
        raiseInOrder(*window);
    setActive(window);
    updateGrab();
}

void X11Desktop::dispatchMessage(const xcb_client_message_event_t& message) {
    if (message.type != (*connection_)[X11Atom::wmProtocols] || message.format != 32)
        return;
    X11Window* window = findWindow(message.window);
    if (message.data.data32[0] == (*connection_)[X11Atom::netWmPing]) {
        xcb_client_message_event_t answer = message;
        answer.window = connection_->getRoot();
        xcb_send_event(*connection_, 0, connection_->getRoot(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char*>(&answer));
        xcb_flush(*connection_);
    } else if (message.data.data32[0] == (*connection_)[X11Atom::wmDeleteWindow] && window &&
               window->isEnabled()) {
        toTicks(message.data.data32[1]);
        const Ref<WindowBase> self = retain<WindowBase>(window);
        if (window->getClient())
            window->getClient()->closePressed();
    }
}

X11Window* X11Desktop::findTarget(X11Window* window) const {
    auto* capture = static_cast<X11Window*>(getCaptureWindow());
    return capture ? capture : window;
}

CmPoint X11Desktop::toClient(const X11Window* event, const X11Window& target, const Pointer& pointer) const {
    if (event == &target)
        return pointer.client;
    const CmPoint origin = toDevicePoint(target.getPosition());
    return pointer.root - origin;
}

void X11Desktop::sendMouse(X11Window* event, X11Window* target, MouseKind kind, uint32_t buttons,
                           const Pointer& pointer) {
    if (!target || target->isClosed())
        return;
    target->deliverMouse({kind, toClient(event, *target, pointer), toModifiers(pointer.state), buttons,
                          toTicks(pointer.time)});
}

void X11Desktop::updateHover(X11Window* under, const Pointer& pointer) {
    if (under == hover_)
        return;
    X11Window* left = std::exchange(hover_, under);
    const uint32_t buttons = toButtons(pointer.state);
    sendMouse(nullptr, left, MouseKind::leave, buttons, pointer);
    if (hover_ == under)
        sendMouse(under, under, MouseKind::enter, buttons, pointer);
}

void X11Desktop::movePointer(X11Window* window, const Pointer& pointer) {
    const Ref<WindowBase> keep = retain<WindowBase>(window);
    // With a grab the grabbing window hears of places outside of all of ours.
    const bool isInside = window && CmRect::ofSize({}, window->getDeviceSize()).contains(pointer.client);
    eventButtons_ = toButtons(pointer.state);
    if (!isCapturing() && !isPressed_)
        updateHover(isInside ? window : nullptr, pointer);
    sendMouse(window, findTarget(window), MouseKind::move, toButtons(pointer.state), pointer);
}

void X11Desktop::pressButton(X11Window* window, uint32_t number, const Pointer& pointer) {
    if (const WheelDistance distance = wheelOfButton(number); !distance.isZero()) {
        turnWheel(window, distance, pointer);
        return;
    }
    const uint32_t button = toButton(number);
    X11Window* target = findTarget(window);
    if (button == noButton || !target)
        return;
    isPressed_ = true;
    eventButtons_ = toButtons(pointer.state) | button;
    const Ref<WindowBase> self = retain<WindowBase>(target);
    // While a popup holds the grab, the manager does not see the press that would activate another window.
    if (grabber_ && target != getOpenPopup() && target->isManaged() && target != focused_ &&
        target->takesFocus() && !isModalBlocking(*target))
        requestFocus(*target);
    sendMouse(window, target, MouseKind::down, button, pointer);
}

void X11Desktop::releaseButton(X11Window* window, uint32_t number, const Pointer& pointer) {
    const uint32_t button = toButton(number);
    if (button == noButton)
        return;
    const Ref<WindowBase> keep = retain<WindowBase>(window);
    eventButtons_ = toButtons(pointer.state) & ~button;
    isPressed_ = eventButtons_ != noButton;
    sendMouse(window, findTarget(window), MouseKind::up, button, pointer);
    if (isPressed_ || isCapturing())
        return;
    const bool isInside =
        window && !window->isClosed() && CmRect::ofSize({}, window->getDeviceSize()).contains(pointer.client);
    updateHover(isInside ? window : nullptr, pointer);
}

void X11Desktop::turnWheel(X11Window* window, WheelDistance distance, const Pointer& pointer) {
    X11Window* target = findTarget(window);
    if (!target)
        return;
    target->deliverWheel({toClient(window, *target, pointer), distance.x, distance.y, 0,
                          toModifiers(pointer.state), toTicks(pointer.time)});
}

} // namespace qorl::platform
