#pragma once

#include <cstdint>
#include <string>

namespace qorl::bench {

/// A skin of `count` elements in a template "Main" of 1280x800: rows of labelled controls, as device panels
/// have them, each with its value. Good until the next call with another count.
const std::string& panelDocument(int64_t count);

} // namespace qorl::bench
