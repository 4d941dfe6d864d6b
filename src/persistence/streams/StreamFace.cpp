#include "persistence/streams/StreamFace.h"

#include "persistence/streams/FStream.h"

namespace qorl {

FStream& StreamFace::self() {
    return static_cast<FStream&>(*this);
}

Result StreamFace::read(void* buffer, int64_t count, int64_t* got) {
    const int64_t bytes = self().read(buffer, count);
    if (got)
        *got = bytes;
    return bytes < 1 ? Result::no : Result::ok;
}

Result StreamFace::write(const void* buffer, int64_t count, int64_t* got) {
    const int64_t bytes = self().write(buffer, count);
    if (got)
        *got = bytes;
    return bytes < 0 || bytes < count ? Result::no : Result::ok;
}

Result StreamFace::seek(int64_t offset, int32_t mode, int64_t* result) {
    const int64_t position = self().seek(offset, mode);
    if (result)
        *result = position;
    return position < 0 ? Result::no : Result::ok;
}

Result StreamFace::tell(int64_t* position) {
    if (!position)
        return Result::invalidArgument;
    *position = self().tell();
    return Result::ok;
}

} // namespace qorl
