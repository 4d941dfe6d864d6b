#include "persistence/xml/XmlEntities.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

namespace qorl::XmlEntities {

namespace {

constexpr Row table[] = {
    {"quot", 0x22, 0x22, true},    {"amp", 0x26, 0x26, true},     {"lt", 0x3C, 0x3C, true},
    {"gt", 0x3E, 0x3E, true},      {"bsol", 0x5C, 0x5C, false},   {"apos", 0x27, 0x27, false},
    {"excl", 0x21, 0x21, false},   {"num", 0x23, 0x23, false},    {"dollar", 0x24, 0x24, true},
    {"percnt", 0x25, 0x25, false}, {"lpar", 0x28, 0x28, false},   {"rpar", 0x29, 0x29, false},
    {"ast", 0x2A, 0x2A, false},    {"plus", 0x2B, 0x2B, false},   {"comma", 0x2C, 0x2C, false},
    {"hyphen", 0x2D, 0x2D, false}, {"period", 0x2E, 0x2E, false}, {"sol", 0x2F, 0x2F, false},
    {"colon", 0x3A, 0x3A, false},  {"semi", 0x3B, 0x3B, false},   {"equals", 0x3D, 0x3D, false},
    {"quest", 0x3F, 0x3F, false},  {"commat", 0x40, 0x40, false}, {"lsqb", 0x5B, 0x5B, false},
    {"rsqb", 0x5D, 0x5D, false},   {"circ", 0x5E, 0x5E, true},    {"horbar", 0x5F, 0x5F, false},
    {"grave", 0x60, 0x60, true},   {"lcub", 0x7B, 0x7B, false},   {"verbar", 0x7C, 0x7C, false},
    {"rcub", 0x7D, 0x7D, false},   {"tilde", 0x7E, 0x7E, false},  {"nl", 0x0A, 0x0A, true},
    {"cr", 0x0D, 0x0D, true},      {"nbsp", 0xA0, 0xFF, true},    {"iexcl", 0xA1, 0xC1, false},
    {"cent", 0xA2, 0xA2, false},   {"pound", 0xA3, 0xA3, false},  {"curren", 0xA4, 0xDB, false},
    {"yen", 0xA5, 0xB4, false},    {"brvbar", 0xA6, 0xFF, false}, {"sect", 0xA7, 0xA4, false},
    {"uml", 0xA8, 0xAC, false},    {"copy", 0xA9, 0xA9, false},   {"ordf", 0xAA, 0xBB, false},
    {"laquo", 0xAB, 0xC7, false},  {"not", 0xAC, 0xC2, false},    {"reg", 0xAE, 0xA8, false},
    {"macr", 0xAF, 0xF8, false},   {"deg", 0xB0, 0xA1, false},    {"plusmn", 0xB1, 0xB1, false},
    {"sup2", 0xB2, 0xFF, false},   {"sup3", 0xB3, 0xFF, false},   {"acute", 0xB4, 0xAB, false},
    {"micro", 0xB5, 0xB5, false},  {"para", 0xB6, 0xA6, false},   {"middot", 0xB7, 0xE1, false},
    {"cedil", 0xB8, 0xFC, false},  {"sup1", 0xB9, 0xFF, false},   {"ordm", 0xBA, 0xBC, false},
    {"raquo", 0xBB, 0xC8, false},  {"frac14", 0xBC, 0xFF, false}, {"frac12", 0xBD, 0xFF, false},
    {"half", 0xBD, 0xFF, false},   {"frac34", 0xBE, 0xFF, false}, {"iquest", 0xBF, 0xC0, false},
    {"Agrave", 0xC0, 0xCB, false}, {"Aacute", 0xC1, 0xE7, false}, {"Atilde", 0xC3, 0xCC, false},
    {"Auml", 0xC4, 0x80, false},   {"Aring", 0xC5, 0x81, false},  {"AElig", 0xC6, 0xAE, false},
    {"Ccedil", 0xC7, 0x82, false}, {"Egrave", 0xC8, 0xE9, false}, {"Eacute", 0xC9, 0x83, false},
    {"Ecirc", 0xCA, 0xE6, false},  {"Euml", 0xCB, 0xE8, false},   {"Igrave", 0xCC, 0xED, false},
    {"Iacute", 0xCD, 0xEA, false}, {"Icirc", 0xCE, 0xEB, false},  {"Iuml", 0xCF, 0xEC, false},
    {"ETH", 0xD0, 0xFF, false},    {"Ntilde", 0xD1, 0x84, false}, {"Ograve", 0xD2, 0xF1, false},
    {"Oacute", 0xD3, 0xEE, false}, {"Ocirc", 0xD4, 0xEF, false},  {"Otilde", 0xD5, 0xCD, false},
    {"Ouml", 0xD6, 0x85, false},   {"times", 0xD7, 0xFF, false},  {"Oslash", 0xD8, 0xAF, false},
    {"Ugrave", 0xD9, 0xF4, false}, {"Uacute", 0xDA, 0xF2, false}, {"Ucirc", 0xDB, 0xF3, false},
    {"Uuml", 0xDC, 0x86, false},   {"Yacute", 0xDD, 0xFF, false}, {"THORN", 0xDE, 0xFF, false},
    {"szlig", 0xDF, 0xA7, false},  {"agrave", 0xE0, 0x88, false}, {"aacute", 0xE1, 0x87, false},
    {"acirc", 0xE2, 0x89, false},  {"atilde", 0xE3, 0x8B, false}, {"auml", 0xE4, 0x8A, false},
    {"aring", 0xE5, 0x8C, false},  {"aelig", 0xE6, 0xBE, false},  {"ccedil", 0xE7, 0x8D, false},
    {"egrave", 0xE8, 0x8F, false}, {"eacute", 0xE9, 0x8E, false}, {"ecirc", 0xEA, 0x90, false},
    {"euml", 0xEB, 0x91, false},   {"igrave", 0xEC, 0x93, false}, {"iacute", 0xED, 0x92, false},
    {"icirc", 0xEE, 0x94, false},  {"iuml", 0xEF, 0x95, false},   {"eth", 0xF0, 0xFF, false},
    {"ntilde", 0xF1, 0x96, false}, {"ograve", 0xF2, 0x98, false}, {"oacute", 0xF3, 0x97, false},
    {"ocirc", 0xF4, 0x99, false},  {"otilde", 0xF5, 0x9B, false}, {"ouml", 0xF6, 0x9A, false},
    {"divide", 0xF7, 0xD6, false}, {"oslash", 0xF8, 0xBF, false}, {"ugrave", 0xF9, 0x9D, false},
    {"uacute", 0xFA, 0x9C, false}, {"ucirc", 0xFB, 0x9E, false},  {"uuml", 0xFC, 0x9F, false},
    {"yacute", 0xFD, 0xFF, false}, {"thorn", 0xFE, 0xFF, false},  {"yuml", 0xFF, 0xD8, false},
};
static_assert(std::size(table) == 129);

constexpr std::array<uint8_t, 256> rowOfByte = [] {
    std::array<uint8_t, 256> index{};
    for (size_t i = 0; i < std::size(table); ++i)
        if (table[i].isWritten || table[i].latin1 >= 0x80)
            index[table[i].latin1] = static_cast<uint8_t>(i + 1);
    return index;
}();

constexpr bool isMarkup(uint8_t byte) {
    return byte == '&' || byte == '<' || byte == '>' || byte == '"';
}

constexpr Substitute substituteFor(uint8_t byte) {
    std::array<char, 9> text{};
    size_t length = 0;
    const auto put = [&](std::string_view part) {
        for (const char c : part)
            text[length++] = c;
    };
    if (const uint8_t row = rowOfByte[byte]) {
        put("&");
        put(table[row - 1].name);
        put(";");
    } else if (byte >= 0x80) {
        constexpr char digits[] = "0123456789abcdef";
        const char number[] = {digits[byte >> 4], digits[byte & 15]};
        put("&#x");
        put({number, 2});
        put(";");
    }
    Substitute result;
    result.length = static_cast<uint8_t>(length);
    std::copy(text.begin(), text.end(), result.text);
    return result;
}

constexpr std::array<Substitute, 256> substitutesFor(Escape escape) {
    std::array<Substitute, 256> result{};
    for (size_t byte = 0; byte < result.size(); ++byte)
        if (escape == Escape::entities || isMarkup(static_cast<uint8_t>(byte)))
            result[byte] = substituteFor(static_cast<uint8_t>(byte));
    return result;
}

constexpr auto rowsByName = [] {
    std::array<uint8_t, std::size(table)> order{};
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = static_cast<uint8_t>(i);
    std::sort(order.begin(), order.end(), [](uint8_t a, uint8_t b) { return table[a].name < table[b].name; });
    return order;
}();

const Row* findRow(std::string_view name) {
    const auto found =
        std::lower_bound(rowsByName.begin(), rowsByName.end(), name,
                         [](uint8_t row, std::string_view key) { return table[row].name < key; });
    return found != rowsByName.end() && table[*found].name == name ? &table[*found] : nullptr;
}

/// The byte behind "#"; 0 when there is none.
uint8_t numberedByte(std::string_view digits) {
    const bool isHex = digits.starts_with('x') || digits.starts_with('X');
    digits.remove_prefix(isHex ? 1 : 0);
    uint32_t number = 0;
    const char* last = digits.data() + digits.size();
    const auto [end, error] = std::from_chars(digits.data(), last, number, isHex ? 16 : 10);
    return error == std::errc() && end == last && number < 0x100 ? static_cast<uint8_t>(number) : uint8_t{0};
}

} // namespace

std::span<const Row> rows() {
    return table;
}

const std::array<Substitute, 256>& substitutes(Escape escape) {
    static constexpr auto named = substitutesFor(Escape::entities);
    static constexpr auto markup = substitutesFor(Escape::markup);
    return escape == Escape::entities ? named : markup;
}

Decoded decode(char* text, size_t length, Column column) {
    Decoded result{length, false};
    const char* from = static_cast<const char*>(std::memchr(text, '&', length));
    if (!from)
        return result;
    const char* end = text + length;
    char* to = text + (from - text);
    while (from) {
        const size_t reach = std::min(longestReference, static_cast<size_t>(end - from));
        const char* semicolon = static_cast<const char*>(std::memchr(from, ';', reach));
        uint8_t byte = 0;
        if (semicolon && from[1] == '#') {
            byte = numberedByte({from + 2, semicolon});
        } else if (semicolon) {
            if (const Row* row = findRow({from + 1, semicolon})) {
                byte = column == Column::macintosh ? row->macintosh : row->latin1;
                result.hasNamedHigh |= byte >= 0x80;
            }
        }
        *to++ = byte ? static_cast<char>(byte) : '&';
        from = byte ? semicolon + 1 : from + 1;
        const char* next = static_cast<const char*>(std::memchr(from, '&', static_cast<size_t>(end - from)));
        const auto run = static_cast<size_t>((next ? next : end) - from);
        std::memmove(to, from, run);
        to += run;
        from = next;
    }
    result.length = static_cast<size_t>(to - text);
    return result;
}

} // namespace qorl::XmlEntities
