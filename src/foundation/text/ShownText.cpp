#include "foundation/text/ShownText.h"

#include "foundation/text/TextConversion.h"

#include <algorithm>
#include <limits>

namespace qorl::text {

namespace {

bool isContinuation(char byte) {
    return (byte & 0xC0) == 0x80;
}

} // namespace

std::string printable(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    constexpr char32_t faultyBytes = 0xDC00; // Where `nextPoint` puts them.
    const auto length =
        static_cast<int32_t>(std::min<size_t>(text.size(), std::numeric_limits<int32_t>::max()));
    std::string shown;
    for (int32_t at = 0; at < length;) {
        const int32_t start = at;
        const char32_t point = nextPoint(text, at);
        const bool isShown =
            point >= 0x20 && (point < 0x7F || point >= 0xA0) && (point & ~0xFFu) != faultyBytes;
        if (isShown)
            shown.append(text.substr(static_cast<size_t>(start), static_cast<size_t>(at - start)));
        else
            shown.append("\\x").append(1, digits[(point >> 4) & 15]).append(1, digits[point & 15]);
    }
    return shown;
}

std::string brief(std::string_view name) {
    constexpr size_t mostShown = 64;
    if (name.size() <= mostShown)
        return printable(name);
    size_t end = mostShown;
    while (end > 0 && isContinuation(name[end]))
        --end;
    return printable(name.substr(0, end)) + "...";
}

} // namespace qorl::text
