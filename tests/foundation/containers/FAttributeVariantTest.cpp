#include "foundation/text/CmString.h"
#include "support/Objects.h"

#include <qorl/FAttributeVariant.h>
#include <qorl/Ref.h>

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(FAttributeVariant, GivesUpWhatItOwnsAndNothingElse) {
    auto text = make<CmString>("object");
    FInterface* object = static_cast<FDependent*>(text.get());
    struct Row {
        uint32_t kind;
        uint32_t referencesAfter; ///< of an object that had two
    } rows[] = {
        {FAttributeVariant::object, 2},
        {FAttributeVariant::object | FAttributeVariant::ownedFlag, 1},
        {FAttributeVariant::integer | FAttributeVariant::ownedFlag, 2},
        {FAttributeVariant::real | FAttributeVariant::ownedFlag, 2},
        {FAttributeVariant::none, 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.kind);
        text->addRef();
        FAttributeVariant value{};
        value.kind = row.kind;
        value.objectValue = object;
        value.clear();
        EXPECT_EQ(referencesOn(text.get()), row.referencesAfter);
        EXPECT_EQ(value.kind, FAttributeVariant::none);
        EXPECT_EQ(value.integerValue, 0);
        value.clear();
        if (row.referencesAfter == 2)
            text->release();
    }
}

TEST(FAttributeVariant, OwnedTextsComeFromMalloc) {
    FAttributeVariant narrow{};
    narrow.kind = FAttributeVariant::text8 | FAttributeVariant::ownedFlag;
    narrow.text8Value = static_cast<const char*>(std::memcpy(std::malloc(4), "own", 4));
    EXPECT_TRUE(narrow.isOwned());
    EXPECT_EQ(ConstString(narrow), ConstString("own"));
    narrow.clear(); // the address sanitizer tells of a block that was kept, or freed twice
    EXPECT_TRUE(ConstString(narrow).isEmpty());

    FAttributeVariant wide{};
    wide.kind = FAttributeVariant::text16 | FAttributeVariant::ownedFlag;
    wide.text16Value = static_cast<const char16_t*>(std::memcpy(std::malloc(8), u"own", 8));
    EXPECT_EQ(ConstString(wide), ConstString(u"own"));
    wide.clear();

    FAttributeVariant empty{};
    empty.kind = FAttributeVariant::object | FAttributeVariant::ownedFlag;
    empty.clear();
    EXPECT_FALSE(empty.isOwned());
}

} // namespace
} // namespace qorl
