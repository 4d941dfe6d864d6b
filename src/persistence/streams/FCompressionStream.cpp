#include "persistence/streams/FCompressionStream.h"

#include "foundation/Cast.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/streams/FStreamCounter.h"
#include "persistence/streams/IStreamProxy.h"
#include "persistence/streams/StreamPlace.h"
#include "persistence/streams/StreamProgress.h"

#include <algorithm>
#include <new>

namespace qorl {

namespace {

constexpr int64_t skippedAtOnce = 1024;
constexpr int64_t estimatedBytes = 8192;

/// The bytes that a piece of a foreign stream has, 0 at its end, -1 on failure.
int64_t readPiece(IBStream& source, char* buffer, int64_t count) {
    int64_t got = 0;
    const Result result = source.read(buffer, count, &got);
    if (got < 0 || got > count || (got == 0 && result != Result::ok && result != Result::no))
        return -1;
    const auto* own = got == 0 ? cast<FStream>(&source) : nullptr;
    return own && !own->isValid() ? -1 : got;
}

bool writePiece(IBStream& destination, const char* buffer, int64_t count) {
    int64_t written = 0;
    return destination.write(buffer, count, &written) == Result::ok && written == count;
}

/// False when the user has cancelled.
bool goOn(StreamProgress* progress, const void* piece, int64_t count, int64_t done) {
    if (!progress)
        return true;
    if (progress->total() > 0)
        progress->report(static_cast<double>(done) / static_cast<double>(progress->total()));
    return !progress->isCancelled(piece, count);
}

} // namespace

FCompressionStream::FCompressionStream(Ref<FStream> target, const FUID& engineClass)
    : target_(std::move(target)), engine_(CompressionEngineRecord::createEngine(engineClass)) {
    if (target_)
        takeOver(*target_);
}

FCompressionStream::FCompressionStream(Ref<FStream> target, Ref<FCompressionEngine> engine)
    : target_(std::move(target)),
      engine_(engine ? std::move(engine) : CompressionEngineRecord::createDefault()) {
    if (target_)
        takeOver(*target_);
}

FCompressionStream::~FCompressionStream() {
    endCompression();
    if (decompressor_)
        decompressor_->end();
}

bool FCompressionStream::beginCompression(float quality) {
    endCompression();
    // It would move the target.
    decompressor_.reset();
    last_ = LastByte::none;
    position_ = 0;
    hasFailed_ = false;
    auto compressor = engine_ ? engine_->createCompressor() : nullptr;
    if (!target_ || !compressor || !compressor->begin(target_.get(), quality))
        return false;
    compressor_ = std::move(compressor);
    return true;
}

bool FCompressionStream::endCompression() {
    const auto compressor = std::move(compressor_);
    if (!compressor)
        return false;
    hasFailed_ = !compressor->finish() || hasFailed_;
    return !hasFailed_;
}

bool FCompressionStream::beginDecompression(int64_t expectedSize) {
    expectedSize_ = expectedSize;
    position_ = 0;
    last_ = LastByte::none;
    hasFailed_ = false;
    decompressor_ = engine_ ? engine_->createDecompressor() : nullptr;
    if (!target_ || !decompressor_ || !decompressor_->begin(target_.get()))
        decompressor_.reset();
    return decompressor_ != nullptr;
}

int64_t FCompressionStream::read(void* buffer, int64_t count) {
    if (count < 1)
        return 0;
    if (!decompressor_)
        return -1;
    auto* bytes = static_cast<char*>(buffer);
    int64_t done = 0;
    if (last_ == LastByte::toBeReadAgain)
        bytes[done++] = lastByte_;
    if (done < count)
        done += std::max<int64_t>(decompressor_->read(bytes + done, count - done), 0);
    last_ = done > 0 ? LastByte::taken : LastByte::none;
    if (done > 0)
        lastByte_ = bytes[done - 1];
    hasFailed_ = hasFailed_ || (done < count && !decompressor_->isComplete());
    position_ += done;
    return done;
}

int64_t FCompressionStream::write(const void* buffer, int64_t count) {
    if (!compressor_ || hasFailed_)
        return -1;
    if (count < 1)
        return 0;
    const int64_t written = compressor_->write(buffer, count);
    hasFailed_ = written != count;
    position_ += std::max<int64_t>(written, 0);
    return written;
}

bool FCompressionStream::unread() {
    if (last_ != LastByte::taken)
        return false;
    last_ = LastByte::toBeReadAgain;
    --position_;
    return true;
}

void FCompressionStream::skipForward(int64_t count) {
    char dropped[skippedAtOnce];
    int64_t got = 1;
    for (; count > 0 && got > 0; count -= got)
        got = read(dropped, std::min(count, skippedAtOnce));
}

int64_t FCompressionStream::seek(int64_t offset, int32_t mode) {
    if (mode < fromStart || mode > fromEnd)
        return -1;
    if (decompressor_ && decompressor_->canSeek()) {
        const int64_t place = decompressor_->seek(offset, mode);
        last_ = LastByte::none;
        position_ = place < 0 ? position_ : place;
        return place;
    }
    if (mode == fromHere && offset == -1)
        unread();
    else if (mode == fromHere)
        skipForward(offset);
    else if (mode == fromStart && offset < position_)
        return goBack() ? 0 : -1;
    else if (mode == fromStart)
        skipForward(offset - position_);
    return position_;
}

void FCompressionStream::rewind() {
    goBack();
}

bool FCompressionStream::goBack() {
    if (position_ == 0 || !decompressor_)
        return true;
    last_ = LastByte::none;
    position_ = 0;
    if (decompressor_->canSeek()) {
        hasFailed_ = decompressor_->seek(0, fromStart) != 0;
    } else {
        decompressor_->end();
        hasFailed_ = target_->seek(0, fromStart) != 0 || !decompressor_->begin(target_.get());
    }
    // What it told of the earlier round doesn't hold any longer.
    if (hasFailed_)
        decompressor_.reset();
    return !hasFailed_;
}

void FCompressionStream::flush() {
    if (compressor_)
        hasFailed_ = !compressor_->flush() || hasFailed_;
}

Result FCompressionStream::getStreamSize(int64_t& size) {
    size = expectedSize_;
    return engine_ && decompressor_ ? Result::ok : Result::failure;
}

bool FCompressionStream::compress(IBStream& source, Ref<FStream> target, Ref<FCompressionEngine> engine,
                                  float quality, StreamProgress* progress) {
    const std::unique_ptr<char[]> piece(new (std::nothrow) char[pieceSize]);
    FCompressionStream stream(std::move(target), std::move(engine));
    if (!piece || !stream.beginCompression(quality))
        return false;
    int64_t got = 0;
    while ((got = readPiece(source, piece.get(), pieceSize)) > 0)
        if (stream.write(piece.get(), got) != got || !goOn(progress, piece.get(), got, stream.position_))
            return false;
    return got == 0 && stream.endCompression();
}

bool FCompressionStream::decompress(Ref<FStream> source, IBStream& destination,
                                    Ref<FCompressionEngine> engine, StreamProgress* progress,
                                    int64_t chunkSize) {
    chunkSize = chunkSize < 1 ? pieceSize : chunkSize;
    const std::unique_ptr<char[]> piece(new (std::nothrow) char[static_cast<size_t>(chunkSize)]);
    FCompressionStream stream(std::move(source), std::move(engine));
    if (!piece || !stream.beginDecompression())
        return false;
    int64_t got = 0;
    while (stream.isValid() && (got = stream.read(piece.get(), chunkSize)) > 0)
        if (!writePiece(destination, piece.get(), got) || !goOn(progress, piece.get(), got, stream.position_))
            return false;
    return stream.isValid() && stream.isComplete();
}

double FCompressionStream::estimateRatio(IBStream& source, Ref<FCompressionEngine> engine,
                                         float quality) try {
    const auto counter = make<FStreamCounter>();
    FCompressionStream stream(counter, std::move(engine));
    char bytes[estimatedBytes];
    int64_t start = 0;
    if (source.tell(&start) != Result::ok || !stream.beginCompression(quality))
        return 1.0;
    const int64_t got = readPiece(source, bytes, estimatedBytes);
    IStreamProxy whole(retain(&source));
    if (putAt(whole, start) != StreamPlace::there || got < 1 || stream.write(bytes, got) != got ||
        !stream.endCompression())
        return 1.0;
    return static_cast<double>(counter->length()) / static_cast<double>(got);
} catch (const std::bad_alloc&) {
    return 1.0;
}

Ref<IBStream> FCompressionStream::toMemory(FStream* stream, int64_t most) try {
    auto* compressed = cast<FCompressionStream>(stream);
    if (!compressed || compressed->expectedSize_ < 1)
        return Ref<IBStream>(retain(stream));
    const int64_t size = compressed->expectedSize_;
    if (size > most)
        return nullptr;
    compressed->rewind();
    const auto memory = make<FMemoryStream>();
    // A damaged size must not cost more memory than the data is good for.
    for (int64_t done = 0; done < size;) {
        const int64_t wanted = std::min(size - done, std::max(done, pieceSize));
        if (memory->setStreamSize(done + wanted) != Result::ok ||
            compressed->read(memory->data() + done, wanted) != wanted)
            return nullptr;
        done += wanted;
    }
    memory->rewind();
    return Ref<IBStream>(memory);
} catch (const std::bad_alloc&) {
    return nullptr;
}

} // namespace qorl
