#pragma once

#include "persistence/files/FFileSystem.h"

#include <functional>

namespace qorl {
class FUrl;
}

/// What all copies of a file share, whatever places they go between. Each throws std::bad_alloc.
namespace qorl::FileCopying {

/// Takes the next bytes of a copy; false ends it.
using WriteBytes = std::function<bool(const uint8_t* bytes, int64_t count)>;

/// Tells the user what is copied.
void tellName(StreamProgress* progress, const FPath& from);
/// Hands all of `source` to `write`. `size` is what its file system says of its length, -1 where that isn't
/// known. False for less than that, after an error of the source, and when `progress` cancels.
bool copyBytes(Ref<FStream> source, int64_t size, StreamProgress* progress, const WriteBytes& write);
/// A file of another place into one of `files`. In place of an existing one only when all of it is there;
/// what fails leaves `to` as it was. Where `files` can't tell whether one exists, it has to be able to
/// rename.
bool copyInto(FFileSystem& files, const FUrl& to, Ref<FStream> source, int64_t size,
              StreamProgress* progress);
/// Gives a copy the times of its source, where both sides know them.
void takeOverTimes(FFileSystem& source, const FPath& from, FFileSystem& target, const FPath& to);

} // namespace qorl::FileCopying
