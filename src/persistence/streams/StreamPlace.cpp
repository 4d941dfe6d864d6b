#include "persistence/streams/StreamPlace.h"

#include "persistence/streams/FStream.h"
#include "platform/Files.h"

namespace qorl {

StreamPlace putAt(FStream& stream, int64_t place) {
    int64_t reached = stream.seek(place, FStream::fromStart);
    // A stream that only runs forward goes to its start on a move back, and on from there on a second one.
    if (reached >= 0 && reached < place)
        reached = stream.seek(place, FStream::fromStart);
    // While it compresses it tells its start, too, but stays.
    const bool isStaying = reached == 0 && place == 0 && stream.tell() != 0;
    if (reached < 0 || isStaying)
        return StreamPlace::failed;
    return reached == place ? StreamPlace::there : StreamPlace::shortOfIt;
}

int64_t seekFile(platform::File& file, int64_t offset, int32_t mode, platform::FileError* error) {
    using platform::SeekOrigin;
    constexpr SeekOrigin origins[] = {SeekOrigin::start, SeekOrigin::current, SeekOrigin::end};
    const bool isKnown = mode >= FStream::fromStart && mode <= FStream::fromEnd;
    return isKnown ? file.seek(offset, origins[mode], error) : -1;
}

Ref<ISizeableStream> sizeableOf(IBStream* stream) {
    Ref<ISizeableStream> sizeable;
    const bool isAnswered =
        stream && stream->queryInterface(ISizeableStream::iid, sizeable.out()) == Result::ok;
    return isAnswered ? sizeable : nullptr;
}

} // namespace qorl
