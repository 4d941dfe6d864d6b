#include "platform/linux/FileSharing.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sched.h>
#include <sys/random.h>

namespace qorl::platform {

namespace {

/// Each claim of an opener is a lock on a byte of the claim's range, far behind the end of any file.
enum Claim : int { reads, writes, letsNobodyRead, letsNobodyWrite, claimCount };

/// Which claim of others a claim does not go with.
constexpr Claim opposites[claimCount] = {letsNobodyRead, letsNobodyWrite, reads, writes};

constexpr off_t firstRange = off_t{1} << 62;
constexpr off_t rangeLength = off_t{1} << 32;
constexpr int mostAttempts = 100;

bool isMade(Claim claim, uint32_t mode) {
    switch (claim) {
    case reads: return mode & openRead;
    case writes: return mode & openWrite;
    case letsNobodyRead: return !(mode & openSharesRead);
    case letsNobodyWrite: return !(mode & openSharesWrite);
    case claimCount: break;
    }
    return false;
}

struct flock rangeOf(Claim claim, int type) {
    struct flock range = {};
    range.l_type = static_cast<int16_t>(type);
    range.l_whence = SEEK_SET;
    range.l_start = firstRange + claim * rangeLength;
    range.l_len = rangeLength;
    return range;
}

/// Locks of one's own descriptor are none of others.
bool othersMake(Claim claim, int descriptor) {
    struct flock others = rangeOf(claim, F_WRLCK);
    return fcntl(descriptor, F_OFD_GETLK, &others) == 0 && others.l_type != F_UNLCK;
}

/// Whether others claim what does not go with `mode`.
bool isRefused(int descriptor, uint32_t mode) {
    for (int i = 0; i < claimCount; ++i)
        if (isMade(Claim(i), mode) && othersMake(opposites[i], descriptor))
            return true;
    return false;
}

/// Who can read the file shares the first byte of a range. Who can only write it may not lock for sharing,
/// and takes any other one alone.
bool lockByte(int descriptor, Claim claim, uint32_t mode) {
    const bool canShare = mode & openRead || !(mode & openWrite);
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        uint32_t place = 0;
        if (!canShare && getrandom(&place, sizeof place, 0) != sizeof place)
            return false;
        struct flock lock = rangeOf(claim, canShare ? F_RDLCK : F_WRLCK);
        lock.l_start += canShare ? 0 : std::max<off_t>(place, 1);
        lock.l_len = 1;
        if (fcntl(descriptor, F_OFD_SETLK, &lock) == 0)
            return true;
        if (errno != EAGAIN && errno != EACCES)
            return false;
    }
    return false;
}

void unlockAll(int descriptor) {
    struct flock all = rangeOf(reads, F_UNLCK);
    all.l_len = claimCount * rangeLength;
    fcntl(descriptor, F_OFD_SETLK, &all);
}

} // namespace

FileError shareFile(int descriptor, uint32_t mode) {
    // Claims are made before they are looked at once more, so that of two who come at one moment at least one
    // sees the other. It steps back, and is refused if the other one stays.
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        if (isRefused(descriptor, mode))
            return {EBUSY};
        for (int i = 0; i < claimCount; ++i)
            if (isMade(Claim(i), mode) && !lockByte(descriptor, Claim(i), mode)) {
                unlockAll(descriptor);
                return {};
            }
        if (!isRefused(descriptor, mode))
            return {};
        unlockAll(descriptor);
        sched_yield();
    }
    return {EBUSY};
}

bool isBeingWritten(int descriptor) {
    return othersMake(writes, descriptor);
}

} // namespace qorl::platform
