#include "persistence/files/FNPath.h"

#include "foundation/Singleton.h"
#include "platform/Files.h"
#include "platform/Folders.h"

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

std::string systemFolder(FNPath::FolderKind kind) {
    switch (kind) {
    case FNPath::userSettings: return platform::getSystemFolder(platform::SystemFolder::settings);
    case FNPath::temporary: return platform::getSystemFolder(platform::SystemFolder::temporary);
    case FNPath::sharedData: return platform::getSystemFolder(platform::SystemFolder::sharedData);
    case FNPath::system: return platform::getSystemFolder(platform::SystemFolder::system);
    }
    return {};
}

platform::VolumeKind volumeOf(const FPath& path) {
    platform::VolumeInfo info;
    platform::getVolumeInfo(path.toUtf8(), info);
    return info.kind;
}

} // namespace

FNPath::FNPath(const ConstString& name, FolderKind kind, Create create, const ConstString& subFolder) {
    std::string folder = knownFolder(kind);
    if (!subFolder.isEmpty())
        folder += '/' + subFolder.toUtf8();
    if (create == Create::missingFolders && platform::createFolders(folder))
        return;
    if (name.isEmpty()) {
        setPath(ConstString(std::string_view(folder)), true);
        return;
    }
    setFolder(ConstString(std::string_view(folder)));
    if (isValid())
        setName(name);
}

void FNPath::getFullPath(String& text) const {
    getPath(text);
    if (location_ != 0 && isRelative()) {
        const std::string folder = knownFolder(static_cast<FolderKind>(location_)) + '/';
        const int32_t length = text.size();
        text.insert(0, ConstString(std::string_view(folder)));
        if (text.size() == length)
            text.clear();
    }
}

bool FNPath::isRemovable() const {
    const platform::VolumeKind kind = volumeOf(*this);
    return kind == platform::VolumeKind::removable || kind == platform::VolumeKind::optical;
}

bool FNPath::isNetwork() const {
    return volumeOf(*this) == platform::VolumeKind::network;
}
bool FNPath::isHidden() const {
    platform::FileInfo info;
    platform::getFileInfo(toUtf8(), info);
    return info.isHidden || FPath::isHidden();
}

bool FNPath::createFolders() const {
    FNPath folder = *this;
    if (!isFolder())
        folder.up();
    return !platform::createFolders(folder.toUtf8());
}

uint64_t FNPath::getSerial() const {
    platform::FileInfo info;
    platform::getFileInfo(toUtf8(), info);
    return info.serial;
}
void FNPath::setLocation(FolderKind kind) {
    location_ = kind;
}
void FNPath::setPathString(const ConstString& text) {
    setPath(text, false);
}

void FNPath::setKnownFolder(FolderKind kind, std::string_view folder) {
    if (auto* folders = knownFolders.get())
        folders->paths[kind] = folder;
}

std::string FNPath::knownFolder(FolderKind kind) {
    const auto* folders = knownFolders.peek();
    return folders && !folders->paths[kind].empty() ? folders->paths[kind] : systemFolder(kind);
}

} // namespace qorl
