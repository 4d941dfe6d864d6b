#pragma once

#include <string>

namespace qorl {

/// Files that stand for others.
class FNShortcut {
public:
    /// What the shortcut at `path`, both in the system's form, leads to; empty for anything else, for a file
    /// that is damaged, and where its target can't be found from here. The target needn't be there.
    ///
    /// A ".lnk" file is followed by its relative path, else by the share of another computer that it names,
    /// when that is mounted; what it says of drives means nothing here. Sources: Microsoft, MS-SHLLINK; the
    /// Desktop Entry Specification 1.5 of freedesktop.org. Throws std::bad_alloc.
    static std::string targetOf(const std::string& path);
};

} // namespace qorl
