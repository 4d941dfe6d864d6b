#include "BodyBytes.h"
#include "ForeignObject.h"
#include "foundation/Cast.h"
#include "foundation/text/CmString.h"
#include "persistence/archive/ArchiveTesting.h"
#include "persistence/attributes/AttributesStream.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FXmlObject.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/FailingAllocation.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

using Hold = FAttributes::Hold;

const std::string longText(300, 'x');

/// Values of all kinds, too large for any small room.
void fill(FAttributes& attributes) {
    for (int32_t i = 0; i < 14; ++i)
        attributes.setInteger(longText + std::to_string(i), i);
    fillWithAllKinds(attributes, longText.c_str());
    const auto state = make<FAttributes>();
    const auto ring = make<FXmlInstance>(7, "Ring", state);
    const auto self = make<FXmlReference>(7);
    self->bind(ring.get(), FXmlReference::Binding::watch);
    state->setObject("self", self.get(), Hold::retain);
    attributes.setObject("ring", ring.get(), Hold::retain);
}

TEST(AttributesMemory, WritesAllOrNothing) {
    FAttributes attributes;
    fill(attributes);
    const std::string whole = stored(attributes);
    failEachAllocation([&](FailingAllocation& memory) {
        std::string room(whole.size(), 0);
        FMemoryStream stream(room.data(), static_cast<int64_t>(room.size()));
        std::string fault;
        const bool isWritten = memory.during([&] { return writeAttributes(stream, attributes, &fault); });
        if (isWritten) {
            EXPECT_TRUE(room == whole);
        } else {
            EXPECT_EQ(stream.tell(), 0);
            EXPECT_EQ(fault, "out of memory");
        }
        EXPECT_TRUE(isWritten || memory.hasFailed());
    });
}

TEST(AttributesMemory, TellsThatReadingFailed) {
    FAttributes attributes;
    fill(attributes);
    const std::string whole = stored(attributes);
    BodyBytes old(0);
    old.int32(2).object("texts", 41).int32(1).text(longText);
    old.object("objects", 101).int32(1).text("CmString").int32(1).text("s").word(8).text(longText);
    const auto isWhole = [](FAttributes& read) {
        ConstString text;
        const bool isText = read.nextText("texts", text) && text == ConstString(longText.c_str());
        const Ref<CmObject> object = read.nextObject("objects", "CmString");
        const auto* string = cast<CmString>(object.get());
        return isText && string && string->string() == ConstString(longText.c_str()) && read.count() == 2;
    };
    failEachAllocation([&](FailingAllocation& memory) {
        FAttributes read;
        const bool isRead = memory.during([&] { return load(old.bytes(), read); });
        EXPECT_TRUE(isRead || memory.hasFailed());
        EXPECT_TRUE(!isRead || isWhole(read)) << "what is read is there";
    });
    failEachAllocation([&](FailingAllocation& memory) {
        FAttributes read;
        std::string fault;
        const bool isRead = memory.during([&] { return load(whole, read, 0, &fault); });
        EXPECT_TRUE(isRead || memory.hasFailed());
        EXPECT_EQ(fault, isRead ? "" : "out of memory");
        if (isRead) {
            EXPECT_TRUE(stored(read) == whole);
        }
    });
}

TEST(AttributesMemory, GivesNoNullForAPartThatIsStored) {
    BodyBytes bytes(0);
    bytes.int32(1).object("o", 20).text("CmString").int64(1).int32(2).text("s").word(8).text("x");
    bytes.object("part", 20).text("CmString").int64(2).int32(0);
    failEachAllocation([&](FailingAllocation& memory) {
        const GlobalReports log;
        FAttributes read;
        ASSERT_TRUE(load(bytes.bytes(), read));
        Ref<CmObject> object;
        const bool isDone = memory.completes([&] { object = read.getObject("o"); });
        EXPECT_TRUE(object || !isDone || !log.text.empty()) << "it would be left out of the next save";
        EXPECT_NE(read.getObject("o"), nullptr) << "the next time";
    });
}

TEST(AttributesMemory, GivesNoEmptyTextForOneThatIsStored) {
    struct Case {
        const char* name;
        void (*fill)(FAttributeValue& value);
    };
    const Case cases[] = {
        {"8 bits", [](FAttributeValue& v) { v.setString("\xC3\xA4"); }},
        {"16 bits", [](FAttributeValue& v) { v.setString(u"\u00E4"); }},
        {"8 bits of somebody else's", [](FAttributeValue& v) { v.referToText("\xC3\xA4"); }},
        {"16 bits of somebody else's", [](FAttributeValue& v) { v.referToText(u"\u00E4"); }},
        {"an object of 8 bits",
         [](FAttributeValue& v) { v.setObject(new CmString("\xC3\xA4"), Hold::adopt); }},
        {"an object of 16 bits",
         [](FAttributeValue& v) { v.setObject(new CmString(u"\u00E4"), Hold::adopt); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        failEachAllocation([&](FailingAllocation& memory) {
            FAttributeValue values[2];
            c.fill(values[0]);
            c.fill(values[1]);
            const char* bytes = "\xC3\xA4";
            const char16_t* units = u"\u00E4";
            memory.completes([&] {
                bytes = values[0].getText8();
                units = values[1].getText16();
            });
            EXPECT_STREQ(bytes, "\xC3\xA4");
            EXPECT_EQ(std::u16string(units), u"\u00E4");
            EXPECT_EQ(values[1].getString(), ConstString(u"\u00E4")) << "it stays as it was";
        });
    }
}

TEST(AttributesMemory, CopiesAndDetachesWholeOrNotAtAll) {
    FAttributes attributes;
    fill(attributes);
    const auto text = make<CmString>("plain");
    attributes.setObject("plain", text.get(), Hold::plain);
    attributes.setObject("formless", new CmObject, Hold::adopt);
    char foreign[] = "foreign";
    attributes.setBinary("foreign", foreign, 7, false);
    const std::string whole = stored(attributes);
    failEachAllocation([&](FailingAllocation& memory) {
        const auto copy = Ref<CmObject>::adopt(memory.during([&] { return attributes.clone(); }));
        EXPECT_TRUE(copy || memory.hasFailed());
        if (copy) {
            EXPECT_TRUE(stored(*cast<FAttributes>(copy)) == whole);
        }
    });
    failEachAllocation([&](FailingAllocation& memory) {
        FAttributes copy(attributes);
        const bool isDetached = memory.during([&] { return copy.detachObjects(); });
        EXPECT_TRUE(isDetached || memory.hasFailed());
        if (!isDetached) {
            EXPECT_TRUE(stored(copy) == whole);
        }
        EXPECT_EQ(cast<CmString>(copy.find("plain")->getObject()) == text.get(), !isDetached);
        EXPECT_EQ(copy.contains("formless"), !isDetached);
    });
}

struct FaceCase {
    const char* name;
    Result (*act)(IAttributes& face, FInterface* foreign);
};
const FaceCase faceCases[] = {
    {"set a text",
     [](IAttributes& face, FInterface*) { return face.set(longText.c_str(), valueOf(longText.c_str())); }},
    {"set a text that is given away",
     [](IAttributes& face, FInterface*) {
         auto* block = static_cast<char*>(std::malloc(50));
         return block ? face.set("text", givenAway(valueOf(std::strcpy(block, "given away")))) : Result::no;
     }},
    {"set an object",
     [](IAttributes& face, FInterface* foreign) {
         return face.set("object", givenAway(valueOf(retain(foreign).detach())));
     }},
    {"queue a text",
     [](IAttributes& face, FInterface*) {
         return face.queue("texts", valueOf(u"a text that is queued behind others"));
     }},
    {"queue an object",
     [](IAttributes& face, FInterface* foreign) { return face.queue("objects", valueOf(foreign)); }},
    {"set bytes",
     [](IAttributes& face, FInterface*) { return face.setBinary("bytes", longText.data(), 300, true); }},
    {"reset", [](IAttributes& face, FInterface*) { return face.resetAllQueues(); }},
};

TEST(AttributesMemory, LetsNothingOutToOtherModules) {
    for (const auto& c : faceCases) {
        SCOPED_TRACE(c.name);
        failEachAllocation([&](FailingAllocation& memory) {
            ForeignObject foreign;
            {
                FAttributes attributes;
                attributes.setInteger("before", 1);
                const Result result = memory.during([&] { return c.act(attributes, &foreign); });
                // A block that can't grow by as much as it would like takes what there is.
                EXPECT_TRUE(result == Result::ok || memory.hasFailed());
                EXPECT_EQ(attributes.getInteger("before"), 1);
                if (result != Result::ok) {
                    EXPECT_EQ(attributes.getBinarySize("bytes"), 0);
                    EXPECT_EQ(attributes.getQueueItemCount("texts"), 0);
                    EXPECT_EQ(attributes.getQueueItemCount("objects"), 0);
                }
            }
            EXPECT_EQ(foreign.references(), 1u);
        });
    }
}

} // namespace
} // namespace qorl
