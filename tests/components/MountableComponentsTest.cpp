#include "components/MountableComponents.h"

#include "persistence/mounts/FMountTable.h"
#include "support/PackComponent.h"
#include "support/SettingsFolder.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

Ref<PackComponent>& theComponent() {
    static Ref<PackComponent> component = make<PackComponent>();
    return component;
}

CmObject* createPack(FInterface*, FComponentDescription*) {
    return new PackInstance(*theComponent());
}

TEST(MountableComponents, MountFilesAsLongAsTheyAreRegistered) {
    const SettingsFolder folder;
    folder.write("a.pack", "a=x");
    const FNPath inside(std::string_view(folder / "a.pack/a"));
    auto& table = *FMountTable::instance();
    const FUID id(0x1B1F21A5, 0x4B7C4C7B, 0x9C530E6A, 0x5D0F7A01);
    FComponentRegistry::makeInstance();
    auto& registry = *FComponentRegistry::instance();
    registry.addComponent(make<FComponentDescription>("Other Category", "Pack", FUID(), &createPack));
    EXPECT_EQ(table.findInside(inside), nullptr);
    registry.addComponent(make<FComponentDescription>("VirtualFileSystem", "Pack", id, &createPack));
    EXPECT_NE(table.findInside(inside), nullptr);
    registry.removeComponent(id);
    EXPECT_EQ(table.findInside(inside), nullptr);

    const auto description = make<FComponentDescription>("VirtualFileSystem", "Pack", id, &createPack);
    registry.addComponent(description);
    description->setAvailable(false);
    EXPECT_EQ(table.findInside(inside), nullptr) << "switched off";
    FComponentRegistry::dropInstance();
    EXPECT_EQ(table.findInside(inside), nullptr);
    theComponent() = nullptr;
}

} // namespace
} // namespace qorl
