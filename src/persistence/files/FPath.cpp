#include "persistence/files/FPath.h"

#include "foundation/Cast.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/defaults/FDefaultPool.h"

#include <algorithm>
#include <new>

namespace qorl {

QORL_REGISTER(FPath, "FPath", CmObject, 0)

namespace {

/// The group of the settings that holds the last folders of dialogs.
constexpr const char* defaultPaths = "Default Paths";

/// Where the extension's dot stands in a name; `notFound` without an extension.
int32_t dotOf(const String& name) {
    const int32_t dot = name.findLastChar16(u'.');
    return dot > 0 ? dot : ConstString::notFound;
}

/// A text as paths keep it. False, and `place` empty, without memory for all of it: a part of a path would
/// name another place.
bool keep(String& place, const ConstString& text) {
    String copy = text;
    copy.toWide();
    const bool isKept = text.isEmpty() || (!copy.isEmpty() && copy.isWide());
    place.clear();
    if (isKept)
        place = std::move(copy);
    return isKept;
}

bool closeFolder(String& folder) {
    if (folder.isEmpty() || folder.charEquals(folder.size() - 1, FPath::separator))
        return true;
    const int32_t length = folder.size();
    folder.appendChar16(FPath::separator);
    return folder.size() > length;
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

void FPath::setFileType(const FFileType& type, bool replace) {
    fileType_ = type;
    if (type.extension().isEmpty() || name_.isEmpty())
        return;
    if (replace)
        name_.remove(std::max(dotOf(name_), 0) == 0 ? name_.size() : dotOf(name_));
    if (dotOf(name_) != ConstString::notFound)
        return;
    name_.remove(maxNameLength - 1 - type.extension().size());
    const int32_t length = name_.size() + 1 + type.extension().size();
    name_.appendChar16(u'.');
    name_.append(type.extension());
    if (name_.size() != length)
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
    String parent = folder_;
    setPath(parent, true);
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

void FPath::setIsFolder(bool isFolder) {
    flags_ = static_cast<uint16_t>(isFolder ? flags_ | folderFlag : flags_ & ~folderFlag);
}

std::string FPath::toUtf8() const {
    String path;
    getFullPath(path);
    std::string text = path.toUtf8();
    if (text.empty() && isValid())
        throw std::bad_alloc();
    return text;
}

bool FPath::isEqual(const CmObject* other) const {
    const auto* path = cast<FPath>(other);
    return path && toUtf8() == path->toUtf8();
}

int32_t FPath::compare(const CmObject* other) const {
    const auto* path = cast<FPath>(other);
    if (!path)
        return CmObject::compare(other);
    const int order = toUtf8().compare(path->toUtf8());
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

bool FPath::storeAttributes(FAttributes* attributes) {
    String path;
    getFullPath(path);
    attributes->setString("Path", path);
    attributes->setInteger("IsFolder", isFolder() ? 1 : 0);
    return true;
}

bool FPath::restoreAttributes(FAttributes* attributes) {
    setFullPath(attributes->getString("Path"));
    setIsFolder(attributes->getInteger("IsFolder") != 0);
    return true;
}

void FPath::saveDefault(const ConstString& key) const {
    auto* pool = FGlobalDefaultPool::instance();
    if (FDefaults* group = pool ? pool->getGroup(defaultPaths) : nullptr)
        group->values().setString(key.toUtf8(), getFolder());
}

bool FPath::loadDefault(const ConstString& key) {
    auto* pool = FGlobalDefaultPool::instance();
    FDefaults* group = pool ? pool->getGroup(defaultPaths) : nullptr;
    if (!group || !group->values().contains(key.toUtf8()))
        return false;
    setFolder(group->values().getString(key.toUtf8()));
    return true;
}

} // namespace qorl
