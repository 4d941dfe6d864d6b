#pragma once

#include "platform/Files.h"

#include <string>

/// Changes to the disk that last through a power cut, for what the user would miss, and how they are told of.
/// Paths are the system's native form. Operations throw nothing but std::bad_alloc. Threading: any thread.
namespace qorl {

/// Says on the debug output what happened to a file or a folder.
void tellOfFile(const std::string& file, const std::string& text);
/// Tells of a failure there, and gives its number to the caller. True when there is none.
bool tellFailure(const std::string& file, const char* what, const platform::FileError& failure,
                 int32_t* error = nullptr);

/// Renames a file or a folder, so that the disk knows of it when this returns. Where it can't be told, which
/// goes to the debug output, the new name holds all the same.
platform::FileError moveDurably(const std::string& from, const std::string& to);
/// Deletes a file, with what was changed in its folder before known to the disk as well. The same goes for
/// where that can't be told.
platform::FileError deleteDurably(const std::string& file);
/// A folder with every one above it that is missing, known to the disk: a file is lost with its folder. No
/// error when it exists.
platform::FileError createFoldersDurably(const std::string& folder);

/// Names that are tried before there are too many.
inline constexpr int mostNamesTried = 1000;
/// The first name that neither a file nor a folder has, of those that `makeName` gives for "", " 2", " 3" and
/// so on; empty when all are taken.
template <typename MakeName>
std::string firstFreeName(const MakeName& makeName) {
    for (int number = 1; number <= mostNamesTried; ++number) {
        std::string name = makeName(number > 1 ? ' ' + std::to_string(number) : std::string());
        if (!platform::fileExists(name) && !platform::folderExists(name))
            return name;
    }
    return {};
}

} // namespace qorl
