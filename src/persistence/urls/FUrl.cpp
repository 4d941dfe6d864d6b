#include "persistence/urls/FUrl.h"

#include "foundation/Singleton.h"
#include "platform/Files.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <vector>

namespace qorl {

QORL_REGISTER(FUrl, "FUrl", FPath, 1)

namespace {

constexpr std::u16string_view schemeEnd = u"://";
constexpr std::u16string_view fileScheme = u"file";

class SchemePorts : public FObject {
public:
    std::map<std::string, int32_t, std::less<>> ports;
};

constinit Singleton<SchemePorts> schemePorts;

bool passesUnencoded(uint8_t byte) {
    const bool isLetter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
    return isLetter || (byte >= '0' && byte <= '9') ||
           (byte != 0 &&
            std::string_view("&+-./=?_").find(static_cast<char>(byte)) != std::string_view::npos);
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// What stands before the first `mark`; `rest` goes on behind it, and is empty without one.
std::u16string_view cut(std::u16string_view& rest, char16_t mark) {
    const size_t place = rest.find(mark);
    const std::u16string_view before = rest.substr(0, place);
    rest = place == std::u16string_view::npos ? std::u16string_view() : rest.substr(place + 1);
    return before;
}

/// Bytes that are no UTF-8 are Latin-1.
std::u16string toWideOrLatin(const std::string& bytes) {
    String text{std::string_view(bytes)};
    if (text.toWide())
        return std::u16string(text.view16());
    std::u16string wide;
    for (const char c : bytes)
        wide += static_cast<char16_t>(static_cast<uint8_t>(c));
    return wide;
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

/// The parts of a reference without "." and ".."; false when it leads out.
bool splitInside(std::string_view reference, std::vector<std::string_view>& parts) {
    while (!reference.empty()) {
        const size_t end = reference.find_first_of("/\\");
        const std::string_view part = reference.substr(0, end);
        reference = end == std::string_view::npos ? std::string_view() : reference.substr(end + 1);
        if (part.empty() || part == ".")
            continue;
        if (part != "..") {
            parts.push_back(part);
            continue;
        }
        if (parts.empty())
            return false;
        parts.pop_back();
    }
    return !parts.empty();
}

bool isBelow(const std::string& path, std::string folder) {
    if (!folder.ends_with('/'))
        folder += '/';
    return path.starts_with(folder);
}

} // namespace

FUrl::FUrl(const FPath& path) {
    scheme_ = ConstString(fileScheme);
    path.getFullPath(path_);
    path_.toWide();
    setIsFolder(path.isFolder());
}

bool FUrl::setFullPath(const ConstString& text) {
    String trimmed = text;
    trimmed.toWide();
    trimmed.trim();
    std::u16string_view rest = trimmed.isWide() ? trimmed.view16() : std::u16string_view();
    scheme_.clear();
    host_.clear();
    user_.clear();
    password_.clear();
    port_ = 0;
    const size_t end = rest.find(schemeEnd);
    if (end == std::u16string_view::npos) {
        path_ = ConstString(rest);
        return isValid();
    }
    scheme_ = ConstString(rest.substr(0, end));
    rest.remove_prefix(end + schemeEnd.size());
    if (isFile()) {
        path_ = ConstString(rest);
        return isValid();
    }
    std::u16string_view authority = cut(rest, u'/');
    path_ = ConstString(rest);
    if (authority.find(u'@') != std::u16string_view::npos) {
        std::u16string_view login = cut(authority, u'@');
        user_ = ConstString(cut(login, u':'));
        password_ = ConstString(login);
    }
    host_ = ConstString(cut(authority, u':'));
    ConstString(authority).toInt32(port_, 0, false);
    if (authority.empty())
        if (const auto* known = schemePorts.peek())
            if (const auto found = known->ports.find(scheme_.toUtf8()); found != known->ports.end())
                port_ = found->second;
    return isValid();
}

void FUrl::getFullPath(String& text) const {
    text.clear();
    if (!scheme_.isEmpty()) {
        text = scheme_;
        text.append(ConstString(schemeEnd));
        if (!isFile()) {
            text.append(host_);
            if (port_ != 0) {
                String port;
                port.printInt64(port_);
                text.append(u":");
                text.append(port);
            }
        }
        if (!path_.isEmpty() && !path_.charEquals(0, u'/'))
            text.append(u"/");
    }
    text.append(path_);
}

void FUrl::setPath(const ConstString& text, bool isFolder) {
    path_ = text;
    path_.toWide();
    setIsFolder(isFolder);
}

bool FUrl::isRelative() const {
    return scheme_.isEmpty() && (path_.isEmpty() || !path_.charEquals(0, u'/'));
}
bool FUrl::isRoot() const {
    return path_.isEmpty() || (path_.size() == 1 && path_.charEquals(0, u'/'));
}
bool FUrl::isFile() const {
    return scheme_ == ConstString(fileScheme);
}

const String& FUrl::getName() const {
    String whole = path_;
    while (!whole.isEmpty() && whole.charEquals(whole.size() - 1, u'/'))
        whole.remove(whole.size() - 1);
    lastSegment_.clear();
    whole.substring(lastSegment_, whole.findLastChar16(u'/') + 1);
    return lastSegment_;
}

void FUrl::setName(const ConstString& name) {
    up();
    path_.append(name);
}

bool FUrl::up() {
    if (path_.isEmpty())
        return false;
    const int32_t last = path_.size() - 1;
    const int32_t end = path_.charEquals(last, u'/') ? last - 1 : last;
    path_.remove(end < 0 ? 0 : path_.findLastChar16(u'/', end) + 1);
    setIsFolder(true);
    return true;
}

void FUrl::addPathSegment(const ConstString& segment, bool isFolder) {
    if (!path_.isEmpty() && !path_.charEquals(path_.size() - 1, u'/'))
        path_.append(u"/");
    String encoded = segment;
    encoded.toWide();
    encode(encoded);
    path_.append(encoded);
    if (isFolder)
        path_.append(u"/");
    setIsFolder(isFolder);
}

void FUrl::encode(String& text, bool asUtf8) {
    const bool wide = text.isWide();
    std::string bytes;
    if (wide && !asUtf8 &&
        std::all_of(text.view16().begin(), text.view16().end(), [](char16_t c) { return c < 0x100; }))
        for (const char16_t c : text.view16())
            bytes += static_cast<char>(c);
    else
        bytes = text.toUtf8();
    std::string encoded;
    for (const char c : bytes) {
        const auto byte = static_cast<uint8_t>(c);
        if (passesUnencoded(byte)) {
            encoded += c;
            continue;
        }
        char digits[4];
        std::snprintf(digits, sizeof digits, "%%%02x", byte);
        encoded += digits;
    }
    text = ConstString(std::string_view(encoded));
    if (wide)
        text.toWide();
}

void FUrl::decode(String& text) {
    const bool wide = text.isWide();
    const std::string encoded = text.toUtf8();
    std::string bytes;
    for (size_t i = 0; i < encoded.size(); ++i) {
        const int high = encoded[i] == '%' && i + 2 < encoded.size() ? hexDigit(encoded[i + 1]) : -1;
        const int low = high >= 0 ? hexDigit(encoded[i + 2]) : -1;
        if (low < 0) {
            bytes += encoded[i];
            continue;
        }
        bytes += static_cast<char>(high * 16 + low);
        i += 2;
    }
    if (wide)
        text = ConstString(std::u16string_view(toWideOrLatin(bytes)));
    else
        text = ConstString(std::string_view(bytes));
}

void FUrl::registerPort(std::string_view scheme, int32_t port) {
    if (auto* known = schemePorts.get())
        known->ports.insert_or_assign(std::string(scheme), port);
}

std::string FUrl::resolveInside(std::string_view base, std::string_view reference) {
    std::vector<std::string_view> parts;
    if (!isPlainReference(reference) || !splitInside(reference, parts))
        return {};
    std::string path(base.empty() ? "." : base);
    for (const std::string_view part : parts) {
        if (!path.ends_with('/'))
            path += '/';
        path += part;
    }
    const std::string folder = platform::getCanonicalPath(std::string(base.empty() ? "." : base));
    return isBelow(platform::getCanonicalPath(path), folder) ? path : std::string();
}

} // namespace qorl
