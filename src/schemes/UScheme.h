#pragma once

#include "foundation/CmObject.h"
#include "foundation/text/ConstString.h"
#include "graphics/UBrush.h"
#include "graphics/UDrawDevice.h"
#include "graphics/UFont.h"
#include "graphics/UPen.h"
#include "schemes/ControlTable.h"
#include "schemes/SchemeEntry.h"
#include "schemes/SchemeKeys.h"
#include "schemes/USkinColorEntry.h"

#include <qorl/Geometry.h>

#include <array>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

namespace qorl {

/// The look of the program that does not come from bitmaps: colours, metrics, fonts, plain controls and
/// frames.
///
/// Every view asks its scheme, never a constant. Indexes are those of `SchemeKeys.h` and are not checked. A
/// new scheme holds the default metrics only; `reset` gives it all defaults. GUI thread.
class UScheme : public CmObject {
    QORL_CLASS(UScheme, CmObject)

public:
    UScheme();
    UScheme(const UScheme& other);

    /// -1 for a name that is no key. Case counts.
    static int32_t colorIndex(std::string_view name);
    static int32_t metricIndex(std::string_view name);
    static int32_t fontIndex(std::string_view name);
    /// Null out of range.
    static const char* colorName(int32_t index);
    static const char* metricName(int32_t index);
    static const char* fontName(int32_t index);

    // The published table, behind that of CmObject.

    CmObject* clone() const override;
    virtual bool findNamedColor(std::string_view name, UColor& color) const;
    virtual const UColor& getColor(int32_t index) const;
    virtual const UBrush& getBrush(int32_t index) const;
    virtual const UPen& getPen(int32_t index) const;
    virtual const UFont& getFont(int32_t index) const;
    /// A plain control with one reference for the caller; null for a kind that it does not know.
    virtual UControl* createControl(int32_t kind, const CmRect& rect, int32_t style, Binding::Value* value,
                                    const ConstString& title);
    /// `kind` as in `FrameKind`; a number that is none draws nothing. `title` may be empty.
    virtual void drawFrame(UDrawDevice& device, const CmRect& rect, int32_t kind, const ConstString& title);
    virtual int32_t getMetric(int32_t index) const;
    virtual void setMetric(int32_t index, int32_t value);
    virtual void drawWorkArea(UDrawDevice& device, const CmRect& rect, bool withScrollbars);
    virtual void drawDialogFrame(UDrawDevice& device, const CmRect& rect, const ConstString& title);
    virtual void drawGroupFrame(UDrawDevice& device, const CmRect& rect, const ConstString& title);
    virtual void drawButtonFrame(UDrawDevice& device, const CmRect& rect, const ConstString& title);
    virtual void drawPressedFrame(UDrawDevice& device, const CmRect& rect, const ConstString& title,
                                  bool flag);
    virtual void drawEdgeLines(UDrawDevice& device, const CmRect& rect, bool raised);
    virtual void drawDataField(UDrawDevice& device, const CmRect& rect);
    virtual void drawDialogArea(UDrawDevice& device, const CmRect& rect);
    virtual void drawButtonArea(UDrawDevice& device, const CmRect& rect);
    virtual void drawBevelLine(UDrawDevice& device, const CmRect& rect);
    virtual void drawUntitledFrame(UDrawDevice& device, const CmRect& rect);
    virtual void drawTopTab(UDrawDevice& device, const CmRect& rect, bool selected);
    virtual void drawBottomTab(UDrawDevice& device, const CmRect& rect, bool selected);
    virtual void drawSeparator(UDrawDevice& device, const CmRect& rect);
    virtual void drawColumnHeader(UDrawDevice& device, const CmRect& rect, bool marked);
    virtual void drawColumnTitle(UDrawDevice& device, const CmRect& rect, const ConstString& title,
                                 bool marked);
    virtual void drawSortArrow(UDrawDevice& device, const CmRect& rect, bool descending);
    virtual void drawListSelection(UDrawDevice& device, const CmRect& rect, bool focused);
    virtual void drawFocusFrame(UDrawDevice& device, const CmRect& rect);
    virtual void drawToolTipFrame(UDrawDevice& device, const CmRect& rect);
    /// `marks` as in `MarkState`.
    virtual void drawCheckMark(UDrawDevice& device, const CmRect& rect, uint32_t marks);
    virtual void drawRadioMark(UDrawDevice& device, const CmRect& rect, uint32_t marks);
    /// In the device's brush.
    virtual void drawArrow(UDrawDevice& device, const CmRect& rect, ArrowDirection direction);
    virtual void drawExpansionBox(UDrawDevice& device, const CmRect& rect, bool expanded);
    /// `rect` is all that the handle moves in; the groove in the middle of it is `sliderGroove` here.
    virtual void drawSliderTrack(UDrawDevice& device, const CmRect& rect, bool vertical);
    static CmRect sliderGroove(const CmRect& track, bool vertical);
    virtual void drawSliderHandle(UDrawDevice& device, const CmRect& rect, uint32_t marks);
    /// `position` from 0 to 1.
    virtual void drawProgress(UDrawDevice& device, const CmRect& rect, double position);
    /// Pens and brushes to the colours of the desktop; the groups stay.
    virtual void resetColors();
    virtual void resetFonts();
    virtual void resetMetrics();

    /// The named colour, else the colour of the key. False when it is the latter.
    bool getColorOr(std::string_view name, int32_t index, UColor& color) const;
    bool getNamedColorOr(std::string_view name, int32_t standardIndex, UColor& color) const;
    bool getNamedColorOrPacked(std::string_view name, uint32_t packed, UColor& color) const;

    /// Pen, brush and group of a key together.
    void setColor(int32_t index, const UColor& color, uint32_t group = 0);
    uint32_t getColorGroup(int32_t index) const { return colorGroups_[static_cast<size_t>(index)]; }
    void setFont(int32_t index, const UFont& font) { fonts_[static_cast<size_t>(index)] = font; }
    /// Adds or overwrites.
    void setNamedColor(std::string_view name, const UColor& color, uint32_t group = 0);
    const USkinColorEntry* findNamedEntry(std::string_view name) const;
    size_t namedColorCount() const { return namedColors_.size(); }

    bool isSkinned() const { return isSkinned_; }
    /// Takes over a section: keys are written, other colours become named ones, other names are passed over.
    void applyScheme(std::span<const SchemeEntry> section);
    /// No named colours, no groups, all defaults.
    void reset();

    /// Every key in its order; named colours are not written.
    void exportColors(SchemeWriter& writer, SchemeSection section) const;
    void exportMetrics(SchemeWriter& writer, SchemeSection section) const;
    void exportFonts(SchemeWriter& writer, SchemeSection section) const;

    /// The radius that `drawFrame` takes for rounded kinds, for as long as the object stands.
    class FrameRadius {
    public:
        explicit FrameRadius(int32_t radius);
        ~FrameRadius();
        FrameRadius(const FrameRadius&) = delete;
        FrameRadius& operator=(const FrameRadius&) = delete;

    private:
        int32_t outer_;
    };

protected:
    /// Lines along the edges: `topLeft` and `bottomRight` are colour keys; `inset` pixels inside.
    void drawBevel(UDrawDevice& device, const CmRect& rect, int32_t inset, int32_t topLeft,
                   int32_t bottomRight);
    void fill(UDrawDevice& device, const CmRect& rect, int32_t colorKey);

private:
    struct TextHash {
        using is_transparent = void;
        size_t operator()(std::string_view text) const noexcept {
            return std::hash<std::string_view>()(text);
        }
    };
    using NamedColors = std::unordered_map<std::string, Ref<USkinColorEntry>, TextHash, std::equal_to<>>;

    static constexpr size_t startBuckets = 8;

    void applyFont(const SchemeEntry& entry);
    /// A metric as it is drawn with: a document may say any number.
    int32_t drawnMetric(int32_t index) const;
    void drawTitledFrame(UDrawDevice& device, const CmRect& rect, const ConstString& title, int32_t first,
                         int32_t second, int32_t topOffset);
    bool drawDeviceFrame(UDrawDevice& device, const CmRect& rect, int32_t kind);

    std::array<UPen, SchemeColor::count> pens_;
    std::array<UBrush, SchemeColor::count> brushes_;
    std::array<uint32_t, SchemeColor::count> colorGroups_{};
    std::array<UFont, SchemeFont::count> fonts_;
    std::array<int32_t, SchemeMetric::count> metrics_;
    bool isSkinned_ = false;
    NamedColors namedColors_;
};

} // namespace qorl
