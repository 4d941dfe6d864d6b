#pragma once

#include <cstddef>
#include <cstdint>

namespace qorl {

/// A 128-bit id of an interface or a class, as sixteen plain bytes: the form in which ids cross the library.
///
/// Inside the library `FUID` is the value class with text forms and generation; it converts to and from this.
struct InterfaceId {
    uint8_t bytes[16] = {};

    /// The four words of an id's declaration. The first word and the halves of the second stand low byte
    /// first, the last two words high byte first, so that the braced text shows the digits in this order.
    static constexpr InterfaceId fromWords(uint32_t w1, uint32_t w2, uint32_t w3, uint32_t w4) {
        InterfaceId id;
        for (int i = 0; i < 4; ++i) {
            id.bytes[i] = static_cast<uint8_t>(w1 >> (8 * i));
            id.bytes[8 + i] = static_cast<uint8_t>(w3 >> (24 - 8 * i));
            id.bytes[12 + i] = static_cast<uint8_t>(w4 >> (24 - 8 * i));
        }
        for (int i = 0; i < 2; ++i) {
            id.bytes[4 + i] = static_cast<uint8_t>(w2 >> (16 + 8 * i));
            id.bytes[6 + i] = static_cast<uint8_t>(w2 >> (8 * i));
        }
        return id;
    }

    /// "{00000000-0000-0000-C000-000000000046}" at compile time. A malformed text does not compile when the
    /// result initialises a constant.
    static constexpr InterfaceId fromText(const char (&text)[39]) {
        constexpr int starts[] = {1, 3, 5, 7, 10, 12, 15, 17, 20, 22, 25, 27, 29, 31, 33, 35};
        constexpr int places[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
        InterfaceId id;
        for (int i = 0; i < 16; ++i)
            id.bytes[places[i]] =
                static_cast<uint8_t>(digit(text[starts[i]]) * 16 + digit(text[starts[i] + 1]));
        return id;
    }

    friend constexpr bool operator==(const InterfaceId& a, const InterfaceId& b) {
        return __builtin_memcmp(a.bytes, b.bytes, sizeof a.bytes) == 0;
    }
    friend constexpr bool operator!=(const InterfaceId& a, const InterfaceId& b) { return !(a == b); }

private:
    static constexpr int digit(char c) {
        return c >= '0' && c <= '9'   ? c - '0'
               : c >= 'A' && c <= 'F' ? c - 'A' + 10
               : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                      : notADigit();
    }
    // Not constexpr on purpose: reaching it in a constant expression is a compile error at the literal.
    static int notADigit() { return 0; }
};

} // namespace qorl
