#pragma once

#include "persistence/streams/FStream.h"
#include "persistence/urls/FUrl.h"

#include <cstdint>

namespace qorl {

/// A URL that is opened for reading, by one object for each URL and each way of reading it.
///
/// `UrlMetaHandler` makes the one that a URL's scheme asks for. Threading: one thread at a time.
class FUrlHandler : public CmObject {
    QORL_CLASS(FUrlHandler, CmObject)

public:
    explicit FUrlHandler(const FUrl& url) : url_(url) {}
    FUrlHandler(const FUrlHandler&) = delete;

    /// False when nothing can be read there; the handler is then closed, and `error` may say why.
    virtual bool open() = 0;
    /// Gives up the stream. Others who hold a reference on it may go on reading, unless the class says
    /// otherwise.
    virtual void close() = 0;
    /// From any thread: makes an `open` that waits for another computer give up. Handlers that do not wait
    /// have nothing to do.
    virtual void cancel();
    /// Null while the handler is closed.
    virtual FStream* getStream() const;
    /// In bytes, as it was when the URL was opened; -1 while it isn't, and where the size isn't known.
    virtual int64_t getSize() const;

    const FUrl& url() const { return url_; }
    /// The system's number of what the last `open` failed by; 0 where it isn't known.
    int32_t error() const { return error_; }

protected:
    FUrl url_;
    Ref<FStream> stream_;
    int64_t size_ = -1;
    int32_t error_ = 0;
};

} // namespace qorl
