#pragma once

#include "foundation/text/ConstString.h"

#include <qorl/IBStream.h>

#include <string>

namespace qorl {

/// Typed reading and writing over four raw operations.
///
/// Integers and floats stand low byte first unless the byte order is set. Each typed write is true when all
/// bytes went; each typed read is false on a short read and then leaves the value 0. Nothing throws; a raw
/// operation tells of a failure by a short count or a negative value.
class FBinaryStream {
public:
    /// As `IBStream::SeekMode`.
    enum SeekMode : int32_t { fromStart = 0, fromHere = 1, fromEnd = 2 };

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
    /// A 32-bit count that includes the terminator, then the bytes and the terminator. Null is count 0.
    bool writeCountedChars(const char* text);
    /// The text of `writeCountedChars` in a block from `malloc` for the caller; null for a count that is
    /// below 1 or above 0x40000, whose body is left unread.
    char* readCountedChars();
    /// Terminated: bytes for a text of nothing but ASCII, else EF BB BF and UTF-8.
    bool writeTextUtf8(const char16_t* text);
    /// Reads what `writeTextUtf8` wrote, cut to `size` - 1 characters, always terminated. The length.
    int32_t readTextUtf8(char16_t* buffer, int32_t size);
    /// Reads and drops. False at the first short read.
    bool skip(int64_t count);
    /// Writes zero bytes.
    bool pad(int64_t count);

protected:
    ~FBinaryStream() = default;

private:
    template <typename Number>
    bool writeRaw(Number value);
    template <typename Number>
    bool readRaw(Number& value);

    uint16_t byteOrder_ = 0;
};

template <typename Number>
bool FBinaryStream::writeRaw(Number value) {
    if constexpr (sizeof(Number) > 1) {
        if (byteOrder_ != 0) {
            char bytes[sizeof value];
            const char* source = reinterpret_cast<const char*>(&value);
            for (size_t i = 0; i < sizeof value; ++i)
                bytes[i] = source[sizeof value - 1 - i];
            return write(bytes, sizeof bytes) == sizeof bytes;
        }
    }
    return write(&value, sizeof value) == sizeof value;
}

template <typename Number>
bool FBinaryStream::readRaw(Number& value) {
    char bytes[sizeof value];
    if (read(bytes, sizeof bytes) != sizeof bytes) {
        value = 0;
        return false;
    }
    char* target = reinterpret_cast<char*>(&value);
    for (size_t i = 0; i < sizeof value; ++i)
        target[i] = bytes[byteOrder_ != 0 ? sizeof value - 1 - i : i];
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
