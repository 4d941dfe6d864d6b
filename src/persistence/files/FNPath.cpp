#include "persistence/files/FNPath.h"

#include "foundation/Singleton.h"
#include "persistence/files/PathText.h"
#include "platform/Files.h"
#include "platform/Folders.h"

#include <new>
#include <string>

namespace qorl {

QORL_REGISTER(FNPath, "FNPath", FPath, 0)

namespace {

/// What the application said about its folders; empty where it said nothing.
class KnownFolders : public FObject {
public:
    std::string paths[FNPath::system + 1];
};

constinit Singleton<KnownFolders> knownFolders;

/// Keeps the numbers of different volumes apart.
constexpr uint64_t spread = 0x9E3779B97F4A7C15;

std::string systemFolder(FNPath::FolderKind kind) {
    switch (kind) {
    case FNPath::userSettings: return platform::getSystemFolder(platform::SystemFolder::settings);
    case FNPath::temporary: return platform::getSystemFolder(platform::SystemFolder::temporary);
    case FNPath::sharedData: return platform::getSystemFolder(platform::SystemFolder::sharedData);
    case FNPath::system: return platform::getSystemFolder(platform::SystemFolder::system);
    case FNPath::noKind: break;
    }
    return {};
}

/// Without memory the volume isn't known.
platform::VolumeInfo volumeOf(const FPath& path) try {
    platform::VolumeInfo info;
    platform::getVolumeInfo(path.toUtf8(), info);
    return info;
} catch (const std::bad_alloc&) {
    return {};
}

/// Adds the parts of a relative path, each behind a separator. False when it has any "..".
bool goDown(std::string& path, const std::string& relative) {
    const auto parts = PathText::partsBelow(relative, "/", PathText::Dots::refused);
    if (!parts)
        return false;
    for (const std::string_view part : *parts)
        path.append("/").append(part);
    return true;
}

} // namespace

FNPath::FNPath(const ConstString& name, FolderKind kind, uint16_t options, const ConstString& subFolder,
               Create create) {
    flags_ = options;
    build(name, kind, subFolder, create);
}

void FNPath::build(const ConstString& name, FolderKind kind, const ConstString& subFolder,
                   Create create) try {
    const std::string folder = knownFolder(kind);
    std::string below;
    if (folder.empty() || !goDown(below, PathText::toNative(subFolder)))
        return;
    std::string path = below;
    if (!goDown(path, PathText::toNative(name)))
        return;
    const bool isItsFolder = path == below;
    if (create == Create::missingFolders &&
        platform::createFolders(folder + (isItsFolder ? below : PathText::folderOfNative(path))))
        return;
    // The known folder itself can't count from itself.
    path = path.empty() ? folder : path.substr(1);
    setLocation(kind);
    setPath(ConstString(std::string_view(path)), isItsFolder || isFolder());
} catch (const std::bad_alloc&) {
    setPath({}, false);
}

bool FNPath::createFolders(Folders folders) const try {
    if (!isValid())
        return false;
    std::string folder = toUtf8();
    if (folders == Folders::above || (folders == Folders::asMarked && !isFolder()))
        folder = PathText::folderOfNative(folder);
    // A bare name lies in the current folder, which is there.
    return folder.empty() || !platform::createFolders(folder);
} catch (const std::bad_alloc&) {
    return false;
}

uint64_t FNPath::getSerial() const try {
    platform::FileInfo info;
    platform::getFileInfo(toUtf8(), info);
    // Numbers of files are those of their volume.
    return info.serial + info.volume * spread;
} catch (const std::bad_alloc&) {
    return 0;
}

void FNPath::setLocation(FolderKind kind) {
    pathType_ = kind;
}
void FNPath::setPathString(const ConstString& text) {
    setPath(text, false);
}

void FNPath::getFullPath(String& text) const try {
    getPath(text);
    // What could not be built is not the known folder itself.
    if (text.isEmpty() || pathType_ == noKind || pathType_ > system || !isRelative())
        return;
    const std::u16string folder = PathText::fromNative(knownFolder(static_cast<FolderKind>(pathType_)) + '/');
    const int32_t length = text.size();
    text.insert(0, ConstString(std::u16string_view(folder)));
    if (text.size() == length)
        text.clear();
} catch (const std::bad_alloc&) {
    text.clear();
}

void FNPath::getDriveName(String& text) const {
    text = ConstString(std::string_view(volumeOf(*this).name));
}

bool FNPath::isRemovable() const {
    const platform::VolumeKind kind = volumeOf(*this).kind;
    return kind == platform::VolumeKind::removable || kind == platform::VolumeKind::optical;
}

bool FNPath::isNetwork() const {
    return volumeOf(*this).kind == platform::VolumeKind::network;
}

bool FNPath::isHidden() const try {
    platform::FileInfo info;
    platform::getFileInfo(toUtf8(), info);
    return info.isHidden || FPath::isHidden();
} catch (const std::bad_alloc&) {
    return FPath::isHidden();
}

bool FNPath::setKnownFolder(FolderKind kind, std::string_view folder) try {
    auto* folders = kind <= system ? knownFolders.get() : nullptr;
    while (folder.size() > 1 && folder.ends_with('/'))
        folder.remove_suffix(1);
    if (folders)
        folders->paths[kind] = folder;
    return folders != nullptr;
} catch (const std::bad_alloc&) {
    return false;
}

std::string FNPath::knownFolder(FolderKind kind) {
    const auto* folders = kind <= system ? knownFolders.peek() : nullptr;
    return folders && !folders->paths[kind].empty() ? folders->paths[kind] : systemFolder(kind);
}

} // namespace qorl
