#include "persistence/streams/FStreamProxy.h"

#include "persistence/streams/StreamPlace.h"

#include <algorithm>
#include <limits>

namespace qorl {

QORL_REGISTER(FStreamProxy, "FStreamProxy", FStream, 0)

namespace {

constexpr int64_t farthestPlace = std::numeric_limits<int64_t>::max();

} // namespace

FStreamProxy::FStreamProxy(Ref<FStream> inner, int64_t start, int64_t length, uint32_t mode)
    : inner_(std::move(inner)), start_(std::max<int64_t>(start, 0)), cursor_(start_),
      length_(length < 0 ? unlimited : std::min(length, farthestPlace - start_)), mode_(mode) {
    if (inner_)
        takeOver(*inner_);
}

int64_t FStreamProxy::cut(int64_t count) const {
    return length_ == unlimited ? count : std::min(count, start_ + length_ - cursor_);
}

/// To where `inner` stands now. One that can't tell must not be read at the same place for ever.
void FStreamProxy::advance(int64_t moved) {
    const int64_t place = inner_->tell();
    cursor_ = place < 0 ? cursor_ + std::max<int64_t>(moved, 0) : std::max(place, start_);
}

int64_t FStreamProxy::read(void* buffer, int64_t count) {
    count = cut(count);
    if (!inner_ || count < 0)
        return -1;
    if (count == 0)
        return 0;
    const StreamPlace place = putAt(*inner_, cursor_);
    if (place != StreamPlace::there)
        return place == StreamPlace::failed ? -1 : 0;
    const int64_t got = inner_->read(buffer, count);
    advance(got);
    return got;
}

int64_t FStreamProxy::write(const void* buffer, int64_t count) {
    count = cut(count);
    if (!inner_ || count < 0)
        return -1;
    if (count == 0)
        return 0;
    if (putAt(*inner_, cursor_) != StreamPlace::there)
        return -1;
    const int64_t written = inner_->write(buffer, count);
    advance(written);
    return written;
}

int64_t FStreamProxy::seek(int64_t offset, int32_t mode) {
    if (!inner_ || mode < fromStart || mode > fromEnd)
        return -1;
    int64_t from = mode == fromStart ? start_ : mode == fromHere ? cursor_ : start_ + length_;
    if (mode == fromEnd && length_ == unlimited && (from = inner_->seek(0, fromEnd)) < 0)
        return -1;
    int64_t target = 0;
    if (__builtin_add_overflow(from, offset, &target))
        target = farthestPlace; // all places are positive, so it can't be the other end
    if (length_ != unlimited)
        target = std::min(target, start_ + length_);
    cursor_ = std::max(target, start_);
    return tell();
}

void FStreamProxy::flush() {
    if (inner_)
        inner_->flush();
}

Result FStreamProxy::getStreamSize(int64_t& size) {
    size = length_;
    if (length_ != unlimited)
        return Result::ok;
    int64_t end = -1;
    if (const Ref<ISizeableStream> sizeable = sizeableOf(inner_.get())) {
        if (const Result result = sizeable->getStreamSize(end); result != Result::ok)
            return result;
    } else if (!inner_ || (end = inner_->seek(0, fromEnd)) < 0) {
        return Result::failure;
    }
    size = end < 0 ? unlimited : std::max<int64_t>(end - start_, 0);
    return Result::ok;
}

} // namespace qorl
