#pragma once

#include <qorl/FInterface.h>

#include <string>
#include <string_view>

namespace qorl {

/// A 128-bit id by value, with its text forms.
///
/// The plain and the braced text show the four words of `toUInt4` in reading order; they are not the bytes in
/// memory order (`CmUID::toHexBytes` is).
class FUID {
public:
    static constexpr size_t plainLength = 32;
    static constexpr size_t bracedLength = 38;

    /// The empty id: all bytes zero.
    FUID() noexcept = default;
    FUID(uint32_t w1, uint32_t w2, uint32_t w3, uint32_t w4) noexcept { fromUInt4(w1, w2, w3, w4); }
    FUID(const InterfaceId& id) noexcept : id_(id) {}
    /// Copies sixteen bytes; null leaves the id empty.
    explicit FUID(const uint8_t* bytes) noexcept;
    FUID(const FUID&) noexcept = default;
    FUID& operator=(const FUID&) noexcept = default;
    virtual ~FUID() = default;

    void fromUInt4(uint32_t w1, uint32_t w2, uint32_t w3, uint32_t w4) noexcept;
    void toUInt4(uint32_t& w1, uint32_t& w2, uint32_t& w3, uint32_t& w4) const noexcept;
    /// One of the four words: `index` 0 to 3.
    uint32_t word(int index) const noexcept;

    /// Draws a new random id. False, and nothing changed, when the system has no randomness to give.
    bool generate() noexcept;
    /// Whether any byte differs from zero.
    bool isValid() const noexcept { return id_ != InterfaceId(); }

    /// 32 digits and a terminator. A null buffer writes nothing.
    void toPlainString(char* buffer) const noexcept;
    std::string toPlainString() const;
    /// Takes exactly 32 hexadecimal digits; anything else is false and changes nothing.
    bool fromPlainString(const char* text) noexcept;

    /// "{8-4-4-4-12}", 38 characters and a terminator. A null buffer writes nothing.
    void toBracedString(char* buffer) const noexcept;
    std::string toBracedString() const;
    /// Takes exactly the 38 characters of the braced form; anything else is false and changes nothing.
    bool fromBracedString(const char* text) noexcept;

    /// The four words as a line of code, in one of four styles; any other number means the last one. Writes
    /// at most 96 characters with the terminator. With a null buffer the text goes to the debug output.
    enum DeclarationStyle : int32_t { inlineUid = 0, declareUid = 1, constructor = 2, declareClassIid = 3 };
    void toDeclaration(char* buffer, int32_t style) const;

    const uint8_t* data() const noexcept { return id_.bytes; }
    uint8_t* data() noexcept { return id_.bytes; }
    operator const InterfaceId&() const noexcept { return id_; }

    friend bool operator==(const FUID& a, const FUID& b) noexcept { return a.id_ == b.id_; }
    friend bool operator!=(const FUID& a, const FUID& b) noexcept { return a.id_ != b.id_; }

private:
    InterfaceId id_;
};

} // namespace qorl
