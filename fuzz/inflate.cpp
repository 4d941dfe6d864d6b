#include "foundation/containers/CmBuffer.h"
#include "persistence/streams/FCompressionStream.h"
#include "persistence/streams/FMemoryStream.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace qorl;

constexpr int64_t mostInflated = 1 << 18;

void expect(bool condition) {
    if (!condition)
        std::abort();
}

/// What the stream gives from its place on, as far as it is read here.
std::string readOn(FCompressionStream& stream, int64_t piece) {
    std::string all;
    int64_t got = piece;
    while (got > 0 && static_cast<int64_t>(all.size()) < mostInflated) {
        const size_t place = all.size();
        all.resize(place + static_cast<size_t>(piece));
        got = stream.read(all.data() + place, piece);
        expect(got >= 0 && got <= piece);
        all.resize(place + static_cast<size_t>(got));
    }
    return all;
}

} // namespace

// Compressed data. The first two bytes say in which pieces it is read, and where to.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    const int64_t piece = 1 + data[0] * 17;
    const int64_t place = data[1] * 100;
    const auto target =
        make<FMemoryStream>(std::string_view(reinterpret_cast<const char*>(data) + 2, size - 2));
    FCompressionStream stream(target);
    if (!stream.beginDecompression(place))
        return 0;
    const std::string whole = readOn(stream, piece);
    const bool isComplete = stream.isComplete();
    expect(stream.tell() == static_cast<int64_t>(whole.size()));
    stream.rewind();
    expect(stream.seek(place, FStream::fromStart) <= place);
    if (isComplete) {
        const auto skipped = static_cast<size_t>(stream.tell());
        expect(readOn(stream, piece) == whole.substr(std::min(skipped, whole.size())));
    }
    stream.rewind();
    CmBuffer line;
    for (int i = 0; i < 100 && stream.readTextLine(line); ++i)
        expect(line.used() <= stream.tell());
    const auto memory = FCompressionStream::toMemory(&stream);
    expect(place > 0 || memory == static_cast<IBStream*>(&stream));
    return 0;
}
