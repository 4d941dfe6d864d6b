#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qorl {

/// Writes a JSON text (RFC 8259), without blanks, in the order of the calls.
///
/// The caller sees to it that calls nest: in an object each value follows its `key`. A value that is written
/// first of all is the whole text. Threading: one thread at a time.
class JsonWriter {
public:
    void beginObject() { open('{'); }
    void endObject() { close('}'); }
    void beginArray() { open('['); }
    void endArray() { close(']'); }
    void key(std::string_view name);
    /// UTF-8; what isn't valid becomes U+FFFD.
    void string(std::string_view text);
    void number(int64_t number);
    /// So that it reads back equal. What is no finite number, of which JSON has none, becomes the string
    /// "inf", "-inf" or "nan".
    void real(double number);
    void boolean(bool value);

    /// A member that is a string.
    void member(std::string_view name, std::string_view text);
    void member(std::string_view name, int64_t number);

    /// What was written, without a line feed at the end.
    const std::string& text() const { return text_; }

private:
    void open(char bracket);
    void close(char bracket);
    void separate();
    void quote(std::string_view text);

    std::string text_;
    bool needsComma_ = false;
};

} // namespace qorl
