#include "persistence/streams/FBufferStream.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace qorl {

int64_t FBufferStream::read(void* buffer, int64_t count) {
    if (!buffer_ || count < 1)
        return 0;
    const int64_t taken = std::min<int64_t>(count, buffer_->capacity() - buffer_->used());
    if (taken < 1) {
        rewind();
        return 0;
    }
    std::memcpy(buffer, buffer_->data() + buffer_->used(), static_cast<size_t>(taken));
    buffer_->setUsedSize(buffer_->used() + static_cast<int32_t>(taken));
    return taken;
}

int64_t FBufferStream::write(const void* buffer, int64_t count) {
    if (!buffer_ || count < 1 || count > std::numeric_limits<int32_t>::max())
        return 0;
    return buffer_->append(buffer, static_cast<int32_t>(count)) ? count : 0;
}

int64_t FBufferStream::seek(int64_t offset, int32_t mode) {
    if (!buffer_ || mode < fromStart || mode > fromEnd)
        return -1;
    int64_t target = offset;
    bool isTooFar = false;
    if (mode == fromHere)
        isTooFar = __builtin_add_overflow(int64_t{buffer_->used()}, offset, &target);
    else if (mode == fromEnd)
        isTooFar = __builtin_sub_overflow(int64_t{buffer_->capacity()}, offset, &target);
    target = std::max<int64_t>(target, 0);
    if (isTooFar || target > std::numeric_limits<int32_t>::max())
        return -1;
    const auto place = static_cast<int32_t>(target);
    if (place > buffer_->capacity() && !buffer_->setCapacity(place))
        return -1;
    buffer_->setUsedSize(place);
    return place;
}

void FBufferStream::rewind() {
    if (buffer_)
        buffer_->clear();
}

} // namespace qorl
