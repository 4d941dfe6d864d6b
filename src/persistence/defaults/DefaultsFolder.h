#pragma once

#include "foundation/text/ConstString.h"

#include <string>

namespace qorl {

/// Folders in the user's settings folder that hold a whole state of the defaults store. A link to one stays a
/// link. The caller holds a `DefaultsLock`. Operations give false on failure and throw nothing but
/// std::bad_alloc.
namespace DefaultsFolder {

/// The store itself.
inline constexpr const char* store = "Defaults";
/// What waits for the next start to take its place again.
inline constexpr const char* backup = "Defaults (Backup)";
/// What the user did away with last.
inline constexpr const char* trash = "Defaults (Trashed)";
// Folders under these names are not whole yet.
inline constexpr const char* newStore = "Defaults (New)";
inline constexpr const char* newBackup = "Defaults (New Backup)";

/// Makes the user's settings folder.
void makeSettings();
bool stands(const char* folder);
/// Deletes what a crash left half made or half deleted.
void tidy();
/// Away at once, then deleted.
bool discard(const char* folder);
/// Puts a folder that is whole in the place of an earlier one.
bool putInPlace(const char* from, const char* to);
/// With its whole depth.
bool copy(const char* from, const char* to);
/// A file of the user's settings, into the folder of that name or back from there.
bool copyFileInto(const char* folder, const char* file);
bool copyFileOutOf(const char* folder, const char* file);
bool holdsFile(const char* folder, const char* file);
/// An empty one, whatever stood there before.
bool createAfresh(const char* folder);

/// What makes two names of groups equal: their characters. Bytes that are no UTF-8 are of code page 1252.
std::u16string keyOf(const ConstString& group);
/// The name, in the store, of the file of a group: the digest of the group's name in UTF-16, low byte first.
std::string fileOf(const ConstString& group);
/// The name that earlier versions gave it: the digest of the 8-bit form.
std::string earlierFileOf(const ConstString& group);

} // namespace DefaultsFolder

} // namespace qorl
