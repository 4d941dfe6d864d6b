#include "foundation/text/StringObject.h"

namespace qorl {

void StringObject::set8(const char* text) {
    string_.assign8(text);
}
void StringObject::set16(const char16_t* text) {
    string_.assign16(text);
}
const char* StringObject::get8() {
    return string_.text8();
}
const char16_t* StringObject::get16() {
    return string_.text16();
}
void StringObject::take(void* buffer, bool isWide) {
    string_.take(buffer, isWide);
}
bool StringObject::isWideString() {
    return string_.isWide();
}

} // namespace qorl
