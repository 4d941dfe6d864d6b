#pragma once

#include "foundation/containers/CmBuffer.h"
#include "persistence/streams/FStream.h"
#include "persistence/streams/StreamBufferPool.h"
#include "persistence/streams/StreamPlace.h"

namespace qorl {

/// Reads and writes another stream in whole blocks, and keeps the block around its position.
///
/// Nobody else moves or writes the inner stream meanwhile. Each block goes out whole, as unbuffered files
/// want it: until the buffered stream is gone the inner one may be up to a block longer than what was
/// written, by zeros; it is then cut to the exact length, if its size can be set: a file where that fails is
/// not valid any more, and the debug output tells of it. Writing fails for good, and
/// `isValid` is false, once a block could not be written or read back; it is false also while the inner
/// stream's is.
///
/// A write into a part of a block reads the rest of it first, as far as it lies in the data, also in the last
/// block: no byte is lost. A file that was opened for writing only can be written from front to back, also
/// with flushes between, or from the start of a block on; what would have to be read there fails.
///
/// An inner stream that can't tell its end, such as one that inflates or a window without a limit on it, is
/// read until it gives nothing more. Until that end was met there is no size and no place `fromEnd`, and
/// nothing can be written. Threading: as the inner stream.
class FBufferedStream : public FStream, public ISizeableStream {
    QORL_CLASS(FBufferedStream, FStream)
    QORL_FACES(FBufferedStream, FStream, ISizeableStream)

public:
    /// Keeps a reference on `inner`, takes over its URL and byte order, and begins at its position.
    /// `blockSize` in bytes; below 1 it is 4096. With a `pool` the block comes from there and goes back.
    FBufferedStream(Ref<FStream> inner, int32_t blockSize, bool writable,
                    Ref<StreamBufferPool> pool = nullptr);
    FBufferedStream(const FBufferedStream&) = delete;
    ~FBufferedStream() override;

    /// For reading and writing. Over a file that knows its sector size, a `blockSize` that is no multiple of
    /// it becomes the sector size. Null for a null `stream`; without memory null or not valid.
    static Ref<FBufferedStream> openBuffered(Ref<FStream> stream, int32_t blockSize);

    /// -1 when cancelled, without a block, and when the inner stream fails before a byte came. Few bytes or
    /// none are the end unless `isValid` is false.
    int64_t read(void* buffer, int64_t count) override;
    /// `count`, or -1: what did not reach the inner stream is then lost. A negative count ends all writing.
    int64_t write(const void* buffer, int64_t count) override;
    /// Cut to the start, and to the end unless the stream is writable. -1 for an unknown mode, and for
    /// `fromEnd` while the end isn't known.
    int64_t seek(int64_t offset, int32_t mode) override;
    int64_t tell() override { return position_; }
    void rewind() override { seek(0, fromStart); }
    /// Writes the block if it was changed, and reads it anew when it is next asked for, if it can be read.
    void flush() override;
    bool isValid() const override { return isUsable() && inner_->isValid(); }
    void setProgress(StreamProgress* monitor) override { progress_ = monitor; }
    /// `Result::failure`, and -1, while the end isn't known.
    Result getStreamSize(int64_t& size) override;
    /// `Result::failure` unless the stream is writable, its block could be written, and the inner one's size
    /// can be set.
    Result setStreamSize(int64_t size) override;

    /// The progress monitor is told of a new position that is more than this many bytes away from what it
    /// knows; a block at first.
    void setMonitorThreshold(int64_t bytes) { monitorThreshold_ = bytes; }
    int32_t blockSize() const { return blockSize_; }

protected:
    enum Flag : uint32_t { writableFlag = 1, dirty = 2, failed = 4, readAhead = 8 };

    FBufferedStream(Ref<FStream> inner, int32_t blockSize, uint32_t flags, Ref<StreamBufferPool> pool);

private:
    /// What a buffer holds: the block of that index, or nothing for -1.
    struct Block {
        Ref<CmBuffer> buffer;
        /// In the buffer, where the sectors of the file want it.
        char* bytes = nullptr;
        int64_t index = -1;
        /// The inner stream failed behind the bytes that are there.
        bool isCut = false;
    };
    enum class Crossing { byReading, otherwise };

    bool isUsable() const { return block_.buffer && !(flags_ & failed); }
    Block takeBlock();
    int64_t blockStart() const { return blockIndex_ * blockSize_; }
    void moveTo(int64_t position, Crossing crossing);
    bool isCancelled(const void* buffer, int64_t count);
    int64_t bytesInBlock() const;
    Block* findForReading();
    bool prepareForWriting(int32_t offset, int64_t count);
    StreamPlace placeInner(int64_t start);
    int64_t load(Block& block);
    void store();
    void cutPadding();

    Ref<FStream> inner_;
    Block block_;
    /// The block before, of a stream that reads ahead.
    Block other_;
    int32_t blockSize_;
    /// Of a file whose transfers go past the caches; otherwise 0.
    int32_t sectorSize_ = 0;
    int64_t blockIndex_ = 0;
    int64_t position_ = 0;
    int64_t endPosition_ = 0;
    int64_t monitorThreshold_;
    uint32_t flags_;
    bool isPadded_ = false;
    bool isEndKnown_ = true;
    /// Up to here data came.
    int64_t seen_ = 0;
    /// Nothing can be read back.
    bool isWriteOnly_ = false;
    StreamProgress* progress_ = nullptr;
    Ref<StreamBufferPool> pool_;
};

} // namespace qorl
