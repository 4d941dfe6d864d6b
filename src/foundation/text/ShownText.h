#pragma once

#include <string>
#include <string_view>

/// Texts of files as messages show them. Pure functions; any thread may call them. Both throw
/// `std::bad_alloc`.
namespace qorl::text {

/// Control characters, which would reach a terminal, and bytes that are no text stand as "\x1B".
std::string printable(std::string_view text);
/// The same for a name, which is not endless.
std::string brief(std::string_view name);

} // namespace qorl::text
