#pragma once

#include <qorl/IBStream.h>
#include <qorl/Ref.h>

#include <cstdint>

namespace qorl {

class FStream;

namespace platform {
class File;
struct FileError;
} // namespace platform

/// Where a move of a stream ended.
enum class StreamPlace : uint8_t { there, shortOfIt, failed };

/// Puts `stream` at `place`, counted from its start, as wrappers do before each transfer. A stream that only
/// runs forward may stop at its end, before that place.
StreamPlace putAt(FStream& stream, int64_t place);

/// Moves a file as `FStream::seek` has it; -1 also for an unknown mode.
int64_t seekFile(platform::File& file, int64_t offset, int32_t mode, platform::FileError* error = nullptr);

/// The face by which a stream tells and changes its size; null where it has none, and for null.
Ref<ISizeableStream> sizeableOf(IBStream* stream);

} // namespace qorl
