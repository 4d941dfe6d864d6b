#include "persistence/files/FNPath.h"
#include "persistence/files/PathText.h"
#include "persistence/urls/FUrl.h"
#include "persistence/urls/UrlBytes.h"
#include "platform/Files.h"

#include <new>
#include <utility>

namespace qorl {

namespace {

constexpr std::string_view volumesFolder = "/Volumes/";

/// What stands before the first `/`, and in `rest` what is behind it, with the `/`.
std::string_view firstSegment(std::string_view path, std::string_view& rest) {
    const size_t end = path.find('/');
    rest = end == std::string_view::npos ? std::string_view() : path.substr(end);
    return path.substr(0, end);
}

/// What lies below a volume or a share, which dots never leave: segments are taken away before the name of
/// the place means anything.
std::string below(const std::string& root, std::string_view rest) {
    const auto parts = PathText::partsBelow(rest, "/", PathText::Dots::resolved);
    if (!parts)
        return {};
    std::string path = root;
    for (const std::string_view part : *parts)
        path.append("/").append(part);
    return rest.ends_with('/') ? path + '/' : path;
}

/// A path below "/Volumes/", where the volume that it names lies; any other path as it is.
std::string onVolume(const std::string& path) {
    if (!path.starts_with(volumesFolder))
        return path;
    std::string_view rest;
    const std::string_view name = firstSegment(std::string_view(path).substr(volumesFolder.size()), rest);
    for (const platform::VolumeInfo& volume : platform::listVolumes())
        if (!name.empty() && volume.name == name)
            return below(volume.root == "/" ? std::string() : volume.root, rest);
    return path;
}

/// Where a mounted share lies; empty when it isn't mounted.
std::string onShare(const std::string& host, const std::string& path) {
    std::string_view rest;
    const std::string_view share = firstSegment(path, rest);
    const std::string root = platform::findNetworkShare(host, std::string(share));
    return root.empty() ? root : below(root, rest);
}

/// Whether nothing in a reference can lead elsewhere than below: no root, no drive, no scheme, no control
/// character.
bool isPlainReference(std::string_view reference) {
    if (reference.empty() || reference[0] == '/' || reference[0] == '\\')
        return false;
    const std::string_view firstPart = reference.substr(0, reference.find_first_of("/\\"));
    if (firstPart.find(':') != std::string_view::npos)
        return false;
    for (const char c : reference)
        if (static_cast<uint8_t>(c) < 0x20)
            return false;
    return true;
}

bool isBelow(const std::string& path, std::string folder) {
    if (!folder.ends_with('/'))
        folder += '/';
    return path.starts_with(folder);
}

} // namespace

void FUrl::adoptNative(const FPath& path) try {
    const std::string native = path.toUtf8();
    clearAll();
    if (!native.starts_with('/')) {
        adopt(PathText::fromNative(native), path.isFolder());
        return;
    }
    FUrl url(ConstString("file"), {}, 0, ConstString(std::string_view(UrlBytes::encodePath(native))));
    url.flags_ = flags_;
    url.fileType_ = fileType_;
    *this = std::move(url);
    setIsFolder(path.isFolder());
} catch (const std::bad_alloc&) {
    clearAll();
}

void FUrl::setNative(const ConstString& text) {
    adoptNative(FNPath(text));
}

bool FUrl::getNativePath(FNPath& path) const try {
    std::string native = plainPath();
    if (hasScheme(networkScheme))
        native = onShare(UrlBytes::decode(host_.toUtf8()), native);
    else if (hasScheme(fileScheme))
        native = onVolume(path_.charEquals(0, u'/') ? native : '/' + native);
    else if (!scheme_.isEmpty())
        return false;
    if (native.empty() || native.find('\0') != std::string::npos)
        return false;
    FNPath found(std::string_view(native), isFolder());
    if (!found.isValid())
        return false;
    path = std::move(found);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FUrl::isRemovable() const {
    FNPath path;
    return getNativePath(path) && path.isRemovable();
}
bool FUrl::isNetwork() const {
    FNPath path;
    return hasScheme(networkScheme) || (getNativePath(path) && path.isNetwork());
}
bool FUrl::isHidden() const {
    FNPath path;
    return FPath::isHidden() || (getNativePath(path) && path.isHidden());
}
void FUrl::getDriveName(String& text) const {
    FNPath path;
    text.clear();
    if (getNativePath(path))
        path.getDriveName(text);
}

std::string FUrl::resolveInside(std::string_view base, std::string_view reference) {
    const auto parts = PathText::partsBelow(reference, "/\\", PathText::Dots::resolved);
    if (!isPlainReference(reference) || !parts || parts->empty())
        return {};
    std::string path(base.empty() ? "." : base);
    for (const std::string_view part : *parts) {
        if (!path.ends_with('/'))
            path += '/';
        path += part;
    }
    const std::string folder = platform::getCanonicalPath(std::string(base.empty() ? "." : base));
    return isBelow(platform::getCanonicalPath(path), folder) ? path : std::string();
}

} // namespace qorl
