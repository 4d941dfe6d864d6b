#include "foundation/text/JsonWriter.h"

#include "foundation/text/TextConversion.h"

#include <charconv>
#include <cmath>
#include <iterator>

namespace qorl {

void JsonWriter::separate() {
    if (needsComma_)
        text_ += ',';
    needsComma_ = true;
}

void JsonWriter::open(char bracket) {
    separate();
    text_ += bracket;
    needsComma_ = false;
}

void JsonWriter::close(char bracket) {
    text_ += bracket;
    needsComma_ = true;
}

void JsonWriter::quote(std::string_view text) {
    constexpr std::string_view hexDigits = "0123456789abcdef";
    text_ += '"';
    for (const char c : text::narrow(text::widenAnyway(text))) {
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            (text_ += '\\') += c;
        else if (c == '\n')
            text_ += "\\n";
        else if (c == '\t')
            text_ += "\\t";
        else if (code < 0x20)
            ((text_ += "\\u00") += hexDigits[code >> 4]) += hexDigits[code & 0xF];
        else
            text_ += c;
    }
    text_ += '"';
}

void JsonWriter::key(std::string_view name) {
    separate();
    quote(name);
    text_ += ':';
    needsComma_ = false;
}

void JsonWriter::string(std::string_view text) {
    separate();
    quote(text);
}

void JsonWriter::number(int64_t number) {
    separate();
    text_ += std::to_string(number);
}

void JsonWriter::real(double number) {
    char digits[32];
    const char* end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    const std::string_view text(digits, static_cast<size_t>(end - digits));
    if (!std::isfinite(number))
        return string(std::isnan(number) ? "nan" : text);
    separate();
    text_ += text;
}

void JsonWriter::boolean(bool value) {
    separate();
    text_ += value ? "true" : "false";
}

void JsonWriter::member(std::string_view name, std::string_view text) {
    key(name);
    string(text);
}

void JsonWriter::member(std::string_view name, int64_t number) {
    key(name);
    this->number(number);
}

} // namespace qorl
