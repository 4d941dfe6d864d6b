#pragma once

#include "foundation/threads/FLock.h"
#include "persistence/mounts/FRemovableFileSystem.h"
#include "persistence/urls/FUrl.h"

#include <atomic>
#include <list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qorl {

/// Finds the file system for paths that lead into a file: which files are open as folders, and how to open
/// one on demand.
///
/// Components of the category "VirtualFileSystem" say which types of files can be mounted; the component
/// registry enters them here. Archives register themselves here for "archive:" URLs. A file is mounted once,
/// whoever asks and by whatever spelling of its path, and stays so until `unmount`, or until another file
/// stands in its place.
///
/// Threading: any. Two threads that ask for the same file get one mount: the second waits. Components and
/// file systems are called without the lock.
class FMountTable : public CmObject {
    QORL_CLASS(FMountTable, CmObject)

public:
    static constexpr const char* componentCategory = "VirtualFileSystem";
    /// Longer paths, in bytes, lead nowhere.
    static constexpr size_t maxPathLength = 32767;

    /// Makes an instance of a component; null when there is none. Any thread; may throw std::bad_alloc.
    using CreateInstance = Ref<FInterface> (*)(CmObject* component);
    /// Whoever keeps the mounted archives.
    class Archives {
    public:
        /// The archive that an "archive:" URL leads into, or null. Any thread; may throw std::bad_alloc.
        virtual Ref<FFileSystem> findArchive(const FUrl& url) = 0;

    protected:
        ~Archives() = default;
    };
    enum class Unmount {
        always,  ///< files that are open in it stay usable, the file itself stays open until they are closed
        ifUnused ///< not while a file is open in it
    };

    /// Made on first use; null once the library has released its singletons, and without memory.
    static FMountTable* instance();

    FMountTable() = default;
    FMountTable(const FMountTable&) = delete;

    /// The components are asked in their own order (`compare`), equal ones in that of their addition. False
    /// without memory.
    bool addComponent(Ref<CmObject> component, CreateInstance create);
    /// Takes its mounts away as well, with all that are mounted in them.
    void removeComponent(const CmObject* component);
    void removeAllComponents();
    /// Not owned; null takes them away.
    void setArchives(Archives* archives);

    /// The file system of the file that the path names or leads into, which is mounted if need be; null for a
    /// path that leads into no file that can be mounted. An inner file of a mounted file can be mounted, too.
    Ref<FFileSystem> findMount(const FPath& path);
    /// The same for what lies in the file only: what file systems ask, since the file itself is theirs.
    Ref<FFileSystem> findInside(const FPath& path);
    /// The file at `url` as a file system: one that stands, or the first that a component makes of it. It is
    /// opened for reading and writing, shared, where the component can write and the file be written, else
    /// for reading. Null when no component has its type, when it can't be opened, and when none of them can
    /// do anything with its contents.
    Ref<FFileSystem> mount(const FUrl& url);
    /// The file at `url`, or all files in the folder at `url`, with all that are mounted in them. False when
    /// none was mounted.
    bool unmount(const FUrl& url, Unmount how = Unmount::always);
    /// A file or a folder has gone, or something else has come in its place: what is mounted of it goes.
    static void forget(const FPath& path);
    /// Runs `replace`, which puts another file in the place of the one at `path`. A mount, which has that
    /// open, goes for it unless a file is open in the mount.
    template <typename Replace>
    static platform::FileError replacing(const FPath& path, Replace replace) {
        const platform::FileError error = replace();
        return error.isInUse() && release(path) ? replace() : error;
    }
    void unmountAll();

    /// The part of `path` that lies in the file `mounted`: its names, plain, in UTF-8, joined by `/`. Empty
    /// for the file itself. False for a path that leads elsewhere, whatever "..", links and encodings it has.
    static bool pathInside(const FUrl& mounted, const FPath& path, std::string& inside);

private:
    class Mounting;
    struct Component {
        Ref<CmObject> component;
        CreateInstance create;
    };
    /// Which file stands at a key, whatever is written into it; all 0 for one that is not on the disk.
    struct FileId {
        uint64_t volume = 0;
        uint64_t serial = 0;
        bool operator==(const FileId&) const = default;
    };
    struct Mount {
        Ref<FRemovableFileSystem> files;
        FileId file;
    };
    using Mounts = std::map<std::string, Mount, std::less<>>;

    static bool release(const FPath& path);
    Ref<FFileSystem> findHolder(const FUrl& url, const std::string& key, size_t end, bool& isMount);
    static FileId fileIn(FFileSystem& holder, std::string_view key);
    Ref<FRemovableFileSystem> standing(FFileSystem& holder, std::string_view key);
    Ref<FRemovableFileSystem> mountIn(FFileSystem& holder, const std::string& key);
    Ref<FRemovableFileSystem> makeMount(FFileSystem& holder, const FUrl& url);
    Ref<FFileSystem> findArchive(const FUrl& url);
    std::vector<String> knownExtensions();
    std::vector<Component> components();
    bool has(const CmObject* component) const;
    bool wouldWaitForItself(const Mounting& mounting) const;
    Mounts takeOut(std::string_view key, Unmount how, const FRemovableFileSystem* only = nullptr);
    void noteUse();

    FLock lock_{"FMountTable"};
    std::atomic<bool> isUsed_{false}; ///< false as long as no path can lead anywhere
    Mounts mounts_;
    std::map<std::string, Ref<Mounting>> underWay_;
    std::map<uint32_t, Mounting*> waiting_; ///< what each waiting thread waits for
    std::list<Component> components_;
    std::vector<String> extensions_;
    bool areExtensionsKnown_ = false;
    uint32_t generation_ = 0; ///< counts changes of `components_`
    Archives* archives_ = nullptr;
};

} // namespace qorl
