#include "platform/x11/X11Window.h"

#include "platform/x11/X11Desktop.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <xcb/xcb_icccm.h>
#include <xcb/xfixes.h>

namespace qorl::platform {

namespace {

bool placesItself(WindowKind kind) {
    return kind == WindowKind::popup || kind == WindowKind::overlay;
}

} // namespace

X11Window::X11Window(X11Desktop& desktop, const WindowDescription& description, PlatformWindowClient& client)
    : WindowBase(desktop, description, client), x11_(desktop), connection_(desktop.getConnection()),
      isManaged_(!placesItself(description.kind) && description.kind != WindowKind::child),
      isPositionGiven_(description.position == WindowDescription::Position::given) {
    startWithScale(desktop.getScale());
    createNative(description);
    writeHints();
}

bool X11Window::takesFocus() const {
    return getKind() != WindowKind::overlay && getKind() != WindowKind::child &&
           !(getStyle() & WindowStyle::noActivate);
}

void X11Window::createNative(const WindowDescription& description) {
    const CmRect device = toDeviceRect(getPosition(), getSize());
    const bool isBlended =
        getStyle() & WindowStyle::transparent && connection_.getAlphaVisual() && connection_.hasCompositor();
    depth_ = isBlended ? uint8_t{32} : connection_.getDepth();
    xcb_window_t parent = connection_.getRoot();
    if (getKind() == WindowKind::child) {
        const NativeHandle owner =
            description.owner ? description.owner->getHandle() : description.nativeParent;
        parent = owner ? static_cast<xcb_window_t>(owner) : parent;
    }
    const uint32_t values[] = {
        XCB_BACK_PIXMAP_NONE,
        0,
        XCB_GRAVITY_NORTH_WEST,
        placesItself(getKind()),
        x11_.getWindowEventMask(),
        isBlended ? connection_.getAlphaColormap() : connection_.getScreen()->default_colormap,
    };
    constexpr uint32_t mask = XCB_CW_BACK_PIXMAP | XCB_CW_BORDER_PIXEL | XCB_CW_BIT_GRAVITY |
                              XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP;
    id_ = xcb_generate_id(connection_);
    xcb_create_window(connection_, depth_, id_, parent, static_cast<int16_t>(device.left),
                      static_cast<int16_t>(device.top), static_cast<uint16_t>(device.width()),
                      static_cast<uint16_t>(device.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      isBlended ? connection_.getAlphaVisual() : connection_.getVisual(), mask, values);
    context_ = xcb_generate_id(connection_);
    // Copies from the surface must not answer each with an event of their own.
    const uint32_t noExposures = 0;
    xcb_create_gc(connection_, context_, id_, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
    x11_.selectPointerEvents(id_);
    if (getKind() == WindowKind::overlay)
        passInputThrough();
}

void X11Window::passInputThrough() {
    if (!connection_.hasFixes())
        return;
    const xcb_xfixes_region_t nothing = xcb_generate_id(connection_);
    xcb_xfixes_create_region(connection_, nothing, 0, nullptr);
    constexpr xcb_shape_kind_t input = 2;
    xcb_xfixes_set_window_shape_region(connection_, id_, input, 0, 0, nothing);
    xcb_xfixes_destroy_region(connection_, nothing);
}

CmRect X11Window::toDeviceRect(CmPoint position, CmSize size) const {
    const CmPoint origin = x11_.toDevicePoint(position);
    // An X window lies within 16 bits around its parent's origin.
    constexpr int32_t farthest = 32000;
    return CmRect::ofSize(
        {std::clamp(origin.x, -farthest, farthest), std::clamp(origin.y, -farthest, farthest)},
        toDeviceSize(size));
}

PixelSurface X11Window::allocateSurface(CmSize deviceSize) {
    if (int64_t{deviceSize.width} * deviceSize.height > mostPixels)
        return {};
    image_ = X11Image::create(connection_, deviceSize.width, deviceSize.height);
    return image_ ? image_->getSurface() : PixelSurface();
}

PixelSurface X11Window::getSurface() {
    // Whoever gets the pixels may write them.
    if (image_)
        image_->waitForServer();
    return WindowBase::getSurface();
}

void X11Window::nativePresent(const Region& deviceRegion) {
    if (image_ && isMapped_)
        image_->put(id_, context_, depth_, deviceRegion);
}

void X11Window::handleExpose(const xcb_expose_event_t& event) {
    exposed_.add(CmRect::ofSize({event.x, event.y}, {event.width, event.height}));
    if (event.count > 0)
        return;
    Region region;
    std::swap(region, exposed_);
    region.intersect(CmRect::ofSize({}, getDeviceSize()));
    // What is invalid is painted and presented soon; the rest stands in the surface.
    region.subtract(getInvalidRegion());
    presentDevice(region);
}

void X11Window::nativeShow(ShowState state, uint32_t flags) {
    if (isMapped_ && getShowState() != ShowState::minimized) {
        if (state != getShowState())
            nativeSetShowState(state);
        nativeRaise();
    } else {
        writeManagerHints(state);
        writeWindowState(state);
        writeUserTime(flags);
        const uint32_t raise = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(connection_, id_, XCB_CONFIG_WINDOW_STACK_MODE, &raise);
        xcb_map_window(connection_, id_);
        isMapped_ = true;
        if (!isManaged_)
            reportShowState(ShowState::normal);
    }
    if (!(flags & showWithoutActivation) && state != ShowState::minimized && !isClosed())
        nativeActivate();
    xcb_flush(connection_);
}

void X11Window::nativeHide() {
    // A manager learns of a withdrawal by the event that this sends to the root window.
    if (isManaged_) {
        xcb_unmap_notify_event_t event = {};
        event.response_type = XCB_UNMAP_NOTIFY;
        event.event = connection_.getRoot();
        event.window = id_;
        xcb_unmap_window(connection_, id_);
        xcb_send_event(connection_, 0, connection_.getRoot(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char*>(&event));
    } else {
        xcb_unmap_window(connection_, id_);
    }
    isMapped_ = false;
    x11_.updateGrab();
    xcb_flush(connection_);
}

void X11Window::nativeMove(CmPoint position, CmSize size) {
    if (isHeldByManager()) {
        // It would stay where it is, and come back to a place that the manager remembers.
        isPlaceWanted_ = true;
        return;
    }
    isPlaceWanted_ = false;
    const CmRect device = toDeviceRect(position, size);
    isPositionGiven_ = true;
    writeNormalHints();
    const uint32_t values[] = {static_cast<uint32_t>(device.left), static_cast<uint32_t>(device.top),
                               static_cast<uint32_t>(device.width()), static_cast<uint32_t>(device.height())};
    xcb_configure_window(connection_, id_,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                             XCB_CONFIG_WINDOW_HEIGHT,
                         values);
    xcb_flush(connection_);
    // Nobody else has a say in where these are; for the others the manager's answer comes by an event.
    if (!isManaged_ || !isMapped_)
        reportGeometry(position, size, device.size());
}

void X11Window::nativeActivate() {
    if (!takesFocus())
        return;
    if (isManaged_)
        x11_.requestFocus(*this);
    else
        x11_.activatePopup(*this);
}

void X11Window::nativeRaise() {
    const uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection_, id_, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    xcb_flush(connection_);
}

void X11Window::nativeSetShowState(ShowState state) {
    if (!isManaged_)
        return;
    if (!isMapped_) {
        reportShowState(state);
        return;
    }
    if (state == ShowState::minimized) {
        const uint32_t iconic = XCB_ICCCM_WM_STATE_ICONIC;
        connection_.sendToManager(id_, X11Atom::wmChangeState, std::span(&iconic, 1));
    } else {
        changeState(state == ShowState::maximized, X11Atom::netWmStateMaximizedHorz,
                    X11Atom::netWmStateMaximizedVert);
        if (getShowState() == ShowState::minimized) {
            xcb_map_window(connection_, id_);
            nativeActivate();
        }
    }
    xcb_flush(connection_);
}

void X11Window::nativeClose() {
    xcb_free_gc(connection_, context_);
    xcb_destroy_window(connection_, id_);
    isMapped_ = false;
    x11_.updateGrab();
    xcb_flush(connection_);
}

void X11Window::handleConfigure(const xcb_configure_notify_event_t& event) {
    const Ref<WindowBase> self = retain<WindowBase>(this);
    CmPoint device{event.x, event.y};
    const bool isSynthetic = event.response_type & 0x80;
    if (!isSynthetic && isManaged_ && isMapped_)
        device = x11_.getOriginOf(id_);
    CmPoint position = x11_.toLogicalPoint(device);
    if (getKind() == WindowKind::child)
        position = x11_.toLogicalPoint(x11_.getOriginOf(id_));
    const CmSize deviceSize{event.width, event.height};
    CmSize size = getSize();
    if (deviceSize != getDeviceSize() || toDeviceSize(size) != deviceSize)
        size = x11_.toLogicalSize(deviceSize);
    if (size != getSize() && isManaged_ && isMapped_) {
        // The size of a maximized window may come before the word that it is one, and would pass for its
        // normal one.
        readShowState();
        x11_.trackSizing(*this);
    }
    if (!isClosed())
        reportGeometry(position, size, deviceSize);
}

void X11Window::handleMap(bool isMapped) {
    if (isManaged_ && isMapped)
        readShowState();
}

void X11Window::handleProperty(xcb_atom_t property) {
    if (property == connection_[X11Atom::netWmState] || property == connection_[X11Atom::wmState]) {
        readShowState();
    } else if (property == connection_[X11Atom::netFrameExtents]) {
        const auto extents = connection_.getProperty32(id_, property, XCB_ATOM_CARDINAL);
        if (extents.size() == 4) {
            const auto logical = [this](uint32_t device) {
                return static_cast<int32_t>(std::ceil(device / getScaleFactor() - 0.001));
            };
            insets_ = {logical(extents[0]), logical(extents[2]), logical(extents[1]), logical(extents[3])};
        }
    }
}

void X11Window::readShowState() {
    if (!isMapped_ || !isManaged_)
        return;
    const auto states = connection_.getProperty32(id_, connection_[X11Atom::netWmState], XCB_ATOM_ATOM);
    const auto has = [&](X11Atom atom) {
        return std::find(states.begin(), states.end(), connection_[atom]) != states.end();
    };
    const auto icccm =
        connection_.getProperty32(id_, connection_[X11Atom::wmState], connection_[X11Atom::wmState]);
    const bool isIconic = !icccm.empty() && icccm.front() == XCB_ICCCM_WM_STATE_ICONIC;
    if (isIconic || has(X11Atom::netWmStateHidden))
        reportShowState(ShowState::minimized);
    else if (has(X11Atom::netWmStateMaximizedHorz) && has(X11Atom::netWmStateMaximizedVert))
        reportShowState(ShowState::maximized);
    else
        becomeNormal();
}

void X11Window::becomeNormal() {
    const CmRect wanted = getRestoredRect();
    reportShowState(ShowState::normal);
    if (isPlaceWanted_ && isMapped_ && !isClosed())
        nativeMove(wanted.origin(), wanted.size());
}

void X11Window::applyScale(double scale) {
    if (isClosed() || scale == getScaleFactor())
        return;
    const Ref<WindowBase> self = retain<WindowBase>(this);
    if (isHeldByManager()) {
        isPlaceWanted_ = true;
        reportScale(scale, getDeviceSize());
        reportGeometry(x11_.toLogicalPoint(x11_.getOriginOf(id_)), x11_.toLogicalSize(getDeviceSize()),
                       getDeviceSize());
        return;
    }
    const CmRect device = scaledOutward({0, 0, getSize().width, getSize().height}, scale);
    reportScale(scale, device.size());
    if (!isClosed())
        nativeMove(getPosition(), getSize());
}

bool X11Window::isHeldByManager() const {
    return isManaged_ && isMapped_ && getShowState() != ShowState::normal;
}

void X11Window::applyCursor(xcb_cursor_t cursor) {
    if (!isClosed())
        xcb_change_window_attributes(connection_, id_, XCB_CW_CURSOR, &cursor);
}

} // namespace qorl::platform
