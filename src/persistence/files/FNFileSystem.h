#pragma once

#include "persistence/files/FFileSystem.h"
#include "persistence/files/FNPath.h"

#include <string>
#include <vector>

namespace qorl {

struct FNFileSearch;

/// The native disk, and the door to everything else. A path into a file that can be opened as a folder, or
/// into an archive, goes to the file system that is mounted there (`FMountTable`), "vfs:" and other schemes
/// of services to `FVFileSystem`; what else is not on the disk can be opened for reading where somebody reads
/// its scheme (`UrlMetaHandler`).
///
/// Of the modes of `FFileStream::OpenFlag` Linux gives this: what an opener does not share is kept by
/// advisory locks, so it is kept from everything that opens files through this class and from nothing else.
/// `unbuffered` reading goes past the caches where the volume can do that and a transfer fits its sectors;
/// others go through them. What is no plain file, such as a pipe, is not opened.
///
/// Names of files are bytes here: see `FPath`. A path of more than 4095 bytes is refused by the system. Links
/// are followed on the way to a file; `copyTree`, `deleteTree`, `trash` and `move` take them for what they
/// are; those that stand in the `to` of `copyTree` are followed.
///
/// A file that can be opened as a folder is one to `getIterator`, `move`, and `exists` of a path that is
/// marked as a folder. Dependents hear of what happens on the disk, in mounted files and at services.
///
/// Threading: one object serves all paths; any thread may use it, notifications run on the caller's.
class FNFileSystem : public FFileSystem {
    QORL_CLASS(FNFileSystem, FFileSystem)

public:
    /// Made on first use; null once the library has released its singletons.
    static FNFileSystem* instance();

    Ref<FStream> createFile(const FPath& path, uint32_t mode, int32_t* error = nullptr) override;
    /// Writing past the caches is refused where the path leads elsewhere. A name that is not found is tried
    /// once more as programs wrote it before UTF-8, in code page 1252.
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
    int64_t getFileSizeOf(const FPath& path) override;
    bool isReadOnly(const FPath& path) override;
    bool isWriteProtected(const FPath& path) override;
    bool createParents(const FPath& path, bool isFolder) override;
    /// Sorted by the bytes of the names.
    Ref<FFileIterator> getIterator(const FPath& path, int32_t mode = 0) override;
    /// Dependents get a path on the disk, also for a URL that leads there.
    void notify(int32_t kind, const FPath& path, FInterface* data = nullptr) override;
    bool setFileTime(const FPath& path, const platform::CalendarTime& written,
                     const platform::CalendarTime& read) override;

    /// A new empty file in the temporary folder that nobody else may read, open for reading and writing; its
    /// name in `path`. The caller deletes it. Null, and no file, on failure.
    Ref<FStream> createTempFile(FNPath& path);
    /// The entries of a folder, "." and ".." left out, one after the other: false at the end and for a folder
    /// that can't be read. `mask` lets only files of some extensions pass, "*.wav;*.tar.gz", case aside; all
    /// of them when it is empty. Folders pass whatever it is. `mode` of `IteratorMode`.
    bool findFirst(const FPath& folder, const ConstString& mask, FNFileSearch& search, int32_t mode = 0);
    bool findNext(FNFileSearch& search);
    /// To the user's bin, a folder with all that is in it; what can't go there stays.
    bool trash(const FPath& path);
    /// A folder with all that is in it; links are removed, never followed.
    bool deleteTree(const FPath& path);
    /// A folder with all that is in it, into `to`, which is made and may not lie inside of `from`. Links stay
    /// links; those to files become files when `links` says so. A failure leaves what was copied until then.
    bool copyTree(const FPath& from, const FPath& to, platform::FileLinks links = platform::FileLinks::keep);
    /// The volumes that a user keeps files on: their top folders, and in the same order what the user calls
    /// them. Empty without memory.
    std::vector<FNPath> getDrives();
    std::vector<String> getRootNames();
    /// Free bytes for this user on the volume of a path, which needn't be there yet; -1 on failure.
    int64_t getFreeSpace(const FPath& path);
    /// "1.500 MB".
    static void formatSize(int64_t bytes, String& text);
    /// Goes from a shortcut to what it stands for: a ".lnk" file with a target that is found from here, a
    /// ".desktop" file of the type Link to a file, or a symbolic link. False, and `path` as it was, for
    /// anything else and when there is nothing at its end.
    bool resolveShortcut(FNPath& path);
    /// Looks for a file that comes with the system, by its name or a relative path: in the system folder of
    /// `FNPath`, then in the folders of shared data. False, and `path` as it was, when none has it, and for a
    /// path with "..".
    bool getSystemFile(FNPath& path);
    /// Nobody may write it, or its owner may again.
    bool setReadOnly(const FPath& path, bool on);

    /// The whole file, wherever it lies; false, and `bytes` as they were, when it can't be read or is longer
    /// than `limit` bytes.
    bool readWholeFile(const FPath& path, std::string& bytes, int64_t limit, int32_t* error = nullptr);

    /// The path as the system's calls take it; empty for one that leads to no place on the disk. Throws
    /// std::bad_alloc.
    static std::string nativeOf(const FPath& path);

private:
    static Ref<FFileSystem> awayAt(const FPath& path);
    static Ref<FFileSystem> mountAt(const FPath& path);
    bool moveTo(const std::string& from, const std::string& to);
};

} // namespace qorl
