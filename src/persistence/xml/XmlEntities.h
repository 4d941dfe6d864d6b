#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The named entities of settings documents, and how texts are written with them.
namespace qorl::XmlEntities {

/// The name of a character that must not, or should not, stand as it is in 8-bit text; empty for any other.
/// Of two names for one character the later one.
std::string_view nameToWrite(uint8_t byte);

/// Replaces `&name;`, `&#N;` and `&#xH;`, each by one byte. What is unknown, 0 or beyond a byte stays as it
/// stands.
std::string decode(std::string_view text);

/// 8-bit text: names for what has one, numbers for all other bytes above 0x7F.
void escape8(std::string& out, std::string_view bytes);
/// UTF-8 of wide text, where only `& < > "` are escaped.
void escapeUtf8(std::string& out, std::string_view utf8);

} // namespace qorl::XmlEntities
