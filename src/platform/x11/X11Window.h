#pragma once

#include "platform/WindowBase.h"
#include "platform/x11/X11Image.h"

#include <memory>

namespace qorl::platform {

class X11Desktop;

/// A window of the X server. Managed windows ask their window manager, and hear of its answers by events;
/// popups, overlays and children place themselves.
class X11Window : public WindowBase {
public:
    X11Window(X11Desktop& desktop, const WindowDescription& description, PlatformWindowClient& client);

    NativeHandle getHandle() const override { return id_; }
    FrameInsets getFrameInsets() const override { return insets_; }
    PixelSurface getSurface() override;
    void setIcon(std::span<const PixelSurface> pictures) override;

    xcb_window_t getId() const { return id_; }
    /// Whether the window manager looks after it.
    bool isManaged() const { return isManaged_; }
    bool takesFocus() const;
    bool usesSharedMemory() const { return image_ && image_->isShared(); }

    // What the server told

    void handleExpose(const xcb_expose_event_t& event);
    void handleConfigure(const xcb_configure_notify_event_t& event);
    void handleMap(bool isMapped);
    void handleProperty(xcb_atom_t property);
    void applyScale(double scale);
    void applyCursor(xcb_cursor_t cursor);

protected:
    PixelSurface allocateSurface(CmSize deviceSize) override;
    void freeSurface() override { image_.reset(); }
    void nativeShow(ShowState state, uint32_t flags) override;
    void nativeHide() override;
    void nativeMove(CmPoint position, CmSize size) override;
    void nativeActivate() override;
    void nativeRaise() override;
    void nativeSetShowState(ShowState state) override;
    void nativeClose() override;
    void nativePresent(const Region& deviceRegion) override;
    void nativeSetOwner() override;
    void nativeSetTitle() override;
    void nativeSetStyle() override;
    void nativeSetOpacity() override;
    void nativeSetLimits() override { writeNormalHints(); }

private:
    void createNative(const WindowDescription& description);
    void writeHints();
    void writeNormalHints();
    void writeManagerHints(ShowState state);
    void writeWindowState(ShowState state);
    void writeUserTime(uint32_t showFlags);
    void writeType();
    void passInputThrough();
    void readShowState();
    void becomeNormal();
    /// Maximized or minimized, where no place of ours counts.
    bool isHeldByManager() const;
    void changeState(bool on, X11Atom first, X11Atom second);
    CmRect toDeviceRect(CmPoint position, CmSize size) const;

    X11Desktop& x11_;
    X11Connection& connection_;
    xcb_window_t id_ = XCB_WINDOW_NONE;
    xcb_gcontext_t context_ = 0;
    uint8_t depth_ = 0;
    bool isManaged_;
    bool isMapped_ = false;
    bool isPositionGiven_;
    bool isPlaceWanted_ = false; ///< The restored rect is a wish that the manager doesn't know yet.
    FrameInsets insets_;
    std::unique_ptr<X11Image> image_;
    Region exposed_; ///< device pixels; collected until the last event of a series
};

} // namespace qorl::platform
