#pragma once

#include "persistence/streams/FCompressionEngine.h"
#include "persistence/streams/FStream.h"

namespace qorl {

/// Compresses what is written to it and inflates what is read from it, in one direction at a time.
///
/// What is inflated can be read from front to back, and from the start again. Inflating holds no more than
/// the engine's buffer, however much the data would become. Threading: as the target.
class FCompressionStream : public FStream, public ISizeableStream {
    QORL_CLASS(FCompressionStream, FStream)
    QORL_FACES(FCompressionStream, FStream, ISizeableStream)

public:
    static constexpr int64_t unknownSize = -1;
    static constexpr int64_t pieceSize = 0x10000;
    /// What `toMemory` takes unless it is told otherwise: 1 GB.
    static constexpr int64_t mostInMemory = int64_t{1} << 30;

    /// Keeps a reference on `target`, and takes over its URL and byte order. The compressed bytes begin where
    /// `target` begins; a window (`FStreamProxy`) is in place where they don't. An unknown `engineClass`
    /// leaves the stream without an engine: nothing can be begun.
    FCompressionStream(Ref<FStream> target, const FUID& engineClass);
    /// Without an `engine` the first one registered for any data.
    explicit FCompressionStream(Ref<FStream> target, Ref<FCompressionEngine> engine = nullptr);
    FCompressionStream(const FCompressionStream&) = delete;
    /// Finishes what was begun.
    ~FCompressionStream() override;

    /// `quality` from 0, fast, to 1, small; a negative one is the engine's own choice.
    bool beginCompression(float quality);
    /// Writes what the engine holds back, and ends. False when not all of it went: the data is then of no
    /// use.
    bool endCompression();
    /// `expectedSize` is what the data should become, as far as that is known.
    bool beginDecompression(int64_t expectedSize = unknownSize);
    /// Whether the data was read up to its own end, and is sound.
    bool isComplete() const { return decompressor_ && decompressor_->isComplete(); }

    /// -1 unless decompression was begun. Few bytes or none at the end, and where the data is damaged or cut
    /// off: the stream is not valid then.
    int64_t read(void* buffer, int64_t count) override;
    /// -1 unless compression was begun, and for good once the target failed: behind a hole nothing could be
    /// read.
    int64_t write(const void* buffer, int64_t count) override;
    /// Forward by reading; to a place before this one it goes to the start and gives 0, also while it
    /// compresses, where it stays. From here it goes back by one byte at most, right behind a read. `fromEnd`
    /// does nothing. The place; -1 for an unknown mode, and when the target can't be read from its start
    /// again.
    int64_t seek(int64_t offset, int32_t mode) override;
    /// What was read or written, before compression.
    int64_t tell() override { return position_; }
    /// Begins to read anew; without effect while it compresses. A target that fails leaves the stream not
    /// valid, and nothing to be read until decompression is begun again.
    void rewind() override;
    /// Makes readable what was written so far. When that fails, all further writing does.
    void flush() override;
    /// False once data was found damaged or cut off, or could not be written, until something is begun again.
    bool isValid() const override { return target_ && !hasFailed_ && target_->isValid(); }
    /// The expected size, -1 if none was told. `Result::failure` unless decompression was begun.
    Result getStreamSize(int64_t& size) override;
    Result setStreamSize(int64_t) override { return Result::notImplemented; }

    /// Compresses all of `source`, from where it stands up to where it gives nothing more, into `target`.
    /// Tells `progress` after each piece of 64 KiB how much of its total is done; false when that cancels,
    /// and when anything fails.
    static bool compress(IBStream& source, Ref<FStream> target, Ref<FCompressionEngine> engine, float quality,
                         StreamProgress* progress = nullptr);
    /// Inflates `source` into `destination`, in pieces of `chunkSize` bytes, below 1 of 64 KiB. False also
    /// for data that is damaged or cut off; what came before stands in `destination` then.
    static bool decompress(Ref<FStream> source, IBStream& destination, Ref<FCompressionEngine> engine,
                           StreamProgress* progress = nullptr, int64_t chunkSize = 0);
    /// How much smaller the first 8192 bytes of `source`, from where it stands, become: compressed by
    /// uncompressed. It stands there again afterwards. 1.0 on any failure, also to go back.
    static double estimateRatio(IBStream& source, Ref<FCompressionEngine> engine, float quality);
    /// All of a compression stream that knows its size in memory, at its start; null for data that is
    /// damaged or shorter, for a size above `most` bytes, of which nothing is read then, and without memory.
    /// Any other stream as it is.
    static Ref<IBStream> toMemory(FStream* stream, int64_t most = mostInMemory);

private:
    bool unread();
    bool goBack();
    void skipForward(int64_t count);

    Ref<FStream> target_;
    Ref<FCompressionEngine> engine_;
    std::unique_ptr<FCompressor> compressor_;
    std::unique_ptr<FDecompressor> decompressor_;
    int64_t expectedSize_ = unknownSize;
    int64_t position_ = 0;
    bool hasFailed_ = false;

    /// The byte read last, for who has to look one ahead.
    enum class LastByte : uint8_t { none, taken, toBeReadAgain };
    LastByte last_ = LastByte::none;
    char lastByte_ = 0;
};

} // namespace qorl
