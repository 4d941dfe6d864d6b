#include "persistence/defaults/DefaultsFolder.h"

#include "persistence/defaults/Md5.h"
#include "persistence/files/FNPath.h"
#include "persistence/xml/XmlText.h"
#include "platform/System.h"

namespace qorl {

namespace {

// Behind the name of a folder that goes.
constexpr const char* leaving = " (Earlier)";
constexpr const char* lockName = "/.Defaults.lock";

constinit int locksHeld = 0;
// By the last lock that was asked for.
constinit bool isWaitedInVain = false;

std::string settingsFolder() {
    return FNPath::knownFolder(FNPath::userSettings);
}

std::string folderNamed(const char* name) {
    if (settingsFolder().empty())
        return {};
    return platform::getCanonicalPath(settingsFolder() + '/' + name);
}

void tellOfFolder(const std::string& folder, const std::string& text) {
    platform::debugOutput(folder + ": " + text);
}

bool succeeds(const char* what, const std::string& folder, const platform::FileError& error) {
    if (error)
        tellOfFolder(folder, std::string(what) + ": " + error.getText());
    return !error;
}

/// The disk knows of it when this returns. Where it can't be told, the folder has moved all the same.
platform::FileError moveFolder(const std::string& from, const std::string& to) {
    if (const platform::FileError error = platform::moveFile(from, to))
        return error;
    succeeds("may stand under its earlier name after a power cut", to,
             platform::flushFolder(to.substr(0, to.find_last_of('/') + 1)));
    return {};
}

/// Clears the place of a folder. What is no folder was put there by somebody else, and is kept.
bool clearPlace(const std::string& folder) {
    if (platform::folderExists(folder))
        return succeeds("can't be deleted", folder, platform::deleteTree(folder));
    if (!platform::fileExists(folder))
        return true;
    constexpr int mostKept = 1000;
    for (int number = 1; number <= mostKept; ++number) {
        const std::string away = folder + " (File" + (number > 1 ? ' ' + std::to_string(number) : "") + ')';
        if (platform::fileExists(away) || platform::folderExists(away))
            continue;
        tellOfFolder(folder, "a file stands in the place of a folder; it is kept as " + away);
        return succeeds("can't be put away", folder, platform::moveFile(folder, away));
    }
    tellOfFolder(folder, "a file stands in the place of a folder");
    return false;
}

} // namespace

DefaultsLock::DefaultsLock(Patience patience) {
    const std::string folder = settingsFolder();
    if (locksHeld == 0 && platform::folderExists(folder)) {
        const bool waits = patience == Patience::full || !isWaitedInVain;
        lock_.emplace(folder + lockName, waits ? longestWait : std::chrono::milliseconds::zero());
        isWaitedInVain = isBusy();
        if (waits && isBusy())
            tellOfFolder(folder, "another program holds the settings for too long; going on without waiting");
    }
    ++locksHeld;
}

DefaultsLock::~DefaultsLock() {
    --locksHeld;
}

void DefaultsFolder::makeSettings() {
    const std::string folder = settingsFolder();
    succeeds("can't be made", folder, platform::createFolders(folder));
}

bool DefaultsFolder::stands(const char* folder) {
    return platform::folderExists(folderNamed(folder));
}

void DefaultsFolder::tidy() {
    for (const std::string& folder :
         {folderNamed(newStore), folderNamed(newBackup), folderNamed(store) + leaving,
          folderNamed(backup) + leaving, folderNamed(trash) + leaving})
        if (platform::folderExists(folder))
            succeeds("can't be deleted", folder, platform::deleteTree(folder));
}

bool DefaultsFolder::discard(const char* folder) {
    const std::string path = folderNamed(folder);
    const std::string away = path + leaving;
    return clearPlace(away) && succeeds("can't be put away", path, moveFolder(path, away)) &&
           succeeds("can't be deleted", away, platform::deleteTree(away));
}

bool DefaultsFolder::putInPlace(const char* from, const char* to) {
    const std::string source = folderNamed(from);
    const std::string target = folderNamed(to);
    const std::string away = target + leaving;
    const bool hasEarlier = platform::folderExists(target);
    // No folder that holds anything can be replaced in one step.
    if (hasEarlier ? !clearPlace(away) || !succeeds("can't be put away", target, moveFolder(target, away))
                   : !clearPlace(target))
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

bool DefaultsFolder::copyFileInto(const char* folder, const char* file) {
    const std::string from = folderNamed(file);
    return succeeds("can't be copied", from, platform::copyFile(from, folderNamed(folder) + '/' + file));
}

bool DefaultsFolder::copyFileOutOf(const char* folder, const char* file) {
    const std::string from = folderNamed(folder) + '/' + file;
    return succeeds("can't be copied", from, platform::copyFile(from, folderNamed(file)));
}

bool DefaultsFolder::holdsFile(const char* folder, const char* file) {
    return platform::fileExists(folderNamed(folder) + '/' + file);
}

bool DefaultsFolder::createAfresh(const char* folder) {
    const std::string path = folderNamed(folder);
    return clearPlace(path) && succeeds("can't be made", path, platform::createFolders(path));
}

std::u16string DefaultsFolder::keyOf(const ConstString& group) {
    return group.isWide() ? std::u16string(group.view16())
                          : std::u16string(XmlText::widen(group.view8()).view16());
}

std::string DefaultsFolder::fileOf(const ConstString& group) {
    std::string bytes;
    for (const char16_t unit : keyOf(group)) {
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
