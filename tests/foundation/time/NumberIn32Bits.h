#pragma once

#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttributes.h"
#include "support/StoredBytes.h"

#include <qorl/Ref.h>

#include <gtest/gtest.h>

namespace qorl::testing {

/// That a value is equal, ordered and stored as the number without a sign that `number` gives, under `key`.
template <typename Value>
void expectNumberIn32Bits(uint32_t (Value::*number)() const, const char* key) {
    Value early(5u);
    Value late(0xF0000000u);
    EXPECT_EQ(early.compare(&late), -1);
    EXPECT_EQ(late.compare(&early), 1);
    EXPECT_TRUE(early.isEqual(make<Value>(early).get()));
    EXPECT_FALSE(early.isEqual(make<CmString>("5").get()));
    EXPECT_EQ(late.hashCode(1000), 0xF0000000u % 1000);

    const auto attributes = make<FAttributes>();
    ASSERT_TRUE(late.storeAttributes(attributes.get()));
    EXPECT_EQ(attributes->getInteger(key), 0xF0000000);
    Value restored(7u);
    ASSERT_TRUE(restored.restoreAttributes(attributes.get()));
    EXPECT_EQ((restored.*number)(), 0xF0000000u);

    Value stored(0x01020304u);
    EXPECT_EQ(written(stored), "\4\3\2\1");
    expectCutsRefused(restored, "\4\3\2\1");
    EXPECT_EQ((restored.*number)(), 0xF0000000u) << "a cut number is none";
    EXPECT_TRUE(read(restored, "\4\3\2\1"));
    EXPECT_EQ((restored.*number)(), 0x01020304u);
}

} // namespace qorl::testing
