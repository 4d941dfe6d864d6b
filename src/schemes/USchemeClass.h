#pragma once

#include <string_view>

namespace qorl {

class UScheme;

/// The schemes that templates name by their `scheme` attribute, beside "main" and "dialog". GUI thread.
namespace USchemeClass {

/// The scheme stays its owner's, who takes it out before it goes. A name that is there is given to the new
/// one.
void add(std::string_view name, UScheme* scheme);
void remove(UScheme* scheme);

/// Null when there is none. Not counted for the caller.
UScheme* find(std::string_view name);

/// `find`, then "main" and "dialog" as the global schemes hold them.
UScheme* findOrGlobal(std::string_view name);

} // namespace USchemeClass

} // namespace qorl
