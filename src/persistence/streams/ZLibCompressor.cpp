#include "persistence/streams/ZLibCompressor.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <zlib.h>

namespace qorl {

namespace {

constexpr int64_t zlibBufferSize = 0x10000;
/// What one call can be given: zlib counts in 32 bits.
constexpr int64_t mostForZlib = 1 << 30;
/// Stands for an exception that came through zlib; as all its errors it is negative.
constexpr int zlibThrew = -1000;

CompressionEngineRecord zlibRecord("Zlib Compressor", ZLibCompressor::classId, 0x7FFFFFFF,
                                   &createObject<ZLibCompressor>);

voidpf allocateForZlib(voidpf, uInt items, uInt size) {
    return std::malloc(size_t{items} * size);
}
void freeForZlib(voidpf, voidpf block) {
    std::free(block);
}

template <typename Call>
int callZlib(Call call) {
    try {
        return call();
    } catch (...) {
        return zlibThrew;
    }
}

/// What both directions share: zlib's state, and a buffer on the side of the compressed bytes.
class ZLibState {
public:
    ZLibState() = default;
    ZLibState(const ZLibState&) = delete;

protected:
    ~ZLibState() = default;

    bool prepare(IBStream* target) {
        stream_ = {};
        stream_.zalloc = &allocateForZlib;
        stream_.zfree = &freeForZlib;
        target_ = retain(target);
        if (!buffer_)
            buffer_.reset(new (std::nothrow) Bytef[zlibBufferSize]);
        return target_ && buffer_;
    }

    z_stream stream_ = {};
    std::unique_ptr<Bytef[]> buffer_;
    Ref<IBStream> target_;
    bool isActive_ = false;
};

class ZLibDeflater : public FCompressor, private ZLibState {
public:
    ~ZLibDeflater() override { end(); }

    bool begin(IBStream* target, float quality) override {
        end();
        if (!prepare(target))
            return false;
        isActive_ = callZlib([&] { return deflateInit(&stream_, ZLibCompressor::levelOf(quality)); }) == Z_OK;
        emptyBuffer();
        return isActive_;
    }

    int64_t write(const void* buffer, int64_t count) override {
        if (!isActive_)
            return -1;
        auto* from = const_cast<Bytef*>(static_cast<const Bytef*>(buffer));
        for (int64_t left = count; left > 0;) {
            const int64_t piece = std::min(left, mostForZlib);
            stream_.next_in = from;
            stream_.avail_in = static_cast<uInt>(piece);
            while (stream_.avail_in > 0)
                if (!step(Z_NO_FLUSH))
                    return -1;
            from += piece;
            left -= piece;
        }
        return std::max<int64_t>(count, 0);
    }

    bool finish() override {
        bool isGood = isActive_;
        isEnded_ = false;
        while (isGood && !isEnded_)
            isGood = step(Z_FINISH);
        isGood = isGood && drain();
        end();
        return isGood;
    }

    bool flush() override {
        bool isGood = isActive_;
        bool isFull = true;
        while (isGood && isFull)
            isGood = step(Z_SYNC_FLUSH, &isFull);
        isGood = isGood && drain();
        // Behind a hole nothing that is written could be read.
        if (!isGood)
            end();
        return isGood;
    }

private:
    /// One call of zlib. The buffer is written when it is full.
    bool step(int mode, bool* wasFull = nullptr) {
        const int result = callZlib([&] { return deflate(&stream_, mode); });
        isEnded_ = result == Z_STREAM_END;
        const bool isFull = stream_.avail_out == 0;
        if (wasFull)
            *wasFull = isFull;
        // Without progress there was nothing left to flush.
        const bool isGood = result == Z_OK || isEnded_ || (result == Z_BUF_ERROR && mode == Z_SYNC_FLUSH);
        if (!isGood || (isFull && !drain()))
            end();
        return isActive_;
    }

    bool drain() {
        const int64_t count = zlibBufferSize - stream_.avail_out;
        int64_t written = 0;
        const bool isGood =
            count == 0 || (target_->write(buffer_.get(), count, &written) == Result::ok && written == count);
        emptyBuffer();
        return isGood;
    }

    void emptyBuffer() {
        stream_.next_out = buffer_.get();
        stream_.avail_out = zlibBufferSize;
    }

    void end() {
        if (isActive_)
            callZlib([&] { return deflateEnd(&stream_); });
        isActive_ = false;
    }

    bool isEnded_ = false;
};

class ZLibInflater : public FDecompressor, private ZLibState {
public:
    ~ZLibInflater() override { end(); }

    bool begin(IBStream* target) override {
        end();
        isComplete_ = false;
        if (!prepare(target) || !refill())
            return false;
        isActive_ = callZlib([&] { return inflateInit(&stream_); }) == Z_OK;
        return isActive_;
    }

    int64_t read(void* buffer, int64_t count) override {
        auto* to = static_cast<Bytef*>(buffer);
        int64_t left = count;
        while (isActive_ && !isComplete_ && left > 0 && (stream_.avail_in > 0 || refill())) {
            const int64_t piece = std::min(left, mostForZlib);
            stream_.next_out = to;
            stream_.avail_out = static_cast<uInt>(piece);
            const int result = callZlib([&] { return inflate(&stream_, Z_SYNC_FLUSH); });
            if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR) {
                end();
                return 0;
            }
            isComplete_ = result == Z_STREAM_END;
            to += piece - stream_.avail_out;
            left -= piece - stream_.avail_out;
        }
        return count - std::max<int64_t>(left, 0);
    }

    void end() override {
        if (isActive_)
            callZlib([&] { return inflateEnd(&stream_); });
        isActive_ = false;
    }

    bool canSeek() const override { return false; }
    int64_t seek(int64_t, int32_t) override { return -1; }
    bool isComplete() const override { return isComplete_; }

private:
    bool refill() {
        int64_t got = 0;
        const Result result = target_->read(buffer_.get(), zlibBufferSize, &got);
        if (result != Result::ok || got < 1 || got > zlibBufferSize)
            return false;
        stream_.next_in = buffer_.get();
        stream_.avail_in = static_cast<uInt>(got);
        return true;
    }

    bool isComplete_ = false;
};

} // namespace

std::unique_ptr<FCompressor> ZLibCompressor::createCompressor() {
    return std::unique_ptr<FCompressor>(new (std::nothrow) ZLibDeflater);
}

std::unique_ptr<FDecompressor> ZLibCompressor::createDecompressor() {
    return std::unique_ptr<FDecompressor>(new (std::nothrow) ZLibInflater);
}

Result ZLibCompressor::getClassId(FUID& id) {
    id = classId;
    return Result::ok;
}

int32_t ZLibCompressor::levelOf(float quality) {
    if (!(quality >= 0))
        return Z_DEFAULT_COMPRESSION;
    return static_cast<int32_t>(std::min(quality, 1.0f) * 9);
}

} // namespace qorl
