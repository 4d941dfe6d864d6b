#include "persistence/files/StoringStream.h"

#include "persistence/streams/StreamPlace.h"

namespace qorl {

int64_t StoringStream::read(void* buffer, int64_t count) {
    platform::FileError error;
    const int64_t got = count < 1 ? 0 : file_.read(buffer, count, &error);
    if (!error_)
        error_ = error;
    return got;
}

int64_t StoringStream::write(const void* buffer, int64_t count) {
    if (error_)
        return -1;
    return count < 1 ? 0 : file_.write(buffer, count, &error_);
}

int64_t StoringStream::seek(int64_t offset, int32_t mode) {
    return seekFile(file_, offset, mode);
}

Result StoringStream::getStreamSize(int64_t& size) {
    size = file_.getSize();
    return size < 0 ? Result::failure : Result::ok;
}

Result StoringStream::setStreamSize(int64_t size) {
    if (!error_)
        error_ = file_.setSize(size);
    return error_ ? Result::failure : Result::ok;
}

} // namespace qorl
