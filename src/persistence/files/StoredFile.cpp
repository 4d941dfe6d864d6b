#include "persistence/files/StoredFile.h"

#include "persistence/files/DurableFiles.h"
#include "persistence/files/FNFileSystem.h"
#include "persistence/files/FileErrors.h"
#include "persistence/files/PathText.h"
#include "persistence/files/StoringStream.h"
#include "persistence/mounts/FMountTable.h"
#include "persistence/urls/FUrl.h"
#include "platform/FileReplacement.h"
#include "platform/System.h"

#include <new>
#include <string>
#include <utility>

namespace qorl {

namespace {

/// The name of a file with `text` before its extension.
std::string withText(const std::string& file, const std::string& text) {
    const size_t name = file.find_last_of('/') + 1;
    const size_t dot = file.find_last_of('.');
    return std::string(file).insert(dot == std::string::npos || dot <= name ? file.size() : dot, text);
}

/// Where the earlier file stands while a save takes its place.
std::string oldOf(const std::string& file) {
    return withText(file, "_old");
}

/// Takes away what would come back in the place of a file that goes.
bool removeOld(const std::string& file) {
    const std::string old = oldOf(platform::getCanonicalPath(file));
    return !platform::fileExists(old) || tellFailure(old, "can't be deleted", deleteDurably(old));
}

/// The disk has changed by then, whatever comes of the message.
void tellChange(int32_t kind, const std::string& file, const std::string& earlier = {}) try {
    auto* files = FNFileSystem::instance();
    if (!files)
        return;
    FNPath from(earlier);
    files->notify(kind, FNPath(file), earlier.empty() ? nullptr : &from);
} catch (const std::bad_alloc&) {
    platform::debugOutput("no memory to tell that a file was changed");
}

bool renameTold(const char* what, const std::string& from, const std::string& to) {
    if (!tellFailure(from, what, moveDurably(from, to)))
        return false;
    tellChange(FFileSystem::fileRenamed, to, from);
    return true;
}

/// Under "NAME (Damaged)", or with the first number that is free.
bool putAway(const std::string& file, const std::string& damaged) {
    const std::string away = firstFreeName(
        [&](const std::string& number) { return withText(damaged, " (Damaged" + number + ')'); });
    if (!away.empty())
        return renameTold("can't be put away", file, away);
    tellOfFile(file, "can't be put away: there are too many damaged ones already");
    return false;
}

bool tellNoMemory(const char* what) {
    platform::debugOutput(what);
    return false;
}

enum class StoredReading { done, missing, failed };

StoredReading readStored(const std::string& path, const StoredFile::Work& read) {
    platform::File file;
    const uint32_t mode = platform::openRead | platform::openSequential | platform::openRegular;
    if (const platform::FileError error = file.open(path, mode)) {
        if (error.isNotFound())
            return StoredReading::missing;
        tellFailure(path, "can't be opened", error);
        return StoredReading::failed;
    }
    const auto stream = make<FFileStream>(std::move(file), FFileStream::readAccess | FFileStream::sequential);
    stream->setUrl(make<FUrl>(FNPath(path)).get());
    if (!read(*stream))
        return StoredReading::failed;
    // What is missing at its end may be missing in what was read.
    return tellFailure(path, "can't be read", {stream->getLastError()}) ? StoredReading::done
                                                                        : StoredReading::failed;
}

/// Gives a file that an interrupted save left without its name that name again. Whether there is a file.
bool settle(const std::string& file) {
    if (platform::fileExists(file))
        return true;
    const std::string old = oldOf(file);
    if (!platform::fileExists(old))
        return false;
    tellOfFile(file, "an interrupted save left it without its name; it gets it back");
    const platform::FileError error = platform::FileReplacement::putBack(old, file);
    // Another program has gone on with its save.
    if (error.isExisting())
        return true;
    if (!tellFailure(old, "can't be put back", error))
        return false;
    tellChange(FFileSystem::fileRenamed, file, old);
    return true;
}

} // namespace

FNPath StoredFile::pathOf(const ConstString& name, const FFileType& type, FNPath::FolderKind folder) const {
    // Through the whole path, since the name may begin with a folder.
    const FNPath whole(name, folder);
    FNPath path(whole.toUtf8());
    path.setFileType(type);
    // The name is one, see `isNamed`.
    if (!whole.isValid() || !path.isValid() || type.extension().isEmpty())
        throw std::bad_alloc();
    return path;
}

/// A name has something behind its folders and leads to no other ones, and the user's settings lie somewhere.
bool StoredFile::isNamed(int32_t* error) const {
    const std::string name = PathText::toNative(name_);
    const auto parts = PathText::partsBelow(name, "/", PathText::Dots::refused);
    const bool isFile = parts && !parts->empty() && name.ends_with(parts->back());
    if (isFile && name.find('\0') == std::string::npos && !FNPath::knownFolder(FNPath::userSettings).empty())
        return true;
    tellError(error, std::errc::invalid_argument);
    tellOfFile('"' + name + '"', "is no name of a file in the user's settings");
    return false;
}

/// A name that has the extension of the type already gets the other one in its place.
std::string StoredFile::copyOf(const FFileType& copyType) const {
    std::string file = pathOf(name_, type_).toUtf8();
    const std::string ending = '.' + type_.extension().toUtf8();
    if (file.ends_with(ending))
        file.erase(file.size() - ending.size());
    return file + '.' + copyType.extension().toUtf8();
}

bool StoredFile::save(const Work& write, int32_t* error) const try {
    if (!isNamed(error))
        return false;
    const FNPath path = pathOf(name_, type_);
    const std::string file = path.toUtf8();
    platform::FileReplacement replacement;
    const auto open = [&] { return FMountTable::replacing(path, [&] { return replacement.open(file); }); };
    if (!tellFailure(file, "its folder can't be made", createFoldersDurably(PathText::folderOfNative(file)),
                     error) ||
        !tellFailure(file, "can't be stored", open(), error))
        return false;
    const auto stream = make<StoringStream>(replacement.file());
    const bool isWritten = write(*stream);
    if (!tellFailure(file, "can't be stored", stream->error(), error))
        return false;
    if (!isWritten) {
        tellOfFile(file, "can't be stored: its contents could not be made");
        return false;
    }
    if (replacement.holdsSameBytes())
        return true;
    if (!tellFailure(file, "can't be stored", replacement.putInPlace(oldOf(replacement.target())), error))
        return false;
    tellChange(FFileSystem::fileWritten, file);
    return true;
} catch (const std::bad_alloc&) {
    tellError(error, std::errc::not_enough_memory);
    return tellNoMemory("no memory to store a file");
}

bool StoredFile::load(const Work& read, Found* found) const {
    Found own = Found::missing;
    Found& state = found ? *found : own;
    try {
        // Until more is known.
        state = Found::missing;
        return isNamed() && loadNamed(read, state);
    } catch (const std::bad_alloc&) {
        state = Found::unknown;
        return tellNoMemory("no memory to read a stored file");
    }
}

bool StoredFile::loadNamed(const Work& read, Found& state) const {
    const std::string file = platform::getCanonicalPath(pathOf(name_, type_).toUtf8());
    platform::FileReplacement::removeLeftovers(file);
    settle(file);
    const StoredReading reading = readStored(file, read);
    if (reading == StoredReading::done) {
        state = Found::whole;
        return true;
    }
    const StoredReading oldReading = readStored(oldOf(file), read);
    if (oldReading == StoredReading::done) {
        tellOfFile(file, "can't be read; what an interrupted save kept is taken");
        state = Found::kept;
        return true;
    }
    if (reading == StoredReading::failed || oldReading == StoredReading::failed) {
        state = Found::unreadable;
        return false;
    }
    return readStored(pathOf(name_, type_, FNPath::sharedData).toUtf8(), read) == StoredReading::done;
}

bool StoredFile::exists(int32_t* error) const try {
    return isNamed() && settle(platform::getCanonicalPath(pathOf(name_, type_).toUtf8()));
} catch (const std::bad_alloc&) {
    tellError(error, std::errc::not_enough_memory);
    return tellNoMemory("no memory to look for a stored file");
}

bool StoredFile::remove() const try {
    if (!isNamed())
        return false;
    const std::string file = pathOf(name_, type_).toUtf8();
    if (!settle(platform::getCanonicalPath(file))) {
        tellOfFile(file, "can't be deleted: there is none");
        return false;
    }
    if (!removeOld(file) || !tellFailure(file, "can't be deleted", deleteDurably(file)))
        return false;
    tellChange(FFileSystem::fileDeleted, file);
    return true;
} catch (const std::bad_alloc&) {
    return tellNoMemory("no memory to delete a stored file");
}

bool StoredFile::rename(const ConstString& newName) const try {
    if (!isNamed() || !StoredFile(newName, type_).isNamed())
        return false;
    const std::string file = pathOf(name_, type_).toUtf8();
    std::string target = pathOf(newName, type_).toUtf8();
    if (newName.toUtf8().find('/') == std::string::npos)
        target = PathText::folderOfNative(file) + PathText::nameOfNative(target);
    if (!settle(platform::getCanonicalPath(file))) {
        tellOfFile(file, "can't be renamed: there is none");
        return false;
    }
    // What was kept for another file of the new name would come back in the place of this one.
    return removeOld(file) && renameTold("can't be renamed", file, target) && removeOld(target);
} catch (const std::bad_alloc&) {
    return tellNoMemory("no memory to rename a stored file");
}

bool StoredFile::setAside(Found found) const try {
    if (!isNamed())
        return false;
    const std::string file = platform::getCanonicalPath(pathOf(name_, type_).toUtf8());
    const std::string old = oldOf(file);
    return (!platform::fileExists(file) || putAway(file, file)) &&
           (found == Found::kept || !platform::fileExists(old) || putAway(old, file));
} catch (const std::bad_alloc&) {
    return tellNoMemory("no memory to put a stored file away");
}

bool StoredFile::backup(const FFileType& copyType) const try {
    if (!isNamed())
        return false;
    const std::string file = pathOf(name_, type_).toUtf8();
    const std::string copy = copyOf(copyType);
    if (!settle(platform::getCanonicalPath(file))) {
        tellOfFile(file, "can't be copied: there is none");
        return false;
    }
    const platform::FileError failure =
        FMountTable::replacing(FNPath(copy), [&] { return platform::copyFile(file, copy); });
    if (!tellFailure(file, "can't be copied", failure))
        return false;
    tellChange(FFileSystem::fileWritten, copy);
    return true;
} catch (const std::bad_alloc&) {
    return tellNoMemory("no memory to copy a stored file");
}

bool StoredFile::isBackupThere(const FFileType& copyType) const {
    const std::string copy = isNamed() ? copyOf(copyType) : std::string();
    if (copy.empty())
        return false;
    platform::FileReplacement::removeLeftovers(copy);
    return platform::fileExists(copy);
}

bool StoredFile::hasBackup(const FFileType& copyType, int32_t* error) const try {
    return isBackupThere(copyType);
} catch (const std::bad_alloc&) {
    tellError(error, std::errc::not_enough_memory);
    return tellNoMemory("no memory to look for the copy of a stored file");
}

bool StoredFile::restore(const FFileType& copyType) const try {
    if (!isBackupThere(copyType))
        return false;
    // A rename takes the copy over the file and the copy away in one step.
    const std::string file = platform::getCanonicalPath(pathOf(name_, type_).toUtf8());
    return renameTold("can't be restored", copyOf(copyType), file);
} catch (const std::bad_alloc&) {
    return tellNoMemory("no memory to restore a stored file");
}

bool StoredFile::removeBackup(const FFileType& copyType) const try {
    if (!isBackupThere(copyType))
        return true;
    const std::string copy = copyOf(copyType);
    if (!tellFailure(copy, "can't be deleted", deleteDurably(copy)))
        return false;
    tellChange(FFileSystem::fileDeleted, copy);
    return true;
} catch (const std::bad_alloc&) {
    return tellNoMemory("no memory to delete the copy of a stored file");
}

} // namespace qorl
