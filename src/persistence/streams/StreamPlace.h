#pragma once

#include <qorl/IBStream.h>
#include <qorl/Ref.h>

#include <cstdint>

namespace qorl {

class FStream;

/// Where a move of a stream ended.
enum class StreamPlace : uint8_t { there, shortOfIt, failed };

/// Puts `stream` at `place`, counted from its start, as wrappers do before each transfer. A stream that only
/// runs forward may stop at its end, before that place.
StreamPlace putAt(FStream& stream, int64_t place);

/// The face by which a stream tells and changes its size; null where it has none, and for null.
Ref<ISizeableStream> sizeableOf(IBStream* stream);

} // namespace qorl
