#include "schemes/UScheme.h"

#include <algorithm>
#include <array>
#include <utility>

namespace qorl {

namespace {

constinit int32_t frameRadius = 0;

void drawLine(UDrawDevice& device, CmPoint from, CmPoint to) {
    device.moveTo(from);
    device.lineTo(to);
}

} // namespace

UScheme::FrameRadius::FrameRadius(int32_t radius) : outer_(std::exchange(frameRadius, radius)) {}

UScheme::FrameRadius::~FrameRadius() {
    frameRadius = outer_;
}

int32_t UScheme::drawnMetric(int32_t index) const {
    constexpr int32_t most = UDrawDevice::maximumClip.right;
    return std::clamp(getMetric(index), -most, most);
}

void UScheme::fill(UDrawDevice& device, const CmRect& rect, int32_t colorKey) {
    device.setBrush(getBrush(colorKey));
    device.fillRect(rect);
}

void UScheme::drawBevel(UDrawDevice& device, const CmRect& rect, int32_t inset, int32_t topLeft,
                        int32_t bottomRight) {
    const CmRect r = rect.grown(-inset, -inset);
    if (r.isEmpty())
        return;
    device.setPen(getPen(topLeft));
    drawLine(device, {r.left, r.bottom - 1}, {r.left, r.top});
    drawLine(device, {r.left, r.top}, {r.right - 1, r.top});
    device.setPen(getPen(bottomRight));
    drawLine(device, {r.left, r.bottom - 1}, {r.right - 1, r.bottom - 1});
    drawLine(device, {r.right - 1, r.bottom - 1}, {r.right - 1, r.top});
}

/// Kinds that take only the pen or the brush that the caller has set.
bool UScheme::drawDeviceFrame(UDrawDevice& device, const CmRect& rect, int32_t kind) {
    switch (kind) {
    case FrameKind::solidRect: device.fillRect(rect); return true;
    case FrameKind::solidRoundRect: device.fillRoundRect(rect, frameRadius); return true;
    case FrameKind::solidOval: device.fillEllipse(rect, 0, fullCircle, true); return true;
    case FrameKind::frameRect:
    case FrameKind::frameDottedRect: device.drawFrame(rect); return true;
    case FrameKind::frameRoundRect: device.drawRoundRect(rect, frameRadius); return true;
    case FrameKind::frameOval: device.drawEllipse(rect, 0, fullCircle); return true;
    default: return false;
    }
}

void UScheme::drawFrame(UDrawDevice& device, const CmRect& rect, int32_t kind, const ConstString& title) {
    if (rect.isEmpty() || drawDeviceFrame(device, rect, kind))
        return;
    switch (kind) {
    case FrameKind::workArea: drawWorkArea(device, rect, false); break;
    case FrameKind::workAreaWithScrollbars: drawWorkArea(device, rect, true); break;
    case FrameKind::dialogFrame: drawDialogFrame(device, rect, title); break;
    case FrameKind::groupFrame: drawGroupFrame(device, rect, title); break;
    case FrameKind::buttonFrame: drawButtonFrame(device, rect, title); break;
    case FrameKind::pressedFrame: drawPressedFrame(device, rect, title, false); break;
    case FrameKind::pressedFrameFlagged: drawPressedFrame(device, rect, title, true); break;
    case FrameKind::dataField: drawDataField(device, rect); break;
    case FrameKind::dialogArea: drawDialogArea(device, rect); break;
    case FrameKind::buttonArea: drawButtonArea(device, rect); break;
    case FrameKind::bevelLine: drawBevelLine(device, rect); break;
    case FrameKind::untitledFrame:
    case FrameKind::untitledFrame2: drawUntitledFrame(device, rect); break;
    case FrameKind::topTabSelected: drawTopTab(device, rect, true); break;
    case FrameKind::topTab: drawTopTab(device, rect, false); break;
    case FrameKind::bottomTabSelected: drawBottomTab(device, rect, true); break;
    case FrameKind::bottomTab: drawBottomTab(device, rect, false); break;
    case FrameKind::separator: drawSeparator(device, rect); break;
    case FrameKind::menuArrow: drawArrow(device, rect, ArrowDirection::down); break;
    default: break;
    }
}

void UScheme::drawWorkArea(UDrawDevice& device, const CmRect& rect, bool withScrollbars) {
    // The corner where two scroll bars meet stays free.
    const int32_t corner = withScrollbars ? drawnMetric(SchemeMetric::scrollbarwidth) : 0;
    constexpr std::pair<int32_t, int32_t> lines[] = {{SchemeColor::framebottom, SchemeColor::frametop},
                                                     {SchemeColor::frame, SchemeColor::framebottom}};
    CmRect r = rect;
    for (const auto& [topLeft, bottomRight] : lines) {
        if (r.isEmpty())
            return;
        device.setPen(getPen(topLeft));
        drawLine(device, {r.left, r.bottom - 1}, {r.left, r.top});
        drawLine(device, {r.left, r.top}, {r.right - 1, r.top});
        device.setPen(getPen(bottomRight));
        const int32_t right = saturated(int64_t{r.right} - 1 - corner);
        const int32_t bottom = saturated(int64_t{r.bottom} - 1 - corner);
        drawLine(device, {r.left, r.bottom - 1}, {std::max(r.left, right), r.bottom - 1});
        drawLine(device, {r.right - 1, r.top}, {r.right - 1, std::max(r.top, bottom)});
        r = r.grown(-1, -1);
    }
}

/// An engraved frame whose top line leaves room for a title: a line in `first`, and one in `second` a pixel
/// further right and down.
void UScheme::drawTitledFrame(UDrawDevice& device, const CmRect& rect, const ConstString& title,
                              int32_t first, int32_t second, int32_t topOffset) {
    const int32_t margin = drawnMetric(SchemeMetric::margin);
    const UFont& font = getFont(SchemeFont::label);
    const int32_t textWidth = title.isEmpty() ? 0 : font.getStringWidth(title);
    const CmRect outer{rect.left, saturated(int64_t{rect.top} + topOffset), rect.right - 1, rect.bottom - 1};
    if (outer.isEmpty())
        return;
    const int32_t gapStart = saturated(int64_t{outer.left} + margin);
    const int32_t gapEnd = saturated(int64_t{gapStart} + textWidth + 2 * margin);
    const std::pair<int32_t, int32_t> lines[] = {{first, 0}, {second, 1}};
    for (const auto& [key, shift] : lines) {
        const CmRect r = outer.moved(shift, shift);
        device.setPen(getPen(key));
        if (title.isEmpty()) {
            drawLine(device, {r.left, r.top}, {r.right - 1, r.top});
        } else {
            drawLine(device, {r.left, r.top}, {std::min(gapStart, r.right - 1), r.top});
            if (gapEnd < r.right)
                drawLine(device, {gapEnd, r.top}, {r.right - 1, r.top});
        }
        drawLine(device, {r.left, r.top}, {r.left, r.bottom - 1});
        drawLine(device, {r.right - 1, r.top}, {r.right - 1, r.bottom - 1});
        drawLine(device, {r.left, r.bottom - 1}, {r.right - 1, r.bottom - 1});
    }
    if (title.isEmpty())
        return;
    device.setBrush(getBrush(SchemeColor::dialogback));
    device.setFont(font);
    device.drawString(title, CmPoint{saturated(int64_t{gapStart} + margin / 2),
                                     saturated(int64_t{rect.top} + font.getMetrics().ascent)});
}

void UScheme::drawDialogFrame(UDrawDevice& device, const CmRect& rect, const ConstString& title) {
    const int32_t textHeight = title.isEmpty() ? 0 : getFont(SchemeFont::label).getStringExtent(title).height;
    drawTitledFrame(device, rect, title, SchemeColor::frametop, SchemeColor::framebottom, textHeight / 2);
}

void UScheme::drawGroupFrame(UDrawDevice& device, const CmRect& rect, const ConstString& title) {
    const int32_t lineHeight = title.isEmpty() ? 0 : getFont(SchemeFont::label).getMetrics().lineHeight;
    drawTitledFrame(device, rect, title, SchemeColor::framebottom, SchemeColor::frametop, lineHeight / 2);
}

void UScheme::drawButtonFrame(UDrawDevice& device, const CmRect& rect, const ConstString& title) {
    drawBevel(device, rect, 0, SchemeColor::buttontop2, SchemeColor::buttonbottom2);
    drawBevel(device, rect, 1, SchemeColor::buttontop, SchemeColor::buttonbottom);
    if (title.isEmpty())
        return;
    device.setFont(getFont(SchemeFont::label));
    device.drawString(title, rect.grown(-2, -2), Justify::center | Justify::verticalCenter);
}

void UScheme::drawPressedFrame(UDrawDevice& device, const CmRect& rect, const ConstString& title, bool flag) {
    drawBevel(device, rect, 0, SchemeColor::buttonbottom2, SchemeColor::buttontop2);
    if (flag)
        drawBevel(device, rect, 1, SchemeColor::buttonbottom, SchemeColor::buttontop);
    if (title.isEmpty())
        return;
    device.setFont(getFont(SchemeFont::label));
    device.drawString(title, rect.grown(-2, -2).moved(1, 1), Justify::center | Justify::verticalCenter);
}

void UScheme::drawEdgeLines(UDrawDevice& device, const CmRect& rect, bool raised) {
    device.setPen(getPen(raised ? SchemeColor::buttontop2 : SchemeColor::buttonbottom));
    drawLine(device, {rect.left, rect.bottom - 1}, {rect.left, rect.top});
    drawLine(device, {rect.left, rect.top}, {rect.right - 1, rect.top});
    drawLine(device, {rect.right - 1, rect.top}, {rect.right - 1, rect.bottom - 1});
}

void UScheme::drawDataField(UDrawDevice& device, const CmRect& rect) {
    fill(device, rect, SchemeColor::datafieldback);
    drawWorkArea(device, rect, false);
}

void UScheme::drawDialogArea(UDrawDevice& device, const CmRect& rect) {
    fill(device, rect, SchemeColor::dialogback);
    drawWorkArea(device, rect, false);
}

void UScheme::drawButtonArea(UDrawDevice& device, const CmRect& rect) {
    fill(device, rect, SchemeColor::buttonface);
    drawButtonFrame(device, rect, ConstString());
}

void UScheme::drawBevelLine(UDrawDevice& device, const CmRect& rect) {
    device.setPen(getPen(SchemeColor::buttonbottom2));
    device.drawFrame(rect);
}

void UScheme::drawUntitledFrame(UDrawDevice& device, const CmRect& rect) {
    drawDialogFrame(device, rect, ConstString());
}

void UScheme::drawTopTab(UDrawDevice& device, const CmRect& rect, bool selected) {
    const CmRect body = selected ? rect : CmRect{rect.left, rect.top + 2, rect.right, rect.bottom};
    if (body.width() < 4 || body.height() < 3)
        return;
    fill(device, body.grown(-1, -1), selected ? SchemeColor::panelback : SchemeColor::buttonface);
    device.setPen(getPen(SchemeColor::buttontop2));
    drawLine(device, {body.left, body.bottom - 1}, {body.left, body.top + 2});
    drawLine(device, {body.left, body.top + 2}, {body.left + 2, body.top});
    drawLine(device, {body.left + 2, body.top}, {body.right - 3, body.top});
    device.setPen(getPen(SchemeColor::buttonbottom2));
    drawLine(device, {body.right - 2, body.top + 1}, {body.right - 1, body.top + 2});
    drawLine(device, {body.right - 1, body.top + 2}, {body.right - 1, body.bottom - 1});
    if (selected)
        return;
    device.setPen(getPen(SchemeColor::buttontop2));
    drawLine(device, {body.left, body.bottom - 1}, {body.right - 1, body.bottom - 1});
}

void UScheme::drawBottomTab(UDrawDevice& device, const CmRect& rect, bool selected) {
    const CmRect body = selected ? rect : CmRect{rect.left, rect.top, rect.right, rect.bottom - 2};
    if (body.width() < 4 || body.height() < 3)
        return;
    fill(device, body.grown(-1, -1), selected ? SchemeColor::panelback : SchemeColor::buttonface);
    device.setPen(getPen(SchemeColor::buttontop2));
    drawLine(device, {body.left, body.top}, {body.left, body.bottom - 3});
    device.setPen(getPen(SchemeColor::buttonbottom2));
    drawLine(device, {body.left, body.bottom - 3}, {body.left + 2, body.bottom - 1});
    drawLine(device, {body.left + 2, body.bottom - 1}, {body.right - 3, body.bottom - 1});
    drawLine(device, {body.right - 3, body.bottom - 1}, {body.right - 1, body.bottom - 3});
    drawLine(device, {body.right - 1, body.bottom - 3}, {body.right - 1, body.top});
    if (!selected)
        drawLine(device, {body.left, body.top}, {body.right - 1, body.top});
}

void UScheme::drawSeparator(UDrawDevice& device, const CmRect& rect) {
    const bool horizontal = rect.width() >= rect.height();
    const CmPoint start = horizontal ? CmPoint{rect.left, rect.top + rect.height() / 2}
                                     : CmPoint{rect.left + rect.width() / 2, rect.top};
    const CmPoint end = horizontal ? CmPoint{rect.right - 1, start.y} : CmPoint{start.x, rect.bottom - 1};
    const CmPoint aside = horizontal ? CmPoint{0, 1} : CmPoint{1, 0};
    device.setPen(getPen(SchemeColor::framebottom));
    drawLine(device, start, end);
    device.setPen(getPen(SchemeColor::frametop));
    drawLine(device, start + aside, end + aside);
}

} // namespace qorl
