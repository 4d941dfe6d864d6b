#pragma once

#include "persistence/defaults/DefaultsFolder.h"
#include "persistence/files/StoredFile.h"

#include <new>
#include <string>
#include <string_view>

/// The names of the store's files, and what stands in them.
namespace qorl::DefaultsForm {

/// The single file, and the tag of each document that holds groups.
inline constexpr const char* groups = "Defaults";
/// The file of the auto-savers in the folder, and its tag.
inline constexpr const char* savers = "AutoSaver";

// Keys of the single file.
inline constexpr const char* entriesKey = "Entries";
inline constexpr const char* saversKey = "AutoSavers";

inline std::string inFolder(const std::string& name,
                            DefaultsFolder::Place place = DefaultsFolder::Place::store) {
    return std::string(DefaultsFolder::nameOf(place)) + '/' + name;
}

/// One of the user's settings files, for as long as its name is there.
inline StoredFile settingsFile(std::string_view name) {
    return {ConstString(name), FFileType::xmlFile()};
}

/// Whether a file is there. Throws `std::bad_alloc` without memory to look: nothing is taken for missing
/// then.
inline bool stands(const StoredFile& file) {
    int32_t error = 0;
    const bool isThere = file.exists(&error);
    if (error)
        throw std::bad_alloc();
    return isThere;
}

} // namespace qorl::DefaultsForm
