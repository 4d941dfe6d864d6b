#include "platform/Folders.h"

#include "platform/System.h"
#include "platform/linux/SystemText.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <pwd.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace qorl::platform {

namespace {

/// A description of an account that needs more is none.
constexpr size_t mostAccountBytes = size_t{1} << 20;

std::string withoutFinalSeparator(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

/// The environment's folder `name` if it is absolute, as the base directory rules ask.
std::string absoluteFromEnvironment(const char* name) {
    std::string value;
    if (!getEnvironment(name, value) || value.empty() || value.front() != '/')
        return {};
    return withoutFinalSeparator(std::move(value));
}

std::string getHome() {
    if (std::string home = absoluteFromEnvironment("HOME"); !home.empty())
        return home;
    // Threads may ask at once, so the answer has its own room.
    std::vector<char> room(1024);
    passwd entry = {};
    passwd* account = nullptr;
    while (getpwuid_r(geteuid(), &entry, room.data(), room.size(), &account) == ERANGE &&
           room.size() < mostAccountBytes)
        room.resize(room.size() * 2);
    return account && account->pw_dir && *account->pw_dir == '/' ? withoutFinalSeparator(account->pw_dir)
                                                                 : "/";
}

std::string baseFolder(const char* name, const char* fallback) {
    if (std::string folder = absoluteFromEnvironment(name); !folder.empty())
        return folder;
    const std::string home = getHome();
    return home == "/" ? std::string("/") + fallback : home + "/" + fallback;
}

/// Reads the line XDG_DOCUMENTS_DIR="$HOME/Documents" of the user's list of folders.
std::string documentsFolder() {
    std::ifstream file(baseFolder("XDG_CONFIG_HOME", ".config") + "/user-dirs.dirs");
    constexpr std::string_view key = "XDG_DOCUMENTS_DIR=\"";
    constexpr std::string_view homePrefix = "$HOME/";
    for (std::string line; std::getline(file, line);) {
        if (line.compare(0, key.size(), key) != 0 || line.back() != '"')
            continue;
        std::string value = line.substr(key.size(), line.size() - key.size() - 1);
        if (value.compare(0, homePrefix.size(), homePrefix) == 0)
            value = getHome() + "/" + value.substr(homePrefix.size());
        if (!value.empty() && value.front() == '/')
            return withoutFinalSeparator(std::move(value));
    }
    return baseFolder("", "Documents");
}

} // namespace

namespace {

/// "PREFIX/share" of what is installed in "PREFIX/lib", or a folder below that, or in "PREFIX/bin".
std::string dataFolderOfInstallation() {
    std::string folder = getModulePath(reinterpret_cast<const void*>(&getSharedDataFolders));
    for (size_t end = folder.rfind('/'); end != std::string::npos; end = folder.rfind('/')) {
        folder.resize(end);
        const std::string part = folder.substr(folder.rfind('/') + 1);
        if (part == "bin" || part.starts_with("lib"))
            return folder.substr(0, folder.rfind('/')) + "/share";
    }
    return {};
}

void addFolder(std::vector<std::string>& folders, const std::string& folder) {
    if (!folder.empty() && folder.front() == '/' && std::ranges::find(folders, folder) == folders.end())
        folders.push_back(folder);
}

bool isWritableByOwner(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
           access(path.c_str(), W_OK | X_OK) == 0;
}

std::string temporaryFolder() {
    if (std::string folder = absoluteFromEnvironment("XDG_RUNTIME_DIR"); isWritableByOwner(folder))
        return folder;
    const std::string folder = absoluteFromEnvironment("TMPDIR");
    return folder.empty() ? "/tmp" : folder;
}

} // namespace

std::vector<std::string> getSharedDataFolders() {
    std::vector<std::string> folders;
    addFolder(folders, dataFolderOfInstallation());
    std::string list;
    if (!getEnvironment("XDG_DATA_DIRS", list) || list.empty())
        list = "/usr/local/share:/usr/share";
    for (size_t start = 0; start <= list.size();) {
        const size_t end = std::min(list.find(':', start), list.size());
        addFolder(folders, withoutFinalSeparator(list.substr(start, end - start)));
        start = end + 1;
    }
    if (folders.empty())
        folders.emplace_back("/usr/local/share");
    return folders;
}

std::string getSystemFolder(SystemFolder folder) {
    switch (folder) {
    case SystemFolder::settings: return baseFolder("XDG_CONFIG_HOME", ".config");
    case SystemFolder::data: return baseFolder("XDG_DATA_HOME", ".local/share");
    case SystemFolder::cache: return baseFolder("XDG_CACHE_HOME", ".cache");
    case SystemFolder::documents: return documentsFolder();
    case SystemFolder::home: return getHome();
    case SystemFolder::temporary: return temporaryFolder();
    case SystemFolder::sharedData: return getSharedDataFolders().front();
    case SystemFolder::system: return "/usr";
    }
    return {};
}

std::string getProgramPath() {
    std::string path(256, '\0');
    for (;;) {
        const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
        if (length < 0)
            return {};
        if (static_cast<size_t>(length) < path.size()) {
            path.resize(static_cast<size_t>(length));
            return path;
        }
        path.resize(path.size() * 2);
    }
}

std::string getModulePath(const void* address) {
    Dl_info info = {};
    if (dladdr(address, &info) == 0 || !info.dli_fname)
        return {};
    const SystemText resolved{realpath(info.dli_fname, nullptr)};
    return resolved ? resolved.get() : info.dli_fname;
}

} // namespace qorl::platform
