#include "graphics/UFont.h"

#include "foundation/Cast.h"
#include "foundation/text/CmString.h"
#include "graphics/GraphicsFactory.h"

#include <algorithm>
#include <cmath>

namespace qorl {

QORL_REGISTER(UFont, "UFont", CmObject, 0)

namespace {

int32_t roundUp(double length) {
    return static_cast<int32_t>(std::ceil(std::min(length, double{INT32_MAX})));
}

int32_t estimatedWidth(const ConstString& text, int32_t size) {
    const auto characters = text.isWide() ? text.view16().size() : text.toUtf16().size();
    return saturated(static_cast<int64_t>(characters) * size);
}

} // namespace

UFont::UFont(int32_t size, uint32_t style, std::string_view face, const UColor& color)
    : size_(size), style_(style), color_(color) {
    setFaceName(face);
}

UFont::UFont(const UFont&) = default;
UFont& UFont::operator=(const UFont&) = default;
UFont::~UFont() = default;

void UFont::setSize(int32_t points) {
    if (points == size_)
        return;
    size_ = points;
    forgetFace();
}

void UFont::setStyle(uint32_t flags) {
    if (flags == style_)
        return;
    style_ = flags;
    forgetFace();
}

std::string_view UFont::getFaceName() const {
    return faceName_ ? faceName_->string().view8() : std::string_view();
}

void UFont::setFaceName(std::string_view face) {
    if (face == getFaceName())
        return;
    faceName_ = face.empty() ? Ref<CmString>() : make<CmString>(ConstString(face));
    forgetFace();
}

void UFont::forgetFace() {
    backEndFont_.reset();
}

GraphicsFont* UFont::getFace() const {
    if (backEndFont_ && factoryGeneration_ == graphicsGeneration())
        return backEndFont_.get();
    backEndFont_.reset();
    GraphicsFactory* factory = getGraphicsFactory();
    FontCollection* fonts = factory && size_ > 0 ? factory->getFontCollection() : nullptr;
    if (!fonts)
        return nullptr;
    backEndFont_ = fonts->findFont({getFaceName(), size_ * pixelsPerPoint, style_});
    factoryGeneration_ = graphicsGeneration();
    return backEndFont_.get();
}

int32_t UFont::getStringWidth(const ConstString& text) const {
    if (GraphicsFont* face = getFace())
        return roundUp(face->measureWidth(text));
    return estimatedWidth(text, size_);
}

TextMetrics UFont::getMetrics() const {
    GraphicsFont* face = getFace();
    if (!face)
        return {};
    const FontMetrics& metrics = face->getMetrics();
    return {roundUp(metrics.ascent), roundUp(metrics.descent), roundUp(metrics.lineHeight())};
}

CmSize UFont::getStringExtent(const ConstString& text) const {
    GraphicsFont* face = getFace();
    if (!face)
        return {estimatedWidth(text, size_), TextMetrics().lineHeight};
    const Geometry::Rect extent = face->measureExtent(text);
    return {roundUp(extent.width), roundUp(extent.height)};
}

bool UFont::isSame(const UFont& other) const noexcept {
    return size_ == other.size_ && style_ == other.style_ && family_ == other.family_ &&
           color_ == other.color_ && (faceName_ == other.faceName_ || getFaceName() == other.getFaceName());
}

bool UFont::isEqual(const CmObject* other) const {
    const auto* font = cast<UFont>(other);
    return font && *this == *font;
}

uint32_t UFont::hashCode(uint32_t size) const {
    uint32_t hash = static_cast<uint32_t>(size_) * 31 + style_;
    for (const char c : getFaceName())
        hash = hash * 31 + static_cast<uint8_t>(c);
    return hash % size;
}

} // namespace qorl
