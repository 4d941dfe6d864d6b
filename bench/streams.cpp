#include "persistence/streams/FBlockStreamReader.h"
#include "persistence/streams/FBufferedStream.h"
#include "persistence/streams/FCompressionStream.h"
#include "persistence/streams/FFileStream.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/Ratio.h"

#include <cstring>
#include <string>
#include <vector>
#include <zlib.h>

namespace qorl::bench {
namespace {

// Sizes are records of four numbers: 22 bytes.

void writeNumbers(benchmark::State& state) {
    for (auto _ : state) {
        FMemoryStream stream;
        for (int32_t i = 0; i < state.range(0); ++i) {
            stream.writeInt32(i);
            stream.writeDouble(i * .5);
            stream.writeBool(i & 1);
            stream.writeInt64(i);
        }
        benchmark::DoNotOptimize(stream.data());
    }
}
void writeNumbersFloor(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<char> bytes;
        const auto put = [&](const auto& value) {
            const auto* from = reinterpret_cast<const char*>(&value);
            bytes.insert(bytes.end(), from, from + sizeof value);
        };
        for (int32_t i = 0; i < state.range(0); ++i) {
            put(i);
            put(i * .5);
            put(static_cast<uint16_t>(i & 1));
            put(int64_t{i});
        }
        benchmark::DoNotOptimize(bytes.data());
    }
}
QORL_RATIO(writeNumbers, writeNumbersFloor, 1.0, 10000, 100000);

FMemoryStream& numbers(int64_t count) {
    static FMemoryStream stream;
    stream.resize(0);
    for (int32_t i = 0; i < count; ++i) {
        stream.writeInt32(i);
        stream.writeDouble(i * .5);
        stream.writeBool(i & 1);
        stream.writeInt64(i);
    }
    return stream;
}

void readNumbers(benchmark::State& state) {
    FMemoryStream& stream = numbers(state.range(0));
    for (auto _ : state) {
        stream.rewind();
        int64_t sum = 0;
        for (int32_t i = 0; i < state.range(0); ++i) {
            int32_t number = 0;
            double real = 0;
            bool flag = false;
            int64_t large = 0;
            stream.readInt32(number);
            stream.readDouble(real);
            stream.readBool(flag);
            stream.readInt64(large);
            sum += number + static_cast<int64_t>(real) + flag + large;
        }
        benchmark::DoNotOptimize(sum);
    }
}
/// With the end tested before each number, as any reader has to.
void readNumbersFloor(benchmark::State& state) {
    FMemoryStream& stream = numbers(state.range(0));
    for (auto _ : state) {
        const char* at = stream.data();
        const char* const end = at + stream.size();
        const auto get = [&](auto& value) {
            if (static_cast<size_t>(end - at) < sizeof value)
                return;
            std::memcpy(&value, at, sizeof value);
            at += sizeof value;
        };
        int64_t sum = 0;
        for (int32_t i = 0; i < state.range(0); ++i) {
            int32_t number = 0;
            double real = 0;
            uint16_t flag = 0;
            int64_t large = 0;
            get(number);
            get(real);
            get(flag);
            get(large);
            sum += number + static_cast<int64_t>(real) + (flag != 0) + large;
        }
        benchmark::DoNotOptimize(sum);
    }
}
QORL_RATIO(readNumbers, readNumbersFloor, 4.0, 10000, 100000);

// Sizes are bytes.

std::string document(int64_t size) {
    std::string text;
    uint32_t state = 1;
    while (static_cast<int64_t>(text.size()) < size) {
        state = state * 1664525 + 1013904223;
        text += "<entry name=\"value" + std::to_string(state >> 20) + "\" number=\"" +
                std::to_string(state >> 8) + "\"/>\n";
    }
    text.resize(static_cast<size_t>(size));
    return text;
}

void deflateText(benchmark::State& state) {
    const std::string text = document(state.range(0));
    for (auto _ : state) {
        FCompressionStream stream(make<FMemoryStream>());
        stream.beginCompression(0.67f);
        stream.write(text.data(), static_cast<int64_t>(text.size()));
        benchmark::DoNotOptimize(stream.endCompression());
    }
}
void deflateTextFloor(benchmark::State& state) {
    const std::string text = document(state.range(0));
    std::string out(compressBound(text.size()), '\0');
    for (auto _ : state) {
        uLongf size = out.size();
        benchmark::DoNotOptimize(compress2(reinterpret_cast<Bytef*>(out.data()), &size,
                                           reinterpret_cast<const Bytef*>(text.data()), text.size(), 6));
    }
}
QORL_RATIO(deflateText, deflateTextFloor, 1.05, 100000, 1000000);

std::string deflatedDocument(int64_t size) {
    const std::string text = document(size);
    std::string out(compressBound(text.size()), '\0');
    uLongf length = out.size();
    compress2(reinterpret_cast<Bytef*>(out.data()), &length, reinterpret_cast<const Bytef*>(text.data()),
              text.size(), 6);
    out.resize(length);
    return out;
}

void inflateText(benchmark::State& state) {
    const std::string deflated = deflatedDocument(state.range(0));
    std::string back(static_cast<size_t>(state.range(0)), '\0');
    for (auto _ : state) {
        FCompressionStream stream(make<FMemoryStream>(std::string_view(deflated)));
        stream.beginDecompression(state.range(0));
        benchmark::DoNotOptimize(stream.read(back.data(), state.range(0)));
    }
}
void inflateTextFloor(benchmark::State& state) {
    const std::string deflated = deflatedDocument(state.range(0));
    std::string back(static_cast<size_t>(state.range(0)), '\0');
    for (auto _ : state) {
        uLongf size = back.size();
        benchmark::DoNotOptimize(uncompress(reinterpret_cast<Bytef*>(back.data()), &size,
                                            reinterpret_cast<const Bytef*>(deflated.data()),
                                            deflated.size()));
    }
}
QORL_RATIO(inflateText, inflateTextFloor, 1.05, 100000, 1000000);

constexpr int64_t copyPiece = 65536;
constexpr uint32_t scratchMode =
    platform::openRead | platform::openWrite | platform::openCreate | platform::openTruncate;

/// Two files in the memory of the temporary folder, gone with the object.
struct TwoFiles {
    explicit TwoFiles(int64_t size) {
        for (std::string* path : {&from, &to})
            platform::createTemporaryFile("/tmp", "qorl-bench", *path);
        const std::string text = document(size);
        platform::File file;
        file.open(from, scratchMode);
        file.write(text.data(), size);
    }
    ~TwoFiles() {
        platform::deleteFile(from);
        platform::deleteFile(to);
    }
    static platform::File open(const std::string& path, uint32_t mode) {
        platform::File file;
        file.open(path, mode);
        return file;
    }

    std::string from;
    std::string to;
};

/// In small steps, as a writer of fields makes them.
void copyFileBuffered(benchmark::State& state) {
    const TwoFiles files(state.range(0));
    char piece[1000];
    for (auto _ : state) {
        FBlockStreamReader source(make<FFileStream>(TwoFiles::open(files.from, platform::openRead), 1u),
                                  copyPiece);
        FBufferedStream target(make<FFileStream>(TwoFiles::open(files.to, scratchMode), 3u), copyPiece, true);
        for (int64_t got = sizeof piece; got > 0; target.write(piece, got))
            got = source.read(piece, sizeof piece);
    }
}
void copyFileBufferedFloor(benchmark::State& state) {
    const TwoFiles files(state.range(0));
    std::vector<char> piece(copyPiece);
    for (auto _ : state) {
        platform::File source = TwoFiles::open(files.from, platform::openRead);
        platform::File target = TwoFiles::open(files.to, scratchMode);
        for (int64_t got = copyPiece; got > 0; target.write(piece.data(), got))
            got = source.read(piece.data(), copyPiece);
    }
}
QORL_RATIO(copyFileBuffered, copyFileBufferedFloor, 1.2, 1000000, 10000000);

/// Fields of four bytes: the price of a call for each.
void readFieldsBuffered(benchmark::State& state) {
    const TwoFiles files(state.range(0));
    for (auto _ : state) {
        FBufferedStream source(make<FFileStream>(TwoFiles::open(files.from, platform::openRead), 1u),
                               copyPiece, false);
        uint64_t sum = 0;
        uint32_t number = 0;
        while (source.readUInt32(number))
            sum += number;
        benchmark::DoNotOptimize(sum);
    }
}
void readFieldsBufferedFloor(benchmark::State& state) {
    const TwoFiles files(state.range(0));
    std::vector<char> piece(copyPiece);
    for (auto _ : state) {
        platform::File source = TwoFiles::open(files.from, platform::openRead);
        uint64_t sum = 0;
        for (int64_t got = copyPiece; got > 0;) {
            got = source.read(piece.data(), copyPiece);
            for (int64_t at = 0; at + 4 <= got; at += 4) {
                uint32_t number = 0;
                std::memcpy(&number, piece.data() + at, sizeof number);
                sum += number;
                benchmark::DoNotOptimize(sum);
            }
        }
    }
}
QORL_RATIO(readFieldsBuffered, readFieldsBufferedFloor, 20, 1000000, 10000000);

} // namespace
} // namespace qorl::bench
