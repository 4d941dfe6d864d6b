#include "persistence/files/StoredFile.h"

#include "persistence/files/FNFileSystem.h"
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

std::string folderHolding(const std::string& file) {
    return file.substr(0, file.find_last_of('/') + 1);
}

void tellOf(const std::string& file, const char* text) {
    platform::debugOutput(file + ": " + text);
}

/// Tells of a failure, and gives it to the caller.
bool tellFailure(const std::string& file, const char* what, const platform::FileError& failure,
                 int32_t* error = nullptr) {
    if (error)
        *error = failure.code;
    if (failure)
        tellOf(file, (std::string(what) + ": " + failure.getText()).c_str());
    return !failure;
}

/// A rename has to be known to the disk before anything counts on it.
platform::FileError moveWithin(const std::string& from, const std::string& to) {
    const platform::FileError error = platform::moveFile(from, to);
    return error ? error : platform::flushFolder(folderHolding(to));
}

/// With every folder above it, known to the disk: a file is lost with its folder.
platform::FileError makeFolder(const std::string& folder) {
    if (folder.empty() || platform::folderExists(folder))
        return {};
    const std::string parent = folderHolding(folder.substr(0, folder.size() - 1));
    if (platform::FileError error = makeFolder(parent))
        return error;
    const platform::FileError error = platform::createFolder(folder);
    if (error && !platform::folderExists(folder))
        return error;
    // One that can't be flushed may still keep what is in it.
    platform::flushFolder(parent);
    return {};
}

/// Takes away what would come back in the place of a file that goes.
bool removeOld(const std::string& file) {
    const std::string old = oldOf(platform::getCanonicalPath(file));
    return !platform::fileExists(old) || tellFailure(old, "can't be deleted", platform::deleteFile(old));
}

/// The new file of a save. It remembers its first failure, so that bytes that got lost fail the save also
/// when nobody looked at the results.
class StoringStream : public FStream, public ISizeableStream {
    QORL_CLASS(StoringStream, FStream)
    QORL_FACES(StoringStream, FStream, ISizeableStream)

public:
    explicit StoringStream(platform::File& file) : file_(file) {}

    int64_t read(void* buffer, int64_t count) override {
        return count < 1 ? 0 : file_.read(buffer, count, &error_);
    }
    int64_t write(const void* buffer, int64_t count) override {
        if (error_)
            return -1;
        return count < 1 ? 0 : file_.write(buffer, count, &error_);
    }
    int64_t seek(int64_t offset, int32_t mode) override {
        using platform::SeekOrigin;
        constexpr SeekOrigin origins[] = {SeekOrigin::start, SeekOrigin::current, SeekOrigin::end};
        return mode < fromStart || mode > fromEnd ? -1 : file_.seek(offset, origins[mode]);
    }
    int64_t tell() override { return file_.getPosition(); }
    void rewind() override { file_.seek(0, platform::SeekOrigin::start); }
    bool isValid() const override { return !error_; }
    Result getStreamSize(int64_t& size) override {
        size = file_.getSize();
        return size < 0 ? Result::failure : Result::ok;
    }
    Result setStreamSize(int64_t size) override {
        if (!error_)
            error_ = file_.setSize(size);
        return error_ ? Result::failure : Result::ok;
    }

    const platform::FileError& error() const { return error_; }

private:
    platform::File& file_;
    platform::FileError error_;
};

/// The file is stored by then, whatever comes of the message.
void tellWritten(const FPath& path) try {
    if (auto* files = FNFileSystem::instance())
        files->notify(FFileSystem::fileWritten, path);
} catch (const std::bad_alloc&) {
    platform::debugOutput("no memory to tell that a file was written");
}

enum class StoredReading { done, missing, closed, refused };

/// `closed`: it is there and can't be opened.
StoredReading readStored(const std::string& path, const StoredFile::Work& read) {
    platform::File file;
    const uint32_t mode = platform::openRead | platform::openSequential | platform::openRegular;
    if (const platform::FileError error = file.open(path, mode)) {
        if (error.isNotFound())
            return StoredReading::missing;
        tellFailure(path, "can't be opened", error);
        return StoredReading::closed;
    }
    const auto stream = make<FFileStream>(std::move(file), FFileStream::readAccess | FFileStream::sequential);
    stream->setUrl(make<FUrl>(FNPath(path)).get());
    if (!read(*stream))
        return StoredReading::refused;
    // What is missing at its end may be missing in what was read.
    return tellFailure(path, "can't be read", {stream->getLastError()}) ? StoredReading::done
                                                                        : StoredReading::refused;
}

} // namespace

FNPath StoredFile::pathOf(const ConstString& name, const FFileType& type, FNPath::FolderKind folder) const {
    // Through the whole path, since the name may begin with a folder.
    const FNPath whole(name, folder);
    FNPath path(whole.toUtf8());
    path.setFileType(type);
    if (!whole.isValid() || !path.isValid() || type.extension().isEmpty())
        throw std::bad_alloc();
    return path;
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
    const FNPath path = pathOf(name_, type_);
    const std::string file = path.toUtf8();
    platform::FileReplacement replacement;
    if (!tellFailure(file, "its folder can't be made", makeFolder(folderHolding(file)), error) ||
        !tellFailure(file, "can't be stored", replacement.open(file), error))
        return false;
    const auto stream = make<StoringStream>(replacement.file());
    const bool isWritten = write(*stream);
    if (!tellFailure(file, "can't be stored", stream->error(), error) || !isWritten)
        return false;
    if (replacement.holdsSameBytes())
        return true;
    if (!tellFailure(file, "can't be stored", replacement.putInPlace(oldOf(replacement.target())), error))
        return false;
    tellWritten(path);
    return true;
} catch (const std::bad_alloc&) {
    if (error)
        *error = platform::FileError::outOfMemory().code;
    return false;
}

bool StoredFile::load(const Work& read, Found* found) const try {
    Found own = Found::missing;
    Found& state = found ? *found : own;
    // Until it is known.
    state = Found::unreadable;
    const std::string file = platform::getCanonicalPath(pathOf(name_, type_).toUtf8());
    const std::string old = oldOf(file);
    platform::FileReplacement::removeLeftovers(file);
    const StoredReading reading = readStored(file, read);
    if (reading == StoredReading::done) {
        state = Found::whole;
        return true;
    }
    const StoredReading oldReading = readStored(old, read);
    if (oldReading == StoredReading::done) {
        tellOf(file, reading == StoredReading::missing
                         ? "an interrupted save left it without its name; it gets it back"
                         : "can't be read; what an interrupted save kept is taken");
        // Another program may have gone on with its save meanwhile.
        const bool isSettled = reading == StoredReading::missing && !platform::fileExists(file);
        if (isSettled && tellFailure(file, "can't be put back", moveWithin(old, file)))
            state = Found::whole;
        return true;
    }
    if (reading == StoredReading::missing && oldReading == StoredReading::missing)
        state = Found::missing;
    if (reading == StoredReading::refused)
        return false;
    return readStored(pathOf(name_, type_, FNPath::sharedData).toUtf8(), read) == StoredReading::done;
} catch (const std::bad_alloc&) {
    return false;
}

/// Gives a file that an interrupted save left without its name that name again. Whether there is a file.
bool StoredFile::settle() const {
    const std::string file = platform::getCanonicalPath(pathOf(name_, type_).toUtf8());
    if (platform::fileExists(file))
        return true;
    const std::string old = oldOf(file);
    return platform::fileExists(old) && tellFailure(file, "can't be put back", moveWithin(old, file));
}

bool StoredFile::exists() const try { return settle(); } catch (const std::bad_alloc&) {
    return false;
}

bool StoredFile::remove() const try {
    const FNPath path = pathOf(name_, type_);
    auto* files = FNFileSystem::instance();
    return files && settle() && removeOld(path.toUtf8()) && files->deleteFile(path);
} catch (const std::bad_alloc&) {
    return false;
}

bool StoredFile::rename(const ConstString& newName) const try {
    const std::string file = pathOf(name_, type_).toUtf8();
    const std::string target = pathOf(newName, type_).toUtf8();
    return settle() && removeOld(file) && tellFailure(file, "can't be renamed", moveWithin(file, target));
} catch (const std::bad_alloc&) {
    return false;
}

bool StoredFile::setAside() const try {
    constexpr int mostKept = 1000;
    const std::string file = platform::getCanonicalPath(pathOf(name_, type_).toUtf8());
    if (!platform::fileExists(file))
        return true;
    for (int number = 1; number <= mostKept; ++number) {
        const std::string suffix = number > 1 ? ' ' + std::to_string(number) : std::string();
        const std::string away = withText(file, " (Damaged" + suffix + ')');
        if (!platform::fileExists(away))
            return tellFailure(file, "can't be put away", moveWithin(file, away));
    }
    return false;
} catch (const std::bad_alloc&) {
    return false;
}

bool StoredFile::backup(const FFileType& copyType) const try {
    if (!settle())
        return false;
    const std::string file = pathOf(name_, type_).toUtf8();
    return tellFailure(file, "can't be copied", platform::copyFile(file, copyOf(copyType)));
} catch (const std::bad_alloc&) {
    return false;
}

bool StoredFile::hasBackup(const FFileType& copyType) const try {
    const std::string copy = copyOf(copyType);
    platform::FileReplacement::removeLeftovers(copy);
    return platform::fileExists(copy);
} catch (const std::bad_alloc&) {
    return false;
}

bool StoredFile::restore(const FFileType& copyType) const try {
    if (!hasBackup(copyType))
        return false;
    // A rename takes the copy over the file and the copy away in one step.
    const std::string file = platform::getCanonicalPath(pathOf(name_, type_).toUtf8());
    return tellFailure(file, "can't be restored", moveWithin(copyOf(copyType), file));
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace qorl
