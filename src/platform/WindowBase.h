#pragma once

#include "platform/PlatformWindow.h"

#include <qorl/Ref.h>

#include <atomic>
#include <memory>
#include <string>

namespace qorl::platform {

class DesktopBase;

/// What the windows of all back ends share: state, the invalid region, the paint entry with its scaling, and
/// the order in which a client hears of changes. A back end fills the operations that begin with `native` and
/// reports what its desktop did through those that begin with `report`.
class WindowBase : public PlatformWindow {
public:
    static constexpr int32_t longestEdge = 32767; ///< of a client area, in device pixels
    /// More than any screen has: a window that asks for more gets no surface, instead of all memory.
    static constexpr int64_t mostPixels = int64_t{64} << 20;

    Result queryInterface(const InterfaceId& id, void** out) override;
    uint32_t addRef() override;
    uint32_t release() override;

    void show(ShowState state, uint32_t flags) override;
    void setTitle(std::u16string_view title) override;
    void setPositionSize(CmPoint position, CmSize size) override;
    void update() override;
    void center() override;
    void activate() override;
    void enable(bool on) override;
    void invalidate(const CmRect& rect) override;
    void raise() override;
    void setShowState(ShowState state) override;
    void clientToScreen(CmPoint& point) const override;
    void setStyleFlag(uint32_t flag, bool on) override;
    void setBackground(uint32_t color) override;
    void setOpacity(float opacity) override;
    void setLimits(LimitKind kind, CmSize size) override;
    void close(CloseMode mode) override;
    Activation getActivationState() const override;
    void setTransparencyColor(uint32_t color) override;
    void getPlacement(CmRect& rect) const override;
    void setPlacement(const CmRect& rect) override;
    PixelSurface getSurface() override;
    double getScaleFactor() const override { return scale_; }
    void setOwner(PlatformWindow* owner) override;
    void hide() override;
    bool isVisible() const override { return isVisible_; }
    ShowState getShowState() const override { return showState_; }
    CmPoint getPosition() const override { return position_; }
    CmSize getSize() const override { return size_; }
    FrameInsets getFrameInsets() const override { return {}; }
    void screenToClient(CmPoint& point) const override;
    void present(const Region& region) override;
    void scrollRect(const CmRect& rect, CmPoint delta) override;
    void setToolTip(const CmRect& rect, std::u16string_view text) override;

    // For the desktop

    bool deliverMouse(const MouseEvent& event);
    bool deliverWheel(const WheelEvent& event);
    bool deliverKey(const KeyEvent& event);

    /// The client while it may be called: null once closed.
    PlatformWindowClient* getClient() const { return client_; }
    WindowKind getKind() const { return kind_; }
    uint32_t getStyle() const { return style_; }
    WindowBase* getOwner() const { return owner_; }
    CmRect getRect() const { return CmRect::ofSize(position_, size_); }
    CmSize getDeviceSize() const { return deviceSize_; }
    const std::u16string& getTitle() const { return title_; }
    float getOpacity() const { return opacity_; }
    bool isEnabled() const { return isEnabled_; }
    bool isClosed() const { return !client_; }
    bool isOwnedBy(const WindowBase& window) const;

    /// Whether `update` would paint now; false while a paint of this window runs.
    bool needsPaint() const;
    const Region& getInvalidRegion() const { return invalid_; } ///< in device pixels

protected:
    WindowBase(DesktopBase& desktop, const WindowDescription& description, PlatformWindowClient& client);
    virtual ~WindowBase();

    /// For constructors: the scale before the client can ask.
    void startWithScale(double scale);

    // What the desktop did. Each tells the client, once and only of real changes.

    /// The size in device pixels is what the logical one is drawn on.
    void reportGeometry(CmPoint position, CmSize size, CmSize deviceSize);
    void reportScale(double scale, CmSize deviceSize);
    void reportShowState(ShowState state);

    /// `rect` in device pixels.
    void invalidateDevice(const CmRect& rect);
    /// Puts `region` of the surface, in device pixels, on the screen; not while its size is that of before.
    void presentDevice(const Region& region);

    /// Fills a fresh surface of `deviceSize`; rows from top to bottom. Empty when memory is short. It stays
    /// until the end of a paint, also when the window is closed or sized in there.
    virtual PixelSurface allocateSurface(CmSize deviceSize);
    virtual void freeSurface();

    /// Called while `isVisible` says already what will be.
    virtual void nativeShow(ShowState state, uint32_t flags) = 0;
    virtual void nativeHide() = 0;
    virtual void nativeMove(CmPoint position, CmSize size) = 0;
    virtual void nativeActivate() = 0;
    virtual void nativeRaise() = 0;
    virtual void nativeSetShowState(ShowState state) = 0;
    virtual void nativeClose() = 0;
    virtual void nativePresent(const Region& deviceRegion) = 0;
    virtual void nativeSetOwner() {}
    virtual void nativeSetTitle() {}
    virtual void nativeSetStyle() {}
    virtual void nativeSetOpacity() {}
    virtual void nativeSetLimits() {}
    virtual void nativeSetTransparencyColor() {}

    /// Device pixels that hold `size` at the window's scale.
    CmSize toDeviceSize(CmSize size) const;
    CmSize withinLimits(CmSize size) const;
    CmSize getLimit(LimitKind kind) const { return limits_[static_cast<int>(kind)]; }
    uint32_t getTransparencyColor() const { return transparencyColor_; }

    /// Where the window is when it is neither minimized nor maximized, or was asked to go.
    void setRestoredRect(const CmRect& rect) { restoredRect_ = rect; }
    const CmRect& getRestoredRect() const { return restoredRect_; }

    DesktopBase& desktop_;

private:
    CmRect getDeviceRect() const { return CmRect::ofSize({}, deviceSize_); }
    void dropSurface();
    void fillBackground(const PixelSurface& surface) const;

    std::atomic<uint32_t> references_ = 1;
    PlatformWindowClient* client_;
    WindowKind kind_;
    uint32_t style_;
    WindowBase* owner_;
    std::u16string title_;
    CmPoint position_;
    CmSize size_;
    CmSize deviceSize_;
    CmRect restoredRect_;
    CmSize limits_[2] = {{1, 1}, {longestEdge, longestEdge}};
    double scale_ = 1.0;
    ShowState showState_ = ShowState::normal;
    uint32_t background_ = 0xFFFFFFFF;
    uint32_t transparencyColor_ = 0;
    float opacity_ = 1.0F;
    bool isVisible_ = false;
    bool isEnabled_ = true;
    bool isPainting_ = false;
    bool isSurfaceStale_ = false; ///< Dropped within a paint, which still draws on it.
    Region invalid_;              ///< device pixels
    PixelSurface surface_;
    std::unique_ptr<uint32_t[]> memory_;
};

} // namespace qorl::platform
