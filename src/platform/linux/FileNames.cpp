#include "platform/linux/FileNames.h"

#include "platform/linux/FileErrors.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <unistd.h>

namespace qorl::platform {

std::string parentOf(const std::string& path) {
    const size_t last = path.find_last_not_of('/');
    const size_t cut = last == std::string::npos ? std::string::npos : path.find_last_of('/', last);
    if (cut == std::string::npos)
        return path.starts_with('/') ? "/" : ".";
    return cut == 0 ? "/" : path.substr(0, cut);
}

std::string withoutEnd(const std::string& path) {
    return path.substr(0, std::max<size_t>(path.find_last_not_of('/') + 1, 1));
}

std::string lastPart(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1);
}

std::string joinPath(const std::string& folder, const std::string& name) {
    return folder.ends_with('/') ? folder + name : folder + '/' + name;
}

FileError readLink(const std::string& path, std::string& target) {
    for (size_t room = 256;; room *= 2) {
        target.resize(room);
        const ssize_t length = readlink(path.c_str(), target.data(), room);
        if (length < 0)
            return lastFileError();
        if (static_cast<size_t>(length) < room) {
            target.resize(static_cast<size_t>(length));
            return {};
        }
    }
}

std::string nameBeside(const std::string& path, int attempt) {
    char suffix[48];
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    std::snprintf(suffix, sizeof suffix, ".%x-%lx-%x.new", static_cast<unsigned>(getpid()), now.tv_nsec,
                  static_cast<unsigned>(attempt));
    const std::string name = path.substr(0, path.find_last_not_of('/') + 1);
    return joinPath(parentOf(name), '.' + lastPart(name).substr(0, 200) + suffix);
}

bool isInside(const std::string& path, const std::string& folder) {
    const std::string inner = getCanonicalPath(path);
    const std::string outer = getCanonicalPath(folder);
    return inner == outer || inner.starts_with(joinPath(outer, ""));
}

} // namespace qorl::platform
