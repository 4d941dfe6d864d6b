#include "graphics/UBitmapFamily.h"

#include "graphics/UDrawDevice.h"

#include <algorithm>

namespace qorl {

UDelegatedBitmap::UDelegatedBitmap(Ref<UBitmap> delegate) : delegate_(std::move(delegate)) {
    if (delegate_)
        scale_ = delegate_->getScale();
}

UBitmap* UDelegatedBitmap::getRootBitmap() {
    return delegate_ ? delegate_->getRootBitmap() : this;
}

Ref<UBitmap> UDelegatedBitmap::createSection(const CmRect& rect) {
    return delegate_ ? delegate_->createSection(rect) : nullptr;
}

GraphicsImage* UDelegatedBitmap::getBackendImage() {
    return delegate_ ? delegate_->getBackendImage() : nullptr;
}

int32_t UDelegatedBitmap::getWidth() {
    return delegate_ ? delegate_->getWidth() : 0;
}

int32_t UDelegatedBitmap::getHeight() {
    return delegate_ ? delegate_->getHeight() : 0;
}

Ref<GraphicsImage> UDelegatedBitmap::getPixels(const CmRect& rect) {
    return delegate_ ? delegate_->getPixels(rect) : nullptr;
}

void UDelegatedBitmap::draw(UDrawDevice& device, const CmRect& source, const CmRect& destination,
                            double alpha, Interpolation interpolation) {
    if (delegate_)
        delegate_->draw(device, source, destination, alpha, interpolation);
}

void UDelegatedBitmap::drawTiled(UDrawDevice& device, const CmRect& source, const CmRect& destination,
                                 CmSize tile, double alpha, Interpolation interpolation) {
    if (delegate_)
        delegate_->drawTiled(device, source, destination, tile, alpha, interpolation);
}

bool UDelegatedBitmap::blit(GraphicsBitmap& from, const CmRect& source, CmPoint destination) {
    return delegate_ && delegate_->blit(from, source, destination);
}

UBitmapSection::UBitmapSection(Ref<UBitmap> delegate, const CmRect& rect)
    : UDelegatedBitmap(std::move(delegate)), offset_(rect.origin()) {
    if (delegate_)
        image_ = delegate_->getPixels(rect);
    if (image_)
        size_ = rect.size();
}

Ref<UBitmap> UBitmapSection::createSection(const CmRect& rect) {
    if (!delegate_ || !CmRect::ofSize({}, size_).contains(rect))
        return nullptr;
    return delegate_->createSection(rect.moved(offset_));
}

Ref<GraphicsImage> UBitmapSection::getPixels(const CmRect& rect) {
    return UBitmap::getPixels(rect);
}

void UBitmapSection::draw(UDrawDevice& device, const CmRect& source, const CmRect& destination, double alpha,
                          Interpolation interpolation) {
    UBitmap::draw(device, source, destination, alpha, interpolation);
}

void UBitmapSection::drawTiled(UDrawDevice& device, const CmRect& source, const CmRect& destination,
                               CmSize tile, double alpha, Interpolation interpolation) {
    UBitmap::drawTiled(device, source, destination, tile, alpha, interpolation);
}

bool UBitmapSection::blit(GraphicsBitmap& from, const CmRect& source, CmPoint destination) {
    return UBitmap::blit(from, source, destination);
}

UFilmStrip::UFilmStrip(const Ref<UBitmap>& bitmap, int32_t frameCount, FrameAlign align)
    : UBitmap(bitmap ? retain(bitmap->getBackendImage()) : nullptr, bitmap ? bitmap->getScale() : 1.0),
      frameCount_(std::max(frameCount, 1)), align_(align) {}

CmSize UFilmStrip::getFrameSize() {
    const CmSize whole = getSize();
    return align_ == FrameAlign::vertical ? CmSize{whole.width, whole.height / frameCount_}
                                          : CmSize{whole.width / frameCount_, whole.height};
}

CmRect UFilmStrip::getFrameRect(int32_t index) {
    index = std::clamp(index, 0, frameCount_ - 1);
    const CmSize frame = getFrameSize();
    return align_ == FrameAlign::vertical ? CmRect::ofSize({0, index * frame.height}, frame)
                                          : CmRect::ofSize({index * frame.width, 0}, frame);
}

Ref<UBitmap> UFilmStrip::getFrame(int32_t index) {
    return createSection(getFrameRect(index));
}

UDynamicBitmap::UDynamicBitmap(Ref<UBitmap> bitmap, const CmRect& center, int32_t style)
    : UDelegatedBitmap(std::move(bitmap)), style_(style) {
    // Edge by edge: a centre without width still parts the corners.
    const CmSize size = getSize();
    center_.left = std::clamp(center.left, 0, size.width);
    center_.top = std::clamp(center.top, 0, size.height);
    center_.right = std::clamp(center.right, center_.left, size.width);
    center_.bottom = std::clamp(center.bottom, center_.top, size.height);
}

namespace {

/// Where the four edges of the three stripes stand along one axis.
struct Stripes {
    int32_t edges[4];

    /// `low` and `high` keep their width; where the room is too small for both they share it.
    static Stripes over(int32_t start, int32_t end, int32_t low, int32_t high) {
        const int64_t room = int64_t{end} - start;
        if (low + high > room) {
            low = static_cast<int32_t>(room * low / (low + high));
            high = static_cast<int32_t>(room) - low;
        }
        return {{start, start + low, end - high, end}};
    }
};

} // namespace

void UDynamicBitmap::draw(UDrawDevice& device, const CmRect&, const CmRect& destination, double alpha,
                          Interpolation interpolation) {
    if (!delegate_ || destination.isEmpty())
        return;
    const CmSize size = getSize();
    const Stripes fromX{{0, center_.left, center_.right, size.width}};
    const Stripes fromY{{0, center_.top, center_.bottom, size.height}};
    const Stripes toX =
        Stripes::over(destination.left, destination.right, center_.left, size.width - center_.right);
    const Stripes toY =
        Stripes::over(destination.top, destination.bottom, center_.top, size.height - center_.bottom);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            const CmRect from{fromX.edges[column], fromY.edges[row], fromX.edges[column + 1],
                              fromY.edges[row + 1]};
            const CmRect to{toX.edges[column], toY.edges[row], toX.edges[column + 1], toY.edges[row + 1]};
            if (from.isEmpty() || to.isEmpty())
                continue;
            const bool tilesX = column == 1 && (style_ & horizontalRepeat);
            const bool tilesY = row == 1 && (style_ & verticalRepeat);
            const CmSize tile{tilesX ? from.width() : to.width(), tilesY ? from.height() : to.height()};
            if (tilesX || tilesY)
                delegate_->drawTiled(device, from, to, tile, alpha, interpolation);
            else
                delegate_->draw(device, from, to, alpha, interpolation);
        }
    }
}

int32_t UBitmapCollection::count() const {
    return static_cast<int32_t>(entries_.size());
}

void UBitmapCollection::add(UBitmap* bitmap, std::string_view name) {
    if (bitmap)
        entries_.push_back({retain(bitmap), std::string(name)});
}

UBitmap* UBitmapCollection::get(int32_t index) const {
    return index >= 0 && index < count() ? entries_[static_cast<size_t>(index)].bitmap.get() : nullptr;
}

UBitmap* UBitmapCollection::getByName(std::string_view name) const {
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [name](const Entry& entry) { return entry.name == name; });
    return found == entries_.end() ? nullptr : found->bitmap.get();
}

std::string_view UBitmapCollection::getName(int32_t index) const {
    return index >= 0 && index < count() ? std::string_view(entries_[static_cast<size_t>(index)].name)
                                         : std::string_view();
}

int32_t UBitmapCollection::indexOf(const UBitmap* bitmap) const {
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [bitmap](const Entry& entry) { return entry.bitmap == bitmap; });
    return found == entries_.end() ? -1 : static_cast<int32_t>(found - entries_.begin());
}

void UBitmapCollection::remove(UBitmap* bitmap) {
    const int32_t index = indexOf(bitmap);
    if (index >= 0)
        entries_.erase(entries_.begin() + index);
}

} // namespace qorl
