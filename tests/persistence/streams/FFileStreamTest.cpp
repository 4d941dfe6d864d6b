#include "persistence/streams/FFileStream.h"

#include "foundation/Cast.h"
#include "persistence/files/FNFileSystem.h"
#include "support/FailingDisk.h"
#include "support/ProgressRecorder.h"
#include "support/SettingsFolder.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace qorl {
namespace {

constexpr uint32_t readAndWrite = FFileStream::readAccess | FFileStream::writeAccess;

class FFileStreamTest : public ::testing::Test {
protected:
    Ref<FStream> open(uint32_t mode) {
        FNPath path(std::string_view(folder_ / "file.bin"));
        folder_.write("file.bin", "0123456789");
        return FNFileSystem::instance()->openFile(path, mode);
    }

    const SettingsFolder folder_;
};

TEST_F(FFileStreamTest, MovesItsMonitorWithEveryByte) {
    const Ref<FStream> file = open(readAndWrite);
    ProgressRecorder meter;
    file->setProgress(&meter);
    char buffer[20];
    EXPECT_EQ(file->read(buffer, 4), 4);
    EXPECT_EQ(file->write("ab", 2), 2);
    EXPECT_EQ(meter.place, 6);
    EXPECT_EQ(file->read(buffer, 20), 4);
    EXPECT_EQ(meter.place, 10) << "what came, not what was asked for";
    EXPECT_EQ(meter.lastBuffer, buffer);
    EXPECT_EQ(meter.asked.back(), 20);
    file->seek(3, FStream::fromStart);
    EXPECT_EQ(meter.place, 10);
    file->rewind();
    EXPECT_EQ(meter.place, 0);
    meter.cancelAt = 0;
    EXPECT_EQ(file->read(buffer, 1), -1);
    EXPECT_EQ(file->write("xyz", 3), -1);
    EXPECT_EQ(file->tell(), 0) << "the file was not touched";
    file->setProgress(nullptr);
    EXPECT_EQ(file->read(buffer, 10), 10);
    EXPECT_EQ(std::string(buffer, 10), "0123ab6789");
}

TEST_F(FFileStreamTest, KeepsItsFirstErrorUntilItIsCleared) {
    const Ref<FStream> stream = open(FFileStream::readAccess);
    auto& file = *cast<FFileStream>(stream.get());
    EXPECT_EQ(file.write("x", 1), -1);
    const int32_t first = file.getLastError();
    EXPECT_NE(first, 0);
    EXPECT_EQ(file.seek(-1, FStream::fromStart), -1);
    EXPECT_EQ(file.seek(std::numeric_limits<int64_t>::min(), FStream::fromHere), -1);
    EXPECT_FALSE(file.setLength(-5));
    EXPECT_EQ(file.getLastError(), first);
    file.clearError();
    EXPECT_EQ(file.getLastError(), 0);
    EXPECT_EQ(file.seek(-1, FStream::fromStart), -1);
    EXPECT_NE(file.getLastError(), 0) << "a seek that failed is an error too";
    EXPECT_EQ(file.tell(), 0);
}

TEST_F(FFileStreamTest, SetsItsLengthWithoutMoving) {
    const Ref<FStream> stream = open(readAndWrite);
    auto& file = *cast<FFileStream>(stream.get());
    file.seek(8, FStream::fromStart);
    EXPECT_TRUE(file.setLength(4));
    EXPECT_EQ(file.tell(), 8);
    EXPECT_TRUE(file.isAtEnd());
    Ref<ISizeableStream> sizeable;
    ASSERT_EQ(stream->queryInterface(ISizeableStream::iid, sizeable.out()), Result::ok);
    EXPECT_EQ(sizeable->setStreamSize(6), Result::ok);
    EXPECT_EQ(sizeable->setStreamSize(-1), Result::failure);
    int64_t size = 0;
    EXPECT_EQ(sizeable->getStreamSize(size), Result::ok);
    EXPECT_EQ(size, 6);
    EXPECT_TRUE(file.isOpen());
    file.close();
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(file.getLength(), -1);
    EXPECT_EQ(sizeable->getStreamSize(size), Result::failure);
    EXPECT_EQ(folder_.read("file.bin"), std::string("0123\0\0", 6));
}

TEST_F(FFileStreamTest, IsNotValidOnceBytesWereLost) {
    platform::File full;
    ASSERT_FALSE(full.open("/dev/full", platform::openWrite));
    FFileStream stream(std::move(full), FFileStream::writeAccess);
    EXPECT_EQ(stream.write("x", 1), -1);
    EXPECT_FALSE(stream.isValid());
    stream.clearError();
    EXPECT_TRUE(stream.isValid());
    stream.close();
    EXPECT_TRUE(stream.isAtEnd()) << "or who reads up to the end would never stop";
    EXPECT_NE(stream.getLastError(), 0) << "no place";
    stream.clearError();
    EXPECT_EQ(stream.getLength(), -1);
    EXPECT_NE(stream.getLastError(), 0) << "no length";
}

TEST_F(FFileStreamTest, TellsWhatWentOfAWriteThatWasCutShort) {
    const Ref<FStream> file = open(readAndWrite);
    const auto outcome = FailingDisk::run(1, DiskFault::cutShort, [&] {
        ProgressRecorder meter;
        file->setProgress(&meter);
        return file->write("abcdef", 6) == 3 && meter.place == 3 && file->tell() == 3 && !file->isValid();
    });
    EXPECT_TRUE(outcome.isMet);
    EXPECT_TRUE(outcome.answer);
}

TEST_F(FFileStreamTest, FlushesOnlyWhatItMayWrite) {
    const Ref<FStream> file = open(FFileStream::readAccess);
    const auto flush = [&] {
        file->flush();
        return file->isValid();
    };
    EXPECT_FALSE(FailingDisk::run(1, DiskFault::error, flush).isMet);
}

} // namespace
} // namespace qorl
