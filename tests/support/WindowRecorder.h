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
    explicit WindowRecorder(std::string name = {}, std::vector<std::string>* log = nullptr)
        : name_(std::move(name)), log_(log ? log : &own_) {}

    void paint(const platform::PixelSurface& surface, const platform::Region& region,
               platform::Region& drawn) override;
    bool mouse(const platform::MouseEvent& event) override;
    bool key(const platform::KeyEvent& event) override;
    bool wheel(const platform::WheelEvent& event) override;
    void moved(CmPoint position) override;
    void sized(CmSize size) override;
    void sizeTrackingStarted() override { write("tracking started"); }
    void sizeTrackingEnded() override { write("tracking ended"); }
    void activated(MainWindow main) override { write(std::string("activated") + tell(main)); }
    void deactivated(MainWindow main) override { write(std::string("deactivated") + tell(main)); }
    void closePressed() override { write("close pressed"); }
    void minimized() override { write("minimized"); }
    void maximized() override { write("maximized"); }
    void restored() override { write("restored"); }
    void colorSchemeChanged() override { write("color scheme changed"); }
    void scaleFactorChanged(double factor) override;
    void captureLost() override { write("capture lost"); }
    void ownerClosed() override { write("owner closed"); }

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
    static const char* tell(MainWindow main) { return main == MainWindow::changed ? " main" : ""; }

    std::string name_;
    std::vector<std::string> own_;
    std::vector<std::string>* log_;
};

/// "10,20 30x40".
std::string toText(const CmRect& rect);

} // namespace qorl::test
