#pragma once

#include "graphics/UDrawDevice.h"

#include <qorl/Geometry.h>

#include <cstdint>

namespace qorl {

/// The draw device's justification for a skin's `just` word (`TextJust`): no bit of an axis centres on it.
int32_t justifyFromSkin(uint32_t just);

/// Draws `text` into `rect` in the device's font by a skin's `just` word, line by line; with
/// `TextJust::wordWrap` lines are broken at blanks where they would leave the rectangle. A word that is wider
/// than it stays whole.
void drawControlText(UDrawDevice& device, const ConstString& text, const CmRect& rect, uint32_t just);

/// The extent of `text` in `font`; with a positive `wrapWidth` as broken to that width.
CmSize measureControlText(const UFont& font, const ConstString& text, int32_t wrapWidth = 0);

} // namespace qorl
