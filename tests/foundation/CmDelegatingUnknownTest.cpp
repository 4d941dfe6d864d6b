#include "foundation/CmDelegatingUnknown.h"

#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"
#include "foundation/FPersistent.h"
#include "foundation/text/String.h"
#include "persistence/archive/FCompactArchive.h"
#include "persistence/attributes/AttributesStream.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/FailingAllocation.h"
#include "support/Objects.h"
#include "support/StoredBytes.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

const FUID foreignClass(0x00112233, 0x44556677, 0x8899AABB, 0xCCDDEEFF);

/// An object of another module that keeps one number.
class Foreign : public FPersistent {
public:
    explicit Foreign(int64_t number = 0) : number(number) { ++alive; }
    virtual ~Foreign() { --alive; }

    Result queryInterface(const InterfaceId& id, void** out) override {
        const bool known = id == FInterface::iid || id == FPersistent::iid;
        *out = known ? this : nullptr;
        if (known)
            addRef();
        return known ? Result::ok : Result::noInterface;
    }
    uint32_t addRef() override { return ++count_; }
    uint32_t release() override {
        const uint32_t left = --count_;
        if (left == 0)
            delete this;
        return left;
    }
    Result getClassId(FUID& classId) override {
        classId = foreignClass;
        return Result::ok;
    }
    Result store(FAttributes* attributes) override {
        attributes->setInteger("number", number);
        return Result::ok;
    }
    Result restore(FAttributes* attributes) override {
        number = attributes->getInteger("number");
        return Result::ok;
    }

    static inline int alive = 0;
    int64_t number;

private:
    uint32_t count_ = 1;
};

Ref<CmDelegatingUnknown> wrap(const Ref<Foreign>& foreign, CmDelegatingUnknown::Owner* owner = nullptr) {
    return make<CmDelegatingUnknown>(Ref<FInterface>(foreign), owner);
}

class CmDelegatingUnknownTest : public ::testing::Test {
protected:
    void SetUp() override {
        previous = CmDelegatingUnknown::setCreator([](const FUID& id) {
            return id == foreignClass ? Ref<FInterface>::adopt(new Foreign) : Ref<FInterface>();
        });
    }
    void TearDown() override {
        CmDelegatingUnknown::setCreator(previous);
        EXPECT_EQ(Foreign::alive, 0);
    }
    CmDelegatingUnknown::Creator previous = nullptr;
};

TEST_F(CmDelegatingUnknownTest, AnswersWithTheFacesOfWhatItWraps) {
    const Ref<Foreign> foreign = make<Foreign>();
    const Ref<CmDelegatingUnknown> wrapper = wrap(foreign);
    Ref<FPersistent> face;
    EXPECT_EQ(wrapper->queryInterface(FPersistent::iid, face.out()), Result::ok);
    EXPECT_EQ(face, foreign.get());
    EXPECT_EQ(castToCmObject(static_cast<FInterface*>(wrapper.get())), nullptr)
        << "the foreign object is not ours";
    EXPECT_TRUE(wrapper->isEqual(wrap(foreign).get()));
    EXPECT_FALSE(wrapper->isEqual(wrap(make<Foreign>()).get()));
    CmObject other;
    EXPECT_FALSE(wrapper->isEqual(&other));
}

TEST_F(CmDelegatingUnknownTest, TellsItsOwnerThatItGoes) {
    struct Owner : CmDelegatingUnknown::Owner {
        void wrapperDestroyed(CmDelegatingUnknown* wrapper) override { gone = wrapper; }
        CmDelegatingUnknown* gone = nullptr;
    } owner;
    const Ref<Foreign> foreign = make<Foreign>();
    auto* wrapper = wrap(foreign, &owner).detach();
    const Ref<CmObject> copy = Ref<CmObject>::adopt(wrapper->clone());
    wrapper->release();
    EXPECT_EQ(owner.gone, wrapper);
    owner.gone = nullptr;
    EXPECT_EQ(referencesOn(foreign.get()), 2u) << "ours and the copy's";
}

TEST_F(CmDelegatingUnknownTest, ComesBackFromItsAttributesAsANewObject) {
    const Ref<CmDelegatingUnknown> wrapper = wrap(make<Foreign>(77));
    const Ref<FAttributes> stored = make<FAttributes>();
    ASSERT_TRUE(wrapper->storeAttributes(stored.get()));
    EXPECT_EQ(stored->getString("GUID").toUtf8(), "00112233445566778899AABBCCDDEEFF");
    ASSERT_NE(stored->getAttributes("ObjData"), nullptr);

    CmDelegatingUnknown back;
    ASSERT_TRUE(back.restoreAttributes(stored.get()));
    ASSERT_NE(back.foreign(), nullptr);
    EXPECT_NE(back.foreign(), wrapper->foreign());
    EXPECT_EQ(static_cast<Foreign*>(back.foreign())->number, 77);

    stored->setString("GUID", ConstString("FF112233445566778899AABBCCDDEEFF"));
    EXPECT_FALSE(back.restoreAttributes(stored.get())) << "a class that nobody creates";
    stored->remove("ObjData");
    EXPECT_FALSE(back.restoreAttributes(stored.get()));
}

TEST_F(CmDelegatingUnknownTest, ComesBackFromAStreamAsANewObject) {
    const std::string bytes = testing::written(*wrap(make<Foreign>(77)));
    FMemoryStream stream(bytes);
    String id;
    ASSERT_TRUE(id.readFrom(stream));
    EXPECT_EQ(id.toUtf8(), "33221100554477668899AABBCCDDEEFF") << "its bytes in memory order come first";
    CmDelegatingUnknown back;
    FCompactArchive archive(stream, FObjectArchive::Direction::storing);
    EXPECT_FALSE(back.writeTo(&archive)) << "it wraps nothing yet";
    ASSERT_TRUE(testing::read(back, bytes));
    ASSERT_NE(back.foreign(), nullptr);
    EXPECT_EQ(static_cast<Foreign*>(back.foreign())->number, 77);
}

TEST_F(CmDelegatingUnknownTest, WithoutMemoryItSaysThatItIsNotStored) {
    const Ref<CmDelegatingUnknown> wrapper = wrap(make<Foreign>(77));
    FAttributes attributes;
    attributes.setObject("o", wrapper.get(), FAttributes::Hold::retain);
    failEachAllocation([&](FailingAllocation& memory) {
        char room[1000];
        FMemoryStream stream(room, sizeof room);
        const bool stored = memory.during([&] { return writeAttributes(stream, attributes); });
        EXPECT_NE(stored, memory.hasFailed());
    });
    failEachAllocation([&](FailingAllocation& memory) {
        const Ref<FMemoryStream> stream = make<FMemoryStream>();
        stream->pad(1); // has its block
        FCompactArchive archive(*stream, FObjectArchive::Direction::storing);
        const bool stored = memory.during([&] { return wrapper->writeTo(&archive); });
        EXPECT_NE(stored, memory.hasFailed());
    });
}

TEST_F(CmDelegatingUnknownTest, StoresNothingOfAnObjectThatIsNotPersistent) {
    const Ref<CmDelegatingUnknown> wrapper =
        make<CmDelegatingUnknown>(Ref<FInterface>(make<FObject>()), nullptr);
    const Ref<FAttributes> stored = make<FAttributes>();
    EXPECT_FALSE(wrapper->storeAttributes(stored.get()));
    EXPECT_TRUE(stored->isEmpty());
    EXPECT_FALSE(CmDelegatingUnknown().storeAttributes(stored.get()));
}

struct CollectingSink : TextSink {
    void write(std::string_view part) override { text += part; }
    std::string text;
};

TEST_F(CmDelegatingUnknownTest, AForeignClassIsDescribedByItsId) {
    const Ref<Foreign> foreign = make<Foreign>();
    CollectingSink sink;
    EXPECT_TRUE(
        ClassFactory::instance()->describeClass(foreign.get(), sink, ClassFactory::NameForm::runTime));
    EXPECT_EQ(sink.text, "00112233445566778899AABBCCDDEEFF");
    EXPECT_FALSE(
        ClassFactory::instance()->describeClass(foreign.get(), sink, ClassFactory::NameForm::persistent))
        << "no record says that it could be created again";
}

} // namespace
} // namespace qorl
