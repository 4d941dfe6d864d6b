#pragma once

#include "foundation/CmObject.h"
#include "foundation/text/String.h"
#include "persistence/streams/FFileStream.h"

#include <vector>

namespace qorl {

class FFileIterator;
class FPath;

/// When a file was made, written and read: milliseconds since 1970 UTC, 0 where that is not kept.
struct FileTimes {
    int64_t created = 0;
    int64_t written = 0;
    int64_t read = 0;
};

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
/// `error` when that is given.
class FFileSystem : public CmObject {
    QORL_CLASS(FFileSystem, CmObject)
    QORL_RECORD(FFileSystem)

public:
    /// What `notify` tells.
    enum Change : int32_t { fileWritten = 1, fileDeleted = 2, folderRenamed = 3, folderCreated = 4 };

    /// Creates or replaces the file. `mode` as `FFileStream::OpenFlag`.
    virtual Ref<FFileStream> createFile(const FPath& path, uint32_t mode, int32_t* error = nullptr) = 0;
    virtual Ref<FFileStream> openFile(const FPath& path, uint32_t mode, int32_t* error = nullptr) = 0;
    virtual bool closeFile(Ref<FFileStream> stream) = 0;
    virtual bool deleteFile(const FPath& path) = 0;
    /// A path that is marked as a folder exists as a folder, any other one as anything.
    virtual bool exists(const FPath& path) = 0;
    /// Within its folder.
    virtual bool rename(FPath& path, const ConstString& newName) = 0;
    virtual bool move(FPath& path, const FPath& newFolder) = 0;
    /// A file with its times and rights; a read-only target is replaced too. A copy that fails, that
    /// `progress` cancels or that would go onto itself leaves `to` as it was.
    virtual bool copy(const FPath& from, const FPath& to, StreamProgress* progress = nullptr) = 0;
    virtual bool createFolder(const FPath& path) = 0;
    virtual bool setCurrentFolder(const FPath& path) = 0;
    virtual bool getVolumeInfo(const FPath& path, FVolumeInfo& info) = 0;
    virtual bool deleteFolder(const FPath& path) = 0;
    virtual bool getFileTime(const FPath& path, FileTimes& times) = 0;
    virtual int64_t getFileSize(FStream& stream) = 0;
    /// In bytes; -1 when it can't be read.
    virtual int64_t getFileSizeOf(const FPath& path) = 0;
    virtual bool isReadOnly(const FPath& path) = 0;
    /// Cuts at 260 characters and puts `replacement` in place of each character that some system refuses in a
    /// name. Whether anything changed.
    virtual bool makeLegalName(String& text, char16_t replacement = u'_');
    virtual bool isWriteProtected(const FPath& path) = 0;
    /// Makes every missing folder of the path.
    virtual bool createParents(const FPath& path, bool isFolder) = 0;
    /// The entries of a folder; null when it can't be read.
    virtual Ref<FFileIterator> getIterator(const FPath& path, int32_t mode = 0) = 0;
    /// Tells dependents of a change by the message "FileSystemChange", of a renamed folder by "PathChanged".
    virtual void notify(int32_t kind, const FPath& path, FInterface* data = nullptr);
};

/// Walks a folder.
class FFileIterator : public CmObject {
    QORL_CLASS(FFileIterator, CmObject)

public:
    /// The next entry, or null at the end; good until the next call.
    virtual FPath* next() = 0;
    virtual FPath* getCurrent() = 0;
};

} // namespace qorl
