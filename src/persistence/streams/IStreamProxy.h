#pragma once

#include "persistence/streams/FStream.h"

namespace qorl {

/// A stream from outside as a stream of ours.
///
/// What the other side tells is not trusted: a count beyond what was asked for is a failure.
class IStreamProxy : public FStream {
    QORL_CLASS(IStreamProxy, FStream)

public:
    /// Keeps a reference. Of a target that is a stream of ours it takes over URL and byte order.
    explicit IStreamProxy(Ref<IBStream> target);
    IStreamProxy(const IStreamProxy&) = delete;

    int64_t read(void* buffer, int64_t count) override;
    int64_t write(const void* buffer, int64_t count) override;
    int64_t seek(int64_t offset, int32_t mode) override;
    int64_t tell() override;
    void rewind() override { seek(0, fromStart); }
    bool isValid() const override { return target_ != nullptr; }

    IBStream* target() const { return target_.get(); }

private:
    Ref<IBStream> target_;
};

/// The same for a stream that a plug-in gave.
class FPluginStreamProxy : public IStreamProxy {
    QORL_CLASS(FPluginStreamProxy, IStreamProxy)

public:
    using IStreamProxy::IStreamProxy;
};

} // namespace qorl
