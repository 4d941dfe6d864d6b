#pragma once

#include "persistence/files/FFileSystem.h"
#include "persistence/files/FNPath.h"

#include <string>

namespace qorl {

/// The native disk. One object serves all paths; any thread may use it, notifications run on the caller's.
class FNFileSystem : public FFileSystem {
    QORL_CLASS(FNFileSystem, FFileSystem)

public:
    /// Made on first use; null once the library has released its singletons.
    static FNFileSystem* instance();

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
    bool isReadOnly(const FPath& path) override;
    bool isWriteProtected(const FPath& path) override;
    bool createParents(const FPath& path, bool isFolder) override;
    Ref<FFileIterator> getIterator(const FPath& path, int32_t mode = 0) override;

    /// A new empty file in the temporary folder, open for reading and writing; its name in `path`.
    Ref<FStream> createTempFile(FNPath& path);
    /// A folder with all that is in it; links are removed, never followed.
    bool deleteTree(const FPath& path);
    /// A folder with all that is in it, into `to`, which is made and may not lie inside of `from`. Links stay
    /// links; those to files become files when `links` says so.
    bool copyTree(const FPath& from, const FPath& to, platform::FileLinks links = platform::FileLinks::keep);
    /// Free bytes for this user, -1 on failure.
    int64_t getFreeSpace(const FPath& path);
    /// "1.500 MB".
    static void formatSize(int64_t bytes, String& text);

    /// The whole file; false when it can't be read or is longer than `limit` bytes.
    bool readWholeFile(const FPath& path, std::string& bytes, int64_t limit, int32_t* error = nullptr);

private:
    bool moveTo(FPath& path, const FNPath& target);
};

} // namespace qorl
