#pragma once

#include "graphics/cairo/ShapedRunCache.h"

#include <fontconfig/fontconfig.h>
#include <memory>
#include <pango/pango.h>
#include <string>
#include <string_view>
#include <unordered_map>

namespace qorl {

/// Shapes text that needs more than a table of advances: scripts that join or turn round, fallback fonts,
/// marks. Pango is started at the first such text. GUI thread.
class PangoShaper {
public:
    /// Keeps a reference on `configuration`: fonts that are still held keep the shaper behind their
    /// collection.
    explicit PangoShaper(FcConfig* configuration) : configuration_(FcConfigReference(configuration)) {}
    ~PangoShaper();
    PangoShaper(const PangoShaper&) = delete;
    PangoShaper& operator=(const PangoShaper&) = delete;

    /// One line; `size` in logical pixels, `style` flags of `UFont`.
    ShapedRun shape(std::u16string_view line, const std::string& family, double size, uint32_t style);
    /// The installed fonts changed.
    void configurationChanged();

private:
    static constexpr size_t mostFaces = 512;

    bool start();
    void forgetFaces();
    std::shared_ptr<CairoFontFace> faceOf(PangoFont* font);

    FcConfig* configuration_;
    PangoFontMap* fontMap_ = nullptr;
    PangoContext* context_ = nullptr;
    std::unordered_map<PangoFont*, std::shared_ptr<CairoFontFace>> faces_; ///< One reference on each key.
};

} // namespace qorl
