#include "persistence/mounts/MountedStream.h"

#include "persistence/urls/FUrl.h"

namespace qorl {

MountedStream::MountedStream(Ref<FStream> inner, Ref<FRemovableFileSystem> mount)
    : mount_(std::move(mount)), inner_(std::move(inner)) {
    setUrl(inner_->url());
    setByteOrder(inner_->byteOrder());
}

MountedStream::~MountedStream() {
    mount_->forget(this);
}

Result MountedStream::queryInterface(const InterfaceId& id, void** out) {
    if (id != ISizeableStream::iid)
        return FStream::queryInterface(id, out);
    Ref<ISizeableStream> sizeable;
    if (!inner_ || inner_->queryInterface(id, sizeable.out()) != Result::ok) {
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
    Ref<ISizeableStream> sizeable;
    if (!inner_ || inner_->queryInterface(ISizeableStream::iid, sizeable.out()) != Result::ok)
        return Result::no;
    return sizeable->getStreamSize(size);
}
Result MountedStream::setStreamSize(int64_t size) {
    Ref<ISizeableStream> sizeable;
    if (!inner_ || inner_->queryInterface(ISizeableStream::iid, sizeable.out()) != Result::ok)
        return Result::no;
    return sizeable->setStreamSize(size);
}

} // namespace qorl
