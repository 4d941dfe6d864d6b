#pragma once

#include "foundation/text/String.h"

#include <qorl/IStringExchange.h>

#include <utility>

namespace qorl {

/// The text of an object that other modules read and set. The object's class answers for the faces
/// `IStringExchange` and `IStringSink`.
class TextExchange : public IStringExchange {
public:
    String& string() { return string_; }
    const String& string() const { return string_; }

    void set8(const char* text) override;
    void set16(const char16_t* text) override;
    const char* get8() override;
    const char16_t* get16() override;
    void take(void* buffer, bool isWide) override;
    bool isWideString() override;

protected:
    TextExchange() = default;
    /// Throws `std::bad_alloc`, as a copy does: no object goes on without its text.
    explicit TextExchange(const ConstString& text);
    explicit TextExchange(String&& text) noexcept : string_(std::move(text)) {}
    TextExchange(const TextExchange& other) : TextExchange(other.string_) {}
    /// The same; the text stays as it was then.
    TextExchange& operator=(const TextExchange& other);
    ~TextExchange() = default;

    String string_;
};

} // namespace qorl
