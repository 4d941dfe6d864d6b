#include "foundation/messages/FMessage.h"

#include "persistence/archive/FCompactArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/FailingAllocation.h"
#include "support/Objects.h"

#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

TEST(FMessage, ReadsBackItsAttributesAndNothingForMissingKeys) {
    FMessage message("Test");
    EXPECT_TRUE(message.isNamed("Test"));
    EXPECT_FALSE(message.isNamed("test"));
    EXPECT_FALSE(message.hasAttributes());
    EXPECT_EQ(message.getInt("no"), 0);
    EXPECT_EQ(message.getFloat("no"), 0);
    EXPECT_TRUE(message.getString("no").isEmpty());
    EXPECT_EQ(message.getObject("no"), nullptr);
    EXPECT_FALSE(message.contains("no"));
    EXPECT_FALSE(message.hasAttributes()) << "reading makes no list";

    const Ref<CmString> object = make<CmString>("object");
    message.setInt("int", INT64_MIN);
    message.setFloat("float", 0.5);
    message.setString("string", ConstString(u"text"));
    message.setObject("object", object.get());
    EXPECT_EQ(message.getInt("int"), INT64_MIN);
    EXPECT_EQ(message.getFloat("float"), 0.5);
    EXPECT_EQ(message.getString("string").toUtf8(), "text");
    EXPECT_EQ(message.getObject("object"), object.get());
    EXPECT_EQ(referencesOn(object.get()), 2u);

    const Ref<CmObject> copy = Ref<CmObject>::adopt(message.clone());
    message.remove("int");
    message.setObject("object", nullptr);
    EXPECT_FALSE(message.contains("int"));
    EXPECT_FALSE(message.contains("object"));
    EXPECT_EQ(static_cast<FMessage*>(copy.get())->getInt("int"), INT64_MIN) << "a copy has a list of its own";
}

TEST(FMessage, ShowsItsAttributesToOtherModules) {
    const Ref<FMessage> message = make<FMessage>("Test");
    Ref<IMessageAttributes> face;
    ASSERT_EQ(message->queryInterface(IMessageAttributes::iid, face.out()), Result::ok);
    CmObject object;
    EXPECT_EQ(face->setInt16(u"int", 3), Result::ok);
    EXPECT_EQ(face->setFloat8("float", 1.5), Result::ok);
    EXPECT_EQ(face->setString16(u"string", u"tschüß"), Result::ok);
    EXPECT_EQ(face->setObject8("object", &object), Result::ok);
    EXPECT_EQ(message->getInt("int"), 3);
    EXPECT_EQ(message->getObject("object"), &object);

    double number = 0;
    EXPECT_EQ(face->getFloat16(u"float", &number), Result::ok);
    EXPECT_EQ(number, 1.5);
    CmString text;
    EXPECT_EQ(face->getString8("string", &text), Result::ok);
    EXPECT_EQ(text.string().toUtf8(), "tschüß");
    FInterface* found = nullptr;
    EXPECT_EQ(face->getObject16(u"object", &found), Result::ok);
    EXPECT_EQ(castToCmObject(found), &object);

    Ref<IMessageObjects> objects;
    ASSERT_EQ(face->queryInterface(IMessageObjects::iid, objects.out()), Result::ok);
    Ref<FInterface> kept;
    EXPECT_EQ(objects->fetchObject("object", reinterpret_cast<FInterface**>(kept.out())), Result::ok);
    EXPECT_EQ(kept.get(), &object);
    EXPECT_EQ(objects->removeObject("int"), Result::no) << "it is no object";
    EXPECT_EQ(objects->removeObject("object"), Result::ok);
    EXPECT_EQ(objects->fetchObject("object", &found), Result::no);
    EXPECT_EQ(referencesOn(&object), 2u) << "one is left with the caller";

    int64_t missing = 9;
    EXPECT_EQ(face->getInt8("missing", &missing), Result::no);
    EXPECT_EQ(missing, 0);
    EXPECT_EQ(face->getInt8(nullptr, &missing), Result::invalidArgument);
    EXPECT_EQ(face->contains8("int"), Result::ok);
    EXPECT_EQ(face->remove8("int"), Result::ok);
    EXPECT_EQ(face->contains8("int"), Result::no);
    EXPECT_EQ(face->setInt16(nullptr, 1), Result::invalidArgument);
}

TEST(FMessage, TellsOtherModulesOfMissingMemory) {
    failEachAllocation([&](FailingAllocation& allocation) {
        const Ref<FMessage> message = make<FMessage>("Test");
        const Result result = allocation.during([&] { return message->setInt16(u"a rather long key", 3); });
        EXPECT_EQ(result, allocation.hasFailed() ? Result::failure : Result::ok);
        EXPECT_EQ(message->getInt("a rather long key"), allocation.hasFailed() ? 0 : 3);
    });
    failEachAllocation([&](FailingAllocation& allocation) {
        const Ref<FMessage> message = allocation.during([] { return FMessage::named("Quite a long name"); });
        EXPECT_EQ(message == nullptr, allocation.hasFailed());
    });
}

TEST(FMessage, IsItsNameAndTheBodyOfItsAttributesInAStream) {
    FMessage message("Moved");
    message.setInt("x", 7);
    message.setString("unit", ConstString("mm"));
    const std::string forms[] = {
        std::string("\6\0\0\0Moved\0\2\0\0\0"
                    "\2\0\0\0x\0\1\0\7\0\0\0\0\0\0\0"
                    "\5\0\0\0unit\0\x08\0\3\0\0\0mm\0",
                    48),
        std::string("\0\0\0\6Moved\0\0\0\0\2"
                    "\0\0\0\2x\0\0\1\0\0\0\0\0\0\0\7"
                    "\0\0\0\5unit\0\0\x08\0\0\0\3mm\0",
                    48),
    };
    for (const std::string& bytes : forms) {
        const auto byteOrder = static_cast<uint16_t>(&bytes - forms);
        SCOPED_TRACE(byteOrder);
        FMemoryStream written;
        written.setByteOrder(byteOrder);
        FCompactArchive writer(written, FObjectArchive::Direction::storing);
        EXPECT_TRUE(message.writeTo(&writer));
        EXPECT_EQ(written.bytes(), bytes);
        for (size_t length = 0; length <= bytes.size(); ++length) {
            FMemoryStream stream{std::string_view(bytes).substr(0, length)};
            stream.setByteOrder(byteOrder);
            FCompactArchive reader(stream, FObjectArchive::Direction::reading);
            FMessage read("Old");
            read.setInt("forgotten", 1);
            ASSERT_EQ(read.readFrom(&reader), length == bytes.size()) << "cut behind " << length << " bytes";
            if (length < bytes.size())
                continue;
            EXPECT_TRUE(read.isNamed("Moved"));
            EXPECT_EQ(read.getInt("x"), 7);
            EXPECT_EQ(read.getString("unit").toUtf8(), "mm");
            EXPECT_FALSE(read.contains("forgotten"));
        }
    }
}

} // namespace
} // namespace qorl
