#include "foundation/containers/CmBuffer.h"

#include "persistence/archive/FObjectArchive.h"
#include "persistence/streams/FStream.h"

#include <qorl/Ref.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace qorl {

QORL_REGISTER(CmBuffer, "CmBuffer", CmObject, 0)

CmBuffer::CmBuffer(int32_t capacity, int32_t growth) : growth_(growth) {
    setCapacity(capacity);
}

CmBuffer::CmBuffer(const void* bytes, int32_t count, int32_t growth) : growth_(growth) {
    append(bytes, count);
}

CmBuffer::CmBuffer(const CmBuffer& other) : CmObject(other), growth_(other.growth_) {
    *this = other;
}

CmBuffer& CmBuffer::operator=(const CmBuffer& other) {
    if (this == &other || !reallocate(other.roundedUp(other.capacity_)))
        return *this;
    if (other.capacity_ > 0) {
        std::memcpy(bytes_, other.bytes_, static_cast<size_t>(other.capacity_));
        std::memset(bytes_ + other.capacity_, 0, static_cast<size_t>(capacity_ - other.capacity_));
    }
    used_ = other.used_;
    growth_ = other.growth_;
    return *this;
}

CmBuffer::~CmBuffer() {
    std::free(bytes_);
}

CmObject* CmBuffer::clone() const {
    Ref<CmBuffer> copy = Ref<CmBuffer>::adopt(new (std::nothrow) CmBuffer(*this));
    return copy && copy->capacity_ >= capacity_ ? copy.detach() : nullptr;
}

bool CmBuffer::reallocate(int32_t capacity) {
    if (capacity == capacity_)
        return true;
    if (capacity == 0) {
        std::free(std::exchange(bytes_, nullptr));
    } else {
        auto* bytes = static_cast<char*>(std::realloc(bytes_, static_cast<size_t>(capacity)));
        if (!bytes)
            return false;
        if (capacity > capacity_)
            std::memset(bytes + capacity_, 0, static_cast<size_t>(capacity - capacity_));
        bytes_ = bytes;
    }
    capacity_ = capacity;
    used_ = std::min(used_, capacity);
    return true;
}

int32_t CmBuffer::roundedUp(int32_t size) const {
    const int64_t step = growth();
    const int64_t rounded = (size + step - 1) / step * step;
    // Where the last step doesn't fit into the type any more, the exact size has to do.
    return rounded > std::numeric_limits<int32_t>::max() ? size : static_cast<int32_t>(rounded);
}

bool CmBuffer::setCapacity(int32_t size) {
    return size >= 0 && reallocate(roundedUp(size));
}

bool CmBuffer::setUsedSize(int32_t size) {
    if (size < 0 || size > capacity_)
        return false;
    used_ = size;
    return true;
}

bool CmBuffer::makeRoom(int32_t count) {
    if (count > std::numeric_limits<int32_t>::max() - used_)
        return false;
    return used_ + count <= capacity_ || setCapacity(used_ + count);
}

bool CmBuffer::append(const void* bytes, int32_t count) {
    if (count <= 0)
        return count == 0;
    // A part of this buffer moves with it.
    const auto* from = static_cast<const char*>(bytes);
    const bool isOwn = bytes_ && from >= bytes_ && from < bytes_ + capacity_;
    const auto place = isOwn ? from - bytes_ : 0;
    if (!bytes || !makeRoom(count))
        return false;
    std::memmove(bytes_ + used_, isOwn ? bytes_ + place : from, static_cast<size_t>(count));
    used_ += count;
    return true;
}

bool CmBuffer::prepend(const void* bytes, int32_t count) {
    const int32_t old = used_;
    if (count <= 0 || !append(bytes, count))
        return count == 0;
    std::rotate(bytes_, bytes_ + old, bytes_ + used_);
    return true;
}

void CmBuffer::fill(char byte) {
    if (capacity_ > 0)
        std::memset(bytes_, byte, static_cast<size_t>(capacity_));
}

bool CmBuffer::toHex(CmBuffer& text) const {
    constexpr char digits[] = "0123456789ABCDEF";
    if (&text == this) {
        CmBuffer result(0, growth_);
        if (!toHex(result))
            return false;
        std::swap(text.bytes_, result.bytes_);
        std::swap(text.capacity_, result.capacity_);
        std::swap(text.used_, result.used_);
        return true;
    }
    const int64_t length = int64_t{used_} * 2 + 1;
    if (length > std::numeric_limits<int32_t>::max())
        return false;
    if (length > text.capacity_ && !text.setCapacity(static_cast<int32_t>(length)))
        return false;
    char* out = text.bytes_;
    for (const char c : bytes()) {
        *out++ = digits[static_cast<uint8_t>(c) >> 4];
        *out++ = digits[static_cast<uint8_t>(c) & 15];
    }
    *out = '\0';
    text.used_ = static_cast<int32_t>(length);
    return true;
}

bool CmBuffer::writeTo(FObjectArchive* archive) {
    FStream& stream = archive->stream();
    return stream.writeInt32(capacity_) && stream.writeInt32(used_) &&
           (capacity_ == 0 || stream.write(bytes_, capacity_) == capacity_);
}

bool CmBuffer::readFrom(FObjectArchive* archive) {
    FStream& stream = archive->stream();
    int32_t capacity = 0;
    int32_t used = 0;
    if (!stream.readInt32(capacity) || !stream.readInt32(used) || capacity < 0 || used < 0 || used > capacity)
        return false;
    // A damaged count must not cost more memory than there are bytes for it.
    constexpr int32_t firstPiece = 1 << 16;
    CmBuffer read;
    while (read.capacity_ < capacity) {
        const int32_t start = read.capacity_;
        const int32_t piece = std::min(capacity - start, std::max(start, firstPiece));
        if (!read.reallocate(start + piece))
            throw std::bad_alloc();
        if (stream.read(read.bytes_ + start, piece) != piece)
            return false;
    }
    if (!read.reallocate(roundedUp(capacity)))
        throw std::bad_alloc();
    std::swap(bytes_, read.bytes_);
    std::swap(capacity_, read.capacity_);
    used_ = used;
    return true;
}

} // namespace qorl
