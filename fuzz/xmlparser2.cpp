#include "foundation/text/StringObject.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlParser2.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

/// Suspends, stops and asks for places as the names of elements say.
class Handler : public qorl::IXmlHandler {
public:
    explicit Handler(qorl::FXmlParser2& parser) : parser_(parser) { parser.setHandler(this); }

    void startElement(qorl::IXmlParser*, const char* name, const char** attributes) override {
        for (; *attributes; attributes += 2)
            bytes += std::strlen(attributes[0]) + std::strlen(attributes[1]);
        if (parser_.position().line < 1 || parser_.depth() < 1)
            std::abort();
        if (*name == 's')
            parser_.suspend();
        if (*name == 'x')
            parser_.stop();
    }
    void endElement(qorl::IXmlParser*, const char*) override {}
    void characterData(qorl::IXmlParser*, const char*, int32_t length) override {
        bytes += static_cast<size_t>(length);
    }
    void comment(qorl::IXmlParser*, const char* text) override { bytes += std::strlen(text); }

    size_t bytes = 0;

private:
    qorl::FXmlParser2& parser_;
};

} // namespace

// One document behind the other, as long as they are whole.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace qorl;
    FMemoryStream stream(std::string_view(reinterpret_cast<const char*>(data), size));
    FXmlParser2 parser;
    Handler handler(parser);
    int64_t before = -1;
    while (stream.tell() > before && stream.tell() < stream.size()) {
        before = stream.tell();
        parser.reset(nullptr);
        bool isGood = parser.parse(&stream);
        while (isGood)
            isGood = parser.resume(&stream);
        const auto text = make<StringObject>();
        parser.getErrorText(static_cast<FDependent*>(text.get()));
        if (parser.hasFailed() && (text->string().isEmpty() || parser.errorPosition().line < 1))
            std::abort();
    }
    return 0;
}
