#include "persistence/files/PathText.h"

#include "foundation/text/TextConversion.h"

#include <new>

namespace qorl::PathText {

namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

bool standsForByte(char32_t point) {
    return point >= 0xDC80 && point <= 0xDCFF;
}

/// Whether no byte of a name, and no other half of a character, stands alone in it.
bool isPlainText(std::u16string_view path) {
    for (int32_t at = 0; at < static_cast<int32_t>(path.size());)
        if (text::isSurrogate(text::nextPoint(path, at)))
            return false;
    return true;
}

} // namespace

std::u16string fromNative(std::string_view native) {
    std::u16string path;
    path.reserve(native.size());
    for (int32_t at = 0; at < static_cast<int32_t>(native.size());) {
        const char32_t point = text::nextPoint(native, at);
        if (point >= 0x10000) {
            path += static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10));
            path += static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF));
        } else {
            path += static_cast<char16_t>(point);
        }
    }
    return path;
}

std::string toNative(std::u16string_view path) {
    std::string native;
    native.reserve(path.size());
    for (int32_t at = 0; at < static_cast<int32_t>(path.size());) {
        char32_t point = text::nextPoint(path, at);
        if (text::isSurrogate(point) && !standsForByte(point))
            point = replacementCharacter;
        char bytes[4];
        int32_t length = 0;
        text::appendPoint8(bytes, length, point);
        native.append(bytes, static_cast<size_t>(length));
    }
    return native;
}

std::string toNative(const ConstString& text) {
    return text.isWide() ? toNative(text.view16()) : std::string(text.view8());
}

std::string folderOfNative(std::string_view native) {
    native = native.substr(0, native.find_last_not_of('/') + 1);
    return std::string(native.substr(0, native.find_last_of('/') + 1));
}

std::string nameOfNative(std::string_view native) {
    native = native.substr(0, native.find_last_not_of('/') + 1);
    return std::string(native.substr(native.find_last_of('/') + 1));
}

bool beginsAsUrl(const ConstString& path) {
    const int32_t end = path.findChar16(u'/');
    return end > 1 && path.find(ConstString(std::u16string_view(u"://"))) == end - 1;
}

bool isOnePart(const ConstString& name) {
    return !name.isEmpty() && name != ConstString(".") && name != ConstString("..") &&
           name.findChar16(u'/') == ConstString::notFound && name.findChar16(u'\0') == ConstString::notFound;
}

std::optional<std::vector<std::string_view>> partsBelow(std::string_view path, std::string_view separators,
                                                        Dots dots) {
    std::vector<std::string_view> parts;
    while (!path.empty()) {
        const size_t end = path.find_first_of(separators);
        const std::string_view part = path.substr(0, end);
        path = end == std::string_view::npos ? std::string_view() : path.substr(end + 1);
        if (part.empty() || part == ".")
            continue;
        if (part != "..") {
            parts.push_back(part);
            continue;
        }
        if (dots == Dots::refused || parts.empty())
            return std::nullopt;
        parts.pop_back();
    }
    return parts;
}

int32_t findExtension(const ConstString& name, const ConstString& extension) {
    const std::u16string whole = name.toUtf16();
    const std::u16string wanted = u'.' + extension.toUtf16();
    if (extension.isEmpty() || whole.size() <= wanted.size())
        return ConstString::notFound;
    const size_t dot = whole.size() - wanted.size();
    const ConstString end(std::u16string_view(whole).substr(dot));
    const bool isSame = end.compare(ConstString(std::u16string_view(wanted)), ConstString::all, true) == 0;
    return isSame ? static_cast<int32_t>(dot) : ConstString::notFound;
}

int32_t wholeLength(std::u16string_view text, int32_t length) {
    const auto at = static_cast<size_t>(length);
    if (at >= text.size())
        return static_cast<int32_t>(text.size());
    const bool isCut = at > 0 && text::isLeadSurrogate(text[at - 1]) && text::isTrailSurrogate(text[at]);
    return isCut ? length - 1 : length;
}

String toStoredText(const String& text) {
    String stored = text;
    if (text.isWide() && !isPlainText(text.view16())) {
        const std::string native = toNative(text.view16());
        stored = ConstString(std::string_view(native));
    }
    if (stored.isEmpty() != text.isEmpty())
        throw std::bad_alloc();
    return stored;
}

String toStreamText(const String& text) {
    String stored = toStoredText(text);
    if (stored.isWide() || !stored.view8().starts_with(text::utf8Mark))
        return stored;
    const std::string marked = std::string(text::utf8Mark) + std::string(stored.view8());
    stored = ConstString(std::string_view(marked));
    if (static_cast<size_t>(stored.size()) != marked.size())
        throw std::bad_alloc();
    return stored;
}

bool canBeStored(const String& text) {
    constexpr int32_t terminatorAndMark = 4;
    return static_cast<int32_t>(text.toUtf8().size()) + terminatorAndMark <= String::maxStoredBytes;
}

} // namespace qorl::PathText
