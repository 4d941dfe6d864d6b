#include "persistence/xml/FXmlParser.h"
#include "support/ShakyStream.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using qorl::FXmlAttributes;
using qorl::FXmlParser;

void require(bool condition) {
    if (!condition)
        std::abort();
}

/// Writes down what it hears, and does what the first letters of elements say.
class Recorder : public FXmlParser {
public:
    using FXmlParser::FXmlParser;

    bool startTag(std::string_view name, const FXmlAttributes& attributes, bool, void* context) override {
        require(!name.empty() && name.size() <= maxTagNameLength && line() > 0 && column() > 0);
        note('<', name, context);
        for (const auto& view : attributes) {
            require(view.name.size() <= maxNameLength);
            note(view.isWide ? 'w' : ' ', view.name, nullptr);
            note('=', view.value, nullptr);
        }
        switch (name[0]) {
        case 'p': return parse(this);
        case 'k': return skipElement();
        case 's': stop(); break;
        case 'e': setError(Error::missingAttributes, "none are right"); break;
        case 'f': return false;
        default: break;
        }
        return true;
    }
    void endTag(std::string_view name, void* context) override { note('>', name, context); }
    void text(const char* data, int32_t length, void*) override {
        events.append(data, static_cast<size_t>(length));
        if (length == 0)
            events += '|';
    }
    void comment(std::string_view text, void*, bool isEnd) override {
        events += text;
        if (isEnd)
            events += '!';
    }

    std::string events;

private:
    void note(char kind, std::string_view text, void* context) {
        events.append(context ? 2 : 1, kind).append(text);
    }
};

/// All that came of a document, which arrives `atOnce` bytes at a time. A parser that was stopped goes on.
std::string read(std::string_view document, uint32_t options, int64_t atOnce) {
    qorl::ShakyStream stream{std::string(document)};
    stream.atOnce = atOnce;
    Recorder recorder(stream, options);
    recorder.setReporting(FXmlParser::Reporting::off);
    size_t before = 0;
    bool isGood = recorder.parse();
    while (isGood && recorder.events.size() > before) {
        before = recorder.events.size();
        isGood = recorder.parse();
    }
    require(isGood == (recorder.error() == FXmlParser::Error::none));
    return recorder.events + recorder.getErrorText() + recorder.errorDetail() + recorder.getLineText();
}

} // namespace

// The first byte holds the options, the second says how many bytes come at once; the rest is the document.
// What is heard of it depends on no borders of pieces.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    const std::string_view document(reinterpret_cast<const char*>(data) + 2, size - 2);
    require(read(document, data[0], 1 << 20) == read(document, data[0], 1 + data[1]));
    return 0;
}
