#pragma once

#include "persistence/streams/FStream.h"

namespace qorl {

/// A window on a part of another stream: reads and writes land between `start` and `start + length` of
/// `inner`.
///
/// Several windows may share one inner stream, since each puts it at its own place before every transfer;
/// they must not run at the same time. Threading: as `inner`.
class FStreamProxy : public FStream, public ISizeableStream {
    QORL_CLASS(FStreamProxy, FStream)
    QORL_RECORD(FStreamProxy)
    QORL_FACES(FStreamProxy, FStream, ISizeableStream)

public:
    static constexpr int64_t unlimited = -1;

    /// A window on nothing: all transfers fail.
    FStreamProxy() = default;
    /// Keeps a reference on `inner` and takes over its URL and byte order. `length` in bytes, or `unlimited`.
    /// `mode` says what the window was opened for, as `FFileStream::OpenFlag`; it is not enforced.
    FStreamProxy(Ref<FStream> inner, int64_t start, int64_t length, uint32_t mode);
    FStreamProxy(const FStreamProxy&) = delete;

    /// Bytes moved. 0 at the window's end; -1 when the place already lies past it, for a negative count, and
    /// when `inner` failed.
    int64_t read(void* buffer, int64_t count) override;
    int64_t write(const void* buffer, int64_t count) override;
    /// The new place, counted from `start`. A target outside the window is cut to its nearer edge. -1 for an
    /// unknown mode, and when `inner` can't tell its end.
    int64_t seek(int64_t offset, int32_t mode) override;
    int64_t tell() override { return cursor_ - start_; }
    void rewind() override { cursor_ = start_; }
    void flush() override;
    bool isValid() const override { return inner_ && inner_->isValid(); }
    /// The window's length; without a limit what `inner` has behind `start`, -1 where that doesn't know.
    Result getStreamSize(int64_t& size) override;
    /// `Result::notImplemented`: a window stays as it is.
    Result setStreamSize(int64_t) override { return Result::notImplemented; }

    FStream* inner() const { return inner_.get(); }
    int64_t start() const { return start_; }
    int64_t length() const { return length_; }
    uint32_t mode() const { return mode_; }

private:
    int64_t cut(int64_t count) const;
    void advance(int64_t moved);

    Ref<FStream> inner_;
    int64_t start_ = 0;
    int64_t cursor_ = 0;
    int64_t length_ = unlimited;
    uint32_t mode_ = 0;
};

} // namespace qorl
