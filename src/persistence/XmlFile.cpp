#include "persistence/FNFileSystem.h"
#include "persistence/XmlDocument.h"
#include "platform/System.h"

namespace qorl {

namespace {

constexpr int64_t maxFileBytes = int64_t{64} << 20;

FNPath fileOf(const ConstString& name, const FFileType& type = FFileType::settingsFile(),
              FNPath::FolderKind folder = FNPath::userSettings) {
    // Through the whole path, since the name may begin with a folder.
    FNPath path(FNPath(name, folder).toUtf8());
    path.setFileType(type);
    return path;
}

/// Where earlier versions kept the file while they wrote the new one.
FNPath oldFileOf(const ConstString& name) {
    String old = name;
    old.append("_old");
    return fileOf(old);
}

bool readFile(const FNPath& path, std::string_view tag, FAttributes& attributes) {
    std::string bytes;
    auto* files = FNFileSystem::instance();
    if (!files || !files->readWholeFile(path, bytes, maxFileBytes))
        return false;
    std::string error;
    if (XmlDocument::read(bytes, tag, attributes, &error))
        return true;
    platform::debugOutput(path.toUtf8() + ':' + error);
    return false;
}

} // namespace

bool XmlFile::save(const ConstString& name, std::string_view tag, CmObject& object) {
    FAttributes attributes;
    std::string text;
    auto* files = FNFileSystem::instance();
    const FNPath path = fileOf(name);
    if (!files || !object.storeAttributes(&attributes) || !XmlDocument::write(text, tag, attributes))
        return false;
    if (!path.createFolders())
        return false;
    const std::span bytes(reinterpret_cast<const uint8_t*>(text.data()), text.size());
    return files->replaceFile(path, bytes);
}

bool XmlFile::load(const ConstString& name, std::string_view tag, CmObject& object) {
    auto* files = FNFileSystem::instance();
    if (!files)
        return false;
    FNPath path = fileOf(name);
    FNPath old = oldFileOf(name);
    if (!files->exists(path) && files->exists(old))
        files->rename(old, path.getName());
    if (!files->exists(path))
        path = fileOf(name, FFileType::settingsFile(), FNPath::sharedData);
    FAttributes attributes;
    return readFile(path, tag, attributes) && object.restoreAttributes(&attributes);
}

bool XmlFile::exists(const ConstString& name) {
    auto* files = FNFileSystem::instance();
    return files && files->exists(fileOf(name));
}

bool XmlFile::remove(const ConstString& name) {
    auto* files = FNFileSystem::instance();
    return files && files->deleteFile(fileOf(name));
}

bool XmlFile::rename(const ConstString& name, const ConstString& newName) {
    auto* files = FNFileSystem::instance();
    FNPath path = fileOf(name);
    return files && files->exists(path) && files->rename(path, fileOf(newName).getName());
}

bool XmlFile::backup(const ConstString& name) {
    auto* files = FNFileSystem::instance();
    return files && files->copy(fileOf(name), fileOf(name, FFileType::settingsBackupFile()));
}

bool XmlFile::restore(const ConstString& name) {
    auto* files = FNFileSystem::instance();
    FNPath copy = fileOf(name, FFileType::settingsBackupFile());
    // A rename takes the copy over the file and the copy away in one step.
    return files && files->exists(copy) && files->rename(copy, fileOf(name).getName());
}

} // namespace qorl
