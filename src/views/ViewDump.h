#pragma once

#include <cstdint>
#include <string>

namespace qorl {

class UView;

/// What a line of a dump shows beside class, name, rect and flags.
enum class DumpDetail : uint32_t { plain = 0, source = 1 };

/// The tree below and with `view` as text, one line a view, two blanks a level, back to front:
///
///     URowColumn "mixer" 0,0 400x120 client 2,2 396x116 attach left|right [shown attached] = value @
///     skin.xml:12:5
///
/// The rect is the frame in the parent's client space. The client is shown where it is not all of the frame,
/// the value where the view tells one, the source where it has one and `detail` asks for it. UTF-8. The same
/// tree gives the same text on every machine.
std::string dumpViewTree(UView& view, DumpDetail detail = DumpDetail::source);

/// The same tree as one JSON text with a line feed behind it: for each view an object of "class", "name",
/// "title", "frame" and "client" as [left, top, width, height], "attach" as a skin writes it, "flags" as
/// a list of words, "value", "source" as `writeJson` tells a position, and "views", in this order. What the
/// view does not have, and a client that is all of the frame, are left out.
std::string dumpViewTreeAsJson(UView& view, DumpDetail detail = DumpDetail::source);

/// The line of one view, without indent and line feed.
std::string describeView(UView& view, DumpDetail detail = DumpDetail::source);

} // namespace qorl
