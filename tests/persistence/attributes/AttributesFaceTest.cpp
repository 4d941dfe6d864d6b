#include "ForeignObject.h"
#include "foundation/Cast.h"
#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FAttributes.h"
#include "support/Objects.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

TEST(AttributesFace, MovesValuesAcross) {
    const auto attributes = make<FAttributes>();
    Ref<IAttributes> face;
    ASSERT_EQ(attributes->queryInterface(IAttributes::binaryIid, face.out()), Result::ok);
    FAttributeVariant value{};
    const auto* block = static_cast<const char*>(std::memcpy(std::malloc(4), "own", 4));
    EXPECT_EQ(face->set("text", givenAway(valueOf(block))), Result::ok);
    EXPECT_EQ(face->get("text", value), Result::ok);
    EXPECT_EQ(value.kind, FAttributeVariant::text8);
    EXPECT_STREQ(value.text8Value, "own");
    EXPECT_EQ(face->set("text", valueOf(static_cast<const char16_t*>(nullptr))), Result::ok);
    EXPECT_EQ(face->get("text", value), Result::no) << "a null text removes the key";

    const auto object = make<CmString>("o");
    FInterface* given = static_cast<FDependent*>(retain(object.get()).detach());
    EXPECT_EQ(face->queue("objects", givenAway(valueOf(given))), Result::ok);
    EXPECT_EQ(referencesOn(object.get()), 2u);
    EXPECT_EQ(face->getQueueItemCount("objects"), 1);
    EXPECT_EQ(face->unqueue("objects", value), Result::ok);
    EXPECT_EQ(value.kind, FAttributeVariant::object | FAttributeVariant::ownedFlag);
    value.objectValue->release();
    EXPECT_EQ(face->unqueue("objects", value), Result::no);

    value = {};
    EXPECT_EQ(face->set("nothing", value), Result::no);
    EXPECT_EQ(face->setBinary("b", "xyz", 3, true), Result::ok);
    EXPECT_EQ(face->getBinarySize("b"), 3u);
    EXPECT_EQ(face->getAttributeCount(), 2);
    EXPECT_STREQ(face->getAttributeName(1), "b");
    EXPECT_EQ(face->getAttributeName(2), nullptr);
}

TEST(AttributesFace, HoldsObjectsOfOtherModules) {
    ForeignObject foreign;
    {
        const auto attributes = make<FAttributes>();
        IAttributes& face = *attributes;
        EXPECT_EQ(face.set("foreign", valueOf(&foreign)), Result::ok);
        EXPECT_EQ(foreign.references(), 2u);
        EXPECT_TRUE(attributes->find("foreign")->isObject()) << "the holder is stored as an object";
        FAttributeVariant value{};
        EXPECT_EQ(face.get("foreign", value), Result::ok);
        EXPECT_EQ(value.kind, FAttributeVariant::object);
        EXPECT_EQ(value.objectValue, &foreign) << "what is given back is what was given";
        EXPECT_EQ(face.queue("list", valueOf(&foreign)), Result::ok);
        EXPECT_EQ(face.unqueue("list", value), Result::ok);
        EXPECT_EQ(value.kind, FAttributeVariant::object | FAttributeVariant::ownedFlag);
        EXPECT_EQ(value.objectValue, &foreign);
        value.clear();
        EXPECT_EQ(foreign.references(), 3u);
        EXPECT_EQ(face.set("foreign", valueOf(static_cast<FInterface*>(nullptr))), Result::ok);
        EXPECT_EQ(face.get("foreign", value), Result::no);
        EXPECT_EQ(face.queue("list", valueOf(static_cast<FInterface*>(nullptr))), Result::no);
    }
    EXPECT_EQ(foreign.references(), 1u);
}

TEST(AttributesFace, QueuesAttributesAsAttributes) {
    const auto attributes = make<FAttributes>();
    const auto item = make<FAttributes>();
    EXPECT_EQ(attributes->queue("items", valueOf(static_cast<IAttributes*>(item.get()))), Result::ok);
    EXPECT_NE(cast<FSubList>(attributes->find("items")->getObject()), nullptr);
    FAttributeVariant value{};
    EXPECT_EQ(attributes->unqueue("items", value), Result::ok);
    EXPECT_EQ(value.kind, FAttributeVariant::object) << "still the list's own";
    EXPECT_EQ(cast<FAttributes>(value.objectValue), item.get());
    EXPECT_EQ(attributes->unqueue("items", value), Result::no);
    EXPECT_EQ(attributes->unqueue("items", value), Result::ok) << "the end starts the queue over";
}

TEST(AttributesFace, GivesEachKindOfItem) {
    for (const FAttributeVariant& value :
         {valueOf(int64_t{-7}), valueOf(0.5), valueOf("text"), valueOf(u"text")}) {
        SCOPED_TRACE(value.kind);
        FAttributes attributes;
        IAttributes& face = attributes;
        for (int time = 0; time < 2; ++time)
            EXPECT_EQ(face.queue("queue", value), Result::ok);
        EXPECT_EQ(face.set("value", value), Result::ok);
        EXPECT_EQ(face.getQueueItemCount("queue"), 2);
        String expected;
        expected.printVariant(value);
        FAttributeVariant answers[2] = {};
        EXPECT_EQ(face.unqueue("queue", answers[0]), Result::ok);
        EXPECT_EQ(face.get("value", answers[1]), Result::ok);
        for (const FAttributeVariant& answer : answers) {
            String given;
            given.printVariant(answer);
            EXPECT_EQ(answer.kind, value.kind);
            EXPECT_EQ(given, expected);
        }
        EXPECT_EQ(face.resetQueue("queue"), Result::ok);
        EXPECT_EQ(face.unqueue("queue", answers[0]), Result::ok);
        EXPECT_EQ(face.unqueue("queue", answers[0]), Result::ok);
        EXPECT_EQ(face.unqueue("queue", answers[0]), Result::no);
        EXPECT_EQ(face.resetQueue("none"), Result::no);
    }
}

} // namespace
} // namespace qorl
