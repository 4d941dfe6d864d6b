#pragma once

#include "persistence/streams/FStream.h"

namespace qorl {

/// A stream from outside as a stream of ours.
///
/// What the other side tells is not trusted: a count beyond what was asked for is a failure.
/// It answers as a stream with a size where the other side does.
class IStreamProxy : public FStream, public ISizeableStream {
    QORL_CLASS(IStreamProxy, FStream)

public:
    /// Keeps a reference. Of a target that is a stream of ours it takes over URL and byte order.
    explicit IStreamProxy(Ref<IBStream> target);
    IStreamProxy(const IStreamProxy&) = delete;

    Result queryInterface(const InterfaceId& id, void** out) override;
    uint32_t addRef() override { return FStream::addRef(); }
    uint32_t release() override { return FStream::release(); }

    /// -1 also when the other side fails, or says that it moved what can't be.
    int64_t read(void* buffer, int64_t count) override;
    int64_t write(const void* buffer, int64_t count) override;
    int64_t seek(int64_t offset, int32_t mode) override;
    int64_t tell() override;
    void rewind() override { seek(0, fromStart); }
    /// Of a target that is a stream of ours; another one has none.
    void flush() override;
    /// Of a target that is a stream of ours also whether that is valid.
    bool isValid() const override;
    Result getStreamSize(int64_t& size) override;
    Result setStreamSize(int64_t size) override;

    IBStream* target() const { return target_.get(); }

private:
    Ref<IBStream> target_;
    Ref<ISizeableStream> sizeable_;
};

/// The same for a stream that a plug-in gave.
class FPluginStreamProxy : public IStreamProxy {
    QORL_CLASS(FPluginStreamProxy, IStreamProxy)

public:
    using IStreamProxy::IStreamProxy;
};

} // namespace qorl
