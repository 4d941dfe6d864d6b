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
#include <string_view>
#include <utility>

namespace qorl {

QORL_REGISTER(FPath, "FPath", CmObject, 0)

namespace {

/// The group of the settings that holds the last folders of dialogs.
constexpr const char* defaultPaths = "Default Paths";

std::u16string_view viewOf(const String& text) {
    return text.isWide() ? text.view16() : std::u16string_view();
}

/// Where the extension's dot stands in a name; npos without one. Dots at either end begin none.
size_t dotOf(std::u16string_view name) {
    const size_t dot = name.rfind(u'.');
    return dot != 0 && dot != name.size() - 1 ? dot : std::u16string_view::npos;
}

/// A text as paths keep it. False, and `place` empty, for one with a character 0 and without memory for all
/// of it.
bool keep(String& place, const ConstString& text) try {
    String copy;
    if (text.isWide())
        copy = text;
    else
        copy = ConstString(std::u16string_view(PathText::fromNative(text.view8())));
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

/// Takes the extension away: `earlier` where the name has it, else what stands behind the last dot.
void dropExtension(std::u16string& name, const String& earlier) {
    const int32_t dot = PathText::findExtension(ConstString(std::u16string_view(name)), earlier);
    name.resize(std::min(dot != ConstString::notFound ? static_cast<size_t>(dot) : dotOf(name), name.size()));
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
    return PathText::toStoredText(text);
}

} // namespace

FPath::FPath(const FPath& other)
    : CmObject(other), name_(other.name_), fileType_(other.fileType_), pathType_(other.pathType_),
      flags_(other.flags_), folder_(other.folder_) {
    if (name_.size() == other.name_.size() && folder_.size() == other.folder_.size())
        return;
    name_.clear();
    folder_.clear();
}

FPath& FPath::operator=(const FPath& other) {
    if (this != &other)
        *this = FPath(other);
    return *this;
}

void FPath::getExtension(String& text) const {
    const size_t dot = dotOf(viewOf(name_));
    text.clear();
    if (dot != std::u16string_view::npos)
        name_.substring(text, static_cast<int32_t>(dot) + 1);
}

void FPath::getBaseName(String& text, bool withoutExtension) const {
    const std::u16string_view name = viewOf(name_);
    text = ConstString(withoutExtension ? name.substr(0, dotOf(name)) : name);
}

void FPath::setFileType(const FFileType& type, bool replace) try {
    const String earlier = std::exchange(fileType_, type).extension();
    const std::u16string extension = type.extension().toUtf16();
    std::u16string name(viewOf(name_));
    if (extension.empty() || name.empty())
        return;
    // A dot at the end begins no extension.
    name.resize(std::max<size_t>(name.find_last_not_of(u'.') + 1, 1));
    if (replace)
        dropExtension(name, earlier);
    const ConstString whole{std::u16string_view(name)};
    const bool hasOne = replace ? PathText::findExtension(whole, type.extension()) != ConstString::notFound
                                : dotOf(name) != std::u16string::npos;
    if (!hasOne) {
        const auto room = static_cast<int32_t>(maxNameLength - 1 - extension.size());
        name.resize(static_cast<size_t>(PathText::wholeLength(name, std::max(room, 1))));
        name.append(1, u'.').append(extension);
    }
    if (!keep(name_, ConstString(std::u16string_view(name))))
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
    String kept;
    const bool isKept = keep(kept, text);
    const std::u16string_view whole = viewOf(kept);
    const size_t last = whole.find_last_not_of(separator);
    const std::u16string_view path = whole.substr(0, last == std::u16string_view::npos ? 1 : last + 1);
    const size_t cut = path.rfind(separator) + 1;
    folder_.clear();
    name_.clear();
    folder_.assign(ConstString(path.substr(0, cut)));
    name_.assign(ConstString(path.substr(cut)));
    if (!isKept || int64_t{folder_.size()} + name_.size() != static_cast<int64_t>(path.size())) {
        folder_.clear();
        name_.clear();
    }
    setIsFolder(isFolder || path.size() < whole.size() || name_.isEmpty());
}

std::string FPath::toUtf8() const {
    String path;
    getFullPath(path);
    if (path.isEmpty() && isValid())
        throw std::bad_alloc();
    return path.isWide() ? PathText::toNative(path.view16()) : path.toUtf8();
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
    const String name = PathText::toStreamText(name_);
    const String folder = PathText::toStreamText(folder_);
    if (!PathText::canBeStored(name) || !PathText::canBeStored(folder) || !fileType_.canBeSaved())
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
    if (path.isEmpty() && isValid())
        throw std::bad_alloc();
    attributes->setString("Path", PathText::toStoredText(path));
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
    const String path = attributes->getString("Path");
    setFullPath(path);
    // A folder without a name in it; names are stored without a final separator.
    if (!cast<FUrl>(this) && !path.isEmpty() && path.charEquals(path.size() - 1, separator)) {
        setName({});
        setFolder(path);
    }
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
    else if (cast<FNPath>(this) && PathText::beginsAsUrl(text))
        return false;
    setFolder(text);
    return isValid();
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace qorl
