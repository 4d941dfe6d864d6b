#pragma once

#include "persistence/files/FFileSystem.h"
#include "persistence/mounts/VfsResult.h"
#include "persistence/urls/FUrl.h"

#include <vector>

namespace qorl {

/// A place for files that is no disk: derive from it, register it with `FVFileSystem::registerService`, and
/// every part of the program that opens URLs reaches it.
///
/// URLs come whole, with scheme and host; `FUrl::plainPath` gives the path without percent signs, in which a
/// service must expect anything, ".." too. An operation gives a default result (`VfsResult()`) on success,
/// and has then filled what it was given; else one of `VfsError`. What a service does not override is
/// `VfsError::notImplemented`. A service that can't be written answers `VfsError::readOnly`, one that holds
/// archives and does not know the one that a URL names `VfsError::noArchive`, and one that passes the work on
/// to a file system of its own, which failed, `VfsError::internal`.
///
/// Threading: called on any thread, by several at once. No lock of ours is held meanwhile. Operations may
/// throw std::bad_alloc and nothing else.
class VirtualFileService : public CmObject {
    QORL_CLASS(VirtualFileService, CmObject)

public:
    /// What stands at a URL.
    struct Info {
        enum class Kind : uint8_t { none, file, folder };

        Kind kind = Kind::none;
        bool isReadOnly = false;
        int64_t size = 0; ///< in bytes
        platform::CalendarTime created{};
        platform::CalendarTime written{};
        platform::CalendarTime read{};
    };
    struct Entry {
        String name; ///< plain, one segment
        Info::Kind kind = Info::Kind::file;
    };

    /// An existing file; `mode` as `FFileStream::OpenFlag`.
    virtual VfsResult openFile(const FUrl& url, uint32_t mode, Ref<FStream>& stream);
    /// A new file, or an existing one without its contents. Fails where the folder is missing.
    virtual VfsResult createFile(const FUrl& url, uint32_t mode, Ref<FStream>& stream);
    virtual VfsResult deleteFile(const FUrl& url);
    /// What isn't there is no failure, but `Info::Kind::none`.
    virtual VfsResult getInfo(const FUrl& url, Info& info);
    /// Gives a file or a folder another place in this service. A file takes the place of one that is there.
    virtual VfsResult move(const FUrl& from, const FUrl& to);
    virtual VfsResult createFolder(const FUrl& url);
    /// An empty one.
    virtual VfsResult deleteFolder(const FUrl& url);
    /// In an order that stays the same.
    virtual VfsResult listFolder(const FUrl& url, std::vector<Entry>& entries);
    virtual VfsResult setCurrentFolder(const FUrl& url);
    virtual VfsResult getVolumeInfo(const FUrl& url, FVolumeInfo& info);
    /// What `Info` tells of a file, in local time.
    virtual VfsResult setTimes(const FUrl& url, const platform::CalendarTime& written,
                               const platform::CalendarTime& read);
};

} // namespace qorl
