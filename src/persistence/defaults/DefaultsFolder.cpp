#include "persistence/defaults/DefaultsFolder.h"

#include "foundation/text/StoredBytes.h"
#include "persistence/defaults/Md5.h"
#include "persistence/files/DurableFiles.h"
#include "persistence/files/FNPath.h"

namespace qorl {

namespace {

// Behind the name of a folder that goes.
constexpr const char* earlierSuffix = " (Earlier)";

std::string settingsFolder() {
    return FNPath::knownFolder(FNPath::userSettings);
}

std::string folderNamed(const char* name) {
    if (settingsFolder().empty())
        return {};
    return platform::getCanonicalPath(settingsFolder() + '/' + name);
}

/// Clears the place of a folder. What is no folder was put there by somebody else, and is kept.
bool clearPlace(const std::string& folder) {
    if (platform::folderExists(folder))
        return tellFailure(folder, "can't be deleted", platform::deleteTree(folder));
    if (!platform::fileExists(folder))
        return true;
    const std::string away =
        firstFreeName([&](const std::string& number) { return folder + " (File" + number + ')'; });
    tellOfFile(folder,
               "a file stands in the place of a folder" + (away.empty() ? away : "; it is kept as " + away));
    return !away.empty() && tellFailure(folder, "can't be put away", platform::moveFile(folder, away));
}

} // namespace

void DefaultsFolder::makeSettings() {
    const std::string folder = settingsFolder();
    tellFailure(folder, "can't be made", createFoldersDurably(folder));
}

bool DefaultsFolder::stands(const char* folder) {
    return platform::folderExists(folderNamed(folder));
}

void DefaultsFolder::tidy() {
    for (const std::string& folder :
         {folderNamed(newStore), folderNamed(newBackup), folderNamed(store) + earlierSuffix,
          folderNamed(backup) + earlierSuffix, folderNamed(trash) + earlierSuffix})
        if (platform::folderExists(folder))
            tellFailure(folder, "can't be deleted", platform::deleteTree(folder));
}

bool DefaultsFolder::discard(const char* folder) {
    const std::string path = folderNamed(folder);
    const std::string away = path + earlierSuffix;
    return clearPlace(away) && tellFailure(path, "can't be put away", moveDurably(path, away)) &&
           tellFailure(away, "can't be deleted", platform::deleteTree(away));
}

bool DefaultsFolder::putInPlace(const char* from, const char* to) {
    const std::string source = folderNamed(from);
    const std::string target = folderNamed(to);
    const std::string away = target + earlierSuffix;
    const bool hasEarlier = platform::folderExists(target);
    // No folder that holds anything can be replaced in one step.
    if (hasEarlier ? !clearPlace(away) || !tellFailure(target, "can't be put away", moveDurably(target, away))
                   : !clearPlace(target))
        return false;
    if (!tellFailure(source, "can't be put in its place", moveDurably(source, target))) {
        if (hasEarlier && !platform::folderExists(target))
            tellFailure(away, "can't be put back", moveDurably(away, target));
        return false;
    }
    if (hasEarlier)
        tellFailure(away, "can't be deleted", platform::deleteTree(away));
    return true;
}

bool DefaultsFolder::copy(const char* from, const char* to) {
    const std::string source = folderNamed(from);
    return createAfresh(to) &&
           tellFailure(source, "can't be copied",
                       platform::copyTree(source, folderNamed(to), platform::FileLinks::copyContents));
}

bool DefaultsFolder::copyFileInto(const char* folder, const char* file) {
    const std::string from = folderNamed(file);
    return tellFailure(from, "can't be copied", platform::copyFile(from, folderNamed(folder) + '/' + file));
}

bool DefaultsFolder::copyFileOutOf(const char* folder, const char* file) {
    const std::string from = folderNamed(folder) + '/' + file;
    return tellFailure(from, "can't be copied", platform::copyFile(from, folderNamed(file)));
}

bool DefaultsFolder::holdsFile(const char* folder, const char* file) {
    return platform::fileExists(folderNamed(folder) + '/' + file);
}

bool DefaultsFolder::createAfresh(const char* folder) {
    const std::string path = folderNamed(folder);
    return clearPlace(path) && tellFailure(path, "can't be made", platform::createFolders(path));
}

std::u16string DefaultsFolder::keyOf(const ConstString& group) {
    return group.isWide() ? std::u16string(group.view16())
                          : std::u16string(text::widenStored(group.view8()).view16());
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
