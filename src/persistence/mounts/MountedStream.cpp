#include "persistence/mounts/MountedStream.h"

#include "persistence/streams/StreamPlace.h"

namespace qorl {

MountedStream::MountedStream(Ref<FStream> inner, Ref<FRemovableFileSystem> mount)
    : mount_(std::move(mount)), inner_(std::move(inner)) {
    takeOver(*inner_);
}

MountedStream::~MountedStream() {
    mount_->forget(this);
}

Result MountedStream::queryInterface(const InterfaceId& id, void** out) {
    if (id != ISizeableStream::iid)
        return FStream::queryInterface(id, out);
    if (!sizeableOf(inner_.get())) {
        *out = nullptr;
        return Result::noInterface;
    }
    addRef();
    *out = static_cast<ISizeableStream*>(this);
    return Result::ok;
}

void MountedStream::rewind() {
    if (inner_)
        inner_->rewind();
}
void MountedStream::flush() {
    if (inner_)
        inner_->flush();
}
void MountedStream::setProgress(StreamProgress* monitor) {
    if (inner_)
        inner_->setProgress(monitor);
}

Result MountedStream::getStreamSize(int64_t& size) {
    const Ref<ISizeableStream> sizeable = sizeableOf(inner_.get());
    return sizeable ? sizeable->getStreamSize(size) : Result::failure;
}
Result MountedStream::setStreamSize(int64_t size) {
    const Ref<ISizeableStream> sizeable = sizeableOf(inner_.get());
    return sizeable ? sizeable->setStreamSize(size) : Result::failure;
}

} // namespace qorl
