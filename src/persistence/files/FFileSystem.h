#pragma once

#include "foundation/CmObject.h"
#include "foundation/text/String.h"
#include "persistence/streams/FFileStream.h"
#include "platform/Clock.h"

namespace qorl {

class FFileIterator;
class FPath;

/// A volume: what the user calls it, and what it is.
struct FVolumeInfo {
    String name;
    platform::VolumeKind kind = platform::VolumeKind::unknown;
    int64_t freeBytes = 0;
    int64_t totalBytes = 0;
};

/// Files and folders behind paths. One class for each kind of place: the native disk, an archive, a service.
///
/// Operations give false, null or -1 on failure, also without memory, and the system's error number in
/// `error` when that is given; 0 there is success.
///
/// What happens to files is told to those who were added by `addDependent`: each gets a message, on the
/// thread that made the change (see `notify`).
class FFileSystem : public CmObject {
    QORL_CLASS(FFileSystem, CmObject)
    QORL_RECORD(FFileSystem)

public:
    /// What `notify` tells.
    enum Change : int32_t {
        fileWritten = 1,
        fileDeleted = 2,
        fileRenamed = 3,   ///< or moved
        folderRenamed = 4, ///< or moved
        folderCreated = 5,
        folderDeleted = 6
    };

    /// Bits of what `getIterator` gives; without any of them all entries.
    enum IteratorMode : int32_t { files = 1, folders = 2 };

    /// Creates the file or replaces its contents, and opens it for writing, with a read bit for reading too.
    /// `mode` as `FFileStream::OpenFlag`; with `createPath` missing folders are made if it fails at first.
    virtual Ref<FStream> createFile(const FPath& path, uint32_t mode, int32_t* error = nullptr) = 0;
    /// An existing file. `path` changes where the file was found under another spelling of its name.
    virtual Ref<FStream> openFile(FPath& path, uint32_t mode, int32_t* error = nullptr) = 0;
    /// Closes the file; the caller's reference goes. False when the system told of an error on the way, so
    /// that not all that was written may be there.
    virtual bool closeFile(Ref<FStream> stream) = 0;
    virtual bool deleteFile(const FPath& path) = 0;
    /// A path that is marked as a folder exists as a folder, any other one as anything.
    virtual bool exists(const FPath& path) = 0;
    /// Within its folder; `path` then has the new name, which is one part of a path. A file takes the place
    /// of one that has this name.
    virtual bool rename(FPath& path, const ConstString& newName) = 0;
    /// Into another folder under the same name, also across volumes; `path` then leads there. A file takes
    /// the place of one that has this name.
    virtual bool move(FPath& path, const FPath& newFolder) = 0;
    /// A file with its times and rights; a read-only target is replaced too. A copy that fails, that
    /// `progress` cancels or that would go onto itself leaves `to` as it was.
    virtual bool copy(const FPath& from, const FPath& to, StreamProgress* progress = nullptr) = 0;
    virtual bool createFolder(const FPath& path) = 0;
    virtual bool setCurrentFolder(const FPath& path) = 0;
    virtual bool getVolumeInfo(const FPath& path, FVolumeInfo& info) = 0;
    /// An empty one.
    virtual bool deleteFolder(const FPath& path) = 0;
    /// In local time; null for what isn't wanted. `created` is the oldest time known where the volume keeps
    /// none.
    virtual bool getFileTime(const FPath& path, platform::CalendarTime* created,
                             platform::CalendarTime* written, platform::CalendarTime* read) = 0;
    /// The length of an open file in bytes, -1 when it isn't known.
    virtual int64_t getFileSize(FStream& stream);
    /// In bytes; -1 when it can't be read.
    virtual int64_t getFileSizeOf(const FPath& path) = 0;
    virtual bool isReadOnly(const FPath& path) = 0;
    /// Cuts at 260 UTF-16 characters, never in the middle of a pair, and puts `replacement` in place of each
    /// character that some system refuses in a name. Whether anything changed.
    virtual bool makeLegalName(String& text, char16_t replacement = u'_');
    /// By its volume or by itself.
    virtual bool isWriteProtected(const FPath& path) = 0;
    /// Makes every missing folder of the path; the last part of the path is one of them with `isFolder`.
    virtual bool createParents(const FPath& path, bool isFolder) = 0;
    /// The entries of a folder as they are now; null when it can't be read. `mode` of `IteratorMode`.
    virtual Ref<FFileIterator> getIterator(const FPath& path, int32_t mode = 0) = 0;
    /// Hands all dependents the message "FileSystemChange", and for `folderRenamed` "PathChanged". Its
    /// attributes: "Path", a copy of `path`; "Kind", of `Change`; "Data", the object that is given, for what
    /// was renamed a copy of its earlier path. Without memory nobody is told. What is mounted of a file that
    /// went is unmounted first.
    virtual void notify(int32_t kind, const FPath& path, FInterface* data = nullptr);
    /// In local time. False where a place keeps no times; that is all there is by default.
    virtual bool setFileTime(const FPath& path, const platform::CalendarTime& written,
                             const platform::CalendarTime& read);
    /// False only when it is known that nothing stands there: a place that can't be asked may hold a file.
    virtual bool mayExist(const FPath& path);

    using CmObject::notify;

protected:
    /// Whether a path is marked as a folder, or a folder is known to stand there.
    bool namesFolder(const FPath& path);
};

} // namespace qorl
