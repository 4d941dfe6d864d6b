#include "compare/Streams.h"

#include "compare/Measure.h"
#include "foundation/text/String.h"
#include "persistence/streams/FCompressionStream.h"
#include "persistence/streams/FMemoryStream.h"

#include <cstdio>
#include <fstream>
#include <iterator>

namespace qorl::bench {

namespace {

constexpr int32_t records = 200'000;
constexpr double fields = 5.0 * records;

void require(bool condition, const char* what) {
    if (condition)
        return;
    std::fprintf(stderr, "compare: %s\n", what);
    std::exit(1);
}

void writeRecords(FMemoryStream& stream, const String& text) {
    for (int32_t i = 0; i < records; ++i) {
        stream.writeInt32(i);
        stream.writeDouble(i * .5);
        stream.writeBool(i & 1);
        text.writeTo(stream);
        stream.writeInt64(int64_t{i} << 20);
    }
}

int64_t readRecords(FMemoryStream& stream, int64_t& characters) {
    int64_t sum = 0;
    for (int32_t i = 0; i < records; ++i) {
        int32_t number = 0;
        double real = 0;
        bool flag = false;
        int64_t large = 0;
        String text;
        stream.readInt32(number);
        stream.readDouble(real);
        stream.readBool(flag);
        text.readFrom(stream);
        stream.readInt64(large);
        characters += text.size();
        sum += number + static_cast<int64_t>(real) + flag + large;
    }
    return sum;
}

void measureFieldsWith(const String& text, const std::string& suffix) {
    std::vector<double> writes;
    std::vector<double> reads;
    for (int i = 0; i < 5; ++i) {
        FMemoryStream stream;
        writes.push_back(timeOf([&] { writeRecords(stream, text); }));
        stream.rewind();
        int64_t characters = 0;
        reads.push_back(timeOf([&] {
            const int64_t sum = readRecords(stream, characters);
            asm volatile("" : : "r"(sum) : "memory");
        }));
        require(characters == int64_t{records} * text.size(), "texts are missing in the stream");
    }
    report("bin_serialise", "write_1M" + suffix, median(writes) / fields, "ns/field");
    report("bin_serialise", "read_1M" + suffix, median(reads) / fields, "ns/field");
}

struct Level {
    const char* name;
    float quality;
    int repetitions;
};

} // namespace

void measureCompression(const std::string& documents) {
    std::ifstream file(documents + "/settings_10mb.xml", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    require(!text.empty(), "cannot read settings_10mb.xml");
    const auto size = static_cast<int64_t>(text.size());
    const double megabytes = static_cast<double>(size) / 1e6;
    std::string back(text.size(), '\0');
    for (const Level& level : {Level{"level1", 0.12f, 3}, Level{"level6", 0.67f, 2}}) {
        const std::string name = level.name;
        auto compressed = make<FMemoryStream>();
        double time = medianOf(level.repetitions, [&] {
            compressed = make<FMemoryStream>();
            FCompressionStream stream(compressed);
            require(stream.beginCompression(level.quality) && stream.write(text.data(), size) == size &&
                        stream.endCompression(),
                    "the document could not be compressed");
        });
        report("compress", name + "_deflate", megabytes / (time / 1e9), "MB/s");
        report("compress", name + "_ratio",
               static_cast<double>(size) / static_cast<double>(compressed->size()), "x");
        time = medianOf(3, [&] {
            compressed->rewind();
            FCompressionStream stream(compressed);
            require(stream.beginDecompression(size) && stream.read(back.data(), size) == size,
                    "the document could not be inflated");
        });
        require(back == text, "the document is another one after its inflation");
        report("compress", name + "_inflate", megabytes / (time / 1e9), "MB/s");
    }
}

void measureFields() {
    measureFieldsWith(String("field_string"), "");
    measureFieldsWith(String(u"field_string"), "_wide");
}

} // namespace qorl::bench
