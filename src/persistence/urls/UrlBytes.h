#pragma once

#include <string>
#include <string_view>

/// Percent encoding on bytes (RFC 3986, section 2.1). What is no ASCII in a text that is decoded was never
/// encoded and stays. All throw std::bad_alloc.
namespace qorl::UrlBytes {

/// What stands unencoded in a path: letters, digits and `-._~!$&'()*+,;=:@/?`.
bool passesInPath(char byte);
/// Letters, digits and `-._~`, which mean the same encoded and plain.
bool isUnreserved(char byte);

/// Encodes all but letters, digits and `&+-./=?_`.
std::string encode(std::string_view bytes);
/// The same for the name of one segment, so that a `/` in it stays a part of the name.
std::string encodeName(std::string_view bytes);
std::string encodePath(std::string_view bytes);
std::string decode(std::string_view text);
/// With each encoding in lower case digits, and none where the plain byte means the same.
std::string normalize(std::string_view text);

/// The digit's value, -1 for what is none.
int hexDigit(char c);
/// The byte that is encoded at `at`, -1 when there is none.
int encodedByte(std::string_view text, size_t at);
/// ASCII letters only.
std::string lowerCase(std::string_view text);

} // namespace qorl::UrlBytes
