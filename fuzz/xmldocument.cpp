#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlDocument.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using qorl::FAttributes;
using qorl::FMemoryStream;
using qorl::FXmlDocument;

std::string written(const FAttributes& attributes) {
    FMemoryStream stream;
    FXmlDocument document(&stream, FXmlDocument::Mode::write);
    return document.storeAttributes("Doc", attributes) ? std::string(stream.bytes()) : std::string();
}

/// Whether it was read whole.
bool read(std::string_view text, FAttributes& attributes) {
    FMemoryStream stream(text);
    return FXmlDocument(&stream, FXmlDocument::Mode::read).restoreAttributes("Doc", attributes);
}

} // namespace

// The first byte says how a document is read; the rest is the document. What was read must come back from
// what is written of it, letter by letter.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    FMemoryStream stream(text);
    FXmlDocument document(&stream, FXmlDocument::Mode::read);
    document.load("Doc", data[0] & 1 ? "one" : nullptr, data[0] & 2);
    document.getObject("one");

    FAttributes first;
    if (!read(text, first))
        return 0;
    const std::string once = written(first);
    FAttributes second;
    if (!once.empty() && (!read(once, second) || written(second) != once))
        std::abort();
    return 0;
}
