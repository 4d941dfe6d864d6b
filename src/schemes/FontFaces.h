#pragma once

#include <string_view>

namespace qorl {

/// The first of `names`, divided by commas, that there is a font for; false when there is none, or no draw
/// device to ask. No names at all stand for the default face, so that a scheme reads back as it was written.
/// GUI thread.
bool findFontFace(std::string_view names, std::string_view& face);

} // namespace qorl
