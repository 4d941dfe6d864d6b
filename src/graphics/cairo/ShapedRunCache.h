#pragma once

#include "graphics/cairo/CairoFontFace.h"

#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qorl {

/// A line of text as glyphs, in logical pixels from its baseline start.
struct ShapedRun {
    struct Glyph {
        uint32_t index;
        float x;
        float y;
    };
    /// Glyphs of one face.
    struct Segment {
        std::shared_ptr<CairoFontFace> face;
        uint32_t first;
        uint32_t count;
    };

    double width = 0;
    std::vector<Segment> segments;
    std::vector<Glyph> glyphs;
};

/// Shaped lines of one font, the longest unused going first. The last one stays, however long it is.
class ShapedRunCache {
public:
    static constexpr size_t capacity = 2048;
    /// Of all lines together: lines of a document may have any length.
    static constexpr size_t mostCharacters = 256 * 1024;

    /// Null when it isn't there. Valid until the next `add`.
    const ShapedRun* find(std::u16string_view line);
    const ShapedRun& add(std::u16string_view line, ShapedRun run);
    size_t count() const { return entries_.size(); }

private:
    struct Entry {
        std::u16string line;
        ShapedRun run;
    };

    std::list<Entry> entries_; ///< Last used first.
    size_t characters_ = 0;
    std::unordered_map<std::u16string_view, std::list<Entry>::iterator> index_;
};

} // namespace qorl
