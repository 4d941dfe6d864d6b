#include "persistence/xml/XmlLine.h"

#include "foundation/Teardown.h"
#include "persistence/streams/FBinaryStream.h"
#include "persistence/xml/XmlEntities.h"

#include <qorl/Ref.h>

#include <algorithm>
#include <atomic>
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

constinit std::atomic<CmBuffer*> keptBuffers[4] = {};

CmBuffer* takeBuffer() {
    for (auto& slot : keptBuffers)
        if (CmBuffer* buffer = slot.exchange(nullptr))
            return buffer;
    auto buffer = make<CmBuffer>(lineBytes, lineBytes);
    if (buffer->capacity() < lineBytes)
        throw std::bad_alloc();
    return buffer.detach();
}

void giveBuffer(CmBuffer* buffer) {
    buffer->clear();
    if (buffer->capacity() >= lineBytes && buffer->capacity() <= mostKeptBytes) {
        for (auto& slot : keptBuffers) {
            CmBuffer* none = nullptr;
            if (slot.compare_exchange_strong(none, buffer))
                return;
        }
    }
    buffer->release();
}

void dropKeptBuffers() {
    for (auto& slot : keptBuffers)
        if (CmBuffer* buffer = slot.exchange(nullptr))
            buffer->release();
}

const TeardownHook dropBuffersAtTheEnd{TeardownStep::hookLists, &dropKeptBuffers};

} // namespace

XmlLine::XmlLine()
    : buffer_(takeBuffer()), at_(buffer_->data()), end_(buffer_->data() + buffer_->capacity()) {}

XmlLine::~XmlLine() {
    giveBuffer(buffer_);
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
    const auto size = static_cast<size_t>(std::max(count, 0));
    if (makeRoom(size)) {
        std::memset(at_, character, size);
        at_ += size;
    }
    return *this;
}

XmlLine& XmlLine::putEscaped(std::string_view bytes, Escape escape) {
    const auto& table = XmlEntities::substitutes(escape);
    const char* from = bytes.data();
    const char* const stop = from + bytes.size();
    if (!makeRoom(bytes.size()))
        return *this;
    char* to = at_;
    for (; from < stop; ++from) {
        const auto& entry = table[static_cast<uint8_t>(*from)];
        if (entry.length == 0) {
            *to++ = *from;
            continue;
        }
        at_ = to;
        // And for what is left, which then needs no look again.
        if (!makeRoom(entry.length + static_cast<size_t>(stop - from)))
            return *this;
        std::memcpy(at_, entry.text, entry.length);
        to = at_ + entry.length;
    }
    at_ = to;
    return *this;
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
    size_t at = 0;
    while (at < text.size()) {
        // One unit more may follow, the second of a pair.
        const size_t end = std::min(text.size(), at + piece);
        if (!makeRoom((end - at + 1) * mostBytes))
            return;
        char* to = at_;
        while (at < end) {
            uint32_t point = text[at++];
            if (point < 0x80) {
                const auto& entry = markup[point];
                if (entry.length > 0) {
                    std::memcpy(to, entry.text, entry.length);
                    to += entry.length;
                } else {
                    *to++ = static_cast<char>(point);
                }
                continue;
            }
            const bool isPair = point >= 0xD800 && point < 0xDC00 && at < text.size() && text[at] >= 0xDC00 &&
                                text[at] < 0xE000;
            if (isPair)
                point = 0x10000 + ((point - 0xD800) << 10) + (text[at++] - 0xDC00u);
            else if (point >= 0xD800 && point < 0xE000)
                point = 0xFFFD;
            if (point < 0x800) {
                *to++ = static_cast<char>(0xC0 | point >> 6);
            } else {
                if (point < 0x10000) {
                    *to++ = static_cast<char>(0xE0 | point >> 12);
                } else {
                    *to++ = static_cast<char>(0xF0 | point >> 18);
                    *to++ = static_cast<char>(0x80 | (point >> 12 & 63));
                }
                *to++ = static_cast<char>(0x80 | (point >> 6 & 63));
            }
            *to++ = static_cast<char>(0x80 | (point & 63));
        }
        at_ = to;
    }
}

XmlLine& XmlLine::putInteger(int64_t value) {
    char digits[24];
    const auto result = std::to_chars(digits, digits + sizeof digits, value);
    return put({digits, static_cast<size_t>(result.ptr - digits)});
}

XmlLine& XmlLine::putUnsigned(uint64_t value) {
    char digits[24];
    const auto result = std::to_chars(digits, digits + sizeof digits, value);
    return put({digits, static_cast<size_t>(result.ptr - digits)});
}

XmlLine& XmlLine::putFloat(double value) {
    char digits[80];
    const auto result = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 50);
    return put({digits, static_cast<size_t>(result.ptr - digits)});
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

bool XmlLine::finish(bool written) {
    at_ = buffer_->data();
    end_ = at_ + buffer_->capacity();
    return !std::exchange(isBroken_, false) && written;
}

bool XmlLine::writeTo(FBinaryStream& stream) {
    const auto count = static_cast<int64_t>(text().size());
    return finish(!isBroken_ && stream.write(buffer_->data(), count) == count);
}

bool XmlLine::writeTo(IBStream& stream) {
    const auto count = static_cast<int64_t>(text().size());
    int64_t got = 0;
    return finish(!isBroken_ && stream.write(buffer_->data(), count, &got) == Result::ok && got == count);
}

} // namespace qorl
