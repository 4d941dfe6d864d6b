#include "application/ApplicationInfo.h"

#include "support/FailingAllocation.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(ApplicationInfo, IsNotFilledWithHalfOfWhatItIsGiven) {
    failEachAllocation([](FailingAllocation& allocation) {
        const ConstString none("Uninitialized");
        const bool isFilled =
            allocation.completes([&] { ApplicationInfo::fillOnce("qorl-frame", none, none, none); });
        const ApplicationInfo& info = ApplicationInfo::get();
        for (const String* field : {&info.applicationName, &info.infoA, &info.infoB, &info.companyName})
            EXPECT_TRUE(!isFilled || field->isWide()) << field->text8();
    });
}

} // namespace
} // namespace qorl
