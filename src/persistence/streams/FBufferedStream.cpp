#include "persistence/streams/FBufferedStream.h"

#include "foundation/Cast.h"
#include "persistence/mounts/MountedStream.h"
#include "persistence/streams/FCompressionStream.h"
#include "persistence/streams/FFileStream.h"
#include "persistence/streams/FStreamProxy.h"
#include "persistence/streams/IStreamProxy.h"
#include "persistence/streams/StreamProgress.h"
#include "platform/System.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>

namespace qorl {

namespace {

constexpr int64_t farthest = std::numeric_limits<int64_t>::max();

int32_t sectorSizeOf(FStream& stream) {
    const auto* file = cast<FFileStream>(&stream);
    return file ? file->sectorSize() : 0;
}

bool isForWritingOnly(FStream& stream) {
    const auto* file = cast<FFileStream>(&stream);
    return file && !(file->mode() & FFileStream::readAccess);
}

/// Whether `stream`, or what it shows without a limit, inflates. What that knows of its size is a claim, and
/// a move to its end stays where somebody left it.
bool isInflating(IBStream* stream) {
    auto* own = cast<FStream>(stream);
    if (const auto* window = cast<FStreamProxy>(own))
        return window->length() == FStreamProxy::unlimited && isInflating(window->inner());
    if (const auto* mounted = cast<MountedStream>(own))
        return isInflating(mounted->inner());
    if (const auto* proxy = cast<IStreamProxy>(own))
        return isInflating(proxy->target());
    auto* compression = cast<FCompressionStream>(own);
    int64_t claimed = 0;
    return compression && compression->getStreamSize(claimed) == Result::ok;
}

/// Where the data of a stream that stands at `position` ends: where a move there leads, unless the size lies
/// behind that. -1 when it can't tell.
int64_t findEnd(FStream& stream, int64_t position) {
    if (isInflating(&stream))
        return -1;
    // The size first, since a file may grow in between. Streams of others say 0 for not knowing.
    const Ref<ISizeableStream> sizeable = sizeableOf(&stream);
    int64_t size = 0;
    const bool isTold = sizeable && sizeable->getStreamSize(size) == Result::ok;
    if (isTold && size < 0)
        return -1;
    const bool isSized = isTold && size > 0;
    const int64_t end = stream.seek(0, FStream::fromEnd);
    if (end < 0)
        return isSized ? size : -1;
    if (end != position)
        stream.seek(position, FStream::fromStart);
    return isSized && size > end ? -1 : end;
}

} // namespace

FBufferedStream::FBufferedStream(Ref<FStream> inner, int32_t blockSize, bool writable,
                                 Ref<StreamBufferPool> pool)
    : FBufferedStream(std::move(inner), blockSize, writable ? uint32_t{writableFlag} : 0u, std::move(pool)) {}

FBufferedStream::FBufferedStream(Ref<FStream> inner, int32_t blockSize, uint32_t flags,
                                 Ref<StreamBufferPool> pool)
    : inner_(std::move(inner)), blockSize_(blockSize < 1 ? CmBuffer::defaultGrowth : blockSize),
      monitorThreshold_(blockSize_), flags_(flags), pool_(std::move(pool)) {
    if (!inner_)
        return;
    takeOver(*inner_);
    position_ = std::max<int64_t>(inner_->tell(), 0);
    blockIndex_ = position_ / blockSize_;
    endPosition_ = findEnd(*inner_, position_);
    isEndKnown_ = endPosition_ >= 0;
    if (!isEndKnown_) {
        endPosition_ = farthest;
        flags_ &= ~uint32_t{writableFlag};
    }
    isWriteOnly_ = isForWritingOnly(*inner_);
    if (const int32_t sector = sectorSizeOf(*inner_); sector > 0 && (sector & (sector - 1)) == 0)
        sectorSize_ = sector;
    block_ = takeBlock();
    if (flags_ & readAhead)
        other_ = takeBlock();
    if (flags_ & readAhead && !other_.buffer)
        block_.buffer.reset();
}

FBufferedStream::~FBufferedStream() {
    flush();
    cutPadding();
    for (Ref<CmBuffer>* buffer : {&block_.buffer, &other_.buffer})
        if (pool_ && *buffer)
            pool_->giveBack(std::move(*buffer));
}

Ref<FBufferedStream> FBufferedStream::openBuffered(Ref<FStream> stream, int32_t blockSize) try {
    if (!stream)
        return nullptr;
    const int32_t sector = sectorSizeOf(*stream);
    if (sector > 0 && (blockSize < sector || blockSize % sector != 0))
        blockSize = sector;
    return make<FBufferedStream>(std::move(stream), blockSize, true);
} catch (const std::bad_alloc&) {
    return nullptr;
}

/// Room for a block; none without memory.
FBufferedStream::Block FBufferedStream::takeBlock() {
    const int64_t size = int64_t{blockSize_} + sectorSize_;
    if (size > std::numeric_limits<int32_t>::max())
        return {};
    const auto room = static_cast<int32_t>(size);
    Block block{.buffer = pool_ ? pool_->take(room) : StreamBufferPool::make(room)};
    if (!block.buffer)
        return block;
    void* place = block.buffer->data();
    auto left = static_cast<size_t>(room);
    if (sectorSize_ > 0)
        std::align(static_cast<size_t>(sectorSize_), static_cast<size_t>(blockSize_), place, left);
    block.bytes = static_cast<char*>(place);
    return block;
}

bool FBufferedStream::isCancelled(const void* buffer, int64_t count) {
    return progress_ && progress_->isCancelled(buffer, count);
}

int64_t FBufferedStream::read(void* buffer, int64_t count) {
    if (isCancelled(buffer, count))
        return -1;
    if (count < 1)
        return 0;
    if (!block_.buffer)
        return -1;
    int64_t done = 0;
    while (done < count) {
        const Block* block = findForReading();
        if (!block)
            return done > 0 ? done : -1;
        const auto offset = static_cast<int32_t>(position_ - blockStart());
        const int64_t piece = std::min<int64_t>(count - done, block->buffer->used() - offset);
        if (piece < 1)
            return done == 0 && block->isCut ? -1 : done;
        std::memcpy(static_cast<char*>(buffer) + done, block->bytes + offset, static_cast<size_t>(piece));
        done += piece;
        moveTo(position_ + piece, Crossing::byReading);
    }
    return done;
}

int64_t FBufferedStream::write(const void* buffer, int64_t count) {
    if (!(flags_ & writableFlag) || !isUsable() || isCancelled(buffer, count))
        return -1;
    if (count < 0 || count > farthest - position_) {
        flags_ |= failed;
        return -1;
    }
    for (int64_t done = 0; done < count;) {
        const auto offset = static_cast<int32_t>(position_ - blockStart());
        const int64_t piece = std::min<int64_t>(count - done, blockSize_ - offset);
        if (!prepareForWriting(offset, piece)) {
            flags_ |= failed;
            return -1;
        }
        CmBuffer& block = *block_.buffer;
        flags_ |= dirty;
        std::memcpy(block_.bytes + offset, static_cast<const char*>(buffer) + done,
                    static_cast<size_t>(piece));
        block.setUsedSize(std::max(block.used(), offset + static_cast<int32_t>(piece)));
        done += piece;
        endPosition_ = std::max(endPosition_, position_ + piece);
        moveTo(position_ + piece, Crossing::otherwise);
        if (flags_ & failed)
            return -1;
    }
    return count;
}

int64_t FBufferedStream::seek(int64_t offset, int32_t mode) {
    if (mode < fromStart || mode > fromEnd || (mode == fromEnd && !isEndKnown_))
        return -1;
    const int64_t from = mode == fromStart ? 0 : mode == fromHere ? position_ : endPosition_;
    int64_t target = 0;
    if (__builtin_add_overflow(from, offset, &target))
        target = farthest; // no place lies below 0, so it can't be the other end
    moveTo(target, Crossing::otherwise);
    return position_;
}

void FBufferedStream::moveTo(int64_t position, Crossing crossing) {
    if (!(flags_ & writableFlag))
        position = std::min(position, endPosition_);
    position = std::max<int64_t>(position, 0);
    if (progress_) {
        const int64_t told = progress_->position();
        const auto distance =
            static_cast<uint64_t>(std::max(told, position)) - static_cast<uint64_t>(std::min(told, position));
        if (distance > static_cast<uint64_t>(std::max<int64_t>(monitorThreshold_, 0)))
            progress_->setPosition(position);
    }
    position_ = position;
    const int64_t offset = position - blockStart();
    if (offset >= 0 && offset < blockSize_)
        return;
    blockIndex_ = position / blockSize_;
    if (!(flags_ & readAhead)) {
        flush();
    } else if (crossing == Crossing::otherwise) {
        store();
        std::swap(block_, other_);
    }
}

/// How much of the data lies in the block around the position.
int64_t FBufferedStream::bytesInBlock() const {
    return std::clamp<int64_t>(endPosition_ - blockStart(), 0, blockSize_);
}

/// The block around the position; null when the inner stream fails.
FBufferedStream::Block* FBufferedStream::findForReading() {
    if (other_.index == blockIndex_)
        return &other_;
    if (block_.index == blockIndex_)
        return &block_;
    Block& block = flags_ & readAhead ? other_ : block_;
    return load(block) < 0 ? nullptr : &block;
}

/// Makes `block_` the block around the position, with all bytes that `count` new ones at `offset` leave.
bool FBufferedStream::prepareForWriting(int32_t offset, int64_t count) {
    if (other_.index == blockIndex_) {
        store();
        std::swap(block_, other_);
    }
    // What was the last block of the data goes on with zeros now.
    if (position_ > endPosition_)
        other_.index = -1;
    if (block_.index != blockIndex_) {
        store();
        const int64_t there = bytesInBlock();
        const bool isReplaced = offset == 0 && count >= there;
        if (!isReplaced && load(block_) != there)
            return false;
        if (isReplaced)
            block_.buffer->clear();
        block_.index = blockIndex_;
    }
    const int32_t used = block_.buffer->used();
    if (offset > used)
        std::memset(block_.bytes + used, 0, static_cast<size_t>(offset - used));
    return true;
}

/// A stream that can't be moved can still be read on where it stands.
StreamPlace FBufferedStream::placeInner(int64_t start) {
    return inner_->tell() == start ? StreamPlace::there : putAt(*inner_, start);
}

/// Reads the block around the position. The bytes that came, -1 when the inner stream failed before the
/// first. A block that is not whole is asked for again next time.
int64_t FBufferedStream::load(Block& block) {
    store();
    block.index = -1;
    block.isCut = false;
    block.buffer->clear();
    const int64_t there = bytesInBlock();
    const int64_t start = blockStart();
    const StreamPlace place = there > 0 ? placeInner(start) : StreamPlace::there;
    if (place == StreamPlace::failed)
        return -1;
    int64_t done = 0;
    int64_t got = place == StreamPlace::there ? 1 : 0;
    // Past the caches a file is read by whole sectors; the last one of them just has fewer bytes.
    const int64_t wanted = sectorSize_ > 0 ? blockSize_ : there;
    for (; done < there && got > 0; done += std::max<int64_t>(got, 0))
        got = inner_->read(block.bytes + done, wanted - done);
    done = std::min(done, there);
    block.isCut = done < there && (got < 0 || !inner_->isValid());
    if (done == 0 && block.isCut)
        return -1;
    if (done > 0)
        seen_ = std::max(seen_, start + done);
    // An empty block may lie anywhere behind the end.
    if (!isEndKnown_ && done < there && !block.isCut && start <= seen_) {
        endPosition_ = start + done;
        isEndKnown_ = true;
    }
    block.buffer->setUsedSize(static_cast<int32_t>(done));
    if (done == bytesInBlock())
        block.index = blockIndex_;
    return done;
}

/// Writes the block if it was changed.
void FBufferedStream::store() {
    if (!(flags_ & dirty))
        return;
    flags_ &= ~uint32_t{dirty};
    const int32_t used = block_.buffer->used();
    std::memset(block_.bytes + used, 0, static_cast<size_t>(blockSize_ - used));
    const int64_t start = block_.index * blockSize_;
    isPadded_ = isPadded_ || start > endPosition_ - blockSize_;
    if (placeInner(start) != StreamPlace::there || inner_->write(block_.bytes, blockSize_) != blockSize_)
        flags_ |= failed;
}

void FBufferedStream::flush() {
    store();
    other_.index = -1;
    if (!isWriteOnly_)
        block_.index = -1;
}

void FBufferedStream::cutPadding() {
    const Ref<ISizeableStream> sizeable = isPadded_ ? sizeableOf(inner_.get()) : nullptr;
    int64_t size = 0;
    if (!sizeable)
        return;
    // Who holds a file can ask it whether it is valid.
    if (sizeable->getStreamSize(size) == Result::ok && size > endPosition_ &&
        sizeable->setStreamSize(endPosition_) != Result::ok)
        platform::debugOutput("a stream that was written in blocks keeps zeros behind its end");
    isPadded_ = false;
}

Result FBufferedStream::getStreamSize(int64_t& size) {
    size = isEndKnown_ ? endPosition_ : -1;
    return inner_ && isEndKnown_ ? Result::ok : Result::failure;
}

Result FBufferedStream::setStreamSize(int64_t size) {
    const bool mayChange = flags_ & writableFlag && isValid() && size >= 0;
    const Ref<ISizeableStream> sizeable = mayChange ? sizeableOf(inner_.get()) : nullptr;
    if (!sizeable)
        return Result::failure;
    flush();
    const Result result = isUsable() ? sizeable->setStreamSize(size) : Result::failure;
    if (result != Result::ok)
        return result;
    endPosition_ = size;
    const int64_t kept = std::clamp<int64_t>(size - block_.index * blockSize_, 0, block_.buffer->used());
    if (block_.index >= 0)
        block_.buffer->setUsedSize(static_cast<int32_t>(kept));
    return Result::ok;
}

} // namespace qorl
