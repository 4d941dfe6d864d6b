#pragma once

#include "foundation/text/ConstString.h"

namespace qorl {

class CmObject;

/// An object's contents in a file of the user's settings, in the sized form: what its `writeTo` writes,
/// without its class, so that the reader has to bring an object of the same class.
///
/// A `name` without an extension gets "bin". Files are stored and found through `StoredFile`. All give false
/// on failure, also without memory; the global listener of archives, or the debug output, hears what of the
/// objects could not be stored or read. Threading: any thread.

/// Leaves the file that was there, or none, when the object can't store itself or the file can't be written.
bool saveObjectFile(const ConstString& name, CmObject* object);
/// From the user's settings, or where there is no such file from the application's shared data: what
/// `readFrom` gives. The object may hold some of a file that it could not read whole, but never of two: an
/// earlier file, which an interrupted save kept, is only taken while nothing has been read. False also when
/// there was no memory for something in the file, whatever `readFrom` makes of that.
bool loadObjectFile(const ConstString& name, CmObject* object);
/// In the user's settings.
bool objectFileExists(const ConstString& name);
bool renameObjectFile(const ConstString& name, const ConstString& newName);
bool deleteObjectFile(const ConstString& name);

} // namespace qorl
