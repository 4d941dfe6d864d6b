// Settings that are put aside, brought back and done away with.
#include "persistence/defaults/DefaultsForm.h"
#include "persistence/defaults/DefaultsLock.h"
#include "persistence/defaults/FDefaultPool.h"
#include "platform/System.h"

#include <new>

namespace qorl {

using DefaultsFolder::Place;

namespace {

StoredFile singleStoreFile() {
    return DefaultsForm::settingsFile(DefaultsForm::groups);
}

} // namespace

/// Whether another start has brought back what this run had put aside.
bool FDefaultPool::isBackupTaken() const {
    return state_.hasBackup && !hasBackup();
}

bool FDefaultPool::hasBackup() const {
    if (state_.folderMode)
        return DefaultsFolder::stands(Place::backup);
    int32_t error = 0;
    const bool isThere = singleStoreFile().hasBackup(FFileType::settingsBackupFile(), &error);
    if (error)
        throw std::bad_alloc();
    return isThere;
}

bool FDefaultPool::trash() try {
    const DefaultsLock lock;
    const bool isFolder = state_.folderMode && DefaultsFolder::stands(Place::store);
    const StoredFile file = singleStoreFile();
    // In folder mode the next start would read an older single file again.
    const bool isFile = DefaultsForm::stands(file);
    bool isGone = !isFolder || DefaultsFolder::putInPlace(Place::store, Place::trash);
    isGone &= !isFile || file.rename(DefaultsFolder::nameOf(Place::trash));
    // The next start would bring them back.
    if (hasBackup())
        isGone &= state_.folderMode ? DefaultsFolder::discard(Place::backup)
                                    : file.removeBackup(FFileType::settingsBackupFile());
    if (isGone)
        state_.hasBackup = state_.isBackupStuck = false;
    return isGone;
} catch (const std::bad_alloc&) {
    platform::debugOutput("no memory to do away with the settings");
    return false;
}

bool FDefaultPool::backup() try {
    // Settings that could not be brought back are worth more than those of the run without them.
    if (state_.isBackupStuck) {
        platform::debugOutput(
            "settings that were put aside could not be brought back, so no others are put aside");
        return false;
    }
    const DefaultsLock lock;
    const StoredFile file = singleStoreFile();
    const bool isFolder = state_.folderMode && DefaultsFolder::stands(Place::store);
    if (!isFolder && !DefaultsForm::stands(file))
        return true;
    if (!isFolder && !preferKept())
        return false;
    if (!state_.folderMode)
        state_.hasBackup = file.backup(FFileType::settingsBackupFile());
    else if (isFolder)
        state_.hasBackup = DefaultsFolder::copy(Place::store, Place::newBackup) &&
                           DefaultsFolder::putInPlace(Place::newBackup, Place::backup);
    else // It has not moved to a folder yet.
        state_.hasBackup = DefaultsFolder::createAfresh(Place::newBackup) &&
                           DefaultsFolder::copySingleFileInto(Place::newBackup) &&
                           DefaultsFolder::putInPlace(Place::newBackup, Place::backup);
    return state_.hasBackup;
} catch (const std::bad_alloc&) {
    platform::debugOutput("no memory to put the settings aside");
    return false;
}

bool FDefaultPool::restore() try {
    state_.isBackupStuck = true;
    const DefaultsLock lock;
    const bool isThere = hasBackup();
    // What is half made may be another program's work.
    if (state_.folderMode && !lock.isBusy())
        DefaultsFolder::tidy();
    const bool isRestored =
        isThere &&
        (state_.folderMode ? restoreFolder() : singleStoreFile().restore(FFileType::settingsBackupFile()));
    state_.isBackupStuck = isThere && !isRestored;
    state_.hasBackup &= !isRestored;
    return isRestored;
} catch (const std::bad_alloc&) {
    platform::debugOutput("no memory to bring the settings back that were put aside");
    return false;
}

bool FDefaultPool::restoreFolder() {
    if (!DefaultsFolder::holdsSingleFile(Place::backup))
        return DefaultsFolder::putInPlace(Place::backup, Place::store);
    // It was made before the store moved to a folder. The copy goes last, so that a crash changes nothing.
    return (!DefaultsFolder::stands(Place::store) || DefaultsFolder::discard(Place::store)) &&
           DefaultsFolder::copySingleFileOutOf(Place::backup) && DefaultsFolder::discard(Place::backup);
}

} // namespace qorl
