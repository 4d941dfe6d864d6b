#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace qorl {

struct StandardColorRow {
    const char* name;
    uint32_t argb;
};

inline constexpr StandardColorRow standardColorTable[] = {
    {"black", 0xFF000000},   {"white", 0xFFFFFFFF},        {"gray5", 0xFFEBEBEB},
    {"gray10", 0xFFEBEBEB},  {"gray20", 0xFFDEDEDE},       {"gray30", 0xFFC8C8C8},
    {"gray40", 0xFFB4B4B4},  {"gray50", 0xFFA0A0A0},       {"gray60", 0xFF8C8C8C},
    {"gray70", 0xFF787878},  {"gray80", 0xFF6E6E6E},       {"gray90", 0xFF505050},
    {"red", 0xFFFF0000},     {"lightred", 0xFFFF7D7D},     {"darkred", 0xFF5A0000},
    {"green", 0xFF00FF00},   {"lightgreen", 0xFF8CFF8C},   {"darkgreen", 0xFF005A00},
    {"blue", 0xFF0000FF},    {"lightblue", 0xFF99C1FF},    {"darkblue", 0xFF00005A},
    {"magenta", 0xFFFF00FF}, {"lightmagenta", 0xFFFFA3FF}, {"darkmagenta", 0xFF700070},
    {"yellow", 0xFFFFFF00},  {"lightyellow", 0xFFFFFFC8},  {"darkyellow", 0xFF646400},
    {"orange", 0xFFFFA500},  {"lightorange", 0xFFFFD564},  {"darkorange", 0xFF9F6700},
    {"gold", 0xFFFFCC66},    {"black50", 0xFF323232},      {"black70", 0xFF464646},
};

} // namespace qorl
