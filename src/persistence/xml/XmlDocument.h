#pragma once

#include "persistence/files/StoredFile.h"

#include <string_view>

namespace qorl {

/// Settings files: one object each, stored by its attributes under a name in the user's settings folder. A
/// name without an extension gets "xml". A failed or interrupted save leaves the earlier file.
namespace XmlFile {

/// Writes nothing when the file holds the same already.
bool save(const ConstString& name, std::string_view tag, CmObject& object);
/// Falls back to what an interrupted save of an earlier version left, and, when the file can't be opened, to
/// the application's shared data.
bool load(const ConstString& name, std::string_view tag, CmObject& object,
          StoredFile::Found* found = nullptr);
/// Puts the file away under "NAME (Damaged)", or the first number behind it that is free. True also
/// when there is none.
bool setAside(const ConstString& name);
bool exists(const ConstString& name);
bool remove(const ConstString& name);
bool rename(const ConstString& name, const ConstString& newName);
/// Copies the file beside itself, with the extension "xml.backup".
bool backup(const ConstString& name);
/// Puts such a copy in the file's place. False when there is none.
bool restore(const ConstString& name);

} // namespace XmlFile

} // namespace qorl
