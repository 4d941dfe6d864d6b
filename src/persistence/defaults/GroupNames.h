#pragma once

#include "foundation/text/ConstString.h"

#include <string>

/// Names of groups of settings, and of the files that groups are stored in. All throw std::bad_alloc.
namespace qorl::GroupNames {

/// What makes two names equal: their characters. Bytes that are no UTF-8 are of code page 1252.
std::u16string keyOf(const ConstString& group);
/// The name, in the store, of the file of a group: the MD5 digest (RFC 1321) of the group's name in UTF-16,
/// low byte first, in 32 upper-case hexadecimal digits.
std::string fileOf(const ConstString& group);
/// The name that earlier versions gave it: the digest of the 8-bit form.
std::string earlierFileOf(const ConstString& group);

} // namespace qorl::GroupNames
