#pragma once

#include "foundation/CmObject.h"
#include "persistence/streams/FBinaryStream.h"
#include "persistence/streams/StreamFace.h"

#include <qorl/Ref.h>

namespace qorl {

class CmBuffer;
class FUrl;
class StreamProgress;

/// Bytes in a file, in memory or behind another stream, read and written from one moving position.
///
/// One object has three faces: this class, the typed layer `FBinaryStream`, and `IBStream` for other modules.
/// Concrete classes supply the four raw operations and `rewind`. A wrapper keeps a reference on what it wraps
/// and takes over its URL and byte order. Threading: one thread at a time.
class FStream : public CmObject, public FBinaryStream, public StreamFace {
    QORL_CLASS(FStream, CmObject)
    QORL_RECORD(FStream)
    QORL_FACES(FStream, CmObject, IBStream)

public:
    using FBinaryStream::read;
    using FBinaryStream::seek;
    using FBinaryStream::tell;
    using FBinaryStream::write;
    using SeekMode = FBinaryStream::SeekMode;
    using FBinaryStream::fromEnd;
    using FBinaryStream::fromHere;
    using FBinaryStream::fromStart;

    FStream();
    FStream(const FStream& other);
    ~FStream() override;

    /// Goes to the start.
    virtual void rewind() = 0;
    /// Hands buffered data on.
    virtual void flush();
    /// False once the stream has failed in a way that can't be cured.
    virtual bool isValid() const;
    /// Writes `count` bytes taken from `source`, in pieces of 1024. True when all of them went; a `source`
    /// that ends before is false, with all that it gave written.
    virtual bool copyFrom(FStream& source, int64_t count);
    /// Writes all of this stream, from its start to its end, to `destination`. False when not all of it went,
    /// and when this stream failed before its end.
    virtual bool writeTo(FStream& destination);
    /// Long operations report to `monitor` from now on; null ends that. Only files and buffered streams do.
    virtual void setProgress(StreamProgress* monitor);

    /// Where the data comes from; null for a stream in memory.
    FUrl* url() const;
    void setUrl(FUrl* url);

    bool copyTo(FStream& destination, int64_t count);
    /// Writes all of `source`, which is rewound first, at this stream's position. It ends where a read gives
    /// nothing: a short one is no end. False when a write was short, a read failed, or `source` is not valid
    /// or can't be rewound.
    bool copyAll(FStream& source);
    /// Rewinds both and compares their bytes. False also when one of them fails.
    bool contentEquals(FStream& other);
    /// The raw UTF-16 units, with `withTerminator` a 2-byte zero more.
    bool writeWideText(const char16_t* text, bool withTerminator);
    enum LineTrim : int32_t { keepBlanks = 0, dropBlanks = 1 };
    /// Reads one line into `line`, with a zero byte behind it that doesn't count, and all line ends behind
    /// it. With `dropBlanks`, blanks and tabs at both ends of it are dropped. To find the line's end it reads
    /// a byte too many and goes back by it. False, with `line` empty, at the end of the stream, when the
    /// stream can't go back, for a line of more than 64 MB, which is no text, and when memory ran out. Where
    /// the stream fails inside a line, what came of it is given: `isValid` tells.
    bool readTextLine(CmBuffer& line, int32_t trimMode = keepBlanks);

    using CmObject::writeTo;

protected:
    /// As those of `FBinaryStream`.
    explicit FStream(Memory& memory);
    FStream(const FStream& other, Memory& memory);
    /// What a wrapper takes over from the stream that it wraps: where the data comes from, and its byte
    /// order.
    void takeOver(const FStream& wrapped);

private:
    Ref<FUrl> url_;
};

} // namespace qorl
