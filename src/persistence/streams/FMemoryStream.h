#pragma once

#include "persistence/streams/FStream.h"

#include <string_view>

namespace qorl {

/// Gives the object behind an interface to code that wants the class itself.
class IMemoryStream : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{0E7533ED-80DA-4E2B-9DC3-6529C304A5DF}");
};

/// A growable block of bytes.
class FMemoryStream : public FStream, public ISizeableStream {
    QORL_CLASS(FMemoryStream, FStream)
    QORL_CLONE(FMemoryStream)
    QORL_RECORD(FMemoryStream)

public:
    static constexpr int64_t growthStep = 4096;

    FMemoryStream() = default;
    /// Reads and writes a foreign block in place; it must outlive the stream and can't grow.
    FMemoryStream(void* memory, int64_t size);
    /// Reads a foreign block. Writing fails.
    explicit FMemoryStream(std::string_view bytes);
    /// Owns a copy of the bytes, at the same position.
    FMemoryStream(const FMemoryStream& other);
    FMemoryStream& operator=(const FMemoryStream&) = delete;
    ~FMemoryStream() override;

    Result queryInterface(const InterfaceId& id, void** out) override;
    uint32_t addRef() override { return FStream::addRef(); }
    uint32_t release() override { return FStream::release(); }

    int64_t read(void* buffer, int64_t count) override;
    int64_t write(const void* buffer, int64_t count) override;
    /// A place past the end is allowed, but for `fromEnd`, which is cut to the end.
    int64_t seek(int64_t offset, int32_t mode) override;
    int64_t tell() override { return position_; }
    void rewind() override { position_ = 0; }
    bool isValid() const override { return !failed_; }
    bool copyFrom(FStream& source, int64_t count) override;
    using FStream::writeTo;
    bool writeTo(FStream& destination) override;
    Result getStreamSize(int64_t& size) override;
    Result setStreamSize(int64_t size) override;

    /// Stores the bytes as the binary attribute "Data".
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

    /// The block grows in steps of 4096 bytes and never shrinks, but for a size below 1, which frees it.
    void resize(int64_t size);
    /// Null for an empty stream.
    char* data() const { return buffer_; }
    int64_t size() const { return size_; }
    int64_t capacity() const { return capacity_; }
    bool ownsMemory() const { return ownsMemory_; }
    std::string_view bytes() const { return {buffer_, static_cast<size_t>(size_)}; }

    /// A 32-bit length and then the bytes.
    bool loadBinary(FBinaryStream& source);
    bool saveBinary(FBinaryStream& target);

private:
    void forget();

    char* buffer_ = nullptr;
    int64_t capacity_ = 0;
    int64_t size_ = 0;
    int64_t position_ = 0;
    bool ownsMemory_ = true;
    bool readOnly_ = false;
    bool failed_ = false;
};

} // namespace qorl
