#pragma once

#include <string>
#include <vector>

namespace qorl::platform {

/// Places that the system sets aside for a purpose.
enum class SystemFolder {
    settings,  ///< the user's settings of programs
    data,      ///< the user's data of programs
    cache,     ///< may be deleted at any time
    documents, ///< where the user keeps documents
    home,
    temporary,  ///< what no other user may see, where the system keeps a place for that
    sharedData, ///< data of programs for all users; usually read-only. The first of `getSharedDataFolders`
    system      ///< the system's own files
};

/// Absolute, without a final separator. Not created. The environment decides first (XDG_CONFIG_HOME and its
/// like, relative ones are ignored), then the user's account.
std::string getSystemFolder(SystemFolder folder);

/// Where data of programs for all users may lie, the best place first: beside the folder that this library or
/// program is installed in, then where the environment says (XDG_DATA_DIRS). Absolute, without a final
/// separator; not all of them are there.
std::vector<std::string> getSharedDataFolders();

/// The running program's file; empty when the system does not tell.
std::string getProgramPath();

/// The library or program that holds `address`; empty when none does.
std::string getModulePath(const void* address);

} // namespace qorl::platform
