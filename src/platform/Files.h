#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qorl::platform {

/// Why a file operation failed: the system's own number and its text. 0 is success.
struct FileError {
    int32_t code = 0;

    explicit operator bool() const { return code != 0; }
    /// "No such file or directory".
    std::string getText() const;
    bool isNotFound() const;
    bool isExisting() const;
    bool isFull() const;
    /// Somebody else has it open and does not share it.
    bool isInUse() const;
};

/// Bits of what `File::open` may do.
enum OpenMode : uint32_t {
    openRead = 1,
    openWrite = 2,
    openCreate = 4,         ///< make the file if it is missing
    openTruncate = 8,       ///< cut an existing one to nothing
    openExclusive = 16,     ///< with `openCreate`: fail if it exists
    openSequential = 32,    ///< a hint: from front to end, once
    openLocked = 64,        ///< fail if another opener, of this program or another one, uses it in a way that
                            ///< this one does not share, or the other way round; see below
    openRegular = 128,      ///< fail for what is no plain file, and never wait for the other end of a pipe
    openSharesRead = 256,   ///< with `openLocked`: others may read
    openSharesWrite = 512,  ///< with `openLocked`: others may write
    openUncached = 1024,    ///< transfers go past the caches where their places, lengths and buffers are
                            ///< multiples of the sector size; others go through them
    openWriteThrough = 2048 ///< a write returns when its bytes are on the disk
};

// Locks are advisory: programs that don't ask for one are kept from nothing, and on volumes without locks
// nobody is. Of two openers with `openLocked` the second one fails when either does what the other one does
// not share. What an opener says holds until its file is closed, also for those that share everything; of
// several that come at one moment, those that share what the others do are all let in.

enum class SeekOrigin : uint8_t { start, current, end };

/// An open file. Operations of this header throw nothing but std::bad_alloc. Paths everywhere here are the
/// system's native form in UTF-8, absolute or relative to the current folder. Sizes and places in bytes.
/// Threading: one thread at a time.
class File {
public:
    File() = default;
    ~File() { close(); }
    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;

    FileError open(const std::string& path, uint32_t mode);
    bool isOpen() const { return descriptor_ >= 0; }

    /// Bytes moved; 0 at the end of the file; -1 on failure, with `error` set when given.
    int64_t read(void* buffer, int64_t count, FileError* error = nullptr);

    /// `count`. Fewer when the system fails on the way, -1 when it fails at once; `error` is set then, when
    /// given.
    int64_t write(const void* buffer, int64_t count, FileError* error = nullptr);

    /// The new place, or -1 with `error` set when given.
    int64_t seek(int64_t offset, SeekOrigin origin, FileError* error = nullptr);
    int64_t getPosition() { return seek(0, SeekOrigin::current); }
    /// -1 on failure, with `error` set when given.
    int64_t getSize(FileError* error = nullptr) const;

    /// Cuts or grows the file; new bytes are 0.
    FileError setSize(int64_t size);

    /// Returns when the bytes are on the disk.
    FileError flushToDisk();
    FileError close();

private:
    friend class NativeFile;
    FileError open(const std::string& path, uint32_t mode, uint32_t rights);

    int descriptor_ = -1;
};

enum class FileKind : uint8_t { none, file, folder, other };

struct FileInfo {
    FileKind kind = FileKind::none;
    int64_t size = 0;
    /// Milliseconds since 1970 UTC. `created` is 0 where the file system does not keep it.
    int64_t created = 0;
    int64_t written = 0;
    int64_t read = 0;
    bool isReadOnly = false; ///< nobody may write it, or not this user
    bool isHidden = false;
    bool isLink = false; ///< a symbolic link; everything else describes its target
    /// Names the file itself, whatever its path is.
    uint64_t volume = 0;
    uint64_t serial = 0;
};

/// `FileKind::none` when there is nothing at `path`; only other failures are errors.
FileError getFileInfo(const std::string& path, FileInfo& info);
bool fileExists(const std::string& path);
bool folderExists(const std::string& path);

FileError deleteFile(const std::string& path);
/// A file, a link or a folder with all that is in it. Replaces an existing `to`, in one step when both lie on
/// one volume. Across volumes by a copy, in which links stay links; `from` goes, in one step, when all of it
/// stands, so that a failed move leaves both as they were, unless `from` turns out only then to be held: both
/// are the same then. What is neither file, link nor folder can't be moved across.
FileError moveFile(const std::string& from, const std::string& to);

/// Asked before each block of a copy, with where it will be read to and the bytes copied so far; false ends
/// the copy with the code of "Operation canceled".
using CopyStep = std::function<bool(std::span<const uint8_t> block, int64_t done)>;

/// The contents of a plain file, with its rights and, where the volume keeps them, its times. Stored as
/// `replaceFile` does, so that a copy that fails leaves `to` as it was. Refuses to copy a file onto itself.
FileError copyFile(const std::string& from, const std::string& to, const CopyStep& step = {});

/// What becomes of symbolic links to files in a copy of a folder. Any other link stays one.
enum class FileLinks : uint8_t { keep, copyContents };

/// A folder with all that is in it, into `to`, which is made with the folders above it; files that are there
/// already stay or are replaced. Refuses a `to` inside of `from`.
FileError copyTree(const std::string& from, const std::string& to, FileLinks links);
/// For its owner alone where the user's settings, data and caches lie, as the rules of these folders ask.
FileError createFolder(const std::string& path);
/// With every folder above it that is missing. No error when it exists.
FileError createFolders(const std::string& path);
FileError deleteFolder(const std::string& path);
/// A folder with all that is in it. Links are removed, never followed.
FileError deleteTree(const std::string& path);
FileError setReadOnly(const std::string& path, bool on);

/// One entry of a folder. `kind` is that of a link's target.
struct FolderEntry {
    std::string name;
    FileKind kind = FileKind::none;
    bool isHidden = false;
};

/// Entries without "." and "..", sorted by the bytes of their names.
FileError listFolder(const std::string& path, std::vector<FolderEntry>& entries);

/// The whole file. Fails with the code of "File too large" when it is longer than `limit` bytes.
FileError readWholeFile(const std::string& path, std::vector<uint8_t>& bytes, int64_t limit);

/// Stores `bytes` as the file `path` by a `FileReplacement`. Rights of an existing file stay; a symbolic link
/// is written through, also one whose target is missing.
FileError replaceFile(const std::string& path, std::span<const uint8_t> bytes);

/// Holds a file of its own against other programs and threads that lock it too, so that one of them at a time
/// does what they all lock it for; advisory. A volume without locks locks nothing.
class FileLock {
public:
    enum class State : uint8_t {
        held,
        busy,      ///< somebody else held it all the while
        impossible ///< the file can't be made, or its volume knows no locks
    };

    /// Makes the file, for this user alone, and waits for it as long as `limit`.
    FileLock(const std::string& path, std::chrono::milliseconds limit);
    FileLock(const FileLock&) = delete;
    ~FileLock();

    State state() const { return state_; }

private:
    State state_ = State::impossible;
    int descriptor_ = -1;
};

/// Flushes a folder's own entries, so that files just renamed in it outlive a power cut.
FileError flushFolder(const std::string& path);

/// A new empty file with a name of its own in `folder`; `path` gets its name.
FileError createTemporaryFile(const std::string& folder, std::string_view prefix, std::string& path);

/// Absolute, without ".", ".." and links. Parts that do not exist are kept as they are. A text of more than
/// 32767 bytes, which leads nowhere, comes back unchanged.
std::string getCanonicalPath(const std::string& path);

FileError setCurrentFolder(const std::string& path);
std::string getCurrentFolder();

enum class VolumeKind : uint8_t { unknown, fixed, removable, network, optical, memory };

struct VolumeInfo {
    std::string root; ///< where it is mounted
    std::string name; ///< what the user calls it
    VolumeKind kind = VolumeKind::unknown;
    int64_t freeBytes = 0; ///< free for this user
    int64_t totalBytes = 0;
    bool isReadOnly = false;
};

/// The volume that `path` lies on; of a path that isn't there yet, the part that is there.
FileError getVolumeInfo(const std::string& path, VolumeInfo& info);

/// What transfers with `openUncached` have to be multiples of, in bytes; 0 when it isn't known.
int32_t getSectorSize(const std::string& path);

/// Volumes that hold a user's files; those of the system's own machinery are left out.
std::vector<VolumeInfo> listVolumes();

/// The folder in which a share of another computer is mounted, by the system or by the desktop for this
/// user; empty when it is not. Case of both names aside.
std::string findNetworkShare(const std::string& host, const std::string& share);

} // namespace qorl::platform
