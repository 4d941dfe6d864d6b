#pragma once

#include <cstdint>

namespace qorl::platform {

/// Memory that is drawn into: rows of 32-bit pixels from top to bottom, each pixel 0xAARRGGBB in native byte
/// order with premultiplied colour. A plain description; the memory belongs to whoever handed it out.
struct PixelSurface {
    uint8_t* pixels = nullptr;
    int32_t width = 0;  ///< in device pixels
    int32_t height = 0; ///< in device pixels
    int32_t stride = 0; ///< bytes from one row to the next
    /// Device pixels for one logical pixel. Coordinates of windows and views are logical.
    double scale = 1.0;

    bool isEmpty() const { return !pixels || width <= 0 || height <= 0; }
    uint32_t* getRow(int32_t y) const { return reinterpret_cast<uint32_t*>(pixels + int64_t{y} * stride); }
};

} // namespace qorl::platform
