#include "persistence/urls/FUrlFileHandler.h"

#include "persistence/files/FNFileSystem.h"

#include <new>
#include <system_error>
#include <utility>

namespace qorl {

bool FUrlFileHandler::open() try {
    close();
    error_ = 0;
    auto* files = FNFileSystem::instance();
    FNPath path;
    if (!files || !url_.getNativePath(path))
        return false;
    stream_ = files->openFile(path, FFileStream::readAccess | FFileStream::shareRead, &error_);
    size_ = stream_ ? files->getFileSize(*stream_) : -1;
    return stream_ != nullptr;
} catch (const std::bad_alloc&) {
    close();
    error_ = static_cast<int32_t>(std::errc::not_enough_memory);
    return false;
}

void FUrlFileHandler::close() {
    size_ = -1;
    if (!stream_)
        return;
    if (auto* files = FNFileSystem::instance())
        files->closeFile(std::move(stream_));
    stream_ = nullptr;
}

} // namespace qorl
