#include "persistence/files/FPath.h"

#include "foundation/Cast.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/defaults/FDefaultPool.h"
#include "persistence/files/FNPath.h"
#include "persistence/files/PathText.h"
#include "persistence/streams/FStream.h"
#include "persistence/urls/FUrl.h"

#include <algorithm>
#include <new>
#include <utility>

namespace qorl {

QORL_REGISTER(FPath, "FPath", CmObject, 0)

namespace {

/// The group of the settings that holds the last folders of dialogs.
constexpr const char* defaultPaths = "Default Paths";

/// Where the extension's dot stands in a name; `notFound` without an extension. Dots at either end begin
/// none.
int32_t dotOf(const String& name) {
    const int32_t dot = name.findLastChar16(u'.');
    return dot > 0 && dot < name.size() - 1 ? dot : ConstString::notFound;
}

/// A text as paths keep it. False, and `place` empty, for one with a character 0 and without memory for all
/// of it.
bool keep(String& place, const ConstString& text) try {
    String copy;
    if (text.isWide())
        copy = text;
    else
        copy = ConstString(std::u16string_view(toPathText(text.view8())));
    const bool isWhole = copy.isEmpty() == text.isEmpty();
    place.clear();
    if (!isWhole || copy.findChar16(u'\0') != ConstString::notFound)
        return false;
    place = std::move(copy);
    return true;
} catch (const std::bad_alloc&) {
    place.clear();
    return false;
}

bool closeFolder(String& folder) {
    if (folder.isEmpty() || folder.charEquals(folder.size() - 1, FPath::separator))
        return true;
    const int32_t length = folder.size();
    folder.appendChar16(FPath::separator);
    return folder.size() > length;
}

/// Shortens a text, never between the two halves of a character.
void cutTo(String& text, int32_t length) {
    const char16_t last = text.char16At(length - 1);
    const char16_t next = text.char16At(length);
    const bool isPair = last >= 0xD800 && last <= 0xDBFF && next >= 0xDC00 && next <= 0xDFFF;
    text.remove(isPair ? length - 1 : length);
}

/// The folder that a path lies in, whole: on the disk as the disk has it, else as a URL. Throws
/// std::bad_alloc.
String placeOf(const FPath& path) {
    String text;
    FNPath native;
    const auto* url = cast<FUrl>(&path);
    if (url && !url->getNativePath(native)) {
        FUrl folder(*url);
        folder.up();
        folder.getFullPath(text);
    } else {
        const FPath& onDisk = url ? native : path;
        onDisk.getFullPath(text);
        if (!onDisk.getName().isEmpty())
            text.remove(text.findLastChar16(FPath::separator) + 1);
    }
    return toStoredText(text);
}

} // namespace

void FPath::getExtension(String& text) const {
    const int32_t dot = dotOf(name_);
    text.clear();
    if (dot != ConstString::notFound)
        name_.substring(text, dot + 1);
}

void FPath::getBaseName(String& text, bool withoutExtension) const {
    const int32_t dot = withoutExtension ? dotOf(name_) : ConstString::notFound;
    text.assign(name_, dot);
}

void FPath::setFileType(const FFileType& type, bool replace) try {
    const std::u16string earlier = fileType_.extension().toUtf16();
    fileType_ = type;
    const String& extension = type.extension();
    if (extension.isEmpty() || name_.isEmpty())
        return;
    // A dot at the end begins no extension.
    while (name_.size() > 1 && name_.charEquals(name_.size() - 1, u'.'))
        name_.remove(name_.size() - 1);
    if (replace) {
        const int32_t dot = findExtension(name_, ConstString(std::u16string_view(earlier)));
        const int32_t cut = dot != ConstString::notFound ? dot : dotOf(name_);
        name_.remove(cut != ConstString::notFound ? cut : name_.size());
    }
    const int32_t present = replace ? findExtension(name_, extension) : dotOf(name_);
    if (present != ConstString::notFound)
        return;
    if (name_.size() + 1 + extension.size() > maxNameLength)
        cutTo(name_, std::max(maxNameLength - 1 - extension.size(), 1));
    const int32_t length = name_.size() + 1 + extension.size();
    name_.appendChar16(u'.');
    name_.append(extension);
    if (name_.size() != length)
        setPath({}, isFolder());
} catch (const std::bad_alloc&) {
    setPath({}, isFolder());
}

bool FPath::isRelative() const {
    return folder_.isEmpty() || !folder_.charEquals(0, separator);
}

void FPath::getDriveName(String& text) const {
    text.clear();
}
bool FPath::isRoot() const {
    return name_.isEmpty() && folder_.size() == 1 && !isRelative();
}

void FPath::addFolder(const ConstString& name, bool isFolder) {
    String folder;
    getPath(folder);
    const bool isWhole = folder.isEmpty() == !FPath::isValid() && closeFolder(folder);
    folder_ = std::move(folder);
    if (!keep(name_, name) || !isWhole)
        setPath({}, isFolder);
    setIsFolder(isFolder);
}

bool FPath::up() {
    if (isRoot() || !FPath::isValid())
        return false;
    // A folder without a name behind it is itself the last segment.
    if (name_.isEmpty())
        setPath(String(folder_), true);
    setPath(String(folder_), true);
    return true;
}

void FPath::setFolder(const ConstString& text) {
    if (!keep(folder_, text) || !closeFolder(folder_))
        setPath({}, isFolder());
}

void FPath::setName(const ConstString& name) {
    if (!keep(name_, name))
        setPath({}, isFolder());
}

void FPath::getPath(String& text) const {
    bool isWhole = keep(text, folder_);
    if (!name_.isEmpty()) {
        isWhole = isWhole && closeFolder(text);
        const int32_t length = text.size() + name_.size();
        text.append(name_);
        isWhole = isWhole && text.size() == length;
    }
    if (!isWhole)
        text.clear();
}

void FPath::setPath(const ConstString& text, bool isFolder) {
    String path;
    const bool isKept = keep(path, text);
    while (path.size() > 1 && path.charEquals(path.size() - 1, separator)) {
        path.remove(path.size() - 1);
        isFolder = true;
    }
    const int32_t cut = path.findLastChar16(separator);
    folder_.clear();
    name_.clear();
    folder_.assign(path, cut + 1);
    path.substring(name_, cut + 1);
    if (!isKept || folder_.size() + name_.size() != path.size()) {
        folder_.clear();
        name_.clear();
    }
    setIsFolder(isFolder || name_.isEmpty());
}

std::string FPath::toUtf8() const {
    String path;
    getFullPath(path);
    if (path.isEmpty() && isValid())
        throw std::bad_alloc();
    return path.isWide() ? toNativeText(path.view16()) : path.toUtf8();
}

bool FPath::isEqual(const CmObject* other) const {
    const auto* path = cast<FPath>(other);
    return path && FPath::compare(path) == 0;
}

int32_t FPath::compare(const CmObject* other) const {
    const auto* path = cast<FPath>(other);
    if (!path)
        return CmObject::compare(other);
    String own;
    String others;
    getFullPath(own);
    path->getFullPath(others);
    // Memory may have run out for either.
    if (own.isEmpty() == isValid() || others.isEmpty() == path->isValid())
        return CmObject::compare(other);
    const int32_t order = own.compare(others);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

bool FPath::save(FBinaryStream& stream) const try {
    const String name = toStreamText(name_);
    const String folder = toStreamText(folder_);
    if (!canBeStored(name) || !canBeStored(folder) || !fileType_.canBeSaved())
        return false;
    return name.writeTo(stream) && fileType_.save(stream) && stream.writeUInt16(pathType_) &&
           stream.writeUInt16(flags_) && folder.writeTo(stream);
} catch (const std::bad_alloc&) {
    return false;
}

bool FPath::load(FBinaryStream& stream) {
    String name;
    FFileType type;
    uint16_t pathType = 0;
    uint16_t flags = 0;
    String folder;
    if (!name.readFrom(stream) || !type.load(stream) || !stream.readUInt16(pathType) ||
        !stream.readUInt16(flags) || !folder.readFrom(stream))
        return false;
    String keptName;
    String keptFolder;
    if (!keep(keptName, name) || !keep(keptFolder, folder) || !closeFolder(keptFolder))
        return false;
    name_ = std::move(keptName);
    folder_ = std::move(keptFolder);
    fileType_ = std::move(type);
    pathType_ = pathType;
    flags_ = flags;
    return true;
}

bool FPath::readFrom(FObjectArchive* archive) {
    return load(archive->stream());
}
bool FPath::writeTo(FObjectArchive* archive) {
    return save(archive->stream());
}

bool FPath::storeAttributes(FAttributes* attributes) {
    String path;
    if (pathType_ != 0)
        getPath(path);
    else
        getFullPath(path);
    attributes->setString("Path", toStoredText(path));
    attributes->setInteger("IsFolder", isFolder() ? 1 : 0);
    if (pathType_ != 0)
        attributes->setInteger("PathType", pathType_);
    if ((flags_ & ~folderFlag) != 0)
        attributes->setInteger("Flags", flags_);
    if (!fileType_.extension().isEmpty())
        attributes->saveObject("FileType", &fileType_);
    return true;
}

bool FPath::restoreAttributes(FAttributes* attributes) {
    setFullPath(attributes->getString("Path"));
    pathType_ = static_cast<uint16_t>(attributes->getInteger("PathType"));
    flags_ = static_cast<uint16_t>(attributes->getInteger("Flags"));
    setIsFolder(attributes->getInteger("IsFolder") != 0);
    fileType_ = {};
    attributes->loadObject("FileType", &fileType_);
    return true;
}

void FPath::saveDefault(const ConstString& key) const try {
    auto* pool = FGlobalDefaultPool::instance();
    FDefaults* group = pool && isValid() ? pool->getGroup(defaultPaths) : nullptr;
    if (group)
        group->values().setString(key.toUtf8(), placeOf(*this));
} catch (const std::bad_alloc&) {
    return; // The folder of the last time is as good.
}

bool FPath::loadDefault(const ConstString& key) try {
    auto* pool = FGlobalDefaultPool::instance();
    FDefaults* group = pool ? pool->getGroup(defaultPaths) : nullptr;
    const std::string name = key.toUtf8();
    if (!group || !group->values().contains(name))
        return false;
    String text = group->values().getString(name);
    if (cast<FUrl>(this))
        FUrl(FPath(text, true)).getFullPath(text);
    else if (cast<FNPath>(this) && text.find(ConstString("://")) != ConstString::notFound)
        return false;
    setFolder(text);
    return isValid();
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace qorl
