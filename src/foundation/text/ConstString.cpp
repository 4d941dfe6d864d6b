#include "foundation/text/ConstString.h"

#include "foundation/text/String.h"
#include "foundation/text/TextConversion.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace qorl {

using text::isDigitIn;
using text::NarrowCopy;
using text::skipDigits;
using text::value;
using text::View;
using text::WideCopy;

namespace {

int32_t sign(int64_t difference) {
    return difference < 0 ? -1 : difference > 0 ? 1 : 0;
}

/// The lower-case form of the next character, moving on behind it.
template <typename Char>
char32_t nextLower(View<Char> text, int32_t& at) {
    const auto unit = value(text[static_cast<size_t>(at)]);
    if (unit < 0x80) {
        ++at;
        return text::lowerAscii(unit);
    }
    return text::lower(text::nextPoint(text, at));
}

/// Whether nothing but the terminator counts behind `at`.
template <typename Char>
bool isEnd(View<Char> text, size_t at) {
    return at >= text.size() || text[at] == 0;
}

/// The order of two texts that are the same up to both places, where at least one has its end.
template <typename Char>
int32_t compareEnds(View<Char> a, size_t atA, View<Char> b, size_t atB) {
    return static_cast<int32_t>(isEnd(b, atB)) - static_cast<int32_t>(isEnd(a, atA));
}

template <typename Char>
int32_t compareFolded(View<Char> a, View<Char> b) {
    int32_t atA = 0;
    int32_t atB = 0;
    while (!isEnd(a, static_cast<size_t>(atA)) && !isEnd(b, static_cast<size_t>(atB))) {
        const char32_t pointA = nextLower(a, atA);
        const char32_t pointB = nextLower(b, atB);
        if (pointA != pointB)
            return pointA < pointB ? -1 : 1;
    }
    return compareEnds(a, static_cast<size_t>(atA), b, static_cast<size_t>(atB));
}

/// How many characters are the same in front of the first 0, a machine word at a time.
template <typename Char>
size_t commonLength(View<Char> a, View<Char> b) {
    constexpr size_t step = sizeof(uint64_t) / sizeof(Char);
    constexpr uint64_t ones = ~uint64_t{0} / ((uint64_t{1} << (8 * sizeof(Char))) - 1);
    constexpr uint64_t highBits = ones << (8 * sizeof(Char) - 1);
    const size_t both = std::min(a.size(), b.size());
    size_t at = 0;
    for (; at + step <= both; at += step) {
        uint64_t wordA;
        uint64_t wordB;
        std::memcpy(&wordA, a.data() + at, sizeof wordA);
        std::memcpy(&wordB, b.data() + at, sizeof wordB);
        // The second term tells whether a character of the word is 0.
        if (wordA != wordB || ((wordA - ones) & ~wordA & highBits) != 0)
            break;
    }
    while (at < both && a[at] == b[at] && a[at] != 0)
        ++at;
    return at;
}

template <typename Char>
int32_t compareExact(View<Char> a, View<Char> b) {
    const size_t at = commonLength(a, b);
    if (isEnd(a, at) || isEnd(b, at))
        return compareEnds(a, at, b, at);
    return value(a[at]) < value(b[at]) ? -1 : 1;
}

template <typename Char>
int32_t compareViews(View<Char> a, View<Char> b, bool ignoreCase) {
    return ignoreCase ? compareFolded(a, b) : compareExact(a, b);
}

template <typename Char>
View<Char> first(View<Char> text, int32_t count) {
    return count < 0 ? text : text.substr(0, static_cast<size_t>(count));
}

/// How many characters of `text` match all of `wanted`, case aside; -1 for no match.
template <typename Char>
int32_t matchFolded(View<Char> text, View<Char> wanted) {
    int32_t at = 0;
    for (int32_t wantedAt = 0; wantedAt < static_cast<int32_t>(wanted.size());)
        if (at >= static_cast<int32_t>(text.size()) || nextLower(text, at) != nextLower(wanted, wantedAt))
            return -1;
    return at;
}

using Units8 = uint16_t __attribute__((vector_size(16)));

/// The next place of a unit, eight at a time.
size_t findUnit(View<char16_t> text, char16_t unit, size_t at) {
    const Units8 wanted = {unit, unit, unit, unit, unit, unit, unit, unit};
    for (; at + 8 <= text.size(); at += 8) {
        Units8 units;
        std::memcpy(&units, text.data() + at, sizeof units);
        uint64_t hits[2];
        const auto equal = units == wanted;
        std::memcpy(hits, &equal, sizeof hits);
        if (hits[0])
            return at + static_cast<size_t>(__builtin_ctzll(hits[0])) / 16;
        if (hits[1])
            return at + 4 + static_cast<size_t>(__builtin_ctzll(hits[1])) / 16;
    }
    while (at < text.size() && text[at] != unit)
        ++at;
    return at < text.size() ? at : text.npos;
}

size_t findExact(View<char> text, View<char> wanted, size_t start) {
    return text.find(wanted, start);
}

/// The library's own search for 16-bit units looks at one after the other.
size_t findExact(View<char16_t> text, View<char16_t> wanted, size_t start) {
    if (wanted.size() > text.size())
        return text.npos;
    const View<char16_t> starts = text.substr(0, text.size() - wanted.size() + 1);
    for (size_t at = start; (at = findUnit(starts, wanted[0], at)) != text.npos; ++at)
        if (std::memcmp(text.data() + at, wanted.data(), wanted.size() * sizeof(char16_t)) == 0)
            return at;
    return text.npos;
}

template <typename Char>
int32_t findForward(View<Char> text, View<Char> wanted, int32_t start, bool ignoreCase) {
    if (wanted.empty() || start < 0 || static_cast<size_t>(start) >= text.size())
        return ConstString::notFound;
    if (!ignoreCase)
        return static_cast<int32_t>(findExact(text, wanted, static_cast<size_t>(start)));
    for (size_t at = static_cast<size_t>(start); at < text.size(); ++at)
        if (matchFolded(text.substr(at), wanted) >= 0)
            return static_cast<int32_t>(at);
    return ConstString::notFound;
}

template <typename Char>
int32_t findBackward(View<Char> text, View<Char> wanted, int32_t start, bool ignoreCase) {
    if (wanted.empty() || text.empty())
        return ConstString::notFound;
    const size_t from =
        start < 0 ? text.size() - 1 : std::min<size_t>(static_cast<size_t>(start), text.size() - 1);
    if (!ignoreCase)
        return static_cast<int32_t>(text.rfind(wanted, from));
    for (size_t at = from + 1; at-- > 0;)
        if (matchFolded(text.substr(at), wanted) >= 0)
            return static_cast<int32_t>(at);
    return ConstString::notFound;
}

template <typename Char>
int32_t firstDifferenceOf(View<Char> a, View<Char> b, bool ignoreCase) {
    const auto sizeA = static_cast<int32_t>(a.size());
    const auto sizeB = static_cast<int32_t>(b.size());
    int32_t atA = 0;
    int32_t atB = 0;
    while (atA < sizeA && atB < sizeB) {
        const int32_t here = atA;
        if (ignoreCase ? nextLower(a, atA) != nextLower(b, atB)
                       : a[static_cast<size_t>(atA++)] != b[static_cast<size_t>(atB++)])
            return here;
    }
    return atA == sizeA && atB == sizeB ? ConstString::notFound : atA;
}

template <typename Char>
size_t skipZeros(View<Char> text, size_t at) {
    while (at < text.size() && text[at] == '0')
        ++at;
    return at;
}

/// Compares the numbers that begin at both places and moves behind them.
template <typename Char>
int32_t compareNumbers(View<Char> a, size_t& atA, View<Char> b, size_t& atB) {
    const size_t digitsA = skipZeros(a, atA);
    const size_t digitsB = skipZeros(b, atB);
    const size_t endA = skipDigits(a, digitsA);
    const size_t endB = skipDigits(b, digitsB);
    const auto lengths = static_cast<int32_t>(endA - digitsA) - static_cast<int32_t>(endB - digitsB);
    if (lengths != 0)
        return lengths;
    for (size_t i = 0; digitsA + i < endA; ++i)
        if (a[digitsA + i] != b[digitsB + i])
            return a[digitsA + i] - b[digitsB + i];
    const auto zeros = static_cast<int32_t>(digitsA - atA) - static_cast<int32_t>(digitsB - atB);
    atA = endA;
    atB = endB;
    return zeros;
}

int32_t difference(char32_t a, char32_t b) {
    return static_cast<int32_t>(a) - static_cast<int32_t>(b);
}

template <typename Char>
int32_t compareNaturally(View<Char> a, View<Char> b, bool caseSensitive) {
    size_t atA = 0;
    size_t atB = 0;
    while (atA < a.size() && atB < b.size()) {
        if (isDigitIn(a, atA) && isDigitIn(b, atB)) {
            if (const int32_t order = compareNumbers(a, atA, b, atB))
                return order;
            continue;
        }
        auto nextA = static_cast<int32_t>(atA);
        auto nextB = static_cast<int32_t>(atB);
        const char32_t pointA = caseSensitive ? text::nextPoint(a, nextA) : nextLower(a, nextA);
        const char32_t pointB = caseSensitive ? text::nextPoint(b, nextB) : nextLower(b, nextB);
        if (pointA != pointB)
            return difference(pointA, pointB);
        atA = static_cast<size_t>(nextA);
        atB = static_cast<size_t>(nextB);
    }
    return sign(static_cast<int64_t>(a.size() - atA) - static_cast<int64_t>(b.size() - atB));
}

template <typename Result, typename Work>
[[gnu::noinline]] Result madeWide(const ConstString& a, const ConstString& b, Result failed,
                                  const Work& work) {
    const WideCopy wideA(a);
    const WideCopy wideB(b);
    return wideA.isValid() && wideB.isValid() ? work(wideA.view(), wideB.view()) : failed;
}

/// Calls `work` with both texts in one width, the 8-bit one of a mixed pair made wide. `failed` when that
/// can't be.
template <typename Work, typename Result = std::invoke_result_t<Work, View<char>, View<char>>>
Result inOneWidth(const ConstString& a, const ConstString& b, Result failed, const Work& work) {
    if (a.isWide() != b.isWide())
        return madeWide<Result>(a, b, failed, work);
    return a.isWide() ? work(a.view16(), b.view16()) : work(a.view8(), b.view8());
}

/// A text of nothing but ASCII is compared where it stands.
bool equalsMixed(View<char> narrow, View<char16_t> wide) {
    for (size_t i = 0; i < narrow.size(); ++i) {
        if (value(narrow[i]) >= 0x80) {
            const WideCopy copy{ConstString(narrow)};
            return copy.isValid() && copy.view() == wide;
        }
        if (i >= wide.size() || value(narrow[i]) != value(wide[i]))
            return false;
    }
    return narrow.size() == wide.size();
}

template <typename Char>
uint32_t hashOf(View<Char> text, uint32_t size) {
    // A remainder has 32 bits and each character adds 6, so that one division does for five characters.
    constexpr size_t charactersADivision = 5;
    int64_t hash = 0;
    size_t left = charactersADivision;
    for (const Char c : text) {
        const auto character =
            sizeof(Char) == 1 ? static_cast<int32_t>(static_cast<signed char>(c)) : static_cast<int32_t>(c);
        hash = hash * 64 + character;
        if (--left > 0)
            continue;
        hash %= int64_t{size};
        left = charactersADivision;
    }
    hash %= int64_t{size};
    // 8-bit characters above 127 count as negative numbers, and so can the remainder.
    return static_cast<uint32_t>(hash < 0 ? hash + int64_t{size} : hash);
}

enum class Round { toStart, toNext };

/// How many UTF-16 units stand before a place in valid UTF-8. A place inside a character counts as the
/// character's or as that of the next one.
int32_t unitsBefore(View<char> utf8, int32_t place, Round round) {
    int32_t at = 0;
    int32_t units = 0;
    while (at < std::min(place, static_cast<int32_t>(utf8.size()))) {
        const int32_t length = text::nextPoint(utf8, at) > 0xFFFF ? 2 : 1;
        if (at > place && round == Round::toStart)
            break;
        units += length;
    }
    return units;
}

/// The place in valid UTF-8 of the character that holds a UTF-16 unit.
int32_t placeOfUnit(View<char> utf8, int32_t unit) {
    int32_t at = 0;
    int32_t place = 0;
    for (int32_t units = 0; at < static_cast<int32_t>(utf8.size()); place = at) {
        units += text::nextPoint(utf8, at) > 0xFFFF ? 2 : 1;
        if (units > unit)
            break;
    }
    return place;
}

/// Looks for something in 8-bit text as if it were wide. `search` gets the wide form and the start in it; the
/// place that it finds is told in bytes.
template <typename Search>
[[gnu::noinline]] int32_t searchWidened(View<char> text, int32_t start, Round round, const Search& search) {
    const WideCopy wide{ConstString(text)};
    if (!wide.isValid())
        return ConstString::notFound;
    if (wide.view().size() == text.size()) // all ASCII
        return search(wide.view(), start);
    const int32_t found = search(wide.view(), start < 0 ? start : unitsBefore(text, start, round));
    return found == ConstString::notFound ? found : placeOfUnit(text, found);
}

/// `search(text, wanted, start)` in whichever width takes the fewest conversions; places are those of `text`.
template <typename Search>
int32_t searchInOneWidth(const ConstString& text, const ConstString& wanted, int32_t start, int32_t count,
                         Round round, const Search& search) {
    if (!text.isWide() && wanted.isWide())
        return searchWidened(text.view8(), start, round, [&](View<char16_t> wide, int32_t from) {
            return search(wide, first(wanted.view16(), count), from);
        });
    return inOneWidth(text, wanted, ConstString::notFound,
                      [&](auto a, auto b) { return search(a, first(b, count), start); });
}

constexpr size_t maxBytesOfUnit = 3;

/// The UTF-8 form of a character in `bytes`. Half of a pair has none, and gives an empty text.
ConstString inBytes(char16_t character, char (&bytes)[maxBytesOfUnit]) {
    const View<char16_t> unit(&character, 1);
    if (text::isSurrogate(character))
        return {};
    text::narrow(unit, bytes);
    return ConstString(View<char>(bytes, static_cast<size_t>(text::narrowLength(unit))));
}

template <typename Char>
int32_t copyOut(View<Char> text, Char* buffer, int32_t start, int32_t count) {
    const View<Char> part = static_cast<size_t>(start) < text.size() && start >= 0
                                ? first(text.substr(static_cast<size_t>(start)), count)
                                : View<Char>();
    std::copy(part.begin(), part.end(), buffer);
    buffer[part.size()] = 0;
    return static_cast<int32_t>(part.size());
}

} // namespace

ConstString::ConstString(const ConstString& whole, int32_t start, int32_t length) {
    start = std::clamp(start, 0, whole.size());
    const int32_t rest = whole.size() - start;
    const int32_t count = length < 0 ? rest : std::min(length, rest);
    word_ = (whole.word_ & wideFlag) | static_cast<uint32_t>(count);
    if (whole.buffer_)
        buffer_ = whole.isWide() ? static_cast<const void*>(whole.chars16() + start) : whole.chars8() + start;
}

ConstString::ConstString(const FAttributeVariant& variant) {
    if (variant.bareKind() == FAttributeVariant::text8)
        *this = ConstString(variant.text8Value);
    else if (variant.bareKind() == FAttributeVariant::text16)
        *this = ConstString(variant.text16Value);
}

int32_t ConstString::length() const {
    return size();
}
const char* ConstString::text8() const {
    return isWide() || !buffer_ ? "" : chars8();
}
const char16_t* ConstString::text16() const {
    return !isWide() || !buffer_ ? u"" : chars16();
}
const char16_t* ConstString::text() const {
    return text16();
}
const void* ConstString::data() const {
    return buffer_;
}

char ConstString::char8At(int32_t index) const {
    return isWide() || index < 0 || index >= size() ? '\0' : chars8()[index];
}

char16_t ConstString::char16At(int32_t index) const {
    return !isWide() || index < 0 || index >= size() ? u'\0' : chars16()[index];
}

std::string ConstString::toUtf8() const {
    return isWide() ? text::narrow(view16()) : std::string(view8());
}

std::u16string ConstString::toUtf16() const {
    return isWide() ? std::u16string(view16()) : text::widenAnyway(view8());
}

bool ConstString::isAscii() const {
    return isWide() ? text::isAscii(view16()) : text::isAscii(view8());
}

bool ConstString::isNormalized() const {
    if (isAscii())
        return true;
    const WideCopy wide(*this);
    return wide.isValid() && text::composedLength(wide.view()) == static_cast<int32_t>(wide.view().size());
}

int32_t ConstString::compare(const ConstString& other, int32_t count, bool ignoreCase) const {
    if (count == 0)
        return 0;
    if (other.isEmpty())
        return isEmpty() ? 0 : 1;
    if (isEmpty())
        return -1;
    return inOneWidth(*this, other, -1, [=](auto a, auto b) {
        return compareViews(first(a, count), first(b, count), ignoreCase);
    });
}

bool ConstString::equals(const ConstString& other) const {
    if (isWide() != other.isWide())
        return isWide() ? equalsMixed(other.view8(), view16()) : equalsMixed(view8(), other.view16());
    const size_t bytes = static_cast<size_t>(size()) * (isWide() ? sizeof(char16_t) : sizeof(char));
    return size() == other.size() && (bytes == 0 || std::memcmp(buffer_, other.buffer_, bytes) == 0);
}

int32_t ConstString::matchLength(int32_t start, const ConstString& wanted, bool ignoreCase) const {
    if (!ignoreCase)
        return wanted.size();
    const auto at = static_cast<size_t>(start);
    return isWide() ? matchFolded(view16().substr(at), wanted.view16())
                    : matchFolded(view8().substr(at), wanted.view8());
}

int32_t ConstString::compareNatural(const ConstString& other, bool caseSensitive) const {
    return inOneWidth(*this, other, -1,
                      [=](auto a, auto b) { return compareNaturally(a, b, caseSensitive); });
}

int32_t ConstString::compareNatural(const ConstString* a, const ConstString* b, bool caseSensitive) {
    if (!a || !b)
        return static_cast<int32_t>(a != nullptr) - static_cast<int32_t>(b != nullptr);
    return a->compareNatural(*b, caseSensitive);
}

bool ConstString::charEquals(int32_t index, char character) const {
    if (index < 0 || index >= size())
        return character == 0;
    if (!isWide())
        return chars8()[index] == character;
    return value(character) < 0x80 && chars16()[index] == static_cast<char16_t>(character);
}

bool ConstString::charEquals(int32_t index, char16_t character) const {
    if (index < 0 || index >= size())
        return character == 0;
    if (isWide())
        return chars16()[index] == character;
    return character < 0x80 && chars8()[index] == static_cast<char>(character);
}

int32_t ConstString::find(const ConstString& other, int32_t start, int32_t count, bool ignoreCase) const {
    return searchInOneWidth(*this, other, start, count, Round::toNext,
                            [ignoreCase](auto text, auto wanted, int32_t from) {
                                return findForward(text, wanted, from, ignoreCase);
                            });
}

int32_t ConstString::findChar8(char character, int32_t start, bool ignoreCase) const {
    return find(ConstString(&character, 1), start, 1, ignoreCase);
}

int32_t ConstString::findChar16(char16_t character, int32_t start, bool ignoreCase) const {
    if (isWide())
        return find(ConstString(&character, 1), start, 1, ignoreCase);
    // In bytes, so that the text needs no conversion.
    char bytes[maxBytesOfUnit];
    return find(inBytes(character, bytes), start, all, ignoreCase);
}

int32_t ConstString::findLast(const ConstString& other, int32_t start, int32_t count, bool ignoreCase) const {
    return searchInOneWidth(*this, other, start, count, Round::toStart,
                            [ignoreCase](auto text, auto wanted, int32_t from) {
                                return findBackward(text, wanted, from, ignoreCase);
                            });
}

int32_t ConstString::findLastChar8(char character, int32_t start, bool ignoreCase) const {
    return findLast(ConstString(&character, 1), start, 1, ignoreCase);
}

int32_t ConstString::findLastChar16(char16_t character, int32_t start, bool ignoreCase) const {
    if (isWide())
        return findLast(ConstString(&character, 1), start, 1, ignoreCase);
    char bytes[maxBytesOfUnit];
    return findLast(inBytes(character, bytes), start, all, ignoreCase);
}

bool ConstString::startsWith(const ConstString& other, bool ignoreCase) const {
    return inOneWidth(*this, other, other.isEmpty(), [=](auto text, auto wanted) {
        if (wanted.size() > text.size())
            return false;
        return ignoreCase ? matchFolded(text, wanted) >= 0 : text.substr(0, wanted.size()) == wanted;
    });
}

bool ConstString::endsWith(const ConstString& other, bool ignoreCase) const {
    return inOneWidth(*this, other, other.isEmpty(), [=](auto text, auto wanted) {
        if (wanted.size() > text.size())
            return false;
        const auto end = text.substr(text.size() - wanted.size());
        return ignoreCase ? matchFolded(end, wanted) == static_cast<int32_t>(end.size()) : end == wanted;
    });
}

bool ConstString::contains(const ConstString& other, bool ignoreCase) const {
    return find(other, 0, all, ignoreCase) != notFound;
}

int32_t ConstString::firstDifference(const ConstString& other, bool ignoreCase) const {
    if (!isWide() && other.isWide())
        return searchWidened(view8(), 0, Round::toStart, [&](View<char16_t> text, int32_t) {
            return firstDifferenceOf(text, other.view16(), ignoreCase);
        });
    return inOneWidth(*this, other, notFound,
                      [=](auto a, auto b) { return firstDifferenceOf(a, b, ignoreCase); });
}

bool ConstString::substring(String& target, int32_t start, int32_t count) const {
    if (start < 0 || start >= size())
        return false;
    return target.assign(ConstString(*this, start, count));
}

int32_t ConstString::extract8(char* buffer, int32_t start, int32_t count) const {
    if (!buffer)
        return 0;
    const NarrowCopy bytes(*this);
    return copyOut(bytes.view(), buffer, start, count);
}

int32_t ConstString::extract16(char16_t* buffer, int32_t start, int32_t count) const {
    if (!buffer)
        return 0;
    const WideCopy wide(*this);
    return copyOut(wide.view(), buffer, start, count);
}

bool ConstString::isDigitAt(int32_t index) const {
    if (index < 0)
        return false;
    return isWide() ? isDigitIn(view16(), static_cast<size_t>(index))
                    : isDigitIn(view8(), static_cast<size_t>(index));
}

bool ConstString::isLetterAt(int32_t index) const {
    if (index < 0 || index >= size())
        return false;
    if (isWide())
        return text::isLetter(chars16()[index]);
    const char32_t lower = text::lowerAscii(value(chars8()[index]));
    return lower >= 'a' && lower <= 'z';
}

bool ConstString::isSpaceAt(int32_t index) const {
    if (index < 0 || index >= size())
        return false;
    return isWide() ? text::isSpace(chars16()[index]) : text::isAsciiSpace(value(chars8()[index]));
}

uint32_t ConstString::hashCode(uint32_t size) const {
    if (size == 0)
        return 0;
    return isWide() ? hashOf(view16(), size) : hashOf(view8(), size);
}

} // namespace qorl
