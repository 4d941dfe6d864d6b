#pragma once

#include "foundation/threads/FLock.h"
#include "persistence/mounts/VirtualFileService.h"

#include <string>
#include <vector>

namespace qorl {

/// The file system of "vfs:" URLs, and of all others that services are registered for: each operation goes to
/// the service whose URI the path begins with. One object serves all; any thread may use it.
///
/// `error`, where an operation has it, gets the system's number that comes nearest to the result, as of all
/// file systems; `lastResult` gives the result itself (`VfsError`) with its text after any operation.
class FVFileSystem : public FFileSystem {
    QORL_CLASS(FVFileSystem, FFileSystem)

public:
    /// Made on first use; null once the library has released its singletons, and without memory.
    static FVFileSystem* instance();

    FVFileSystem() = default;
    FVFileSystem(const FVFileSystem&) = delete;

    /// Lets the service have all URLs with this scheme ("vfs:"), or, with a host ("vfs://samples"), those
    /// with both; the latter goes before the former. In place of an earlier one. False for a text without a
    /// scheme, for the schemes of the disk and the network, and without memory.
    bool registerService(const ConstString& uri, Ref<VirtualFileService> service);
    /// Operations that are under way end with the service, and its open streams stay open.
    bool unregisterService(const ConstString& uri);

    /// Whether operations on the URL are its business: those of "vfs:", and of what services stand for.
    bool isInCharge(const FUrl& url);

    /// Of the last operation that this thread did here.
    static VfsResult lastResult();

    Ref<FStream> createFile(const FPath& path, uint32_t mode, int32_t* error = nullptr) override;
    Ref<FStream> openFile(FPath& path, uint32_t mode, int32_t* error = nullptr) override;
    bool closeFile(Ref<FStream> stream) override;
    bool deleteFile(const FPath& path) override;
    bool exists(const FPath& path) override;
    bool rename(FPath& path, const ConstString& newName) override;
    /// Within one service.
    bool move(FPath& path, const FPath& newFolder) override;
    /// In blocks; source and target may be of different services. A copy that fails or that `progress`
    /// cancels leaves `to` as it was.
    bool copy(const FPath& from, const FPath& to, StreamProgress* progress = nullptr) override;
    bool createFolder(const FPath& path) override;
    bool setCurrentFolder(const FPath& path) override;
    bool getVolumeInfo(const FPath& path, FVolumeInfo& info) override;
    bool deleteFolder(const FPath& path) override;
    bool getFileTime(const FPath& path, platform::CalendarTime* created, platform::CalendarTime* written,
                     platform::CalendarTime* read) override;
    int64_t getFileSizeOf(const FPath& path) override;
    bool isReadOnly(const FPath& path) override;
    bool isWriteProtected(const FPath& path) override;
    bool createParents(const FPath& path, bool isFolder) override;
    Ref<FFileIterator> getIterator(const FPath& path, int32_t mode = 0) override;
    bool setFileTime(const FPath& path, const platform::CalendarTime& written,
                     const platform::CalendarTime& read) override;
    bool mayExist(const FPath& path) override;
    /// Also those who depend on `FNFileSystem::instance()`.
    void notify(int32_t kind, const FPath& path, FInterface* data = nullptr) override;

private:
    struct Registered {
        std::string uri; ///< as `serviceKey` makes it
        Ref<VirtualFileService> service;
    };

    Ref<VirtualFileService> serviceFor(const FUrl& url);
    template <typename Call>
    bool ask(const FPath& path, Call call);
    bool infoOf(const FPath& path, VirtualFileService::Info& info);
    bool moveTo(FPath& path, const FUrl& from, const FUrl& to);

    FLock lock_{"FVFileSystem"};
    std::vector<Registered> services_;
};

} // namespace qorl
