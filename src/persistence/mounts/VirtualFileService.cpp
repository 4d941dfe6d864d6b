#include "persistence/mounts/VirtualFileService.h"

namespace qorl {

VfsResult VirtualFileService::openFile(const FUrl&, uint32_t, Ref<FStream>&) {
    return VfsError::notImplemented;
}
VfsResult VirtualFileService::createFile(const FUrl&, uint32_t, Ref<FStream>&) {
    return VfsError::notImplemented;
}
VfsResult VirtualFileService::deleteFile(const FUrl&) {
    return VfsError::notImplemented;
}
VfsResult VirtualFileService::getInfo(const FUrl&, Info&) {
    return VfsError::notImplemented;
}
VfsResult VirtualFileService::move(const FUrl&, const FUrl&) {
    return VfsError::notImplemented;
}
VfsResult VirtualFileService::createFolder(const FUrl&) {
    return VfsError::notImplemented;
}
VfsResult VirtualFileService::deleteFolder(const FUrl&) {
    return VfsError::notImplemented;
}
VfsResult VirtualFileService::listFolder(const FUrl&, std::vector<Entry>&) {
    return VfsError::notImplemented;
}
VfsResult VirtualFileService::setCurrentFolder(const FUrl&) {
    return VfsError::notImplemented;
}
VfsResult VirtualFileService::getVolumeInfo(const FUrl&, FVolumeInfo&) {
    return VfsError::notImplemented;
}
VfsResult VirtualFileService::setTimes(const FUrl&, const platform::CalendarTime&,
                                       const platform::CalendarTime&) {
    return VfsError::notImplemented;
}

} // namespace qorl
