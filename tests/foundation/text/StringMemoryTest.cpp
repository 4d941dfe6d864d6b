#include "foundation/text/String.h"
#include "support/FailingAllocation.h"

namespace qorl {
namespace {

TEST(String, LetsNoFailedAllocationOut) {
    failEachAllocation([](FailingAllocation& memory) {
        String text(u"a long text");
        memory.during([&] { text.append(u" and more"); });
        EXPECT_EQ(text.size(), memory.hasFailed() ? 11 : 20);
    });
}

} // namespace
} // namespace qorl
