#pragma once

#include "persistence/attributes/FAttributes.h"

namespace qorl {

// The binary form of attributes.
//
// A body is a 32-bit count and, for each entry, its key, a 16-bit kind and the value; nested attributes are
// bodies again. Objects are stored by class name, number and their attributes, each once: where one occurs
// again, only its number stands. On reading no class is needed: an object is created when somebody asks for
// it. So a body can be read and written again where its classes are unknown.
//
// Bodies may be nested 10000 deep. Both operations tell in `fault`, when it is given, where the body or the
// stream was at fault and what would have been right.

/// Writes the body as a whole, at the end, or nothing of it: false when a text or a key is longer than it
/// could be read back (50000 bytes; XML or a binary value hold any length), for a binary value of 2 GB and
/// more, when attributes are nested too deep, when memory ran out, and when the stream does not take all
/// bytes. An object that has no attribute form is left out.
bool writeAttributes(FBinaryStream& stream, const FAttributes& attributes, std::string* fault = nullptr);

/// Adds the body's entries to `attributes`. False for a damaged body and when memory ran out; what was read
/// until then stays. A text, or an item of a list of texts, that is too long is left out; an object whose
/// class name is too long stays stored without a class, and the global listener of archives is told.
/// `archive` reads the objects of old files that stored them by it; null where there is none.
bool readAttributes(FBinaryStream& stream, FAttributes& attributes, FObjectArchive* archive = nullptr,
                    std::string* fault = nullptr);

} // namespace qorl
