#pragma once

#include "graphics/UBitmap.h"

#include <qorl/Ref.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qorl {

/// Of a bitmap in memory.
inline int64_t pixelBytes(CmSize size) {
    return int64_t{size.width} * size.height * int64_t{sizeof(uint32_t)};
}

/// The bitmaps of files that sections are copied from, so that a file of many parts is decoded once while a
/// template is built.
///
/// Holds at most `SkinLimits::partSourceBytes` of pixels; what was asked for longest ago goes first.
class PartSources {
public:
    /// While one stands, what is decoded is held.
    class Use {
    public:
        explicit Use(PartSources& sources) : sources_(sources) { ++sources_.users_; }
        ~Use() {
            if (--sources_.users_ == 0)
                sources_.clear();
        }
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;

    private:
        PartSources& sources_;
    };

    /// Null when it isn't held.
    Ref<UBitmap> find(std::string_view file);
    /// Nothing when nobody builds.
    void keep(std::string file, Ref<UBitmap> bitmap);
    void clear() { held_.clear(); }

private:
    int64_t bytes() const;

    int32_t users_ = 0;

    /// The last one used at the end.
    std::vector<std::pair<std::string, Ref<UBitmap>>> held_;
};

} // namespace qorl
