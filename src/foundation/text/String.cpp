#include "foundation/text/String.h"

#include "foundation/text/TextConversion.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace qorl {

using text::View;

namespace {

template <typename Char>
constexpr bool isWideChar = sizeof(Char) > 1;

/// Room for `length` characters and the terminator, which is written; null when memory ran out or the length
/// is beyond what a string holds.
template <typename Char>
Char* allocate(int64_t length) {
    if (length > ConstString::maxLength)
        return nullptr;
    auto* buffer = static_cast<Char*>(std::malloc((static_cast<size_t>(length) + 1) * sizeof(Char)));
    if (buffer)
        buffer[length] = 0;
    return buffer;
}

template <typename Char>
void copyChars(Char* to, const Char* from, int32_t count) {
    if (count > 0)
        std::memcpy(to, from, static_cast<size_t>(count) * sizeof(Char));
}

template <typename Char>
int32_t lengthUpTo(const Char* text, int32_t most) {
    if (most < 0)
        return static_cast<int32_t>(std::char_traits<Char>::length(text));
    const Char* end = std::find(text, text + most, Char());
    return static_cast<int32_t>(end - text);
}

} // namespace

String::String(String&& other) noexcept {
    buffer_ = std::exchange(other.buffer_, nullptr);
    word_ = std::exchange(other.word_, (other.word_ & reservedFlag) | wideFlag) & ~reservedFlag;
}

String& String::operator=(const String& other) {
    assign(other);
    return *this;
}

String& String::operator=(String&& other) noexcept {
    if (this == &other)
        return *this;
    std::swap(buffer_, other.buffer_);
    const uint32_t kept = word_ & reservedFlag;
    word_ = (other.word_ & ~reservedFlag) | kept;
    other.clear();
    return *this;
}

String& String::operator=(const ConstString& other) {
    assign(other);
    return *this;
}

String& String::operator=(const char* text) {
    assign8(text);
    return *this;
}

String& String::operator=(const char16_t* text) {
    assign16(text);
    return *this;
}

String::~String() {
    std::free(const_cast<void*>(buffer_));
}

/// Frees the buffer and takes another one, with its length and width.
void String::adopt(void* buffer, int32_t length, bool wide) const {
    std::free(const_cast<void*>(buffer_));
    buffer_ = buffer;
    word_ = (word_ & reservedFlag) | (wide ? wideFlag : 0) | static_cast<uint32_t>(length);
}

const char* String::text8() const {
    if (isWide())
        toNarrow();
    return ConstString::text8();
}

const char16_t* String::text16() const {
    if (!isWide())
        toWide();
    return ConstString::text16();
}

bool String::toWide(uint32_t codePage) const {
    if (isWide())
        return true;
    if (isEmpty()) {
        adopt(nullptr, 0, true);
        return true;
    }
    if (codePage != systemCodePage && codePage != utf8CodePage) {
        std::u16string wide;
        if (!text::decode(codePage, view8(), wide))
            return false;
        auto* buffer = allocate<char16_t>(static_cast<int64_t>(wide.size()));
        if (!buffer)
            return false;
        copyChars(buffer, wide.data(), static_cast<int32_t>(wide.size()));
        adopt(buffer, lengthUpTo(buffer, static_cast<int32_t>(wide.size())), true);
        return true;
    }
    const int32_t length = text::wideLength(view8());
    auto* buffer = length == text::invalid ? nullptr : allocate<char16_t>(length);
    if (!buffer)
        return false;
    text::widen(view8(), buffer);
    adopt(buffer, length, true);
    return true;
}

bool String::toNarrow(uint32_t codePage) const {
    if (!isWide() && codePage == systemCodePage)
        return true;
    if (!isWide() && !toWide(systemCodePage))
        return false;
    if (isEmpty()) {
        adopt(nullptr, 0, false);
        return true;
    }
    if (codePage != systemCodePage && codePage != utf8CodePage) {
        std::string bytes;
        if (!text::encode(codePage, view16(), bytes))
            return false;
        auto* buffer = allocate<char>(static_cast<int64_t>(bytes.size()));
        if (!buffer)
            return false;
        copyChars(buffer, bytes.data(), static_cast<int32_t>(bytes.size()));
        adopt(buffer, static_cast<int32_t>(bytes.size()), false);
        return true;
    }
    const int64_t length = text::narrowLength(view16());
    auto* buffer = allocate<char>(length);
    if (!buffer)
        return false;
    text::narrow(view16(), buffer);
    adopt(buffer, static_cast<int32_t>(length), false);
    return true;
}

template <typename Char>
void String::assignChars(const Char* text, int32_t length) {
    constexpr bool wide = isWideChar<Char>;
    if (length == 0 || !text) {
        adopt(nullptr, 0, wide);
        return;
    }
    if (text == buffer_ && isWide() == wide && length == size())
        return;
    auto* buffer = allocate<Char>(length);
    if (!buffer)
        return;
    copyChars(buffer, text, length);
    adopt(buffer, length, wide);
}

void String::assign8(const char* text, int32_t length, bool measure) {
    if (text && text == buffer_)
        return;
    assignChars(text, !text ? 0 : measure || length < 0 ? lengthUpTo(text, length) : length);
}

void String::assign16(const char16_t* text, int32_t length, bool measure) {
    if (text && text == buffer_)
        return;
    assignChars(text, !text ? 0 : measure || length < 0 ? lengthUpTo(text, length) : length);
}

void String::assign(const ConstString& other, int32_t length) {
    if (&other == this)
        return;
    const int32_t count = length < 0 ? other.size() : std::min(length, other.size());
    if (other.isWide())
        assignChars(other.view16().data(), count);
    else
        assignChars(other.view8().data(), count);
}

void String::take(void* buffer, bool isWide) {
    if (!buffer)
        adopt(nullptr, 0, isWide);
    else if (isWide)
        adopt(buffer, lengthUpTo(static_cast<const char16_t*>(buffer), all), true);
    else
        adopt(buffer, lengthUpTo(static_cast<const char*>(buffer), all), false);
}

/// Puts `length` characters of the stored width in place of `removed` ones. `text` may lie in this very
/// buffer.
template <typename Char>
void String::splice(int32_t position, int32_t removed, const Char* text, int32_t length) {
    const int64_t total = int64_t{size()} - removed + length;
    const auto* old = static_cast<const Char*>(buffer_);
    if (total == 0) {
        adopt(nullptr, 0, isWideChar<Char>);
        return;
    }
    const bool isOwn = old && text >= old && text <= old + size();
    if (position == size() && !isOwn && total <= maxLength) {
        auto* grown = static_cast<Char*>(
            std::realloc(const_cast<void*>(buffer_), (static_cast<size_t>(total) + 1) * sizeof(Char)));
        if (!grown)
            return;
        copyChars(grown + position, text, length);
        grown[total] = 0;
        buffer_ = grown;
        setLength(static_cast<int32_t>(total));
        return;
    }
    auto* buffer = allocate<Char>(total);
    if (!buffer)
        return;
    copyChars(buffer, old, position);
    copyChars(buffer + position, text, length);
    const int32_t behind = position + removed;
    copyChars(buffer + position + length, old + behind, size() - behind);
    adopt(buffer, static_cast<int32_t>(total), isWideChar<Char>);
}

/// The same for a text of either width. An empty string takes the width of the source.
void String::spliceText(int32_t position, int32_t removed, const ConstString& other) {
    if (other.isEmpty() && removed == 0)
        return;
    if (isEmpty()) {
        assign(other);
        return;
    }
    if (isWide()) {
        const text::WideCopy wide(other);
        if (wide.isValid())
            splice(position, removed, wide.view().data(), static_cast<int32_t>(wide.view().size()));
    } else if (other.isWide()) {
        const std::string bytes = other.toUtf8();
        splice(position, removed, bytes.data(), static_cast<int32_t>(bytes.size()));
    } else {
        splice(position, removed, other.view8().data(), other.size());
    }
}

void String::append8(const char* text, int32_t length) {
    append(ConstString(text, length));
}
void String::append16(const char16_t* text, int32_t length) {
    append(ConstString(text, length));
}

void String::append(const ConstString& other, int32_t length) {
    if (other.data() && other.data() == buffer_)
        return;
    spliceText(size(), 0, length < 0 ? other : ConstString(other, 0, length));
}

void String::appendChar8(char character) {
    spliceText(size(), 0, ConstString(&character, 1));
}
void String::appendChar16(char16_t character) {
    spliceText(size(), 0, ConstString(&character, 1));
}

String& String::operator+=(const ConstString& other) {
    append(other);
    return *this;
}

void String::insert(int32_t position, const ConstString& other, int32_t length) {
    const int32_t place = position < 0 ? 0 : std::min(position, size());
    spliceText(place, 0, length < 0 ? other : ConstString(other, 0, length));
}

void String::replace(int32_t position, int32_t length, const ConstString& other) {
    const int32_t place = position < 0 ? 0 : std::min(position, size());
    const int32_t rest = size() - place;
    spliceText(place, length < 0 ? rest : std::min(length, rest), other);
}

void String::remove(int32_t position, int32_t count) {
    if (position < 0 || position >= size() || count == 0)
        return;
    const int32_t rest = size() - position;
    const int32_t removed = count < 0 ? rest : std::min(count, rest);
    if (isWide())
        splice<char16_t>(position, removed, nullptr, 0);
    else
        splice<char>(position, removed, nullptr, 0);
}

/// Builds the result in one pass, so that many replacements cost no more than one.
template <typename Char>
int32_t String::replaceEach(const ConstString& old, const ConstString& replacement, bool every,
                            bool ignoreCase) {
    const View<Char> text(static_cast<const Char*>(buffer_), static_cast<size_t>(size()));
    const View<Char> with(static_cast<const Char*>(replacement.data()),
                          static_cast<size_t>(replacement.size()));
    std::basic_string<Char> result;
    int32_t replaced = 0;
    int32_t at = 0;
    for (int32_t found = find(old, 0, all, ignoreCase); found != notFound;
         found = find(old, at, all, ignoreCase)) {
        result.append(text, static_cast<size_t>(at), static_cast<size_t>(found - at));
        result.append(with);
        at = found + matchLength(found, old, ignoreCase);
        ++replaced;
        if (!every)
            break;
    }
    if (replaced == 0)
        return 0;
    result.append(text, static_cast<size_t>(at), View<Char>::npos);
    assignChars(result.data(), static_cast<int32_t>(result.size()));
    return replaced;
}

int32_t String::replaceAll8(const char* old, const char* replacement, bool all, bool ignoreCase) {
    if (!old || !*old || !replacement || isEmpty())
        return 0;
    if (!isWide())
        return replaceEach<char>(ConstString(old), ConstString(replacement), all, ignoreCase);
    const String wideOld(old);
    const String wideReplacement(replacement);
    if (!wideOld.toWide() || !wideReplacement.toWide())
        return 0;
    return replaceEach<char16_t>(wideOld, wideReplacement, all, ignoreCase);
}

int32_t String::replaceAll16(const char16_t* old, const char16_t* replacement, bool all, bool ignoreCase) {
    if (!old || !*old || !replacement || isEmpty())
        return 0;
    if (isWide())
        return replaceEach<char16_t>(ConstString(old), ConstString(replacement), all, ignoreCase);
    const String narrowOld(old);
    const String narrowReplacement(replacement);
    if (!narrowOld.toNarrow() || !narrowReplacement.toNarrow())
        return 0;
    return replaceEach<char>(narrowOld, narrowReplacement, all, ignoreCase);
}

bool String::resize(int32_t length, bool wide, bool fill) {
    if (length <= 0) {
        adopt(nullptr, 0, wide);
        return true;
    }
    if (isWide() != wide && !(wide ? toWide() : toNarrow()))
        return false;
    const size_t unit = wide ? sizeof(char16_t) : sizeof(char);
    auto* buffer = length > maxLength
                       ? nullptr
                       : static_cast<char*>(std::realloc(const_cast<void*>(buffer_),
                                                         (static_cast<size_t>(length) + 1) * unit));
    if (!buffer)
        return false;
    buffer_ = buffer;
    if (size() > length)
        setLength(length);
    const size_t used = static_cast<size_t>(size());
    const size_t room = static_cast<size_t>(length) - used;
    if (wide) {
        auto* units = reinterpret_cast<char16_t*>(buffer);
        std::fill_n(units + used, room, fill ? u' ' : u'\0');
        units[length] = 0;
    } else {
        std::memset(buffer + used, fill ? ' ' : '\0', room);
        buffer[length] = 0;
    }
    return true;
}

void String::measure() {
    if (buffer_)
        setLength(isWide() ? lengthUpTo(chars16(), all) : lengthUpTo(chars8(), all));
}

bool String::trim(int32_t mode) {
    if (mode < whiteSpace || mode > nonLettersAndDigits)
        return false;
    const auto isRemoved = [this, mode](int32_t index) {
        if (mode == whiteSpace)
            return isSpaceAt(index);
        const bool isKeptDigit = mode == nonLettersAndDigits &&
                                 (isWide() ? text::isLetterOrDigit(chars16()[index]) : isDigitAt(index));
        return !isLetterAt(index) && !isKeptDigit;
    };
    int32_t end = size();
    while (end > 0 && isRemoved(end - 1))
        --end;
    int32_t start = 0;
    while (start < end && isRemoved(start))
        ++start;
    if (start == 0 && end == size())
        return false;
    assign(ConstString(*this, start, end - start));
    return true;
}

template <typename Map>
void String::mapCase(Map map) {
    if (isWide()) {
        // A character and its other case have the same number of units.
        auto* units = buffer16();
        for (int32_t at = 0; at < size();) {
            const int32_t here = at;
            const char32_t point = map(text::nextPoint(view16(), at));
            if (at - here == 1) {
                units[here] = static_cast<char16_t>(point);
            } else {
                units[here] = static_cast<char16_t>(0xD7C0 + (point >> 10));
                units[here + 1] = static_cast<char16_t>(0xDC00 + (point & 0x3FF));
            }
        }
        return;
    }
    if (isAscii()) {
        char* bytes = buffer8();
        std::transform(bytes, bytes + size(), bytes,
                       [map](char c) { return static_cast<char>(map(static_cast<char32_t>(c))); });
        return;
    }
    // The bytes of a character and of its other case may differ in number.
    if (toWide()) {
        mapCase(map);
        toNarrow();
    }
}

void String::toLower() {
    mapCase(text::lower);
}
void String::toUpper() {
    mapCase(text::upper);
}

} // namespace qorl
