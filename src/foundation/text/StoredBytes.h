#pragma once

#include "foundation/text/String.h"

#include <string_view>

/// Texts of files that may be older than UTF-8, on their way from bytes to characters. Pure functions; any
/// thread may call them.
namespace qorl::text {

/// What bytes are read as that are no valid UTF-8, by the number of the code page.
enum class StoredEncoding : uint32_t { western = 1252, macintosh = 10000 };

/// UTF-8 as wide text, in which a lone surrogate may stand in three bytes as any other unit; bytes that are
/// no such text are taken from `earlier`, so that none is dropped. A byte without a character there becomes
/// the control character of its number. Throws `std::bad_alloc`.
String widenStored(std::string_view bytes, StoredEncoding earlier = StoredEncoding::western);

/// Plain ASCII stays as it is, any other text becomes wide. Throws `std::bad_alloc`.
String decodeStored(std::string_view bytes, StoredEncoding earlier = StoredEncoding::western);

} // namespace qorl::text
