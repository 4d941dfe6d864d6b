#include "graphics/UBitmap.h"

#include "foundation/StartupHook.h"
#include "graphics/BitmapCache.h"
#include "graphics/GraphicsFactory.h"
#include "graphics/PixelFilters.h"
#include "graphics/UBitmapFamily.h"
#include "graphics/UDrawDevice.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <new>

namespace qorl {

namespace {

using FactorText = std::array<char, 64>;
using KeyText = std::array<char, 160>;

/// Decimal text without trailing zeros: 0.5 and 0.50 are one key.
FactorText factorText(float factor) {
    FactorText text{};
    std::to_chars(text.data(), text.data() + text.size() - 1, factor, std::chars_format::fixed);
    return text;
}

template <typename... Numbers>
KeyText keyText(const char* format, Numbers... numbers) {
    KeyText text;
    std::snprintf(text.data(), text.size(), format, numbers...);
    return text;
}

/// The variant under a key, made by `create` when it isn't kept yet.
template <typename Create>
Ref<UBitmap> cachedVariant(UBitmap* source, const KeyText& text, Create create) try {
    const std::string_view key(text.data());
    BitmapCache* cache = BitmapCache::instance();
    if (!cache || !source->isValid())
        return nullptr;
    if (auto kept = cache->get(source, key))
        return kept;
    Ref<UBitmap> made = create();
    return made && cache->put(source, key, made.get()) ? made : nullptr;
} catch (const std::bad_alloc&) {
    return nullptr;
}

/// Copies pixels between locked images, cut to what both have.
void copyRows(const platform::PixelSurface& from, CmRect source, const platform::PixelSurface& to,
              CmPoint place) {
    const CmRect inTarget = CmRect::ofSize(place, source.size()).intersect({0, 0, to.width, to.height});
    const CmRect part =
        inTarget.moved(CmPoint{source.left, source.top} - place).intersect({0, 0, from.width, from.height});
    if (inTarget.isEmpty() || part.isEmpty())
        return;
    const CmPoint target = CmPoint{part.left, part.top} - (CmPoint{source.left, source.top} - place);
    const auto copyRow = [&](int32_t y) {
        std::memmove(to.getRow(target.y + y) + target.x, from.getRow(part.top + y) + part.left,
                     static_cast<size_t>(part.width()) * sizeof(uint32_t));
    };
    // Both may be the same memory: no row may be written before it was read.
    if (std::less<>()(from.getRow(part.top), to.getRow(target.y)))
        for (int32_t y = part.height(); y-- > 0;)
            copyRow(y);
    else
        for (int32_t y = 0; y < part.height(); ++y)
            copyRow(y);
}

/// How many repetitions of a side are drawn as one, so that a picture of a few pixels doesn't fill a large
/// room one by one.
int32_t repetitions(int32_t source, int32_t tile, int32_t room) {
    constexpr int32_t wanted = 64;
    if (source != tile || source > wanted / 2)
        return 1;
    return std::min(wanted / source, (room + source - 1) / source);
}

/// Kept variants go while what made them still stands.
const ShutdownHook dropVariants{"UBitmap", StartupHook::ready, [] {
                                    if (BitmapCache* cache = BitmapCache::existing())
                                        cache->clear();
                                    return true;
                                }};

} // namespace

UBitmap::UBitmap(CmSize size, uint32_t pixelFormat) : image_(createGraphicsImage(size, pixelFormat)) {
    if (image_)
        size_ = size;
}

UBitmap::UBitmap(Ref<GraphicsImage> image, double scale)
    : image_(std::move(image)), scale_(std::isfinite(scale) && scale > 0 ? scale : 1.0) {
    if (image_)
        size_ = {static_cast<int32_t>(std::lround(image_->getWidth() / scale_)),
                 static_cast<int32_t>(std::lround(image_->getHeight() / scale_))};
}

UBitmap::~UBitmap() {
    if (BitmapCache* cache = BitmapCache::existing())
        cache->remove(this);
}

Ref<UBitmap> UBitmap::fromFile(std::span<const std::byte> file, std::string& error) try {
    GraphicsFactory* factory = getGraphicsFactory();
    ImageCodecs* codecs = factory ? factory->getImageCodecs() : nullptr;
    if (!codecs) {
        error = factory ? "out of memory" : "no graphics back end is selected";
        return nullptr;
    }
    ImageCodec* codec = codecs->findByContents(file);
    if (!codec) {
        error = file.empty() ? "the file is empty" : "not an image file of a known kind (PNG)";
        return nullptr;
    }
    Ref<GraphicsImage> image = codec->decode(file, error);
    return image ? make<UBitmap>(std::move(image)) : nullptr;
} catch (const std::bad_alloc&) {
    error = "out of memory"; // short enough to need none
    return nullptr;
}

std::vector<std::byte> UBitmap::toPng() {
    std::vector<std::byte> file;
    GraphicsFactory* factory = getGraphicsFactory();
    ImageCodecs* codecs = factory ? factory->getImageCodecs() : nullptr;
    ImageCodec* codec = codecs ? codecs->findByExtension("png") : nullptr;
    GraphicsImage* image = getBackendImage();
    if (!codec || !image || !codec->encode(*image, file))
        file.clear();
    return file;
}

CmObject* UBitmap::clone() const {
    // Reading pixels needs the image to be locked, which changes nothing that can be seen.
    Ref<UBitmap> copy = const_cast<UBitmap*>(this)->copyPixels();
    return copy ? copy.detach() : new UBitmap();
}

Ref<UBitmap> UBitmap::copyPixels() {
    GraphicsImage* from = getBackendImage();
    return from ? copyPixels({0, 0, from->getWidth(), from->getHeight()}) : nullptr;
}

Ref<UBitmap> UBitmap::copyPixels(const CmRect& part) {
    GraphicsImage* from = getBackendImage();
    Ref<GraphicsImage> to = from ? createGraphicsImage(part.size()) : nullptr;
    if (!to)
        return nullptr;
    {
        const PixelLock source(*from, PixelAccess::read);
        const PixelLock target(*to);
        if (source->isEmpty() || target->isEmpty())
            return nullptr;
        copyRows(*source, part, *target, {});
    }
    return make<UBitmap>(std::move(to), getScale());
}

UBitmap* UBitmap::getSourceBitmap() {
    return this;
}

UBitmap* UBitmap::getRootBitmap() {
    return this;
}

Ref<UBitmap> UBitmap::createSection(const CmRect& rect) {
    if (rect.isEmpty() || !CmRect::ofSize({}, getSize()).contains(rect) || !isValid())
        return nullptr;
    Ref<UBitmap> section = make<UBitmapSection>(retain(this), rect);
    return section->isValid() ? section : copyPixels(toImage(rect));
}

CmRect UBitmap::toImage(const CmRect& rect) {
    if (scale_ == 1.0)
        return rect;
    const GraphicsImage* image = getBackendImage();
    const CmSize size = getSize();
    // The last edge is that of the image, whose size need not be a multiple of the scale.
    const auto scaled = [this](int32_t place, int32_t side, int32_t pixels) {
        return place == side ? pixels : saturated(std::llround(place * scale_));
    };
    const int32_t width = image ? image->getWidth() : 0;
    const int32_t height = image ? image->getHeight() : 0;
    return {scaled(rect.left, size.width, width), scaled(rect.top, size.height, height),
            scaled(rect.right, size.width, width), scaled(rect.bottom, size.height, height)};
}

Ref<UBitmap> UBitmap::getScaled(CmSize size, Interpolation kind) {
    if (size.isEmpty())
        return nullptr;
    const auto key = keyText("scale-%d-%d-%d", size.width, size.height, static_cast<int32_t>(kind));
    return cachedVariant(this, key, [&]() -> Ref<UBitmap> {
        Ref<GraphicsImage> scaled = getBackendImage()->createScaled(size, kind);
        return scaled ? make<UBitmap>(std::move(scaled)) : nullptr;
    });
}

Ref<UBitmap> UBitmap::getWoven(CmSize size, WeaveKind kind, const CmRect& margins) {
    if (size.isEmpty())
        return nullptr;
    const auto key =
        keyText("weave-%d-%d-%d-%d-%d-%d-%d", size.width, size.height, static_cast<int32_t>(kind),
                margins.left, margins.top, margins.right, margins.bottom);
    return cachedVariant(this, key, [&]() -> Ref<UBitmap> {
        auto woven = make<UBitmap>(size);
        if (!woven->isValid())
            return nullptr;
        const CmRect center{margins.left, margins.top, getWidth() - margins.right,
                            getHeight() - margins.bottom};
        const int32_t style = kind == WeaveKind::tile
                                  ? UDynamicBitmap::horizontalRepeat | UDynamicBitmap::verticalRepeat
                                  : UDynamicBitmap::stretch;
        UDynamicBitmap parts(retain(this), center, style);
        UDrawDevice device(woven.get());
        device.drawBitmap(&parts, CmRect::ofSize({}, size));
        return woven;
    });
}

Ref<UBitmap> UBitmap::getDesaturated(float gray, float alpha) {
    const auto key = keyText("desat-%s-%s", factorText(gray).data(), factorText(alpha).data());
    return cachedVariant(this, key, [&] {
        auto copy = copyPixels();
        if (copy)
            PixelFilters::desaturate(*copy->getBackendImage(), gray, alpha);
        return copy;
    });
}

Ref<UBitmap> UBitmap::getColored(const UColor& color, ColorMode mode) {
    const auto key =
        keyText("color-%lu-%d", static_cast<unsigned long>(color.packed()), static_cast<int32_t>(mode));
    return cachedVariant(this, key, [&] {
        auto copy = copyPixels();
        if (copy && mode == ColorMode::multiply)
            PixelFilters::multiply(*copy->getBackendImage(), color);
        else if (copy)
            PixelFilters::fillKeepingAlpha(*copy->getBackendImage(), color);
        return copy;
    });
}

Ref<UBitmap> UBitmap::getKeyedOut(const UColor& color) {
    auto copy = copyPixels();
    if (copy)
        PixelFilters::replaceColor(*copy->getBackendImage(), color, UColor());
    return copy;
}

Ref<UBitmap> UBitmap::getMasked(UBitmap& mask) {
    auto copy = mask.isValid() ? copyPixels() : nullptr;
    if (copy)
        PixelFilters::applyMask(*copy->getBackendImage(), *mask.getBackendImage());
    return copy;
}

Ref<UBitmap> UBitmap::getTinted(const UColor& color, float factor) {
    const auto key =
        keyText("tint-%lu-%s", static_cast<unsigned long>(color.packed()), factorText(factor).data());
    return cachedVariant(this, key, [&] {
        auto copy = copyPixels();
        if (copy)
            PixelFilters::tint(*copy->getBackendImage(), color, factor);
        return copy;
    });
}

Ref<UBitmap> UBitmap::getAdjusted(int32_t hue, int32_t saturation, int32_t luminance) {
    const auto key = keyText("adjust-%d-%d-%d", hue, saturation, luminance);
    return cachedVariant(this, key, [&] {
        auto copy = copyPixels();
        if (copy)
            PixelFilters::adjustHsl(*copy->getBackendImage(), hue, saturation, luminance);
        return copy;
    });
}

Ref<GraphicsImage> UBitmap::getPixels(const CmRect& rect) {
    GraphicsImage* image = getBackendImage();
    return image ? image->createSection(toImage(rect)) : nullptr;
}

void UBitmap::draw(UDrawDevice& device, const CmRect& source, const CmRect& destination, double alpha,
                   Interpolation interpolation) {
    GraphicsImage* image = getBackendImage();
    if (!image || source.isEmpty() || destination.isEmpty())
        return;
    DrawBackEnd* backEnd = device.beginBitmap();
    if (!backEnd)
        return;
    const CmRect part = toImage(source);
    const Geometry::Rect from{double(part.left), double(part.top), double(part.width()),
                              double(part.height())};
    const bool plain = alpha >= 1 && scale_ == 1.0 && source.size() == destination.size();
    if (plain) {
        backEnd->drawBitmap(image, {double(destination.left), double(destination.top)}, &from);
        return;
    }
    backEnd->drawBitmapStretched(image,
                                 {double(destination.left), double(destination.top),
                                  double(destination.width()), double(destination.height())},
                                 from, alpha, interpolation);
}

Ref<UBitmap> UBitmap::repeat(const CmRect& source, int32_t across, int32_t down) {
    const CmRect part = toImage(source);
    GraphicsImage* from = getBackendImage();
    const bool isWhole = part.width() == source.width() * scale_ && part.height() == source.height() * scale_;
    Ref<GraphicsImage> to =
        from && isWhole ? createGraphicsImage({part.width() * across, part.height() * down}) : nullptr;
    if (!to)
        return nullptr;
    {
        const PixelLock pixels(*from, PixelAccess::read);
        const PixelLock target(*to);
        if (pixels->isEmpty() || target->isEmpty())
            return nullptr;
        for (int32_t y = 0; y < down; ++y)
            for (int32_t x = 0; x < across; ++x)
                copyRows(*pixels, part, *target, {x * part.width(), y * part.height()});
    }
    return make<UBitmap>(std::move(to), scale_);
}

void UBitmap::drawTiled(UDrawDevice& device, const CmRect& source, const CmRect& destination, CmSize tile,
                        double alpha, Interpolation interpolation) {
    // Only the tiles that can be seen: a huge rectangle must not take a huge time.
    const CmRect visible = destination.intersect(device.getVisible());
    if (source.isEmpty() || tile.isEmpty() || visible.isEmpty() || !isValid())
        return;
    constexpr int32_t worthIt = 16;
    const int32_t across = repetitions(source.width(), tile.width, visible.width());
    const int32_t down = repetitions(source.height(), tile.height, visible.height());
    const Ref<UBitmap> several = across * down >= worthIt ? repeat(source, across, down) : nullptr;
    if (several) {
        several->drawTiled(device, CmRect::ofSize({}, several->getSize()), destination,
                           {tile.width * across, tile.height * down}, alpha, interpolation);
        return;
    }
    const auto firstBefore = [](int32_t place, int32_t start, int32_t step) {
        return start + (int64_t{place} - start) / step * step;
    };
    const auto share = [](int32_t part, int32_t whole, int32_t side) {
        return std::max(1, static_cast<int32_t>(int64_t{side} * part / whole));
    };
    for (int64_t y = firstBefore(visible.top, destination.top, tile.height); y < visible.bottom;
         y += tile.height) {
        for (int64_t x = firstBefore(visible.left, destination.left, tile.width); x < visible.right;
             x += tile.width) {
            const CmRect cut =
                CmRect{saturated(x), saturated(y), saturated(x + tile.width), saturated(y + tile.height)}
                    .intersect(destination);
            const CmSize part{share(cut.width(), tile.width, source.width()),
                              share(cut.height(), tile.height, source.height())};
            draw(device, CmRect::ofSize(source.origin(), part), cut, alpha, interpolation);
        }
    }
}

bool UBitmap::blit(GraphicsBitmap& from, const CmRect& source, CmPoint destination) {
    GraphicsImage* to = getBackendImage();
    const Ref<GraphicsImage> part = from.getPixels(source);
    if (!to || !part)
        return false;
    const CmSize size{part->getWidth(), part->getHeight()};
    const PixelLock target(*to);
    const PixelLock pixels(*part, PixelAccess::read);
    if (target->isEmpty() || pixels->isEmpty())
        return false;
    copyRows(*pixels, CmRect::ofSize({}, size), *target,
             toImage({destination.x, destination.y, 0, 0}).origin());
    return true;
}

} // namespace qorl
