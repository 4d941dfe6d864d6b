#include "persistence/files/FNFileSystem.h"
#include "persistence/xml/XmlDocument.h"
#include "platform/System.h"

#include <new>

namespace qorl {

namespace {

constexpr int64_t maxFileBytes = int64_t{64} << 20;

FNPath fileOf(const ConstString& name, const FFileType& type = FFileType::settingsFile(),
              FNPath::FolderKind folder = FNPath::userSettings) {
    // Through the whole path, since the name may begin with a folder.
    const FNPath whole(name, folder);
    FNPath path(whole.toUtf8());
    path.setFileType(type);
    if (!whole.isValid() || !path.isValid() || type.extension().isEmpty())
        throw std::bad_alloc();
    return path;
}

/// Where earlier versions kept the file while they wrote the new one.
FNPath oldFileOf(const ConstString& name) {
    const std::string old = name.toUtf8() + "_old";
    return fileOf(ConstString(std::string_view(old)));
}

enum class Reading { done, cannotOpen, damaged };

Reading readFile(const FNPath& path, std::string_view tag, FAttributes& attributes,
                 int32_t* error = nullptr) {
    std::string bytes;
    auto* files = FNFileSystem::instance();
    if (!files || !files->readWholeFile(path, bytes, maxFileBytes, error))
        return Reading::cannotOpen;
    std::string reason;
    if (XmlDocument::read(bytes, tag, attributes, &reason))
        return Reading::done;
    platform::debugOutput(path.toUtf8() + ':' + reason);
    return Reading::damaged;
}

bool restoreFrom(const FNPath& path, std::string_view tag, CmObject& object) {
    FAttributes attributes;
    return readFile(path, tag, attributes) == Reading::done && object.restoreAttributes(&attributes);
}

bool holdsAlready(FNFileSystem& files, const FNPath& path, std::string_view text) {
    std::string bytes;
    return files.getFileSizeOf(path) == static_cast<int64_t>(text.size()) &&
           files.readWholeFile(path, bytes, maxFileBytes) && bytes == text;
}

} // namespace

bool XmlFile::save(const ConstString& name, std::string_view tag, CmObject& object) try {
    FAttributes attributes;
    std::string text;
    auto* files = FNFileSystem::instance();
    const FNPath path = fileOf(name);
    const FNPath old = oldFileOf(name);
    if (!files || !object.storeAttributes(&attributes) || !XmlDocument::write(text, tag, attributes))
        return false;
    if (!path.createFolders())
        return false;
    const std::span bytes(reinterpret_cast<const uint8_t*>(text.data()), text.size());
    if (!holdsAlready(*files, path, text) && !files->replaceFile(path, bytes))
        return false;
    if (files->exists(old))
        files->deleteFile(old);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool XmlFile::load(const ConstString& name, std::string_view tag, CmObject& object, OwnFile* found) try {
    OwnFile own = OwnFile::missing;
    OwnFile& state = found ? *found : own;
    state = OwnFile::missing;
    auto* files = FNFileSystem::instance();
    if (!files)
        return false;
    const FNPath path = fileOf(name);
    FNPath old = oldFileOf(name);
    FAttributes attributes;
    platform::FileError error;
    Reading reading = readFile(path, tag, attributes, &error.code);
    if (error.isNotFound() && files->exists(old) && files->rename(old, path.getName()))
        reading = readFile(path, tag, attributes, &error.code);
    if (reading == Reading::done && object.restoreAttributes(&attributes)) {
        state = OwnFile::read;
        return true;
    }
    if (!error.isNotFound()) {
        state = OwnFile::unreadable;
        if (restoreFrom(old, tag, object))
            return true;
    }
    return reading == Reading::cannotOpen &&
           restoreFrom(fileOf(name, FFileType::settingsFile(), FNPath::sharedData), tag, object);
} catch (const std::bad_alloc&) {
    if (found)
        *found = OwnFile::unreadable;
    return false;
}

bool XmlFile::setAside(const ConstString& name) try {
    constexpr int32_t mostKept = 1000;
    auto* files = FNFileSystem::instance();
    FNPath path = fileOf(name);
    if (!files || !files->exists(path))
        return files != nullptr;
    for (int32_t number = 1; number <= mostKept; ++number) {
        const std::string suffix = number > 1 ? ' ' + std::to_string(number) : std::string();
        const std::string away = name.toUtf8() + " (Damaged" + suffix + ')';
        const FNPath target = fileOf(ConstString(std::string_view(away)));
        if (!files->exists(target))
            return files->rename(path, target.getName());
    }
    return false;
} catch (const std::bad_alloc&) {
    return false;
}

bool XmlFile::exists(const ConstString& name) try {
    auto* files = FNFileSystem::instance();
    return files && files->exists(fileOf(name));
} catch (const std::bad_alloc&) {
    return false;
}

bool XmlFile::remove(const ConstString& name) try {
    auto* files = FNFileSystem::instance();
    return files && files->deleteFile(fileOf(name));
} catch (const std::bad_alloc&) {
    return false;
}

bool XmlFile::rename(const ConstString& name, const ConstString& newName) try {
    auto* files = FNFileSystem::instance();
    FNPath path = fileOf(name);
    return files && files->exists(path) && files->rename(path, fileOf(newName).getName());
} catch (const std::bad_alloc&) {
    return false;
}

bool XmlFile::backup(const ConstString& name) try {
    auto* files = FNFileSystem::instance();
    return files && files->copy(fileOf(name), fileOf(name, FFileType::settingsBackupFile()));
} catch (const std::bad_alloc&) {
    return false;
}

bool XmlFile::restore(const ConstString& name) try {
    auto* files = FNFileSystem::instance();
    FNPath copy = fileOf(name, FFileType::settingsBackupFile());
    // A rename takes the copy over the file and the copy away in one step.
    return files && files->exists(copy) && files->rename(copy, fileOf(name).getName());
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace qorl
