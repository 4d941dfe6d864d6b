#include "graphics/PixelFilters.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace qorl::PixelFilters {

namespace {

struct Pixel {
    uint32_t red;
    uint32_t green;
    uint32_t blue;
    uint32_t alpha;
};

Pixel fromPremultiplied(uint32_t word) {
    const uint32_t alpha = word >> 24;
    if (alpha == 0)
        return {0, 0, 0, 0};
    const auto straight = [alpha](uint32_t channel) {
        return std::min(255u, (channel * 255 + alpha / 2) / alpha);
    };
    return {straight(word >> 16 & 0xFF), straight(word >> 8 & 0xFF), straight(word & 0xFF), alpha};
}

uint32_t toPremultiplied(const Pixel& pixel) {
    const auto scaled = [&](uint32_t channel) { return (channel * pixel.alpha + 127) / 255; };
    return pixel.alpha << 24 | scaled(pixel.red) << 16 | scaled(pixel.green) << 8 | scaled(pixel.blue);
}

/// ITU-R BT.601.
uint32_t lumaOf(uint32_t word) {
    return ((word >> 16 & 0xFF) * 299 + (word >> 8 & 0xFF) * 587 + (word & 0xFF) * 114 + 500) / 1000;
}

uint32_t toPremultiplied(const UColor& color) {
    return toPremultiplied(Pixel{color.red(), color.green(), color.blue(), color.alpha()});
}

template <typename Change>
void forEachWord(GraphicsImage& image, Change change) {
    const PixelLock pixels(image);
    if (pixels->isEmpty())
        return;
    for (int32_t y = 0; y < pixels->height; ++y) {
        uint32_t* row = pixels->getRow(y);
        std::for_each(row, row + pixels->width, change);
    }
}

template <typename Change>
void forEachPixel(GraphicsImage& image, Change change) {
    forEachWord(image, [&change](uint32_t& word) {
        Pixel pixel = fromPremultiplied(word);
        change(pixel);
        word = toPremultiplied(pixel);
    });
}

uint32_t mix(uint32_t from, uint32_t to, float share) {
    return static_cast<uint32_t>(
        std::lround(static_cast<float>(from) + (static_cast<float>(to) - static_cast<float>(from)) * share));
}

/// Lightness to lightness, both from 0 to 1.
std::array<double, 256> luminanceCurve(double luminance) {
    const double base = std::clamp(std::abs(luminance) / 100.0, 0.0, 1.0) * 0.5 + 1;
    const double exponent = luminance < 0 ? 1 / (base * base) : base * base;
    std::array<double, 256> curve;
    for (size_t i = 0; i < curve.size(); ++i) {
        const double t = static_cast<double>(i) / 255;
        const double a = luminance < 0 ? (1 - t) * 0.9 + 0.1 : 1 - t;
        curve[i] = a - std::pow(a, exponent) + t;
    }
    return curve;
}

} // namespace

void desaturate(GraphicsImage& image, float gray, float alpha) {
    gray = std::clamp(gray, 0.0f, 1.0f);
    alpha = std::clamp(alpha, 0.0f, 1.0f);
    forEachPixel(image, [=](Pixel& p) {
        const uint32_t luma = (p.red * 299 + p.green * 587 + p.blue * 114 + 500) / 1000;
        p.red = mix(p.red, luma, gray);
        p.green = mix(p.green, luma, gray);
        p.blue = mix(p.blue, luma, gray);
        p.alpha = mix(0, p.alpha, alpha);
    });
}

void fillKeepingAlpha(GraphicsImage& image, const UColor& color) {
    forEachPixel(image, [&](Pixel& p) { p = {color.red(), color.green(), color.blue(), p.alpha}; });
}

void multiply(GraphicsImage& image, const UColor& color) {
    forEachPixel(image, [&](Pixel& p) {
        p.red = (p.red * color.red() + 127) / 255;
        p.green = (p.green * color.green() + 127) / 255;
        p.blue = (p.blue * color.blue() + 127) / 255;
    });
}

void tint(GraphicsImage& image, const UColor& color, float factor) {
    factor = std::clamp(factor, 0.0f, 1.0f);
    forEachPixel(image, [&](Pixel& p) {
        p.red = mix(p.red, color.red(), factor);
        p.green = mix(p.green, color.green(), factor);
        p.blue = mix(p.blue, color.blue(), factor);
    });
}

void adjustHsl(GraphicsImage& image, double hue, double saturation, double luminance) {
    const double multiplier = std::clamp(saturation / 100.0, -1.0, 1.0) + 1;
    const auto curve = luminanceCurve(luminance);
    forEachPixel(image, [&](Pixel& p) {
        auto hsl = UColor::fromBytes(static_cast<uint8_t>(p.red), static_cast<uint8_t>(p.green),
                                     static_cast<uint8_t>(p.blue))
                       .toHsl();
        hsl.hue += hue;
        hsl.saturation *= multiplier;
        const auto index = static_cast<size_t>(std::lround(std::clamp(hsl.lightness, 0.0, 100.0) * 2.55));
        hsl.lightness = curve[index] * 100;
        const UColor changed = UColor::fromHsl(hsl);
        p.red = changed.red();
        p.green = changed.green();
        p.blue = changed.blue();
    });
}

void replaceColor(GraphicsImage& image, const UColor& from, const UColor& to) {
    // As the pixels are held: what was multiplied doesn't come back exactly.
    const uint32_t wanted = toPremultiplied(from);
    const uint32_t replacement = toPremultiplied(to);
    forEachWord(image, [=](uint32_t& word) {
        if (word == wanted)
            word = replacement;
    });
}

void applyMask(GraphicsImage& image, GraphicsImage& mask) {
    const PixelLock pixels(image);
    const PixelLock shares(mask, PixelAccess::read);
    for (int32_t y = 0; !pixels->isEmpty() && y < pixels->height; ++y) {
        uint32_t* row = pixels->getRow(y);
        const uint32_t* shareRow = y < shares->height && !shares->isEmpty() ? shares->getRow(y) : nullptr;
        for (int32_t x = 0; x < pixels->width; ++x) {
            // Premultiplied: what is transparent in the mask is dark.
            const uint32_t share = shareRow && x < shares->width ? lumaOf(shareRow[x]) : 0;
            Pixel pixel = fromPremultiplied(row[x]);
            pixel.alpha = (pixel.alpha * share + 127) / 255;
            row[x] = toPremultiplied(pixel);
        }
    }
}

UColor meanColor(GraphicsImage& image) {
    const PixelLock pixels(image, PixelAccess::read);
    if (pixels->isEmpty())
        return {};
    uint64_t red = 0;
    uint64_t green = 0;
    uint64_t blue = 0;
    uint64_t alpha = 0;
    for (int32_t y = 0; y < pixels->height; ++y) {
        const uint32_t* row = pixels->getRow(y);
        for (int32_t x = 0; x < pixels->width; ++x) {
            alpha += row[x] >> 24;
            red += row[x] >> 16 & 0xFF;
            green += row[x] >> 8 & 0xFF;
            blue += row[x] & 0xFF;
        }
    }
    if (alpha == 0)
        return {};
    const auto count = static_cast<uint64_t>(pixels->width) * static_cast<uint64_t>(pixels->height);
    const auto straight = [alpha](uint64_t sum) {
        return static_cast<uint8_t>(std::min<uint64_t>(255, (sum * 255 + alpha / 2) / alpha));
    };
    return UColor::fromBytes(straight(red), straight(green), straight(blue),
                             static_cast<uint8_t>((alpha + count / 2) / count));
}

} // namespace qorl::PixelFilters
