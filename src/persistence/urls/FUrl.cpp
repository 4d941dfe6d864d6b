#include "persistence/urls/FUrl.h"

#include "foundation/Cast.h"
#include "foundation/Singleton.h"
#include "foundation/threads/FLock.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/files/FNPath.h"
#include "persistence/files/PathText.h"
#include "persistence/streams/FBinaryStream.h"
#include "persistence/urls/UrlBytes.h"

#include <algorithm>
#include <map>
#include <new>

namespace qorl {

QORL_REGISTER(FUrl, "FUrl", FPath, 1)

namespace {

constexpr std::u16string_view schemeEnd = u"://";

class SchemePorts : public FObject {
public:
    FLock lock{"SchemePorts"};
    std::map<std::string, int32_t, std::less<>> ports;
};

constinit Singleton<SchemePorts> schemePorts;

int32_t registeredPort(const String& scheme) {
    auto* known = schemePorts.peek();
    if (!known)
        return 0;
    const std::string name = UrlBytes::lowerCase(scheme.toUtf8());
    const FGuard guard(known->lock);
    const auto found = known->ports.find(name);
    return found == known->ports.end() ? 0 : found->second;
}

/// What stands before the first `mark`; `rest` goes on behind it, and is empty without one.
std::u16string_view cutAt(std::u16string_view& rest, char16_t mark) {
    const size_t place = rest.find(mark);
    const std::u16string_view before = rest.substr(0, place);
    rest = place == std::u16string_view::npos ? std::u16string_view() : rest.substr(place + 1);
    return before;
}

/// A copy of all of `text`, or std::bad_alloc.
void keepWhole(String& place, std::u16string_view text) {
    String copy(text);
    if (static_cast<size_t>(copy.size()) != text.size())
        throw std::bad_alloc();
    copy.toWide();
    place = std::move(copy);
}

/// A name as the system knows it. False for one that is part of no path.
bool toNativeName(const ConstString& name, std::string& bytes) {
    bytes = name.isWide() ? PathText::toNative(name.view16()) : std::string(name.view8());
    return bytes.find('\0') == std::string::npos;
}

/// A text as paths keep it, whatever its width.
std::u16string wideText(const ConstString& text) {
    return text.isWide() ? std::u16string(text.view16()) : PathText::fromNative(text.view8());
}

std::u16string asciiToWide(const std::string& text) {
    return {text.begin(), text.end()};
}

/// The port of "host:port", with the colon in front; 0 without digits, -1 when it is no port.
int32_t portOf(std::u16string_view digits) {
    int32_t port = 0;
    for (const char16_t digit : digits.substr(digits.empty() ? 0 : 1)) {
        if (digit < u'0' || digit > u'9')
            return -1;
        port = port * 10 + (digit - u'0');
        if (port > FUrl::maxPort)
            return -1;
    }
    return port;
}

} // namespace

FUrl::FUrl(const FUrl& other)
    : FPath(other), scheme_(other.scheme_), host_(other.host_), port_(other.port_), path_(other.path_),
      user_(other.user_), password_(other.password_) {
    clearUnlessCopyOf(other);
}

FUrl& FUrl::operator=(const FUrl& other) {
    if (this != &other)
        *this = FUrl(other);
    return *this;
}

/// A text that memory does not suffice for is left out of a copy.
void FUrl::clearUnlessCopyOf(const FUrl& other) {
    constexpr String FUrl::*parts[] = {&FUrl::scheme_,   &FUrl::host_, &FUrl::path_,  &FUrl::user_,
                                       &FUrl::password_, &FUrl::name_, &FUrl::folder_};
    for (const auto part : parts)
        if ((this->*part).size() != (other.*part).size()) {
            clearAll();
            return;
        }
}

FUrl::FUrl(const FPath& path) {
    if (const auto* url = cast<FUrl>(&path)) {
        *this = *url;
        return;
    }
    if (cast<FNPath>(&path) || !PathText::beginsAsUrl(path.getFolder())) {
        adoptNative(path);
        return;
    }
    String text;
    path.getFullPath(text);
    setFullPath(text);
    setIsFolder(path.isFolder());
}

FUrl::FUrl(const ConstString& scheme, const ConstString& host, int32_t port, const ConstString& path) try {
    if (port < 0 || port > maxPort)
        return;
    keepWhole(scheme_, scheme.toUtf16());
    keepWhole(host_, host.toUtf16());
    port_ = port;
    FUrl::setPath(path, false);
} catch (const std::bad_alloc&) {
    clearAll();
}

bool FUrl::setFullPath(const ConstString& text) try {
    const std::u16string whole = wideText(text);
    String trimmed{std::u16string_view(whole)};
    if (static_cast<size_t>(trimmed.size()) != whole.size())
        throw std::bad_alloc();
    trimmed.trim();
    clearAll();
    if (whole.find(u'\0') == std::u16string::npos &&
        takeApart(trimmed.isWide() ? trimmed.view16() : std::u16string_view()))
        return true;
    clearAll();
    return false;
} catch (const std::bad_alloc&) {
    clearAll();
    return false;
}

bool FUrl::takeApart(std::u16string_view text) {
    const size_t end = text.find(schemeEnd);
    if (end == std::u16string_view::npos) {
        adopt(text, text.ends_with(u'/'));
        return true;
    }
    if (end == 0)
        return false;
    keepWhole(scheme_, text.substr(0, end));
    text.remove_prefix(end + schemeEnd.size());
    if (!hasScheme(fileScheme) && !takeAuthority(cutAt(text, u'/')))
        return false;
    adopt(text, text.empty() || text.ends_with(u'/'));
    return true;
}

bool FUrl::takeAuthority(std::u16string_view authority) {
    const size_t loginEnd = authority.rfind(u'@');
    if (loginEnd != std::u16string_view::npos) {
        std::u16string_view login = authority.substr(0, loginEnd);
        authority.remove_prefix(loginEnd + 1);
        keepWhole(user_, cutAt(login, u':'));
        keepWhole(password_, login);
    }
    // The colons of an address in brackets are none in front of a port.
    const size_t bracket = authority.starts_with(u'[') ? authority.find(u']') : std::u16string_view::npos;
    const size_t colon = authority.find(u':', bracket == std::u16string_view::npos ? 0 : bracket);
    const std::u16string_view port =
        colon == std::u16string_view::npos ? std::u16string_view() : authority.substr(colon);
    keepWhole(host_, authority.substr(0, colon));
    port_ = port.size() > 1 ? portOf(port) : registeredPort(scheme_);
    return port_ >= 0;
}

void FUrl::clearAll() {
    for (String* part : {&scheme_, &host_, &path_, &user_, &password_, &name_, &folder_})
        part->clear();
    port_ = 0;
    setIsFolder(false);
}

void FUrl::getFullPath(String& text) const try {
    std::u16string whole;
    if (!scheme_.isEmpty()) {
        whole.append(scheme_.view16()).append(schemeEnd);
        const bool isFile = hasScheme(fileScheme);
        if (!isFile)
            whole.append(host_.view16());
        if (!isFile && port_ != 0)
            whole += asciiToWide(':' + std::to_string(port_));
        // The path of a file URL brings its own one where it is absolute.
        if (!path_.isEmpty() && !(isFile && path_.charEquals(0, u'/')))
            whole += u'/';
    }
    whole.append(path_.view16());
    keepWhole(text, whole);
} catch (const std::bad_alloc&) {
    text.clear();
}

void FUrl::getPath(String& text) const {
    text = path_;
    if (text.size() != path_.size())
        text.clear();
}

void FUrl::setPath(const ConstString& text, bool isFolder) try {
    const std::u16string path = wideText(text);
    if (path.find(u'\0') == std::u16string::npos)
        adopt(path, isFolder);
    else
        clearAll();
} catch (const std::bad_alloc&) {
    clearAll();
}

void FUrl::adopt(std::u16string_view path, bool isFolder) {
    String kept;
    keepWhole(kept, path);
    path_ = std::move(kept);
    keepWhole(folder_, folderPart());
    std::u16string name(lastPart());
    if (!scheme_.isEmpty())
        name = PathText::fromNative(UrlBytes::decode(PathText::toNative(name)));
    // A character 0 is part of no name.
    keepWhole(name_, name.find(u'\0') == std::u16string::npos ? name : std::u16string());
    setIsFolder(isFolder);
}

std::u16string_view FUrl::lastPart() const {
    std::u16string_view path = path_.isWide() ? path_.view16() : std::u16string_view();
    if (path.ends_with(u'/'))
        path.remove_suffix(1);
    return path.substr(path.rfind(u'/') + 1);
}

std::u16string_view FUrl::folderPart() const {
    std::u16string_view path = path_.isWide() ? path_.view16() : std::u16string_view();
    // The root lies in itself.
    const bool hasEnd = path.size() > 1 && path.ends_with(u'/');
    const std::u16string_view rest = path.substr(0, path.size() - (hasEnd ? 1 : 0));
    return path.substr(0, rest.rfind(u'/') + 1);
}

void FUrl::setName(const ConstString& name) try {
    std::string bytes;
    if (!toNativeName(name, bytes)) {
        clearAll();
        return;
    }
    std::u16string path(folderPart());
    const bool hadEnd = path_.size() > 1 && path_.view16().ends_with(u'/');
    path += scheme_.isEmpty() ? PathText::fromNative(bytes) : asciiToWide(UrlBytes::encodeName(bytes));
    adopt(hadEnd ? path + u'/' : path, isFolder());
} catch (const std::bad_alloc&) {
    clearAll();
}

void FUrl::setFileType(const FFileType& type, bool replace) {
    const String earlier = name_;
    FPath::setFileType(type, replace);
    // What stays as it was keeps its spelling. The base empties a URL that it has no memory for.
    if (!name_.isEmpty() && (name_ != earlier || earlier.isEmpty()))
        setName(name_);
}

void FUrl::setFolder(const ConstString& text) try {
    std::u16string path = wideText(text);
    std::u16string last(path_.view16().substr(folderPart().size()));
    if (PathText::beginsAsUrl(text)) {
        FUrl place(text);
        if (place.scheme_.isEmpty()) {
            clearAll();
            return;
        }
        if (scheme_.isEmpty())
            last = asciiToWide(UrlBytes::encodePath(PathText::toNative(last)));
        path = place.path_.view16();
        place.flags_ = flags_;
        place.fileType_ = fileType_;
        *this = std::move(place);
    }
    if (!path.empty() && !path.ends_with(u'/'))
        path += u'/';
    adopt(path + last, isFolder());
} catch (const std::bad_alloc&) {
    clearAll();
}

void FUrl::addFolder(const ConstString& name, bool isFolder) {
    if (!scheme_.isEmpty()) {
        addPathSegment(name, isFolder);
        return;
    }
    FPath path;
    path.setPath(path_, true);
    path.addFolder(name, isFolder);
    String text;
    path.getPath(text);
    setPath(text, isFolder);
}

void FUrl::addPathSegment(const ConstString& segment, bool isFolder) try {
    std::string bytes;
    if (!toNativeName(segment, bytes)) {
        clearAll();
        return;
    }
    std::u16string path(path_.isWide() ? path_.view16() : std::u16string_view());
    if (!path.empty() && !path.ends_with(u'/'))
        path += u'/';
    path += asciiToWide(UrlBytes::encode(bytes));
    if (isFolder)
        path += u'/';
    adopt(path, isFolder);
} catch (const std::bad_alloc&) {
    clearAll();
}

bool FUrl::up() try {
    if (path_.isEmpty() || isRoot())
        return false;
    const std::u16string folder(folderPart());
    adopt(folder, true);
    return true;
} catch (const std::bad_alloc&) {
    clearAll();
    return false;
}

bool FUrl::isRelative() const {
    return scheme_.isEmpty() && (path_.isEmpty() || !path_.charEquals(0, u'/'));
}
bool FUrl::isRoot() const {
    return path_.size() == 1 && path_.charEquals(0, u'/');
}

bool FUrl::hasScheme(std::string_view scheme) const {
    scheme = scheme.substr(0, scheme.find(':'));
    return static_cast<size_t>(scheme_.size()) == scheme.size() &&
           scheme_.compare(ConstString(scheme), ConstString::all, true) == 0;
}

bool FUrl::isEqual(const CmObject* other) const {
    const auto* url = cast<FUrl>(other);
    return url && FUrl::compare(url) == 0;
}

int32_t FUrl::compare(const CmObject* other) const try {
    const auto* url = cast<FUrl>(other);
    if (!url)
        return FPath::compare(other);
    const int order = normalForm().compare(url->normalForm());
    if (order != 0)
        return order < 0 ? -1 : 1;
    const int32_t users = user_.compare(url->user_);
    const int32_t logins = users != 0 ? users : password_.compare(url->password_);
    return logins < 0 ? -1 : logins > 0 ? 1 : 0;
} catch (const std::bad_alloc&) {
    return CmObject::compare(other);
}

bool FUrl::save(FBinaryStream& stream) const try {
    const String path = PathText::toStreamText(path_);
    if (!PathText::canBeStored(scheme_) || !PathText::canBeStored(host_) || !PathText::canBeStored(path))
        return false;
    return FPath::save(stream) && scheme_.writeTo(stream) && host_.writeTo(stream) &&
           stream.writeInt32(port_) && path.writeTo(stream);
} catch (const std::bad_alloc&) {
    return false;
}

bool FUrl::load(FBinaryStream& stream) try {
    FUrl loaded;
    String scheme;
    String host;
    String path;
    if (!loaded.FPath::load(stream) || !scheme.readFrom(stream) || !host.readFrom(stream) ||
        !stream.readInt32(loaded.port_) || !path.readFrom(stream))
        return false;
    if (loaded.port_ < 0 || loaded.port_ > maxPort || path.findChar16(u'\0') != ConstString::notFound)
        return false;
    keepWhole(loaded.scheme_, scheme.toUtf16());
    keepWhole(loaded.host_, host.toUtf16());
    loaded.adopt(wideText(path), loaded.isFolder());
    *this = std::move(loaded);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FUrl::restoreAttributes(FAttributes* attributes) {
    FPath::restoreAttributes(attributes);
    const String text = attributes->getString("Path");
    if (PathText::beginsAsUrl(text))
        return true;
    // A path alone counts whole, with blanks at its ends.
    const bool isMarked = isFolder();
    clearAll();
    setPath(text, isMarked);
    return true;
}

bool FUrl::registerPort(std::string_view scheme, int32_t port) try {
    auto* known = schemePorts.get();
    if (!known || port < 0 || port > maxPort)
        return false;
    const FGuard guard(known->lock);
    known->ports.insert_or_assign(UrlBytes::lowerCase(scheme.substr(0, scheme.find(':'))), port);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace qorl
