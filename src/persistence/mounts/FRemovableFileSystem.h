#pragma once

#include "foundation/threads/FLock.h"
#include "persistence/files/FFileSystem.h"
#include "persistence/mounts/IVirtualFileSystem.h"

#include <atomic>
#include <set>

namespace qorl {

/// The file system of a mounted file: passes each operation on to the one that a component made, as far as
/// that can read, write and iterate, and can be taken away while it is in use.
///
/// After `remove` each operation fails. Streams that were opened before stay as they are: each holds the file
/// system, the component and the file's own stream. Threading: any, as far as the component's file system
/// allows.
class FRemovableFileSystem : public FFileSystem {
    QORL_CLASS(FRemovableFileSystem, FFileSystem)

public:
    enum class Access { read, readWrite };

    /// Keeps a reference on each. With `Access::read`, the file could not be opened for writing.
    FRemovableFileSystem(Ref<FFileSystem> files, Ref<CmObject> component, Ref<IVirtualFileSystem> instance,
                         Ref<FStream> stream, Access access);
    FRemovableFileSystem(const FRemovableFileSystem&) = delete;

    bool canRead() const { return (capabilities_ & reading) != 0; }
    bool canWrite() const { return (capabilities_ & writing) != 0; }
    bool canIterate() const { return (capabilities_ & iterating) != 0; }
    CmObject* component() const { return component_.get(); }

    void remove() { isRemoved_ = true; }
    bool isRemoved() const { return isRemoved_; }
    bool hasOpenFiles();

    Ref<FStream> createFile(const FPath& path, uint32_t mode, int32_t* error = nullptr) override;
    Ref<FStream> openFile(FPath& path, uint32_t mode, int32_t* error = nullptr) override;
    bool closeFile(Ref<FStream> stream) override;
    bool deleteFile(const FPath& path) override;
    bool exists(const FPath& path) override;
    bool rename(FPath& path, const ConstString& newName) override;
    bool move(FPath& path, const FPath& newFolder) override;
    bool copy(const FPath& from, const FPath& to, StreamProgress* progress = nullptr) override;
    bool createFolder(const FPath& path) override;
    bool setCurrentFolder(const FPath& path) override;
    bool getVolumeInfo(const FPath& path, FVolumeInfo& info) override;
    bool deleteFolder(const FPath& path) override;
    bool getFileTime(const FPath& path, platform::CalendarTime* created, platform::CalendarTime* written,
                     platform::CalendarTime* read) override;
    int64_t getFileSize(FStream& stream) override;
    int64_t getFileSizeOf(const FPath& path) override;
    /// True as well for a file system that can't be written.
    bool isReadOnly(const FPath& path) override;
    bool makeLegalName(String& text, char16_t replacement = u'_') override;
    bool isWriteProtected(const FPath& path) override;
    bool createParents(const FPath& path, bool isFolder) override;
    Ref<FFileIterator> getIterator(const FPath& path, int32_t mode = 0) override;
    bool setFileTime(const FPath& path, const platform::CalendarTime& written,
                     const platform::CalendarTime& read) override;
    bool mayExist(const FPath& path) override;
    /// Also those who depend on `FNFileSystem::instance()`.
    void notify(int32_t kind, const FPath& path, FInterface* data = nullptr) override;

private:
    friend class MountedStream;
    enum Capability : uint32_t { reading = 1, writing = 2, iterating = 4 };

    bool mayDo(uint32_t capabilities) const;
    bool mayOpen(uint32_t mode, int32_t* error) const;
    Ref<FStream> wrap(Ref<FStream> stream);
    void forget(const FStream* stream);

    // In this order: the file system goes first, what it stands on after it.
    Ref<FStream> stream_;
    Ref<CmObject> component_;
    Ref<IVirtualFileSystem> instance_;
    Ref<FFileSystem> files_;
    uint32_t capabilities_ = 0;
    std::atomic<bool> isRemoved_{false};
    FLock lock_{"FRemovableFileSystem"};
    std::set<const FStream*> openFiles_;
};

} // namespace qorl
