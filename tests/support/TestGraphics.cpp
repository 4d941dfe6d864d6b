#include "support/TestGraphics.h"

#include "graphics/GraphicsFactory.h"

#include <gtest/gtest.h>

namespace qorl::testing {

namespace {

class Teardown : public ::testing::Environment {
public:
    void TearDown() override { shutdownGraphics(); }
};

::testing::Environment* const teardown = ::testing::AddGlobalTestEnvironment(new Teardown);

} // namespace

void useGraphics() {
    reopenGraphics();
    ASSERT_TRUE(selectGraphicsBackend("default")) << getGraphicsBackendName() << " was selected before";
}

} // namespace qorl::testing
