#include "persistence/streams/FBlockStreamReader.h"

#include "persistence/streams/StreamBufferPool.h"
#include "persistence/streams/StreamPlace.h"

#include <algorithm>
#include <cstring>

namespace qorl {

FBlockStreamReader::FBlockStreamReader(Ref<FStream> inner, int32_t blockSize) : inner_(std::move(inner)) {
    if (!inner_)
        return;
    takeOver(*inner_);
    position_ = std::max<int64_t>(inner_->tell(), 0);
    block_ = StreamBufferPool::make(blockSize < 1 ? CmBuffer::defaultGrowth : blockSize);
}

int64_t FBlockStreamReader::takeKept(char* buffer, int64_t count) {
    const int64_t taken = std::min<int64_t>(count, remaining_);
    std::memcpy(buffer, block_->data() + blockOffset_, static_cast<size_t>(taken));
    blockOffset_ += static_cast<int32_t>(taken);
    remaining_ -= static_cast<int32_t>(taken);
    return taken;
}

void FBlockStreamReader::forget() {
    blockOffset_ = remaining_ = 0;
}

int64_t FBlockStreamReader::read(void* buffer, int64_t count) {
    if (count < 1)
        return 0;
    if (!block_)
        return -1;
    auto* bytes = static_cast<char*>(buffer);
    const int64_t blockSize = block_->capacity();
    int64_t done = takeKept(bytes, count);
    while (done < count) {
        const int64_t whole = (count - done) / blockSize * blockSize;
        const int64_t got =
            whole > 0 ? inner_->read(bytes + done, whole) : inner_->read(block_->data(), blockSize);
        forget();
        hasFailed_ = hasFailed_ || got < 0;
        if (got < 1)
            break;
        if (whole > 0) {
            done += got;
            continue;
        }
        remaining_ = static_cast<int32_t>(got);
        done += takeKept(bytes + done, count - done);
    }
    position_ += done;
    // A stream that begins anew once it was asked at its end would be read for ever.
    if (const int64_t place = done < count ? inner_->tell() : -1; place >= 0 && place != position_)
        inner_->seek(position_, fromStart);
    return done;
}

int64_t FBlockStreamReader::seek(int64_t offset, int32_t mode) {
    int64_t target = 0;
    if (!block_ || mode < fromStart || mode >= fromEnd ||
        __builtin_add_overflow(mode == fromHere ? position_ : 0, offset, &target) || target < 0)
        return -1;
    const int64_t move = target - position_;
    if (move > remaining_ || move < -blockOffset_) {
        if (putAt(*inner_, target) != StreamPlace::there) {
            // Where it stood before; elsewhere it would give other bytes.
            putAt(*inner_, position_ + remaining_);
            const int64_t place = inner_->tell();
            hasFailed_ = hasFailed_ || (place >= 0 && place != position_ + remaining_);
            return -1;
        }
        forget();
        hasFailed_ = false;
    } else {
        blockOffset_ += static_cast<int32_t>(move);
        remaining_ -= static_cast<int32_t>(move);
    }
    position_ = target;
    return position_;
}

void FBlockStreamReader::flush() {
    if (!inner_)
        return;
    inner_->flush();
    forget();
    hasFailed_ = false;
    position_ = std::max<int64_t>(inner_->tell(), 0);
}

} // namespace qorl
