#include "platform/linux/FileErrors.h"
#include "platform/linux/FileNames.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <limits>
#include <sstream>
#include <string_view>
#include <strings.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>

namespace qorl::platform {

namespace {

/// One line of the system's table of mounts.
struct Mount {
    std::string root;
    std::string type;
    std::string device;
    unsigned major = 0;
    unsigned minor = 0;
};

struct TypeRow {
    std::string_view type;
    VolumeKind kind;
};

constexpr TypeRow volumeTypes[] = {
    {"ext2", VolumeKind::fixed},
    {"ext3", VolumeKind::fixed},
    {"ext4", VolumeKind::fixed},
    {"btrfs", VolumeKind::fixed},
    {"xfs", VolumeKind::fixed},
    {"f2fs", VolumeKind::fixed},
    {"jfs", VolumeKind::fixed},
    {"reiserfs", VolumeKind::fixed},
    {"zfs", VolumeKind::fixed},
    {"bcachefs", VolumeKind::fixed},
    {"overlay", VolumeKind::fixed},
    {"squashfs", VolumeKind::fixed},
    {"ntfs", VolumeKind::fixed},
    {"ntfs3", VolumeKind::fixed},
    {"fuseblk", VolumeKind::fixed},
    {"vfat", VolumeKind::fixed},
    {"exfat", VolumeKind::fixed},
    {"hfs", VolumeKind::fixed},
    {"hfsplus", VolumeKind::fixed},
    {"nfs", VolumeKind::network},
    {"nfs4", VolumeKind::network},
    {"cifs", VolumeKind::network},
    {"smb3", VolumeKind::network},
    {"smbfs", VolumeKind::network},
    {"9p", VolumeKind::network},
    {"afs", VolumeKind::network},
    {"auristorfs", VolumeKind::network},
    {"ceph", VolumeKind::network},
    {"coda", VolumeKind::network},
    {"lustre", VolumeKind::network},
    {"fuse.ceph", VolumeKind::network},
    {"fuse.ceph-fuse", VolumeKind::network},
    {"fuse.curlftpfs", VolumeKind::network},
    {"fuse.davfs", VolumeKind::network},
    {"fuse.glusterfs", VolumeKind::network},
    {"fuse.gvfsd-fuse", VolumeKind::network},
    {"fuse.rclone", VolumeKind::network},
    {"fuse.s3fs", VolumeKind::network},
    {"fuse.sshfs", VolumeKind::network},
    {"iso9660", VolumeKind::optical},
    {"udf", VolumeKind::optical},
    {"tmpfs", VolumeKind::memory},
    {"ramfs", VolumeKind::memory},
};

/// Where the system keeps its own files, or makes others visible a second time.
constexpr std::string_view systemFolders[] = {
    "/bin",  "/boot", "/dev",  "/efi",  "/etc", "/lib", "/lib32", "/lib64", "/nix",
    "/proc", "/run",  "/sbin", "/snap", "/sys", "/tmp", "/usr",   "/var",
};

/// The table writes blanks and backslashes as three octal digits.
std::string unescape(const std::string& text) {
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool isEscape = text[i] == '\\' && i + 3 < text.size() &&
                              std::all_of(text.begin() + static_cast<ptrdiff_t>(i) + 1,
                                          text.begin() + static_cast<ptrdiff_t>(i) + 4,
                                          [](char c) { return c >= '0' && c <= '7'; });
        if (!isEscape) {
            result += text[i];
            continue;
        }
        result += static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + (text[i + 3] - '0'));
        i += 3;
    }
    return result;
}

bool parseMount(const std::string& line, Mount& mount) {
    std::istringstream words(line);
    std::string id, parent, device, root, options, word;
    if (!(words >> id >> parent >> device >> root >> mount.root >> options))
        return false;
    while (words >> word && word != "-") {}
    if (!(words >> mount.type >> mount.device))
        return false;
    mount.root = unescape(mount.root);
    mount.device = unescape(mount.device);
    char* end = nullptr;
    mount.major = static_cast<unsigned>(std::strtoul(device.c_str(), &end, 10));
    mount.minor = *end == ':' ? static_cast<unsigned>(std::strtoul(end + 1, nullptr, 10)) : 0;
    return true;
}

std::vector<Mount> readMounts() {
    std::vector<Mount> mounts;
    std::ifstream file("/proc/self/mountinfo");
    for (std::string line; std::getline(file, line);) {
        Mount mount;
        if (parseMount(line, mount))
            mounts.push_back(std::move(mount));
    }
    return mounts;
}

bool isRemovableDevice(const Mount& mount) {
    const std::string folder =
        "/sys/dev/block/" + std::to_string(mount.major) + ":" + std::to_string(mount.minor);
    // A partition has no such file; its disk, one folder up, has.
    for (const char* place : {"/removable", "/../removable"}) {
        std::ifstream file(folder + place);
        int flag = 0;
        if (file >> flag)
            return flag == 1;
    }
    return false;
}

VolumeKind kindOf(const Mount& mount) {
    const auto* row = std::find_if(std::begin(volumeTypes), std::end(volumeTypes),
                                   [&](const TypeRow& candidate) { return candidate.type == mount.type; });
    if (row == std::end(volumeTypes))
        return VolumeKind::unknown;
    return row->kind == VolumeKind::fixed && isRemovableDevice(mount) ? VolumeKind::removable : row->kind;
}

/// The sizes of a volume are what its driver says.
int64_t bytesOf(uint64_t blocks, uint64_t unit) {
    int64_t bytes = 0;
    return __builtin_mul_overflow(blocks, unit, &bytes) ? std::numeric_limits<int64_t>::max() : bytes;
}

FileError fillSizes(const std::string& path, VolumeInfo& info) {
    struct statvfs status = {};
    if (statvfs(path.c_str(), &status) != 0)
        return lastFileError();
    info.freeBytes = bytesOf(status.f_bavail, status.f_frsize);
    info.totalBytes = bytesOf(status.f_blocks, status.f_frsize);
    info.isReadOnly = status.f_flag & ST_RDONLY;
    return {};
}

bool equalsIgnoringCase(const std::string& a, const std::string& b) {
    return strcasecmp(a.c_str(), b.c_str()) == 0;
}

std::string nameOf(const Mount& mount) {
    if (mount.root == "/")
        return "/";
    return mount.root.substr(mount.root.find_last_of('/') + 1);
}

bool holdsPath(const Mount& mount, const std::string& path) {
    if (mount.root == "/")
        return true;
    return path.starts_with(mount.root) &&
           (path.size() == mount.root.size() || path[mount.root.size()] == '/');
}

/// Whether users keep files on a volume: whatever stands where volumes are mounted for them, and disks and
/// shares anywhere but in the system's own folders.
bool isForUsers(const Mount& mount) {
    for (const std::string_view place : {"/media/", "/mnt/", "/run/media/"})
        if (mount.root.starts_with(place))
            return true;
    if (mount.root == "/")
        return true;
    const VolumeKind kind = kindOf(mount);
    if (kind == VolumeKind::unknown || kind == VolumeKind::memory || !folderExists(mount.root))
        return false;
    return std::none_of(std::begin(systemFolders), std::end(systemFolders), [&](std::string_view folder) {
        return mount.root.starts_with(folder) &&
               (mount.root.size() == folder.size() || mount.root[folder.size()] == '/');
    });
}

} // namespace

FileError getVolumeInfo(const std::string& path, VolumeInfo& info) {
    info = {};
    const std::string whole = getCanonicalPath(path);
    std::string existing = whole;
    FileError error = fillSizes(existing, info);
    while (error.isNotFound() && parentOf(existing) != existing) {
        existing = parentOf(existing);
        error = fillSizes(existing, info);
    }
    if (error)
        return error;
    const std::vector<Mount> mounts = readMounts();
    const Mount* best = nullptr;
    // A later mount on the same folder hides the earlier one.
    for (const Mount& mount : mounts) {
        if (holdsPath(mount, whole) && (!best || mount.root.size() >= best->root.size()))
            best = &mount;
    }
    if (!best) {
        // In a changed root the table lists only what is mounted below it.
        info.root = info.name = "/";
        return {};
    }
    info.root = best->root;
    info.name = nameOf(*best);
    info.kind = kindOf(*best);
    return {};
}

int32_t getSectorSize(const std::string& path) {
    struct statvfs status = {};
    return statvfs(path.c_str(), &status) == 0 ? static_cast<int32_t>(status.f_frsize) : 0;
}

std::vector<VolumeInfo> listVolumes() {
    std::vector<VolumeInfo> volumes;
    const std::vector<Mount> mounts = readMounts();
    for (size_t i = 0; i < mounts.size(); ++i) {
        const Mount& mount = mounts[i];
        const bool isHidden = std::any_of(mounts.begin() + static_cast<ptrdiff_t>(i) + 1, mounts.end(),
                                          [&](const Mount& later) { return later.root == mount.root; });
        VolumeInfo info;
        if (isHidden || !isForUsers(mount) || fillSizes(mount.root, info))
            continue;
        info.root = mount.root;
        info.name = nameOf(mount);
        info.kind = kindOf(mount);
        volumes.push_back(std::move(info));
    }
    return volumes;
}

std::string findNetworkShare(const std::string& host, const std::string& share) {
    const bool isOnePart = (host + share).find_first_of("/,=") == std::string::npos;
    if (host.empty() || share.empty() || !isOnePart)
        return {};
    const std::string device = "//" + host + '/' + share;
    for (const Mount& mount : readMounts())
        if ((mount.type == "cifs" || mount.type == "smb3") && equalsIgnoringCase(mount.device, device))
            return mount.root;
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    std::vector<FolderEntry> entries;
    const std::string desktop = std::string(runtime ? runtime : "") + "/gvfs";
    if (!runtime || listFolder(desktop, entries))
        return {};
    // The desktop's own mounts: "smb-share:server=HOST,share=SHARE", perhaps with a user behind them.
    const std::string name = "smb-share:server=" + host + ",share=" + share;
    for (const FolderEntry& entry : entries)
        if (equalsIgnoringCase(entry.name, name) ||
            equalsIgnoringCase(entry.name.substr(0, name.size() + 1), name + ','))
            return desktop + '/' + entry.name;
    return {};
}

} // namespace qorl::platform
