#include "support/WindowRecorder.h"

#include <algorithm>
#include <cstdio>

namespace qorl::test {

namespace {

std::string toText(CmPoint point) {
    return std::to_string(point.x) + "," + std::to_string(point.y);
}

std::string toText(double number) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%g", number);
    return buffer;
}

} // namespace

std::string toText(const CmRect& rect) {
    return toText(rect.origin()) + " " + std::to_string(rect.width()) + "x" + std::to_string(rect.height());
}

void WindowRecorder::write(std::string line) {
    log_->push_back(name_.empty() ? std::move(line) : name_ + " " + line);
}

void WindowRecorder::paint(const platform::PixelSurface& surface, const platform::Region& region,
                           platform::Region& drawn) {
    if (isLoggingPaint)
        write("paint " + test::toText(region.getBounds()));
    lastPaint.assign(region.getRects().begin(), region.getRects().end());
    const CmRect whole{0, 0, surface.width, surface.height};
    for (const CmRect& rect : region.getRects()) {
        const CmRect device = platform::scaledOutward(rect, surface.scale).intersect(whole);
        for (int32_t y = device.top; y < device.bottom; ++y)
            std::fill(surface.getRow(y) + device.left, surface.getRow(y) + device.right, color);
    }
    drawn.add(region);
    painted.add(region);
    if (onPaint)
        onPaint();
}

bool WindowRecorder::mouse(const platform::MouseEvent& event) {
    static constexpr const char* kinds[] = {"move", "leave", "down", "up", "enter"};
    if (isLoggingMoves || event.kind == platform::MouseKind::down || event.kind == platform::MouseKind::up) {
        write(std::string(kinds[static_cast<int>(event.kind)]) + " " + toText(event.position) + " b" +
              std::to_string(event.buttons) + " m" + std::to_string(event.modifiers));
    }
    if (onMouse)
        onMouse(event);
    return true;
}

bool WindowRecorder::key(const platform::KeyEvent& event) {
    write(std::string("key ") + (event.kind == platform::KeyKind::down ? "down" : "up") + " v" +
          std::to_string(event.virtualKey) + " c" + std::to_string(static_cast<unsigned>(event.character)) +
          " m" + std::to_string(event.modifiers) + (event.isRepeat ? " again" : ""));
    return true;
}

void WindowRecorder::moved(CmPoint position) {
    write("moved " + toText(position));
}

void WindowRecorder::sized(CmSize size) {
    write("sized " + std::to_string(size.width) + "x" + std::to_string(size.height));
}

bool WindowRecorder::wheel(const platform::WheelEvent& event) {
    write("wheel " + toText(event.position) + " " + toText(event.deltaX) + " " + toText(event.deltaY));
    return true;
}

void WindowRecorder::scaleFactorChanged(double factor) {
    write("scale " + toText(factor));
}

std::string WindowRecorder::take() {
    std::string all;
    for (const std::string& line : *log_)
        all += (all.empty() ? "" : "; ") + line;
    log_->clear();
    return all;
}

bool WindowRecorder::has(std::string_view line) const {
    return std::find(log_->begin(), log_->end(), line) != log_->end();
}

} // namespace qorl::test
