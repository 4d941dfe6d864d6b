#include "foundation/text/TextExchange.h"

#include <new>

namespace qorl {

TextExchange::TextExchange(const ConstString& text) {
    if (!string_.assign(text))
        throw std::bad_alloc();
}

TextExchange& TextExchange::operator=(const TextExchange& other) {
    if (this != &other && !string_.assign(other.string_))
        throw std::bad_alloc();
    return *this;
}

void TextExchange::set8(const char* text) {
    string_.assign8(text);
}
void TextExchange::set16(const char16_t* text) {
    string_.assign16(text);
}
const char* TextExchange::get8() {
    return string_.text8();
}
const char16_t* TextExchange::get16() {
    return string_.text16();
}
void TextExchange::take(void* buffer, bool isWide) {
    string_.take(buffer, isWide);
}
bool TextExchange::isWideString() {
    return string_.isWide();
}

} // namespace qorl
