#include "persistence/xml/XmlLine.h"

#include "persistence/streams/FMemoryStream.h"
#include "support/FailingAllocation.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>

namespace qorl {
namespace {

/// The same text as "%.50g" gives, or an empty one.
std::string wrongText(XmlLine& line, FMemoryStream& sink, double value) {
    char expected[128];
    const auto length = static_cast<size_t>(std::snprintf(expected, sizeof expected, "%.50g", value));
    line.putFloat(value);
    const bool isEqual = line.text() == std::string_view(expected, length);
    std::string text = isEqual ? std::string() : std::string(line.text()) + " is not " + expected;
    sink.setStreamSize(0);
    sink.rewind();
    line.writeTo(static_cast<FBinaryStream&>(sink));
    return text;
}

TEST(XmlLine, WritesNumbersAsPrintfDoes) {
    using Limits = std::numeric_limits<double>;
    XmlLine line;
    FMemoryStream sink;
    const double special[] = {0.0, -0.0, 1.0, -1.0, 0.5, 1e22, 1e23, 1e49, 1e50, 1e51,
                              // Halves of the last digit that is written: to the even one of two.
                              1 + 0x1p-50, 1 + 0x3p-50, 0.5 + 0x1p-51, 1 - 0x1p-53, 2 - 0x1p-52, 0x1p-12,
                              1e-4, 1e-5, 9.9999999999999995e-5, 123456789012345678.0, Limits::max(),
                              Limits::min(), Limits::denorm_min(), Limits::epsilon(), Limits::infinity(),
                              -Limits::infinity(), Limits::quiet_NaN(), -Limits::quiet_NaN()};
    for (const double value : special)
        EXPECT_EQ(wrongText(line, sink, value), "");
    std::mt19937_64 random(20240611);
    int32_t wrong = 0;
    for (int i = 0; i < 1'000'000 && wrong < 5; ++i) {
        const uint64_t bits = random();
        double value = 0;
        // Every other one of a size that people use.
        if (i % 2 == 0)
            std::memcpy(&value, &bits, sizeof value);
        else
            value = static_cast<double>(static_cast<int64_t>(bits) >> (bits & 63)) / std::pow(10, bits % 8);
        const std::string text = wrongText(line, sink, value);
        EXPECT_EQ(text, "");
        wrong += text.empty() ? 0 : 1;
    }
}

TEST(XmlLine, EscapesEachByteWhereverItStands) {
    using Escape = XmlEntities::Escape;
    constexpr size_t longest = 19;
    for (const Escape escape : {Escape::entities, Escape::markup}) {
        for (size_t i = 0; i < 256 * longest * longest; ++i) {
            const size_t length = i / 256 / longest + 1;
            const size_t place = i / 256 % longest % length;
            const auto& entry = XmlEntities::substitutes(escape)[i % 256];
            std::string text(length, 'x');
            text[place] = static_cast<char>(i % 256);
            std::string expected = text;
            if (entry.length > 0)
                expected.replace(place, 1, entry.text, entry.length);
            XmlLine line;
            line.putEscaped(text, escape);
            ASSERT_EQ(line.text(), expected) << "byte " << i % 256 << " at " << place << " of " << length;
        }
    }
}

TEST(XmlLine, GivesBackTheRoomOfALongText) {
    const std::string text(100'000, 'x');
    FMemoryStream sink;
    XmlLine line;
    for (const bool isWritten : {false, true}) {
        line.put(text);
        EXPECT_FALSE(line.isBroken());
        if (isWritten)
            EXPECT_TRUE(line.writeTo(static_cast<FBinaryStream&>(sink), 7));
        else
            line.clear();
        const std::string kept(line.text());
        EXPECT_EQ(kept, isWritten ? text.substr(0, text.size() % 7) : "");
        FailingAllocation allocation(1);
        EXPECT_TRUE(allocation.during([&] { return line.put(text).isBroken(); })) << "it asks for room again";
        line.clear();
    }
}

TEST(XmlLine, KeepsInFrontWhatIsNoWholeUnit) {
    FMemoryStream sink;
    XmlLine line;
    EXPECT_TRUE(line.put("abcdefg").writeTo(static_cast<FBinaryStream&>(sink), 3));
    EXPECT_EQ(sink.bytes(), "abcdef");
    EXPECT_EQ(line.text(), "g");
    EXPECT_TRUE(line.put('h').writeTo(static_cast<FBinaryStream&>(sink)));
    EXPECT_EQ(sink.bytes(), "abcdefgh");
}

} // namespace
} // namespace qorl
