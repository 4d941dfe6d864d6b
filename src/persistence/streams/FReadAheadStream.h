#pragma once

#include "persistence/streams/FBufferedStream.h"

namespace qorl {

/// Keeps the last two blocks: for who goes to and fro between two places.
class FReadAheadStream : public FBufferedStream {
    QORL_CLASS(FReadAheadStream, FBufferedStream)

public:
    FReadAheadStream(Ref<FStream> inner, int32_t blockSize, bool writable,
                     Ref<StreamBufferPool> pool = nullptr);
};

} // namespace qorl
