#include "persistence/mounts/FVFileSystem.h"

#include "foundation/Cast.h"
#include "foundation/Singleton.h"
#include "persistence/files/FNFileSystem.h"
#include "persistence/files/FileCopying.h"
#include "persistence/files/FileErrors.h"
#include "persistence/files/PathText.h"
#include "persistence/mounts/FMountTable.h"
#include "persistence/mounts/FVFileIterator.h"
#include "persistence/mounts/FVfsHandler.h"
#include "persistence/urls/UrlBytes.h"
#include "persistence/urls/UrlMetaHandler.h"

#include <algorithm>
#include <new>
#include <utility>

namespace qorl {

namespace {

using Kind = VirtualFileService::Info::Kind;

constinit Singleton<FVFileSystem> virtualFiles;

/// No path of the disk can have more; a longer one is no place that anybody meant.
constexpr size_t maxMissingFolders = 2048;

// A plain number, so that it needs no destructor at a thread's end.
constinit thread_local int32_t lastCode = 0;

/// Remembers how an operation ended. Numbers of others than virtual file systems mean nothing here.
bool finish(const VfsResult& result) {
    const bool isKnown = !result || result.category() == vfsCategory();
    lastCode = isKnown ? result.value() : static_cast<int32_t>(VfsError::unknown);
    return lastCode == 0;
}

/// Tells how the last operation ended, as all file systems do.
bool finish(int32_t* error) {
    tellError(error, std::errc(FVFileSystem::lastResult().default_error_condition().value()));
    return lastCode == 0;
}

/// Has `open` give a stream that knows where it comes from. A success without a stream is none.
template <typename Open>
VfsResult openAt(const FUrl& url, Ref<FStream>& stream, Open open) {
    // First, since a file that was created can't be taken back.
    const Ref<FUrl> origin = make<FUrl>(url);
    const VfsResult result = open();
    if (result)
        return result;
    if (!stream)
        return VfsError::unknown;
    if (!stream->url())
        stream->setUrl(origin.get());
    return result;
}

std::string serviceKey(const FUrl& uri, std::string_view host) {
    return UrlBytes::lowerCase(uri.scheme().toUtf8()) + "://" + UrlBytes::lowerCase(host);
}

/// What may stand in `registerService`: "vfs:", "vfs://" or "vfs://host".
FUrl uriOf(const ConstString& text) {
    const std::string uri = text.toUtf8();
    const bool hasRest = uri.find("://") != std::string::npos;
    FUrl url;
    url.setFullPath(ConstString(std::string_view(uri + (hasRest || !uri.ends_with(':') ? "" : "//"))));
    return url;
}

} // namespace

FVFileSystem* FVFileSystem::instance() {
    return virtualFiles.get();
}

VfsResult FVFileSystem::lastResult() {
    return {lastCode, vfsCategory()};
}

bool FVFileSystem::registerService(const ConstString& uri, Ref<VirtualFileService> service) try {
    const FUrl url = uriOf(uri);
    auto* urls = UrlMetaHandler::instance();
    if (!service || !urls || url.scheme().isEmpty() || url.hasScheme(FUrl::fileScheme) ||
        url.hasScheme(FUrl::networkScheme))
        return false;
    std::string key = serviceKey(url, url.host().toUtf8());
    Ref<VirtualFileService> earlier; // goes when the lock is open again
    // Handlers come and go under the lock, so that none is taken from a service that comes.
    const FGuard guard(lock_);
    // A service that is not held may go, so it comes last.
    if (!urls->registerHandler(url.scheme().toUtf8(), &FVfsHandler::create))
        return false;
    const auto found = std::ranges::find(services_, key, &Registered::uri);
    if (found != services_.end())
        earlier = std::exchange(found->service, std::move(service));
    else
        services_.push_back({std::move(key), std::move(service)});
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FVFileSystem::unregisterService(const ConstString& uri) try {
    const FUrl url = uriOf(uri);
    const std::string key = serviceKey(url, url.host().toUtf8());
    const std::string scheme = serviceKey(url, {});
    const std::string handler = url.scheme().toUtf8();
    auto* urls = UrlMetaHandler::instance();
    Ref<VirtualFileService> earlier; // as above
    const FGuard guard(lock_);
    const auto found = std::ranges::find(services_, key, &Registered::uri);
    if (found == services_.end())
        return false;
    earlier = std::move(found->service);
    services_.erase(found);
    const bool isLast = std::ranges::none_of(
        services_, [&](const Registered& other) { return other.uri.starts_with(scheme); });
    if (isLast && urls && !url.hasScheme(FUrl::virtualScheme))
        urls->unregisterHandler(handler);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

Ref<VirtualFileService> FVFileSystem::serviceFor(const FUrl& url) {
    if (url.scheme().isEmpty())
        return nullptr;
    const std::string withHost = serviceKey(url, url.host().toUtf8());
    const std::string schemeOnly = serviceKey(url, {});
    const FGuard guard(lock_);
    for (const std::string& key : {withHost, schemeOnly}) {
        const auto found = std::ranges::find(services_, key, &Registered::uri);
        if (found != services_.end())
            return found->service;
    }
    return nullptr;
}

bool FVFileSystem::isInCharge(const FUrl& url) {
    return url.hasScheme(FUrl::virtualScheme) || serviceFor(url);
}

template <typename Call>
bool FVFileSystem::ask(const FPath& path, Call call) try {
    const FUrl url(path);
    const Ref<VirtualFileService> service = serviceFor(url);
    return finish(service ? call(*service, url) : VfsResult(VfsError::noFileSystem));
} catch (const std::bad_alloc&) {
    return finish(VfsResult(VfsError::unknown));
}

Ref<FStream> FVFileSystem::createFile(const FPath& path, uint32_t mode, int32_t* error) {
    constexpr uint32_t makesPath = FFileStream::writeAccess | FFileStream::createPath;
    Ref<FStream> stream;
    const auto create = [&](VirtualFileService& service, const FUrl& url) {
        const VfsResult result = openAt(
            url, stream, [&] { return service.createFile(url, mode | FFileStream::writeAccess, stream); });
        if (!result)
            FMountTable::forget(url);
        return result;
    };
    if (!ask(path, create) && (mode & makesPath) == makesPath) {
        const VfsResult first = lastResult();
        // Which folder could not be made says less than why the file could not.
        if (!createParents(path, false) || !ask(path, create))
            finish(first);
    }
    return finish(error) ? stream : nullptr;
}

Ref<FStream> FVFileSystem::openFile(FPath& path, uint32_t mode, int32_t* error) {
    Ref<FStream> stream;
    ask(path, [&](VirtualFileService& service, const FUrl& url) {
        return openAt(url, stream, [&] { return service.openFile(url, mode, stream); });
    });
    if (finish(error))
        return stream;
    // Services fail by what they are made of; that nothing is there tells more.
    const VfsResult result = lastResult();
    if (error && result == VfsError::internal && !mayExist(path))
        tellError(error, std::errc::no_such_file_or_directory);
    finish(result);
    return nullptr;
}

bool FVFileSystem::closeFile(Ref<FStream> stream) {
    if (!stream)
        return finish(VfsResult(VfsError::unknown));
    stream->flush();
    return finish(stream->isValid() ? VfsResult() : VfsResult(VfsError::internal));
}

bool FVFileSystem::deleteFile(const FPath& path) {
    if (!ask(path, [](VirtualFileService& service, const FUrl& url) { return service.deleteFile(url); }))
        return false;
    notify(fileDeleted, path);
    return true;
}

bool FVFileSystem::infoOf(const FPath& path, VirtualFileService::Info& info) {
    return ask(path,
               [&](VirtualFileService& service, const FUrl& url) { return service.getInfo(url, info); });
}

bool FVFileSystem::exists(const FPath& path) {
    VirtualFileService::Info info;
    if (!infoOf(path, info))
        return false;
    return path.isFolder() ? info.kind == Kind::folder : info.kind != Kind::none;
}

bool FVFileSystem::mayExist(const FPath& path) {
    VirtualFileService::Info info;
    return !infoOf(path, info) || info.kind != Kind::none;
}

void FVFileSystem::notify(int32_t kind, const FPath& path, FInterface* data) {
    FFileSystem::notify(kind, path, data);
    if (auto* door = FNFileSystem::instance())
        door->notify(kind, path, data);
}

bool FVFileSystem::moveTo(FPath& path, const FUrl& from, const FUrl& to) {
    const bool isFolder = namesFolder(from);
    const bool isMoved = ask(from, [&](VirtualFileService& service, const FUrl& url) {
        return serviceFor(to) == &service ? service.move(url, to) : VfsResult(VfsError::noFileSystem);
    });
    if (!isMoved)
        return false;
    FUrl earlier(from);
    if (auto* url = cast<FUrl>(&path)) {
        *url = to;
    } else {
        String text;
        to.getFullPath(text);
        path.setFullPath(text);
    }
    path.setIsFolder(from.isFolder());
    notify(isFolder ? folderRenamed : fileRenamed, path, &earlier);
    return true;
}

bool FVFileSystem::rename(FPath& path, const ConstString& newName) try {
    const FUrl from(path);
    FUrl to(from);
    to.setName(newName);
    return PathText::isOnePart(newName) && to.isValid() ? moveTo(path, from, to)
                                                        : finish(VfsResult(VfsError::unknown));
} catch (const std::bad_alloc&) {
    return finish(VfsResult(VfsError::unknown));
}

bool FVFileSystem::move(FPath& path, const FPath& newFolder) try {
    const FUrl from(path);
    FUrl to(newFolder);
    to.addPathSegment(from.getName(), from.isFolder());
    return PathText::isOnePart(from.getName()) && to.isValid() ? moveTo(path, from, to)
                                                               : finish(VfsResult(VfsError::unknown));
} catch (const std::bad_alloc&) {
    return finish(VfsResult(VfsError::unknown));
}

bool FVFileSystem::copy(const FPath& from, const FPath& to, StreamProgress* progress) try {
    FUrl source(from);
    const FUrl target(to);
    if (source.normalForm() == target.normalForm())
        return finish(VfsResult(VfsError::unknown));
    FileCopying::tellName(progress, source);
    Ref<FStream> stream = openFile(source, FFileStream::readAccess | FFileStream::shareRead);
    const int64_t size = stream ? getFileSize(*stream) : -1;
    if (!stream)
        return false;
    if (!FileCopying::copyInto(*this, target, std::move(stream), size, progress))
        return finish(lastResult() ? lastResult() : VfsResult(VfsError::internal));
    FileCopying::takeOverTimes(*this, source, *this, target);
    notify(fileWritten, to);
    return finish(VfsResult());
} catch (const std::bad_alloc&) {
    return finish(VfsResult(VfsError::unknown));
}

bool FVFileSystem::createFolder(const FPath& path) {
    if (!ask(path, [](VirtualFileService& service, const FUrl& url) { return service.createFolder(url); }))
        return false;
    notify(folderCreated, path);
    return true;
}

bool FVFileSystem::setCurrentFolder(const FPath& path) {
    return ask(path,
               [](VirtualFileService& service, const FUrl& url) { return service.setCurrentFolder(url); });
}

bool FVFileSystem::getVolumeInfo(const FPath& path, FVolumeInfo& info) {
    return ask(
        path, [&](VirtualFileService& service, const FUrl& url) { return service.getVolumeInfo(url, info); });
}

bool FVFileSystem::deleteFolder(const FPath& path) {
    if (!ask(path, [](VirtualFileService& service, const FUrl& url) { return service.deleteFolder(url); }))
        return false;
    notify(folderDeleted, path);
    return true;
}

bool FVFileSystem::getFileTime(const FPath& path, platform::CalendarTime* created,
                               platform::CalendarTime* written, platform::CalendarTime* read) {
    VirtualFileService::Info info;
    if (!infoOf(path, info) || info.kind == Kind::none)
        return false;
    if (created)
        *created = info.created;
    if (written)
        *written = info.written;
    if (read)
        *read = info.read;
    return true;
}

bool FVFileSystem::setFileTime(const FPath& path, const platform::CalendarTime& written,
                               const platform::CalendarTime& read) {
    return ask(path, [&](VirtualFileService& service, const FUrl& url) {
        return service.setTimes(url, written, read);
    });
}

int64_t FVFileSystem::getFileSizeOf(const FPath& path) {
    VirtualFileService::Info info;
    return infoOf(path, info) && info.kind == Kind::file ? info.size : -1;
}

bool FVFileSystem::isReadOnly(const FPath& path) {
    VirtualFileService::Info info;
    return infoOf(path, info) && info.isReadOnly;
}

bool FVFileSystem::isWriteProtected(const FPath& path) {
    return isReadOnly(path);
}

bool FVFileSystem::createParents(const FPath& path, bool isFolder) try {
    FUrl folder(path);
    if (!serviceFor(folder))
        return finish(VfsResult(VfsError::noFileSystem));
    if (!isFolder)
        folder.up();
    const std::u16string whole(folder.path().view16());
    // Where the paths of the folders end, from the outermost one on.
    std::vector<size_t> ends;
    for (size_t from = 0; from < whole.size();) {
        const size_t to = std::min(whole.find(u'/', from), whole.size());
        if (to > from)
            ends.push_back(to);
        from = to + 1;
    }
    bool isMissing = false;
    for (size_t i = 0; i < ends.size(); ++i) {
        folder.setPath(ConstString(std::u16string_view(whole).substr(0, ends[i])), true);
        VirtualFileService::Info info;
        if (!isMissing && !infoOf(folder, info))
            return false;
        if (info.kind == Kind::folder)
            continue;
        if (info.kind == Kind::file || ends.size() - i > maxMissingFolders)
            return finish(VfsResult(VfsError::internal));
        isMissing = true;
        if (!createFolder(folder))
            return false;
    }
    return finish(VfsResult());
} catch (const std::bad_alloc&) {
    return finish(VfsResult(VfsError::unknown));
}

Ref<FFileIterator> FVFileSystem::getIterator(const FPath& path, int32_t mode) try {
    std::vector<VirtualFileService::Entry> entries;
    if (!ask(path,
             [&](VirtualFileService& service, const FUrl& url) { return service.listFolder(url, entries); }))
        return nullptr;
    return make<FVFileIterator>(FUrl(path), std::move(entries), mode);
} catch (const std::bad_alloc&) {
    finish(VfsResult(VfsError::unknown));
    return nullptr;
}

} // namespace qorl
