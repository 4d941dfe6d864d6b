#pragma once

#include "persistence/attributes/FAttributes.h"

namespace qorl {

/// Attributes in a binary stream.
///
/// A body is a 32-bit count and, for each entry, its key, a 16-bit kind and the value; nested attributes are
/// bodies again. Objects are stored by class name, number and their attributes, each once: where one occurs
/// again, only its number stands. On reading no class is needed: an object is created when somebody asks for
/// it. So a body can be read and written again where its classes are unknown.
namespace AttributesStream {

/// False when the stream did not take all bytes, a text could not be stored, an object had no attributes or
/// attributes are nested more than 200 deep: then it can't be read back.
bool write(FBinaryStream& stream, const FAttributes& attributes);

/// Adds the body's entries to `attributes`. False for a damaged body; what was read until then stays.
/// `archive` reads the objects of old files that stored them by it; null where there is none.
bool read(FBinaryStream& stream, FAttributes& attributes, FObjectArchive* archive = nullptr);

} // namespace AttributesStream

} // namespace qorl
