#include "persistence/streams/FCompressionStream.h"

#include "foundation/Cast.h"
#include "foundation/containers/CmBuffer.h"
#include "persistence/mounts/MountedStream.h"
#include "persistence/streams/FBufferedStream.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/streams/FStreamProxy.h"
#include "persistence/streams/IStreamProxy.h"
#include "persistence/streams/ZLibCompressor.h"
#include "support/FailingAllocation.h"
#include "support/MemoryMeter.h"
#include "support/PackComponent.h"
#include "support/ProgressRecorder.h"
#include "support/ShakyStream.h"
#include "support/Slots.h"
#include "support/StreamBytes.h"

#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <zlib.h>

namespace qorl {
namespace {

constexpr int64_t most = std::numeric_limits<int64_t>::max();

/// Text that compresses to about a third, longer than the engine's buffers even then.
const std::string& sample() {
    static const std::string text = [] {
        std::mt19937 random(3);
        std::string words;
        while (words.size() < 400'000)
            words += std::to_string(random() % 100'000) + ' ';
        return words;
    }();
    return text;
}

Ref<FMemoryStream> deflated(std::string_view bytes, float quality = 0.5f) {
    const auto source = memoryOf(bytes);
    auto target = make<FMemoryStream>();
    EXPECT_TRUE(FCompressionStream::compress(*source, target, nullptr, quality));
    target->rewind();
    return target;
}

/// What there is of it, and whether that is all.
std::pair<std::string, bool> inflated(std::string_view bytes, int64_t piece = FCompressionStream::pieceSize) {
    const auto target = make<FMemoryStream>();
    const bool isWhole = FCompressionStream::decompress(memoryOf(bytes), *target, nullptr, nullptr, piece);
    return {std::string(target->bytes()), isWhole};
}

TEST(ZLibCompressor, TakesItsLevelFromTheQuality) {
    struct Row {
        float quality;
        int32_t level;
    };
    for (const Row& row : {Row{1.0f, 9}, Row{0.5f, 4}, Row{2.0f, 9}, Row{-0.1f, -1}, Row{0.0f, 0},
                           Row{0.12f, 1}, Row{1e30f, 9}, Row{std::numeric_limits<float>::quiet_NaN(), -1}})
        EXPECT_EQ(ZLibCompressor::levelOf(row.quality), row.level) << row.quality;
}

TEST(ZLibCompressor, MakesTheStreamThatZlibMakes) {
    for (const float quality : {-1.0f, 0.2f, 0.5f, 1.0f}) {
        SCOPED_TRACE(quality);
        std::string expected(compressBound(sample().size()), '\0');
        uLongf size = expected.size();
        ASSERT_EQ(compress2(reinterpret_cast<Bytef*>(expected.data()), &size,
                            reinterpret_cast<const Bytef*>(sample().data()), sample().size(),
                            ZLibCompressor::levelOf(quality)),
                  Z_OK);
        expected.resize(size);
        EXPECT_TRUE(deflated(sample(), quality)->bytes() == expected);
        ShakyStream slow(sample());
        slow.atOnce = 1000;
        const auto target = make<FMemoryStream>();
        EXPECT_TRUE(FCompressionStream::compress(slow, target, nullptr, quality));
        EXPECT_TRUE(target->bytes() == expected) << "behind short reads";
    }
    EXPECT_EQ(deflated("", -1)->bytes(), std::string("\x78\x9C\x03\0\0\0\0\1", 8));
    EXPECT_EQ(deflated("a", 0)->bytes(), std::string("\x78\x01\x01\1\0\xFE\xFF"
                                                     "a\0\x62\0\x62",
                                                     12));
}

/// An engine that is not for any data, and the first one by its name.
class SpecialEngine : public FCompressionEngine {
    QORL_CLASS(SpecialEngine, FCompressionEngine)

public:
    static constexpr InterfaceId classId = InterfaceId::fromWords(1, 2, 3, 4);

    int32_t getKind() override { return generalKind + 1; }
};

/// Made once, so that asking for the default allocates what the default needs and no more.
FInterface* specialEngine() {
    static SpecialEngine engine;
    return static_cast<FObject*>(retain(&engine).detach());
}

const CompressionEngineRecord specialRecord("A Special Engine", SpecialEngine::classId, 0, &specialEngine);

TEST(ZLibCompressor, IsFoundByItsClassAndAsTheDefault) {
    const FUID id(0x443752F1, 0x5680439C, 0xAC5CB48A, 0x13A8D6DE);
    EXPECT_EQ(CompressionEngineRecord::first(), &specialRecord);
    EXPECT_STREQ(specialRecord.next()->name(), "Zlib Compressor");
    EXPECT_NE(cast<SpecialEngine>(CompressionEngineRecord::createEngine(SpecialEngine::classId).get()),
              nullptr);
    for (const auto& engine :
         {CompressionEngineRecord::createEngine(id), CompressionEngineRecord::createDefault()}) {
        ASSERT_NE(engine, nullptr);
        FUID found;
        EXPECT_EQ(engine->getClassId(found), Result::ok);
        EXPECT_EQ(found, id);
    }
    EXPECT_EQ(CompressionEngineRecord::createEngine(IMemoryStream::iid), nullptr);
    FCompressionStream without(make<FMemoryStream>(), FUID());
    EXPECT_FALSE(without.beginCompression(0.5f));
    EXPECT_FALSE(without.beginDecompression(5));
    int64_t size = 0;
    EXPECT_EQ(without.getStreamSize(size), Result::failure);
    EXPECT_EQ(without.read(&size, 1), -1);
    EXPECT_EQ(without.write(&size, 1), -1);
    FCompressionEngine base;
    EXPECT_EQ(base.createCompressor(), nullptr);
    EXPECT_EQ(base.createDecompressor(), nullptr);
    testing::expectConsecutive({SLOT(FCompressionEngine, createCompressor),
                                SLOT(FCompressionEngine, createDecompressor),
                                SLOT(FCompressionEngine, getClassId), SLOT(FCompressionEngine, getKind),
                                SLOT(FCompressionEngine, reserved29), SLOT(FCompressionEngine, reserved30)},
                               25);
}

TEST(FCompressionStream, InflatesWhatItCompressed) {
    const auto compressed = deflated(sample());
    EXPECT_LT(compressed->size(), 200'000);
    EXPECT_GT(compressed->size(), FCompressionStream::pieceSize);
    for (const int64_t piece : {int64_t{1000}, int64_t{65'536}, int64_t{1'000'000}})
        EXPECT_TRUE(inflated(compressed->bytes(), piece) == std::pair(sample(), true)) << piece;
    FCompressionStream stream(compressed);
    EXPECT_TRUE(stream.beginDecompression(400));
    int64_t size = 0;
    EXPECT_EQ(stream.getStreamSize(size), Result::ok);
    EXPECT_EQ(size, 400);
    EXPECT_EQ(stream.setStreamSize(1), Result::notImplemented);
}

TEST(FCompressionStream, MovesForwardAndToTheStart) {
    FCompressionStream stream(deflated("0123456789"));
    ASSERT_TRUE(stream.beginDecompression());
    EXPECT_EQ(readUpTo(stream, 2), "01");
    expectSeeks(stream, {{2, FStream::fromHere, 4}});
    EXPECT_EQ(readUpTo(stream, 1), "4");
    // It knows no end.
    expectSeeks(stream, {{7, FStream::fromStart, 7}, {3, FStream::fromEnd, 7}});
    EXPECT_EQ(readUpTo(stream, 9), "789");
    EXPECT_TRUE(stream.isComplete());
    EXPECT_EQ(readUpTo(stream, 1), "");
    EXPECT_EQ(stream.seek(4, FStream::fromStart), 0) << "backward begins anew";
    EXPECT_EQ(readUpTo(stream, 3), "012");
    EXPECT_EQ(stream.seek(most, FStream::fromHere), 10) << "no further than the data";
    EXPECT_EQ(stream.seek(-5, FStream::fromStart), 0);
    stream.rewind();
    EXPECT_EQ(stream.seek(most, FStream::fromStart), 10);
    EXPECT_EQ(stream.seek(-3, FStream::fromHere), 10) << "not backward";
}

TEST(FCompressionStream, GivesTextLinesWithoutLosingACharacter) {
    FCompressionStream stream(deflated("one\r\n\r\ntwo\nthree"));
    ASSERT_TRUE(stream.beginDecompression());
    CmBuffer line;
    std::string read;
    while (stream.readTextLine(line))
        read += std::string(line.bytes()) + '|';
    EXPECT_EQ(read, "one|two|three|");
    stream.rewind();
    EXPECT_EQ(stream.seek(-1, FStream::fromHere), 0) << "nothing was read";
    EXPECT_EQ(readUpTo(stream, 2), "on");
    EXPECT_EQ(stream.seek(-1, FStream::fromHere), 1);
    EXPECT_EQ(stream.seek(-1, FStream::fromHere), 1) << "one byte and no more";
    EXPECT_EQ(readUpTo(stream, 2), "ne");
    EXPECT_EQ(stream.tell(), 3);
}

TEST(FCompressionStream, CanBeReadThroughWindowsThatShareIt) {
    const auto stream = make<FCompressionStream>(deflated("aaaabbbbcccc"));
    ASSERT_TRUE(stream->beginDecompression());
    FStreamProxy late(stream, 8, 4, 0);
    FStreamProxy early(stream, 2, 4, 0);
    EXPECT_EQ(readUpTo(late, 2), "cc");
    EXPECT_EQ(readUpTo(early, 9), "aabb") << "it goes back to the start, and forward from there";
    EXPECT_EQ(readUpTo(late, 9), "cc");
}

TEST(FCompressionStream, EndsForABufferWhereItsDataDoes) {
    const auto pack = make<PackInstance>(*make<PackComponent>());
    const auto mount = make<FRemovableFileSystem>(nullptr, nullptr, Ref<IVirtualFileSystem>{pack}, nullptr,
                                                  FRemovableFileSystem::Access::read);
    for (const int32_t claimed : {-1, 0, 4, 6, 12, 99}) {
        for (int32_t form = 0; form < 4; ++form) {
            SCOPED_TRACE(::testing::Message() << "form " << form << " that was told " << claimed);
            const auto stream = make<FCompressionStream>(deflated("aaaabbbbcccc"));
            ASSERT_TRUE(stream->beginDecompression(claimed));
            const auto window = make<FStreamProxy>(stream, 0, FStreamProxy::unlimited, 0);
            const Ref<FStream> forms[] = {stream, window, make<IStreamProxy>(Ref<IBStream>{window}),
                                          make<MountedStream>(stream, mount)};
            EXPECT_EQ(readUpTo(*make<FStreamProxy>(stream, 2, 4, 0), 9), "aabb");
            if (forms[form] != window)
                forms[form]->rewind();
            const auto buffered = make<FBufferedStream>(forms[form], 4, true);
            EXPECT_EQ(readUpTo(*buffered, 99), "aaaabbbbcccc") << "not up to where another one left it";
            EXPECT_EQ(buffered->write("d", 1), -1);
        }
    }
}

TEST(FCompressionStream, MakesReadableWhatWasFlushed) {
    const auto target = make<FMemoryStream>();
    FCompressionStream writing(target);
    ASSERT_TRUE(writing.beginCompression(1.0f));
    EXPECT_EQ(writing.write("flushed", 7), 7);
    EXPECT_EQ(writing.tell(), 7);
    EXPECT_EQ(target->size(), 0) << "held back";
    writing.flush();
    writing.flush();
    FCompressionStream reading(memoryOf(target->bytes()));
    ASSERT_TRUE(reading.beginDecompression());
    EXPECT_EQ(readUpTo(reading, 100), "flushed");
    EXPECT_FALSE(reading.isComplete());
    EXPECT_EQ(writing.write(" and finished", 13), 13);
    EXPECT_TRUE(writing.endCompression());
    EXPECT_FALSE(writing.endCompression());
    EXPECT_EQ(writing.write("x", 1), -1);
    FCompressionStream whole(memoryOf(target->bytes()));
    ASSERT_TRUE(whole.beginDecompression());
    EXPECT_EQ(readUpTo(whole, 100), "flushed and finished");
    const auto dropped = make<FMemoryStream>();
    {
        FCompressionStream stream(dropped);
        stream.beginCompression(1.0f);
        stream.write("by going", 8);
    }
    EXPECT_EQ(inflated(dropped->bytes()), std::pair(std::string("by going"), true));
}

TEST(FCompressionStream, TellsOfDataThatIsCutOrDamaged) {
    const std::string text = std::string(2000, 'a') + "some end of it";
    const std::string whole(deflated(text)->bytes());
    for (size_t length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(inflated(whole.substr(0, length)).second) << "cut at " << length;
    for (size_t place = 0; place < whole.size(); ++place) {
        std::string damaged = whole;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x40);
        const auto [found, isWhole] = inflated(damaged);
        // A run of equal letters can be told in two ways.
        EXPECT_TRUE(!isWhole || found == text) << "damaged at " << place;
        EXPECT_LT(found.size(), 100'000u);
    }
    std::string noise = whole;
    noise[1] = 'x';
    FCompressionStream stream(memoryOf(noise));
    ASSERT_TRUE(stream.beginDecompression());
    char byte = 0;
    EXPECT_EQ(stream.read(&byte, 1), 0);
    EXPECT_EQ(stream.read(&byte, 1), 0) << "and ever after";
    FCompressionStream empty(make<FMemoryStream>());
    EXPECT_FALSE(empty.beginDecompression(10));
}

TEST(FCompressionStream, TellsOfTheCallThatFails) {
    for (int64_t failAt = 1; failAt <= 3; ++failAt) {
        SCOPED_TRACE(failAt);
        const auto target = make<ShakyStream>();
        target->failAt = failAt;
        EXPECT_FALSE(FCompressionStream::compress(*memoryOf(sample()), target, nullptr, 0.5f));
        ShakyStream source(sample());
        source.failAt = failAt;
        EXPECT_FALSE(FCompressionStream::compress(source, make<FMemoryStream>(), nullptr, 0.5f));
        const auto compressed = make<ShakyStream>(std::string(deflated(sample())->bytes()));
        compressed->failAt = failAt;
        ShakyStream inflated;
        EXPECT_FALSE(FCompressionStream::decompress(compressed, inflated, nullptr));
        compressed->rewind();
        compressed->failAt = ShakyStream::never;
        inflated.failAt = failAt;
        EXPECT_FALSE(FCompressionStream::decompress(compressed, inflated, nullptr));
    }
    const auto full = make<ShakyStream>();
    full->room = 70'000;
    FCompressionStream stream(full);
    ASSERT_TRUE(stream.beginCompression(0.5f));
    EXPECT_EQ(stream.write(sample().data(), 400'000), -1) << "a buffer that goes half only";
    EXPECT_EQ(stream.write("more", 4), -1);
    EXPECT_FALSE(stream.endCompression());
    EXPECT_FALSE(FCompressionStream::compress(*memoryOf("x"), nullptr, nullptr, 0.5f));
}

TEST(FCompressionStream, ReportsAndStopsWhenCancelled) {
    ProgressRecorder watch;
    watch.all = 200'000;
    const auto target = make<FMemoryStream>();
    EXPECT_TRUE(
        FCompressionStream::compress(*memoryOf(sample().substr(0, 150'000)), target, nullptr, 0.5f, &watch));
    EXPECT_EQ(watch.reported, (std::vector<double>{65'536 / 2e5, 131'072 / 2e5, 0.75}));
    watch.reported.clear();
    target->rewind();
    EXPECT_TRUE(FCompressionStream::decompress(target, *make<FMemoryStream>(), nullptr, &watch, 100'000));
    EXPECT_EQ(watch.reported, (std::vector<double>{0.5, 0.75}));
    watch.reported.clear();
    watch.mostReports = 2;
    const auto source = memoryOf(sample());
    EXPECT_FALSE(FCompressionStream::compress(*source, make<FMemoryStream>(), nullptr, 0.5f, &watch));
    EXPECT_EQ(source->tell(), 131'072) << "the third piece is not read";
    watch.reported.clear();
    target->rewind();
    const auto half = make<FMemoryStream>();
    EXPECT_FALSE(FCompressionStream::decompress(target, *half, nullptr, &watch, 1000));
    EXPECT_EQ(half->size(), 2000);
    watch.all = 0;
    watch.reported.clear();
    target->rewind();
    EXPECT_TRUE(FCompressionStream::decompress(target, *half, nullptr, &watch));
    EXPECT_TRUE(watch.reported.empty()) << "nothing to divide by";
}

TEST(FCompressionStream, EstimatesFromTheFirstBytes) {
    const auto source = memoryOf("xx" + std::string(8192, 'a') + sample());
    source->seek(2, FStream::fromStart);
    const double ratio = FCompressionStream::estimateRatio(*source, nullptr, 0.5f);
    EXPECT_EQ(ratio, static_cast<double>(deflated(std::string(8192, 'a'))->size()) / 8192);
    EXPECT_EQ(source->tell(), 2);
    EXPECT_EQ(FCompressionStream::estimateRatio(*make<FMemoryStream>(), nullptr, 0.5f), 1.0);
    for (const int64_t failAt : {1, 2}) {
        ShakyStream broken(std::string(1000, 'a'));
        broken.failAt = failAt;
        EXPECT_EQ(FCompressionStream::estimateRatio(broken, nullptr, 0.5f), 1.0) << failAt;
    }
    FCompressionStream inflating(deflated("0123456789"));
    ASSERT_TRUE(inflating.beginDecompression());
    EXPECT_EQ(readUpTo(inflating, 4), "0123");
    FCompressionStream::estimateRatio(inflating, nullptr, 0.5f);
    EXPECT_EQ(readUpTo(inflating, 4), "4567") << "where it stood, not at its start";
    EXPECT_EQ(FCompressionStream::estimateRatio(*source, make<FCompressionEngine>(), 0.5f), 1.0);
    EXPECT_GT(FCompressionStream::estimateRatio(*memoryOf("x"), nullptr, 0.5f), 1.0) << "it grows";
}

TEST(FCompressionStream, GoesToMemoryWhenItsSizeIsKnown) {
    const auto toMemory = [](std::string_view bytes, int64_t size) {
        FCompressionStream stream(memoryOf(bytes));
        EXPECT_TRUE(stream.beginDecompression(size));
        return FCompressionStream::toMemory(&stream);
    };
    const auto compressed = deflated(sample());
    const auto size = static_cast<int64_t>(sample().size());
    const Ref<IBStream> memory = toMemory(compressed->bytes(), size);
    Ref<IMemoryStream> object;
    void* found = nullptr;
    ASSERT_EQ(memory->queryInterface(IMemoryStream::iid, &found), Result::ok);
    const auto stream = Ref<FMemoryStream>::adopt(static_cast<FMemoryStream*>(found));
    EXPECT_TRUE(stream->bytes() == sample());
    EXPECT_EQ(stream->tell(), 0);
    EXPECT_EQ(toMemory(compressed->bytes(), size + 1), nullptr) << "a byte is missing";
    const MemoryMeter meter;
    EXPECT_EQ(toMemory(compressed->bytes(), FCompressionStream::mostInMemory), nullptr);
    EXPECT_EQ(toMemory(compressed->bytes(), int64_t{4} << 30), nullptr);
    EXPECT_LT(meter.bytes(), 8 << 20) << "what the data are, not what they claim";
    FCompressionStream unknown(compressed);
    EXPECT_EQ(FCompressionStream::toMemory(&unknown), static_cast<IBStream*>(&unknown));
    EXPECT_EQ(FCompressionStream::toMemory(compressed.get()), static_cast<IBStream*>(compressed.get()));
    EXPECT_EQ(FCompressionStream::toMemory(nullptr), nullptr);
}

TEST(FCompressionStream, TellsWithoutMemory) {
    const auto compressed = deflated("some text");
    for (const bool isInflating : {false, true})
        failEachAllocation([&](FailingAllocation& allocation) {
            const auto source = isInflating ? memoryOf(compressed->bytes()) : memoryOf("some text");
            const auto target = make<FMemoryStream>();
            target->pad(1);
            target->rewind();
            const bool isDone = allocation.during([&] {
                return isInflating ? FCompressionStream::decompress(source, *target, nullptr)
                                   : FCompressionStream::compress(*source, target, nullptr, 0.5f);
            });
            EXPECT_EQ(isDone, !allocation.hasFailed());
        });
    const double whole = FCompressionStream::estimateRatio(*compressed, nullptr, 0.5f);
    failEachAllocation([&](FailingAllocation& allocation) {
        compressed->rewind();
        const double ratio =
            allocation.during([&] { return FCompressionStream::estimateRatio(*compressed, nullptr, 0.5f); });
        EXPECT_TRUE(ratio == whole || (ratio == 1.0 && allocation.hasFailed())) << ratio;
    });
    failEachAllocation([&](FailingAllocation& allocation) {
        compressed->rewind();
        FCompressionStream stream(compressed);
        stream.beginDecompression(9);
        const Ref<IBStream> memory = allocation.during([&] { return FCompressionStream::toMemory(&stream); });
        EXPECT_TRUE(memory || allocation.hasFailed());
        char text[9] = {};
        EXPECT_TRUE(!memory || memory->read(text, 9, nullptr) == Result::ok);
        EXPECT_EQ(std::string_view(text, 9) == "some text", memory != nullptr);
    });
}

TEST(FCompressionStream, WritesNothingBehindAFlushThatFailed) {
    const auto target = make<ShakyStream>();
    FCompressionStream stream(target);
    ASSERT_TRUE(stream.beginCompression(0.5f));
    EXPECT_EQ(stream.write("lost", 4), 4);
    target->failAt = 1;
    stream.flush();
    EXPECT_FALSE(stream.isValid());
    EXPECT_EQ(stream.write("more", 4), -1) << "there would be a hole before it";
    EXPECT_FALSE(stream.endCompression());
    EXPECT_EQ(target->text, "");
    EXPECT_TRUE(stream.beginCompression(0.5f));
    EXPECT_TRUE(stream.isValid());
}

TEST(FCompressionStream, TellsWhetherItCanBeReadOn) {
    const auto compressed = deflated("0123456789");
    FCompressionStream cut(memoryOf(compressed->bytes().substr(0, 12)));
    ASSERT_TRUE(cut.beginDecompression());
    readUpTo(cut, 20);
    EXPECT_FALSE(cut.isValid());
    FMemoryStream copy;
    cut.rewind();
    EXPECT_FALSE(copy.copyAll(cut));

    const auto shaky = make<ShakyStream>(std::string(compressed->bytes()));
    FCompressionStream stream(shaky);
    ASSERT_TRUE(stream.beginDecompression(10));
    for (const int64_t failAt : {1, 2}) {
        SCOPED_TRACE(failAt);
        EXPECT_EQ(readUpTo(stream, 20), "0123456789");
        EXPECT_TRUE(stream.isValid());
        shaky->failAt = failAt;
        EXPECT_EQ(stream.seek(0, FStream::fromStart), -1);
        EXPECT_FALSE(stream.isValid()) << "what follows is no end";
        char byte = 0;
        EXPECT_EQ(stream.read(&byte, 1), -1);
        shaky->rewind();
        ASSERT_TRUE(stream.beginDecompression(10));
    }
    EXPECT_EQ(stream.seek(0, 3), -1);
    EXPECT_EQ(FCompressionStream::toMemory(&stream, 9), nullptr) << "more than may be taken";
    EXPECT_NE(FCompressionStream::toMemory(&stream, 10), nullptr);
    const auto target = deflated("earlier");
    FCompressionStream writing(target);
    ASSERT_TRUE(writing.beginDecompression());
    EXPECT_EQ(readUpTo(writing, 1), "e");
    const int64_t start = target->tell();
    ASSERT_TRUE(writing.beginCompression(0.5f));
    expectSeeks(writing, {{-1, FStream::fromHere, 0}});
    EXPECT_EQ(writing.write("abc", 3), 3);
    EXPECT_EQ(writing.seek(1, FStream::fromStart), 0) << "it tells the start, and stays";
    EXPECT_EQ(writing.tell(), 3);
    EXPECT_EQ(target->tell(), start) << "also where it was read before";
}

} // namespace
} // namespace qorl
