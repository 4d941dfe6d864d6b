#pragma once

#include "graphics/GraphicsImage.h"
#include "graphics/UBitmap.h"
#include "support/TestGraphics.h"

#include <algorithm>
#include <vector>

namespace qorl::testing {

/// Fields of plain colour side by side, each of the given size.
inline Ref<UBitmap> makeStripes(CmSize field, const std::vector<uint32_t>& colors) {
    useGraphics();
    auto bitmap = make<UBitmap>(CmSize{field.width * static_cast<int32_t>(colors.size()), field.height});
    const PixelLock pixels(*bitmap->getBackendImage());
    for (int32_t y = 0; y < field.height; ++y)
        for (size_t i = 0; i < colors.size(); ++i)
            std::fill_n(pixels->getRow(y) + i * static_cast<size_t>(field.width), field.width, colors[i]);
    return bitmap;
}

} // namespace qorl::testing
