#include "platform/FileReplacement.h"
#include "platform/linux/FileErrors.h"
#include "platform/linux/NativeFile.h"

#include <sys/stat.h>

namespace qorl::platform {

namespace {

constexpr mode_t plainRights = 0777;
constexpr size_t copyBlock = size_t{256} * 1024;

FileError copyContents(File& from, File& to, const CopyStep& step) {
    std::vector<uint8_t> block(copyBlock);
    int64_t done = 0;
    for (;;) {
        FileError error;
        if (step && !step(block, done))
            return {ECANCELED};
        const int64_t got = from.read(block.data(), static_cast<int64_t>(block.size()), &error);
        if (error || got == 0)
            return error;
        if (to.write(block.data(), got, &error) != got)
            return error;
        done += got;
    }
}

bool isSameFile(const std::string& path, const struct stat& status) {
    struct stat other = {};
    return stat(path.c_str(), &other) == 0 && other.st_ino == status.st_ino && other.st_dev == status.st_dev;
}

} // namespace

FileError replaceFile(const std::string& path, std::span<const uint8_t> bytes) {
    FileReplacement replacement;
    if (FileError error = replacement.open(path))
        return error;
    FileError error;
    const auto count = static_cast<int64_t>(bytes.size());
    if (replacement.file().write(bytes.data(), count, &error) != count)
        return error;
    return replacement.putInPlace();
}

FileError copyFile(const std::string& from, const std::string& to, const CopyStep& step) {
    File source;
    constexpr uint32_t shared = openLocked | openSharesRead | openSharesWrite;
    if (FileError error = source.open(from, openRead | openSequential | openRegular | shared))
        return error;
    struct stat status = {};
    if (fstat(NativeFile::descriptorOf(source), &status) != 0)
        return lastFileError();
    if (isSameFile(to, status))
        return {EEXIST};
    FileReplacement replacement;
    if (FileError error = replacement.open(to, FileReplacement::Rights::ownerOnly))
        return error;
    if (FileError error = copyContents(source, replacement.file(), step))
        return error;
    // The copy is whole also where the volume keeps no rights or times.
    const int descriptor = NativeFile::descriptorOf(replacement.file());
    const timespec times[2] = {status.st_atim, status.st_mtim};
    [[maybe_unused]] int result = fchmod(descriptor, status.st_mode & plainRights);
    result = futimens(descriptor, times);
    return replacement.putInPlace();
}

} // namespace qorl::platform
