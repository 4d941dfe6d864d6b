#include "foundation/text/TextConversion.h"
#include "persistence/files/PathText.h"
#include "persistence/urls/FUrl.h"
#include "persistence/urls/UrlBytes.h"

#include <algorithm>
#include <new>
#include <vector>

namespace qorl {

namespace {

/// One byte for each character, while all of them have one.
bool toLatinBytes(const String& text, std::string& bytes) {
    if (!text.isWide())
        return false;
    const std::u16string_view units = text.view16();
    if (std::any_of(units.begin(), units.end(), [](char16_t unit) { return unit > 0xFF; }))
        return false;
    bytes.assign(units.begin(), units.end());
    return true;
}

/// Bytes that are no UTF-8 are Latin-1.
std::u16string toWideOrLatin(const std::string& bytes) {
    if (text::wideLength(bytes) != text::invalid)
        return text::widenAnyway(bytes);
    std::u16string wide;
    for (const char byte : bytes)
        wide += static_cast<char16_t>(static_cast<uint8_t>(byte));
    return wide;
}

/// Puts `bytes` in the place of `text`, in its width. Without memory the text stays.
void replaceText(String& text, const std::string& bytes) {
    String changed;
    if (text.isWide())
        changed = ConstString(std::u16string_view(toWideOrLatin(bytes)));
    else
        changed = ConstString(std::string_view(bytes));
    if (changed.isEmpty() == bytes.empty())
        text = std::move(changed);
}

/// RFC 3986, section 5.2.4, on the segments of an absolute path or of one that is taken as one.
std::string withoutDotSegments(std::string_view path) {
    std::vector<std::string_view> kept;
    const bool isAbsolute = path.starts_with('/');
    if (isAbsolute)
        path.remove_prefix(1);
    for (bool isLast = path.empty(); !isLast;) {
        const size_t end = path.find('/');
        const std::string_view segment = path.substr(0, end);
        isLast = end == std::string_view::npos;
        path.remove_prefix(isLast ? path.size() : end + 1);
        // What leads above the start of a relative path says where it leads.
        const bool leadsAbove = segment == ".." && !isAbsolute && (kept.empty() || kept.back() == "..");
        const bool isDots = (segment == "." || segment == "..") && !leadsAbove;
        if (segment == ".." && !leadsAbove && !kept.empty())
            kept.pop_back();
        if (!isDots)
            kept.push_back(segment);
        else if (isLast)
            kept.push_back({});
    }
    std::string clean = isAbsolute ? "/" : "";
    for (size_t i = 0; i < kept.size(); ++i)
        clean.append(i == 0 ? "" : "/").append(kept[i]);
    return clean;
}

} // namespace

void FUrl::encode(String& text, bool asUtf8) try {
    std::string bytes;
    if (asUtf8 || !toLatinBytes(text, bytes))
        bytes = PathText::toNative(text);
    replaceText(text, UrlBytes::encode(bytes));
} catch (const std::bad_alloc&) {
    return; // The text stays as it is, like in every other operation on it.
}

void FUrl::decode(String& text) try {
    replaceText(text, UrlBytes::decode(text.toUtf8()));
} catch (const std::bad_alloc&) {
    return; // As in `encode`.
}

std::string FUrl::plainPath() const {
    const std::string bytes = PathText::toNative(path_.view16());
    return scheme_.isEmpty() ? bytes : UrlBytes::decode(bytes);
}

std::string FUrl::normalForm() const {
    if (scheme_.isEmpty())
        return withoutDotSegments(plainPath());
    std::string form = UrlBytes::lowerCase(scheme_.toUtf8()) + "://";
    if (!hasScheme(fileScheme)) {
        form += UrlBytes::lowerCase(host_.toUtf8());
        FUrl plain;
        plain.scheme_ = scheme_;
        plain.takeAuthority({});
        if (port_ != 0 && port_ != plain.port_)
            form += ':' + std::to_string(port_);
    }
    const std::string path = UrlBytes::normalize(PathText::toNative(path_.view16()));
    return form + withoutDotSegments(path.starts_with('/') && hasScheme(fileScheme) ? path : '/' + path);
}

} // namespace qorl
