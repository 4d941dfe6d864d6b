#include "persistence/streams/FFileStream.h"

#include "persistence/streams/StreamPlace.h"
#include "persistence/streams/StreamProgress.h"

namespace qorl {

QORL_REGISTER(FFileStream, "FFileStream", FStream, 0)

FFileStream::FFileStream(platform::File file, uint32_t mode, int32_t sectorSize, Closed closed)
    : file_(std::move(file)), mode_(mode), sectorSize_(sectorSize), closed_(closed) {}

FFileStream::~FFileStream() {
    close();
}

void FFileStream::remember(const platform::FileError& error) {
    if (lastError_ == 0)
        lastError_ = error.code;
}

void FFileStream::rememberLoss(const platform::FileError& error) {
    remember(error);
    hasLost_ = hasLost_ || error;
}

void FFileStream::clearError() {
    lastError_ = 0;
    hasLost_ = false;
}

bool FFileStream::isCancelled(const void* buffer, int64_t count) {
    return progress_ && progress_->isCancelled(buffer, count);
}

void FFileStream::advance(int64_t count) {
    int64_t place = 0;
    if (progress_ && count > 0 && !__builtin_add_overflow(progress_->position(), count, &place))
        progress_->setPosition(place);
}

int64_t FFileStream::read(void* buffer, int64_t count) {
    if (isCancelled(buffer, count))
        return -1;
    if (count < 1)
        return 0;
    platform::FileError error;
    const int64_t got = file_.read(buffer, count, &error);
    rememberLoss(error);
    advance(got);
    return got;
}

int64_t FFileStream::write(const void* buffer, int64_t count) {
    if (isCancelled(buffer, count))
        return -1;
    if (count < 1)
        return 0;
    platform::FileError error;
    const int64_t written = file_.write(buffer, count, &error);
    rememberLoss(error);
    advance(written);
    return written;
}

int64_t FFileStream::seek(int64_t offset, int32_t mode) {
    platform::FileError error;
    const int64_t place = seekFile(file_, offset, mode, &error);
    remember(error);
    return place;
}

int64_t FFileStream::tell() {
    return seek(0, fromHere);
}

void FFileStream::rewind() {
    seek(0, fromStart);
    if (progress_)
        progress_->setPosition(0);
}

void FFileStream::flush() {
    if (mode_ & writeAccess)
        rememberLoss(file_.flushToDisk());
}

Result FFileStream::getStreamSize(int64_t& size) {
    size = getLength();
    return size < 0 ? Result::failure : Result::ok;
}

Result FFileStream::setStreamSize(int64_t size) {
    return setLength(size) ? Result::ok : Result::failure;
}

int64_t FFileStream::getLength() {
    platform::FileError error;
    const int64_t length = file_.getSize(&error);
    remember(error);
    return length;
}

bool FFileStream::setLength(int64_t length) {
    const platform::FileError error = file_.setSize(length);
    rememberLoss(error);
    return !error;
}

bool FFileStream::isAtEnd() {
    const int64_t place = tell();
    return place < 0 || place >= getLength();
}

void FFileStream::close() try {
    if (!file_.isOpen())
        return;
    rememberLoss(file_.close());
    if (closed_ && url() && (mode_ & (writeAccess | shareWrite)))
        closed_(*url());
} catch (const std::bad_alloc&) {
    // The file is closed; only those who watch it don't hear of it.
}

} // namespace qorl
