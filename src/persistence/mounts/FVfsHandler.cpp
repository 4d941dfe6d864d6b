#include "persistence/mounts/FVfsHandler.h"

#include "persistence/mounts/FVFileSystem.h"

#include <utility>

namespace qorl {

bool FVfsHandler::open() {
    close();
    auto* files = FVFileSystem::instance();
    if (!files)
        return false;
    stream_ = files->openFile(url_, FFileStream::readAccess | FFileStream::shareRead);
    size_ = stream_ ? files->getFileSize(*stream_) : -1;
    return stream_ != nullptr;
}

void FVfsHandler::close() {
    size_ = -1;
    stream_ = nullptr;
}

} // namespace qorl
