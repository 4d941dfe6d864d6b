#include "persistence/mounts/FVfsHandler.h"

#include "persistence/mounts/FVFileSystem.h"

#include <system_error>

namespace qorl {

bool FVfsHandler::open() {
    close();
    auto* files = FVFileSystem::instance();
    if (!files)
        return false;
    stream_ = files->openFile(url_, FFileStream::readAccess | FFileStream::shareRead);
    size_ = stream_ ? files->getFileSize(*stream_) : -1;
    if (stream_)
        return true;
    // Services fail by what they are made of; that nothing is there tells more.
    const VfsResult result = FVFileSystem::lastResult();
    const bool isMissing = !files->exists(url_) && !FVFileSystem::lastResult();
    error_ = isMissing ? static_cast<int32_t>(std::errc::no_such_file_or_directory)
                       : result.default_error_condition().value();
    return false;
}

void FVfsHandler::close() {
    size_ = -1;
    stream_ = nullptr;
}

} // namespace qorl
