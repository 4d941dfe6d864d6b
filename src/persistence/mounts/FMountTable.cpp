#include "persistence/mounts/FMountTable.h"

#include "foundation/Singleton.h"
#include "persistence/files/FNFileSystem.h"
#include "persistence/files/PathText.h"
#include "persistence/mounts/FVFileSystem.h"
#include "persistence/urls/UrlBytes.h"
#include "platform/Threads.h"

#include <algorithm>
#include <new>
#include <utility>

namespace qorl {

namespace {

constinit Singleton<FMountTable> mountTable;

/// How many parts of one path are looked at as files that could be mounted.
constexpr int32_t maxNesting = 16;
/// No component has more types; one that never comes to an end is cut here.
constexpr int32_t maxTypes = 1000;

constexpr uint32_t sharedRead = FFileStream::readAccess | FFileStream::shareRead;
constexpr uint32_t sharedReadWrite = sharedRead | FFileStream::writeAccess | FFileStream::shareWrite;

/// One text for each file, whatever leads to it: that of its URL, behind all links. Empty for what is too
/// long to lead anywhere.
std::string mountKey(const FUrl& url) {
    if (static_cast<size_t>(url.path().size()) > FMountTable::maxPathLength)
        return {};
    FNPath native;
    std::string key;
    if (url.getNativePath(native))
        key = FUrl(FNPath(std::string_view(platform::getCanonicalPath(native.toUtf8())))).normalForm();
    else if (!url.scheme().isEmpty())
        key = url.normalForm();
    while (key.ends_with('/') && !key.ends_with("//"))
        key.pop_back();
    return key;
}

FUrl urlOf(std::string_view key) {
    return FUrl(ConstString(key));
}

/// The native path of a file URL, which is what the disk's file system takes, and any other URL as it is.
template <typename Use>
auto withPath(std::string_view key, Use use) {
    FUrl url = urlOf(key);
    FNPath native;
    return url.getNativePath(native) ? use(static_cast<FPath&>(native)) : use(static_cast<FPath&>(url));
}

/// What stands on the disk, which is asked below its file system: that would ask the table in turn. Throws
/// std::bad_alloc.
platform::FileInfo infoOnDisk(std::string_view key) {
    platform::FileInfo info;
    FNPath native;
    // A mount is not given up because memory is short.
    if (!urlOf(key).getNativePath(native) && key.starts_with(FUrl::fileScheme))
        throw std::bad_alloc();
    platform::getFileInfo(native.toUtf8(), info);
    return info;
}

bool isOnDisk(const FFileSystem& holder) {
    return &holder == FNFileSystem::instance();
}

bool isFileIn(FFileSystem& holder, std::string_view key) {
    return isOnDisk(holder) ? infoOnDisk(key).kind == platform::FileKind::file
                            : holder.getFileSizeOf(urlOf(key)) >= 0;
}

Ref<IVirtualFileSystem> faceOf(FInterface* instance) {
    Ref<IVirtualFileSystem> face;
    if (instance && instance->queryInterface(IVirtualFileSystem::iid, face.out()) != Result::ok)
        face.reset();
    return face;
}

template <typename Visit>
void forEachType(IVirtualFileSystem& instance, Visit visit) {
    FFileType type;
    for (int32_t i = 0; i < maxTypes && instance.getFileType(i, type) == Result::ok; ++i)
        visit(type);
}

bool holdsTypeOf(IVirtualFileSystem& instance, const FUrl& url) {
    bool isFound = false;
    forEachType(instance, [&](const FFileType& type) { isFound = isFound || type.holds(url.getName()); });
    return isFound;
}

/// Whether a file is `outer`, or lies in it or below it.
bool isAtOrBelow(std::string_view key, std::string_view outer) {
    return key.starts_with(outer) && (key.size() == outer.size() || key[outer.size()] == '/');
}

// A component may read URLs while it is made to tell its types; it is not asked for them once more then.
constinit thread_local bool isAskingForTypes = false;
struct Asking {
    Asking() { isAskingForTypes = true; }
    Asking(const Asking&) = delete;
    ~Asking() { isAskingForTypes = false; }
};

/// Whether a name, in the form of a URL, ends in one of the extensions.
bool hasExtension(std::string_view segment, const std::vector<String>& extensions) {
    if (extensions.empty() || segment.find('.') == std::string_view::npos)
        return false;
    const std::string name = UrlBytes::decode(segment);
    return std::ranges::any_of(extensions, [&](const String& known) {
        return PathText::findExtension(ConstString(std::string_view(name)), known) != ConstString::notFound;
    });
}

} // namespace

/// A file that a thread is about to mount; others that want it wait here.
class FMountTable::Mounting : public FObject {
public:
    const uint32_t thread = platform::currentThreadId();
    platform::Event done{platform::Reset::manual};
    Ref<FRemovableFileSystem> result; ///< set before `done`
};

FMountTable* FMountTable::instance() {
    return mountTable.get();
}

void FMountTable::noteUse() {
    isUsed_ = archives_ || !components_.empty() || !mounts_.empty();
}

bool FMountTable::addComponent(Ref<CmObject> component, CreateInstance create) try {
    const FGuard guard(lock_);
    const auto next = std::ranges::find_if(
        components_, [&](const Component& each) { return each.component->compare(component.get()) > 0; });
    components_.insert(next, {std::move(component), create});
    areExtensionsKnown_ = false;
    ++generation_;
    noteUse();
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

void FMountTable::removeComponent(const CmObject* component) {
    // What goes, goes when the lock is open again.
    std::list<Component> gone;
    Mounts removed;
    const FGuard guard(lock_);
    for (auto next = components_.begin(); next != components_.end();) {
        const auto each = next++;
        if (each->component == component)
            gone.splice(gone.end(), components_, each);
    }
    for (auto next = mounts_.begin(); next != mounts_.end();) {
        const auto mount = next++;
        // An outer file stands in front of those in it.
        const bool standsOnOne = std::ranges::any_of(
            removed, [&](const auto& outer) { return isAtOrBelow(mount->first, outer.first); });
        if (mount->second.files->component() != component && !standsOnOne)
            continue;
        mount->second.files->remove();
        removed.insert(mounts_.extract(mount));
    }
    areExtensionsKnown_ = false;
    ++generation_;
    noteUse();
}

void FMountTable::removeAllComponents() {
    unmountAll();
    std::list<Component> gone;
    const FGuard guard(lock_);
    gone.swap(components_);
    areExtensionsKnown_ = false;
    ++generation_;
    noteUse();
}

void FMountTable::setArchives(Archives* archives) {
    const FGuard guard(lock_);
    archives_ = archives;
    noteUse();
}

std::vector<FMountTable::Component> FMountTable::components() {
    const FGuard guard(lock_);
    return {components_.begin(), components_.end()};
}

std::vector<String> FMountTable::knownExtensions() {
    uint32_t generation = 0;
    {
        const FGuard guard(lock_);
        if (areExtensionsKnown_)
            return extensions_;
        generation = generation_;
    }
    if (isAskingForTypes)
        return {};
    const Asking asking;
    std::vector<String> extensions;
    for (const Component& each : components()) {
        const Ref<FInterface> made = each.create(each.component.get());
        if (const Ref<IVirtualFileSystem> instance = faceOf(made.get()))
            forEachType(*instance, [&](const FFileType& type) {
                extensions.push_back(type.dosType());
                extensions.push_back(type.unixType());
            });
    }
    const FGuard guard(lock_);
    if (generation == generation_) {
        extensions_ = extensions;
        areExtensionsKnown_ = true;
    }
    return extensions;
}

bool FMountTable::has(const CmObject* component) const {
    return std::ranges::any_of(components_,
                               [=](const Component& each) { return each.component == component; });
}

Ref<FFileSystem> FMountTable::findArchive(const FUrl& url) {
    Archives* archives = nullptr;
    {
        const FGuard guard(lock_);
        archives = archives_;
    }
    return archives ? archives->findArchive(url) : nullptr;
}

FMountTable::FileId FMountTable::fileIn(FFileSystem& holder, std::string_view key) {
    if (!isOnDisk(holder))
        return {};
    const platform::FileInfo info = infoOnDisk(key);
    return {info.volume, info.serial};
}

/// The mount of a file, if it still is that file: other programs replace and delete without a word. As long
/// as it is mounted, it is open, and no other file gets its number.
Ref<FRemovableFileSystem> FMountTable::standing(FFileSystem& holder, std::string_view key) {
    Mount mount;
    {
        const FGuard guard(lock_);
        const auto found = mounts_.find(key);
        if (found == mounts_.end())
            return nullptr;
        mount = found->second;
    }
    if (fileIn(holder, key) == mount.file)
        return mount.files;
    takeOut(key, Unmount::always, mount.files.get());
    return nullptr;
}

/// The file system that has what lies behind `key` up to `end`, and whether that is a mounted file.
Ref<FFileSystem> FMountTable::findHolder(const FUrl& url, const std::string& key, size_t end, bool& isMount) {
    const bool isArchive = url.hasScheme(FUrl::archiveScheme);
    const bool isOnDisk = key.starts_with(FUrl::fileScheme);
    Ref<FFileSystem> holder;
    if (isArchive)
        holder = findArchive(url);
    else if (isOnDisk)
        holder = retain<FFileSystem>(FNFileSystem::instance());
    else
        holder = retain<FFileSystem>(FVFileSystem::instance());
    isMount = isArchive && holder;
    end = std::min(end, key.size());
    const std::vector<String> extensions = knownExtensions();
    int32_t left = maxNesting;
    const size_t start = key.find("://");
    for (size_t from = start == std::string::npos ? 0 : start + 3; holder && from < end;) {
        const size_t to = std::min(key.find('/', from), end);
        const std::string_view prefix = std::string_view(key).substr(0, to);
        const std::string_view segment = prefix.substr(from);
        from = to + 1;
        Ref<FRemovableFileSystem> mounted = standing(*holder, prefix);
        if (!mounted && hasExtension(segment, extensions)) {
            if (isFileIn(*holder, prefix))
                mounted = mountIn(*holder, std::string(prefix));
            if (--left == 0)
                return holder;
        }
        if (!mounted)
            continue;
        holder = mounted;
        isMount = true;
    }
    return holder;
}

Ref<FFileSystem> FMountTable::findMount(const FPath& path) try {
    if (!isUsed_)
        return nullptr;
    const FUrl url(path);
    const std::string key = mountKey(url);
    bool isMount = false;
    const Ref<FFileSystem> holder = findHolder(url, key, key.size(), isMount);
    return isMount ? holder : nullptr;
} catch (const std::bad_alloc&) {
    return nullptr;
}

Ref<FFileSystem> FMountTable::findInside(const FPath& path) try {
    if (!isUsed_)
        return nullptr;
    const FUrl url(path);
    const std::string key = mountKey(url);
    bool isMount = false;
    const Ref<FFileSystem> holder = key.empty() ? nullptr : findHolder(url, key, key.rfind('/'), isMount);
    return isMount ? holder : nullptr;
} catch (const std::bad_alloc&) {
    return nullptr;
}

Ref<FFileSystem> FMountTable::mount(const FUrl& url) try {
    const std::string key = mountKey(url);
    if (key.empty())
        return nullptr;
    bool isMount = false;
    const Ref<FFileSystem> holder = findHolder(url, key, key.rfind('/'), isMount);
    if (!holder)
        return nullptr;
    const Ref<FRemovableFileSystem> mounted = standing(*holder, key);
    return mounted ? mounted : mountIn(*holder, key);
} catch (const std::bad_alloc&) {
    return nullptr;
}

/// Components that ask for the file that they are just mounting, or for files whose components ask for
/// theirs, would wait for ever.
bool FMountTable::wouldWaitForItself(const Mounting& mounting) const {
    const uint32_t self = platform::currentThreadId();
    for (uint32_t thread = mounting.thread; thread != self;) {
        const auto next = waiting_.find(thread);
        if (next == waiting_.end())
            return false;
        thread = next->second->thread;
    }
    return true;
}

Ref<FRemovableFileSystem> FMountTable::mountIn(FFileSystem& holder, const std::string& key) {
    const Ref<Mounting> own = make<Mounting>();
    Ref<Mounting> other;
    {
        const FGuard guard(lock_);
        if (const auto found = mounts_.find(key); found != mounts_.end())
            return found->second.files;
        const auto [place, isFirst] = underWay_.try_emplace(key, own);
        if (!isFirst)
            other = place->second;
    }
    if (other) {
        {
            const FGuard guard(lock_);
            if (wouldWaitForItself(*other))
                return nullptr;
            waiting_[platform::currentThreadId()] = other.get();
        }
        other->done.wait();
        const FGuard guard(lock_);
        waiting_.erase(platform::currentThreadId());
        return other->result;
    }
    Ref<FRemovableFileSystem> made;
    FileId file;
    try {
        // First, so that one that is replaced meanwhile is mounted anew.
        file = fileIn(holder, key);
        made = makeMount(holder, urlOf(key));
    } catch (const std::bad_alloc&) {
        made = nullptr;
    }
    {
        const FGuard guard(lock_);
        try {
            // The component may have gone meanwhile.
            if (made && has(made->component()) && mounts_.try_emplace(key, Mount{made, file}).second)
                own->result = made;
        } catch (const std::bad_alloc&) {
            own->result = nullptr;
        }
        underWay_.erase(underWay_.find(key));
        noteUse();
    }
    own->done.set();
    return own->result;
}

Ref<FRemovableFileSystem> FMountTable::makeMount(FFileSystem& holder, const FUrl& url) {
    using Access = FRemovableFileSystem::Access;
    const auto open = [&](uint32_t mode) {
        return withPath(url.toUtf8(), [&](FPath& path) { return holder.openFile(path, mode); });
    };
    for (const Component& each : components()) {
        const Ref<FInterface> made = each.create(each.component.get());
        Ref<IVirtualFileSystem> instance = faceOf(made.get());
        if (!instance || !holdsTypeOf(*instance, url))
            continue;
        Ref<FStream> stream = instance->hasCapability("CanWrite") ? open(sharedReadWrite) : nullptr;
        const Access access = stream ? Access::readWrite : Access::read;
        if (!stream)
            stream = open(sharedRead);
        if (!stream)
            continue;
        if (!stream->url())
            stream->setUrl(make<FUrl>(url).get());
        if (auto files = Ref<FFileSystem>::adopt(instance->createFileSystem(stream.get())))
            return make<FRemovableFileSystem>(std::move(files), each.component, std::move(instance),
                                              std::move(stream), access);
        holder.closeFile(std::move(stream));
    }
    return nullptr;
}

/// What is mounted of a file or in a folder, with all that stand on it; nothing unless the mount of the file
/// is `only`.
FMountTable::Mounts FMountTable::takeOut(std::string_view key, Unmount how,
                                         const FRemovableFileSystem* only) {
    Mounts removed;
    const FGuard guard(lock_);
    std::vector<Mounts::iterator> inside;
    for (auto next = mounts_.lower_bound(key); next != mounts_.end() && next->first.starts_with(key); ++next)
        if (isAtOrBelow(next->first, key))
            inside.push_back(next);
    const bool isOther = only && (inside.empty() || inside.front()->second.files != only);
    const bool isUsed = std::ranges::any_of(
        inside, [](const Mounts::iterator& mount) { return mount->second.files->hasOpenFiles(); });
    if (isOther || (how == Unmount::ifUnused && isUsed))
        return removed;
    for (const Mounts::iterator& mount : inside) {
        mount->second.files->remove();
        removed.insert(mounts_.extract(mount));
    }
    noteUse();
    return removed;
}

bool FMountTable::unmount(const FUrl& url, Unmount how) try {
    {
        const FGuard guard(lock_);
        if (mounts_.empty())
            return false;
    }
    const std::string key = mountKey(url);
    return !key.empty() && !takeOut(key, how).empty();
} catch (const std::bad_alloc&) {
    return false;
}

void FMountTable::forget(const FPath& path) {
    if (auto* table = mountTable.peek(); table && table->isUsed_)
        table->unmount(FUrl(path));
}

bool FMountTable::release(const FPath& path) {
    auto* table = mountTable.peek();
    return table && table->isUsed_ && table->unmount(FUrl(path), Unmount::ifUnused);
}

void FMountTable::unmountAll() {
    Mounts removed;
    const FGuard guard(lock_);
    removed.swap(mounts_);
    for (const auto& mount : removed)
        mount.second.files->remove();
    noteUse();
}

bool FMountTable::pathInside(const FUrl& mounted, const FPath& path, std::string& inside) try {
    const std::string file = mountKey(mounted);
    const std::string key = mountKey(FUrl(path));
    if (file.empty() || !isAtOrBelow(key, file))
        return false;
    std::string names;
    for (size_t from = file.size() + 1; from < key.size();) {
        const size_t to = std::min(key.find('/', from), key.size());
        const std::string name = UrlBytes::decode(std::string_view(key).substr(from, to - from));
        // An encoded separator would lead elsewhere once it is decoded.
        if (name == "." || name == ".." || name.find('/') != std::string::npos ||
            name.find('\0') != std::string::npos)
            return false;
        if (!name.empty())
            names.append(names.empty() ? "" : "/").append(name);
        from = to + 1;
    }
    inside = std::move(names);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace qorl
