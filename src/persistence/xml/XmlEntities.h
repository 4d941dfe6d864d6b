#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

/// The named entities of settings documents: the Latin-1 character entities of ISO 8879 with some additions.
/// Read-only; any thread may ask.
namespace qorl::XmlEntities {

/// In which set the code of a name is looked up.
enum class Column : uint8_t { latin1, macintosh };

struct Row {
    std::string_view name;
    uint8_t latin1;
    uint8_t macintosh; ///< In Macintosh Roman; 0xFF where that has no such character.
    bool isWritten;    ///< Written as a name though its code is below 0x80.
};

std::span<const Row> rows();

/// How 8-bit text is written.
enum class Escape : uint8_t {
    entities, ///< Names for what has one, numbers for all other bytes of 0x80 and more.
    markup    ///< Only & < > " by their names.
};

/// What is written for a byte; nothing for one that stands for itself. Of two names for one code the later
/// one is written.
struct Substitute {
    uint8_t length = 0;
    char text[9] = {};
};
const std::array<Substitute, 256>& substitutes(Escape escape);

/// Whether eight bytes stand for themselves, whatever is escaped. False also for eight that hold a control
/// character or a byte of 0x80 and more.
inline bool areEightPlain(const char* text) {
    constexpr uint64_t each = 0x0101010101010101;
    constexpr uint64_t high = 0x80 * each;
    uint64_t bytes = 0;
    std::memcpy(&bytes, text, sizeof bytes);
    const uint64_t low = bytes & ~high;
    // Adding to seven bits gets to the eighth for all but 0, and never into the next byte.
    const auto differs = [&](uint64_t mask, uint64_t character) {
        return ((low & mask * each) ^ character * each) + 0x7F * each;
    };
    return ((low + 0x60 * each) & differs(0x7B, '"') & differs(0x7F, '$') & differs(0x7D, '<') &
            differs(0x7F, '^') & differs(0x7F, '`') & ~bytes & high) == high;
}

/// More bytes than any reference has, "&" and ";" included.
constexpr size_t longestReference = 16;

struct Decoded {
    size_t length;     ///< What is left of the text.
    bool hasNamedHigh; ///< A name stood for a code of 0x80 or more.
};

/// Replaces `&name;`, `&#N;` and `&#xH;` in place, each by one byte. What is unknown, 0 or no byte stays as
/// it stands.
Decoded decode(char* text, size_t length, Column column);

} // namespace qorl::XmlEntities
