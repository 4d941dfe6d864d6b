#pragma once

#include "platform/Files.h"

#include <string>

namespace qorl::platform {

/// The one way to put new bytes in the place of a file: they are written beside it, flushed to the disk and
/// renamed over it. Whatever fails or crashes on the way, the file holds all of the old bytes or all of the
/// new ones.
///
/// `open`, write `file`, `putInPlace`; an object that goes before that leaves the earlier file and takes what
/// was written away. While it is open the new file is locked, so that what a crash left is told from what a
/// living program still writes. Throws nothing but std::bad_alloc. Threading: one thread at a time; any
/// number of programs and threads may replace one file at once, the last of them stays.
class FileReplacement {
public:
    /// Who may read the new file.
    enum class Rights : uint8_t {
        asBefore, ///< as the earlier file says; of a new one, as the user's mask does
        ownerOnly ///< its owner, until somebody says more
    };

    FileReplacement() = default;
    FileReplacement(const FileReplacement&) = delete;
    ~FileReplacement();

    /// Makes the new file beside `path`. A symbolic link is followed, also one whose target is missing, and
    /// stays; what is neither a file nor missing is refused, and so is a file that somebody has open with
    /// `openLocked` for writing.
    FileError open(const std::string& path, Rights rights = Rights::asBefore);

    /// For writing, reading and moving about, until it is put in place.
    File& file() { return file_; }

    /// Where the new file goes: the path of `open` with all its links resolved.
    const std::string& target() const { return target_; }

    /// Whether there is an earlier file with the very bytes of the new one.
    bool holdsSameBytes();

    /// Puts the new file in its place once the disk has it. With `keptAs`, a path in the same folder, the
    /// earlier file stands under that name from before it goes until the disk knows the new one, and what
    /// stood there before goes; for volumes that can't replace a file in one step it is what a crash leaves.
    /// On failure the earlier file stands in its place again. Where it can't, since the folder could not be
    /// flushed and nothing was kept, the new one stands: that is success, and told on the debug output.
    ///
    /// On a volume without hard links the earlier file has to be moved, so that for a moment nothing has its
    /// name. When two write there at once, and one of them crashes in that moment, both states can be lost.
    FileError putInPlace(const std::string& keptAs = {});

    /// Gives what a crash left under `keptAs` the name `path` again, unless a file has that by now.
    static FileError putBack(const std::string& keptAs, const std::string& path);

    /// Takes away what crashed programs left beside `path`, never what a living one still writes.
    static void removeLeftovers(const std::string& path);

private:
    enum class Kept : uint8_t { no, linked, moved };

    FileError makeBeside(uint32_t rights);
    FileError finishWriting(int& lock);
    FileError keepEarlier(const std::string& keptAs, Kept& kept);
    FileError swap(const std::string& keptAs);
    bool takeBack(const std::string& keptAs, Kept kept);

    File file_;
    std::string name_; ///< of the new file, while it is not in place
    std::string target_;
    std::string folder_;
    bool hasEarlier_ = false;
};

} // namespace qorl::platform
