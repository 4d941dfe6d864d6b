#pragma once

#include <cstdint>

/// Folders in the user's settings folder that hold a whole state of the defaults store. A link to one stays a
/// link. The caller holds a `DefaultsLock`. Operations give false on failure and throw nothing but
/// std::bad_alloc.
namespace qorl::DefaultsFolder {

enum class Place : uint8_t {
    store,
    backup,   ///< what waits for the next start to take its place again
    trash,    ///< what the user did away with last
    newStore, ///< not whole yet, as the next one
    newBackup,
};

/// Its name in the settings folder.
const char* nameOf(Place place);

/// Makes the user's settings folder.
void makeSettings();
bool stands(Place place);
/// Deletes what a crash left half made or half deleted.
void tidy();
/// Away at once, then deleted.
bool discard(Place place);
/// Puts a folder that is whole in the place of an earlier one.
bool putInPlace(Place from, Place to);
/// With its whole depth.
bool copy(Place from, Place to);
/// An empty one, whatever stood there before.
bool createAfresh(Place place);

/// The single file that holds the store before it moves to a folder: into a folder or back from there.
bool copySingleFileInto(Place place);
bool copySingleFileOutOf(Place place);
bool holdsSingleFile(Place place);

} // namespace qorl::DefaultsFolder
