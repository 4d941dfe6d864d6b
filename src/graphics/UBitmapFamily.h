#pragma once

#include "graphics/UBitmap.h"

#include <string>
#include <string_view>
#include <vector>

namespace qorl {

/// A bitmap that stands in front of another one.
class UDelegatedBitmap : public UBitmap {
    QORL_CLASS(UDelegatedBitmap, UBitmap)

public:
    explicit UDelegatedBitmap(Ref<UBitmap> delegate);

    UBitmap* getDelegate() const { return delegate_.get(); }

    UBitmap* getRootBitmap() override;
    Ref<UBitmap> createSection(const CmRect& rect) override;
    GraphicsImage* getBackendImage() override;
    int32_t getWidth() override;
    int32_t getHeight() override;
    Ref<GraphicsImage> getPixels(const CmRect& rect) override;
    void draw(UDrawDevice& device, const CmRect& source, const CmRect& destination, double alpha,
              Interpolation interpolation) override;
    void drawTiled(UDrawDevice& device, const CmRect& source, const CmRect& destination, CmSize tile,
                   double alpha, Interpolation interpolation) override;
    bool blit(GraphicsBitmap& from, const CmRect& source, CmPoint destination) override;

protected:
    Ref<UBitmap> delegate_;
};

/// A bitmap as a skin declares it, with the group of colours that it belongs to.
class USkinBitmap : public UDelegatedBitmap {
    QORL_CLASS(USkinBitmap, UDelegatedBitmap)

public:
    USkinBitmap(Ref<UBitmap> bitmap, uint32_t group) : UDelegatedBitmap(std::move(bitmap)), group_(group) {}

    /// The bits of the group, as on colours of a scheme.
    uint32_t getGroup() const { return group_; }

private:
    uint32_t group_;
};

/// A view into a part of another bitmap's pixels.
class UBitmapSection : public UDelegatedBitmap {
    QORL_CLASS(UBitmapSection, UDelegatedBitmap)

public:
    /// `rect` in logical pixels of `delegate`, inside of it.
    UBitmapSection(Ref<UBitmap> delegate, const CmRect& rect);

    /// The place in the delegate.
    CmPoint getOffset() const { return offset_; }

    Ref<UBitmap> createSection(const CmRect& rect) override;
    GraphicsImage* getBackendImage() override { return image_.get(); }
    int32_t getWidth() override { return size_.width; }
    int32_t getHeight() override { return size_.height; }
    Ref<GraphicsImage> getPixels(const CmRect& rect) override;
    void draw(UDrawDevice& device, const CmRect& source, const CmRect& destination, double alpha,
              Interpolation interpolation) override;
    void drawTiled(UDrawDevice& device, const CmRect& source, const CmRect& destination, CmSize tile,
                   double alpha, Interpolation interpolation) override;
    bool blit(GraphicsBitmap& from, const CmRect& source, CmPoint destination) override;

private:
    CmPoint offset_;
};

/// Frames of equal size side by side, or one below the other, in one bitmap.
class UFilmStrip : public UBitmap {
    QORL_CLASS(UFilmStrip, UBitmap)

public:
    enum class FrameAlign : int32_t { vertical = 0, horizontal = 1 };

    /// Shares the pixels of `bitmap`. A count below 1 is taken as 1.
    UFilmStrip(const Ref<UBitmap>& bitmap, int32_t frameCount, FrameAlign align);

    int32_t getFrameCount() const { return frameCount_; }
    int32_t getDefaultFrame() const { return defaultFrame_; }
    void setDefaultFrame(int32_t frame) { defaultFrame_ = frame; }
    /// Milliseconds from frame to frame of an animation.
    int32_t getInterval() const { return interval_; }
    void setInterval(int32_t interval) { interval_ = interval; }

    CmSize getFrameSize();
    /// In logical pixels of this bitmap; `index` is brought into range.
    CmRect getFrameRect(int32_t index);
    /// Null without an image.
    Ref<UBitmap> getFrame(int32_t index);

private:
    int32_t frameCount_;
    FrameAlign align_;
    int32_t defaultFrame_ = 0;
    int32_t interval_ = 0;
};

/// A bitmap that scales in nine parts: its centre is stretched or repeated, its edges keep their width.
class UDynamicBitmap : public UDelegatedBitmap {
    QORL_CLASS(UDynamicBitmap, UDelegatedBitmap)

public:
    enum Style : int32_t { stretch = 0, horizontalRepeat = 1, verticalRepeat = 2 };

    /// `center` in logical pixels of the bitmap.
    UDynamicBitmap(Ref<UBitmap> bitmap, const CmRect& center, int32_t style);

    const CmRect& getCenter() const { return center_; }
    int32_t getStyle() const { return style_; }

    /// `source` is taken as the whole bitmap.
    void draw(UDrawDevice& device, const CmRect& source, const CmRect& destination, double alpha,
              Interpolation interpolation) override;

private:
    CmRect center_;
    int32_t style_;
};

/// Named bitmaps.
class UBitmapCollection : public CmObject {
    QORL_CLASS(UBitmapCollection, CmObject)

public:
    virtual int32_t count() const;
    /// Keeps a reference. A name that is there already gives its first bitmap when asked for.
    virtual void add(UBitmap* bitmap, std::string_view name);
    /// Null when there is none. Not counted for the caller.
    virtual UBitmap* get(int32_t index) const;
    virtual UBitmap* getByName(std::string_view name) const;
    /// Empty out of range.
    virtual std::string_view getName(int32_t index) const;
    /// -1 when it isn't there.
    virtual int32_t indexOf(const UBitmap* bitmap) const;
    virtual void remove(UBitmap* bitmap);

private:
    struct Entry {
        Ref<UBitmap> bitmap;
        std::string name;
    };

    std::vector<Entry> entries_;
};

} // namespace qorl
