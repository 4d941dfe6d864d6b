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
///
/// Typed operations of `FBinaryStream` reach the block without a call, so a stream that does something else
/// with its bytes derives from `FStream`. Once the block can't grow, `isValid` is false for good and writes
/// give 0.
class FMemoryStream : public FStream, public ISizeableStream {
    QORL_CLASS(FMemoryStream, FStream)
    QORL_RECORD(FMemoryStream)

public:
    static constexpr int64_t growthStep = 4096;

    FMemoryStream() : FStream(memory_) {}
    /// Reads and writes a foreign block in place; it must outlive the stream and can't grow. Empty for null
    /// and for a negative size.
    FMemoryStream(void* memory, int64_t size);
    /// Reads a foreign block. Writing gives 0, and the stream stays valid.
    explicit FMemoryStream(std::string_view bytes);
    /// Owns a copy of the bytes, and stands behind them, as if it had just written them.
    FMemoryStream(const FMemoryStream& other);
    FMemoryStream& operator=(const FMemoryStream&) = delete;
    ~FMemoryStream() override;
    /// Null also when there is no memory for all of the bytes.
    CmObject* clone() const override;

    Result queryInterface(const InterfaceId& id, void** out) override;
    uint32_t addRef() override { return FStream::addRef(); }
    uint32_t release() override { return FStream::release(); }

    /// 0 when nothing is left, at the end of the bytes then.
    int64_t read(void* buffer, int64_t count) final;
    /// All of it or 0. Behind the end it raises the size; what it leaves out stays as the block held it.
    /// Where there is no memory, as for any place beyond 2^61, the stream fails for good.
    int64_t write(const void* buffer, int64_t count) final;
    /// A place past the end is allowed, but for `fromEnd`, which is cut to the end. -1 for an unknown mode.
    int64_t seek(int64_t offset, int32_t mode) final;
    int64_t tell() final { return memory_.position; }
    void rewind() override { memory_.position = 0; }
    bool isValid() const override { return !failed_; }
    /// From another stream in memory in one piece. The block grows only by what the source gives, so that a
    /// wrong `count` costs no memory.
    bool copyFrom(FStream& source, int64_t count) override;
    using FStream::writeTo;
    bool writeTo(FStream& destination) override;
    Result getStreamSize(int64_t& size) override;
    /// As `resize`. `Result::failure` when the stream isn't valid.
    Result setStreamSize(int64_t size) override;

    /// Archives hold it as `saveBinary` does, attributes as the binary attribute "Data". What is restored
    /// comes into a block of our own, also where there was a foreign one or the stream had failed. These
    /// throw `std::bad_alloc` when there is no memory for the bytes, so that a load or a save as a whole
    /// tells of it.
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

    /// The block grows in steps of 4096 bytes and never shrinks, but for a size below 1, which frees it. When
    /// it can't grow, the stream fails for good: a foreign block stays as it is and one of our own is gone.
    /// A foreign block that is no multiple of 4096 bytes would have to grow for any size.
    void resize(int64_t size);
    /// Null for an empty stream.
    char* data() const { return memory_.bytes; }
    int64_t size() const { return memory_.size; }
    int64_t capacity() const { return capacity_; }
    std::string_view bytes() const { return {memory_.bytes, static_cast<size_t>(memory_.size)}; }

    /// A 32-bit length and then the bytes. Loads into a block of our own, and stands at its start then; of
    /// damaged data it holds what came, and without memory it isn't valid.
    bool loadBinary(FBinaryStream& source);
    bool saveBinary(FBinaryStream& target);

private:
    void forget();
    void forgetFailure();
    void fail();
    bool reserve(int64_t size);
    static int64_t wholeSteps(int64_t size);

    Memory memory_;
    int64_t capacity_ = 0;
    bool ownsMemory_ = true;
    bool isReadOnly_ = false;
    bool failed_ = false;
};

} // namespace qorl
