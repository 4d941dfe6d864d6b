#include "persistence/streams/FBlockStreamReader.h"
#include "persistence/streams/FBufferStream.h"
#include "persistence/streams/FBufferedStream.h"
#include "persistence/streams/FCompressionStream.h"
#include "persistence/streams/FFileStream.h"
#include "persistence/streams/FIBStream.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/streams/FStreamCounter.h"
#include "persistence/streams/FStreamProxy.h"
#include "persistence/streams/IStreamProxy.h"
#include "persistence/urls/FUrl.h"
#include "support/ShakyStream.h"
#include "support/StreamBytes.h"

#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>

namespace qorl {
namespace {

constexpr int64_t most = std::numeric_limits<int64_t>::max();
constexpr int64_t least = std::numeric_limits<int64_t>::min();
constexpr int64_t unlimited = FStreamProxy::unlimited;

/// The result of a read and the bytes that came.
std::string readOf(FStream& stream, int64_t count) {
    std::string bytes(static_cast<size_t>(std::max<int64_t>(count, 0)), '?');
    const int64_t got = stream.read(bytes.data(), count);
    return std::to_string(got) + ' ' + bytes.substr(0, static_cast<size_t>(std::max<int64_t>(got, 0)));
}

TEST(FStreamProxy, NeverReadsPastItsWindow) {
    struct Row {
        int64_t length, place, count;
        const char* expected;
    };
    for (const Row& row : {Row{10, 0, 4, "4 5678"}, Row{4, 3, 4, "1 8"}, Row{4, 4, 1, "0 "},
                           Row{0, 0, 1, "0 "}, Row{unlimited, 7, 5, "1 d"}, Row{unlimited, 8, 5, "0 "},
                           Row{most, 6, 100, "2 cd"}, Row{4, 1, 0, "0 "}, Row{4, 1, -1, "-1 "}}) {
        SCOPED_TRACE(::testing::Message() << "length " << row.length << " place " << row.place);
        FStreamProxy proxy(make<FMemoryStream>(std::string_view("012345678abcd")), 5, row.length, 0);
        proxy.seek(row.place, FStream::fromStart);
        EXPECT_EQ(readOf(proxy, row.count), row.expected);
    }
}

TEST(FStreamProxy, CutsItsPlaceToTheWindow) {
    const auto inner = make<FMemoryStream>(std::string_view("0123456789"));
    FStreamProxy limited(inner, 3, 5, 0);
    expectSeeks(limited, {{2, 0, 2}, {2, 1, 4}, {2, 1, 5}, {-1, 0, 0}, {-2, 2, 3}});
    expectSeeks(limited, {{9, 2, 5}, {-9, 2, 0}, {most, 0, 5}, {most, 1, 5}, {least, 1, 0}});
    expectSeeks(limited, {{most, 2, 5}, {0, 3, -1}});
    FStreamProxy open(inner, 3, unlimited, 0);
    expectSeeks(open, {{100, 0, 100}, {-1, 1, 99}, {0, 2, 7}, {-2, 2, 5}, {-100, 2, 0}, {most, 1, most - 3}});
    EXPECT_EQ(readOf(open, 1), "0 ");
    EXPECT_EQ(open.tell(), 7) << "as the inner stream tells";
    FStreamProxy strict(make<ShakyStream>("0123456789"), 3, unlimited, 0);
    expectSeeks(strict, {{-100, 2, 0}, {5, 2, 12}, {least, 2, 0}, {most, 2, most - 3}});
    EXPECT_EQ(FStreamProxy(make<FFileStream>(), 0, unlimited, 0).seek(0, FStream::fromEnd), -1) << "closed";
    int64_t size = 0;
    EXPECT_EQ(open.getStreamSize(size), Result::ok);
    EXPECT_EQ(size, 7);
    EXPECT_EQ(limited.getStreamSize(size), Result::ok);
    EXPECT_EQ(size, 5);
    EXPECT_EQ(limited.setStreamSize(3), Result::notImplemented);
    FStreamProxy hostile(inner, least, most, 0);
    EXPECT_EQ(hostile.start(), 0);
    EXPECT_EQ(FStreamProxy(inner, most, most, 0).length(), 0);
}

TEST(FStreamProxy, SharesItsInnerStreamWithOthers) {
    const auto inner = make<FMemoryStream>();
    inner->write("aaaabbbbcccc", 12);
    FStreamProxy first(inner, 0, 4, 0);
    FStreamProxy second(inner, 4, 4, 0);
    EXPECT_EQ(readOf(first, 2), "2 aa");
    EXPECT_EQ(readOf(second, 3), "3 bbb");
    EXPECT_EQ(first.write("XY", 2), 2);
    EXPECT_EQ(second.write("ZZZ", 3), 1) << "no further than its window";
    EXPECT_EQ(first.write("!", 1), 0);
    EXPECT_EQ(inner->bytes(), "aaXYbbbZcccc");
    first.rewind();
    EXPECT_EQ(readOf(first, 9), "4 aaXY");
    FStreamProxy open(inner, 12, unlimited, 0);
    EXPECT_EQ(open.write("more", 4), 4);
    EXPECT_EQ(inner->size(), 16);
}

TEST(FStreamProxy, FailsWithItsInnerStream) {
    for (int64_t failAt = 1; failAt <= 2; ++failAt) {
        SCOPED_TRACE(failAt);
        const auto inner = make<ShakyStream>("0123456789");
        FStreamProxy proxy(inner, 2, 6, 0);
        inner->failAt = failAt;
        EXPECT_EQ(readOf(proxy, 2), "-1 ");
        EXPECT_EQ(readOf(proxy, 2), "2 23") << "nothing was skipped";
        inner->failAt = failAt;
        EXPECT_EQ(proxy.write("xx", 2), -1);
    }
    FStreamProxy none;
    EXPECT_FALSE(none.isValid());
    EXPECT_EQ(readOf(none, 1), "-1 ");
    EXPECT_EQ(none.write("x", 1), -1);
    EXPECT_EQ(none.seek(0, FStream::fromStart), -1);
    none.flush();
    int64_t size = 0;
    EXPECT_EQ(none.getStreamSize(size), Result::failure);
}

TEST(FStreamCounter, CountsAndStoresNothing) {
    FStreamCounter counter;
    EXPECT_EQ(counter.write(nullptr, 10), 10);
    EXPECT_EQ(counter.tell(), 10);
    EXPECT_EQ(readOf(counter, 5), "0 ");
    expectSeeks(counter, {{4, 2, 6}, {2, 0, 2}, {3, 1, 5}, {-9, 1, 0}, {11, 2, 0}, {0, 3, -1}});
    EXPECT_EQ(counter.length(), 10);
    EXPECT_EQ(counter.seek(-4, FStream::fromEnd), 14);
    EXPECT_EQ(counter.length(), 14) << "it grows to the new place";
    EXPECT_EQ(counter.write("abc", -1), 0);
    EXPECT_EQ(counter.seek(least, FStream::fromEnd), most);
    EXPECT_EQ(counter.write(nullptr, 1), 0) << "there is no place left";
    counter.rewind();
    EXPECT_EQ(counter.length(), 0);
    EXPECT_EQ(counter.tell(), 0);
}

TEST(FBufferStream, MovesThroughTheRoomOfItsBuffer) {
    const auto buffer = make<CmBuffer>(0, 8);
    FBufferStream stream(buffer);
    EXPECT_EQ(stream.write("0123456789", 10), 10);
    EXPECT_EQ(buffer->bytes(), "0123456789");
    EXPECT_EQ(stream.tell(), 10);
    EXPECT_EQ(stream.seek(4, FStream::fromEnd), 12) << "back from the capacity";
    EXPECT_EQ(readOf(stream, 100), std::string("4 \0\0\0\0", 6));
    EXPECT_EQ(readOf(stream, 100), "0 ");
    EXPECT_EQ(stream.tell(), 0) << "begins anew";
    EXPECT_EQ(readOf(stream, 3), "3 012");
    expectSeeks(stream, {{20, 0, 20}, {-2, 1, 18}, {-30, 1, 0}, {100, 2, 0}, {0, 2, 24}, {0, 5, -1}});
    EXPECT_EQ(buffer->capacity(), 24) << "grown to hold the place";
    expectSeeks(stream, {{most, 0, -1}, {most, 1, -1}, {least, 2, -1}, {-6, 2, 30}});
    EXPECT_EQ(stream.write("x", -1), 0);
    EXPECT_EQ(stream.write("x", most), 0);
    stream.rewind();
    EXPECT_EQ(buffer->used(), 0);
    FBufferStream none(nullptr);
    EXPECT_EQ(none.write("x", 1), 0);
    EXPECT_EQ(readOf(none, 1), "0 ");
    EXPECT_EQ(none.seek(0, 0), -1);
}

TEST(FIBStream, ForwardsToTheBinaryLayer) {
    FMemoryStream target;
    target.setByteOrder(1);
    FIBStream stream(target);
    EXPECT_TRUE(stream.writeInt16(0x0102));
    EXPECT_EQ(target.bytes(), "\1\2");
    EXPECT_EQ(stream.tell(), 2);
    stream.rewind();
    EXPECT_EQ(target.tell(), 0);
    EXPECT_EQ(readOf(stream, 9), "2 \1\2");
}

/// Another module's stream, which may answer anything.
class Foreign : public IBStream {
public:
    Result queryInterface(const InterfaceId&, void**) override { return Result::noInterface; }
    uint32_t addRef() override { return ++count; }
    uint32_t release() override { return --count; }
    Result read(void* buffer, int64_t asked, int64_t* got) override {
        std::memset(buffer, 'f', static_cast<size_t>(std::clamp<int64_t>(answer, 0, asked)));
        *got = answer;
        return result;
    }
    Result write(const void*, int64_t, int64_t* got) override {
        *got = answer;
        return result;
    }
    Result seek(int64_t, int32_t, int64_t* place) override {
        *place = answer;
        return result;
    }
    Result tell(int64_t* place) override {
        *place = answer;
        return result;
    }

    uint32_t count = 1;
    int64_t answer = 0;
    Result result = Result::ok;
};

TEST(IStreamProxy, TrustsNoCountFromOutside) {
    struct Row {
        int64_t answer;
        Result result;
        int64_t moved, place;
    };
    Foreign foreign;
    for (const Row& row : {Row{3, Result::ok, 3, 3}, Row{2, Result::no, 2, -1}, Row{0, Result::no, 0, -1},
                           Row{0, Result::failure, -1, -1}, Row{4, Result::ok, -1, 4},
                           Row{-5, Result::ok, -1, -5}, Row{most, Result::ok, -1, most}}) {
        SCOPED_TRACE(row.answer);
        foreign.answer = row.answer;
        foreign.result = row.result;
        FPluginStreamProxy proxy(retain<IBStream>(&foreign));
        char buffer[3];
        EXPECT_EQ(proxy.read(buffer, 3), row.moved);
        EXPECT_EQ(proxy.write(buffer, 3), row.moved);
        EXPECT_EQ(proxy.seek(0, FStream::fromStart), row.place);
        EXPECT_EQ(proxy.tell(), row.place);
        EXPECT_EQ(proxy.read(buffer, 0), 0);
        EXPECT_EQ(proxy.read(buffer, -1), 0);
    }
    EXPECT_EQ(foreign.count, 1u) << "let go";
    IStreamProxy none(nullptr);
    EXPECT_FALSE(none.isValid());
    EXPECT_EQ(readOf(none, 1), "-1 ");
}

TEST(FBlockStreamReader, ReadsAsItsInnerStreamWould) {
    std::string text;
    for (int i = 0; i < 500; ++i)
        text += static_cast<char>('a' + i * 7 % 26);
    for (const int32_t blockSize : {1, 3, 16, 100, 4096}) {
        for (const int64_t atOnce : {int64_t{1}, int64_t{5}, most}) {
            SCOPED_TRACE(::testing::Message() << "block " << blockSize << " at once " << atOnce);
            const auto inner = make<ShakyStream>(text);
            inner->atOnce = atOnce;
            inner->place = 10;
            FBlockStreamReader reader(inner, blockSize);
            std::mt19937 random(7);
            size_t place = 10;
            for (int step = 0; step < 1000; ++step) {
                const size_t count = random() % 40;
                const std::string expected = place < text.size() ? text.substr(place, count) : "";
                ASSERT_EQ(readOf(reader, static_cast<int64_t>(count)),
                          std::to_string(expected.size()) + ' ' + expected);
                place += expected.size();
                const int64_t move = static_cast<int64_t>(random() % 60) - 30;
                const int64_t target = static_cast<int64_t>(place) + move;
                const bool isAllowed = target >= 0;
                const bool isAbsolute = random() % 2 == 0;
                ASSERT_EQ(reader.seek(isAbsolute ? target : move, isAbsolute ? 0 : 1),
                          isAllowed ? target : -1);
                place = isAllowed ? static_cast<size_t>(target) : place;
                ASSERT_EQ(reader.tell(), static_cast<int64_t>(place));
                if (place > text.size())
                    place = static_cast<size_t>(reader.seek(0, 0));
            }
        }
    }
}

TEST(FBlockStreamReader, MovesWithinItsBlockWithoutItsInnerStream) {
    const auto inner = make<ShakyStream>("0123456789abcdef");
    FBlockStreamReader reader(inner, 8);
    EXPECT_EQ(readOf(reader, 3), "3 012");
    const int64_t calls = inner->calls;
    EXPECT_EQ(reader.seek(5, FStream::fromHere), 8);
    EXPECT_EQ(reader.seek(0, FStream::fromStart), 0);
    EXPECT_EQ(inner->calls, calls);
    EXPECT_EQ(readOf(reader, 12), "12 0123456789ab");
    EXPECT_EQ(inner->calls, calls + 1) << "one block more";
    EXPECT_EQ(reader.seek(0, FStream::fromEnd), -1);
    EXPECT_EQ(reader.seek(most, FStream::fromHere), -1);
    EXPECT_EQ(reader.write("x", 1), 0);
    inner->failAt = 1;
    EXPECT_EQ(reader.seek(1, FStream::fromStart), -1);
    EXPECT_TRUE(reader.isValid());
    EXPECT_EQ(readOf(reader, 2), "2 cd") << "as if nothing had been asked";
    inner->place = 5;
    reader.flush();
    EXPECT_EQ(reader.tell(), 5) << "where the inner stream stands";
    EXPECT_EQ(readOf(reader, 2), "2 56");
    reader.rewind();
    EXPECT_EQ(readOf(reader, 1), "1 0");
    reader.rewind();
    EXPECT_EQ(readOf(reader, 16), "16 0123456789abcdef") << "whole blocks go straight to the caller";
    EXPECT_EQ(reader.seek(-1, FStream::fromHere), 15);
    EXPECT_EQ(readOf(reader, 5), "1 f") << "and are not in the block";
    EXPECT_EQ(readOf(reader, 5), "0 ");
    EXPECT_TRUE(reader.isValid()) << "the end";
    reader.rewind();
    inner->failAt = 1;
    EXPECT_EQ(readOf(reader, 5), "0 ");
    EXPECT_FALSE(reader.isValid()) << "no end";
    const auto compressed = make<FMemoryStream>();
    EXPECT_TRUE(FCompressionStream::compress(*memoryOf("0123456789"), compressed, nullptr, 0.5f));
    compressed->rewind();
    const auto inflating = make<FCompressionStream>(compressed);
    ASSERT_TRUE(inflating->beginDecompression());
    FBlockStreamReader forward(inflating, 4);
    EXPECT_EQ(readOf(forward, 2), "2 01");
    EXPECT_EQ(forward.seek(100, FStream::fromStart), -1);
    EXPECT_EQ(readOf(forward, 9), "8 23456789") << "one that only runs forward is back where it was";
    const auto room = make<CmBuffer>("01234567", 8, 8);
    FBlockStreamReader once(make<FBufferStream>(room), 4);
    once.rewind();
    EXPECT_EQ(readOf(once, 9), "8 01234567");
    EXPECT_EQ(readOf(once, 9), "0 ") << "though the inner stream has begun anew";
}

TEST(WrapperStreams, TakeOverFromWhatTheyWrap) {
    const auto inner = make<FMemoryStream>();
    inner->setByteOrder(1);
    inner->setUrl(make<FUrl>().get());
    const Ref<FStream> wrappers[] = {make<FStreamProxy>(inner, 0, unlimited, 0),
                                     make<IStreamProxy>(Ref<IBStream>{inner}),
                                     make<FBlockStreamReader>(inner, 4),
                                     make<FBufferedStream>(inner, 4, true), make<FCompressionStream>(inner)};
    for (const auto& wrapper : wrappers) {
        EXPECT_EQ(wrapper->byteOrder(), 1) << wrapper->getClassName();
        EXPECT_EQ(wrapper->url(), inner->url()) << wrapper->getClassName();
    }
    EXPECT_EQ(FIBStream(*inner).url(), inner->url());
}

TEST(WrapperStreams, HandOnWhatTheyAreToldToFlush) {
    const auto inner = make<FMemoryStream>();
    const auto blocks = make<FBufferedStream>(inner, 4, true);
    FIBStream binary(*blocks);
    IStreamProxy proxy(Ref<IBStream>{blocks});
    FStreamProxy window(blocks, 0, unlimited, 0);
    for (FStream* stream : std::initializer_list<FStream*>{&binary, &proxy, &window}) {
        inner->setStreamSize(0);
        stream->rewind();
        EXPECT_EQ(stream->tell(), 0);
        EXPECT_TRUE(stream->writeInt8('a'));
        stream->flush();
        EXPECT_EQ(inner->size(), 4) << "a block";
    }
}

TEST(WrapperStreams, AreAsValidAsWhatTheyWrap) {
    char memory[2];
    const auto inner = make<FMemoryStream>(memory, 2);
    FIBStream binary(*inner);
    IStreamProxy proxy(Ref<IBStream>{inner});
    FStreamProxy window(inner, 0, unlimited, 0);
    FBlockStreamReader reader(inner, 4);
    for (const bool isValid : {true, false}) {
        for (const FStream* stream : std::initializer_list<const FStream*>{&binary, &proxy, &window, &reader})
            EXPECT_EQ(stream->isValid(), isValid);
        inner->write("abc", 3);
    }
    Ref<ISizeableStream> sizeable;
    ASSERT_EQ(proxy.queryInterface(ISizeableStream::iid, sizeable.out()), Result::ok);
    int64_t size = 0;
    EXPECT_EQ(sizeable->getStreamSize(size), Result::ok);
    EXPECT_EQ(size, 2);
    IStreamProxy plain(Ref<IBStream>{make<ShakyStream>()});
    EXPECT_NE(plain.queryInterface(ISizeableStream::iid, sizeable.out()), Result::ok);
}

} // namespace
} // namespace qorl
