#include "foundation/Cast.h"
#include "foundation/CmUID.h"
#include "foundation/containers/CmBuffer.h"
#include "foundation/containers/CmRational.h"
#include "foundation/containers/CmRegularExpression.h"
#include "foundation/containers/CmVariant.h"
#include "foundation/containers/dictionaries/CmAssociation.h"
#include "foundation/text/CmStringWithId.h"
#include "foundation/text/CmTokens.h"
#include "foundation/time/CmTime.h"
#include "persistence/attributes/FAttributes.h"
#include "support/FailingAllocation.h"
#include "support/Objects.h"
#include "support/StoredBytes.h"

#include <qorl/Ref.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <utility>

namespace qorl {
namespace {

using testing::expectCutsRefused;
using testing::read;
using testing::written;
using Hold = CmVariant::Hold;

TEST(CmBuffer, RoundsItsRoomUpToItsStep) {
    struct Row {
        int32_t size, growth, capacity;
    } rows[] = {{0, 0, 0},   {1, 0, 4096}, {4096, 0, 4096}, {4097, 0, 8192},
                {1, 16, 16}, {17, 16, 32}, {5, -1, 4096}};
    for (const Row& row : rows)
        EXPECT_EQ(CmBuffer(row.size, row.growth).capacity(), row.capacity)
            << row.size << " by " << row.growth;

    CmBuffer buffer(32, 16);
    EXPECT_TRUE(buffer.setUsedSize(20));
    EXPECT_FALSE(buffer.setUsedSize(33));
    EXPECT_FALSE(buffer.setUsedSize(-1));
    EXPECT_FALSE(buffer.setCapacity(-1));
    EXPECT_TRUE(buffer.setCapacity(10));
    EXPECT_EQ(buffer.capacity(), 16);
    EXPECT_EQ(buffer.used(), 16) << "what doesn't fit is gone";
    EXPECT_TRUE(buffer.setCapacity(0));
    EXPECT_EQ(buffer.data(), nullptr);
}

TEST(CmBuffer, TakesBytesAtBothEnds) {
    CmBuffer buffer(0, 4);
    EXPECT_TRUE(buffer.append("cd", 2));
    EXPECT_TRUE(buffer.prepend("ab", 2));
    EXPECT_TRUE(buffer.append("efg", 3));
    EXPECT_TRUE(buffer.prependByte('-'));
    EXPECT_TRUE(buffer.appendByte('+'));
    EXPECT_EQ(buffer.bytes(), "-abcdefg+");
    EXPECT_EQ(buffer.capacity(), 12);
    EXPECT_TRUE(buffer.append(buffer.data() + 1, 7)) << "of itself, while it moves";
    EXPECT_TRUE(buffer.prepend(buffer.data() + 1, 2));
    EXPECT_EQ(buffer.bytes(), "ab-abcdefg+abcdefg");
    EXPECT_TRUE(buffer.append(nullptr, 0));
    EXPECT_FALSE(buffer.append(nullptr, 1));
    EXPECT_FALSE(buffer.prepend("x", -1));
    EXPECT_FALSE(buffer.append("x", std::numeric_limits<int32_t>::max()));
    buffer.clear();
    EXPECT_EQ(buffer.bytes(), "");
    EXPECT_EQ(buffer.capacity(), 20);
}

TEST(CmBuffer, WritesItsBytesAsHexadecimalText) {
    CmBuffer buffer("\x00\x0f\xA5\xff", 4);
    CmBuffer text(0, 1);
    ASSERT_TRUE(buffer.toHex(text));
    EXPECT_EQ(text.bytes(), std::string_view("000FA5FF\0", 9));
    ASSERT_TRUE(buffer.toHex(buffer));
    EXPECT_EQ(buffer.bytes(), text.bytes());
    ASSERT_TRUE(CmBuffer().toHex(text));
    EXPECT_EQ(text.bytes(), std::string_view("\0", 1));
}

TEST(CmBuffer, IsStoredWithAllItsRoom) {
    CmBuffer buffer("ab", 2, 4);
    const std::string bytes = written(buffer);
    EXPECT_EQ(bytes, std::string("\4\0\0\0\2\0\0\0ab\0\0", 12));
    CmBuffer restored("other", 5);
    expectCutsRefused(restored, bytes);
    EXPECT_EQ(restored.bytes(), "other") << "a failed reading changes nothing";
    ASSERT_TRUE(read(restored, bytes));
    EXPECT_EQ(restored.bytes(), "ab");
    EXPECT_EQ(restored.capacity(), 4096) << "by its own step";
    EXPECT_EQ(std::string_view(restored.data(), 4096), std::string("ab") + std::string(4094, '\0'));
    restored.setGrowth(4);
    ASSERT_TRUE(read(restored, bytes));
    EXPECT_EQ(written(restored), bytes);

    CmBuffer large(200'000);
    large.setUsedSize(200'000);
    large.fill('x');
    ASSERT_TRUE(read(restored, written(large)));
    EXPECT_EQ(restored.bytes(), large.bytes());

    for (const char* counts : {"\xff\xff\xff\xff\0\0\0\0", "\4\0\0\0\5\0\0\0", "\4\0\0\0\xff\xff\xff\xff",
                               "\xff\xff\xff\x7f\0\0\0\0"})
        EXPECT_FALSE(read(restored, std::string(counts, 8) + "12345"));
}

TEST(CmBuffer, IsCopiedToWholeSteps) {
    CmBuffer buffer("abcdef", 6, 3);
    buffer.setGrowth(16);
    CmBuffer copy(std::string(100, 'x').data(), 100, 1);
    copy = buffer;
    const CmBuffer other(buffer);
    for (const CmBuffer* each : {&std::as_const(copy), &other}) {
        EXPECT_EQ(each->bytes(), "abcdef");
        EXPECT_EQ(each->growth(), 16);
        EXPECT_EQ(std::string_view(each->data(), static_cast<size_t>(each->capacity())),
                  std::string_view("abcdef\0\0\0\0\0\0\0\0\0\0", 16));
    }
}

TEST(CmBuffer, IsABinaryValueOfAttributes) {
    const auto attributes = make<FAttributes>();
    attributes->setObject("bytes", make<CmBuffer>("abc", 3).get(), FAttributes::Hold::retain);
    EXPECT_EQ(attributes->getBinarySize("bytes"), 3);
    char bytes[3] = {};
    EXPECT_TRUE(attributes->getBinaryData("bytes", bytes, 3));
    EXPECT_EQ(std::string_view(bytes, 3), "abc");
}

TEST(CmBuffer, KeepsItsBytesWhenMemoryRunsOut) {
    failEachAllocation([](FailingAllocation& allocation) {
        CmBuffer buffer("abc", 3, 4);
        CmBuffer text;
        const bool done = allocation.during(
            [&] { return buffer.append("defg", 4) && buffer.prepend("12345678", 8) && buffer.toHex(text); });
        EXPECT_EQ(done, !allocation.hasFailed());
        EXPECT_NE(buffer.bytes().find("abc"), std::string_view::npos);
    });
}

TEST(ValueClasses, AreClonedWholeOrNotAtAll) {
    const CmBuffer buffer("abc", 3);
    const CmVariant narrow(ConstString("text"));
    const CmVariant wide(ConstString(u"text"));
    const CmRational rational(1, 2);
    const CmRegularExpression pattern("a*");
    const CmString text(u"a text that is copied");
    const CmStringWithId numbered("a text that is copied", 42);
    CmTokens tokens("a,b");
    tokens.next(u",");
    const struct {
        const CmObject* object;
        std::function<bool(const CmObject*)> isSame;
    } rows[] = {
        {&buffer, [](const CmObject* copy) { return cast<CmBuffer>(copy)->bytes() == "abc"; }},
        {&narrow, [](const CmObject* copy) { return cast<CmVariant>(copy)->getText() == "text"; }},
        {&wide, [](const CmObject* copy) { return cast<CmVariant>(copy)->getText() == "text"; }},
        {&rational, [&](const CmObject* copy) { return copy->isEqual(&rational); }},
        {&pattern, [](const CmObject* copy) { return cast<CmRegularExpression>(copy)->match("ab"); }},
        {&text, [&](const CmObject* copy) { return copy->isEqual(&text); }},
        {&numbered, [&](const CmObject* copy) { return copy->isEqual(&numbered); }},
        {&tokens, [](const CmObject* copy) { return cast<CmTokens>(copy)->token().string() == "a"; }},
    };
    for (const auto& row : rows)
        failEachAllocation([&](FailingAllocation& allocation) {
            const auto copy = Ref<CmObject>::adopt(allocation.during([&] { return row.object->clone(); }));
            EXPECT_EQ(copy != nullptr, !allocation.hasFailed()) << row.object->getClassName();
            EXPECT_TRUE(!copy || row.isSame(copy.get())) << row.object->getClassName();
        });
    EXPECT_TRUE(Ref<CmObject>::adopt(CmBuffer().clone())) << "nothing is copied as well";
    EXPECT_TRUE(Ref<CmObject>::adopt(CmVariant().clone()));
}

TEST(ValueClasses, EndTheWholeSaveRatherThanBeLeftOut) {
    CmUID uid(FUID(1, 2, 3, 4));
    CmDate date(1, 2, 2003);
    CmTime time(4u);
    CmRational rational(1, 2);
    CmRegularExpression pattern("a*");
    CmVariant variant(ConstString("a text that is stored"));
    CmAssociation pair(&rational, &variant, Ownership::none, Ownership::none);
    CmString text("a text that is stored");
    for (CmObject* object :
         std::initializer_list<CmObject*>{&uid, &date, &time, &rational, &pattern, &variant, &pair, &text})
        failEachAllocation([object](FailingAllocation& allocation) {
            const auto attributes = make<FAttributes>();
            bool isStored = true;
            const bool isWhole =
                allocation.completes([&] { isStored = object->storeAttributes(attributes.get()); });
            EXPECT_EQ(isWhole, !allocation.hasFailed()) << object->getClassName();
            EXPECT_TRUE(isStored) << object->getClassName() << " alone would be missing";
        });
}

TEST(CmBuffer, ShowsItsBlockToOthers) {
    const auto buffer = make<CmBuffer>("abc", 3, 4);
    Ref<IMemoryBlock> block;
    ASSERT_EQ(buffer->queryInterface(IMemoryBlock::iid, block.out()), Result::ok);
    EXPECT_TRUE(block->append("de", 2));
    EXPECT_EQ(block->getCapacity(), 8);
    EXPECT_EQ(std::string_view(static_cast<char*>(block->getAddress()), 5), "abcde");
    EXPECT_EQ(block->getUsedSize(), 5);
}

TEST(CmRational, IsOrderedByItsQuotient) {
    constexpr int64_t big = std::numeric_limits<int64_t>::max();
    struct Row {
        CmRational a, b;
        int32_t order;
    } rows[] = {
        {{1, 2}, {1, 2}, 0},      {{1, 2}, {2, 4}, 0},  {{1, 3}, {1, 2}, -1}, {{-1, 2}, {1, -2}, 0},
        {{1, -2}, {-1, 3}, -1},   {{0, 1}, {0, -5}, 0}, {{0, 0}, {0, 1}, 0},  {{1, 0}, {big, 1}, 1},
        {{-1, 0}, {-big, 1}, -1}, {{2, 0}, {1, 0}, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.a.numerator() << '/' << row.a.denominator() << " and "
                                          << row.b.numerator() << '/' << row.b.denominator());
        EXPECT_EQ(row.a.compare(&row.b), row.order);
        EXPECT_EQ(row.b.compare(&row.a), -row.order);
        EXPECT_EQ(row.a.isEqual(&row.b), row.order == 0);
        EXPECT_TRUE(row.order != 0 || row.a.hashCode(1009) == row.b.hashCode(1009))
            << "equal objects share a bucket";
    }
    const CmString other("1/2");
    EXPECT_FALSE(rows[0].a.isEqual(&other));
}

TEST(CmRational, IsStoredAsItWasGiven) {
    CmRational value(-6, 4);
    const auto attributes = make<FAttributes>();
    ASSERT_TRUE(value.storeAttributes(attributes.get()));
    EXPECT_EQ(attributes->getInteger("Numerator"), -6);
    CmRational restored;
    EXPECT_EQ(restored.denominator(), 1);
    ASSERT_TRUE(restored.restoreAttributes(attributes.get()));
    EXPECT_EQ(restored.denominator(), 4);

    restored.setFraction(0, 1);
    expectCutsRefused(restored, written(value));
    EXPECT_EQ(restored.numerator(), 0);
    ASSERT_TRUE(read(restored, written(value)));
    EXPECT_EQ(restored.numerator(), -6);

    Ref<IRational> face;
    const auto shared = make<CmRational>(1, 2);
    ASSERT_EQ(shared->queryInterface(IRational::iid, face.out()), Result::ok);
    face->setFraction(3, 5);
    EXPECT_EQ(face->getNumerator() * 10 + face->getDenominator(), 35);
}

TEST(CmVariant, ConvertsNumbersTowardZeroWithinTheirRange) {
    struct Row {
        double real;
        int64_t integer;
    } rows[] = {{2.9, 2},
                {-2.9, -2},
                {1e30, std::numeric_limits<int64_t>::max()},
                {-1e30, std::numeric_limits<int64_t>::min()},
                {std::nan(""), 0}};
    for (const Row& row : rows)
        EXPECT_EQ(CmVariant(row.real).getInteger(), row.integer) << row.real;
    EXPECT_EQ(CmVariant(int64_t{7}).getReal(), 7.0);
    EXPECT_EQ(CmVariant(ConstString("7")).getInteger(), 0);
    EXPECT_EQ(CmVariant(int64_t{7}).getObject(), nullptr);
    EXPECT_TRUE(CmVariant(int64_t{7}).getText().isEmpty());
}

TEST(CmVariant, OwnsWhatItWasGivenToOwn) {
    const auto object = make<CmString>("o");
    {
        CmVariant variant;
        variant.setObject(object.get(), Hold::view);
        EXPECT_EQ(variant.type(), CmVariant::object);
        EXPECT_EQ(referencesOn(object.get()), 1u);
        CmVariant copy(variant);
        EXPECT_EQ(referencesOn(object.get()), 1u) << "a copy of a look is a look";
        variant.setObject(object.get());
        EXPECT_EQ(variant.type(), CmVariant::object | CmVariant::ownedFlag);
        copy = variant;
        EXPECT_EQ(referencesOn(object.get()), 3u);
        variant.setObject(retain(object.get()).detach(), Hold::adopt);
        EXPECT_EQ(referencesOn(object.get()), 3u);
        variant.setInteger(1);
        EXPECT_EQ(referencesOn(object.get()), 2u);
    }
    EXPECT_EQ(referencesOn(object.get()), 1u);

    CmVariant holder;
    holder.setObject(new CmVariant(int64_t{7}), Hold::adopt);
    holder = *cast<CmVariant>(holder.getObject());
    EXPECT_EQ(holder.getInteger(), 7) << "the value of what goes with its own";

    const char* text = "look";
    CmVariant variant;
    variant.setText8(text, Hold::view);
    EXPECT_EQ(variant.getText().data(), text);
    variant.setText8(static_cast<const char*>(std::memcpy(std::malloc(4), "own", 4)), Hold::adopt);
    const CmVariant copy(variant);
    variant.setText8(variant.getText().text8() + 1);
    EXPECT_EQ(variant.getText(), ConstString("wn")) << "a part of its own text";
    EXPECT_EQ(copy.getText(), ConstString("own"));
    EXPECT_FALSE(variant.setText16(nullptr));
    EXPECT_EQ(variant.type(), CmVariant::none);
}

std::vector<CmVariant> oneOfEachKind(CmObject* object) {
    std::vector<CmVariant> all(6);
    all[1].setInteger(-5);
    all[2].setReal(0.25);
    all[3].setText8("eight");
    all[4].setText16(u"sïxteen");
    all[5].setObject(object);
    return all;
}

void expectSame(const CmVariant& a, const CmVariant& b) {
    EXPECT_EQ(a.type(), b.type());
    EXPECT_EQ(a.getInteger(), b.getInteger());
    EXPECT_EQ(a.getReal(), b.getReal());
    EXPECT_EQ(a.getText(), b.getText());
    EXPECT_EQ(a.getText().isWide(), b.getText().isWide());
    const auto* object = cast<CmString>(a.getObject());
    EXPECT_TRUE(!object || object->isEqual(b.getObject()));
}

TEST(CmVariant, ComesBackByItsKindFromAttributesRecordsAndStreams) {
    const auto object = make<CmString>("o");
    for (CmVariant& variant : oneOfEachKind(object.get())) {
        SCOPED_TRACE(variant.type());
        const auto attributes = make<FAttributes>();
        ASSERT_TRUE(variant.storeAttributes(attributes.get()));
        CmVariant restored(ConstString("old"));
        ASSERT_TRUE(restored.restoreAttributes(attributes.get()));
        expectSame(restored, variant);
        expectSame(CmVariant(variant.toRecord()), variant);

        std::string bytes = written(variant);
        restored.setInteger(9);
        expectCutsRefused(restored, bytes);
        EXPECT_EQ(restored.getInteger(), 9);
        ASSERT_TRUE(read(restored, bytes));
        expectSame(restored, variant);

        // Bits above the mark of ownership say nothing.
        bytes[0] = static_cast<char>(bytes[0] | 0xC0);
        bytes[1] = '\x81';
        restored.setInteger(9);
        ASSERT_TRUE(read(restored, bytes));
        expectSame(restored, variant);
        attributes->setInteger("type", variant.type() | 0x7100);
        restored.setInteger(9);
        ASSERT_TRUE(restored.restoreAttributes(attributes.get()));
        expectSame(restored, variant);
    }
}

TEST(CmVariant, OwnsWhatItRestores) {
    const auto attributes = make<FAttributes>();
    CmVariant look;
    look.setText8("look", Hold::view);
    ASSERT_TRUE(look.storeAttributes(attributes.get()));
    EXPECT_EQ(attributes->getInteger("type"), CmVariant::text8);
    EXPECT_EQ(attributes->getString("str"), ConstString("look"));
    ASSERT_TRUE(look.restoreAttributes(attributes.get()));
    EXPECT_EQ(look.type(), CmVariant::text8 | CmVariant::ownedFlag);
    attributes->setInteger("type", 3);
    EXPECT_FALSE(look.restoreAttributes(attributes.get())) << "no such kind";
}

TEST(CmVariant, RestoresATextWholeOrEndsTheLoad) {
    // In either width, whatever the one that it was stored in.
    for (const ConstString& stored : {ConstString("text"), ConstString(u"t\u00E4xt"), ConstString("")})
        for (const uint16_t kind : {CmVariant::text8, CmVariant::text16}) {
            const auto attributes = make<FAttributes>();
            attributes->setInteger("type", kind);
            attributes->setString("str", stored);
            failEachAllocation([&](FailingAllocation& allocation) {
                CmVariant restored;
                const bool isRestored =
                    allocation.completes([&] { restored.restoreAttributes(attributes.get()); });
                EXPECT_EQ(isRestored, !allocation.hasFailed());
                EXPECT_EQ(restored.bareType(), isRestored ? kind : uint16_t{CmVariant::none});
                EXPECT_TRUE(!isRestored || restored.getText() == String(stored));
            });
        }
    const auto attributes = make<FAttributes>();
    attributes->setInteger("type", CmVariant::text16);
    attributes->setString("str", "\xff");
    EXPECT_FALSE(CmVariant().restoreAttributes(attributes.get())) << "no text in that width";
}

} // namespace
} // namespace qorl
