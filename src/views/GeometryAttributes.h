#pragma once

#include "persistence/attributes/FAttributes.h"

#include <qorl/Geometry.h>

#include <string_view>

namespace qorl {

/// Points, sizes and rects in attribute lists: binary values of two or four 32-bit integers, little-endian,
/// in the order in which the types declare them. The getters answer false, with `value` untouched, for a
/// missing or shorter one, and cut each number to what some of them can be added up to without an overflow:
/// they come from files.
void setPoint(FAttributes& attributes, std::string_view key, CmPoint value);
void setSize(FAttributes& attributes, std::string_view key, CmSize value);
void setRect(FAttributes& attributes, std::string_view key, const CmRect& value);
bool getPoint(const FAttributes& attributes, std::string_view key, CmPoint& value);
bool getSize(const FAttributes& attributes, std::string_view key, CmSize& value);
bool getRect(const FAttributes& attributes, std::string_view key, CmRect& value);

} // namespace qorl
