#pragma once

#include "platform/PixelSurface.h"
#include "platform/PlatformEvents.h"
#include "platform/Region.h"
#include "platform/WindowStyle.h"

#include <qorl/FInterface.h>
#include <qorl/Geometry.h>

#include <cstdint>
#include <span>
#include <string_view>

namespace qorl::platform {

/// The desktop's own name of a window: a window id, a pointer; 0 is none.
using NativeHandle = uintptr_t;

/// What a platform tells the window that it shows. All calls come on the user-interface thread, out of the
/// event pump or out of an operation of the sink. The window outlives its sink, or calls `close` first.
class PlatformWindowClient {
public:
    /// Paints `region`, in logical pixels, into `surface`, which covers the whole client area;
    /// `surface.scale` is the window's scale factor. What was really drawn is added to `drawn`, in logical
    /// pixels; only that, rounded outward, reaches the screen.
    virtual void paint(const PixelSurface& surface, const Region& region, Region& drawn) = 0;

    /// True when the window took the event.
    virtual bool mouse(const MouseEvent& event) = 0;
    virtual bool key(const KeyEvent& event) = 0;

    /// The client area's new place on the screen and its new size, logical, told once for each change.
    virtual void moved(CmPoint position) = 0;
    virtual void sized(CmSize size) = 0;

    /// The user began and ended to drag the window's border.
    virtual void sizeTrackingStarted() = 0;
    virtual void sizeTrackingEnded() = 0;

    /// `MainWindow::changed` when the program's main window changed with it: the activation went to or came
    /// from another document window or another program, not only to a floating window, dialog or popup of
    /// ours.
    enum class MainWindow : uint8_t { kept, changed };
    virtual void activated(MainWindow main) = 0;
    virtual void deactivated(MainWindow main) = 0;

    /// The user asked the desktop to close the window. Nothing happens unless the window calls `close`.
    virtual void closePressed() = 0;

    virtual void minimized() = 0;
    virtual void maximized() = 0;
    virtual void restored() = 0;

    /// The desktop's colours or its light and dark appearance changed.
    virtual void colorSchemeChanged() = 0;

    /// True when the window took the event.
    virtual bool wheel(const WheelEvent& event) = 0;

    /// `getScaleFactor` answers another number from now on. The whole window is invalid; its logical size
    /// stands.
    virtual void scaleFactorChanged(double factor) = 0;

    /// The mouse was captured by this window and is not any more, without a release by the window itself.
    virtual void captureLost() = 0;

    /// The owner is being closed, and this window with it: as soon as this comes back, unless the window
    /// closes in here.
    virtual void ownerClosed() = 0;

protected:
    ~PlatformWindowClient() = default;
};

enum class LimitKind : int32_t { minimum = 0, maximum = 1 };

/// How `PlatformWindow::close` ends a window.
enum class CloseMode : int32_t { withOwner = 1, normal = 2 };

/// Thickness of what the desktop draws around the client area, logical.
struct FrameInsets {
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;
};

/// All that the program needs of a platform for one window: the window sink.
///
/// Positions and sizes are logical pixels and mean the client area, positions on the screen; rectangles count
/// from the client origin. Logical and device pixels differ by the window's scale factor. The first
/// operations stand in the order of the published table.
///
/// Counted; whoever holds a reference after `close` holds an empty shell on which every operation does
/// nothing. Threading: user-interface thread.
class PlatformWindow : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{5B0A6E1C-7C53-4E4B-9D0B-6A2F3D7E9C11}");

    /// `flags` is a word of `ShowFlag`.
    virtual void show(ShowState state, uint32_t flags) = 0;
    virtual void setTitle(std::u16string_view title) = 0;

    /// The desktop may refuse or change both; what it did comes back by `moved` and `sized`, in this order,
    /// within the call or later.
    virtual void setPositionSize(CmPoint position, CmSize size) = 0;

    /// Paints the invalid region and puts it on the screen before it returns. Nothing while a paint is
    /// running.
    virtual void update() = 0;

    /// Centres on the owner, if that is visible, else in the work area of the monitor.
    virtual void center() = 0;
    virtual void activate() = 0;

    /// A disabled window hears no mouse, wheel and key events, and loses the capture of the mouse.
    virtual void enable(bool on) = 0;

    /// Adds to the invalid region, cut at the client area. The paint comes out of the event pump.
    virtual void invalidate(const CmRect& rect) = 0;
    virtual void raise() = 0;
    virtual void setShowState(ShowState state) = 0;
    virtual NativeHandle getHandle() const = 0;
    virtual void clientToScreen(CmPoint& point) const = 0;

    /// Sets or clears bits of `WindowStyle` on a living window.
    virtual void setStyleFlag(uint32_t flag, bool on) = 0;

    /// What shows where nothing was painted yet, 0xAARRGGBB.
    virtual void setBackground(uint32_t color) = 0;

    /// From 0.0, invisible, to 1.0. No effect on a desktop that does not blend windows.
    virtual void setOpacity(float opacity) = 0;
    virtual void setLimits(LimitKind kind, CmSize size) = 0;

    /// Destroys the window on the screen, its owned windows first. The client is not called any more, but
    /// those of the owned windows hear `ownerClosed`.
    virtual void close(CloseMode mode) = 0;

    enum class Activation : int32_t { inactive = 0, active = 1, childActive = 2 };
    virtual Activation getActivationState() const = 0;

    /// The colour, 0xAARRGGBB, that shows what lies behind a window of style `transparent`, on desktops
    /// without an alpha channel.
    virtual void setTransparencyColor(uint32_t color) = 0;

    /// The position and size that the window has when it is neither minimized nor maximized, or will have by
    /// what it was asked for last.
    virtual void getPlacement(CmRect& rect) const = 0;
    virtual void setPlacement(const CmRect& rect) = 0;

    /// The pixels of the whole client area, as they were last painted. Drawing into them outside of a paint
    /// is allowed; `present` shows it. Valid until the next size, scale or close.
    virtual PixelSurface getSurface() = 0;

    /// Device pixels for one logical pixel; 1.0 on a plain screen.
    virtual double getScaleFactor() const = 0;

    // Operations that callers need beside the published table.

    /// From now on the window stays above `owner` and goes with it; null sets it free. Not counted: see
    /// `WindowDescription::owner`. Nothing for a window of kind `child`, and for an owner that it owns
    /// itself.
    virtual void setOwner(PlatformWindow* owner) = 0;
    virtual void hide() = 0;
    virtual bool isVisible() const = 0;
    virtual ShowState getShowState() const = 0;
    virtual CmPoint getPosition() const = 0;
    virtual CmSize getSize() const = 0;
    virtual FrameInsets getFrameInsets() const = 0;
    virtual void screenToClient(CmPoint& point) const = 0;

    /// Puts `region`, logical, of the surface on the screen, without a paint.
    virtual void present(const Region& region) = 0;

    /// Moves the pixels of `rect` by `delta`; what moves out of `rect` is lost, what is uncovered in it
    /// becomes invalid. An invalid region inside moves along.
    virtual void scrollRect(const CmRect& rect, CmPoint delta) = 0;

    /// The plain tip that shows when the mouse rests in `rect`; an empty text takes it away. The desktop's
    /// `TipPresenter` draws it.
    virtual void setToolTip(const CmRect& rect, std::u16string_view text) = 0;

    /// The program's picture in several sizes; the desktop picks. The pixels are copied.
    virtual void setIcon(std::span<const PixelSurface> pictures) = 0;

protected:
    ~PlatformWindow() = default;
};

/// What `DesktopServices::createWindow` needs to know. Plain data for one call; nothing is kept by pointer
/// but `owner`, which is not counted and must outlive the new window or close it.
struct WindowDescription {
    enum class Position : uint8_t {
        given,     ///< `frame` as it stands
        byDesktop, ///< the desktop chooses the position; the size of `frame` holds
    };

    WindowKind kind = WindowKind::document;
    uint32_t style = 0;
    std::u16string_view title;
    CmRect frame;
    Position position = Position::given;
    PlatformWindow* owner = nullptr; ///< stays above it, goes with it; for
                                     ///< `child` it is the container
    NativeHandle nativeParent = 0;   ///< for `child` in a window that is not ours
};

} // namespace qorl::platform
