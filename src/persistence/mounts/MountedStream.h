#pragma once

#include "persistence/mounts/FRemovableFileSystem.h"
#include "persistence/streams/FStream.h"

namespace qorl {

/// A file that is open in a mounted file. It holds the mount, so that what the file's bytes come from stays
/// as long as somebody reads them.
class MountedStream : public FStream, public ISizeableStream {
    QORL_CLASS(MountedStream, FStream)

public:
    MountedStream(Ref<FStream> inner, Ref<FRemovableFileSystem> mount);
    MountedStream(const MountedStream&) = delete;
    ~MountedStream() override;

    /// Answers as a stream with a size only where the inner one does.
    Result queryInterface(const InterfaceId& id, void** out) override;
    uint32_t addRef() override { return FStream::addRef(); }
    uint32_t release() override { return FStream::release(); }

    int64_t read(void* buffer, int64_t count) override { return inner_ ? inner_->read(buffer, count) : -1; }
    int64_t write(const void* buffer, int64_t count) override {
        return inner_ ? inner_->write(buffer, count) : -1;
    }
    int64_t seek(int64_t offset, int32_t mode) override { return inner_ ? inner_->seek(offset, mode) : -1; }
    int64_t tell() override { return inner_ ? inner_->tell() : -1; }
    void rewind() override;
    void flush() override;
    bool isValid() const override { return inner_ && inner_->isValid(); }
    void setProgress(StreamProgress* monitor) override;
    Result getStreamSize(int64_t& size) override;
    Result setStreamSize(int64_t size) override;

    FRemovableFileSystem* mount() const { return mount_.get(); }
    FStream* inner() const { return inner_.get(); }
    /// Ends the use of the file, whoever else holds this stream.
    Ref<FStream> detachInner() { return std::move(inner_); }

private:
    Ref<FRemovableFileSystem> mount_;
    Ref<FStream> inner_;
};

} // namespace qorl
