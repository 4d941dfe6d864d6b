#pragma once

#include "graphics/GraphicsImage.h"
#include "graphics/cairo/CairoHandle.h"

#include <memory>
#include <vector>

namespace qorl {

/// An image surface of Cairo, or a part of one.
class CairoImage final : public GraphicsImage {
    QORL_CLASS(CairoImage, GraphicsImage)

public:
    /// Null when the size is not allowed or there is no memory.
    static Ref<CairoImage> create(CmSize size);
    /// Null when `memory` is empty or its rows are not aligned for Cairo.
    static Ref<CairoImage> wrap(const platform::PixelSurface& memory);

    int32_t getWidth() const override { return size_.width; }
    int32_t getHeight() const override { return size_.height; }
    platform::PixelSurface lockPixels() override;
    void unlockPixels(PixelAccess access) override;
    Ref<GraphicsImage> createSection(const CmRect& rect) override;
    Ref<GraphicsImage> createScaled(CmSize size, Interpolation kind) override;

    cairo_surface_t* surface() const { return surface_.get(); }
    /// The pixels are about to change: scaled copies of them, and of what shares them, are out of date.
    void contentsChange() { ++*generation_; }

    /// A part, stretched: made once and kept until the pixels change, or until all images together keep more
    /// than `mostKeptPixels` and this one has not got a copy for the longest time, or is the last. `part`
    /// lies inside. Null without memory. Any thread.
    CairoHandle<cairo_surface_t> stretched(const CmRect& part, CmSize size, Interpolation kind);

    static constexpr int64_t mostKeptPixels = 16 * 1024 * 1024;
    /// What all images keep stretched now.
    static int64_t keptPixels();

    ~CairoImage() override;

private:
    /// The images that keep something, the one that got a copy last in front.
    struct Keepers;

    struct Stretched {
        CmRect part;
        CmSize size;
        Interpolation kind;
        uint64_t generation;
        CairoHandle<cairo_surface_t> surface;
    };

    static constexpr size_t mostStretched = 16;

    CairoImage(CairoHandle<cairo_surface_t> surface, Ref<CairoImage> parent);

    Ref<CairoImage> stretch(const CmRect& part, CmSize size, Interpolation kind);
    /// Null when there is none. With the lock of the keepers held, as the next one.
    CairoHandle<cairo_surface_t> findStretched(const CmRect& part, CmSize size, Interpolation kind);
    void keepStretched(Stretched copy);

    Ref<CairoImage> parent_; ///< Whose pixels these are, when they are not our own.
    CairoHandle<cairo_surface_t> surface_;
    CmSize size_;
    std::shared_ptr<uint64_t> generation_;
    std::vector<Stretched> stretched_;
    int64_t keptPixels_ = 0;
    CairoImage* earlier_ = nullptr; ///< Among the keepers.
    CairoImage* later_ = nullptr;

    static Keepers keepers_;
};

} // namespace qorl
