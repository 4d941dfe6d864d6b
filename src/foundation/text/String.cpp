#include "foundation/text/String.h"

#include "foundation/text/TextConversion.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
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

/// Up to the terminator. Beyond `maxLength` it is a length that no buffer is given for.
template <typename Char>
int32_t lengthUpTo(const Char* text, int32_t most) {
    if (most < 0)
        return static_cast<int32_t>(
            std::min<size_t>(std::char_traits<Char>::length(text), ConstString::maxLength + 1));
    int32_t length = 0;
    while (length < most && text[length] != 0)
        ++length;
    return length;
}

/// A buffer with the wide form of bytes up to their first zero, and its length. Null when they are not valid
/// in the code page or memory ran out.
char16_t* widened(uint32_t codePage, std::string_view bytes, int32_t& length) {
    if (codePage != String::systemCodePage && codePage != String::utf8CodePage) {
        std::u16string wide;
        if (!text::decode(codePage, bytes, wide))
            return nullptr;
        length = lengthUpTo(wide.data(), static_cast<int32_t>(wide.size()));
        auto* buffer = allocate<char16_t>(length);
        if (buffer)
            copyChars(buffer, wide.data(), length);
        return buffer;
    }
    length = text::wideLength(bytes);
    if (length == text::invalid)
        return nullptr;
    if (const size_t zero = bytes.find('\0'); zero != bytes.npos) {
        bytes = bytes.substr(0, zero);
        length = text::wideLength(bytes);
    }
    auto* buffer = allocate<char16_t>(length);
    if (buffer)
        text::widen(bytes, buffer);
    return buffer;
}

/// A buffer with the 8-bit form and its length. Null for an unknown code page or when memory ran out.
char* narrowed(uint32_t codePage, std::u16string_view wide, int32_t& length) {
    if (codePage != String::systemCodePage && codePage != String::utf8CodePage) {
        std::string bytes;
        if (!text::encode(codePage, wide, bytes))
            return nullptr;
        length = static_cast<int32_t>(bytes.size());
        auto* buffer = allocate<char>(length);
        if (buffer)
            copyChars(buffer, bytes.data(), length);
        return buffer;
    }
    const int64_t count = text::narrowLength(wide);
    auto* buffer = allocate<char>(count);
    if (buffer) {
        text::narrow(wide, buffer);
        length = static_cast<int32_t>(count);
    }
    return buffer;
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

/// Takes over the buffer of a text that goes.
void String::adopt(String& other) const {
    adopt(const_cast<void*>(std::exchange(other.buffer_, nullptr)), other.size(), other.isWide());
    other.setLength(0);
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
    int32_t length = 0;
    char16_t* buffer = isEmpty() ? nullptr : widened(codePage, view8(), length);
    if (!buffer && !isEmpty())
        return false;
    adopt(buffer, length, true);
    return true;
}

bool String::toNarrow(uint32_t codePage) const {
    if (!isWide() && codePage == systemCodePage)
        return true;
    String wide; // so that a failure leaves the bytes as they are
    if (!isWide() && !isEmpty()) {
        int32_t length = 0;
        char16_t* buffer = widened(systemCodePage, view8(), length);
        if (!buffer)
            return false;
        wide.adopt(buffer, length, true);
    }
    const std::u16string_view source = isWide() ? view16() : wide.view16();
    int32_t length = 0;
    char* buffer = source.empty() ? nullptr : narrowed(codePage, source, length);
    if (!buffer && !source.empty())
        return false;
    adopt(buffer, length, false);
    return true;
}

template <typename Char>
bool String::assignChars(const Char* text, int32_t length) {
    constexpr bool wide = isWideChar<Char>;
    if (length == 0 || !text) {
        adopt(nullptr, 0, wide);
        return true;
    }
    if (text == buffer_ && isWide() == wide && length == size())
        return true;
    auto* buffer = allocate<Char>(length);
    if (!buffer)
        return false;
    copyChars(buffer, text, length);
    adopt(buffer, length, wide);
    return true;
}

bool String::assign8(const char* text, int32_t length, bool measure) {
    if (text && text == buffer_)
        return true;
    return assignChars(text, !text ? 0 : measure || length < 0 ? lengthUpTo(text, length) : length);
}

bool String::assign16(const char16_t* text, int32_t length, bool measure) {
    if (text && text == buffer_)
        return true;
    return assignChars(text, !text ? 0 : measure || length < 0 ? lengthUpTo(text, length) : length);
}

bool String::assign(const ConstString& other, int32_t length) {
    if (&other == this)
        return true;
    const int32_t count = length < 0 ? other.size() : std::min(length, other.size());
    return other.isWide() ? assignChars(other.view16().data(), count)
                          : assignChars(other.view8().data(), count);
}

void String::take(void* buffer, bool isWide) {
    if (buffer && buffer == buffer_)
        return;
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
bool String::splice(int32_t position, int32_t removed, const Char* text, int32_t length) {
    const int64_t total = int64_t{size()} - removed + length;
    const auto* old = static_cast<const Char*>(buffer_);
    if (total == 0) {
        adopt(nullptr, 0, isWideChar<Char>);
        return true;
    }
    const bool isOwn = old && text >= old && text <= old + size();
    if (position == size() && !isOwn && total <= maxLength) {
        auto* grown = static_cast<Char*>(
            std::realloc(const_cast<void*>(buffer_), (static_cast<size_t>(total) + 1) * sizeof(Char)));
        if (!grown)
            return false;
        copyChars(grown + position, text, length);
        grown[total] = 0;
        buffer_ = grown;
        setLength(static_cast<int32_t>(total));
        return true;
    }
    auto* buffer = allocate<Char>(total);
    if (!buffer)
        return false;
    copyChars(buffer, old, position);
    copyChars(buffer + position, text, length);
    const int32_t behind = position + removed;
    copyChars(buffer + position + length, old + behind, size() - behind);
    adopt(buffer, static_cast<int32_t>(total), isWideChar<Char>);
    return true;
}

/// The same for a text of either width. An empty string takes the width of the source.
bool String::spliceText(int32_t position, int32_t removed, const ConstString& other) {
    if (isEmpty())
        return assign(other);
    if (other.isEmpty() && removed == 0)
        return true;
    if (isWide()) {
        const text::WideCopy wide(other);
        return wide.isValid() &&
               splice(position, removed, wide.view().data(), static_cast<int32_t>(wide.view().size()));
    }
    const text::NarrowCopy bytes(other);
    return bytes.isValid() && bytes.view().size() <= static_cast<size_t>(maxLength) &&
           splice(position, removed, bytes.view().data(), static_cast<int32_t>(bytes.view().size()));
}

void String::append8(const char* text, int32_t length) {
    append(ConstString(text, length));
}
void String::append16(const char16_t* text, int32_t length) {
    append(ConstString(text, length));
}

void String::append(const ConstString& other, int32_t length) {
    const bool isThisText =
        &other == this || (other.data() == buffer_ && other.size() == size() && other.isWide() == isWide());
    if (isThisText && !isEmpty())
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
    if (position >= size())
        append(other, length);
    else
        spliceText(std::max(position, 0), 0, length < 0 ? other : ConstString(other, 0, length));
}

void String::replace(int32_t position, int32_t length, const ConstString& other) {
    if (position >= size()) {
        append(other);
        return;
    }
    const int32_t place = std::max(position, 0);
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
                            bool ignoreCase) try {
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
    if (result.size() > static_cast<size_t>(maxLength))
        return 0;
    return assignChars(result.data(), static_cast<int32_t>(result.size())) ? replaced : 0;
} catch (const std::bad_alloc&) {
    return 0;
}

int32_t String::replaceAll8(const char* old, const char* replacement, bool all, bool ignoreCase) {
    if (!old || !*old || !replacement || isEmpty())
        return 0;
    if (!isWide())
        return replaceEach<char>(ConstString(old), ConstString(replacement), all, ignoreCase);
    const text::WideCopy wideOld{ConstString(old)};
    const text::WideCopy wideReplacement{ConstString(replacement)};
    if (!wideOld.isValid() || !wideReplacement.isValid())
        return 0;
    return replaceEach<char16_t>(ConstString(wideOld.view()), ConstString(wideReplacement.view()), all,
                                 ignoreCase);
}

int32_t String::replaceAll16(const char16_t* old, const char16_t* replacement, bool all, bool ignoreCase) {
    if (!old || !*old || !replacement || isEmpty())
        return 0;
    if (isWide())
        return replaceEach<char16_t>(ConstString(old), ConstString(replacement), all, ignoreCase);
    const text::NarrowCopy narrowOld{ConstString(old)};
    const text::NarrowCopy narrowReplacement{ConstString(replacement)};
    if (!narrowOld.isValid() || !narrowReplacement.isValid())
        return 0;
    return replaceEach<char>(ConstString(narrowOld.view()), ConstString(narrowReplacement.view()), all,
                             ignoreCase);
}

bool String::resize(int32_t length, bool wide, bool fill) {
    if (length <= 0) {
        adopt(nullptr, 0, wide);
        return true;
    }
    if (isWide() != wide) {
        String other;
        if (!other.assign(*this) || !(wide ? other.toWide() : other.toNarrow()) ||
            !other.resize(length, wide, fill))
            return false;
        adopt(other);
        return true;
    }
    const size_t unit = wide ? sizeof(char16_t) : sizeof(char);
    void* buffer = length > maxLength
                       ? nullptr
                       : std::realloc(const_cast<void*>(buffer_), (static_cast<size_t>(length) + 1) * unit);
    if (!buffer)
        return false;
    buffer_ = buffer;
    const int32_t used = std::min(size(), length);
    if (wide) {
        std::fill(buffer16() + used, buffer16() + length, fill ? u' ' : u'\0');
        buffer16()[length] = 0;
    } else {
        std::fill(buffer8() + used, buffer8() + length, fill ? ' ' : '\0');
        buffer8()[length] = 0;
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
    return assign(ConstString(*this, start, end - start));
}

/// In place where each character keeps its number of bytes.
template <typename Map>
void String::mapBytes(Map map) {
    int64_t length = 0;
    bool isSteady = true;
    for (int32_t at = 0; at < size();) {
        const int32_t here = at;
        const int32_t mapped = text::pointLength8(map(text::nextPoint(view8(), at)));
        isSteady = isSteady && mapped == at - here;
        length += mapped;
    }
    char* target = isSteady ? buffer8() : allocate<char>(length);
    if (!target)
        return;
    int32_t to = 0;
    for (int32_t at = 0; at < size();)
        text::appendPoint8(target, to, map(text::nextPoint(view8(), at)));
    if (!isSteady)
        adopt(target, to, false);
}

template <typename Map>
void String::mapCase(Map map) {
    if (!isWide() && isAscii()) {
        char* bytes = buffer8();
        std::transform(bytes, bytes + size(), bytes,
                       [map](char c) { return static_cast<char>(map(static_cast<char32_t>(c))); });
        return;
    }
    if (!isWide()) {
        mapBytes(map);
        return;
    }
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
}

void String::toLower() {
    mapCase(text::lower);
}
void String::toUpper() {
    mapCase(text::upper);
}

} // namespace qorl
