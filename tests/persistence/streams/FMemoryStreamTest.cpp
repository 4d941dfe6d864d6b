#include "persistence/streams/FMemoryStream.h"

#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttributes.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace qorl {
namespace {

std::string bytesOf(FMemoryStream& stream) {
    return std::string(stream.bytes());
}

TEST(FMemoryStream, GrowsInStepsAndNeverShrinks) {
    FMemoryStream stream;
    EXPECT_EQ(stream.write("12345", 5), 5);
    EXPECT_EQ(stream.capacity(), 4096);
    stream.resize(4097);
    EXPECT_EQ(stream.capacity(), 8192);
    EXPECT_EQ(stream.size(), 4097);
    stream.resize(10);
    EXPECT_EQ(stream.capacity(), 8192);
    EXPECT_EQ(stream.size(), 10);
    stream.resize(0);
    EXPECT_EQ(stream.capacity(), 0);
    EXPECT_EQ(stream.data(), nullptr);
    EXPECT_EQ(stream.tell(), 0);
}

TEST(FMemoryStream, StaysWithinItsBytes) {
    FMemoryStream stream;
    stream.write("0123456789", 10);
    char buffer[16] = {};
    EXPECT_EQ(stream.read(buffer, 4), 0);
    EXPECT_EQ(stream.tell(), 10);
    EXPECT_EQ(stream.seek(-4, FStream::fromEnd), 6);
    EXPECT_EQ(stream.read(buffer, 100), 4);
    EXPECT_STREQ(buffer, "6789");
    EXPECT_EQ(stream.seek(5, FStream::fromEnd), 10);
    EXPECT_EQ(stream.seek(100, FStream::fromStart), 100);
    EXPECT_EQ(stream.read(buffer, 1), 0);
    EXPECT_EQ(stream.tell(), 10);
    stream.seek(100, FStream::fromStart);
    EXPECT_EQ(stream.write("x", 1), 1);
    EXPECT_EQ(stream.size(), 101);
    EXPECT_EQ(stream.seek(-200, FStream::fromHere), -99);
    EXPECT_EQ(stream.read(buffer, 1), 0);
    EXPECT_EQ(stream.write("x", 1), 0);
    stream.rewind();
    EXPECT_EQ(stream.write(nullptr, 1), 0);
    EXPECT_EQ(stream.write("x", 0), 0);
    EXPECT_EQ(stream.write("x", -5), 0);
    EXPECT_EQ(stream.size(), 101);
}

TEST(FMemoryStream, FailsForGoodWhenForeignMemoryIsFull) {
    char memory[4] = {'a', 'b', 'c', 'd'};
    FMemoryStream stream(memory, sizeof memory);
    EXPECT_EQ(stream.write("XY", 2), 2);
    EXPECT_EQ(std::string(memory, 4), "XYcd");
    EXPECT_EQ(stream.write("12345", 5), 0);
    EXPECT_FALSE(stream.isValid());
    EXPECT_EQ(stream.write("1", 1), 0);
    const Ref<CmObject> copy = Ref<CmObject>::adopt(FMemoryStream(std::string_view("const")).clone());
    auto& owned = static_cast<FMemoryStream&>(*copy);
    EXPECT_TRUE(owned.ownsMemory());
    EXPECT_EQ(bytesOf(owned), "const");
    FMemoryStream literal(std::string_view("const"));
    EXPECT_EQ(literal.write("x", 1), 0);
}

TEST(FMemoryStream, CopiesFromOthers) {
    FMemoryStream source;
    source.write("0123456789", 10);
    source.seek(6, FStream::fromStart);
    FMemoryStream target;
    EXPECT_TRUE(target.copyFrom(source, 2));
    EXPECT_EQ(bytesOf(target), "67");
    EXPECT_EQ(source.tell(), 8);
    EXPECT_FALSE(target.copyFrom(source, 5));
    EXPECT_EQ(bytesOf(target), "6789");
    EXPECT_TRUE(target.copyAll(source));
    EXPECT_EQ(bytesOf(target), "67890123456789");
    EXPECT_FALSE(target.contentEquals(source));
    FMemoryStream again;
    EXPECT_TRUE(target.writeTo(again));
    EXPECT_TRUE(again.contentEquals(target));
}

TEST(FMemoryStream, LoadsOnlyWhatIsThere) {
    FMemoryStream damaged;
    damaged.writeInt32(0x7FFFFFFF);
    damaged.write("abc", 3);
    damaged.rewind();
    FMemoryStream loaded;
    EXPECT_FALSE(loaded.loadBinary(damaged));
    EXPECT_LE(loaded.capacity(), 8192);

    FMemoryStream stored;
    FMemoryStream source;
    source.write("pan", 3);
    EXPECT_TRUE(source.saveBinary(stored));
    EXPECT_EQ(bytesOf(stored), std::string("\x03\0\0\0pan", 7));
    stored.rewind();
    EXPECT_TRUE(loaded.loadBinary(stored));
    EXPECT_EQ(bytesOf(loaded), "pan");
    EXPECT_EQ(loaded.tell(), 0);

    FAttributes attributes;
    EXPECT_TRUE(source.storeAttributes(&attributes));
    FMemoryStream restored;
    restored.write("longer than before", 18);
    EXPECT_TRUE(restored.restoreAttributes(&attributes));
    EXPECT_EQ(bytesOf(restored), "pan");
    EXPECT_EQ(restored.tell(), 0);
}

TEST(FMemoryStream, HasThreeFaces) {
    const auto stream = make<FMemoryStream>();
    Ref<IBStream> face;
    ASSERT_EQ(stream->queryInterface(IBStream::iid, face.out()), Result::ok);
    int64_t got = -1;
    EXPECT_EQ(face->write("abc", 3, &got), Result::ok);
    EXPECT_EQ(got, 3);
    EXPECT_EQ(face->tell(nullptr), Result::invalidArgument);
    EXPECT_EQ(face->seek(0, IBStream::fromStart, &got), Result::ok);
    char buffer[4] = {};
    EXPECT_EQ(face->read(buffer, 4, &got), Result::ok);
    EXPECT_EQ(got, 3);
    EXPECT_EQ(face->read(buffer, 4, nullptr), Result::no);
    EXPECT_EQ(face->seek(-9, IBStream::fromStart, nullptr), Result::no);

    Ref<ISizeableStream> sizeable;
    ASSERT_EQ(face->queryInterface(ISizeableStream::iid, sizeable.out()), Result::ok);
    EXPECT_EQ(sizeable->setStreamSize(2), Result::ok);
    EXPECT_EQ(sizeable->getStreamSize(got), Result::ok);
    EXPECT_EQ(got, 2);
    void* object = nullptr;
    ASSERT_EQ(face->queryInterface(IMemoryStream::iid, &object), Result::ok);
    EXPECT_EQ(object, stream.get());
    stream->release();
}

TEST(FBinaryStream, SwapsNumbersByItsByteOrder) {
    FMemoryStream stream;
    stream.writeInt32(0x01020304);
    stream.setByteOrder(1);
    stream.writeInt32(0x01020304);
    stream.writeInt16(0x0506);
    stream.writeInt8(7);
    EXPECT_EQ(bytesOf(stream), std::string("\x04\x03\x02\x01\x01\x02\x03\x04\x05\x06\x07", 11));
    stream.writeDouble(1.0);
    EXPECT_EQ(bytesOf(stream).substr(11), std::string("\x3F\xF0\0\0\0\0\0\0", 8));
    stream.seek(4, FStream::fromStart);
    int32_t number = 0;
    EXPECT_TRUE(stream.readInt32(number));
    EXPECT_EQ(number, 0x01020304);
    stream.seek(11, FStream::fromStart);
    double real = 0;
    EXPECT_TRUE(stream.readDouble(real));
    EXPECT_EQ(real, 1.0);
    number = 9;
    stream.seek(-2, FStream::fromEnd);
    EXPECT_FALSE(stream.readInt32(number));
    EXPECT_EQ(number, 0);

    FMemoryStream array;
    const uint16_t values[] = {1, 2, 3};
    EXPECT_TRUE(array.writeArray(values, 3));
    EXPECT_TRUE(array.writeArray(values, -1));
    array.rewind();
    uint16_t read[4] = {9, 9, 9, 9};
    EXPECT_FALSE(array.readArray(read, 4));
    EXPECT_EQ(read[2], 3);
    EXPECT_EQ(read[3], 0);
    array.rewind();
    bool flag = false;
    EXPECT_TRUE(array.readBool(flag));
    EXPECT_TRUE(flag);
}

TEST(FMemoryStream, NeverReadsBeforeItsBlock) {
    constexpr int64_t least = std::numeric_limits<int64_t>::min();
    constexpr int64_t most = std::numeric_limits<int64_t>::max();
    for (const int64_t place : {int64_t{-1}, int64_t{-1000}, least, int64_t{3}, most}) {
        SCOPED_TRACE(place);
        FMemoryStream source(std::string_view("abc"));
        EXPECT_EQ(source.seek(place, FStream::fromStart), place) << "a place is not limited";
        FMemoryStream target;
        EXPECT_FALSE(target.copyFrom(source, 2));
        EXPECT_EQ(target.bytes(), "");
        char byte = 0;
        EXPECT_EQ(source.read(&byte, 1), 0);
    }
    FMemoryStream far(std::string_view("abc"));
    far.seek(most - 1, FStream::fromStart);
    EXPECT_EQ(far.seek(5, FStream::fromHere), most);
    far.seek(least + 1, FStream::fromStart);
    EXPECT_EQ(far.seek(-5, FStream::fromHere), least);
}

TEST(FBinaryStream, ReadsLinesWithoutTheirEnds) {
    FMemoryStream stream(std::string_view("one\r\ntwo\nthree\0four", 19));
    char line[16];
    EXPECT_EQ(stream.readLine(line, sizeof line), 3);
    EXPECT_STREQ(line, "one");
    EXPECT_EQ(stream.readLine(line, sizeof line), 4);
    EXPECT_STREQ(line, "two\n");
    EXPECT_EQ(stream.readLine(line, 4), 3);
    EXPECT_STREQ(line, "thr");
    EXPECT_EQ(stream.readLine(line, sizeof line), 2);
    EXPECT_EQ(stream.readLine(line, sizeof line), 4);
    EXPECT_EQ(stream.readLine(line, sizeof line), 0);

    FMemoryStream text(std::string_view("  first \r\n\r\n\tsecond"));
    std::string read;
    EXPECT_TRUE(text.readTextLine(read));
    EXPECT_EQ(read, "  first ");
    EXPECT_TRUE(text.readTextLine(read, FStream::dropBlanks));
    EXPECT_EQ(read, "second");
    EXPECT_FALSE(text.readTextLine(read));
}

TEST(FBinaryStream, StoresTexts) {
    FMemoryStream stream;
    EXPECT_TRUE(stream.writeCountedChars("ab"));
    EXPECT_TRUE(stream.writeCountedChars(nullptr));
    EXPECT_EQ(bytesOf(stream), std::string("\x03\0\0\0ab\0\0\0\0\0", 11));
    stream.rewind();
    char* text = stream.readCountedChars();
    EXPECT_STREQ(text, "ab");
    std::free(text);
    EXPECT_EQ(stream.readCountedChars(), nullptr);

    FMemoryStream large;
    large.writeInt32(0x40001);
    large.writeInt32(0x40000);
    large.pad(0x40000);
    large.rewind();
    EXPECT_EQ(large.readCountedChars(), nullptr);
    EXPECT_EQ(large.tell(), 4);
    text = large.readCountedChars();
    EXPECT_NE(text, nullptr);
    std::free(text);
    EXPECT_EQ(large.tell(), 8 + 0x40000);

    FMemoryStream utf8;
    EXPECT_TRUE(utf8.writeTextUtf8(u"ab"));
    EXPECT_TRUE(utf8.writeTextUtf8(u"\u00E4"));
    EXPECT_EQ(bytesOf(utf8), std::string("ab\0\xEF\xBB\xBF\xC3\xA4\0", 9));
    utf8.rewind();
    char16_t wide[3];
    EXPECT_EQ(utf8.readTextUtf8(wide, 2), 1);
    EXPECT_EQ(std::u16string(wide), u"a");
    EXPECT_EQ(utf8.readTextUtf8(wide, 3), 1);
    EXPECT_EQ(std::u16string(wide), u"\u00E4");

    // A character that does not fit is cut off, wherever the bytes of it end.
    FMemoryStream longText;
    const std::u16string euros(1000, u'\u20AC');
    EXPECT_TRUE(longText.writeTextUtf8(euros.c_str()));
    EXPECT_TRUE(longText.writeTextUtf8(u"next"));
    longText.rewind();
    char16_t few[11];
    EXPECT_EQ(longText.readTextUtf8(few, 11), 10);
    EXPECT_EQ(std::u16string(few), euros.substr(0, 10));
    EXPECT_EQ(longText.readTextUtf8(few, 11), 4) << "the rest of the text is behind it";
}

} // namespace
} // namespace qorl
