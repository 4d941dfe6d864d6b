#pragma once

#include "graphics/GraphicsFactory.h"

namespace qorl {

/// The software drawing system over Cairo, FreeType and Pango. It is deterministic: gray antialiasing, no
/// hinting, the same picture on every machine with the same fonts and library versions.
Ref<GraphicsFactory> createCairoFactory();

} // namespace qorl
