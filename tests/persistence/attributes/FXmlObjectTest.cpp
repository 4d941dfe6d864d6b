#include "persistence/attributes/FXmlObject.h"

#include "support/Slots.h"

#include <cstddef>
#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(FXmlObject, KeepsItsSlotsBehindThoseOfEveryObject) {
    const ptrdiff_t first = testing::entryOf(&CmObject::clone) + 1;
    EXPECT_EQ(testing::entryOf(&FXmlObject::getObject), first);
    EXPECT_EQ(testing::entryOf(&FXmlObject::getAttributes), first + 1);
    EXPECT_EQ(testing::entryOf(&FXmlObject::isClass), first + 2);
}

} // namespace
} // namespace qorl
