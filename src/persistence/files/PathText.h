#pragma once

#include "foundation/text/ConstString.h"

#include <string>
#include <string_view>

namespace qorl {

/// The system gives and takes names as bytes, which are UTF-8 by agreement only; paths keep them in UTF-16. A
/// byte that belongs to no valid UTF-8 is kept as a lone surrogate, from U+DC80 on, so that a file with any
/// name can be opened by the path that a folder gave. Both throw std::bad_alloc.
std::u16string toPathText(std::string_view native);
/// The way back. Other lone surrogates, which no name of a file gives, become U+FFFD.
std::string toNativeText(std::u16string_view path);
/// The same for a text of either width; bytes are as they are.
std::string toNativeText(const ConstString& text);
/// What stands in front of the last `/` of a native path, with it, and what behind it. Final ones count for
/// the folder above: "/a/b/" is "b" in "/a/".
std::string folderOfNative(std::string_view native);
std::string nameOfNative(std::string_view native);
/// Whether a text is one part of a path, as a name has to be: not empty, no dots that lead elsewhere, no
/// separator and no character 0.
bool isOnePart(const ConstString& name);
/// Whether no byte of a name, and no other half of a character, stands alone in it.
bool isPlainText(std::u16string_view path);

} // namespace qorl
