#pragma once

#include "persistence/files/StoredFile.h"

#include <string_view>

namespace qorl {

class CmObject;

// Settings files: one object each, stored by its attributes as an XML document in the user's settings folder.
// A name may begin with folders; one without an extension gets "xml". A failed or interrupted save leaves the
// earlier file under the name with "_old" behind it, so no file may be named like that, see `StoredFile`.
// Operations give false on failure, also without memory. GUI thread.

/// With `askToReplace` the user is asked before a file of that name is replaced; false when he doesn't want
/// it.
bool saveXml(const ConstString& name, std::string_view tag, CmObject& object, bool askToReplace = false);
/// Falls back to what an interrupted save left, and, when the user has no such file, to the application's
/// shared data: what he has and nobody can open is not replaced by that. A document that is damaged leaves
/// the object as it is.
bool loadXml(const ConstString& name, std::string_view tag, CmObject& object,
             StoredFile::Found* found = nullptr);
bool xmlExists(const ConstString& name);
bool deleteXml(const ConstString& name);
bool renameXml(const ConstString& name, const ConstString& newName);
/// Copies the file beside itself, with the extension "xml.backup".
bool backupXml(const ConstString& name);
/// Puts such a copy in the file's place and takes it away. False when there is none.
bool restoreXml(const ConstString& name);

} // namespace qorl
