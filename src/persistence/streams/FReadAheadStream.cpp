#include "persistence/streams/FReadAheadStream.h"

#include <utility>

namespace qorl {

FReadAheadStream::FReadAheadStream(Ref<FStream> inner, int32_t blockSize, bool writable,
                                   Ref<StreamBufferPool> pool)
    : FBufferedStream(std::move(inner), blockSize, readAhead | (writable ? uint32_t{writableFlag} : 0u),
                      std::move(pool)) {}

} // namespace qorl
