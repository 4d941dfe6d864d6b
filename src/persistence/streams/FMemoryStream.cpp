#include "persistence/streams/FMemoryStream.h"

#include "foundation/Cast.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttributes.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace qorl {

QORL_REGISTER(FMemoryStream, "FMemoryStream", FStream, 0)
QORL_REGISTER_ID(FMemoryStream, IMemoryStream::iid)

namespace {

constexpr int64_t least = std::numeric_limits<int64_t>::min();
constexpr int64_t most = std::numeric_limits<int64_t>::max();
/// Beyond this there is no memory anywhere.
constexpr int64_t maxSize = most / 4;

/// A block of another size with the bytes of the old one, which is gone then; null when there is no memory.
char* regrown(char* bytes, int64_t oldSize, int64_t newSize) {
    if (void* block = std::realloc(bytes, static_cast<size_t>(newSize)))
        return static_cast<char*>(block);
    auto* block = static_cast<char*>(std::malloc(static_cast<size_t>(newSize)));
    if (block && bytes)
        std::memcpy(block, bytes, static_cast<size_t>(oldSize));
    if (block)
        std::free(bytes);
    return block;
}

} // namespace

FMemoryStream::FMemoryStream(void* memory, int64_t size)
    : FStream(memory_), capacity_(memory ? std::max<int64_t>(size, 0) : 0), ownsMemory_(false) {
    memory_ = {.bytes = static_cast<char*>(memory), .size = capacity_, .writable = capacity_};
}

FMemoryStream::FMemoryStream(std::string_view bytes)
    : FMemoryStream(const_cast<char*>(bytes.data()), static_cast<int64_t>(bytes.size())) {
    memory_.writable = 0;
    isReadOnly_ = true;
}

FMemoryStream::FMemoryStream(const FMemoryStream& other) : FStream(other, memory_) {
    write(other.data(), other.size());
}

FMemoryStream::~FMemoryStream() {
    forget();
}

CmObject* FMemoryStream::clone() const {
    auto copy = Ref<FMemoryStream>::adopt(detail::copyOf(*this));
    return copy && copy->size() == size() ? copy.detach() : nullptr;
}

/// Frees the block if it is owned.
void FMemoryStream::forget() {
    if (ownsMemory_)
        std::free(memory_.bytes);
    memory_ = {};
    capacity_ = 0;
}

/// An empty stream that can grow.
void FMemoryStream::forgetFailure() {
    forget();
    ownsMemory_ = true;
    isReadOnly_ = false;
    failed_ = false;
}

void FMemoryStream::fail() {
    failed_ = true;
    memory_.writable = 0;
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
    if (memory_.position < 0)
        return 0;
    const int64_t left = memory_.size - memory_.position;
    if (left <= 0) {
        memory_.position = memory_.size;
        return 0;
    }
    count = std::min(count, left);
    if (count < 1 || !buffer)
        return 0;
    std::memcpy(buffer, memory_.bytes + memory_.position, static_cast<size_t>(count));
    memory_.position += count;
    return count;
}

int64_t FMemoryStream::write(const void* buffer, int64_t count) {
    const int64_t position = memory_.position;
    if (failed_ || isReadOnly_ || position < 0 || !buffer || count < 1)
        return 0;
    int64_t end = most;
    if (__builtin_add_overflow(position, count, &end))
        end = most;
    if (end > memory_.writable) {
        const auto* from = static_cast<const char*>(buffer);
        // A part of this block moves with it.
        const bool isOwn = memory_.bytes && from >= memory_.bytes && from < memory_.bytes + capacity_;
        const int64_t place = isOwn ? from - memory_.bytes : 0;
        if (!reserve(end))
            return 0;
        buffer = isOwn ? memory_.bytes + place : from;
    }
    std::memmove(memory_.bytes + position, buffer, static_cast<size_t>(count));
    memory_.position = end;
    memory_.size = std::max(memory_.size, end);
    return count;
}

int64_t FMemoryStream::seek(int64_t offset, int32_t mode) {
    if (mode == fromStart)
        memory_.position = offset;
    else if (mode == fromHere && __builtin_add_overflow(memory_.position, offset, &memory_.position))
        memory_.position = offset < 0 ? least : most;
    else if (mode == fromEnd)
        memory_.position = memory_.size + std::min<int64_t>(offset, 0);
    else if (mode != fromHere)
        return -1;
    return memory_.position;
}

bool FMemoryStream::copyFrom(FStream& source, int64_t count) {
    auto* memory = cast<FMemoryStream>(&source);
    if (!memory || memory == this)
        return FStream::copyFrom(source, count);
    if (count < 1)
        return true;
    Memory& other = memory->memory_;
    const bool hasMore = other.position >= 0 && other.position < other.size;
    const int64_t taken = hasMore ? std::min(other.size - other.position, count) : 0;
    const int64_t written = taken > 0 ? write(other.bytes + other.position, taken) : 0;
    other.position += written;
    return written == count;
}

bool FMemoryStream::writeTo(FStream& destination) {
    if (memory_.position != 0)
        rewind();
    return memory_.size == 0 || destination.write(memory_.bytes, memory_.size) == memory_.size;
}

Result FMemoryStream::getStreamSize(int64_t& size) {
    size = memory_.size;
    return Result::ok;
}

Result FMemoryStream::setStreamSize(int64_t size) {
    resize(size);
    return failed_ ? Result::failure : Result::ok;
}

void FMemoryStream::resize(int64_t size) {
    if (size < 1)
        forget();
    else if (!ownsMemory_ && wholeSteps(std::max(size, capacity_)) != capacity_)
        fail();
    else if (reserve(size))
        memory_.size = size;
}

/// Beyond `maxSize` it is that, which no block has.
int64_t FMemoryStream::wholeSteps(int64_t size) {
    return (std::min(size, maxSize) + growthStep - 1) / growthStep * growthStep;
}

/// Room for `size` bytes; more of it holds zeros.
bool FMemoryStream::reserve(int64_t size) {
    if (size <= capacity_)
        return true;
    if (failed_ || !ownsMemory_) {
        fail();
        return false;
    }
    const int64_t wanted = wholeSteps(size);
    char* block = size > maxSize ? nullptr : regrown(memory_.bytes, capacity_, wanted);
    if (!block) {
        forget();
        fail();
        return false;
    }
    std::memset(block + capacity_, 0, static_cast<size_t>(wanted - capacity_));
    memory_.bytes = block;
    memory_.writable = capacity_ = wanted;
    return true;
}

bool FMemoryStream::readFrom(FObjectArchive* archive) {
    const bool isRead = loadBinary(archive->stream());
    if (failed_)
        throw std::bad_alloc();
    return isRead;
}

bool FMemoryStream::writeTo(FObjectArchive* archive) {
    return saveBinary(archive->stream());
}

bool FMemoryStream::storeAttributes(FAttributes* attributes) {
    attributes->setBinary("Data", memory_.bytes, memory_.size, true);
    return true;
}

bool FMemoryStream::restoreAttributes(FAttributes* attributes) {
    const int64_t size = attributes->getBinarySize("Data");
    forgetFailure();
    resize(size);
    if (memory_.size > 0)
        attributes->getBinaryData("Data", memory_.bytes, memory_.size);
    if (failed_)
        throw std::bad_alloc();
    rewind();
    return true;
}

bool FMemoryStream::loadBinary(FBinaryStream& source) {
    forgetFailure();
    int32_t count = 0;
    if (!source.readInt32(count) || count < 0)
        return false;
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
    if (memory_.size > std::numeric_limits<int32_t>::max())
        return false;
    return target.writeInt32(static_cast<int32_t>(memory_.size)) &&
           (memory_.size == 0 || target.write(memory_.bytes, memory_.size) == memory_.size);
}

} // namespace qorl
