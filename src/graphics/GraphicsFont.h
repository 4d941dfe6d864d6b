#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/FObject.h"
#include "foundation/text/ConstString.h"
#include "graphics/DrawTypes.h"

#include <qorl/Ref.h>

#include <string>
#include <string_view>

namespace qorl {

/// What a font is asked for by: equal requests get the same font object.
struct FontRequest {
    std::string_view face; ///< UTF-8 family name; empty for the default face.
    double size = 0;       ///< Of the em square, in logical pixels.
    uint32_t style = 0;    ///< Style flags of `UFont`.
};

/// A font as the back end holds it: it measures text. Text is drawn with it by a `DrawBackEnd` of the same
/// factory. 8-bit text is in the system code page.
///
/// Measured texts are kept, so measuring the same text again costs a look-up. Line feeds part lines.
class GraphicsFont : public FObject {
    QORL_CLASS(GraphicsFont, FObject)

public:
    virtual const FontMetrics& getMetrics() const = 0;
    /// The advance of the widest line, in logical pixels, not rounded.
    virtual double measureWidth(const ConstString& text) = 0;
    /// The extent of all lines, its top left at 0, 0.
    virtual Geometry::Rect measureExtent(const ConstString& text) = 0;
    /// How many leading characters of a single line fit into `width` logical pixels.
    virtual int32_t countFitting(const ConstString& text, double width) = 0;
};

/// Finds fonts by name, and takes in font files. GUI thread.
class FontCollection : public FObject {
    QORL_CLASS(FontCollection, FObject)

public:
    /// The font for a request; where the face is unknown, one that the system gives in its place. Null only
    /// when the system has no font at all.
    virtual Ref<GraphicsFont> findFont(const FontRequest& request) = 0;
    /// Whether the face is there under this very name, without regard to case. "sans", "serif" and
    /// "monospace" always are.
    virtual bool hasFace(std::string_view face) = 0;
    /// Makes the faces of a font file known to this process. False when it can't be read as a font.
    virtual bool installFontFile(const std::string& path) = 0;
};

} // namespace qorl
