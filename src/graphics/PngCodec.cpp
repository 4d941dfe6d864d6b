#include "graphics/PngCodec.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <new>
#include <png.h>

namespace qorl {

namespace {

static_assert(std::endian::native == std::endian::little,
              "PNG_FORMAT_BGRA is the order of our words only here");

constexpr std::array<uint8_t, 8> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

uint32_t wordAt(std::span<const std::byte> file, size_t place) {
    uint32_t word = 0;
    for (const std::byte byte : file.subspan(place, 4))
        word = word << 8 | std::to_integer<uint32_t>(byte);
    return word;
}

/// The fields of the IHDR chunk, which stands first in every file.
struct Header {
    static constexpr size_t end = 8 + 8 + 13 + 4;

    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t bitDepth = 0;
    uint32_t colorType = 0;

    static Header read(std::span<const std::byte> file) {
        const auto byteAt = [&](size_t place) { return std::to_integer<uint32_t>(file[place]); };
        return {wordAt(file, 16), wordAt(file, 20), byteAt(24), byteAt(25)};
    }

    /// Bytes that the image data must unpack to at least.
    uint64_t unpackedSize() const {
        const uint32_t channels = colorType == 2 ? 3 : colorType == 4 ? 2 : colorType == 6 ? 4 : 1;
        const uint64_t rowBits = uint64_t{width} * channels * std::min(bitDepth, 16u);
        return uint64_t{height} * ((rowBits + 7) / 8);
    }
};

/// Whether each chunk ends within the file: libpng makes room for what one says to hold before it looks.
bool holdsItsChunks(std::span<const std::byte> file) {
    constexpr size_t frame = 12;
    for (size_t place = signature.size(); place + frame <= file.size();) {
        const size_t length = wordAt(file, place);
        if (length > file.size() - place - frame)
            return false;
        place += frame + length;
    }
    return true;
}

/// Deflate (RFC 1951) packs at best 258 bytes into 2 bits.
constexpr uint64_t bestDeflateRatio = 1032;

std::string checkHeader(const Header& header, size_t fileSize) {
    const std::string size = std::to_string(header.width) + " x " + std::to_string(header.height) + " pixels";
    if (header.width == 0 || header.height == 0)
        return "the PNG says that it has " + size;
    const uint64_t pixels = uint64_t{header.width} * header.height;
    const uint32_t side = std::max(header.width, header.height);
    if (side > BitmapFactory::maximumSide || pixels > BitmapFactory::maximumPixels)
        return "the PNG says that it has " + size + "; at most " +
               std::to_string(BitmapFactory::maximumSide) + " a side and " +
               std::to_string(BitmapFactory::maximumPixels) + " in all are allowed";
    if (header.unpackedSize() / bestDeflateRatio > fileSize)
        return "the PNG says that it has " + size + ", which its " + std::to_string(fileSize) +
               " bytes cannot hold";
    return {};
}

/// Frees what libpng keeps for an image, on every way out.
struct PngImage : png_image {
    PngImage() {
        std::memset(static_cast<png_image*>(this), 0, sizeof(png_image));
        version = PNG_IMAGE_VERSION;
    }
    ~PngImage() { png_image_free(this); }
    PngImage(const PngImage&) = delete;
    PngImage& operator=(const PngImage&) = delete;
};

uint32_t premultiplied(uint32_t word) {
    const uint32_t alpha = word >> 24;
    if (alpha == 255)
        return word;
    // Exact division by 255 of both halves at once.
    uint32_t redBlue = (word & 0x00FF00FF) * alpha + 0x00800080;
    redBlue = (redBlue + (redBlue >> 8 & 0x00FF00FF)) >> 8 & 0x00FF00FF;
    uint32_t green = (word >> 8 & 0xFF) * alpha + 0x80;
    green = (green + (green >> 8)) >> 8 & 0xFF;
    return alpha << 24 | redBlue | green << 8;
}

uint32_t straight(uint32_t word) {
    const uint32_t alpha = word >> 24;
    if (alpha == 255)
        return word;
    if (alpha == 0)
        return 0;
    const auto channel = [&](int shift) {
        return std::min(255u, ((word >> shift & 0xFF) * 255 + alpha / 2) / alpha) << shift;
    };
    return alpha << 24 | channel(16) | channel(8) | channel(0);
}

} // namespace

bool PngCodec::recognises(std::span<const std::byte> head) const {
    return head.size() >= signature.size() &&
           std::memcmp(head.data(), signature.data(), signature.size()) == 0;
}

Ref<GraphicsImage> PngCodec::decode(std::span<const std::byte> file, std::string& error) {
    if (!recognises(file) || file.size() < Header::end) {
        error = "the PNG ends within its header";
        return nullptr;
    }
    const Header header = Header::read(file);
    error = checkHeader(header, file.size());
    if (!error.empty())
        return nullptr;

    if (!holdsItsChunks(file)) {
        error = "the PNG is broken: it ends within a chunk";
        return nullptr;
    }
    PngImage png;
    if (!png_image_begin_read_from_memory(&png, file.data(), file.size())) {
        error = std::string("the PNG is broken: ") + png.message;
        return nullptr;
    }
    png.format = PNG_FORMAT_BGRA;
    // Without a word on its colours, a file of 16 bits means what one of 8 bits would.
    png.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
    const CmSize size{static_cast<int32_t>(png.width), static_cast<int32_t>(png.height)};
    Ref<GraphicsImage> image = createGraphicsImage(size);
    if (!image) {
        error = "there is no memory for " + std::to_string(size.width) + " x " + std::to_string(size.height) +
                " pixels";
        return nullptr;
    }
    const PixelLock pixels(*image);
    if (!png_image_finish_read(&png, nullptr, pixels->pixels, pixels->stride, nullptr)) {
        error = std::string("the PNG is broken: ") + png.message;
        return nullptr;
    }
    for (int32_t y = 0; y < pixels->height; ++y) {
        uint32_t* row = pixels->getRow(y);
        std::transform(row, row + pixels->width, row, premultiplied);
    }
    return image;
}

bool PngCodec::encode(GraphicsImage& image, std::vector<std::byte>& out) try {
    const PixelLock pixels(image, PixelAccess::read);
    if (pixels->isEmpty())
        return false;
    std::vector<uint32_t> rows;
    rows.reserve(static_cast<size_t>(pixels->width) * static_cast<size_t>(pixels->height));
    for (int32_t y = 0; y < pixels->height; ++y) {
        const uint32_t* row = pixels->getRow(y);
        std::transform(row, row + pixels->width, std::back_inserter(rows), straight);
    }
    PngImage png;
    png.width = static_cast<png_uint_32>(pixels->width);
    png.height = static_cast<png_uint_32>(pixels->height);
    png.format = PNG_FORMAT_BGRA;
    const size_t start = out.size();
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(png);
    out.resize(start + size);
    const bool written =
        png_image_write_to_memory(&png, out.data() + start, &size, 0, rows.data(), 0, nullptr) != 0;
    out.resize(written ? start + size : start);
    return written;
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace qorl
