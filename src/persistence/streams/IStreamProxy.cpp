#include "persistence/streams/IStreamProxy.h"

#include "foundation/Cast.h"
#include "persistence/streams/StreamPlace.h"

namespace qorl {

namespace {

/// The bytes that a foreign transfer moved. One may move none and say `Result::no`.
int64_t checkedCount(Result result, int64_t moved, int64_t asked) {
    if (moved < 0 || moved > asked)
        return -1;
    return moved == 0 && result != Result::ok && result != Result::no ? -1 : moved;
}

} // namespace

IStreamProxy::IStreamProxy(Ref<IBStream> target)
    : target_(std::move(target)), sizeable_(sizeableOf(target_.get())) {
    if (const auto* own = cast<FStream>(target_.get()))
        takeOver(*own);
}

Result IStreamProxy::queryInterface(const InterfaceId& id, void** out) {
    if (sizeable_ && detail::answerFace<ISizeableStream>(this, id, out))
        return Result::ok;
    return FStream::queryInterface(id, out);
}

void IStreamProxy::flush() {
    if (auto* own = cast<FStream>(target_.get()))
        own->flush();
}

bool IStreamProxy::isValid() const {
    const auto* own = cast<FStream>(target_.get());
    return own ? own->isValid() : target_ != nullptr;
}

Result IStreamProxy::getStreamSize(int64_t& size) {
    return sizeable_ ? sizeable_->getStreamSize(size) : Result::failure;
}

Result IStreamProxy::setStreamSize(int64_t size) {
    return sizeable_ ? sizeable_->setStreamSize(size) : Result::failure;
}

int64_t IStreamProxy::read(void* buffer, int64_t count) {
    int64_t moved = 0;
    if (!target_ || count < 1)
        return count < 1 ? 0 : -1;
    const Result result = target_->read(buffer, count, &moved);
    return checkedCount(result, moved, count);
}

int64_t IStreamProxy::write(const void* buffer, int64_t count) {
    int64_t moved = 0;
    if (!target_ || count < 1)
        return count < 1 ? 0 : -1;
    const Result result = target_->write(buffer, count, &moved);
    return checkedCount(result, moved, count);
}

int64_t IStreamProxy::seek(int64_t offset, int32_t mode) {
    int64_t place = -1;
    if (!target_ || target_->seek(offset, mode, &place) != Result::ok)
        return -1;
    return place;
}

int64_t IStreamProxy::tell() {
    int64_t place = -1;
    if (!target_ || target_->tell(&place) != Result::ok)
        return -1;
    return place;
}

} // namespace qorl
