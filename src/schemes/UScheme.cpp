#include "schemes/UScheme.h"

#include "schemes/FontFaces.h"
#include "schemes/SchemeTables.h"

#include <algorithm>

namespace qorl {

namespace {

const char* nameAt(std::string_view name) {
    return name.data(); // the tables hold literals
}

} // namespace

UScheme::UScheme() : namedColors_(startBuckets) {
    namedColors_.max_load_factor(1.0f);
    for (size_t i = 0; i < metrics_.size(); ++i)
        metrics_[i] = schemeMetricTable[i].value;
}

UScheme::UScheme(const UScheme& other)
    : CmObject(other), pens_(other.pens_), brushes_(other.brushes_), colorGroups_(other.colorGroups_),
      fonts_(other.fonts_), metrics_(other.metrics_), isSkinned_(other.isSkinned_) {
    for (const auto& [name, entry] : other.namedColors_)
        namedColors_.emplace(name, make<USkinColorEntry>(*entry));
}

int32_t UScheme::colorIndex(std::string_view name) {
    return findSchemeColor(name);
}

int32_t UScheme::metricIndex(std::string_view name) {
    return findSchemeMetric(name);
}

int32_t UScheme::fontIndex(std::string_view name) {
    return findSchemeFont(name);
}

const char* UScheme::colorName(int32_t index) {
    return index >= 0 && index < SchemeColor::count ? nameAt(schemeColorTable[index].name) : nullptr;
}

const char* UScheme::metricName(int32_t index) {
    return index >= 0 && index < SchemeMetric::count ? nameAt(schemeMetricTable[index].name) : nullptr;
}

const char* UScheme::fontName(int32_t index) {
    return index >= 0 && index < SchemeFont::count ? nameAt(schemeFontTable[index].name) : nullptr;
}

CmObject* UScheme::clone() const {
    return new UScheme(*this);
}

bool UScheme::findNamedColor(std::string_view name, UColor& color) const {
    const USkinColorEntry* entry = findNamedEntry(name);
    if (entry)
        color = entry->getColor();
    return entry != nullptr;
}

const UColor& UScheme::getColor(int32_t index) const {
    return pens_[static_cast<size_t>(index)].getColor();
}

const UBrush& UScheme::getBrush(int32_t index) const {
    return brushes_[static_cast<size_t>(index)];
}

const UPen& UScheme::getPen(int32_t index) const {
    return pens_[static_cast<size_t>(index)];
}

const UFont& UScheme::getFont(int32_t index) const {
    return fonts_[static_cast<size_t>(index)];
}

UControl* UScheme::createControl(int32_t kind, const CmRect& rect, int32_t style, Binding::Value* value,
                                 const ConstString& title) {
    const ControlMaker maker = ControlTable::find(ControlLook::drawn, kind);
    return maker ? maker(rect, style, value, title) : nullptr;
}

int32_t UScheme::getMetric(int32_t index) const {
    return metrics_[static_cast<size_t>(index)];
}

void UScheme::setMetric(int32_t index, int32_t value) {
    metrics_[static_cast<size_t>(index)] = value;
}

void UScheme::resetColors() {
    for (int32_t i = 0; i < SchemeColor::count; ++i) {
        const SchemeColorRow& row = schemeColorTable[i];
        const bool isStandard = row.source == DesktopColor::standard;
        setColor(i, isStandard ? UColor(row.standard) : desktopColor(row.source), getColorGroup(i));
    }
}

void UScheme::resetFonts() {
    for (int32_t i = 0; i < SchemeFont::count; ++i)
        setFont(i, UFont(schemeFontTable[i].size, schemeFontTable[i].style));
}

void UScheme::resetMetrics() {
    for (int32_t i = 0; i < SchemeMetric::count; ++i)
        metrics_[static_cast<size_t>(i)] = schemeMetricTable[i].value;
}

bool UScheme::getColorOr(std::string_view name, int32_t index, UColor& color) const {
    if (findNamedColor(name, color))
        return true;
    color = getColor(index);
    return false;
}

bool UScheme::getNamedColorOr(std::string_view name, int32_t standardIndex, UColor& color) const {
    if (findNamedColor(name, color))
        return true;
    color = UColor::fromIndex(standardIndex);
    return false;
}

bool UScheme::getNamedColorOrPacked(std::string_view name, uint32_t packed, UColor& color) const {
    if (findNamedColor(name, color))
        return true;
    color = UColor::fromPacked(packed);
    return false;
}

void UScheme::setColor(int32_t index, const UColor& color, uint32_t group) {
    const auto i = static_cast<size_t>(index);
    pens_[i].setColor(color);
    brushes_[i].setColor(color);
    colorGroups_[i] = group;
}

void UScheme::setNamedColor(std::string_view name, const UColor& color, uint32_t group) {
    const auto found = namedColors_.find(name);
    if (found != namedColors_.end())
        found->second->set(color, group);
    else
        namedColors_.emplace(name, make<USkinColorEntry>(name, color, group));
}

const USkinColorEntry* UScheme::findNamedEntry(std::string_view name) const {
    const auto found = namedColors_.find(name);
    return found == namedColors_.end() ? nullptr : found->second.get();
}

void UScheme::applyScheme(std::span<const SchemeEntry> section) {
    isSkinned_ = true;
    for (const SchemeEntry& entry : section) {
        switch (entry.kind) {
        case SchemeEntry::Kind::color:
            if (const int32_t key = colorIndex(entry.name); key >= 0)
                setColor(key, entry.color, entry.group);
            else
                setNamedColor(entry.name, entry.color, entry.group);
            break;
        case SchemeEntry::Kind::metric:
            if (const int32_t key = metricIndex(entry.name); key >= 0)
                setMetric(key, entry.metric);
            break;
        case SchemeEntry::Kind::font: applyFont(entry); break;
        }
    }
}

void UScheme::applyFont(const SchemeEntry& entry) {
    const int32_t key = fontIndex(entry.name);
    std::string_view face;
    if (key < 0 || !findFontFace(entry.faces, face))
        return;
    const UColor color = entry.fontColor ? *entry.fontColor : fonts_[static_cast<size_t>(key)].getColor();
    setFont(key,
            UFont(entry.fontSize > 0 ? entry.fontSize : UFont::defaultSize, entry.fontStyle, face, color));
}

void UScheme::reset() {
    // First, so that a lack of memory changes nothing.
    namedColors_ = NamedColors(startBuckets);
    isSkinned_ = false;
    colorGroups_ = {};
    resetColors();
    resetMetrics();
    resetFonts();
}

void UScheme::exportColors(SchemeWriter& writer, SchemeSection section) const {
    if (section == SchemeSection::own)
        writer.beginColors();
    for (int32_t i = 0; i < SchemeColor::count; ++i)
        writer.addColor(schemeColorTable[i].name, getColor(i), getColorGroup(i));
}

void UScheme::exportMetrics(SchemeWriter& writer, SchemeSection section) const {
    if (section == SchemeSection::own)
        writer.beginMetrics();
    for (int32_t i = 0; i < SchemeMetric::count; ++i)
        writer.addMetric(schemeMetricTable[i].name, getMetric(i));
}

void UScheme::exportFonts(SchemeWriter& writer, SchemeSection section) const {
    if (section == SchemeSection::own)
        writer.beginFonts();
    for (int32_t i = 0; i < SchemeFont::count; ++i)
        writer.addFont(schemeFontTable[i].name, getFont(i));
}

} // namespace qorl
