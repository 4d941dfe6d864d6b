#include "foundation/FUID.h"

#include "platform/System.h"

#include <array>
#include <cstdio>
#include <cstring>

namespace qorl {

namespace {

constexpr char hexDigits[] = "0123456789ABCDEF";

/// The memory place of each byte of the plain text, in reading order.
constexpr uint8_t readingOrder[16] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

int valueOf(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

bool parse(InterfaceId& id, const char* text, const uint8_t (&starts)[16]) {
    InterfaceId parsed;
    for (int i = 0; i < 16; ++i) {
        const int high = valueOf(text[starts[i]]);
        const int low = valueOf(text[starts[i] + 1]);
        if (high < 0 || low < 0)
            return false;
        parsed.bytes[readingOrder[i]] = static_cast<uint8_t>(high * 16 + low);
    }
    id = parsed;
    return true;
}

char* writeByte(char* out, uint8_t byte) {
    *out++ = hexDigits[byte >> 4];
    *out++ = hexDigits[byte & 15];
    return out;
}

constexpr uint8_t plainStarts[16] = {0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30};
constexpr uint8_t bracedStarts[16] = {1, 3, 5, 7, 10, 12, 15, 17, 20, 22, 25, 27, 29, 31, 33, 35};

} // namespace

FUID::FUID(const uint8_t* bytes) noexcept {
    if (bytes)
        std::memcpy(id_.bytes, bytes, sizeof id_.bytes);
}

void FUID::fromUInt4(uint32_t w1, uint32_t w2, uint32_t w3, uint32_t w4) noexcept {
    id_ = InterfaceId::fromWords(w1, w2, w3, w4);
}

void FUID::toUInt4(uint32_t& w1, uint32_t& w2, uint32_t& w3, uint32_t& w4) const noexcept {
    w1 = word(0);
    w2 = word(1);
    w3 = word(2);
    w4 = word(3);
}

uint32_t FUID::word(int index) const noexcept {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8 | id_.bytes[readingOrder[4 * index + i]];
    return value;
}

bool FUID::generate() noexcept {
    std::array<uint8_t, 16> bytes;
    if (!platform::generateUuid(platform::UuidKind::random, bytes))
        return false;
    *this = FUID(bytes.data());
    return true;
}

void FUID::toPlainString(char* buffer) const noexcept {
    if (!buffer)
        return;
    for (const uint8_t place : readingOrder)
        buffer = writeByte(buffer, id_.bytes[place]);
    *buffer = 0;
}

std::string FUID::toPlainString() const {
    char text[plainLength + 1];
    toPlainString(text);
    return text;
}

bool FUID::fromPlainString(const char* text) noexcept {
    return text && std::strlen(text) == plainLength && parse(id_, text, plainStarts);
}

void FUID::toBracedString(char* buffer) const noexcept {
    if (!buffer)
        return;
    std::memcpy(buffer, "{--------------------------------------}", bracedLength);
    for (int i = 0; i < 16; ++i)
        writeByte(buffer + bracedStarts[i], id_.bytes[readingOrder[i]]);
    buffer[bracedLength - 1] = '}';
    buffer[bracedLength] = 0;
}

std::string FUID::toBracedString() const {
    char text[bracedLength + 1];
    toBracedString(text);
    return text;
}

bool FUID::fromBracedString(const char* text) noexcept {
    return text && std::strlen(text) == bracedLength && parse(id_, text, bracedStarts);
}

void FUID::toDeclaration(char* buffer, int32_t style) const {
    constexpr const char* heads[] = {"INLINE_UID (", "DECLARE_UID (", "FUID (",
                                     "DECLARE_CLASS_IID (Interface, "};
    const char* head = heads[style >= inlineUid && style < declareClassIid ? style : declareClassIid];
    char line[97];
    std::snprintf(line, sizeof line, "%s0x%08X, 0x%08X, 0x%08X, 0x%08X)", head, word(0), word(1), word(2),
                  word(3));
    if (buffer)
        std::strcpy(buffer, line);
    else
        platform::debugOutput(line);
}

} // namespace qorl
