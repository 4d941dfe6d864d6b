#include "persistence/xml/XmlLine.h"

#include "foundation/Singleton.h"
#include "persistence/streams/FBinaryStream.h"
#include "persistence/streams/StreamBufferPool.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace qorl {

namespace {

constexpr int32_t lineBytes = 1024;
// A buffer that had to hold a long text is not kept.
constexpr int32_t mostKeptBytes = 64 * 1024;

constinit Singleton<StreamBufferPool> linePool;

Ref<CmBuffer> takeBuffer() {
    StreamBufferPool* pool = linePool.get();
    Ref<CmBuffer> buffer = pool ? pool->take(lineBytes) : StreamBufferPool::make(lineBytes);
    if (!buffer)
        throw std::bad_alloc();
    return buffer;
}

constexpr size_t longestInteger = 20;
// With all digits of an exact fraction, before it is rounded.
constexpr size_t longestFloat = 128;
constexpr int32_t mostDigits = 50;

__extension__ using Product = unsigned __int128;

constexpr auto digitPairs = [] {
    std::array<char, 200> pairs = {};
    for (uint32_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

/// Eight digits, with zeros in front.
void putEightDigits(char* to, uint32_t number) {
    for (int32_t at = 6; at >= 0; at -= 2) {
        std::memcpy(to + at, &digitPairs[number % 100 * 2], 2);
        number /= 100;
    }
}

/// Cuts the digits of an exact number behind its point at `cut`: to the nearest number, to the even one of
/// two. Null where the digits in front of the point would change.
char* roundDigits(char* cut, char* end) {
    const bool isHalf = *cut == '5' && std::all_of(cut + 1, end, [](char digit) { return digit == '0'; });
    const bool isUp = isHalf ? (cut[-1] - '0') % 2 != 0 : *cut >= '5';
    if (!isUp)
        return cut;
    while (cut[-1] == '9')
        --cut;
    if (cut[-1] == '.')
        return nullptr;
    ++cut[-1];
    return cut;
}

/// As "%.50g" prints it. Most doubles that settings have take all of the digits, for which the general
/// conversion is slow; but while their fraction fits into 64 bits, each multiplication gives sixteen of them.
/// Null for any other number.
char* putExactFraction(char* to, double value) {
    constexpr int32_t mantissaBits = 52;
    constexpr int32_t exponentBias = 1023;
    constexpr uint64_t hiddenBit = uint64_t{1} << mantissaBits;
    constexpr uint64_t sixteenDigits = 10'000'000'000'000'000;
    constexpr uint64_t eightDigits = 100'000'000;
    const auto bits = std::bit_cast<uint64_t>(value);
    // Up to 64 bits behind the point, the number is 2 to the -12th at least, and has no power of ten.
    const int32_t fractionBits =
        exponentBias + mantissaBits - static_cast<int32_t>(bits >> mantissaBits & 0x7FF);
    if (fractionBits < 1 || fractionBits > 64)
        return nullptr;
    const uint64_t mantissa = (bits & (hiddenBit - 1)) | hiddenBit;
    const uint64_t whole = fractionBits < 64 ? mantissa >> fractionBits : 0;
    uint64_t fraction = mantissa << (64 - fractionBits);
    if (fraction == 0)
        return nullptr;
    if (value < 0)
        *to++ = '-';
    const char* const start = to;
    to = std::to_chars(to, to + 20, whole).ptr;
    auto digitsLeft = mostDigits - (whole > 0 ? to - start : 0);
    *to++ = '.';
    char* const point = to;
    for (; fraction != 0; to += 16) {
        const auto product = static_cast<Product>(fraction) * sixteenDigits;
        const auto digits = static_cast<uint64_t>(product >> 64);
        putEightDigits(to, static_cast<uint32_t>(digits / eightDigits));
        putEightDigits(to + 8, static_cast<uint32_t>(digits % eightDigits));
        fraction = static_cast<uint64_t>(product);
    }
    // Zeros in front of all others don't count.
    if (whole == 0)
        digitsLeft += std::find_if(point, to, [](char digit) { return digit != '0'; }) - point;
    if (to - point > digitsLeft)
        to = roundDigits(point + digitsLeft, to);
    while (to && to[-1] == '0')
        --to;
    return to;
}

} // namespace

XmlLine::XmlLine(text::Surrogates surrogates)
    : buffer_(takeBuffer()), at_(buffer_->data()), end_(buffer_->data() + buffer_->capacity()),
      surrogates_(surrogates) {}

XmlLine::~XmlLine() {
    StreamBufferPool* pool = linePool.peek();
    if (pool && buffer_->capacity() <= mostKeptBytes)
        pool->giveBack(std::move(buffer_));
}

bool XmlLine::grow(size_t count) {
    constexpr int64_t most = std::numeric_limits<int32_t>::max();
    const int64_t used = at_ - buffer_->data();
    const int64_t needed = used + static_cast<int64_t>(count);
    // By half at least, so that a long text costs no more for being put in pieces.
    const int64_t wanted = std::min(std::max(needed, int64_t{buffer_->capacity()} * 3 / 2), most);
    buffer_->setUsedSize(static_cast<int32_t>(used));
    if (isBroken_ || needed > most || !buffer_->setCapacity(static_cast<int32_t>(wanted))) {
        isBroken_ = true;
        end_ = at_;
        return false;
    }
    at_ = buffer_->data() + used;
    end_ = buffer_->data() + buffer_->capacity();
    return true;
}

XmlLine& XmlLine::fill(char character, int32_t count) {
    // A fixed size needs no call.
    constexpr size_t fewest = 32;
    const auto size = static_cast<size_t>(std::max(count, 0));
    if (size <= fewest && makeRoom(fewest)) {
        std::memset(at_, character, fewest);
        at_ += size;
    } else if (makeRoom(size)) {
        std::memset(at_, character, size);
        at_ += size;
    }
    return *this;
}

XmlLine& XmlLine::putEscaped(std::string_view bytes, Escape escape) {
    constexpr ptrdiff_t run = 8;
    const char* from = bytes.data();
    const char* const stop = from + bytes.size();
    if (!makeRoom(bytes.size()))
        return *this;
    while (from < stop) {
        // Most texts are written as they are: one look for eight bytes.
        for (; stop - from >= run && XmlEntities::areEightPlain(from); from += run, at_ += run)
            std::memcpy(at_, from, run);
        const ptrdiff_t left = stop - from;
        if (left < run && std::ssize(bytes) >= run && XmlEntities::areEightPlain(stop - run)) {
            // The first of them stand there already.
            std::memcpy(at_ + left - run, stop - run, run);
            at_ += left;
            return *this;
        }
        const char* const end = from + std::min(left, run);
        if (!putEach(from, end, stop, escape))
            return *this;
        from = end;
    }
    return *this;
}

/// Up to `end`; there is room for all bytes up to `stop`, and is afterwards.
bool XmlLine::putEach(const char* from, const char* end, const char* stop, Escape escape) {
    const auto& table = XmlEntities::substitutes(escape);
    char* to = at_;
    while (from < end) {
        const auto& entry = table[static_cast<uint8_t>(*from++)];
        if (entry.length == 0) {
            *to++ = from[-1];
            continue;
        }
        at_ = to;
        if (!makeRoom(entry.length + static_cast<size_t>(stop - from)))
            return false;
        std::memcpy(at_, entry.text, entry.length);
        to = at_ + entry.length;
    }
    at_ = to;
    return true;
}

XmlLine& XmlLine::putEscaped(const ConstString& text, Escape escape) {
    if (!text.isWide())
        return putEscaped(text.view8(), escape);
    putEscapedWide(text.view16());
    return *this;
}

void XmlLine::putEscapedWide(std::u16string_view text) {
    // A unit takes three bytes, or six as markup; a piece at a time, so that a long text asks for little.
    constexpr size_t piece = 4096;
    constexpr size_t mostBytes = 6;
    const auto& markup = XmlEntities::substitutes(Escape::markup);
    const auto isAsciiAt = [&](size_t place) { return text[place] < 0x80; };
    size_t at = 0;
    while (at < text.size()) {
        size_t end = std::min(text.size(), at + piece);
        // Both halves of a pair go together.
        if (end < text.size() && text::isTrailSurrogate(text[end]))
            ++end;
        if (!makeRoom((end - at) * mostBytes))
            return;
        char* to = at_;
        while (at < end) {
            if (isAsciiAt(at)) {
                const auto character = static_cast<char>(text[at++]);
                const auto& entry = markup[static_cast<uint8_t>(character)];
                if (entry.length == 0) {
                    *to++ = character;
                } else {
                    std::memcpy(to, entry.text, entry.length);
                    to += entry.length;
                }
                continue;
            }
            const size_t start = at;
            while (at < end && !isAsciiAt(at))
                ++at;
            const std::u16string_view run = text.substr(start, at - start);
            to += text::narrow(run, to, surrogates_);
        }
        at_ = to;
    }
}

XmlLine& XmlLine::putComment(std::string_view text) {
    put("<!-- ");
    for (size_t at = text.find("--"); at != std::string_view::npos; at = text.find("--")) {
        putEscaped(text.substr(0, at + 1), Escape::entities).put(' ');
        text.remove_prefix(at + 1);
    }
    return putEscaped(text, Escape::entities).put(" -->");
}

XmlLine& XmlLine::putInteger(int64_t value) {
    if (makeRoom(longestInteger))
        at_ = std::to_chars(at_, at_ + longestInteger, value).ptr;
    return *this;
}

XmlLine& XmlLine::putUnsigned(uint64_t value) {
    if (makeRoom(longestInteger))
        at_ = std::to_chars(at_, at_ + longestInteger, value).ptr;
    return *this;
}

XmlLine& XmlLine::putFloat(double value) {
    if (!makeRoom(longestFloat))
        return *this;
    char* const end = putExactFraction(at_, value);
    at_ =
        end ? end : std::to_chars(at_, at_ + longestFloat, value, std::chars_format::general, mostDigits).ptr;
    return *this;
}

XmlLine& XmlLine::putHex(std::string_view bytes) {
    constexpr char digits[] = "0123456789ABCDEF";
    if (makeRoom(bytes.size() * 2)) {
        char* to = at_;
        for (const char byte : bytes) {
            *to++ = digits[static_cast<uint8_t>(byte) >> 4];
            *to++ = digits[static_cast<uint8_t>(byte) & 15];
        }
        at_ = to;
    }
    return *this;
}

/// Begins anew with what stands behind `count` bytes.
bool XmlLine::finish(bool written, size_t count) {
    const size_t rest = size() - count;
    char* const start = buffer_->data();
    std::memmove(start, start + count, rest);
    if (buffer_->capacity() > mostKeptBytes && rest < lineBytes)
        buffer_->setCapacity(lineBytes);
    at_ = buffer_->data() + rest;
    end_ = buffer_->data() + buffer_->capacity();
    return !std::exchange(isBroken_, false) && written;
}

XmlLine& XmlLine::clear() {
    finish(false, size());
    return *this;
}

bool XmlLine::writeTo(FBinaryStream& stream, size_t unit) {
    const size_t count = size() / unit * unit;
    const auto bytes = static_cast<int64_t>(count);
    return finish(!isBroken_ && stream.write(buffer_->data(), bytes) == bytes, count);
}

bool XmlLine::writeTo(IBStream& stream) {
    const auto count = static_cast<int64_t>(size());
    int64_t got = 0;
    const bool isWritten =
        !isBroken_ && stream.write(buffer_->data(), count, &got) == Result::ok && got == count;
    return finish(isWritten, size());
}

} // namespace qorl
