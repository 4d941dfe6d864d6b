#pragma once

#include "foundation/CmObject.h"

#include <qorl/IMemoryBlock.h>

#include <string_view>

namespace qorl {

/// A block of bytes that grows in steps: room for `capacity` bytes, of which the first `used` ones count.
///
/// Room that is asked for is rounded up to a whole number of growth steps, and room that nobody has written
/// to holds zeros. An operation that finds no memory gives false and changes nothing. Sizes are in bytes and
/// end at 2^31 - 1.
class CmBuffer : public CmObject, public IMemoryBlock {
    QORL_CLASS(CmBuffer, CmObject)
    QORL_RECORD(CmBuffer)
    QORL_FACES(CmBuffer, CmObject, IMemoryBlock)

public:
    static constexpr int32_t defaultGrowth = 4096;

    /// A growth below 1 stands for the default one. Without memory the buffer is empty.
    explicit CmBuffer(int32_t capacity = 0, int32_t growth = 0);
    /// Holds a copy of the bytes.
    CmBuffer(const void* bytes, int32_t count, int32_t growth = 0);
    CmBuffer(const CmBuffer& other);
    CmBuffer& operator=(const CmBuffer& other);
    ~CmBuffer() override;

    CmObject* clone() const override;

    char* data() { return bytes_; }
    const char* data() const { return bytes_; }
    int32_t capacity() const { return capacity_; }
    int32_t used() const { return used_; }
    int32_t growth() const { return growth_ > 0 ? growth_ : defaultGrowth; }
    void setGrowth(int32_t growth) { growth_ = growth; }
    /// The bytes that count.
    std::string_view bytes() const { return {bytes_, static_cast<size_t>(used_)}; }

    /// Room for `size` bytes and more. Bytes in use that don't fit any longer are gone; size 0 frees the
    /// block.
    bool setCapacity(int32_t size) override;
    bool setUsedSize(int32_t size) override;
    bool append(const void* bytes, int32_t count) override;
    bool appendByte(char byte) { return append(&byte, 1); }
    /// The bytes in use move up. Nothing for a count below 1.
    bool prepend(const void* bytes, int32_t count);
    bool prependByte(char byte) { return prepend(&byte, 1); }
    /// Nothing counts any longer; the room stays.
    void clear() { used_ = 0; }
    /// Sets each byte of the capacity.
    void fill(char byte);

    /// Puts the bytes in use into `text` as hexadecimal digits, "0" to "9" and "A" to "F", high digit first,
    /// with a zero byte behind them that counts.
    bool toHex(CmBuffer& text) const;

    /// The stream form: capacity and used size in 32 bits each, then all bytes of the capacity. What was read
    /// is rounded up to the growth step of this buffer.
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;

    void* getAddress() override { return bytes_; }
    int32_t getCapacity() override { return capacity_; }
    int32_t getUsedSize() override { return used_; }

private:
    bool reallocate(int32_t capacity);
    int32_t roundedUp(int32_t size) const;
    /// Room for `count` bytes more.
    bool makeRoom(int32_t count);

    int32_t capacity_ = 0;
    int32_t used_ = 0;
    int32_t growth_ = 0;
    char* bytes_ = nullptr;
};

} // namespace qorl
