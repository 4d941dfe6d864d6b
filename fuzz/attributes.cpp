#include "ReadObjects.h"
#include "persistence/archive/FCompactArchive.h"
#include "persistence/archive/FSizedArchive.h"
#include "persistence/attributes/AttributesStream.h"
#include "persistence/streams/FMemoryStream.h"

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace {

using namespace qorl;

void expect(bool condition) {
    if (!condition)
        std::abort();
}

/// Hears of unknown classes, so that they don't fill the debug output.
struct SilentListener : ArchiveListener {
    void report(int32_t, const char*) override {}
};

std::optional<std::string> written(const FAttributes& attributes, uint16_t byteOrder) {
    FMemoryStream stream;
    stream.setByteOrder(byteOrder);
    if (!writeAttributes(stream, attributes))
        return std::nullopt;
    return std::string(stream.bytes());
}

/// What was written has to be read, and written with the same bytes, whatever object stood for it.
void readAndWrite(const std::string& first, uint16_t byteOrder) {
    FMemoryStream again{std::string_view(first)};
    again.setByteOrder(byteOrder);
    FAttributes second;
    expect(readAttributes(again, second) && again.tell() == again.size());
    // Empty texts go at the first reading.
    const auto bytes = written(second, byteOrder);
    expect(bytes.has_value());
    FMemoryStream last{std::string_view(*bytes)};
    last.setByteOrder(byteOrder);
    FAttributes third;
    expect(readAttributes(last, third) && written(third, byteOrder) == bytes);
}

/// Bits of the first byte. Old files hold objects in the form of one of the archives.
enum : uint8_t { reversed = 1, withArchive = 2, sizedArchive = 4 };

void fuzz(FStream& stream, uint8_t mode) {
    FCompactArchive compact(stream, FObjectArchive::Direction::reading);
    FSizedArchive sized(stream, FObjectArchive::Direction::reading);
    FObjectArchive* const archive = !(mode & withArchive) ? nullptr
                                    : mode & sizedArchive ? static_cast<FObjectArchive*>(&sized)
                                                          : &compact;
    FAttributes read;
    std::string fault;
    expect(readAttributes(stream, read, archive, &fault) || !fault.empty());
    FAttributeVariant value{};
    static_cast<void>(read.findValue("a|b", value));
    static_cast<void>(read.findAttributes("a|b"));
    const auto first = written(read, mode & reversed);
    // By an archive attributes may come to be nested deeper than they can be written.
    expect(first || archive);
    if (!archive) {
        FAttributes copy(read);
        expect(copy.detachObjects());
    }
    if (first)
        readAndWrite(*first, mode & reversed);
}

} // namespace

// The binary form of attributes: the first byte says how it is read, the rest is a body.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static SilentListener listener;
    FObjectArchive::setGlobalListener(&listener);
    ReadObjects::watch();
    if (size == 0)
        return 0;
    FMemoryStream stream(std::string_view(reinterpret_cast<const char*>(data) + 1, size - 1));
    stream.setByteOrder(data[0] & reversed);
    fuzz(stream, data[0]);
    ReadObjects::takeApart();
    return 0;
}
