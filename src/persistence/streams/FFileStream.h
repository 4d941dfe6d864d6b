#pragma once

#include "persistence/streams/FStream.h"
#include "platform/Files.h"

namespace qorl {

/// A file, opened by a file system, which gives it its URL. It holds no bytes back: bulk work goes through
/// an `FBufferedStream` or an `FBlockStreamReader`. When it was opened for writing, or lets others write, the
/// file system is told as it closes. The first error of the system is kept until `clearError`; until then a
/// stream whose bytes could not be read, written, flushed or cut off is not valid.
class FFileStream : public FStream, public ISizeableStream {
    QORL_CLASS(FFileStream, FStream)
    QORL_RECORD(FFileStream)
    QORL_FACES(FFileStream, FStream, ISizeableStream)

public:
    enum OpenFlag : uint32_t {
        readAccess = 1,
        writeAccess = 2,
        shareRead = 4,   ///< other openers may read
        shareWrite = 8,  ///< other openers may write
        createPath = 16, ///< with write: makes the missing folders and tries once more
        unbuffered = 32, ///< asks for `sectorSize`, and for access past the caches
        sequential = 64, ///< from front to end, once
    };

    /// Told of a file that may have been changed, once that is closed. May throw std::bad_alloc.
    using Closed = void (*)(const FUrl& file);

    FFileStream() = default;
    /// `sectorSize` in bytes, 0 when it was not asked for.
    FFileStream(platform::File file, uint32_t mode, int32_t sectorSize = 0, Closed closed = nullptr);
    FFileStream(const FFileStream&) = delete;
    ~FFileStream() override;

    /// What came or went before the system failed; -1 when it failed at once, and when the progress monitor
    /// says so. The monitor moves by the same count.
    int64_t read(void* buffer, int64_t count) override;
    int64_t write(const void* buffer, int64_t count) override;
    int64_t seek(int64_t offset, int32_t mode) override;
    int64_t tell() override;
    void rewind() override;
    /// Returns when the bytes are on the disk. Nothing for a file that was not opened for writing.
    void flush() override;
    bool isValid() const override { return !hasLost_; }
    void setProgress(StreamProgress* monitor) override { progress_ = monitor; }
    Result getStreamSize(int64_t& size) override;
    Result setStreamSize(int64_t size) override;

    /// In bytes, -1 on failure.
    int64_t getLength();
    /// Cuts or grows the file; the position stays.
    bool setLength(int64_t length);
    /// True also when the file can't tell.
    bool isAtEnd();
    bool isOpen() const { return file_.isOpen(); }
    void close();
    /// The first error of the system since `clearError`, 0 for none. Any operation can leave one.
    int32_t getLastError() const { return lastError_; }
    void clearError();
    uint32_t mode() const { return mode_; }
    /// What transfers past the caches begin and end at a multiple of; 0 unless the file was opened so.
    int32_t sectorSize() const { return sectorSize_; }

private:
    bool isCancelled(const void* buffer, int64_t count);
    void advance(int64_t count);
    /// Of bytes on their way.
    void rememberLoss(const platform::FileError& error);
    void remember(const platform::FileError& error);

    platform::File file_;
    uint32_t mode_ = 0;
    int32_t lastError_ = 0;
    bool hasLost_ = false;
    int32_t sectorSize_ = 0;
    Closed closed_ = nullptr;
    StreamProgress* progress_ = nullptr;
};

} // namespace qorl
