#pragma once

#include "graphics/DrawBackEnd.h"
#include "graphics/DrawTarget.h"
#include "graphics/GraphicsFont.h"
#include "graphics/GraphicsPath.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qorl {

class BitmapFilterFactory;

/// Makes images. Any thread.
class BitmapFactory : public FObject {
    QORL_CLASS(BitmapFactory, FObject)

public:
    /// Larger images are refused, whoever asks: a document may not take the machine's memory.
    static constexpr int32_t maximumSide = 16384;
    static constexpr int64_t maximumPixels = 64ll * 1024 * 1024;

    static constexpr bool isAllowed(CmSize size) {
        return !size.isEmpty() && size.width <= maximumSide && size.height <= maximumSide &&
               int64_t{size.width} * size.height <= maximumPixels;
    }

    /// A transparent image of `size` device pixels; null when it is not allowed or there is no memory.
    /// `format` is the pixel format word of `UBitmap`; a back end may know only 0.
    virtual Ref<GraphicsImage> createBitmap(CmSize size, uint32_t format) = 0;
    /// An image over memory that the caller keeps until the image is gone.
    virtual Ref<GraphicsImage> wrapPixels(const platform::PixelSurface& memory) = 0;
};

/// Reads and writes one kind of image file.
class ImageCodec : public FObject {
    QORL_CLASS(ImageCodec, FObject)

public:
    /// Lower case, without a dot, parted by ";".
    virtual std::string_view extensions() const = 0;
    /// Whether these first bytes of a file look like this kind.
    virtual bool recognises(std::span<const std::byte> head) const = 0;
    /// Null, and the reason in `error`, when the bytes are broken or beyond the limits of `BitmapFactory`.
    virtual Ref<GraphicsImage> decode(std::span<const std::byte> file, std::string& error) = 0;
    /// Appends a file to `out`. False when it can't be encoded, or without memory.
    virtual bool encode(GraphicsImage& image, std::vector<std::byte>& out) = 0;
};

/// The codecs of a back end.
class ImageCodecs : public FObject {
    QORL_CLASS(ImageCodecs, FObject)

public:
    void add(Ref<ImageCodec> codec);
    /// `extension` without a dot, in any case. Null when none fits.
    ImageCodec* findByExtension(std::string_view extension) const;
    ImageCodec* findByContents(std::span<const std::byte> head) const;

private:
    std::vector<Ref<ImageCodec>> codecs_;
};

/// The makers of one drawing system. There is one factory per process, chosen at the start.
///
/// May be asked from any thread; the sub-objects are made once, at first use. Getters hand out no reference,
/// and null when memory runs out.
class GraphicsFactory : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{BF595906-6F9F-47D9-99C4-A648C1857D83}");

    virtual BitmapFactory* getBitmapFactory() = 0;
    virtual BitmapFilterFactory* getBitmapFilterFactory() = 0;
    virtual FontCollection* getFontCollection() = 0;
    virtual Ref<GraphicsPath> createGraphicsPath() = 0;
    /// Null when the target can't be drawn.
    virtual Ref<DrawBackEnd> createDrawDevice(DrawTarget* target) = 0;
    /// Composition of windows by the drawing system; null where it has none.
    virtual FInterface* getCompositor() = 0;
    virtual FInterface* createSwapChain(DrawTarget* target) = 0;
    virtual ImageCodecs* getImageCodecs() = 0;

protected:
    ~GraphicsFactory() = default;
};

/// The factory in force; null before the selection and after the shutdown.
GraphicsFactory* getGraphicsFactory();

/// An image by the factory in force. Null without one, when the size is not allowed, or without memory.
Ref<GraphicsImage> createGraphicsImage(CmSize size, uint32_t format = 0);

/// The name that was selected; empty before.
const std::string& getGraphicsBackendName();

/// Chooses the drawing system for the life of the library; "default" is this platform's own. A second choice
/// answers whether it is the same name and changes nothing. False after the shutdown. GUI thread.
bool selectGraphicsBackend(std::string_view name);

/// The choice by the command line: what "--gfxbackend" asks for if it is "D2D" or "GDI"; else "default", and
/// windows follow the resolution of their monitors as "--dpiawareness" asks ("monitor" or "system"). Of
/// several the last counts.
bool selectGraphicsBackendByArguments(std::span<const std::string_view> arguments);

/// Releases the factory and everything that the drawing system keeps, so that the library can be unloaded.
/// A selection is refused afterwards until `reopenGraphics`.
void shutdownGraphics();

/// Lifts the mark of the last shutdown: the library is entered again.
void reopenGraphics();

/// Counts selections and shutdowns, so that kept back end objects of an earlier factory are told apart.
uint32_t graphicsGeneration();

} // namespace qorl
