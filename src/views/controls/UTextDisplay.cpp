#include "views/controls/UTextDisplay.h"

#include "binding/UColorValue.h"
#include "foundation/Cast.h"
#include "foundation/messages/FMessage.h"
#include "foundation/text/TextConversion.h"
#include "schemes/UScheme.h"
#include "views/Reach.h"
#include "views/ViewDevice.h"
#include "views/controls/ControlStyle.h"
#include "views/controls/ControlText.h"

#include <cmath>
#include <optional>
#include <string>

namespace qorl {

namespace {

/// Between the border and the text.
constexpr int32_t textMargin = 3;

constexpr char16_t ellipsis = u'\u2026';

bool isPair(char16_t first, char16_t second) {
    return text::isLeadSurrogate(first) && text::isTrailSurrogate(second);
}

/// Cuts `text` until it fits; `keepsEnd` cuts at the front.
void fitText(const UFont& font, String& text, int32_t width, bool keepsEnd) {
    if (font.getStringWidth(text) <= width)
        return;
    const std::u16string whole = text.toUtf16();
    const auto length = static_cast<int32_t>(whole.size());
    int32_t low = 0;
    int32_t high = length;
    String attempt;
    const auto cutTo = [&](int32_t kept) {
        auto cut = static_cast<size_t>(keepsEnd ? length - kept : kept);
        if (cut > 0 && cut < whole.size() && isPair(whole[cut - 1], whole[cut]))
            cut += keepsEnd ? 1 : -1;
        const std::u16string shown =
            keepsEnd ? ellipsis + whole.substr(cut) : whole.substr(0, cut) + ellipsis;
        attempt = ConstString(shown);
    };
    while (low < high) {
        const int32_t middle = (low + high + 1) / 2;
        cutTo(middle);
        if (font.getStringWidth(attempt) <= width)
            low = middle;
        else
            high = middle - 1;
    }
    cutTo(low);
    text = attempt;
}

/// In per cent of lightness: with less between them a text is hard to read.
constexpr double leastContrast = 35;

/// `wanted` where it can be read on `back`, else white or black.
UColor readableOn(const UColor& back, const UColor& wanted) {
    const double ground = back.toHsl().lightness;
    if (std::abs(wanted.toHsl().lightness - ground) >= leastContrast)
        return wanted;
    return ground < 50 ? StandardColor::white : StandardColor::black;
}

} // namespace

struct UTextDisplay::Look {
    std::optional<UColor> background;
    std::optional<UColor> title;
    String units;
    String hint;
    CmPoint offset;
};

UTextDisplay::UTextDisplay(const CmRect& frame, const ConstString& title, Binding::Value* value,
                           uint32_t style)
    : UControl(frame, title, value, style), showsTitle_(!value) {}

UTextDisplay::~UTextDisplay() = default;

void UTextDisplay::setValue(Binding::Value* value) {
    showsTitle_ = !value;
    UControl::setValue(value);
}

void UTextDisplay::setFont(const UFont& font) {
    font_ = std::make_unique<UFont>(font);
    update();
}

void UTextDisplay::setJust(uint32_t just) {
    just_ = just;
    update();
}

UTextDisplay::Look& UTextDisplay::look() {
    if (!look_)
        look_ = std::make_unique<Look>();
    update();
    return *look_;
}

void UTextDisplay::setBackground(const UColor& color) {
    look().background = color;
}

void UTextDisplay::setTitleColor(const UColor& color) {
    look().title = color;
}

void UTextDisplay::setUnits(const ConstString& units) {
    look().units = units;
}

void UTextDisplay::setHint(const ConstString& hint) {
    look().hint = hint;
}

void UTextDisplay::setTextOffset(CmPoint offset) {
    look().offset = withinReach(offset);
}

void UTextDisplay::getShownText(String& text) const {
    if (showsTitle_) {
        text = getTitle();
        return;
    }
    getValueObject()->toString(text);
    if (look_ && !look_->units.isEmpty() && !text.isEmpty()) {
        text.append8(" ");
        text.append(look_->units);
    }
}

UFont UTextDisplay::textFont() const {
    const UScheme* scheme = getScheme();
    UFont font = font_ ? *font_ : scheme->getFont(SchemeFont::data);
    if (!isEnabled())
        font.setColor(scheme->getColor(SchemeColor::datafieldforeinactive));
    else if (showsTitle_ && look_ && look_->title)
        font.setColor(*look_->title);
    else if (!font_ && hasStyle(TextStyle::led))
        font.setColor(readableOn(scheme->getColor(SchemeColor::datafieldledback),
                                 scheme->getColor(SchemeColor::datafieldfore)));
    else if (!font_)
        font.setColor(scheme->getColor(SchemeColor::datafieldfore));
    return font;
}

bool UTextDisplay::getFieldColor(UColor& color) const {
    if (auto* value = cast<UColorValue>(getSecondValue()); value && value->packed() != 0)
        color = UColor::fromPacked(value->packed());
    else if (look_ && look_->background)
        color = *look_->background;
    else
        return false;
    return true;
}

CmRect UTextDisplay::drawField(UDrawDevice& device) {
    UScheme* scheme = getScheme();
    CmRect field = getClientBounds();
    UColor color = scheme->getColor(hasStyle(TextStyle::led) ? SchemeColor::datafieldledback
                                                             : SchemeColor::datafieldback);
    if (getFieldColor(color) || !hasStyle(TextStyle::transparent)) {
        device.setBrushColor(color);
        device.fillRect(field);
    }
    if (hasStyle(TextStyle::border)) {
        scheme->drawWorkArea(device, field, false);
        const int32_t border = scheme->getMetric(SchemeMetric::datafieldborder);
        field = field.grown(-border, -border);
    }
    return field.grown(-textMargin, 0);
}

bool UTextDisplay::drawContent(const CmRect& rect) {
    if (hasStyle(TextStyle::noDraw) || (hasStyle(TextStyle::hideInactive) && !isEnabled()))
        return true;
    ViewDevice device(*this, rect);
    CmRect field = drawField(device);
    String text;
    getShownText(text);
    UFont font = textFont();
    if (look_) {
        field = field.moved(look_->offset);
        if (text.isEmpty() && !look_->hint.isEmpty()) {
            text = look_->hint;
            font.setColor(getScheme()->getColor(SchemeColor::datafieldforeinactive));
        }
    }
    device.setFont(font);
    if (hasStyle(TextStyle::fitString | TextStyle::fitLeftString | TextStyle::fitPath))
        fitText(device.getFont(), text, field.width(), hasStyle(TextStyle::fitLeftString));
    drawControlText(device, text, field, just_);
    return true;
}

bool UTextDisplay::mouseDown(CmPoint point) {
    if (UView::mouseDown(point))
        return true;
    CmObject* target = getValueObject()->target();
    if (!isValueEnabled() || !target)
        return false;
    const auto message = make<FMessage>("TD Mouse Down");
    message->setInt("Tag", getTag());
    message->setObject("Control", this);
    return target->handleMessage(message.get()) != notHandled;
}

bool UTextDisplay::getTooltip(String& text, CmPoint point, CmRect& area) const {
    if (UControl::getTooltip(text, point, area))
        return true;
    if (!hasStyle(TextStyle::autoTooltip))
        return false;
    getShownText(text);
    area = {};
    return textFont().getStringWidth(text) > getClientSize().width - 2 * textMargin;
}

void UTextDisplay::resizeToFit(int32_t extraWidth, int32_t extraHeight) {
    const UScheme* scheme = getScheme();
    String text;
    getShownText(text);
    const CmSize extent = measureControlText(textFont(), text);
    const int32_t least = scheme->getMetric(SchemeMetric::datafieldheight);
    const int32_t border = hasStyle(TextStyle::border) ? scheme->getMetric(SchemeMetric::datafieldborder) : 0;
    const int32_t height = std::max(extent.height + 2 * border, least);
    fitTo({extent.width + 2 * (border + textMargin), height}, extraWidth, extraHeight);
}

} // namespace qorl
