#include "persistence/streams/FStream.h"

#include "foundation/containers/CmBuffer.h"
#include "persistence/streams/FBlockStreamReader.h"
#include "persistence/streams/FBufferStream.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/FailingAllocation.h"
#include "support/ShakyStream.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

TEST(FStream, WritesWideTextAsItIs) {
    FMemoryStream stream;
    stream.setByteOrder(1);
    EXPECT_TRUE(stream.writeWideText(u"a\u20AC", false));
    EXPECT_TRUE(stream.writeWideText(u"b", true));
    EXPECT_TRUE(stream.writeWideText(nullptr, false));
    EXPECT_EQ(stream.bytes(), std::string("a\0\xAC\x20"
                                          "b\0\0\0",
                                          8));
}

TEST(FStream, ReadsTextLines) {
    FMemoryStream text(std::string_view("  first \r\n\r\n\t second\t \n \t \r\rlast"));
    CmBuffer line;
    EXPECT_TRUE(text.readTextLine(line));
    EXPECT_EQ(line.bytes(), "  first ");
    EXPECT_EQ(text.tell(), 12) << "behind the run of line ends";
    EXPECT_TRUE(text.readTextLine(line, FStream::dropBlanks));
    EXPECT_STREQ(line.data(), "second");
    EXPECT_TRUE(text.readTextLine(line, FStream::dropBlanks));
    EXPECT_EQ(line.bytes(), "");
    EXPECT_TRUE(text.readTextLine(line));
    EXPECT_STREQ(line.data(), "last");
    EXPECT_FALSE(text.readTextLine(line));
    failEachAllocation([](FailingAllocation& allocation) {
        FMemoryStream source(std::string_view("line"));
        CmBuffer read;
        const bool isRead = allocation.during([&] { return source.readTextLine(read); });
        EXPECT_EQ(isRead, !allocation.hasFailed());
        EXPECT_EQ(read.bytes(), allocation.hasFailed() ? "" : "line");
    });
}

TEST(FStream, CopiesInPieces) {
    const std::string text(2500, 't');
    ShakyStream source(text);
    source.place = 100;
    ShakyStream target;
    EXPECT_TRUE(target.copyFrom(source, 2100));
    EXPECT_EQ(source.calls, 3) << "1024, 1024 and the rest";
    EXPECT_EQ(source.place, 2200);
    EXPECT_FALSE(source.copyTo(target, 301)) << "one byte is missing";
    EXPECT_EQ(target.text, text.substr(100));
    EXPECT_TRUE(source.copyTo(target, -1));

    ShakyStream whole;
    EXPECT_TRUE(whole.copyAll(source)) << "from its start";
    EXPECT_TRUE(whole.contentEquals(source));
    EXPECT_TRUE(source.writeTo(whole));
    EXPECT_EQ(whole.text.size(), 5000u);
    EXPECT_FALSE(whole.contentEquals(source)) << "longer";
    whole.text = text;
    whole.text[2400] = 'T';
    EXPECT_FALSE(whole.contentEquals(source));
}

TEST(FStream, TellsOfTheCallThatFailsInACopy) {
    for (int64_t failAt = 1; failAt <= 3; ++failAt) {
        SCOPED_TRACE(failAt);
        ShakyStream source(std::string(2500, 's'));
        ShakyStream target;
        source.failAt = failAt;
        EXPECT_FALSE(target.copyFrom(source, 2500));
        source.rewind();
        source.failAt = failAt;
        EXPECT_FALSE(target.copyAll(source));
        source.failAt = ShakyStream::never;
        target.failAt = failAt;
        EXPECT_FALSE(target.copyAll(source));
        target.failAt = failAt;
        EXPECT_FALSE(source.writeTo(target));
    }
    ShakyStream same("same");
    ShakyStream broken("same");
    broken.failAt = 1;
    EXPECT_FALSE(same.contentEquals(broken));
    FMemoryStream full(nullptr, 0);
    EXPECT_FALSE(full.copyFrom(same, 4));
    const auto stuck = make<ShakyStream>("a stuck one");
    FBlockStreamReader reader(stuck, 4);
    EXPECT_TRUE(reader.skip(5));
    stuck->failAt = 1;
    EXPECT_FALSE(same.copyAll(reader)) << "its start would be missing";
    EXPECT_EQ(reader.seek(5, FStream::fromStart), 5);
    stuck->failAt = 1;
    EXPECT_FALSE(reader.contentEquals(*make<FMemoryStream>(std::string_view("ck one"))));
}

TEST(FStream, TakesNoShortReadForTheEndOfACopy) {
    const std::string text(2500, 's');
    const auto slow = make<ShakyStream>(text);
    slow->atOnce = 100;
    ShakyStream target;
    EXPECT_TRUE(target.copyAll(*slow));
    EXPECT_EQ(target.text, text);
    EXPECT_TRUE(target.contentEquals(*slow));
    slow->rewind();
    slow->failAt = 5;
    EXPECT_FALSE(target.copyAll(*slow)) << "a failure behind a short read";
    slow->rewind();
    slow->failAt = 3;
    FBlockStreamReader reader(slow, 1000);
    EXPECT_FALSE(target.copyAll(reader)) << "one that gives what came, and then is not valid";
}

TEST(FStream, ReadsTheLastLineOfABufferOnce) {
    for (const char* text : {"one\ntwo", "one\ntwo\n\n"}) {
        SCOPED_TRACE(text);
        const auto buffer = make<CmBuffer>(0, 1);
        buffer->append(text, static_cast<int32_t>(std::strlen(text)));
        FBufferStream stream(buffer);
        stream.rewind();
        CmBuffer line;
        std::string lines;
        for (int i = 0; i < 5 && stream.readTextLine(line); ++i)
            lines += std::string(line.bytes()) + '|';
        EXPECT_EQ(lines, "one|two|");
    }
}

TEST(FStream, GivesNoLineBehindWhichItCantGoBack) {
    ShakyStream stream("one\ntwo\n");
    stream.failAt = 6;
    CmBuffer line;
    EXPECT_FALSE(stream.readTextLine(line)) << "the next line would lack its first letter";
    EXPECT_EQ(line.used(), 0);
}

} // namespace
} // namespace qorl
