#include "views/controls/ControlText.h"

#include "foundation/text/ConstString.h"
#include "views/controls/ControlStyle.h"

#include <algorithm>
#include <string>

namespace qorl {

namespace {

/// Where `line` must end to fit into `width`: at its own end or at a blank, the last that does, else the
/// first one. Looks ahead in growing leaps, so that a long text isn't measured anew for each of its lines.
size_t fittingEnd(const UFont& font, std::u16string_view line, int32_t width) {
    const auto breakFrom = [&](size_t start) { return std::min(line.find(u' ', start), line.size()); };
    const auto fits = [&](size_t end) {
        return font.getStringWidth(ConstString(line.substr(0, end))) <= width;
    };
    size_t best = breakFrom(0);
    size_t tooFar = best;
    while (tooFar < line.size()) {
        tooFar = breakFrom(2 * tooFar + 1);
        if (!fits(tooFar))
            break;
        best = tooFar;
    }
    while (best < tooFar) {
        size_t middle = line.rfind(u' ', best + (tooFar - best) / 2);
        if (middle <= best)
            middle = breakFrom(best + 1);
        if (middle >= tooFar)
            break;
        (fits(middle) ? best : tooFar) = middle;
    }
    return best;
}

/// Calls `visit` with each line of `text`, a view on its characters. `wrapWidth` 0 breaks at line feeds only.
template <typename Visit>
void forEachLine(const UFont& font, const ConstString& text, int32_t wrapWidth, Visit&& visit) {
    const std::u16string wide = text.toUtf16();
    const std::u16string_view all(wide);
    size_t start = 0;
    while (start <= all.size()) {
        const size_t hardEnd = std::min(all.find(u'\n', start), all.size());
        std::u16string_view line = all.substr(start, hardEnd - start);
        start = hardEnd + 1;
        const auto end = [&] { return wrapWidth > 0 ? fittingEnd(font, line, wrapWidth) : line.size(); };
        for (size_t cut = end(); cut < line.size(); cut = end()) {
            visit(ConstString(line.substr(0, cut)));
            line.remove_prefix(cut + 1);
        }
        visit(ConstString(line));
    }
}

bool isOneLine(const ConstString& text) {
    return text.findChar16(u'\n') < 0 && text.findChar8('\n') < 0;
}

} // namespace

int32_t justifyFromSkin(uint32_t just) {
    const int32_t horizontal = just & TextJust::left    ? Justify::left
                               : just & TextJust::right ? Justify::right
                                                        : Justify::center;
    const int32_t vertical = just & TextJust::top      ? Justify::top
                             : just & TextJust::bottom ? Justify::bottom
                                                       : Justify::verticalCenter;
    return horizontal | vertical;
}

void drawControlText(UDrawDevice& device, const ConstString& text, const CmRect& rect, uint32_t just) {
    const int32_t justify = justifyFromSkin(just);
    const bool wraps = (just & TextJust::wordWrap) != 0;
    if (!wraps && isOneLine(text)) {
        device.drawString(text, rect, justify);
        return;
    }
    const UFont& font = device.getFont();
    const int32_t wrapWidth = wraps ? rect.width() : 0;
    const int32_t lineHeight = font.getMetrics().lineHeight;
    const int32_t height = measureControlText(font, text, wrapWidth).height;
    int32_t top = just & TextJust::top      ? rect.top
                  : just & TextJust::bottom ? rect.bottom - height
                                            : rect.top + (rect.height() - height) / 2;
    const int32_t horizontal = justify & (Justify::center | Justify::right);
    forEachLine(font, text, wrapWidth, [&](const ConstString& line) {
        device.drawString(line, {rect.left, top, rect.right, top + lineHeight}, horizontal | Justify::top);
        top += lineHeight;
    });
}

CmSize measureControlText(const UFont& font, const ConstString& text, int32_t wrapWidth) {
    const int32_t lineHeight = font.getMetrics().lineHeight;
    if (wrapWidth <= 0 && isOneLine(text))
        return {font.getStringWidth(text), lineHeight};
    CmSize extent;
    forEachLine(font, text, wrapWidth, [&](const ConstString& line) {
        extent.width = std::max(extent.width, font.getStringWidth(line));
        extent.height += lineHeight;
    });
    return extent;
}

} // namespace qorl
