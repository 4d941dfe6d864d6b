#include "foundation/text/TextConversion.h"

#include <cstring>
#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

namespace qorl::text {

namespace {

constexpr char32_t replacement = 0xFFFD;
/// A byte that is no part of valid text, as a point.
constexpr char32_t faultyByte = 0xDC00;

using Bytes16 = uint8_t __attribute__((vector_size(16)));
using Units16 = uint16_t __attribute__((vector_size(32)));

/// Whether any of the bits of `mask` is set in a unit. In blocks that fill the machine's words.
bool anyBit(const void* data, size_t bytes, uint64_t mask) {
    const char* at = static_cast<const char*>(data);
    for (; bytes >= 32; at += 32, bytes -= 32) {
        uint64_t block[4];
        std::memcpy(block, at, sizeof block);
        if ((block[0] | block[1] | block[2] | block[3]) & mask)
            return true;
    }
    uint64_t seen = 0;
    for (; bytes >= sizeof seen; at += sizeof seen, bytes -= sizeof seen) {
        uint64_t block;
        std::memcpy(&block, at, sizeof block);
        seen |= block;
    }
    uint64_t rest = 0;
    if (bytes > 0)
        std::memcpy(&rest, at, bytes);
    return ((seen | rest) & mask) != 0;
}

/// Widens the ASCII that the text begins with. How much that was.
size_t widenAscii(std::string_view text, char16_t* out) {
    size_t at = 0;
    for (; at + 16 <= text.size() && isAscii(text.substr(at, 16)); at += 16) {
        Bytes16 bytes;
        std::memcpy(&bytes, text.data() + at, sizeof bytes);
        const Units16 units = __builtin_convertvector(bytes, Units16);
        std::memcpy(out + at, &units, sizeof units);
    }
    for (; at < text.size() && static_cast<uint8_t>(text[at]) < 0x80; ++at)
        out[at] = static_cast<char16_t>(text[at]);
    return at;
}

/// Whether a surrogate stands there, in its three bytes.
bool isSurrogateAt(std::string_view bytes, size_t at) {
    const auto byte = [&](size_t i) { return static_cast<uint8_t>(bytes[at + i]); };
    return bytes.size() - at >= 3 && byte(0) == 0xED && byte(1) >= 0xA0 && U8_IS_TRAIL(byte(1)) &&
           U8_IS_TRAIL(byte(2));
}

} // namespace

bool isAscii(std::string_view text) {
    return !anyBit(text.data(), text.size(), 0x8080808080808080);
}

bool isAscii(std::u16string_view text) {
    return !anyBit(text.data(), text.size() * sizeof(char16_t), 0xFF80FF80FF80FF80);
}

int32_t wideLength(std::string_view utf8, Surrogates surrogates) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(utf8.data());
    const auto size = static_cast<int32_t>(utf8.size());
    if (isAscii(utf8))
        return size;
    int32_t at = 0;
    int32_t length = 0;
    while (at < size) {
        if (surrogates == Surrogates::kept && isSurrogateAt(utf8, static_cast<size_t>(at))) {
            at += 3;
            ++length;
            continue;
        }
        UChar32 point;
        U8_NEXT(bytes, at, size, point);
        if (point < 0)
            return invalid;
        length += U16_LENGTH(point);
    }
    return length;
}

void widen(std::string_view utf8, char16_t* out) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(utf8.data());
    const auto size = static_cast<int32_t>(utf8.size());
    int32_t at = static_cast<int32_t>(widenAscii(utf8, out));
    int32_t to = at;
    while (at < size) {
        UChar32 point;
        U8_NEXT_UNSAFE(bytes, at, point);
        U16_APPEND_UNSAFE(out, to, point);
    }
}

int64_t narrowLength(std::u16string_view wide) {
    if (isAscii(wide))
        return static_cast<int64_t>(wide.size());
    int64_t length = 0;
    for (int32_t at = 0; at < static_cast<int32_t>(wide.size());) {
        const char32_t point = nextPoint(wide, at);
        length += U16_IS_SURROGATE(point) ? 3 : U8_LENGTH(point);
    }
    return length;
}

size_t narrow(std::u16string_view wide, char* out, Surrogates surrogates) {
    auto* bytes = reinterpret_cast<uint8_t*>(out);
    size_t to = 0;
    for (int32_t at = 0; at < static_cast<int32_t>(wide.size());) {
        char32_t point = nextPoint(wide, at);
        if (surrogates == Surrogates::replaced && U16_IS_SURROGATE(point))
            point = replacement;
        U8_APPEND_UNSAFE(bytes, to, point);
    }
    return to;
}

std::u16string widenAnyway(std::string_view utf8) {
    std::u16string wide;
    wide.reserve(utf8.size());
    const auto* bytes = reinterpret_cast<const uint8_t*>(utf8.data());
    const auto size = static_cast<int32_t>(utf8.size());
    for (int32_t at = 0; at < size;) {
        UChar32 point;
        U8_NEXT_OR_FFFD(bytes, at, size, point);
        if (U_IS_BMP(point)) {
            wide += static_cast<char16_t>(point);
        } else {
            wide += U16_LEAD(point);
            wide += U16_TRAIL(point);
        }
    }
    return wide;
}

std::string narrow(std::u16string_view wide) {
    std::string utf8(static_cast<size_t>(narrowLength(wide)), '\0');
    narrow(wide, utf8.data());
    return utf8;
}

char32_t lower(char32_t character) {
    return character < 0x80 ? lowerAscii(character)
                            : static_cast<char32_t>(u_tolower(static_cast<UChar32>(character)));
}

char32_t upper(char32_t character) {
    return static_cast<char32_t>(u_toupper(static_cast<UChar32>(character)));
}
bool isLetter(char32_t character) {
    return u_isalpha(static_cast<UChar32>(character));
}
bool isLetterOrDigit(char32_t character) {
    return u_isalnum(static_cast<UChar32>(character));
}

bool isSpace(char16_t character) {
    return character == 0x20 || character == 0xA0 || (character >= 0x2002 && character <= 0x200B) ||
           character == 0x202F || character == 0x205F || character == 0x3000;
}

int32_t composedLength(std::u16string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* composer = unorm2_getNFCInstance(&status);
    if (U_FAILURE(status))
        return invalid;
    const int32_t length =
        unorm2_normalize(composer, text.data(), static_cast<int32_t>(text.size()), nullptr, 0, &status);
    return U_FAILURE(status) && status != U_BUFFER_OVERFLOW_ERROR ? invalid : length;
}

char32_t nextPoint(std::string_view text, int32_t& at) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const int32_t start = at;
    UChar32 point;
    U8_NEXT(bytes, at, static_cast<int32_t>(text.size()), point);
    if (point >= 0)
        return static_cast<char32_t>(point);
    at = start + 1;
    return faultyByte + bytes[start];
}

char32_t nextPoint(std::u16string_view text, int32_t& at) {
    char32_t point = text[static_cast<size_t>(at++)];
    if (U16_IS_LEAD(point) && at < static_cast<int32_t>(text.size()) &&
        U16_IS_TRAIL(text[static_cast<size_t>(at)]))
        point = U16_GET_SUPPLEMENTARY(point, text[static_cast<size_t>(at++)]);
    return point;
}

int32_t pointLength8(char32_t point) {
    return U16_IS_SURROGATE(point) ? 1 : U8_LENGTH(point);
}

void appendPoint8(char* out, int32_t& at, char32_t point) {
    if (U16_IS_SURROGATE(point)) {
        out[at++] = static_cast<char>(point - faultyByte);
        return;
    }
    auto* bytes = reinterpret_cast<uint8_t*>(out);
    U8_APPEND_UNSAFE(bytes, at, point);
}

WideCopy::WideCopy(const ConstString& text) {
    if (text.isWide()) {
        view_ = text.view16();
        return;
    }
    const int32_t length = wideLength(text.view8());
    char16_t* target = length == invalid ? nullptr : scratch_.room(length);
    if (!target) {
        valid_ = false;
        return;
    }
    widen(text.view8(), target);
    view_ = {target, static_cast<size_t>(length)};
}

NarrowCopy::NarrowCopy(const ConstString& text, Surrogates surrogates) {
    if (!text.isWide()) {
        view_ = text.view8();
        return;
    }
    const int64_t length = narrowLength(text.view16());
    char* target = scratch_.room(length);
    if (!target) {
        valid_ = false;
        return;
    }
    narrow(text.view16(), target, surrogates);
    view_ = {target, static_cast<size_t>(length)};
}

} // namespace qorl::text
