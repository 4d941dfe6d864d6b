#include "views/ViewDump.h"

#include "foundation/DiagnosticJson.h"
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

/// In quotes, with quotes, backslashes and control characters escaped, so that a view stays one line and a
/// terminal shows it.
std::string inQuotes(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result = "\"";
    for (const char c : text) {
        if (c == '\n') {
            result += "\\n";
            continue;
        }
        if (const auto code = static_cast<uint8_t>(c); code < 0x20 || code == 0x7F) {
            result += {'\\', 'x', digits[code >> 4], digits[code & 15]};
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

bool hasOwnClient(const UView& view) {
    const CmSize frame = view.getFrameSize();
    return view.getClientRect() != CmRect{0, 0, frame.width, frame.height};
}

void writeRect(JsonWriter& json, const char* key, const CmRect& rect) {
    json.key(key);
    json.beginArray();
    for (const int32_t number : {rect.left, rect.top, rect.width(), rect.height()})
        json.number(number);
    json.endArray();
}

void writeFlags(JsonWriter& json, uint32_t flags) {
    json.key("flags");
    json.beginArray();
    for (const FlagWord& known : flagWords)
        if (flags & known.flag)
            json.string(known.word);
    json.endArray();
}

void writeTree(JsonWriter& json, UView& view, DumpDetail detail) {
    json.beginObject();
    json.member("class", view.getClassName());
    if (const std::string_view name = view.getItem().name(); !name.empty())
        json.member("name", name);
    if (view.hasTitle())
        json.member("title", view.getTitle().toUtf8());
    writeRect(json, "frame", view.getFrameRect());
    if (hasOwnClient(view))
        writeRect(json, "client", view.getClientRect());
    if (view.getAttach())
        json.member("attach", attachToText(view.getAttach()));
    writeFlags(json, view.getViewFlags());
    if (String value; view.getAccessibleValue(value))
        json.member("value", value.toUtf8());
    if (detail == DumpDetail::source && view.getSource()) {
        json.key("source");
        writeJson(json, view.getSource()->position());
    }
    if (view.getSubViewCount() > 0) {
        json.key("views");
        json.beginArray();
        view.forEachSubView([&](UView& subView) { writeTree(json, subView, detail); });
        json.endArray();
    }
    json.endObject();
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
    if (hasOwnClient(view))
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

std::string dumpViewTreeAsJson(UView& view, DumpDetail detail) {
    JsonWriter json;
    writeTree(json, view, detail);
    return json.text() + '\n';
}

} // namespace qorl
