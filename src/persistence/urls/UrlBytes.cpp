#include "persistence/urls/UrlBytes.h"

namespace qorl::UrlBytes {

namespace {

bool isLetterOrDigit(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9');
}
bool isOneOf(std::string_view bytes, char byte) {
    return bytes.find(byte) != std::string_view::npos;
}

void appendEncoded(std::string& text, char byte) {
    constexpr const char* digits = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(byte);
    text += '%';
    text += digits[value >> 4];
    text += digits[value & 15];
}

template <typename Passes>
std::string encodeUnless(Passes passes, std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        if (passes(byte))
            text += byte;
        else
            appendEncoded(text, byte);
    }
    return text;
}

} // namespace

bool isUnreserved(char byte) {
    return isLetterOrDigit(byte) || isOneOf("-._~", byte);
}
bool passesInPath(char byte) {
    return isLetterOrDigit(byte) || isOneOf("-._~!$&'()*+,;=:@/?", byte);
}

std::string encode(std::string_view bytes) {
    return encodeUnless([](char byte) { return isLetterOrDigit(byte) || isOneOf("&+-./=?_", byte); }, bytes);
}
std::string encodeName(std::string_view bytes) {
    return encodeUnless([](char byte) { return isLetterOrDigit(byte) || isOneOf("&+-.=?_", byte); }, bytes);
}
std::string encodePath(std::string_view bytes) {
    return encodeUnless(passesInPath, bytes);
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

int encodedByte(std::string_view text, size_t at) {
    if (text[at] != '%' || at + 2 >= text.size())
        return -1;
    const int high = hexDigit(text[at + 1]);
    const int low = hexDigit(text[at + 2]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

std::string decode(std::string_view text) {
    std::string bytes;
    for (size_t i = 0; i < text.size(); ++i) {
        const int byte = encodedByte(text, i);
        bytes += byte < 0 ? text[i] : static_cast<char>(byte);
        i += byte < 0 ? 0 : 2;
    }
    return bytes;
}

std::string normalize(std::string_view text) {
    std::string normal;
    for (size_t i = 0; i < text.size(); ++i) {
        const int encoded = encodedByte(text, i);
        const char byte = encoded < 0 ? text[i] : static_cast<char>(encoded);
        if (encoded >= 0)
            i += 2;
        const bool staysPlain = encoded < 0 ? passesInPath(byte) : isUnreserved(byte);
        if (staysPlain)
            normal += byte;
        else
            appendEncoded(normal, byte);
    }
    return normal;
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

} // namespace qorl::UrlBytes
