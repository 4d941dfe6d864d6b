#pragma once

#include <qorl/FInterface.h>

namespace qorl {

class IStringSink;

/// The attributes of a message, for other modules: named values, keys in 8 or in 16 bits.
///
/// Setters replace what stood under the key. Getters answer `Result::no`, with 0, null or an empty text, when
/// the key is missing. Threading: as the message, one thread at a time.
class IMessageAttributes : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{9B3554AA-04E9-4449-9034-D05B61F454F0}");
    /// The same face under an id that newer modules ask for.
    static constexpr InterfaceId iid2 = InterfaceId::fromText("{BA8586DE-FC4A-4737-9BAD-0542C8E6B953}");

    virtual Result setInt8(const char* key, int64_t value) = 0;
    virtual Result setInt16(const char16_t* key, int64_t value) = 0;
    virtual Result getInt8(const char* key, int64_t* value) = 0;
    virtual Result getInt16(const char16_t* key, int64_t* value) = 0;
    virtual Result setFloat8(const char* key, double value) = 0;
    virtual Result setFloat16(const char16_t* key, double value) = 0;
    virtual Result getFloat8(const char* key, double* value) = 0;
    virtual Result getFloat16(const char16_t* key, double* value) = 0;
    /// Copies zero-terminated UTF-16; null removes the attribute.
    virtual Result setString8(const char* key, const char16_t* text) = 0;
    virtual Result setString16(const char16_t* key, const char16_t* text) = 0;
    /// Hands the text to `sink` as 8-bit text in the system's encoding.
    virtual Result getString8(const char* key, IStringSink* sink) = 0;
    virtual Result getString16(const char16_t* key, IStringSink* sink) = 0;
    /// Takes a reference of its own; null removes the attribute.
    virtual Result setObject8(const char* key, FInterface* object) = 0;
    virtual Result setObject16(const char16_t* key, FInterface* object) = 0;
    /// The object carries no reference for the caller.
    virtual Result getObject8(const char* key, FInterface** object) = 0;
    virtual Result getObject16(const char16_t* key, FInterface** object) = 0;
    virtual Result remove8(const char* key) = 0;
    /// `Result::ok` when the message has such an attribute.
    virtual Result contains8(const char* key) = 0;

protected:
    ~IMessageAttributes() = default;
};

} // namespace qorl
