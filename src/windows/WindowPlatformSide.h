#pragma once

#include "platform/PlatformWindow.h"

namespace qorl {

class UWindow;

/// The ear of a window on its platform: turns the platform's calls into those of the window. Lives as long as
/// the window, since a call may still be on the stack when the platform's window is closed.
class WindowPlatformSide final : public platform::PlatformWindowClient {
public:
    explicit WindowPlatformSide(UWindow& window) : window_(window) {}

    void paint(const platform::PixelSurface& surface, const platform::Region& region,
               platform::Region& drawn) override;
    bool mouse(const platform::MouseEvent& event) override;
    bool key(const platform::KeyEvent& event) override;
    void moved(CmPoint position) override;
    void sized(CmSize size) override;
    void sizeTrackingStarted() override;
    void sizeTrackingEnded() override;
    void activated(MainWindow main) override;
    void deactivated(MainWindow main) override;
    void closePressed() override;
    void minimized() override;
    void maximized() override;
    void restored() override;
    void colorSchemeChanged() override;
    bool wheel(const platform::WheelEvent& event) override;
    void scaleFactorChanged(double factor) override;
    void captureLost() override;
    void ownerClosed() override;

private:
    UWindow& window_;
};

} // namespace qorl
