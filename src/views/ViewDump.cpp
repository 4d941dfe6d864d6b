#include "views/ViewDump.h"

#include "views/UView.h"
#include "views/ViewSource.h"

namespace qorl {

namespace {

struct FlagWord {
    uint32_t flag;
    const char* word;
};

constexpr FlagWord flagWords[] = {
    {viewVisible, "shown"},         {viewAttached, "attached"},          {viewFocusable, "focusable"},
    {viewDisabled, "disabled"},     {viewHighlighted, "highlighted"},    {viewMarked, "marked"},
    {viewPersistent, "persistent"}, {viewTakesRightClick, "rightclick"}, {viewResizeSuspended, "suspended"},
    {viewFrameFrozen, "frozen"},    {viewDirectPaint, "directpaint"},
};

std::string rectText(const CmRect& rect) {
    return std::to_string(rect.left) + "," + std::to_string(rect.top) + " " + std::to_string(rect.width()) +
           "x" + std::to_string(rect.height());
}

/// In quotes, with quotes, backslashes and line feeds escaped, so that a view stays one line.
std::string inQuotes(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '\n') {
            result += "\\n";
            continue;
        }
        if (c == '"' || c == '\\')
            result += '\\';
        result += c;
    }
    return result + '"';
}

std::string flagText(uint32_t flags) {
    std::string words;
    for (const FlagWord& known : flagWords) {
        if (!(flags & known.flag))
            continue;
        words += words.empty() ? " [" : " ";
        words += known.word;
    }
    return words.empty() ? words : words + "]";
}

void appendTree(UView& view, DumpDetail detail, size_t depth, std::string& text) {
    text.append(depth * 2, ' ');
    text += describeView(view, detail);
    text += '\n';
    view.forEachSubView([&](UView& subView) { appendTree(subView, detail, depth + 1, text); });
}

} // namespace

std::string describeView(UView& view, DumpDetail detail) {
    std::string text = view.getClassName();
    const std::string_view name = view.getItem().name();
    if (!name.empty() || view.hasTitle())
        text += " " + inQuotes(name.empty() ? view.getTitle().toUtf8() : std::string(name));
    text += " " + rectText(view.getFrameRect());
    const CmSize frame = view.getFrameSize();
    if (view.getClientRect() != CmRect{0, 0, frame.width, frame.height})
        text += " client " + rectText(view.getClientRect());
    if (view.getAttach())
        text += " attach " + attachToText(view.getAttach());
    text += flagText(view.getViewFlags());
    if (String value; view.getAccessibleValue(value))
        text += " = " + inQuotes(value.toUtf8());
    if (detail == DumpDetail::source && view.getSource())
        text += " @ " + toText(view.getSource()->position());
    return text;
}

std::string dumpViewTree(UView& view, DumpDetail detail) {
    std::string text;
    appendTree(view, detail, 0, text);
    return text;
}

} // namespace qorl
