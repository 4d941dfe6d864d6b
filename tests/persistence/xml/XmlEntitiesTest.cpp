#include "persistence/xml/XmlEntities.h"

#include <gtest/gtest.h>
#include <map>
#include <string>

namespace qorl {
namespace {

using XmlEntities::Column;
using XmlEntities::Escape;

std::string decoded(std::string text, Column column = Column::latin1) {
    text.resize(XmlEntities::decode(text.data(), text.size(), column).length);
    return text;
}

std::string written(uint8_t byte, Escape escape) {
    const auto& entry = XmlEntities::substitutes(escape)[byte];
    return std::string(entry.text, entry.length);
}

TEST(XmlEntities, HaveTheirCodesInBothSets) {
    const struct {
        const char* name;
        int latin1;
        int macintosh;
    } codes[] = {
        {"quot", 0x22, 0x22},   {"apos", 0x27, 0x27},   {"nl", 0x0A, 0x0A},     {"cr", 0x0D, 0x0D},
        {"horbar", 0x5F, 0x5F}, {"nbsp", 0xA0, 0xFF},   {"yen", 0xA5, 0xB4},    {"brvbar", 0xA6, 0xFF},
        {"not", 0xAC, 0xC2},    {"reg", 0xAE, 0xA8},    {"frac12", 0xBD, 0xFF}, {"half", 0xBD, 0xFF},
        {"Agrave", 0xC0, 0xCB}, {"Aacute", 0xC1, 0xE7}, {"Atilde", 0xC3, 0xCC}, {"Auml", 0xC4, 0x80},
        {"Aring", 0xC5, 0x81},  {"Ccedil", 0xC7, 0x82}, {"Eacute", 0xC9, 0x83}, {"Ntilde", 0xD1, 0x84},
        {"Ouml", 0xD6, 0x85},   {"times", 0xD7, 0xFF},  {"Uuml", 0xDC, 0x86},   {"THORN", 0xDE, 0xFF},
        {"szlig", 0xDF, 0xA7},  {"divide", 0xF7, 0xD6}, {"oslash", 0xF8, 0xBF}, {"yuml", 0xFF, 0xD8},
    };
    for (const auto& code : codes) {
        const std::string text = '&' + std::string(code.name) + ';';
        EXPECT_EQ(decoded(text), std::string(1, static_cast<char>(code.latin1))) << code.name;
        EXPECT_EQ(decoded(text, Column::macintosh), std::string(1, static_cast<char>(code.macintosh)))
            << code.name;
    }
}

TEST(XmlEntities, AreWrittenForWhatABytesFormNeeds) {
    std::map<int, std::string> expected = {
        {'"', "&quot;"},  {'&', "&amp;"},   {'<', "&lt;"},    {'>', "&gt;"},    {'$', "&dollar;"},
        {'^', "&circ;"},  {'`', "&grave;"}, {'\n', "&nl;"},   {'\r', "&cr;"},   {0xA0, "&nbsp;"},
        {0xBD, "&half;"}, {0xAD, "&#xad;"}, {0xC2, "&#xc2;"}, {0xFF, "&yuml;"}, {0x80, "&#x80;"},
        {0x9F, "&#x9f;"}, {'\'', ""},       {0, ""},          {0x7F, ""},       {'a', ""},
    };
    for (const auto& [byte, text] : expected)
        EXPECT_EQ(written(static_cast<uint8_t>(byte), Escape::entities), text) << byte;
    int32_t markup = 0;
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text = written(static_cast<uint8_t>(byte), Escape::markup);
        markup += text.empty() ? 0 : 1;
        EXPECT_TRUE(text.empty() || text == written(static_cast<uint8_t>(byte), Escape::entities)) << byte;
    }
    EXPECT_EQ(markup, 4);
}

TEST(XmlEntities, ReadBackEveryByteThatIsWritten) {
    std::string text;
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        const std::string entry = written(static_cast<uint8_t>(byte), Escape::entities);
        bytes += static_cast<char>(byte);
        text += entry.empty() ? std::string(1, static_cast<char>(byte)) : entry;
    }
    EXPECT_EQ(decoded(text), bytes);
}

TEST(XmlEntities, LeaveWhatNobodyKnows) {
    const std::pair<const char*, const char*> cases[] = {{"&nosuch;", "&nosuch;"},
                                                         {"&#x41;", "A"},
                                                         {"&#65;", "A"},
                                                         {"&#X41;", "A"},
                                                         {"&#0;", "&#0;"},
                                                         {"&#256;", "&#256;"},
                                                         {"&#x2014;", "&#x2014;"},
                                                         {"&#xZ;", "&#xZ;"},
                                                         {"&#;", "&#;"},
                                                         {"&;", "&;"},
                                                         {"&", "&"},
                                                         {"&amp", "&amp"},
                                                         {"&AMP;", "&AMP;"},
                                                         {"&amp;lt;", "&lt;"},
                                                         {"a&lt;&lt;b", "a<<b"},
                                                         {"&&amp;;", "&&;"},
                                                         {"&#-65;", "&#-65;"},
                                                         {"&amp;&nosuch;&gt;", "&&nosuch;>"}};
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(decoded(text), expected);
}

} // namespace
} // namespace qorl
