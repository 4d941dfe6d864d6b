#include "persistence/attributes/FXmlObject.h"

#include "support/Slots.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(FXmlObject, KeepsItsSlotsBehindThoseOfEveryObject) {
    testing::expectConsecutive(
        {SLOT(FXmlObject, getObject), SLOT(FXmlObject, getAttributes), SLOT(FXmlObject, isClass)}, 25);
}

} // namespace
} // namespace qorl
