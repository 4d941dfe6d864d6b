#pragma once

#include "persistence/files/FNPath.h"
#include "platform/Files.h"

#include <string>
#include <vector>

namespace qorl {

/// A search of `FNFileSystem::findFirst`: the entry found last, and what is still to come of the folder as it
/// was then.
struct FNFileSearch {
    FNPath found;
    std::string folder; ///< with a final separator
    std::vector<platform::FolderEntry> entries;
    size_t next = 0;
    int32_t mode = 0;               ///< of `FFileSystem::IteratorMode`
    std::vector<String> extensions; ///< of files; any one when empty
};

} // namespace qorl
