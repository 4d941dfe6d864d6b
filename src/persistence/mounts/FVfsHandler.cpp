#include "persistence/mounts/FVfsHandler.h"

#include "persistence/mounts/FMountTable.h"
#include "persistence/mounts/FVFileSystem.h"

#include <system_error>

namespace qorl {

bool FVfsHandler::open() {
    close();
    error_ = static_cast<int32_t>(std::errc::not_enough_memory);
    auto* mounts = FMountTable::instance();
    Ref<FFileSystem> files = mounts ? mounts->findInside(url_) : nullptr;
    if (!files)
        files = retain<FFileSystem>(FVFileSystem::instance());
    if (!files)
        return false;
    stream_ = files->openFile(url_, FFileStream::readAccess | FFileStream::shareRead, &error_);
    size_ = stream_ ? files->getFileSize(*stream_) : -1;
    return stream_ != nullptr;
}

void FVfsHandler::close() {
    size_ = -1;
    stream_ = nullptr;
}

} // namespace qorl
