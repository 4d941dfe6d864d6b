#include "persistence/streams/FBinaryStream.h"

#include "persistence/streams/FMemoryStream.h"
#include "support/FailingAllocation.h"
#include "support/ShakyStream.h"

#include <bit>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace qorl {
namespace {

template <typename Number>
void expectBytes(bool (FBinaryStream::*write)(Number), bool (FBinaryStream::*read)(Number&), Number value,
                 std::string_view bytes) {
    SCOPED_TRACE(value);
    for (const uint16_t order : {0, 1, 0xFFFF}) {
        std::string expected(bytes);
        if (order != 0)
            std::reverse(expected.begin(), expected.end());
        // In memory the fields go without a call; the other stream hears of each.
        FMemoryStream memory;
        ShakyStream other;
        for (FStream* stream : {static_cast<FStream*>(&memory), static_cast<FStream*>(&other)}) {
            stream->setByteOrder(order);
            EXPECT_TRUE((stream->*write)(value));
            stream->rewind();
            Number back{};
            EXPECT_TRUE((stream->*read)(back));
            EXPECT_EQ(back, value);
            EXPECT_EQ(stream->tell(), static_cast<int64_t>(bytes.size()));
            stream->seek(1, FStream::fromStart);
            EXPECT_FALSE((stream->*read)(back)) << "a byte is missing";
            EXPECT_EQ(back, Number{});
        }
        EXPECT_EQ(memory.bytes(), expected);
        EXPECT_EQ(other.text, expected);
        ShakyStream full;
        full.room = static_cast<int64_t>(bytes.size()) - 1;
        EXPECT_FALSE((full.*write)(value)) << "no room for the last byte";
    }
}

TEST(FBinaryStream, StoresNumbersLowByteFirstUnlessTold) {
    using Stream = FBinaryStream;
    expectBytes<int8_t>(&Stream::writeInt8, &Stream::readInt8, -2, "\xFE");
    expectBytes<uint8_t>(&Stream::writeUInt8, &Stream::readUInt8, 0x80, "\x80");
    expectBytes<int16_t>(&Stream::writeInt16, &Stream::readInt16, -2, "\xFE\xFF");
    expectBytes<uint16_t>(&Stream::writeUInt16, &Stream::readUInt16, 0x8001, "\x01\x80");
    expectBytes<int32_t>(&Stream::writeInt32, &Stream::readInt32, 0x01020304, "\x04\x03\x02\x01");
    expectBytes<uint32_t>(&Stream::writeUInt32, &Stream::readUInt32, 0xFFEEDDCC, "\xCC\xDD\xEE\xFF");
    expectBytes<int64_t>(&Stream::writeInt64, &Stream::readInt64, 0x0102030405060708,
                         "\x08\x07\x06\x05\x04\x03\x02\x01");
    expectBytes<uint64_t>(&Stream::writeUInt64, &Stream::readUInt64, 0xFF00000000000001,
                          {"\x01\0\0\0\0\0\0\xFF", 8});
    expectBytes<float>(&Stream::writeFloat, &Stream::readFloat, -1.5f, {"\0\0\xC0\xBF", 4});
    expectBytes<double>(&Stream::writeDouble, &Stream::readDouble, 1.0, {"\0\0\0\0\0\0\xF0\x3F", 8});
    expectBytes<bool>(&Stream::writeBool, &Stream::readBool, true, {"\1\0", 2});
    expectBytes<bool>(&Stream::writeBool, &Stream::readBool, false, {"\0\0", 2});
}

TEST(FBinaryStream, KeepsTheBitsOfFloatsThatAreNoNumbers) {
    const auto odd = std::bit_cast<double>(uint64_t{0x7FF4000000000123});
    FMemoryStream stream;
    stream.setByteOrder(1);
    stream.writeDouble(odd);
    stream.rewind();
    double back = 0;
    EXPECT_TRUE(stream.readDouble(back));
    EXPECT_EQ(std::bit_cast<uint64_t>(back), std::bit_cast<uint64_t>(odd));
}

TEST(FBinaryStream, TakesAnyWordButZeroForTrue) {
    FMemoryStream stream(std::string_view("\0\2\2\0\0\0", 6));
    bool value = false;
    EXPECT_TRUE(stream.readBool(value) && value);
    EXPECT_TRUE(stream.readBool(value) && value);
    EXPECT_TRUE(stream.readBool(value) && !value);
}

template <typename Number>
void expectArray(std::string_view swapped) {
    const Number values[] = {1, 2, 3};
    ShakyStream stream;
    stream.setByteOrder(1);
    EXPECT_TRUE(stream.writeArray(values, 3));
    EXPECT_EQ(stream.text, swapped);
    EXPECT_TRUE(stream.writeArray(values, 0));
    EXPECT_TRUE(stream.writeArray<Number>(nullptr, -1));
    stream.text.pop_back();
    stream.rewind();
    Number read[] = {9, 9, 9, 9};
    EXPECT_FALSE(stream.readArray(read, 4));
    EXPECT_EQ(read[1], 2);
    EXPECT_EQ(read[2], 0) << "the one that was cut";
    EXPECT_EQ(read[3], 9) << "left alone";
    ShakyStream failing;
    failing.failAt = 2;
    EXPECT_FALSE(failing.writeArray(values, 3));
    EXPECT_EQ(failing.calls, 2) << "nothing behind the first short write";
}

TEST(FBinaryStream, StoresArraysElementByElement) {
    expectArray<int16_t>({"\0\1\0\2\0\3", 6});
    expectArray<uint32_t>({"\0\0\0\1\0\0\0\2\0\0\0\3", 12});
    expectArray<int64_t>({"\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\2\0\0\0\0\0\0\0\3", 24});
    expectArray<float>({"\x3F\x80\0\0\x40\0\0\0\x40\x40\0\0", 12});
    expectArray<double>({"\x3F\xF0\0\0\0\0\0\0\x40\0\0\0\0\0\0\0\x40\x08\0\0\0\0\0\0", 24});
}

TEST(FBinaryStream, ReadsLinesWithoutTheirEnds) {
    struct Row {
        int32_t size;
        int32_t length;
        const char* line;
    };
    const Row rows[] = {{16, 3, "one"},  {16, 4, "two\n"}, {4, 3, "thr"}, {16, 2, "ee"},
                        {5, 4, "abc\r"}, {16, 1, "\n"},    {16, 0, ""},   {16, 2, "c\r"},
                        {1, 0, ""},      {16, 1, "d"},     {16, 0, ""}};
    FMemoryStream stream(std::string_view("one\r\ntwo\nthree\0abc\r\n\r\nc\r\0d", 26));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.line);
        char line[16];
        EXPECT_EQ(stream.readLine(line, row.size), row.length);
        EXPECT_STREQ(line, row.line);
    }
    EXPECT_EQ(stream.readLine(nullptr, 5), 0);
}

TEST(FBinaryStream, StoresCountedChars) {
    FMemoryStream stream;
    EXPECT_TRUE(stream.writeCountedChars("ab"));
    EXPECT_TRUE(stream.writeCountedChars(nullptr));
    EXPECT_TRUE(stream.writeCountedChars(""));
    EXPECT_EQ(stream.bytes(), std::string("\3\0\0\0ab\0\0\0\0\0\1\0\0\0\0", 16));
    stream.rewind();
    EXPECT_STREQ(stream.readCountedChars().get(), "ab");
    EXPECT_EQ(stream.readCountedChars(), nullptr);
    EXPECT_STREQ(stream.readCountedChars().get(), "");
    EXPECT_EQ(stream.readCountedChars(), nullptr) << "the end";
    stream.setByteOrder(1);
    stream.writeCountedChars("z");
    EXPECT_EQ(stream.bytes().substr(16), std::string_view("\0\0\0\2z\0", 6));
    FMemoryStream unended(std::string_view("\3\0\0\0abc", 7));
    EXPECT_STREQ(unended.readCountedChars().get(), "abc") << "without a terminator";
}

TEST(FBinaryStream, RefusesCountedCharsThatAreTooLong) {
    struct Row {
        int32_t count;
        bool isRead;
        int64_t left;
    };
    constexpr int32_t most = 0x40000;
    for (const Row& row : {Row{most, true, 0}, Row{most + 1, false, most}, Row{-1, false, most},
                           Row{std::numeric_limits<int32_t>::max(), false, most}}) {
        SCOPED_TRACE(row.count);
        FMemoryStream stream;
        stream.writeInt32(row.count);
        stream.pad(most);
        stream.seek(0, FStream::fromStart);
        EXPECT_EQ(stream.readCountedChars() != nullptr, row.isRead);
        EXPECT_EQ(stream.size() - stream.tell(), row.left);
    }
    FMemoryStream written;
    EXPECT_FALSE(written.writeCountedChars(std::string(most, 'x').c_str()));
    EXPECT_EQ(written.size(), 0) << "what could not be read is not written";
    EXPECT_TRUE(written.writeCountedChars(std::string(most - 1, 'x').c_str()));
    written.seek(-1, FStream::fromEnd);
    written.setStreamSize(written.size() - 1);
    written.rewind();
    EXPECT_EQ(written.readCountedChars(), nullptr) << "cut";
    written.rewind();
    failEachAllocation([&](FailingAllocation& allocation) {
        FMemoryStream text;
        text.writeCountedChars("ab");
        text.rewind();
        const auto read = allocation.during([&] { return text.readCountedChars(); });
        EXPECT_EQ(read == nullptr, allocation.hasFailed());
    });
}

TEST(FBinaryStream, MarksTextsThatAreNotAscii) {
    FMemoryStream stream;
    EXPECT_TRUE(stream.writeTextUtf8(u"ab"));
    EXPECT_TRUE(stream.writeTextUtf8(u"\u00E4"));
    EXPECT_TRUE(stream.writeTextUtf8(nullptr));
    EXPECT_TRUE(stream.writeTextUtf8(u"\xDCE4"));
    EXPECT_TRUE(stream.writeTextUtf8(u"\U0001F600!"));
    EXPECT_TRUE(stream.writeTextUtf8(u"\xD83D!"));
    EXPECT_EQ(stream.bytes(), std::string("ab\0\xEF\xBB\xBF\xC3\xA4\0\0\xEF\xBB\xBF\xED\xB3\xA4\0"
                                          "\xEF\xBB\xBF\xF0\x9F\x98\x80!\0"
                                          "\xEF\xBB\xBF\xED\xA0\xBD!\0",
                                          34));
    stream.rewind();
    char16_t wide[4];
    struct Row {
        int32_t size;
        const char16_t* text;
    };
    for (const Row& row :
         {Row{2, u"a"}, Row{4, u"\u00E4"}, Row{4, u""}, Row{4, u"\xDCE4"}, Row{2, u""}, Row{2, u"\xD83D"}}) {
        EXPECT_EQ(stream.readTextUtf8(wide, row.size),
                  static_cast<int32_t>(std::u16string_view(row.text).size()));
        EXPECT_EQ(std::u16string(wide), row.text) << "half a character is none";
    }
    EXPECT_EQ(stream.tell(), stream.size());
    FMemoryStream mark(std::string_view("\xEF\xBB\xBF\0\xFF"
                                        "a",
                                        6));
    EXPECT_EQ(mark.readTextUtf8(wide, 4), 0) << "the mark and nothing";
    EXPECT_EQ(mark.readTextUtf8(wide, 4), 2) << "no UTF-8, and no terminator";
    EXPECT_EQ(std::u16string(wide), u"\u00FFa") << "Windows-1252, nothing dropped";
    FMemoryStream western(std::string_view("caf\xE9 \x80"));
    char16_t price[16];
    EXPECT_EQ(western.readTextUtf8(price, 16), 6);
    EXPECT_EQ(std::u16string(price), u"caf\u00E9 \u20AC");
}

TEST(FBinaryStream, KeepsOnlyWhatATextBufferHolds) {
    FMemoryStream stream;
    char16_t few[11];
    // What is kept of the bytes ends with, or within, a character of three.
    for (size_t shift = 0; shift < 3; ++shift) {
        SCOPED_TRACE(shift);
        stream.setStreamSize(0);
        stream.rewind();
        const std::u16string text = std::u16string(shift, u'a') + std::u16string(1000, u'\u20AC');
        EXPECT_TRUE(stream.writeTextUtf8(text.c_str()));
        EXPECT_TRUE(stream.writeTextUtf8(u"next"));
        stream.rewind();
        EXPECT_EQ(stream.readTextUtf8(few, 11), 10);
        EXPECT_EQ(std::u16string(few), text.substr(0, 10));
        EXPECT_EQ(stream.readTextUtf8(few, 11), 4) << "the rest of the text is behind it";
    }
    failEachAllocation([&](FailingAllocation& allocation) {
        FMemoryStream text(stream.bytes());
        const int32_t length = allocation.during([&] { return text.readTextUtf8(few, 11); });
        EXPECT_EQ(length, allocation.hasFailed() ? 0 : 10);
        EXPECT_EQ(few[length], 0);
    });
    failEachAllocation([&](FailingAllocation& allocation) {
        ShakyStream written;
        written.text.reserve(100);
        const bool isWritten = allocation.during([&] { return written.writeTextUtf8(u"\u20AC"); });
        EXPECT_EQ(written.text.size(), isWritten ? 7u : 0u) << "all or nothing";
        EXPECT_EQ(isWritten, !allocation.hasFailed());
    });
}

TEST(FBinaryStream, SkipsAndPadsByteByByte) {
    ShakyStream stream("abcdef");
    stream.atOnce = 1;
    EXPECT_TRUE(stream.skip(4));
    EXPECT_TRUE(stream.skip(-1));
    EXPECT_EQ(stream.place, 4);
    EXPECT_FALSE(stream.skip(3));
    EXPECT_TRUE(stream.pad(3));
    EXPECT_EQ(stream.text, std::string("abcdef\0\0\0", 9));
    stream.room = 10;
    EXPECT_FALSE(stream.pad(2));
    EXPECT_EQ(stream.text.size(), 10u);
}

} // namespace
} // namespace qorl
