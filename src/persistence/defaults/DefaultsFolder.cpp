#include "persistence/defaults/DefaultsFolder.h"

#include "persistence/files/DurableFiles.h"
#include "persistence/files/FNPath.h"

#include <string>

namespace qorl::DefaultsFolder {

namespace {

constexpr const char* names[] = {"Defaults", "Defaults (Backup)", "Defaults (Trashed)", "Defaults (New)",
                                 "Defaults (New Backup)"};
constexpr const char* singleFile = "/Defaults.xml";
// Behind the name of a folder that goes.
constexpr const char* earlierSuffix = " (Earlier)";

std::string settingsFolder() {
    return FNPath::knownFolder(FNPath::userSettings);
}

std::string pathOf(const std::string& name) {
    if (settingsFolder().empty())
        return {};
    return platform::getCanonicalPath(settingsFolder() + name);
}

std::string pathOf(Place place) {
    return pathOf(std::string("/") + nameOf(place));
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

const char* nameOf(Place place) {
    return names[static_cast<int>(place)];
}

void makeSettings() {
    const std::string folder = settingsFolder();
    tellFailure(folder, "can't be made", createFoldersDurably(folder));
}

bool stands(Place place) {
    return platform::folderExists(pathOf(place));
}

void tidy() {
    for (const std::string& folder :
         {pathOf(Place::newStore), pathOf(Place::newBackup), pathOf(Place::store) + earlierSuffix,
          pathOf(Place::backup) + earlierSuffix, pathOf(Place::trash) + earlierSuffix})
        if (platform::folderExists(folder))
            tellFailure(folder, "can't be deleted", platform::deleteTree(folder));
}

bool discard(Place place) {
    const std::string path = pathOf(place);
    const std::string away = path + earlierSuffix;
    return clearPlace(away) && tellFailure(path, "can't be put away", moveDurably(path, away)) &&
           tellFailure(away, "can't be deleted", platform::deleteTree(away));
}

bool putInPlace(Place from, Place to) {
    const std::string source = pathOf(from);
    const std::string target = pathOf(to);
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

bool copy(Place from, Place to) {
    const std::string source = pathOf(from);
    return createAfresh(to) &&
           tellFailure(source, "can't be copied",
                       platform::copyTree(source, pathOf(to), platform::FileLinks::copyContents));
}

bool createAfresh(Place place) {
    const std::string path = pathOf(place);
    return clearPlace(path) && tellFailure(path, "can't be made", platform::createFolders(path));
}

bool copySingleFileInto(Place place) {
    const std::string from = pathOf(singleFile);
    return tellFailure(from, "can't be copied", platform::copyFile(from, pathOf(place) + singleFile));
}

bool copySingleFileOutOf(Place place) {
    const std::string from = pathOf(place) + singleFile;
    return tellFailure(from, "can't be copied", platform::copyFile(from, pathOf(singleFile)));
}

bool holdsSingleFile(Place place) {
    return platform::fileExists(pathOf(place) + singleFile);
}

} // namespace qorl::DefaultsFolder
