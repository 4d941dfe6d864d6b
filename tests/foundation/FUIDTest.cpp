#include "foundation/FUID.h"

#include "foundation/CmUID.h"
#include "foundation/text/String.h"
#include "persistence/archive/FCompactArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/DebugOutput.h"
#include "support/FailingAllocation.h"
#include "support/StoredBytes.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

const FUID sample(0x00112233, 0x44556677, 0x8899AABB, 0xCCDDEEFF);

TEST(FUID, ShowsItsWordsInReadingOrder) {
    EXPECT_EQ(sample.toPlainString(), "00112233445566778899AABBCCDDEEFF");
    EXPECT_EQ(sample.toBracedString(), "{00112233-4455-6677-8899-AABBCCDDEEFF}");
    const uint8_t bytes[16] = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66,
                               0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
    EXPECT_EQ(std::memcmp(sample.data(), bytes, 16), 0);
    EXPECT_EQ(FUID(bytes), sample);
    uint32_t words[4];
    sample.toUInt4(words[0], words[1], words[2], words[3]);
    EXPECT_EQ(FUID(words[0], words[1], words[2], words[3]), sample);
    EXPECT_EQ(sample.word(2), 0x8899AABBu);
}

TEST(FUID, ReadsBackBothForms) {
    FUID id;
    EXPECT_TRUE(id.fromPlainString("00112233445566778899aabbccddeeff"));
    EXPECT_EQ(id, sample);
    id = FUID();
    EXPECT_TRUE(id.fromBracedString("{00112233-4455-6677-8899-AABBCCDDEEFF}"));
    EXPECT_EQ(id, sample);
}

TEST(FUID, RefusesTextOfAnotherFormAndChangesNothing) {
    FUID id = sample;
    for (const char* text : {"", "0011", "00112233445566778899AABBCCDDEEF",
                             "00112233445566778899AABBCCDDEEFFF", "00112233445566778899AABBCCDDEEFG"})
        EXPECT_FALSE(id.fromPlainString(text)) << text;
    for (const char* text :
         {"", "{00112233-4455-6677-8899-AABBCCDDEEFF", "{00112233-4455-6677-8899-AABBCCDDEEFF} ",
          "{0011223x-4455-6677-8899-AABBCCDDEEFF}", "00112233445566778899AABBCCDDEEFF"})
        EXPECT_FALSE(id.fromBracedString(text)) << text;
    EXPECT_FALSE(id.fromPlainString(nullptr));
    EXPECT_FALSE(id.fromBracedString(nullptr));
    EXPECT_EQ(id, sample);
    id.toPlainString(nullptr);
    id.toBracedString(nullptr);
}

TEST(FUID, AnEmptyIdIsNotValid) {
    EXPECT_FALSE(FUID().isValid());
    EXPECT_FALSE(FUID(static_cast<const uint8_t*>(nullptr)).isValid());
    for (int i = 0; i < 16; ++i) {
        FUID id;
        id.data()[i] = 1;
        EXPECT_TRUE(id.isValid()) << i;
    }
}

TEST(FUID, DrawsAnotherIdOrSaysThatItCannotAndStaysAsItWas) {
    platform::setUuidSource([](platform::UuidKind, std::array<uint8_t, 16>&) { return false; });
    FUID id = sample;
    EXPECT_FALSE(id.generate());
    EXPECT_EQ(id, sample);
    platform::setUuidSource(nullptr);
    ASSERT_TRUE(id.generate());
    const FUID first = id;
    ASSERT_TRUE(id.generate());
    EXPECT_NE(id, first);
}

TEST(FUID, WritesDeclarations) {
    const struct {
        int32_t style;
        const char* text;
    } cases[] = {
        {0, "INLINE_UID (0x00112233, 0x44556677, 0x8899AABB, 0xCCDDEEFF)"},
        {1, "DECLARE_UID (0x00112233, 0x44556677, 0x8899AABB, 0xCCDDEEFF)"},
        {2, "FUID (0x00112233, 0x44556677, 0x8899AABB, 0xCCDDEEFF)"},
        {3, "DECLARE_CLASS_IID (Interface, 0x00112233, 0x44556677, 0x8899AABB, 0xCCDDEEFF)"},
        {-1, "DECLARE_CLASS_IID (Interface, 0x00112233, 0x44556677, 0x8899AABB, 0xCCDDEEFF)"},
    };
    DebugOutput debug;
    for (const auto& c : cases) {
        char buffer[97];
        sample.toDeclaration(buffer, c.style);
        EXPECT_STREQ(buffer, c.text);
        debug.text.clear();
        sample.toDeclaration(nullptr, c.style);
        EXPECT_EQ(debug.text, std::string(c.text) + "\n");
    }
}

TEST(CmUID, WritesItsBytesInMemoryOrder) {
    EXPECT_EQ(CmUID(sample).toHexBytes(), "33221100554477668899AABBCCDDEEFF");
    CmUID id;
    EXPECT_TRUE(id.fromHexBytes("33221100554477668899aabbccddeeff and more"));
    EXPECT_EQ(id.uid(), sample);
    EXPECT_TRUE(id.fromHexBytes(""));
    EXPECT_EQ(id.uid(), sample) << "an empty text changes nothing";
    EXPECT_TRUE(id.fromHexBytes("G1"));
    EXPECT_EQ(id.uid().data()[0], 0x01) << "what is no digit counts as 0";
    EXPECT_EQ(id.uid().data()[1], sample.data()[1]);
}

TEST(CmUID, CutsItsBitsIntoGroupsOfFive) {
    const struct {
        int byte;
        uint8_t value;
        const char* text;
    } cases[] = {
        {0, 0x1F, "V0000000000000000000000000"},  {0, 0xFF, "V7000000000000000000000000"},
        {1, 0x01, "08000000000000000000000000"},  {15, 0x80, "00000000000000000000000004"},
        {15, 0xFF, "000000000000000000000000V7"},
    };
    for (const auto& c : cases) {
        FUID uid;
        uid.data()[c.byte] = c.value;
        EXPECT_EQ(CmUID(uid).toBase32String(), c.text);
    }
    CmUID back;
    ASSERT_TRUE(back.fromBase32String(CmUID(sample).toBase32String()));
    EXPECT_EQ(back.uid(), sample);
    EXPECT_FALSE(back.fromBase32String("0123"));
    EXPECT_EQ(back.uid(), sample);
}

TEST(CmUID, ItsTwoStoredFormsDifferInTheOrderOfTheFirstBytes) {
    CmUID original(sample);
    const std::string bytes = testing::written(original);
    FMemoryStream stream(bytes);
    String text;
    ASSERT_TRUE(text.readFrom(stream));
    EXPECT_EQ(text.toUtf8(), "33221100554477668899AABBCCDDEEFF");
    CmUID back;
    ASSERT_TRUE(testing::read(back, bytes));
    EXPECT_EQ(back.uid(), sample);

    FAttributes attributes;
    ASSERT_TRUE(original.storeAttributes(&attributes));
    EXPECT_EQ(attributes.getString("GUID").toUtf8(), "00112233445566778899AABBCCDDEEFF");
    CmUID restored;
    ASSERT_TRUE(restored.restoreAttributes(&attributes));
    EXPECT_EQ(restored.uid(), sample);
    attributes.setString("GUID", ConstString("0011"));
    EXPECT_FALSE(restored.restoreAttributes(&attributes));
    EXPECT_EQ(restored.uid(), sample);
}

TEST(CmUID, WithoutMemoryItSaysThatItIsNotStored) {
    failEachAllocation([](FailingAllocation& memory) {
        CmUID original(sample);
        const Ref<FMemoryStream> stream = make<FMemoryStream>();
        stream->pad(1); // has its block
        FCompactArchive archive(*stream, FObjectArchive::Direction::storing);
        const bool stored = memory.during([&] { return original.writeTo(&archive); });
        EXPECT_NE(stored, memory.hasFailed());
    });
}

TEST(CmUID, EqualsByItsBytes) {
    CmUID a(sample);
    CmUID b(sample);
    CmUID c;
    EXPECT_TRUE(a.isEqual(&b));
    EXPECT_EQ(a.compare(&b), 0);
    EXPECT_EQ(a.hashCode(11), b.hashCode(11));
    EXPECT_FALSE(a.isEqual(&c));
    EXPECT_EQ(a.compare(&c), 1);
    EXPECT_EQ(c.compare(&a), -1);
    EXPECT_FALSE(a.isEqual(nullptr));
}

} // namespace
} // namespace qorl
