#pragma once

#include "foundation/containers/FreeBlock.h"
#include "foundation/text/StoredText.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace qorl {

/// The bytes of a body on their way to a stream, in its byte order. What was put can be cut off again, and
/// counts be set when they are known. Throws `std::bad_alloc`.
class BodyBuffer {
public:
    /// As `FBinaryStream::byteOrder`.
    explicit BodyBuffer(uint16_t byteOrder) : isReversed_(byteOrder != 0) {}

    size_t size() const { return size_; }
    const char* data() const { return bytes_.get(); }

    template <typename Number>
    void put(Number value) {
        store(extend(sizeof value), value);
    }
    /// False for a text that is too long.
    bool putText(const ConstString& text) {
        if (!text.isWide())
            return putText(text.view8());
        const text::StoredText stored(text);
        if (!stored.isValid())
            throw std::bad_alloc();
        if (stored.isTooLong())
            return false;
        const auto count = static_cast<int32_t>(stored.count());
        char* out = extend(sizeof count + static_cast<size_t>(count));
        store(out, count);
        stored.copyTo(out + sizeof count);
        return true;
    }
    /// Of 8-bit text.
    bool putText(std::string_view text) {
        if (text.size() >= String::maxStoredBytes)
            return false;
        const auto count = static_cast<int32_t>(text.empty() ? 0 : text.size() + 1);
        char* out = extend(sizeof count + static_cast<size_t>(count));
        store(out, count);
        if (count > 0) {
            std::memcpy(out + sizeof count, text.data(), text.size());
            out[sizeof count + text.size()] = 0;
        }
        return true;
    }
    void putBytes(std::string_view bytes) {
        if (!bytes.empty())
            std::memcpy(extend(bytes.size()), bytes.data(), bytes.size());
    }
    void setCount(size_t place, int32_t count) { store(bytes_.get() + place, count); }
    void cut(size_t size) { size_ = size; }

private:
    template <typename Number>
    void store(char* out, Number value) const {
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        for (size_t i = 0; i < sizeof value; ++i)
            out[i] = bytes[isReversed_ ? sizeof value - 1 - i : i];
    }

    char* extend(size_t count) {
        if (count > room_ - size_)
            grow(count);
        char* out = bytes_.get() + size_;
        size_ += count;
        return out;
    }

    void grow(size_t count) {
        const size_t room = std::max(std::max(fewest, room_ * 2), size_ + count);
        auto* bytes = static_cast<char*>(std::realloc(bytes_.get(), room));
        if (!bytes)
            throw std::bad_alloc();
        static_cast<void>(bytes_.release());
        bytes_.reset(bytes);
        room_ = room;
    }

    static constexpr size_t fewest = 256;

    std::unique_ptr<char, FreeBlock> bytes_;
    size_t size_ = 0;
    size_t room_ = 0;
    bool isReversed_;
};

} // namespace qorl
