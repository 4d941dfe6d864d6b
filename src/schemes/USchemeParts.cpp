#include "schemes/UScheme.h"

#include <algorithm>
#include <array>

namespace qorl {

namespace {

/// A square of at most `side` pixels in the middle of a rectangle.
CmRect squareIn(const CmRect& rect, int32_t side) {
    side = std::min({side, rect.width(), rect.height()});
    return CmRect::ofSize({rect.left + (rect.width() - side) / 2, rect.top + (rect.height() - side) / 2},
                          {side, side});
}

} // namespace

void UScheme::drawColumnHeader(UDrawDevice& device, const CmRect& rect, bool marked) {
    fill(device, rect, marked ? SchemeColor::sortmarker : SchemeColor::buttonface);
    drawBevel(device, rect, 0, SchemeColor::buttontop2, SchemeColor::buttonbottom);
}

void UScheme::drawColumnTitle(UDrawDevice& device, const CmRect& rect, const ConstString& title, bool) {
    UFont font = getFont(SchemeFont::column);
    font.setColor(getPen(SchemeColor::labelcolor).getColor());
    device.setFont(font);
    device.drawString(title, rect, Justify::verticalCenter, 3);
}

void UScheme::drawSortArrow(UDrawDevice& device, const CmRect& rect, bool descending) {
    device.setBrush(getBrush(SchemeColor::buttonbottom2));
    drawArrow(device, squareIn(rect, 9), descending ? ArrowDirection::down : ArrowDirection::up);
}

void UScheme::drawListSelection(UDrawDevice& device, const CmRect& rect, bool focused) {
    fill(device, rect, focused ? SchemeColor::listselect : SchemeColor::buttonbottom);
}

void UScheme::drawFocusFrame(UDrawDevice& device, const CmRect& rect) {
    device.setPen(UPen(getPen(SchemeColor::focus).getColor(), 1, UPen::Kind::dotted));
    device.drawFrame(rect);
}

void UScheme::drawToolTipFrame(UDrawDevice& device, const CmRect& rect) {
    fill(device, rect, SchemeColor::tooltipback);
    device.setPen(getPen(SchemeColor::tooltipfore));
    device.drawFrame(rect);
}

void UScheme::drawCheckMark(UDrawDevice& device, const CmRect& rect, uint32_t marks) {
    const CmRect box = squareIn(rect, 13);
    fill(device, box, marks & MarkState::pressed ? SchemeColor::buttonface : SchemeColor::datafieldback);
    drawBevel(device, box, 0, SchemeColor::datafieldtop, SchemeColor::datafieldbottom);
    device.setPen(getPen(marks & MarkState::hovered ? SchemeColor::focus : SchemeColor::frame));
    device.drawFrame(box);
    const int32_t key =
        marks & MarkState::disabled ? SchemeColor::datafieldforeinactive : SchemeColor::datafieldfore;
    if (marks & MarkState::mixed) {
        fill(device, box.grown(-4, -4), key);
    } else if (marks & MarkState::on) {
        const int32_t unit = box.width();
        const auto at = [&](int32_t x, int32_t y) {
            return CmPoint{box.left + unit * x / 13, box.top + unit * y / 13};
        };
        device.setPen(UPen(getPen(key).getColor(), 2));
        if (marks & MarkState::cross) {
            device.drawPolyline(std::array{at(4, 4), at(9, 9)});
            device.drawPolyline(std::array{at(4, 9), at(9, 4)});
        } else {
            device.drawPolyline(std::array{at(3, 6), at(5, 8), at(9, 4)});
        }
    }
}

void UScheme::drawRadioMark(UDrawDevice& device, const CmRect& rect, uint32_t marks) {
    const CmRect box = squareIn(rect, 13);
    device.setBrush(
        getBrush(marks & MarkState::pressed ? SchemeColor::buttonface : SchemeColor::datafieldback));
    device.fillEllipse(box, 0, fullCircle, true);
    device.setPen(getPen(marks & MarkState::hovered ? SchemeColor::focus : SchemeColor::frame));
    device.drawEllipse(box, 0, fullCircle);
    if (!(marks & MarkState::on))
        return;
    device.setBrush(getBrush(marks & MarkState::disabled ? SchemeColor::datafieldforeinactive
                                                         : SchemeColor::datafieldfore));
    device.fillEllipse(box.grown(-4, -4), 0, fullCircle, true);
}

void UScheme::drawArrow(UDrawDevice& device, const CmRect& rect, ArrowDirection direction) {
    const CmRect box = squareIn(rect, 9);
    if (box.isEmpty())
        return;
    const int32_t half = box.width() / 2;
    const CmPoint center{box.left + half, box.top + half};
    const int32_t depth = std::max(1, half / 2);
    const bool vertical = direction == ArrowDirection::up || direction == ArrowDirection::down;
    const int32_t tip =
        direction == ArrowDirection::down || direction == ArrowDirection::right ? depth : -depth;
    const auto at = [&](int32_t along, int32_t across) {
        return vertical ? CmPoint{center.x + across, center.y + along}
                        : CmPoint{center.x + along, center.y + across};
    };
    const std::array<CmPoint, 3> triangle{at(-tip, -half), at(-tip, half), at(tip, 0)};
    device.fillPolygon(triangle);
}

void UScheme::drawExpansionBox(UDrawDevice& device, const CmRect& rect, bool expanded) {
    const CmRect box = squareIn(rect, std::max(5, std::min(getMetric(SchemeMetric::expansionboxwidth),
                                                           getMetric(SchemeMetric::expansionboxheight))));
    fill(device, box, SchemeColor::datafieldback);
    device.setPen(getPen(SchemeColor::frame));
    device.drawFrame(box);
    const CmPoint center{box.left + box.width() / 2, box.top + box.height() / 2};
    device.moveTo({box.left + 2, center.y});
    device.lineTo({box.right - 3, center.y});
    if (expanded)
        return;
    device.moveTo({center.x, box.top + 2});
    device.lineTo({center.x, box.bottom - 3});
}

CmRect UScheme::sliderGroove(const CmRect& track, bool vertical) {
    constexpr int32_t thickness = 4;
    CmRect groove = track;
    if (vertical) {
        groove.left += (track.width() - thickness) / 2;
        groove.right = groove.left + thickness;
    } else {
        groove.top += (track.height() - thickness) / 2;
        groove.bottom = groove.top + thickness;
    }
    return groove;
}

void UScheme::drawSliderTrack(UDrawDevice& device, const CmRect& rect, bool vertical) {
    const CmRect groove = sliderGroove(rect, vertical);
    fill(device, groove, SchemeColor::datafieldback);
    drawBevel(device, groove, 0, SchemeColor::datafieldtop, SchemeColor::datafieldbottom);
}

void UScheme::drawSliderHandle(UDrawDevice& device, const CmRect& rect, uint32_t marks) {
    fill(device, rect,
         marks & (MarkState::hovered | MarkState::pressed) ? SchemeColor::buttonhilight
                                                           : SchemeColor::buttonface);
    if (marks & MarkState::disabled) {
        device.setPen(getPen(SchemeColor::buttonbottom));
        device.drawFrame(rect);
    } else if (marks & MarkState::pressed) {
        drawPressedFrame(device, rect, ConstString(), true);
    } else {
        drawButtonFrame(device, rect, ConstString());
    }
}

void UScheme::drawProgress(UDrawDevice& device, const CmRect& rect, double position) {
    drawDataField(device, rect);
    CmRect bar = rect.grown(-2, -2);
    const double share = position > 0 ? std::min(position, 1.0) : 0.0;
    bar.right = bar.left + static_cast<int32_t>(bar.width() * share);
    fill(device, bar, SchemeColor::progressbar);
}

} // namespace qorl
