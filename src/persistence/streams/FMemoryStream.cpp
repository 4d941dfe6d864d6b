#include "persistence/streams/FMemoryStream.h"

#include "foundation/Cast.h"
#include "persistence/attributes/FAttributes.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace qorl {

QORL_REGISTER(FMemoryStream, "FMemoryStream", FStream, 0)
QORL_REGISTER_ID(FMemoryStream, IMemoryStream::iid)

namespace {

/// Beyond this a size is the fault of a damaged file, not a wish.
constexpr int64_t maxSize = std::numeric_limits<int64_t>::max() / 4;

} // namespace

FMemoryStream::FMemoryStream(void* memory, int64_t size)
    : buffer_(static_cast<char*>(memory)), capacity_(size), size_(size), ownsMemory_(false) {}

FMemoryStream::FMemoryStream(std::string_view bytes)
    : FMemoryStream(const_cast<char*>(bytes.data()), static_cast<int64_t>(bytes.size())) {
    readOnly_ = true;
}

FMemoryStream::FMemoryStream(const FMemoryStream& other) : FStream(other) {
    setByteOrder(other.byteOrder());
    write(other.buffer_, other.size_);
    position_ = other.position_;
}

FMemoryStream::~FMemoryStream() {
    forget();
}

/// Frees the block if it is owned and stands for an empty one of our own.
void FMemoryStream::forget() {
    if (ownsMemory_)
        std::free(buffer_);
    buffer_ = nullptr;
    capacity_ = size_ = position_ = 0;
}

Result FMemoryStream::queryInterface(const InterfaceId& id, void** out) {
    if (detail::answerFace<ISizeableStream>(this, id, out))
        return Result::ok;
    if (id == IMemoryStream::iid) {
        addRef();
        *out = this;
        return Result::ok;
    }
    return FStream::queryInterface(id, out);
}

int64_t FMemoryStream::read(void* buffer, int64_t count) {
    if (position_ < 0)
        return 0;
    const int64_t left = size_ - position_;
    if (left <= 0) {
        position_ = size_;
        return 0;
    }
    count = std::min(count, left);
    if (count < 1 || !buffer)
        return 0;
    std::memcpy(buffer, buffer_ + position_, static_cast<size_t>(count));
    position_ += count;
    return count;
}

int64_t FMemoryStream::write(const void* buffer, int64_t count) {
    if (failed_ || readOnly_ || position_ < 0 || !buffer || count < 1)
        return 0;
    if (position_ > maxSize || count > maxSize)
        return 0;
    const int64_t end = position_ + count;
    if (end > capacity_)
        resize(end);
    if (failed_)
        return 0;
    size_ = std::max(size_, end);
    std::memcpy(buffer_ + position_, buffer, static_cast<size_t>(count));
    position_ = end;
    return count;
}

int64_t FMemoryStream::seek(int64_t offset, int32_t mode) {
    if (mode == fromStart)
        position_ = offset;
    else if (mode == fromHere && __builtin_add_overflow(position_, offset, &position_))
        position_ = offset < 0 ? std::numeric_limits<int64_t>::min() : std::numeric_limits<int64_t>::max();
    else if (mode == fromEnd)
        position_ = std::min(size_ + std::min<int64_t>(offset, 0), size_);
    return position_;
}

bool FMemoryStream::copyFrom(FStream& source, int64_t count) {
    if (count < 1)
        return true;
    auto* memory = cast<FMemoryStream>(&source);
    if (!memory || memory == this)
        return FStream::copyFrom(source, count);
    const bool hasMore = memory->position_ >= 0 && memory->position_ < memory->size_;
    const int64_t taken = hasMore ? std::min(memory->size_ - memory->position_, count) : 0;
    const int64_t written = taken > 0 ? write(memory->buffer_ + memory->position_, taken) : 0;
    memory->position_ += written;
    return written == count;
}

bool FMemoryStream::writeTo(FStream& destination) {
    if (position_ != 0)
        rewind();
    return size_ == 0 || destination.write(buffer_, size_) == size_;
}

Result FMemoryStream::getStreamSize(int64_t& size) {
    size = size_;
    return Result::ok;
}

Result FMemoryStream::setStreamSize(int64_t size) {
    resize(size);
    return failed_ ? Result::failure : Result::ok;
}

void FMemoryStream::resize(int64_t size) {
    if (size < 1) {
        forget();
        return;
    }
    if (size > maxSize) {
        failed_ = true;
        return;
    }
    const int64_t wanted = (std::max(size, capacity_) + growthStep - 1) / growthStep * growthStep;
    if (wanted == capacity_ || size <= capacity_) {
        size_ = size;
        return;
    }
    if (!ownsMemory_) {
        failed_ = true;
        return;
    }
    auto* block = static_cast<char*>(std::realloc(buffer_, static_cast<size_t>(wanted)));
    if (!block) {
        forget();
        failed_ = true;
        return;
    }
    std::memset(block + capacity_, 0, static_cast<size_t>(wanted - capacity_));
    buffer_ = block;
    capacity_ = wanted;
    size_ = size;
}

bool FMemoryStream::storeAttributes(FAttributes* attributes) {
    attributes->setBinary("Data", buffer_, size_, true);
    return true;
}

bool FMemoryStream::restoreAttributes(FAttributes* attributes) {
    const int64_t size = attributes->getBinarySize("Data");
    forget();
    ownsMemory_ = true;
    readOnly_ = failed_ = false;
    if (size > 0) {
        resize(size);
        if (!failed_)
            attributes->getBinaryData("Data", buffer_, size);
    }
    rewind();
    return !failed_;
}

bool FMemoryStream::loadBinary(FBinaryStream& source) {
    int32_t count = 0;
    if (!source.readInt32(count))
        return false;
    forget();
    ownsMemory_ = true;
    readOnly_ = failed_ = false;
    // In pieces, so that a damaged count costs no more memory than the source has bytes.
    char piece[4096];
    while (count > 0) {
        const int64_t wanted = std::min<int64_t>(count, sizeof piece);
        if (source.read(piece, wanted) != wanted || write(piece, wanted) != wanted)
            return false;
        count -= static_cast<int32_t>(wanted);
    }
    rewind();
    return true;
}

bool FMemoryStream::saveBinary(FBinaryStream& target) {
    if (size_ > std::numeric_limits<int32_t>::max())
        return false;
    return target.writeInt32(static_cast<int32_t>(size_)) &&
           (size_ == 0 || target.write(buffer_, size_) == size_);
}

} // namespace qorl
