#include "graphics/UColor.h"

#include "foundation/Cast.h"
#include "graphics/StandardColors.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <optional>
#include <utility>

namespace qorl {

QORL_REGISTER(UColor, "UColor", CmObject, 0)

namespace {

static_assert(std::size(standardColorTable) == standardColorCount);

constinit NamedColorLookup namedColorLookup = nullptr;

constexpr auto standardColorsByName = [] {
    std::array<uint8_t, standardColorCount> order{};
    for (uint8_t i = 0; i < standardColorCount; ++i)
        order[i] = i;
    std::sort(order.begin(), order.end(), [](uint8_t a, uint8_t b) {
        return std::string_view(standardColorTable[a].name) < std::string_view(standardColorTable[b].name);
    });
    return order;
}();

std::optional<uint32_t> hexByte(std::string_view digits) {
    uint32_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (error != std::errc() || end != digits.data() + digits.size())
        return std::nullopt;
    return value;
}

bool parseHex(std::string_view text, UColor& color) {
    if (text.size() != 7 && text.size() != 9)
        return false;
    uint8_t bytes[4] = {0, 0, 0, 255};
    for (size_t i = 0; 1 + 2 * i < text.size(); ++i) {
        const auto byte = hexByte(text.substr(1 + 2 * i, 2));
        if (!byte)
            return false;
        bytes[i] = static_cast<uint8_t>(*byte);
    }
    color = UColor::fromBytes(bytes[0], bytes[1], bytes[2], bytes[3]);
    return true;
}

bool isSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Takes one number off the front, behind its separator: any one character, with blanks around it. A blank is
/// a separator too, when a number follows at once.
bool takeNumber(std::string_view& rest, int32_t& number) {
    if (rest.empty())
        return false;
    const bool blankBefore = isSpace(rest.front());
    while (!rest.empty() && isSpace(rest.front()))
        rest.remove_prefix(1);
    const auto startsNumber = [&] {
        const size_t digit = !rest.empty() && (rest[0] == '-' || rest[0] == '+') ? 1 : 0;
        return rest.size() > digit && rest[digit] >= '0' && rest[digit] <= '9';
    };
    if (!rest.empty() && !(blankBefore && startsNumber()))
        rest.remove_prefix(1);
    while (!rest.empty() && isSpace(rest.front()))
        rest.remove_prefix(1);
    if (!rest.empty() && rest.front() == '+')
        rest.remove_prefix(1);
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    if (error != std::errc())
        return false;
    rest.remove_prefix(static_cast<size_t>(end - rest.data()));
    return true;
}

bool parseHsl(std::string_view text, UColor& color) {
    int32_t parts[4] = {0, 0, 0, 100};
    int count = 0;
    while (count < 4 && takeNumber(text, parts[count]))
        ++count;
    if (count < 3)
        return false;
    const int32_t alpha = std::clamp(parts[3], 0, 100);
    color = UColor::fromHsl({double(parts[0] % 360), double(parts[1]), double(parts[2])},
                            static_cast<uint8_t>((alpha * 255 + 50) / 100));
    return true;
}

double hueChannel(double low, double high, double hue) {
    if (hue < 0)
        hue += 360;
    if (hue >= 360)
        hue -= 360;
    if (hue < 60)
        return low + (high - low) * hue / 60;
    if (hue < 180)
        return high;
    if (hue < 240)
        return low + (high - low) * (240 - hue) / 60;
    return low;
}

uint8_t toByte(double share) {
    return static_cast<uint8_t>(std::lround(std::clamp(share, 0.0, 1.0) * 255));
}

} // namespace

UColor UColor::fromIndex(int32_t index) noexcept {
    const bool known = index >= 0 && index < standardColorCount;
    return fromPacked(standardColorTable[known ? index : 0].argb);
}

UColor UColor::fromHsl(const Hsl& hsl, uint8_t alpha) noexcept {
    double hue = std::fmod(hsl.hue, 360);
    if (hue < 0)
        hue += 360;
    const double saturation = std::clamp(hsl.saturation, 0.0, 100.0) / 100;
    const double lightness = std::clamp(hsl.lightness, 0.0, 100.0) / 100;
    const double high =
        lightness <= 0.5 ? lightness * (1 + saturation) : lightness + saturation - lightness * saturation;
    const double low = 2 * lightness - high;
    return fromBytes(toByte(hueChannel(low, high, hue + 120)), toByte(hueChannel(low, high, hue)),
                     toByte(hueChannel(low, high, hue - 120)), alpha);
}

UColor::Hsl UColor::toHsl() const noexcept {
    const double r = red() / 255.0;
    const double g = green() / 255.0;
    const double b = blue() / 255.0;
    const double high = std::max({r, g, b});
    const double low = std::min({r, g, b});
    const double span = high - low;
    Hsl hsl;
    hsl.lightness = (high + low) * 50;
    if (span <= 0)
        return hsl;
    hsl.saturation = 100 * span / (hsl.lightness <= 50 ? high + low : 2 - high - low);
    if (high == r)
        hsl.hue = 60 * (g - b) / span;
    else if (high == g)
        hsl.hue = 120 + 60 * (b - r) / span;
    else
        hsl.hue = 240 + 60 * (r - g) / span;
    if (hsl.hue < 0)
        hsl.hue += 360;
    return hsl;
}

bool UColor::parseStandard(std::string_view text) {
    if (text.empty())
        return false;
    if (text.front() == '#')
        return parseHex(text, *this);
    if (text.front() == '$')
        return parseHsl(text, *this);
    if (text == "undefined") {
        *this = UColor();
        return true;
    }
    const int32_t index = standardIndex(text);
    if (index < 0)
        return false;
    *this = fromIndex(index);
    return true;
}

bool UColor::parse(std::string_view text) {
    if (parseStandard(text))
        return true;
    const bool isNotation = !text.empty() && (text.front() == '#' || text.front() == '$');
    return !text.empty() && !isNotation && namedColorLookup && namedColorLookup(text, *this);
}

std::string UColor::toText() const {
    for (const auto& row : standardColorTable)
        if (row.argb == packed())
            return row.name;
    return toHexText();
}

std::string UColor::toHexText() const {
    char text[16];
    if (alpha() < 255)
        std::snprintf(text, sizeof text, "#%02X%02X%02X%02X", red(), green(), blue(), alpha());
    else
        std::snprintf(text, sizeof text, "#%02X%02X%02X", red(), green(), blue());
    return text;
}

std::string UColor::toCssText() const {
    // In thousandths of thousandths by hand: the decimal point must not follow the locale.
    const int32_t millionths = static_cast<int32_t>(std::lround(alpha() / 255.0 * 1'000'000));
    char text[48];
    std::snprintf(text, sizeof text, "rgba(%d,%d,%d,%d.%06d)", red(), green(), blue(), millionths / 1'000'000,
                  millionths % 1'000'000);
    return text;
}

bool UColor::isEqual(const CmObject* other) const {
    const auto* color = cast<UColor>(other);
    return color && *this == *color;
}

int32_t UColor::compare(const CmObject* other) const {
    const auto* color = cast<UColor>(other);
    if (!color)
        return CmObject::compare(other);
    return packed() == color->packed() ? 0 : packed() > color->packed() ? 1 : -1;
}

uint32_t UColor::hashCode(uint32_t size) const {
    return packed() % size;
}

int32_t UColor::standardIndex(std::string_view name) {
    const auto found = std::lower_bound(
        standardColorsByName.begin(), standardColorsByName.end(), name,
        [](uint8_t index, std::string_view wanted) { return standardColorTable[index].name < wanted; });
    if (found == standardColorsByName.end() || standardColorTable[*found].name != name)
        return -1;
    return *found;
}

const char* UColor::standardName(int32_t index) {
    return index >= 0 && index < standardColorCount ? standardColorTable[index].name : nullptr;
}

NamedColorLookup UColor::setNamedColorLookup(NamedColorLookup lookup) {
    return std::exchange(namedColorLookup, lookup);
}

} // namespace qorl
