#include "foundation/ClassFactory.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/AttributesStream.h"
#include "persistence/streams/FMemoryStream.h"

#include <cstdint>
#include <cstdlib>
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

std::string written(const FAttributes& attributes, uint16_t byteOrder) {
    FMemoryStream stream;
    stream.setByteOrder(byteOrder);
    expect(writeAttributes(stream, attributes));
    return std::string(stream.bytes());
}

} // namespace

// The binary form of attributes: the first byte is the byte order, the rest a body. What is read, also of a
// damaged body, has to be written, and that to be read and written with the same bytes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static SilentListener listener;
    FObjectArchive::setGlobalListener(&listener);
    if (size == 0)
        return 0;
    const uint16_t byteOrder = data[0] & 1;
    FMemoryStream stream(std::string_view(reinterpret_cast<const char*>(data) + 1, size - 1));
    stream.setByteOrder(byteOrder);
    FAttributes read;
    std::string fault;
    expect(readAttributes(stream, read, nullptr, &fault) || !fault.empty());
    FAttributeVariant value{};
    static_cast<void>(read.findValue("a|b", value));
    static_cast<void>(read.findAttributes("a|b"));
    FAttributes copy(read);
    expect(copy.detachObjects());

    const std::string first = written(read, byteOrder);
    FMemoryStream again{std::string_view(first)};
    again.setByteOrder(byteOrder);
    FAttributes second;
    expect(readAttributes(again, second) && again.tell() == again.size());
    // Empty texts go at the first reading.
    const std::string bytes = written(second, byteOrder);
    FMemoryStream last{std::string_view(bytes)};
    last.setByteOrder(byteOrder);
    FAttributes third;
    expect(readAttributes(last, third) && written(third, byteOrder) == bytes);
    return 0;
}
