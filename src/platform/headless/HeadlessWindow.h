#pragma once

#include "platform/WindowBase.h"

namespace qorl::platform {

class HeadlessDesktop;

/// A window in memory. Its desktop grants every wish at once: clients hear of it before the operation
/// returns.
class HeadlessWindow : public WindowBase {
public:
    HeadlessWindow(HeadlessDesktop& desktop, const WindowDescription& description,
                   PlatformWindowClient& client);

    NativeHandle getHandle() const override { return reinterpret_cast<NativeHandle>(this); }
    void setIcon(std::span<const PixelSurface> pictures) override { iconCount_ = pictures.size(); }

    /// What reached the screen since the last call, in device pixels.
    Region takePresented();
    size_t getIconCount() const { return iconCount_; }

    /// A place on the screen as the window's mouse events name it: the device pixel that divides back to it.
    CmPoint toDevice(CmPoint screen) const;

    // What a user does

    void pressClose();
    void sizeByUser(CmSize size);
    void moveByUser(CmPoint position);

    /// Follows the scale of the monitor that the window's centre is on.
    void updateScale();

protected:
    void nativeShow(ShowState state, uint32_t flags) override;
    void nativeHide() override {}
    void nativeMove(CmPoint position, CmSize size) override;
    void nativeActivate() override;
    void nativeRaise() override {}
    void nativeSetShowState(ShowState state) override;
    void nativeClose() override {}
    void nativePresent(const Region& deviceRegion) override { presented_.add(deviceRegion); }

private:
    void place(const CmRect& rect);

    HeadlessDesktop& headless_;
    Region presented_;
    size_t iconCount_ = 0;
};

} // namespace qorl::platform
