#pragma once

#include "graphics/UColor.h"
#include "graphics/UFont.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace qorl {

/// One `color`, `size` or `font` of a scheme section, as whoever reads documents hands it to `applyScheme`.
struct SchemeEntry {
    enum class Kind : uint8_t { color, metric, font };

    Kind kind = Kind::color;
    std::string_view name;

    UColor color{};     ///< Of a colour.
    uint32_t group = 0; ///< Of a colour: group bits of the skin.
    int32_t metric = 0; ///< Of a metric.

    std::string_view faces{};          ///< Of a font: names parted by commas; empty for the default face.
    int32_t fontSize = 0;              ///< In points.
    uint32_t fontStyle = 0;            ///< Style flags of `UFont`.
    std::optional<UColor> fontColor{}; ///< None keeps the colour that the key had.
};

/// Receives a scheme that is written back to a document: entries for the element that it stands at, which
/// `begin...` first makes a section of colours, metrics or fonts.
class SchemeWriter {
public:
    virtual void beginColors() = 0;
    virtual void addColor(std::string_view name, const UColor& color, uint32_t group) = 0;
    virtual void beginMetrics() = 0;
    virtual void addMetric(std::string_view name, int32_t value) = 0;
    virtual void beginFonts() = 0;
    virtual void addFont(std::string_view name, const UFont& font) = 0;

protected:
    ~SchemeWriter() = default;
};

/// Whether the entries that are written get a section of their own.
enum class SchemeSection : uint8_t { asItStands, own };

} // namespace qorl
