#include "platform/WindowBase.h"

#include "platform/DesktopBase.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

namespace qorl::platform {

namespace {

uint32_t premultiply(uint32_t color) {
    const uint32_t alpha = color >> 24;
    const auto channel = [&](int shift) { return ((color >> shift & 0xFF) * alpha + 127) / 255 << shift; };
    return alpha << 24 | channel(16) | channel(8) | channel(0);
}

void moveRows(const PixelSurface& surface, const CmRect& from, CmPoint delta) {
    const auto bytes = static_cast<size_t>(from.width()) * sizeof(uint32_t);
    for (int32_t i = 0; i < from.height(); ++i) {
        // Rows that are still to be read must not be written before.
        const int32_t y = delta.y > 0 ? from.bottom - 1 - i : from.top + i;
        std::memmove(surface.getRow(y + delta.y) + from.left + delta.x, surface.getRow(y) + from.left, bytes);
    }
}

} // namespace

WindowBase::WindowBase(DesktopBase& desktop, const WindowDescription& description,
                       PlatformWindowClient& client)
    : desktop_(desktop), client_(&client), kind_(description.kind), style_(description.style),
      owner_(static_cast<WindowBase*>(description.owner)), title_(description.title),
      position_(description.frame.origin()) {
    size_ = withinLimits(description.frame.size());
    deviceSize_ = toDeviceSize(size_);
    restoredRect_ = getRect();
}

WindowBase::~WindowBase() = default;

Result WindowBase::queryInterface(const InterfaceId& id, void** out) {
    if (id != PlatformWindow::iid && id != FInterface::iid) {
        *out = nullptr;
        return Result::noInterface;
    }
    addRef();
    *out = static_cast<PlatformWindow*>(this);
    return Result::ok;
}

uint32_t WindowBase::addRef() {
    return ++references_;
}

uint32_t WindowBase::release() {
    const uint32_t left = --references_;
    if (left == 0) {
        // Closing hands out references of its own.
        references_ = 1;
        close(CloseMode::normal);
        delete this;
    }
    return left;
}

bool WindowBase::isOwnedBy(const WindowBase& window) const {
    for (const WindowBase* owner = owner_; owner; owner = owner->owner_) {
        if (owner == &window)
            return true;
    }
    return false;
}

void WindowBase::show(ShowState state, uint32_t flags) {
    if (isClosed())
        return;
    const Ref<WindowBase> self = retain(this);
    if (flags & showMaximized)
        state = ShowState::maximized;
    if (style_ & WindowStyle::noActivate || kind_ == WindowKind::overlay || kind_ == WindowKind::child)
        flags |= showWithoutActivation;
    if (!isVisible_) {
        isVisible_ = true;
        invalidateDevice(getDeviceRect());
    }
    desktop_.windowShown(*this);
    if (!isClosed())
        nativeShow(state, flags);
}

void WindowBase::hide() {
    if (isClosed() || !isVisible_)
        return;
    isVisible_ = false;
    const Ref<WindowBase> self = retain(this);
    desktop_.windowHidden(*this);
    if (!isClosed())
        nativeHide();
}

void WindowBase::setTitle(std::u16string_view title) {
    if (isClosed() || title_ == title)
        return;
    title_ = title;
    nativeSetTitle();
}

void WindowBase::setPositionSize(CmPoint position, CmSize size) {
    if (isClosed())
        return;
    const Ref<WindowBase> self = retain(this);
    size = withinLimits(size);
    restoredRect_ = CmRect::ofSize(position, size);
    nativeMove(position, size);
}

void WindowBase::update() {
    if (!needsPaint())
        return;
    const PixelSurface surface = getSurface();
    Region todo;
    std::swap(todo, invalid_);
    if (surface.isEmpty())
        return;
    const Region logical = scale_ == 1.0 ? todo : todo.scaled(1.0 / scale_);
    const Ref<WindowBase> self = retain(this);
    Region drawn;
    isPainting_ = true;
    client_->paint(surface, logical, drawn);
    isPainting_ = false;
    if (isSurfaceStale_)
        dropSurface();
    present(drawn);
}

void WindowBase::present(const Region& region) {
    if (isClosed() || !isVisible_ || surface_.isEmpty())
        return;
    Region device = scale_ == 1.0 ? region : region.scaled(scale_);
    device.intersect(getDeviceRect());
    presentDevice(device);
}

void WindowBase::presentDevice(const Region& region) {
    // A surface that is being painted may have the size of before.
    if (!region.isEmpty() && !isSurfaceStale_)
        nativePresent(region);
}

void WindowBase::center() {
    if (isClosed())
        return;
    CmRect place;
    if (owner_ && owner_->isVisible() && owner_->getShowState() != ShowState::minimized)
        place = owner_->getRect();
    else
        desktop_.getMonitorRect(desktop_.monitorAt(position_), MonitorArea::work, place);
    const CmSize size = restoredRect_.size();
    setPositionSize(
        {place.left + (place.width() - size.width) / 2, place.top + (place.height() - size.height) / 2},
        size);
}

void WindowBase::activate() {
    if (isClosed() || !isVisible_)
        return;
    const Ref<WindowBase> self = retain(this);
    if (showState_ == ShowState::minimized)
        setShowState(ShowState::normal);
    if (isClosed())
        return;
    desktop_.raiseInOrder(*this);
    nativeActivate();
}

void WindowBase::enable(bool on) {
    isEnabled_ = on;
    // The release would be kept from it, and the mouse from everybody else.
    if (!on)
        desktop_.windowDisabled(*this);
}

void WindowBase::setOwner(PlatformWindow* owner) {
    auto* next = static_cast<WindowBase*>(owner);
    if (isClosed() || next == owner_ || kind_ == WindowKind::child)
        return;
    if (next && (next == this || next->isClosed() || next->isOwnedBy(*this)))
        return;
    owner_ = next;
    nativeSetOwner();
    // Above its owner; the others stay as they are.
    if (owner_)
        desktop_.raiseInOrder(*this);
}

void WindowBase::invalidate(const CmRect& rect) {
    if (isClosed())
        return;
    invalidateDevice(scale_ == 1.0 ? rect : scaledOutward(rect, scale_));
}

void WindowBase::invalidateDevice(const CmRect& rect) {
    invalid_.add(rect.intersect(getDeviceRect()));
    constexpr size_t mostRects = 64;
    if (invalid_.getRects().size() > mostRects)
        invalid_.simplify(mostRects / 4);
}

bool WindowBase::needsPaint() const {
    return client_ && isVisible_ && !isPainting_ && showState_ != ShowState::minimized && !invalid_.isEmpty();
}

void WindowBase::raise() {
    if (isClosed())
        return;
    desktop_.raiseInOrder(*this);
    nativeRaise();
}

void WindowBase::setShowState(ShowState state) {
    const Ref<WindowBase> self = retain(this);
    if (!isClosed() && state != showState_)
        nativeSetShowState(state);
}

void WindowBase::clientToScreen(CmPoint& point) const {
    point = point + position_;
}

void WindowBase::screenToClient(CmPoint& point) const {
    point = point - position_;
}

void WindowBase::setStyleFlag(uint32_t flag, bool on) {
    const uint32_t style = on ? style_ | flag : style_ & ~flag;
    if (isClosed() || style == style_)
        return;
    style_ = style;
    nativeSetStyle();
}

void WindowBase::setBackground(uint32_t color) {
    background_ = color;
}

void WindowBase::setOpacity(float opacity) {
    opacity = std::clamp(opacity, 0.0F, 1.0F);
    if (isClosed() || opacity == opacity_)
        return;
    opacity_ = opacity;
    nativeSetOpacity();
}

void WindowBase::setLimits(LimitKind kind, CmSize size) {
    if (isClosed())
        return;
    limits_[static_cast<int>(kind)] = {std::clamp(size.width, 1, longestEdge),
                                       std::clamp(size.height, 1, longestEdge)};
    nativeSetLimits();
}

CmSize WindowBase::withinLimits(CmSize size) const {
    const CmSize least = getLimit(LimitKind::minimum);
    const CmSize most = getLimit(LimitKind::maximum);
    return {std::max(std::min(size.width, most.width), least.width),
            std::max(std::min(size.height, most.height), least.height)};
}

CmSize WindowBase::toDeviceSize(CmSize size) const {
    const CmRect device = scaledOutward({0, 0, size.width, size.height}, scale_);
    return {std::clamp(device.right, 1, longestEdge), std::clamp(device.bottom, 1, longestEdge)};
}

void WindowBase::close(CloseMode) {
    if (isClosed())
        return;
    const Ref<WindowBase> self = retain(this);
    client_ = nullptr;
    isVisible_ = false;
    desktop_.closeOwnedWindows(*this);
    desktop_.windowClosed(*this);
    nativeClose();
    dropSurface();
    owner_ = nullptr;
}

PlatformWindow::Activation WindowBase::getActivationState() const {
    const WindowBase* active = isClosed() ? nullptr : desktop_.getActive();
    if (!active)
        return Activation::inactive;
    if (active == this)
        return Activation::active;
    return active->isOwnedBy(*this) ? Activation::childActive : Activation::inactive;
}

void WindowBase::setTransparencyColor(uint32_t color) {
    if (isClosed() || color == transparencyColor_)
        return;
    transparencyColor_ = color;
    nativeSetTransparencyColor();
}

void WindowBase::getPlacement(CmRect& rect) const {
    rect = restoredRect_;
}

void WindowBase::setPlacement(const CmRect& rect) {
    setPositionSize(rect.origin(), rect.size());
}

PixelSurface WindowBase::getSurface() {
    if (isClosed())
        return {};
    if (!surface_.pixels) {
        surface_ = allocateSurface(deviceSize_);
        surface_.scale = scale_;
        if (!surface_.isEmpty())
            fillBackground(surface_);
    }
    return surface_;
}

void WindowBase::fillBackground(const PixelSurface& surface) const {
    const uint32_t pixel = style_ & WindowStyle::transparent ? 0 : premultiply(background_);
    for (int32_t y = 0; y < surface.height; ++y)
        std::fill_n(surface.getRow(y), surface.width, pixel);
}

PixelSurface WindowBase::allocateSurface(CmSize deviceSize) {
    const int64_t pixels = int64_t{deviceSize.width} * deviceSize.height;
    if (pixels > mostPixels)
        return {};
    memory_.reset(new (std::nothrow) uint32_t[static_cast<size_t>(pixels)]);
    if (!memory_)
        return {};
    return {reinterpret_cast<uint8_t*>(memory_.get()), deviceSize.width, deviceSize.height,
            deviceSize.width * static_cast<int32_t>(sizeof(uint32_t)), scale_};
}

void WindowBase::freeSurface() {
    memory_.reset();
}

void WindowBase::dropSurface() {
    if (!surface_.pixels)
        return;
    // The client still draws on it.
    isSurfaceStale_ = isPainting_;
    if (isPainting_)
        return;
    surface_ = {};
    freeSurface();
}

void WindowBase::scrollRect(const CmRect& rect, CmPoint delta) {
    if (isClosed() || delta == CmPoint{})
        return;
    const CmRect area = scaledOutward(rect, scale_).intersect(getDeviceRect());
    // Nothing of the area stays beyond its own extent.
    constexpr double farthest = longestEdge;
    const double x = std::clamp(delta.x * scale_, -farthest, farthest);
    const double y = std::clamp(delta.y * scale_, -farthest, farthest);
    const CmPoint device{static_cast<int32_t>(std::lround(x)), static_cast<int32_t>(std::lround(y))};
    // A distance of broken device pixels cannot be moved, and nothing stands in a surface that was never
    // painted.
    if (!surface_.pixels || isSurfaceStale_ || std::abs(x - device.x) > 0.001 ||
        std::abs(y - device.y) > 0.001) {
        invalidateDevice(area);
        return;
    }
    const CmRect target = area.intersect(area.moved(device));
    Region moved = invalid_;
    moved.intersect(area);
    invalid_.subtract(moved);
    moved.move(device.x, device.y);
    moved.intersect(area);
    if (!target.isEmpty())
        moveRows(surface_, target.moved(-device.x, -device.y), device);
    Region uncovered(area);
    uncovered.subtract(target);
    invalid_.add(moved);
    invalid_.add(uncovered);
    if (!target.isEmpty() && isVisible_)
        nativePresent(target);
}

void WindowBase::setToolTip(const CmRect& rect, std::u16string_view text) {
    if (!isClosed())
        desktop_.setTip(*this, rect, text);
}

bool WindowBase::deliverMouse(const MouseEvent& event) {
    const Ref<WindowBase> self = retain(this);
    if (isClosed() || (!isEnabled_ && event.kind != MouseKind::leave))
        return false;
    if (event.kind == MouseKind::down || event.kind == MouseKind::leave)
        desktop_.hideTip();
    return client_->mouse(event);
}

bool WindowBase::deliverWheel(const WheelEvent& event) {
    const Ref<WindowBase> self = retain(this);
    return !isClosed() && isEnabled_ && client_->wheel(event);
}

bool WindowBase::deliverKey(const KeyEvent& event) {
    const Ref<WindowBase> self = retain(this);
    if (isClosed() || !isEnabled_)
        return false;
    if (event.kind == KeyKind::down)
        desktop_.hideTip();
    return client_->key(event);
}

void WindowBase::reportGeometry(CmPoint position, CmSize size, CmSize deviceSize) {
    if (isClosed())
        return;
    const Ref<WindowBase> self = retain(this);
    const bool isMoved = position != position_;
    const bool isSized = size != size_;
    position_ = position;
    size_ = size;
    // What did not change may still be on its way.
    if (showState_ == ShowState::normal)
        restoredRect_ = CmRect::ofSize(isMoved ? position : restoredRect_.origin(),
                                       isSized ? size : restoredRect_.size());
    if (deviceSize != deviceSize_) {
        deviceSize_ = deviceSize;
        dropSurface();
        invalid_ = getDeviceRect();
    }
    if (isMoved)
        client_->moved(position);
    if (isSized && !isClosed())
        client_->sized(size);
}

void WindowBase::startWithScale(double scale) {
    scale_ = scale;
    deviceSize_ = toDeviceSize(size_);
}

void WindowBase::reportScale(double scale, CmSize deviceSize) {
    if (isClosed() || scale == scale_)
        return;
    scale_ = scale;
    deviceSize_ = deviceSize;
    dropSurface();
    invalid_ = getDeviceRect();
    client_->scaleFactorChanged(scale);
}

void WindowBase::reportShowState(ShowState state) {
    if (isClosed() || state == showState_)
        return;
    showState_ = state;
    switch (state) {
    case ShowState::normal: client_->restored(); break;
    case ShowState::minimized: client_->minimized(); break;
    case ShowState::maximized: client_->maximized(); break;
    }
}

} // namespace qorl::platform
