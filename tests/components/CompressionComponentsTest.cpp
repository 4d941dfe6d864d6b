#include "components/CompressionComponents.h"

#include "components/FComponentRegistry.h"
#include "foundation/Cast.h"
#include "persistence/streams/ZLibCompressor.h"
#include "support/SettingsFolder.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(CompressionComponents, StandInTheDirectoryOnce) {
    const SettingsFolder folder;
    FComponentRegistry::makeInstance();
    auto& registry = *FComponentRegistry::instance();
    registerCompressionEngines(registry);
    registerCompressionEngines(registry);
    EXPECT_EQ(registry.countInCategory("Compression Engine"), 1);
    const auto* zlib = registry.findByName("Compression Engine", "Zlib Compressor");
    ASSERT_NE(zlib, nullptr);
    EXPECT_EQ(zlib->getId(), FUID(0x443752F1, 0x5680439C, 0xAC5CB48A, 0x13A8D6DE));
    EXPECT_EQ(zlib->getCardinality(), 0x7FFFFFFF);
    const Ref<CmObject> engine = registry.create(nullptr, "Compression Engine", 0);
    EXPECT_NE(cast<ZLibCompressor>(engine.get()), nullptr);
    FComponentRegistry::dropInstance();
}

} // namespace
} // namespace qorl
