#pragma once

#include "foundation/containers/FreeBlock.h"
#include "foundation/text/ConstString.h"

#include <qorl/IBStream.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

namespace qorl {

/// Typed reading and writing over four raw operations.
///
/// Integers and floats stand low byte first unless the byte order is set. Each typed write is true when all
/// bytes went; each typed read is false on a short read and then leaves the value 0. Nothing throws; a raw
/// operation tells of a failure by a short count or a negative value. Positions and counts are in bytes.
/// Threading: one thread at a time.
class FBinaryStream {
public:
    /// As `IBStream::SeekMode`.
    enum SeekMode : int32_t { fromStart = 0, fromHere = 1, fromEnd = 2 };
    /// Of a counted text, with its terminator.
    static constexpr int32_t maxCountedBytes = 0x40000;

    FBinaryStream& operator=(const FBinaryStream&) = delete;

    /// The bytes moved, at most `count`.
    virtual int64_t read(void* buffer, int64_t count) = 0;
    virtual int64_t write(const void* buffer, int64_t count) = 0;
    /// The new position, negative on failure.
    virtual int64_t seek(int64_t offset, int32_t mode) = 0;
    virtual int64_t tell() = 0;

    /// 0: low byte first. Any other value reverses each number on its way.
    uint16_t byteOrder() const { return byteOrder_; }
    void setByteOrder(uint16_t order) { byteOrder_ = order; }

    bool writeInt8(int8_t value) { return writeRaw(value); }
    bool writeUInt8(uint8_t value) { return writeRaw(value); }
    bool writeInt16(int16_t value) { return writeRaw(value); }
    bool writeUInt16(uint16_t value) { return writeRaw(value); }
    bool writeInt32(int32_t value) { return writeRaw(value); }
    bool writeUInt32(uint32_t value) { return writeRaw(value); }
    bool writeInt64(int64_t value) { return writeRaw(value); }
    bool writeUInt64(uint64_t value) { return writeRaw(value); }
    bool writeFloat(float value) { return writeRaw(value); }
    bool writeDouble(double value) { return writeRaw(value); }
    /// A 16-bit word.
    bool writeBool(bool value) { return writeRaw<uint16_t>(value ? 1 : 0); }

    bool readInt8(int8_t& value) { return readRaw(value); }
    bool readUInt8(uint8_t& value) { return readRaw(value); }
    bool readInt16(int16_t& value) { return readRaw(value); }
    bool readUInt16(uint16_t& value) { return readRaw(value); }
    bool readInt32(int32_t& value) { return readRaw(value); }
    bool readUInt32(uint32_t& value) { return readRaw(value); }
    bool readInt64(int64_t& value) { return readRaw(value); }
    bool readUInt64(uint64_t& value) { return readRaw(value); }
    bool readFloat(float& value) { return readRaw(value); }
    bool readDouble(double& value) { return readRaw(value); }
    bool readBool(bool& value);

    /// Element by element, for any number type of 16 bits and more; a `count` below 1 succeeds at once. A
    /// short transfer ends the work, on reading with the element at fault zeroed.
    template <typename Number>
    bool writeArray(const Number* values, int64_t count);
    template <typename Number>
    bool readArray(Number* values, int64_t count);

    /// The bytes of a terminated text, with `withTerminator` one zero byte more.
    bool writeChars(const char* text, bool withTerminator);
    /// Reads up to a line feed, a zero byte, the end or `size` - 1 bytes; always terminates `buffer`. Drops a
    /// line end of carriage return and line feed, keeps a bare line feed. The length before the first zero
    /// byte.
    int32_t readLine(char* buffer, int32_t size);
    /// A 32-bit count that includes the terminator, then the bytes and the terminator: 5 bytes more than the
    /// text. Null is count 0. A text of 0x40000 bytes and more is refused, since it could not be read back.
    bool writeCountedChars(const char* text);
    using CountedChars = std::unique_ptr<char, FreeBlock>;
    /// The text of `writeCountedChars` in a block of its own. Null for a count that is
    /// below 1 or above 0x40000, whose body is left unread, for a body that is cut off, and without memory. A
    /// body without a terminator keeps its last byte: the block is a byte larger than the count.
    CountedChars readCountedChars();
    /// Terminated: bytes for a text of nothing but ASCII, else EF BB BF and UTF-8, with lone surrogates in
    /// three bytes each. False, with nothing written, when there is no memory for the bytes.
    bool writeTextUtf8(const char16_t* text);
    /// Reads up to a zero byte or the end what `writeTextUtf8` wrote. Bytes that are no valid UTF-8 are taken
    /// as Windows-1252, never dropped. Cut to `size` - 1 characters, never between the halves of one, and
    /// always terminated. The length; 0 also when memory ran out.
    int32_t readTextUtf8(char16_t* buffer, int32_t size);
    /// Reads and drops, byte by byte. False at the first short read.
    bool skip(int64_t count);
    /// Writes zero bytes, one by one. False at the first that doesn't go.
    bool pad(int64_t count);

protected:
    /// Bytes in memory that the typed operations reach without a call for each field. `position` may lie
    /// anywhere; what is at or behind 0 and below `size` can be read, what is below `writable` be written.
    struct Memory {
        char* bytes = nullptr;
        int64_t position = 0;
        int64_t size = 0;
        int64_t writable = 0;
    };

    FBinaryStream() = default;
    /// For a class whose raw operations do to `memory` just what the typed ones do, and which therefore lets
    /// nobody override them.
    explicit FBinaryStream(Memory& memory) : memory_(&memory) {}
    /// A clone keeps the byte order. It has memory of its own, if any.
    FBinaryStream(const FBinaryStream& other) : byteOrder_(other.byteOrder_) {}
    FBinaryStream(const FBinaryStream& other, Memory& memory)
        : memory_(&memory), byteOrder_(other.byteOrder_) {}
    ~FBinaryStream() = default;

    /// False at the end of the data; `byte` is then 0.
    bool readByte(char& byte) { return readRaw(byte); }

private:
    template <typename Number>
    Number ordered(Number value) const;
    template <typename Number>
    bool writeRaw(Number value);
    template <typename Number>
    bool readRaw(Number& value);

    Memory* memory_ = nullptr;
    uint16_t byteOrder_ = 0;
};

/// As it is stored; the same again turns it back.
template <typename Number>
Number FBinaryStream::ordered(Number value) const {
    if constexpr (sizeof(Number) > 1) {
        if (byteOrder_ == 0)
            return value;
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        for (size_t i = 0; i < sizeof value / 2; ++i)
            std::swap(bytes[i], bytes[sizeof value - 1 - i]);
        std::memcpy(&value, bytes, sizeof value);
    }
    return value;
}

template <typename Number>
bool FBinaryStream::writeRaw(Number value) {
    constexpr int64_t count = sizeof value;
    value = ordered(value);
    Memory* memory = memory_;
    if (!memory || memory->position < 0 || memory->position > memory->writable - count)
        return write(&value, count) == count;
    std::memcpy(memory->bytes + memory->position, &value, sizeof value);
    memory->position += count;
    memory->size = std::max(memory->size, memory->position);
    return true;
}

template <typename Number>
bool FBinaryStream::readRaw(Number& value) {
    constexpr int64_t count = sizeof value;
    Memory* memory = memory_;
    if (memory && memory->position >= 0 && memory->position <= memory->size - count) {
        std::memcpy(&value, memory->bytes + memory->position, sizeof value);
        memory->position += count;
    } else if (read(&value, count) != count) {
        value = 0;
        return false;
    }
    value = ordered(value);
    return true;
}

template <typename Number>
bool FBinaryStream::writeArray(const Number* values, int64_t count) {
    for (int64_t i = 0; i < count; ++i)
        if (!writeRaw(values[i]))
            return false;
    return true;
}

template <typename Number>
bool FBinaryStream::readArray(Number* values, int64_t count) {
    for (int64_t i = 0; i < count; ++i)
        if (!readRaw(values[i]))
            return false;
    return true;
}

} // namespace qorl
