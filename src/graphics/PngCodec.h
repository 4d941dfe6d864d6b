#pragma once

#include "graphics/GraphicsFactory.h"

namespace qorl {

/// PNG files (ISO/IEC 15948), 8 bits a channel, in and out. Broken and lying files are refused with the
/// reason.
class PngCodec final : public ImageCodec {
    QORL_CLASS(PngCodec, ImageCodec)

public:
    std::string_view extensions() const override { return "png"; }
    bool recognises(std::span<const std::byte> head) const override;
    Ref<GraphicsImage> decode(std::span<const std::byte> file, std::string& error) override;
    bool encode(GraphicsImage& image, std::vector<std::byte>& out) override;
};

} // namespace qorl
