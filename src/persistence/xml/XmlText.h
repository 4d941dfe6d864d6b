#pragma once

#include "foundation/text/String.h"

#include <string>
#include <string_view>

/// Texts of XML documents on their way from bytes to characters.
namespace qorl::XmlText {

/// What bytes are read as that are no valid UTF-8.
enum class Fallback : uint32_t { western = 1252, macintosh = 10000 };

/// UTF-8 as wide text, in which a lone surrogate may stand in three bytes as any other unit; bytes that are
/// no such text are taken from `fallback`, so that none is dropped. A byte without a character there becomes
/// the control character of its number. Throws `std::bad_alloc`.
String widen(std::string_view bytes, Fallback fallback = Fallback::western);

/// Plain ASCII stays as it is, any other text becomes wide. Throws `std::bad_alloc`.
String decode(std::string_view bytes, Fallback fallback = Fallback::western);

/// A text of a document as an error text shows it: control characters, which would reach a terminal, and
/// bytes that are no text stand as "\x1B". Throws `std::bad_alloc`, as `brief` does.
std::string printable(std::string_view text);
/// The same for a name, which is not endless.
std::string brief(std::string_view name);

} // namespace qorl::XmlText
