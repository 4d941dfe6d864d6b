#include "persistence/defaults/DefaultsFolder.h"

#include "persistence/defaults/Md5.h"
#include "persistence/files/FNPath.h"
#include "platform/Files.h"
#include "platform/System.h"

#include <new>

namespace qorl {

namespace {

constexpr const char* discarded = " (Trashed)";

std::string folderNamed(const char* name) {
    const FNPath path(name, FNPath::userSettings);
    if (!path.isValid())
        throw std::bad_alloc();
    return platform::getCanonicalPath(path.toUtf8());
}

std::string madeSettingsFolder() {
    std::string folder = FNPath::knownFolder(FNPath::userSettings);
    platform::createFolders(folder);
    return folder;
}

bool succeeds(const char* what, const std::string& folder, const platform::FileError& error) {
    if (error)
        platform::debugOutput(folder + ": " + what + ": " + error.getText());
    return !error;
}

/// The disk knows of it when this returns.
platform::FileError moveFolder(const std::string& from, const std::string& to) {
    const platform::FileError error = platform::moveFile(from, to);
    return error ? error : platform::flushFolder(to.substr(0, to.find_last_of('/') + 1));
}

platform::FileError deleteIfStanding(const std::string& folder) {
    return platform::folderExists(folder) ? platform::deleteTree(folder) : platform::FileError();
}

} // namespace

DefaultsLock::DefaultsLock() : lock_(madeSettingsFolder()) {}

bool DefaultsFolder::stands(const char* folder) {
    return platform::folderExists(folderNamed(folder));
}

void DefaultsFolder::tidy() {
    for (const char* folder : {newStore, newBackup})
        deleteIfStanding(folderNamed(folder));
    for (const char* folder : {store, DefaultsFolder::backup})
        deleteIfStanding(folderNamed(folder) + discarded);
}

bool DefaultsFolder::discard(const char* folder) {
    const std::string path = folderNamed(folder);
    const std::string away = path + discarded;
    return succeeds("can't be deleted", away, deleteIfStanding(away)) &&
           succeeds("can't be put away", path, moveFolder(path, away)) &&
           succeeds("can't be deleted", away, platform::deleteTree(away));
}

bool DefaultsFolder::putInPlace(const char* from, const char* to) {
    const std::string source = folderNamed(from);
    const std::string target = folderNamed(to);
    const std::string away = target + discarded;
    const bool hasEarlier = platform::folderExists(target);
    // No folder that holds anything can be replaced in one step.
    if (hasEarlier && !(succeeds("can't be deleted", away, deleteIfStanding(away)) &&
                        succeeds("can't be put away", target, moveFolder(target, away))))
        return false;
    if (!succeeds("can't be put in its place", source, moveFolder(source, target))) {
        if (hasEarlier && !platform::folderExists(target))
            succeeds("can't be put back", away, moveFolder(away, target));
        return false;
    }
    if (hasEarlier)
        succeeds("can't be deleted", away, platform::deleteTree(away));
    return true;
}

bool DefaultsFolder::copy(const char* from, const char* to) {
    const std::string source = folderNamed(from);
    return createAfresh(to) &&
           succeeds("can't be copied", source,
                    platform::copyTree(source, folderNamed(to), platform::FileLinks::copyContents));
}

bool DefaultsFolder::createAfresh(const char* folder) {
    const std::string path = folderNamed(folder);
    return succeeds("can't be deleted", path, deleteIfStanding(path)) &&
           succeeds("can't be made", path, platform::createFolders(path));
}

std::string DefaultsFolder::fileOf(const ConstString& group) {
    std::string bytes;
    for (const char16_t unit : group.toUtf16()) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return md5Digits(bytes.data(), bytes.size());
}

std::string DefaultsFolder::earlierFileOf(const ConstString& group) {
    const std::string bytes = group.toUtf8();
    return md5Digits(bytes.data(), bytes.size());
}

} // namespace qorl
