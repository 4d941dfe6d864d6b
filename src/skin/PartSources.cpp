#include "skin/PartSources.h"

#include "skin/SkinLimits.h"

#include <algorithm>

namespace qorl {

Ref<UBitmap> PartSources::find(std::string_view file) {
    const auto found =
        std::find_if(held_.begin(), held_.end(), [&](const auto& held) { return held.first == file; });
    if (found == held_.end())
        return nullptr;
    std::rotate(found, found + 1, held_.end());
    return held_.back().second;
}

void PartSources::keep(std::string file, Ref<UBitmap> bitmap) {
    if (users_ == 0)
        return;
    held_.emplace_back(std::move(file), std::move(bitmap));
    while (bytes() > SkinLimits::partSourceBytes)
        held_.erase(held_.begin());
}

int64_t PartSources::bytes() const {
    int64_t sum = 0;
    for (const auto& held : held_)
        sum += pixelBytes(held.second->getSize());
    return sum;
}

} // namespace qorl
