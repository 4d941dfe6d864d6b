#include "foundation/text/StoredBytes.h"

#include "foundation/text/TextConversion.h"

#include <iterator>
#include <limits>
#include <new>
#include <string>
#include <utility>

namespace qorl::text {

namespace {

// From 0x80 on; the bytes behind are those of ISO 8859-1.
constexpr char16_t westernUnits[] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};
// With the currency sign where later tables have the euro, as in the table of entities.
constexpr char16_t macintoshUnits[] = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5,
    0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3, 0x00F2, 0x00F4,
    0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6,
    0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8, 0x221E, 0x00B1, 0x2264, 0x2265,
    0x00A5, 0x00B5, 0x2202, 0x2211, 0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF,
    0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB, 0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5,
    0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044,
    0x00A4, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1,
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4, 0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9,
    0x0131, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7,
};
static_assert(std::size(westernUnits) == 0x20 && std::size(macintoshUnits) == 0x80);

/// A text that there was no memory for is empty.
String checked(String&& text, std::string_view source) {
    if (text.isEmpty() != source.empty())
        throw std::bad_alloc();
    return std::move(text);
}

char16_t characterOf(uint8_t byte, StoredEncoding earlier) {
    if (byte < 0x80)
        return byte;
    const size_t index = byte - 0x80u;
    if (earlier == StoredEncoding::macintosh)
        return macintoshUnits[index];
    return index < std::size(westernUnits) ? westernUnits[index] : byte;
}

String fromBytes(std::string_view bytes, StoredEncoding earlier) {
    std::u16string wide(bytes.size(), u'\0');
    for (size_t i = 0; i < bytes.size(); ++i)
        wide[i] = characterOf(static_cast<uint8_t>(bytes[i]), earlier);
    return checked(String(std::u16string_view(wide)), bytes);
}

} // namespace

String widenStored(std::string_view bytes, StoredEncoding earlier) {
    // No text has more characters, and none of them may be cut off.
    if (bytes.size() > std::numeric_limits<int32_t>::max())
        throw std::bad_alloc();
    const int32_t length = wideLength(bytes, Surrogates::kept);
    if (length == invalid)
        return fromBytes(bytes, earlier);
    // Not through a text of bytes, which would end at a zero.
    constexpr int32_t fewest = 256;
    Scratch<char16_t, fewest> scratch;
    char16_t* wide = scratch.room(length);
    if (!wide)
        throw std::bad_alloc();
    widen(bytes, wide);
    return checked(String(std::u16string_view(wide, static_cast<size_t>(length))), bytes);
}

String decodeStored(std::string_view bytes, StoredEncoding earlier) {
    return bytes.size() <= std::numeric_limits<int32_t>::max() && isAscii(bytes)
               ? checked(String(bytes), bytes)
               : widenStored(bytes, earlier);
}

} // namespace qorl::text
