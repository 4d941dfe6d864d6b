#pragma once

#include "platform/PlatformWindow.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace qorl::test {

/// A platform window's client that writes down what it hears, one line a call, and paints a plain colour.
class WindowRecorder : public platform::PlatformWindowClient {
public:
    explicit WindowRecorder(std::string name = {}, std::vector<std::string>* log = nullptr);

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

    /// The lines since the last call, joined by "; ".
    std::string take();
    bool has(std::string_view line) const;

    /// What `paint` fills the region with, 0xAARRGGBB premultiplied, each pixel of it.
    uint32_t color = 0xFF2060A0;
    platform::Region painted;      ///< logical, since it was last cleared
    std::vector<CmRect> lastPaint; ///< rects of the last paint
    bool isLoggingPaint = false;
    bool isLoggingMoves = true;
    std::function<void(const platform::MouseEvent&)> onMouse;
    std::function<void()> onPaint;

private:
    void write(std::string line);

    std::string name_;
    std::vector<std::string> own_;
    std::vector<std::string>* log_;
};

/// "10,20 30x40".
std::string toText(const CmRect& rect);

} // namespace qorl::test
