#pragma once

#include "foundation/CmObject.h"
#include "graphics/DrawTarget.h"
#include "graphics/UColor.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace qorl {

class UDrawDevice;

/// The face by which devices and controls use an image: its pixels and the ways to draw it.
class GraphicsBitmap : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{C36C608B-8B93-4F1E-B5AE-9553612E5779}");

    /// Null for a bitmap without an image. Not counted for the caller.
    virtual GraphicsImage* getBackendImage() = 0;
    /// In logical pixels.
    virtual int32_t getWidth() = 0;
    virtual int32_t getHeight() = 0;
    /// A new image that shares the pixels of a part, in logical pixels; null when it lies outside.
    virtual Ref<GraphicsImage> getPixels(const CmRect& rect) = 0;
    virtual bool isValid() = 0;
    /// Draws the part `source`, in logical pixels, over `destination`. `alpha` from 0 to 1.
    virtual void draw(UDrawDevice& device, const CmRect& source, const CmRect& destination, double alpha,
                      Interpolation interpolation) = 0;
    /// Fills `destination` with repetitions of `source`, each drawn in the size `tile`, the first one at its
    /// top left; the last are cut.
    virtual void drawTiled(UDrawDevice& device, const CmRect& source, const CmRect& destination, CmSize tile,
                           double alpha, Interpolation interpolation) = 0;
    /// Copies the pixels of another bitmap's part to a place in this one, alpha included.
    virtual bool blit(GraphicsBitmap& from, const CmRect& source, CmPoint destination) = 0;

protected:
    ~GraphicsBitmap() = default;
};

/// An image that skins, controls and code pass round. Variants are made once and kept in the `BitmapCache`.
///
/// Sizes are in logical pixels; `getScale` device pixels of the image make one. GUI thread.
class UBitmap : public CmObject, public GraphicsBitmap, public DrawTarget {
    QORL_CLASS(UBitmap, CmObject)
    QORL_FACES(UBitmap, CmObject, GraphicsBitmap, DrawTarget)

public:
    /// How the parts between the margins of a woven copy are filled.
    enum class WeaveKind : int32_t { stretch = 0, tile = 1 };
    /// How a coloured copy takes on its colour.
    enum class ColorMode : int32_t { fill = 0, multiply = 1 };

    /// Without an image.
    UBitmap() = default;
    /// Transparent pixels; without an image when the size is empty or not allowed. `pixelFormat` goes to the
    /// back end, 0 is its own.
    explicit UBitmap(CmSize size, uint32_t pixelFormat = 0);
    explicit UBitmap(Ref<GraphicsImage> image, double scale = 1.0);
    UBitmap(const UBitmap&) = delete;
    UBitmap& operator=(const UBitmap&) = delete;
    ~UBitmap() override;

    /// Decodes an image file. Null, and the reason in `error`, when it is broken, of no known kind, or beyond
    /// the limits of `BitmapFactory`.
    static Ref<UBitmap> fromFile(std::span<const std::byte> file, std::string& error);
    /// Encodes as a PNG file. Empty without an image.
    std::vector<std::byte> toPng();

    /// A copy with pixels of its own.
    CmObject* clone() const override;

    virtual UBitmap* getSourceBitmap();
    /// The bitmap whose pixels these are, at the end of all delegation.
    virtual UBitmap* getRootBitmap();
    /// A bitmap of a part, which shares the pixels where the back end can. Null when the rectangle is empty
    /// or reaches outside.
    virtual Ref<UBitmap> createSection(const CmRect& rect);

    CmSize getSize() { return {getWidth(), getHeight()}; }
    double getScale() const { return scale_; }

    // Variants: null without an image, for a size that is empty or not allowed, and without memory.
    Ref<UBitmap> getScaled(CmSize size, Interpolation kind);
    /// Nine parts: corners as they are, edges and centre filled to the size. `margins` are widths, not
    /// places.
    Ref<UBitmap> getWoven(CmSize size, WeaveKind kind, const CmRect& margins);
    /// `gray` 1 takes all colour away; `alpha` multiplies.
    Ref<UBitmap> getDesaturated(float gray, float alpha);
    Ref<UBitmap> getColored(const UColor& color, ColorMode mode);
    /// `factor` 1 leaves only the colour.
    Ref<UBitmap> getTinted(const UColor& color, float factor);
    /// Offsets: hue in degrees, saturation and luminance in per cent from -100 to 100.
    Ref<UBitmap> getAdjusted(int32_t hue, int32_t saturation, int32_t luminance);
    /// Pixels of exactly that colour become transparent. Each call makes a new bitmap.
    Ref<UBitmap> getKeyedOut(const UColor& color);
    /// As opaque as `mask` is light at the same place. Each call makes a new bitmap.
    Ref<UBitmap> getMasked(UBitmap& mask);

    GraphicsImage* getBackendImage() override { return image_.get(); }
    int32_t getWidth() override { return size_.width; }
    int32_t getHeight() override { return size_.height; }
    Ref<GraphicsImage> getPixels(const CmRect& rect) override;
    bool isValid() override { return getBackendImage() != nullptr; }
    void draw(UDrawDevice& device, const CmRect& source, const CmRect& destination, double alpha,
              Interpolation interpolation) override;
    void drawTiled(UDrawDevice& device, const CmRect& source, const CmRect& destination, CmSize tile,
                   double alpha, Interpolation interpolation) override;
    bool blit(GraphicsBitmap& from, const CmRect& source, CmPoint destination) override;

    GraphicsImage* getTargetImage() override { return getBackendImage(); }
    double getScaleFactor() override { return scale_; }
    void drawingBegins() override {}
    void drawingEnds() override {}

protected:
    /// In pixels of the image, of a part in logical pixels.
    CmRect toImage(const CmRect& rect);
    /// A new bitmap of the same scale with a copy of the pixels; null without an image.
    Ref<UBitmap> copyPixels();
    /// The same of a part, in pixels of the image.
    Ref<UBitmap> copyPixels(const CmRect& part);
    /// `source`, as often side by side and one below the other as the counts say. Null where no whole number
    /// of pixels makes a repetition.
    Ref<UBitmap> repeat(const CmRect& source, int32_t across, int32_t down);

    Ref<GraphicsImage> image_;
    CmSize size_;
    double scale_ = 1.0;
    uint32_t flags_ = 0;
};

} // namespace qorl
