#include "persistence/xml/XmlEntities.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

namespace qorl::XmlEntities {

namespace {

struct Row {
    const char* name;
    uint8_t code;
    bool isWritten;
};

constexpr Row rows[] = {
    {"quot", 0x22, true},    {"amp", 0x26, true},     {"lt", 0x3C, true},      {"gt", 0x3E, true},
    {"bsol", 0x5C, false},   {"apos", 0x27, false},   {"excl", 0x21, false},   {"num", 0x23, false},
    {"dollar", 0x24, true},  {"percnt", 0x25, false}, {"lpar", 0x28, false},   {"rpar", 0x29, false},
    {"ast", 0x2A, false},    {"plus", 0x2B, false},   {"comma", 0x2C, false},  {"hyphen", 0x2D, false},
    {"period", 0x2E, false}, {"sol", 0x2F, false},    {"colon", 0x3A, false},  {"semi", 0x3B, false},
    {"equals", 0x3D, false}, {"quest", 0x3F, false},  {"commat", 0x40, false}, {"lsqb", 0x5B, false},
    {"rsqb", 0x5D, false},   {"circ", 0x5E, true},    {"horbar", 0x5F, false}, {"grave", 0x60, true},
    {"lcub", 0x7B, false},   {"verbar", 0x7C, false}, {"rcub", 0x7D, false},   {"tilde", 0x7E, false},
    {"nl", 0x0A, true},      {"cr", 0x0D, true},      {"nbsp", 0xA0, true},    {"iexcl", 0xA1, true},
    {"cent", 0xA2, true},    {"pound", 0xA3, true},   {"curren", 0xA4, true},  {"yen", 0xA5, true},
    {"brvbar", 0xA6, true},  {"sect", 0xA7, true},    {"uml", 0xA8, true},     {"copy", 0xA9, true},
    {"ordf", 0xAA, true},    {"laquo", 0xAB, true},   {"not", 0xAC, true},     {"reg", 0xAE, true},
    {"macr", 0xAF, true},    {"deg", 0xB0, true},     {"plusmn", 0xB1, true},  {"sup2", 0xB2, true},
    {"sup3", 0xB3, true},    {"acute", 0xB4, true},   {"micro", 0xB5, true},   {"para", 0xB6, true},
    {"middot", 0xB7, true},  {"cedil", 0xB8, true},   {"sup1", 0xB9, true},    {"ordm", 0xBA, true},
    {"raquo", 0xBB, true},   {"frac14", 0xBC, true},  {"frac12", 0xBD, true},  {"half", 0xBD, true},
    {"frac34", 0xBE, true},  {"iquest", 0xBF, true},  {"Agrave", 0xC0, true},  {"Aacute", 0xC1, true},
    {"Atilde", 0xC3, true},  {"Auml", 0xC4, true},    {"Aring", 0xC5, true},   {"AElig", 0xC6, true},
    {"Ccedil", 0xC7, true},  {"Egrave", 0xC8, true},  {"Eacute", 0xC9, true},  {"Ecirc", 0xCA, true},
    {"Euml", 0xCB, true},    {"Igrave", 0xCC, true},  {"Iacute", 0xCD, true},  {"Icirc", 0xCE, true},
    {"Iuml", 0xCF, true},    {"ETH", 0xD0, true},     {"Ntilde", 0xD1, true},  {"Ograve", 0xD2, true},
    {"Oacute", 0xD3, true},  {"Ocirc", 0xD4, true},   {"Otilde", 0xD5, true},  {"Ouml", 0xD6, true},
    {"times", 0xD7, true},   {"Oslash", 0xD8, true},  {"Ugrave", 0xD9, true},  {"Uacute", 0xDA, true},
    {"Ucirc", 0xDB, true},   {"Uuml", 0xDC, true},    {"Yacute", 0xDD, true},  {"THORN", 0xDE, true},
    {"szlig", 0xDF, true},   {"agrave", 0xE0, true},  {"aacute", 0xE1, true},  {"acirc", 0xE2, true},
    {"atilde", 0xE3, true},  {"auml", 0xE4, true},    {"aring", 0xE5, true},   {"aelig", 0xE6, true},
    {"ccedil", 0xE7, true},  {"egrave", 0xE8, true},  {"eacute", 0xE9, true},  {"ecirc", 0xEA, true},
    {"euml", 0xEB, true},    {"igrave", 0xEC, true},  {"iacute", 0xED, true},  {"icirc", 0xEE, true},
    {"iuml", 0xEF, true},    {"eth", 0xF0, true},     {"ntilde", 0xF1, true},  {"ograve", 0xF2, true},
    {"oacute", 0xF3, true},  {"ocirc", 0xF4, true},   {"otilde", 0xF5, true},  {"ouml", 0xF6, true},
    {"divide", 0xF7, true},  {"oslash", 0xF8, true},  {"ugrave", 0xF9, true},  {"uacute", 0xFA, true},
    {"ucirc", 0xFB, true},   {"uuml", 0xFC, true},    {"yacute", 0xFD, true},  {"thorn", 0xFE, true},
    {"yuml", 0xFF, true},
};
static_assert(std::size(rows) == 129);

constexpr std::array<const char*, 256> namesByByte = [] {
    std::array<const char*, 256> names{};
    for (const Row& row : rows)
        if (row.isWritten)
            names[row.code] = row.name;
    return names;
}();

constexpr size_t longestReference = 16;

/// What a reference between "&" and ";" stands for; 0 when nobody knows.
int byteOf(std::string_view reference) {
    if (reference.starts_with('#')) {
        const bool isHex = reference.size() > 1 && (reference[1] | 0x20) == 'x';
        reference.remove_prefix(isHex ? 2 : 1);
        int number = 0;
        const auto [end, error] =
            std::from_chars(reference.data(), reference.data() + reference.size(), number, isHex ? 16 : 10);
        const bool isWhole = error == std::errc() && end == reference.data() + reference.size();
        return isWhole && number > 0 && number < 0x100 ? number : 0;
    }
    for (const Row& row : rows)
        if (reference == row.name)
            return row.code;
    return 0;
}

} // namespace

std::string_view nameToWrite(uint8_t byte) {
    return namesByByte[byte] ? std::string_view(namesByByte[byte]) : std::string_view();
}

std::string decode(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const size_t start = std::min(text.find('&'), text.size());
        out.append(text.substr(0, start));
        text.remove_prefix(start);
        if (text.empty())
            break;
        const size_t end = text.substr(0, longestReference).find(';');
        const int byte = end == std::string_view::npos ? 0 : byteOf(text.substr(1, end - 1));
        out += byte ? static_cast<char>(byte) : '&';
        text.remove_prefix(byte ? end + 1 : 1);
    }
    return out;
}

void escape8(std::string& out, std::string_view bytes) {
    for (const char c : bytes) {
        const auto byte = static_cast<uint8_t>(c);
        if (const std::string_view name = nameToWrite(byte); !name.empty()) {
            out.append(1, '&').append(name).append(1, ';');
        } else if (byte >= 0x80) {
            char number[12];
            std::snprintf(number, sizeof number, "&#x%x;", byte);
            out += number;
        } else {
            out += c;
        }
    }
}

void escapeUtf8(std::string& out, std::string_view utf8) {
    for (const char c : utf8) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += c;
        }
    }
}

} // namespace qorl::XmlEntities
