#include "persistence/defaults/DefaultsLock.h"

#include "persistence/files/DurableFiles.h"
#include "persistence/files/FNPath.h"

namespace qorl {

namespace {

constexpr const char* lockName = "/.Defaults.lock";

constinit int locksHeld = 0;
// By the last lock that was asked for.
constinit bool isWaitedInVain = false;

} // namespace

DefaultsLock::DefaultsLock(Patience patience) {
    const std::string folder = FNPath::knownFolder(FNPath::userSettings);
    if (locksHeld == 0 && platform::folderExists(folder)) {
        const bool waits = patience == Patience::full || !isWaitedInVain;
        lock_.emplace(folder + lockName, waits ? longestWait : std::chrono::milliseconds::zero());
        isWaitedInVain = isBusy();
        if (waits && isBusy())
            tellOfFile(folder, "another program holds the settings for too long; going on without waiting");
    }
    ++locksHeld;
}

DefaultsLock::~DefaultsLock() {
    --locksHeld;
}

} // namespace qorl
