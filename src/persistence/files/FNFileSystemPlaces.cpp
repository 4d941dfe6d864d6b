// Where things lie: volumes, temporary files, files of the system, and what shortcuts lead to.
#include "persistence/files/FNFileSystem.h"
#include "persistence/files/FNShortcut.h"
#include "platform/Folders.h"

#include <iterator>
#include <new>
#include <utility>

namespace qorl {

Ref<FStream> FNFileSystem::createTempFile(FNPath& path) try {
    std::string name;
    if (platform::createTemporaryFile(FNPath::knownFolder(FNPath::temporary), "qorl", name))
        return nullptr;
    FNPath made{std::string_view(name)};
    Ref<FStream> stream = openFile(made, FFileStream::readAccess | FFileStream::writeAccess);
    if (stream)
        path = made;
    if (stream && path.isValid())
        return stream;
    // Nobody could delete a file whose name is lost.
    platform::deleteFile(name);
    return nullptr;
} catch (const std::bad_alloc&) {
    return nullptr;
}

std::vector<FNPath> FNFileSystem::getDrives() try {
    std::vector<FNPath> drives;
    for (const platform::VolumeInfo& volume : platform::listVolumes())
        drives.emplace_back(std::string_view(volume.root), true);
    return drives;
} catch (const std::bad_alloc&) {
    return {};
}

std::vector<String> FNFileSystem::getRootNames() try {
    std::vector<String> names;
    for (const platform::VolumeInfo& volume : platform::listVolumes())
        names.emplace_back(ConstString(std::string_view(volume.name)));
    return names;
} catch (const std::bad_alloc&) {
    return {};
}

int64_t FNFileSystem::getFreeSpace(const FPath& path) {
    FVolumeInfo info;
    return getVolumeInfo(path, info) ? info.freeBytes : -1;
}

void FNFileSystem::formatSize(int64_t bytes, String& text) {
    constexpr const char* units[] = {"B", "KB", "MB", "GB", "TB"};
    auto size = static_cast<double>(bytes);
    size_t unit = 0;
    for (; size >= 1024 && unit + 1 < std::size(units); ++unit)
        size /= 1024;
    text.printf8("%.3f %s", size, units[unit]);
}

bool FNFileSystem::resolveShortcut(FNPath& path) try {
    const std::string target = FNShortcut::targetOf(path.toUtf8());
    platform::FileInfo info;
    if (target.empty() || platform::getFileInfo(target, info) || info.kind == platform::FileKind::none)
        return false;
    FNPath found(std::string_view(target), info.kind == platform::FileKind::folder);
    if (!found.isValid())
        return false;
    path = std::move(found);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::getSystemFile(FNPath& path) try {
    String name;
    path.getPath(name);
    std::vector<std::string> places = platform::getSharedDataFolders();
    places.insert(places.begin(), FNPath::knownFolder(FNPath::system));
    const std::string file = '/' + FNPath(name).toUtf8();
    if (!path.isValid() || !path.isRelative() || (file + '/').find("/../") != std::string::npos)
        return false;
    for (const std::string& place : places) {
        const std::string whole = place + file;
        if (!platform::fileExists(whole))
            continue;
        path = FNPath(std::string_view(whole));
        return path.isValid();
    }
    return false;
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace qorl
