#pragma once

#include "graphics/GraphicsImage.h"
#include "graphics/UColor.h"

namespace qorl {

/// Changes of an image's pixels in place. Colours are taken without their alpha, the image's own alpha stays.
namespace PixelFilters {

/// Mixes towards gray by `gray` (luma of ITU-R BT.601) and multiplies the alpha by `alpha`; both from 0 to 1.
void desaturate(GraphicsImage& image, float gray, float alpha);
/// Every pixel takes the colour.
void fillKeepingAlpha(GraphicsImage& image, const UColor& color);
/// Every channel is multiplied by the colour's.
void multiply(GraphicsImage& image, const UColor& color);
/// Mixes towards the colour by `factor` from 0 to 1.
void tint(GraphicsImage& image, const UColor& color, float factor);
/// Adds `hue` degrees; `saturation` and `luminance` in per cent from -100 to 100, 0 for no change.
void adjustHsl(GraphicsImage& image, double hue, double saturation, double luminance);
/// Pixels of exactly the colour `from`, alpha included, become `to`.
void replaceColor(GraphicsImage& image, const UColor& from, const UColor& to);
/// Multiplies the alpha by the lightness of `mask` at the same place; what lies outside of that goes.
void applyMask(GraphicsImage& image, GraphicsImage& mask);
/// The mean of all pixels, weighed by their alpha; transparent black for an image without pixels.
UColor meanColor(GraphicsImage& image);

} // namespace PixelFilters

} // namespace qorl
