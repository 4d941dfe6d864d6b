#pragma once

#include "foundation/text/String.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Texts of paths and of names in them.
///
/// The system gives and takes names as bytes, which are UTF-8 by agreement only; paths keep them in UTF-16. A
/// byte that belongs to no valid UTF-8 is kept as a lone surrogate, from U+DC80 on, so that a file with any
/// name can be opened by the path that a folder gave.
namespace qorl::PathText {

/// What paths keep for a text of the system. Throws std::bad_alloc, as the way back does.
std::u16string fromNative(std::string_view native);
/// The way back. Other lone surrogates, which no name of a file gives, become U+FFFD.
std::string toNative(std::u16string_view path);
/// The same for a text of either width; bytes are as they are.
std::string toNative(const ConstString& text);
/// What stands in front of the last `/` of a native path, with it, and what behind it. Final ones count for
/// the folder above: "/a/b/" is "b" in "/a/".
std::string folderOfNative(std::string_view native);
std::string nameOfNative(std::string_view native);
/// Whether a path is the text of a URL: "://" stands behind its first part, which is the scheme.
bool beginsAsUrl(const ConstString& path);
/// Whether a text is one part of a path, as a name has to be: not empty, no dots that lead elsewhere, no
/// separator and no character 0.
bool isOnePart(const ConstString& name);
/// What becomes of "..": it takes the part in front of it away, or there must be none.
enum class Dots : uint8_t { resolved, refused };
/// The parts of a path that counts from some place and stays below it, without empty ones and "."; views on
/// `path`, in which each of `separators` divides them. Nothing for a path that would lead out of the place,
/// whatever its parts are, and for one with a ".." that is refused. Throws std::bad_alloc.
std::optional<std::vector<std::string_view>> partsBelow(std::string_view path, std::string_view separators,
                                                        Dots dots);
/// Where in a name the dot of this extension stands, case aside; `notFound` when the name does not end in it,
/// or has nothing in front. An extension comes without its dot and may hold others ("tar.gz"). In UTF-16
/// characters. Throws std::bad_alloc.
int32_t findExtension(const ConstString& name, const ConstString& extension);
/// `length`, or less where the text has less or a character of two halves would be cut.
int32_t wholeLength(std::u16string_view text, int32_t length);
/// A text of a path in the form in which it comes back from streams and attributes: bytes of a name that are
/// no text make all of it bytes. Throws std::bad_alloc.
String toStoredText(const String& text);
/// The same for a stream, where bytes that begin with the mark of UTF-8 would come back without it.
String toStreamText(const String& text);
/// Whether a text is short enough to be read back from a stream, with its terminator and the mark behind it.
bool canBeStored(const String& text);

} // namespace qorl::PathText
