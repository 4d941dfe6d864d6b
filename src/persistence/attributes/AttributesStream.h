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
// Bodies may be nested `AttributesForm::maxDepth` deep. Both operations tell in `fault`, when it is given,
// where the body or the stream was at fault and what would have been right.

/// What becomes of objects that old files store without a number. One that is created as soon as it is read
/// is dropped if its class is unknown, if it has none, or if it refuses its attributes; one that is kept
/// stays stored like all others, and goes only without a class.
enum class OldObjects : uint8_t { created, kept };

/// Writes the body as a whole, at the end, or nothing of it: false when a text or a key is longer than it
/// could be read back (`String::maxStoredBytes`; XML or a binary value hold any length), for a binary value
/// of 2 GB and more, when attributes are nested too deep, when memory ran out, and when the stream does not
/// take all bytes. An object that has no attribute form is left out.
bool writeAttributes(FBinaryStream& stream, const FAttributes& attributes, std::string* fault = nullptr);

/// Adds the body's entries to `attributes`. False for a damaged body and when memory ran out; what was read
/// until then stays. What a whole body has and `attributes` don't get is told to the global listener of
/// archives, each time: a text, or an item of a list of texts, that is too long; the name of a class that is,
/// without which an object only stays stored; an object of an old file that is dropped. Entries with an empty
/// text or of an unknown kind are left out without a word.
///
/// `archive` reads the objects of old files that stored them by it; null where there is none. With one a lack
/// of memory is told as objects of archives tell it, by `std::bad_alloc`. By an archive alone attributes may
/// come to hold themselves, as a damaged or hostile archive makes them: nobody releases such a ring but who
/// reads it, by `removeAll`.
bool readAttributes(FBinaryStream& stream, FAttributes& attributes, FObjectArchive* archive = nullptr,
                    std::string* fault = nullptr, OldObjects oldObjects = OldObjects::created);

} // namespace qorl
