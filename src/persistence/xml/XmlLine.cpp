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

XmlLine::XmlLine() : buffer_(takeBuffer()) {}

XmlLine::~XmlLine() {
    giveBuffer(buffer_);
}

char* XmlLine::makeRoom(size_t count) {
    const int64_t needed = buffer_->used() + static_cast<int64_t>(count);
    if (needed > buffer_->capacity()) {
        // By half at least, so that a long text costs no more for being put in pieces.
        const int64_t wanted = std::max(needed, int64_t{buffer_->capacity()} * 3 / 2);
        constexpr int64_t most = std::numeric_limits<int32_t>::max();
        if (isBroken_ || needed > most ||
            !buffer_->setCapacity(static_cast<int32_t>(std::min(wanted, most)))) {
            isBroken_ = true;
            return nullptr;
        }
    }
    return isBroken_ ? nullptr : buffer_->data() + buffer_->used();
}

void XmlLine::used(const char* end) {
    buffer_->setUsedSize(static_cast<int32_t>(end - buffer_->data()));
}

XmlLine& XmlLine::put(std::string_view text) {
    if (char* to = makeRoom(text.size())) {
        std::memcpy(to, text.data(), text.size());
        used(to + text.size());
    }
    return *this;
}

XmlLine& XmlLine::fill(char character, int32_t count) {
    const auto size = static_cast<size_t>(std::max(count, 0));
    if (char* to = makeRoom(size)) {
        std::memset(to, character, size);
        used(to + size);
    }
    return *this;
}

XmlLine& XmlLine::putEscaped(std::string_view bytes, Escape escape) {
    const auto& table = XmlEntities::substitutes(escape);
    size_t at = 0;
    while (at < bytes.size()) {
        const size_t start = at;
        while (at < bytes.size() && table[static_cast<uint8_t>(bytes[at])].length == 0)
            ++at;
        put(bytes.substr(start, at - start));
        if (at < bytes.size()) {
            const auto& entry = table[static_cast<uint8_t>(bytes[at++])];
            put(std::string_view(entry.text, entry.length));
        }
    }
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
        char* to = makeRoom((end - at + 1) * mostBytes);
        if (!to)
            return;
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
        used(to);
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
    if (char* to = makeRoom(bytes.size() * 2)) {
        for (const char byte : bytes) {
            *to++ = digits[static_cast<uint8_t>(byte) >> 4];
            *to++ = digits[static_cast<uint8_t>(byte) & 15];
        }
        used(to);
    }
    return *this;
}

bool XmlLine::finish(bool written) {
    buffer_->clear();
    return !std::exchange(isBroken_, false) && written;
}

bool XmlLine::writeTo(FBinaryStream& stream) {
    const int64_t count = buffer_->used();
    return finish(!isBroken_ && stream.write(buffer_->data(), count) == count);
}

bool XmlLine::writeTo(IBStream& stream) {
    const int64_t count = buffer_->used();
    int64_t got = 0;
    return finish(!isBroken_ && stream.write(buffer_->data(), count, &got) == Result::ok && got == count);
}

} // namespace qorl
