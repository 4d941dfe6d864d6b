#pragma once

#include "graphics/GraphicsFont.h"
#include "graphics/cairo/PangoShaper.h"

#include <fontconfig/fontconfig.h>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>

namespace qorl {

class CairoFont;

/// The fonts that fontconfig knows, under a configuration of our own: another user of fontconfig in the
/// process is not disturbed. It is loaded when the first font is asked for.
class CairoFontCollection final : public FontCollection {
    QORL_CLASS(CairoFontCollection, FontCollection)

public:
    CairoFontCollection() = default;
    ~CairoFontCollection() override;

    Ref<GraphicsFont> findFont(const FontRequest& request) override;
    bool hasFace(std::string_view face) override;
    bool installFontFile(const std::string& path) override;

private:
    using Key = std::tuple<std::string, double, uint32_t>;

    static constexpr size_t mostFonts = 512;
    static constexpr double smallestSize = 1.0;
    static constexpr double largestSize = 2048.0;

    bool load();
    std::shared_ptr<CairoFontFace> createFace(const std::string& family, double size, uint32_t style);

    FcConfig* configuration_ = nullptr;
    std::shared_ptr<PangoShaper> shaper_;
    std::map<Key, Ref<CairoFont>> fonts_;
};

} // namespace qorl
