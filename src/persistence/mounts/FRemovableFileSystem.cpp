#include "persistence/mounts/FRemovableFileSystem.h"

#include "foundation/Cast.h"
#include "persistence/files/FFileIterator.h"
#include "persistence/files/FNFileSystem.h"
#include "persistence/files/FileErrors.h"
#include "persistence/files/PathText.h"
#include "persistence/mounts/FMountTable.h"
#include "persistence/mounts/MountedStream.h"

#include <new>

namespace qorl {

FRemovableFileSystem::FRemovableFileSystem(Ref<FFileSystem> files, Ref<CmObject> component,
                                           Ref<IVirtualFileSystem> instance, Ref<FStream> stream,
                                           Access access)
    : stream_(std::move(stream)), component_(std::move(component)), instance_(std::move(instance)),
      files_(std::move(files)) {
    if (instance_->hasCapability("CanRead"))
        capabilities_ |= reading;
    if (instance_->hasCapability("CanWrite") && access == Access::readWrite)
        capabilities_ |= writing;
    if (instance_->hasCapability("CanIterate"))
        capabilities_ |= iterating;
}

bool FRemovableFileSystem::mayDo(uint32_t capabilities) const {
    return !isRemoved_ && (capabilities_ & capabilities) == capabilities;
}

bool FRemovableFileSystem::mayOpen(uint32_t mode, int32_t* error) const {
    tellError(error, std::errc());
    const uint32_t needed =
        (mode & FFileStream::readAccess ? reading : 0u) | (mode & FFileStream::writeAccess ? writing : 0u);
    if (mayDo(needed))
        return true;
    tellError(error, isRemoved_                               ? std::errc::no_such_device
                     : (needed & writing) != 0 && !canWrite() ? std::errc::read_only_file_system
                                                              : std::errc::permission_denied);
    return false;
}

Ref<FStream> FRemovableFileSystem::wrap(Ref<FStream> stream) {
    auto mounted = make<MountedStream>(std::move(stream), retain(this));
    const FGuard guard(lock_);
    openFiles_.insert(mounted.get());
    return mounted;
}

void FRemovableFileSystem::forget(const FStream* stream) {
    const FGuard guard(lock_);
    openFiles_.erase(stream);
}

bool FRemovableFileSystem::hasOpenFiles() {
    const FGuard guard(lock_);
    return !openFiles_.empty();
}

Ref<FStream> FRemovableFileSystem::createFile(const FPath& path, uint32_t mode, int32_t* error) try {
    if (!mayOpen(mode | FFileStream::writeAccess, error))
        return nullptr;
    Ref<FStream> stream = files_->createFile(path, mode, error);
    if (!stream)
        return nullptr;
    FMountTable::forget(path);
    return wrap(std::move(stream));
} catch (const std::bad_alloc&) {
    tellError(error, std::errc::not_enough_memory);
    return nullptr;
}

Ref<FStream> FRemovableFileSystem::openFile(FPath& path, uint32_t mode, int32_t* error) try {
    if (!mayOpen(mode, error))
        return nullptr;
    Ref<FStream> stream = files_->openFile(path, mode, error);
    return stream ? wrap(std::move(stream)) : nullptr;
} catch (const std::bad_alloc&) {
    tellError(error, std::errc::not_enough_memory);
    return nullptr;
}

bool FRemovableFileSystem::closeFile(Ref<FStream> stream) {
    auto* mounted = cast<MountedStream>(stream.get());
    if (!mounted)
        return stream && files_->closeFile(std::move(stream));
    forget(mounted);
    Ref<FStream> inner = mounted->detachInner();
    return inner && files_->closeFile(std::move(inner));
}

bool FRemovableFileSystem::deleteFile(const FPath& path) {
    if (!mayDo(writing) || !files_->deleteFile(path))
        return false;
    notify(fileDeleted, path);
    return true;
}

bool FRemovableFileSystem::exists(const FPath& path) {
    return mayDo(reading) && files_->exists(path);
}

bool FRemovableFileSystem::rename(FPath& path, const ConstString& newName) {
    const Ref<CmObject> earlier = Ref<CmObject>::adopt(path.clone());
    const bool isFolder = namesFolder(path);
    if (!mayDo(writing) || !PathText::isOnePart(newName) || !files_->rename(path, newName))
        return false;
    notify(isFolder ? folderRenamed : fileRenamed, path, earlier.get());
    return true;
}

bool FRemovableFileSystem::move(FPath& path, const FPath& newFolder) {
    const Ref<CmObject> earlier = Ref<CmObject>::adopt(path.clone());
    const bool isFolder = namesFolder(path);
    if (!mayDo(writing) || !files_->move(path, newFolder))
        return false;
    notify(isFolder ? folderRenamed : fileRenamed, path, earlier.get());
    return true;
}

bool FRemovableFileSystem::copy(const FPath& from, const FPath& to, StreamProgress* progress) {
    if (!mayDo(reading | writing) || !files_->copy(from, to, progress))
        return false;
    FMountTable::forget(to);
    notify(fileWritten, to);
    return true;
}

bool FRemovableFileSystem::createFolder(const FPath& path) {
    if (!mayDo(writing) || !files_->createFolder(path))
        return false;
    notify(folderCreated, path);
    return true;
}

bool FRemovableFileSystem::setCurrentFolder(const FPath& path) {
    return mayDo(reading) && files_->setCurrentFolder(path);
}
bool FRemovableFileSystem::getVolumeInfo(const FPath& path, FVolumeInfo& info) {
    return mayDo(reading) && files_->getVolumeInfo(path, info);
}

bool FRemovableFileSystem::deleteFolder(const FPath& path) {
    if (!mayDo(writing) || !files_->deleteFolder(path))
        return false;
    notify(folderDeleted, path);
    return true;
}

bool FRemovableFileSystem::getFileTime(const FPath& path, platform::CalendarTime* created,
                                       platform::CalendarTime* written, platform::CalendarTime* read) {
    return mayDo(reading) && files_->getFileTime(path, created, written, read);
}

int64_t FRemovableFileSystem::getFileSize(FStream& stream) {
    auto* mounted = cast<MountedStream>(&stream);
    FStream* inner = mounted ? mounted->inner() : &stream;
    return inner && !isRemoved_ ? files_->getFileSize(*inner) : -1;
}
int64_t FRemovableFileSystem::getFileSizeOf(const FPath& path) {
    return mayDo(reading) ? files_->getFileSizeOf(path) : -1;
}
bool FRemovableFileSystem::isReadOnly(const FPath& path) {
    return !mayDo(writing) || files_->isReadOnly(path);
}
bool FRemovableFileSystem::makeLegalName(String& text, char16_t replacement) {
    return files_->makeLegalName(text, replacement);
}
bool FRemovableFileSystem::isWriteProtected(const FPath& path) {
    return !mayDo(writing) || files_->isWriteProtected(path);
}
bool FRemovableFileSystem::createParents(const FPath& path, bool isFolder) {
    return mayDo(writing) && files_->createParents(path, isFolder);
}
Ref<FFileIterator> FRemovableFileSystem::getIterator(const FPath& path, int32_t mode) {
    return mayDo(iterating) ? files_->getIterator(path, mode) : nullptr;
}
bool FRemovableFileSystem::setFileTime(const FPath& path, const platform::CalendarTime& written,
                                       const platform::CalendarTime& read) {
    return mayDo(writing) && files_->setFileTime(path, written, read);
}
bool FRemovableFileSystem::mayExist(const FPath& path) {
    return !mayDo(reading) || files_->mayExist(path);
}

void FRemovableFileSystem::notify(int32_t kind, const FPath& path, FInterface* data) {
    FFileSystem::notify(kind, path, data);
    if (auto* door = FNFileSystem::instance())
        door->notify(kind, path, data);
}

} // namespace qorl
