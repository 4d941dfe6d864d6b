#include "foundation/Cast.h"
#include "persistence/files/FNFileSystem.h"
#include "persistence/streams/FBlockStreamReader.h"
#include "persistence/streams/FCompressionStream.h"
#include "persistence/streams/FFileStream.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/streams/FReadAheadStream.h"
#include "support/FailingAllocation.h"
#include "support/FailingDisk.h"
#include "support/ProgressRecorder.h"
#include "support/SettingsFolder.h"
#include "support/ShakyStream.h"
#include "support/StreamBytes.h"

#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>

namespace qorl {
namespace {

constexpr int64_t most = std::numeric_limits<int64_t>::max();
constexpr int64_t least = std::numeric_limits<int64_t>::min();

enum class Form { plain, readAhead };

Ref<FBufferedStream> buffered(Form form, Ref<FStream> inner, int32_t blockSize, bool writable = true) {
    if (form == Form::readAhead)
        return make<FReadAheadStream>(std::move(inner), blockSize, writable);
    return make<FBufferedStream>(std::move(inner), blockSize, writable);
}

Ref<FStream> newFile(const SettingsFolder& folder, uint32_t mode = FFileStream::writeAccess) {
    return FNFileSystem::instance()->createFile(FNPath(std::string_view(folder / "out.bin")), mode);
}

/// The bytes that a stream should hold, and where it should stand.
struct Model {
    std::string read(size_t count) {
        std::string taken = place < text.size() ? text.substr(place, count) : "";
        place += taken.size();
        return taken;
    }
    void write(const std::string& bytes) {
        if (bytes.empty())
            return;
        text.resize(std::max(text.size(), place + bytes.size()));
        text.replace(place, bytes.size(), bytes);
        place += bytes.size();
    }

    std::string text;
    size_t place = 0;
};

void expectAsModel(Form form, int32_t blockSize, uint32_t seed) {
    SCOPED_TRACE(::testing::Message() << (form == Form::plain ? "plain" : "read ahead") << " block "
                                      << blockSize << " seed " << seed);
    std::mt19937 random(seed);
    const auto upTo = [&](uint32_t limit) { return static_cast<uint32_t>(random() % (limit + 1)); };
    Model model;
    for (uint32_t i = upTo(60); i > 0; --i)
        model.text += static_cast<char>('a' + upTo(25));
    const auto inner = make<FMemoryStream>();
    inner->write(model.text.data(), static_cast<int64_t>(model.text.size()));
    model.place = upTo(static_cast<uint32_t>(model.text.size()));
    inner->seek(static_cast<int64_t>(model.place), FStream::fromStart);
    auto stream = buffered(form, inner, blockSize);
    EXPECT_EQ(inner->tell(), static_cast<int64_t>(model.place)) << "left as it was";
    for (int step = 0; step < 3000; ++step) {
        switch (upTo(9)) {
        case 0:
        case 1:
        case 2: ASSERT_EQ(readUpTo(*stream, 20), model.read(20)) << "step " << step; break;
        case 3:
        case 4: {
            const std::string bytes(upTo(24), static_cast<char>('A' + step % 26));
            ASSERT_EQ(stream->write(bytes.data(), static_cast<int64_t>(bytes.size())),
                      static_cast<int64_t>(bytes.size()));
            model.write(bytes);
            break;
        }
        case 5: stream->flush(); break;
        case 6:
            model.place =
                static_cast<size_t>(stream->seek(-static_cast<int64_t>(upTo(30)), FStream::fromEnd));
            break;
        case 7: model.place = static_cast<size_t>(stream->seek(upTo(40), FStream::fromHere)); break;
        default:
            model.place = upTo(static_cast<uint32_t>(model.text.size()) + 30);
            ASSERT_EQ(stream->seek(static_cast<int64_t>(model.place), FStream::fromStart),
                      static_cast<int64_t>(model.place));
        }
        ASSERT_EQ(stream->tell(), static_cast<int64_t>(model.place)) << "step " << step;
        int64_t size = -1;
        ASSERT_EQ(stream->getStreamSize(size), Result::ok);
        ASSERT_EQ(size, static_cast<int64_t>(model.text.size())) << "step " << step;
    }
    EXPECT_TRUE(stream->isValid());
    stream.reset();
    EXPECT_EQ(inner->bytes(), model.text) << "cut to the exact length";
}

TEST(FBufferedStream, ReadsAndWritesAsItsInnerStreamWould) {
    for (const Form form : {Form::plain, Form::readAhead})
        for (const int32_t blockSize : {1, 2, 7, 16, 64, 4096})
            for (uint32_t seed = 1; seed <= 3; ++seed)
                expectAsModel(form, blockSize, seed);
}

TEST(FBufferedStream, KeepsWithinTheDataUnlessItIsWritable) {
    const auto inner = make<FMemoryStream>(std::string_view("0123456789"));
    const auto stream = buffered(Form::plain, inner, 4, false);
    EXPECT_EQ(inner->tell(), 0) << "left as it was when it was asked for its end";
    constexpr int32_t start = FStream::fromStart;
    constexpr int32_t here = FStream::fromHere;
    constexpr int32_t end = FStream::fromEnd;
    expectSeeks(*stream, {{4, start, 4}, {3, here, 7}, {-3, end, 7}, {100, start, 10}, {most, here, 10}});
    expectSeeks(*stream, {{-100, here, 0}, {least, end, 0}, {-1, start, 0}, {most, end, 10}, {0, 3, -1}});
    expectSeeks(*stream, {{0, -1, -1}});
    EXPECT_EQ(stream->tell(), 10);
    EXPECT_EQ(stream->write("x", 1), -1);
    EXPECT_EQ(readUpTo(*stream, 0), "");
    stream->rewind();
    EXPECT_EQ(readUpTo(*stream, 100), "0123456789");
    EXPECT_EQ(stream->setStreamSize(3), Result::failure);

    const auto writable = buffered(Form::plain, make<FMemoryStream>(), 4);
    EXPECT_EQ(writable->seek(most, FStream::fromStart), most);
    EXPECT_EQ(writable->seek(1, FStream::fromHere), most);
    EXPECT_EQ(writable->write("x", 1), -1) << "there is no place for it";
    EXPECT_FALSE(writable->isValid());
}

TEST(FBufferedStream, WritesWholeBlocksAndCutsAtTheEnd) {
    const auto inner = make<FMemoryStream>();
    auto stream = buffered(Form::plain, inner, 8);
    stream->seek(11, FStream::fromStart);
    EXPECT_EQ(stream->write("five", 4), 4);
    EXPECT_EQ(inner->size(), 0) << "not before the block is left";
    EXPECT_EQ(stream->write("!", 1), 1);
    EXPECT_EQ(inner->size(), 16);
    EXPECT_EQ(stream->write("x", 1), 1);
    stream->flush();
    EXPECT_EQ(inner->size(), 24) << "a whole block";
    stream.reset();
    EXPECT_EQ(inner->bytes(), std::string("\0\0\0\0\0\0\0\0\0\0\0five!x", 17));
}

TEST(FBufferedStream, LeavesAFileExactlyAsLongAsItWasWritten) {
    const SettingsFolder folder;
    constexpr uint32_t mode = FFileStream::readAccess | FFileStream::writeAccess | FFileStream::unbuffered;
    const Ref<FStream> opened = newFile(folder, mode);
    auto* file = cast<FFileStream>(opened.get());
    ASSERT_NE(file, nullptr);
    {
        const auto stream = FBufferedStream::openBuffered(opened, 1000);
        EXPECT_EQ(stream->url(), file->url());
        EXPECT_EQ(stream->write("12345", 5), 5);
        stream->flush();
    }
    EXPECT_EQ(file->getLength(), 5);
    {
        const auto stream = FBufferedStream::openBuffered(opened, 4096);
        stream->seek(3, FStream::fromStart);
        EXPECT_EQ(readUpTo(*stream, 10), "45");
        file->setLength(2);
    }
    EXPECT_EQ(file->getLength(), 2) << "who only reads cuts nothing and adds nothing";
}

TEST(FBufferedStream, TellsByTheFileThatItCouldNotBeCut) {
    const SettingsFolder folder;
    const Ref<FStream> file = newFile(folder);
    const auto outcome = FailingDisk::run(2, DiskFault::error, [&] {
        auto stream = buffered(Form::plain, file, 8);
        stream->write("12345", 5);
        stream->flush();
        const bool isWritten = stream->isValid();
        stream.reset();
        return isWritten && !file->isValid();
    });
    EXPECT_TRUE(outcome.isMet);
    EXPECT_TRUE(outcome.answer);
    const auto sized = FailingDisk::run(1, DiskFault::error, [&] {
        const auto stream = buffered(Form::plain, file, 8);
        stream->write("12345", 5);
        return stream->setStreamSize(3) == Result::ok;
    });
    EXPECT_TRUE(sized.isMet);
    EXPECT_FALSE(sized.answer) << "the block got lost";
}

TEST(FBufferedStream, ReadsUnbufferedFilesToTheirLastByte) {
    const SettingsFolder folder;
    std::string text;
    for (int i = 0; text.size() < 10'000; ++i)
        text += std::to_string(i) + ' ';
    folder.write("file.bin", text);
    FNPath path(std::string_view(folder / "file.bin"));
    const auto file =
        FNFileSystem::instance()->openFile(path, FFileStream::readAccess | FFileStream::unbuffered);
    const auto stream = FBufferedStream::openBuffered(file, 0);
    ASSERT_NE(stream, nullptr);
    EXPECT_TRUE(readUpTo(*stream, 20'000) == text);
    stream->seek(5000, FStream::fromStart);
    EXPECT_EQ(readUpTo(*stream, 10), text.substr(5000, 10));
}

TEST(FBufferedStream, FitsItsBlocksToTheSectorsOfAFile) {
    struct Row {
        int32_t sector, asked, used;
    };
    for (const Row& row : {Row{4096, 1000, 4096}, Row{4096, 10000, 4096}, Row{4096, 8192, 8192},
                           Row{4096, 4096, 4096}, Row{512, 0, 512}, Row{0, 1000, 1000}, Row{0, -1, 4096}}) {
        SCOPED_TRACE(::testing::Message() << row.sector << ' ' << row.asked);
        const auto file = make<FFileStream>(platform::File(), FFileStream::readAccess, row.sector);
        EXPECT_EQ(FBufferedStream::openBuffered(file, row.asked)->blockSize(), row.used);
    }
    EXPECT_EQ(FBufferedStream::openBuffered(make<FMemoryStream>(), 1000)->blockSize(), 1000);
    EXPECT_EQ(FBufferedStream::openBuffered(nullptr, 4096), nullptr);
}

TEST(FBufferedStream, LosesNothingSilentlyWhenItsInnerStreamFails) {
    for (const Form form : {Form::plain, Form::readAhead}) {
        for (int64_t failAt = 1; failAt <= 20; ++failAt) {
            SCOPED_TRACE(::testing::Message() << "call " << failAt);
            const auto inner = make<ShakyStream>("abcdefghijklmnopqrst");
            auto stream = buffered(form, inner, 8);
            inner->failAt = failAt;
            bool isTold = stream->seek(2, FStream::fromStart) != 2;
            isTold |= stream->write("12", 2) != 2;
            isTold |= stream->write("345678", 6) != 6;
            stream->seek(17, FStream::fromStart);
            isTold |= stream->write("Z", 1) != 1;
            stream->flush();
            isTold |= !stream->isValid();
            const bool hasFailed = inner->failAt <= 0;
            EXPECT_EQ(isTold, hasFailed);
            if (!stream->isValid()) {
                EXPECT_EQ(stream->write("more", 4), -1);
            }
            stream.reset();
            if (!hasFailed) {
                EXPECT_EQ(inner->text.substr(0, 20), "ab12345678klmnopqZst");
            }
        }
    }
    const auto slow = make<ShakyStream>("abcdefghij");
    slow->atOnce = 1;
    EXPECT_EQ(readUpTo(*buffered(Form::plain, slow, 4, false), 9), "abcdefghi") << "byte by byte";
    slow->failAt = 5;
    slow->place = 0;
    const auto failing = buffered(Form::plain, slow, 4, false);
    char byte = 0;
    EXPECT_EQ(failing->read(&byte, 1), 1) << "what came";
    const auto shortOf = make<ShakyStream>();
    shortOf->room = 7;
    const auto full = buffered(Form::plain, shortOf, 4);
    EXPECT_EQ(full->write("1234567", 7), 7);
    full->flush();
    EXPECT_FALSE(full->isValid()) << "a block that does not fit whole";
}

TEST(FBufferedStream, DoesNothingWithoutABlock) {
    failEachAllocation([](FailingAllocation& allocation) {
        const auto inner = make<FMemoryStream>(std::string_view("abc"));
        const auto stream = allocation.during([&] { return FBufferedStream::openBuffered(inner, 16); });
        if (!stream || !stream->isValid()) {
            EXPECT_TRUE(allocation.hasFailed());
            char byte = 0;
            EXPECT_EQ(stream ? stream->read(&byte, 1) : -1, -1);
            EXPECT_EQ(stream ? stream->write(&byte, 1) : -1, -1);
        }
        EXPECT_EQ(inner->bytes(), "abc");
    });
    FBufferedStream none(nullptr, 16, true);
    EXPECT_FALSE(none.isValid());
    EXPECT_EQ(none.write("x", 1), -1);
    none.flush();
    int64_t size = 0;
    EXPECT_EQ(none.getStreamSize(size), Result::failure);
}

TEST(FBufferedStream, EndsWritingAtANegativeCount) {
    const auto inner = make<FMemoryStream>();
    const auto stream = buffered(Form::plain, inner, 4);
    EXPECT_EQ(stream->write("a", 1), 1);
    EXPECT_EQ(stream->write("a", -1), -1);
    EXPECT_FALSE(stream->isValid());
    EXPECT_EQ(stream->write("a", 1), -1);
    stream->rewind();
    EXPECT_EQ(readUpTo(*stream, 5), "a") << "reading goes on";
}

TEST(FBufferedStream, AsksItsMonitorFirst) {
    const auto inner = make<FMemoryStream>(std::string_view("0123456789"));
    const auto stream = buffered(Form::plain, inner, 4, true);
    ProgressRecorder monitor;
    stream->setProgress(&monitor);
    stream->setMonitorThreshold(3);
    EXPECT_EQ(readUpTo(*stream, 3), "012");
    EXPECT_EQ(monitor.place, 0) << "not more than the threshold";
    EXPECT_EQ(readUpTo(*stream, 1), "3");
    EXPECT_EQ(monitor.place, 4);
    stream->seek(-3, FStream::fromHere);
    EXPECT_EQ(monitor.place, 4);
    stream->rewind();
    EXPECT_EQ(monitor.place, 0);
    monitor.cancelAt = 0;
    EXPECT_EQ(readUpTo(*stream, 5), "");
    char byte = 0;
    EXPECT_EQ(stream->read(&byte, 1), -1);
    EXPECT_EQ(stream->write("x", 1), -1);
    EXPECT_EQ(monitor.asked, (std::vector<int64_t>{3, 1, 5, 1, 1}));
    EXPECT_TRUE(stream->isValid());
}

TEST(FReadAheadStream, KeepsTheLastTwoBlocks) {
    const auto inner = make<ShakyStream>("aaaabbbbcccc");
    const auto stream = buffered(Form::readAhead, inner, 4, false);
    const auto readAt = [&](int64_t place) {
        stream->seek(place, FStream::fromStart);
        return readUpTo(*stream, 2);
    };
    EXPECT_EQ(readAt(1) + readAt(9), "aacc");
    const int64_t calls = inner->calls;
    EXPECT_EQ(readAt(2) + readAt(8) + readAt(0) + readAt(10), "aaccaacc");
    EXPECT_EQ(inner->calls, calls) << "both are kept";
    EXPECT_EQ(readAt(4), "bb");
    EXPECT_GT(inner->calls, calls);
    const int64_t after = inner->calls;
    EXPECT_EQ(readAt(8), "cc") << "the one before is still there";
    EXPECT_EQ(inner->calls, after);
}

TEST(StreamBufferPool, HandsOutWhatCameBack) {
    const auto pool = make<StreamBufferPool>();
    Ref<CmBuffer> block = pool->take(100);
    EXPECT_EQ(block->capacity(), 100);
    block->append("left over", 9);
    const CmBuffer* const first = block.get();
    pool->giveBack(std::move(block));
    EXPECT_NE(pool->take(101).get(), first) << "too small";
    EXPECT_EQ(pool->take(0), nullptr);
    pool->giveBack(StreamBufferPool::make(50));
    EXPECT_EQ(pool->take(50)->capacity(), 50) << "the larger one stays for who needs it";
    {
        FBufferedStream stream(make<FMemoryStream>(), 50, true, pool);
        stream.write("abc", 3);
        EXPECT_NE(pool->take(100).get(), first) << "the stream has it";
    }
    block = pool->take(100);
    EXPECT_EQ(block.get(), first);
    EXPECT_EQ(block->used(), 0);
}

TEST(FBufferedStream, ReadsOnWhereTheEndIsNotKnown) {
    std::string text = "0123456789abcdef!";
    for (const int64_t claimed : {int64_t{-1}, int64_t{0}, int64_t{5}, int64_t{17}, int64_t{1000}}) {
        SCOPED_TRACE(claimed);
        const auto compressed = make<FMemoryStream>();
        EXPECT_TRUE(FCompressionStream::compress(*memoryOf(text), compressed, nullptr, 1));
        compressed->rewind();
        const auto inflating = make<FCompressionStream>(compressed);
        ASSERT_TRUE(inflating->beginDecompression(claimed));
        const auto stream = buffered(Form::plain, inflating, 8);
        EXPECT_EQ(stream->seek(0, FStream::fromEnd), -1);
        EXPECT_EQ(stream->write("x", 1), -1) << "it reads only";
        EXPECT_EQ(readUpTo(*stream, 100), text);
        EXPECT_TRUE(stream->isValid());
        EXPECT_EQ(stream->seek(-1, FStream::fromEnd), std::ssize(text) - 1) << "now it is known";
        EXPECT_EQ(readUpTo(*stream, 100), text.substr(text.size() - 1));
        stream->seek(3, FStream::fromStart);
        EXPECT_EQ(readUpTo(*stream, 6), "345678") << "back, by inflating anew";
        text.resize(16); // whole blocks
    }
    EXPECT_EQ(readUpTo(*buffered(Form::plain, make<FBlockStreamReader>(make<ShakyStream>(text), 4), 8), 100),
              text);
}

/// Tells no size, as streams of others do, or one that grows whenever somebody asks for its end.
class OddlySizedStream : public ShakyStream, public ISizeableStream {
    QORL_CLASS(OddlySizedStream, ShakyStream)
    QORL_FACES(OddlySizedStream, ShakyStream, ISizeableStream)

public:
    explicit OddlySizedStream(bool isGrowing) : ShakyStream("012345"), isGrowing(isGrowing) {}

    int64_t seek(int64_t offset, int32_t mode) override {
        if (mode == fromEnd)
            grow();
        return ShakyStream::seek(offset, mode);
    }
    Result getStreamSize(int64_t& size) override {
        grow();
        size = isGrowing ? std::ssize(text) : 0;
        return Result::ok;
    }
    Result setStreamSize(int64_t) override { return Result::notImplemented; }

    bool isGrowing;

private:
    void grow() { text.append(isGrowing ? "+" : ""); }
};

TEST(FBufferedStream, FindsAnEndThatTheSizeDoesNotTell) {
    for (const bool isGrowing : {false, true}) {
        for (const int64_t place : {0, 6}) {
            SCOPED_TRACE(::testing::Message() << "growing " << isGrowing << " from " << place);
            const auto inner = make<OddlySizedStream>(isGrowing);
            inner->place = place;
            const auto stream = buffered(Form::plain, inner, 4);
            EXPECT_EQ(stream->seek(0, FStream::fromEnd), std::ssize(inner->text));
            EXPECT_EQ(stream->write("x", 1), 1);
            stream->seek(-2, FStream::fromHere);
            EXPECT_EQ(readUpTo(*stream, 9), isGrowing ? "+x" : "5x");
        }
    }
}

TEST(FBufferedStream, WritesToOneThatCompresses) {
    const auto compressing = make<FCompressionStream>(make<FMemoryStream>());
    ASSERT_TRUE(compressing->beginCompression(1));
    const auto stream = buffered(Form::plain, compressing, 8);
    EXPECT_EQ(stream->write("12345678", 8), 8);
    stream->flush();
    EXPECT_TRUE(stream->isValid());
}

TEST(FBufferedStream, TakesNoFailureForTheEnd) {
    const auto compressed = make<FMemoryStream>();
    const std::string text(5000, 'x');
    EXPECT_TRUE(
        FCompressionStream::compress(*make<FMemoryStream>(std::string_view(text)), compressed, nullptr, 0));
    compressed->setStreamSize(3000);
    compressed->rewind();
    const auto inflating = make<FCompressionStream>(compressed);
    ASSERT_TRUE(inflating->beginDecompression(5000));
    const auto stream = buffered(Form::plain, inflating, 1024);
    const auto target = make<FMemoryStream>();
    EXPECT_FALSE(target->copyAll(*stream));
    EXPECT_FALSE(stream->isValid());
    const auto shaky = make<ShakyStream>("0123456789");
    const auto cut = buffered(Form::plain, shaky, 8);
    shaky->atOnce = 3;
    shaky->failAt = 2;
    EXPECT_EQ(readUpTo(*cut, 3), "012");
    shaky->failAt = 3;
    char byte = 0;
    EXPECT_EQ(cut->read(&byte, 1), -1) << "the same fault again";
    EXPECT_EQ(cut->read(&byte, 1), 1);
    EXPECT_EQ(byte, '3');
}

TEST(FBufferedStream, WritesFilesThatCantBeRead) {
    const SettingsFolder folder;
    const Ref<FStream> file = newFile(folder);
    {
        const auto stream = buffered(Form::plain, file, 8);
        for (const char* part : {"123", "456", "789", "0"}) {
            EXPECT_EQ(stream->write(part, static_cast<int64_t>(std::strlen(part))),
                      static_cast<int64_t>(std::strlen(part)));
            stream->flush();
        }
        EXPECT_TRUE(stream->isValid());
        stream->seek(2, FStream::fromStart);
        EXPECT_EQ(stream->write("x", 1), -1) << "what lies around it would be lost";
        EXPECT_FALSE(stream->isValid());
    }
    EXPECT_EQ(folder.read("out.bin"), "1234567890");
}

} // namespace
} // namespace qorl
