#pragma once

#include "platform/Files.h"

namespace qorl::platform {

/// What an open file gives to the other sources of this folder.
class NativeFile {
public:
    static int descriptorOf(const File& file) { return file.descriptor_; }

    /// As `File::open`; a file that it makes gets `rights`, less what the user's mask takes away.
    static FileError open(File& file, const std::string& path, uint32_t mode, uint32_t rights) {
        return file.open(path, mode, rights);
    }
};

} // namespace qorl::platform
