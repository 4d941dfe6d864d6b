#include "application/CmHostClasses.h"
#include "application/UPluginApplication.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

#define EXPECT_SLOT(number, Class, operation)                                                                \
    EXPECT_EQ(testing::slotOf(&Class::operation), number) << #operation

TEST(ApplicationSlots, StandInTheirPublishedOrder) {
    EXPECT_SLOT(25, UApplication, init);
    EXPECT_SLOT(26, UApplication, hook26);
    EXPECT_SLOT(27, UApplication, preStart);
    EXPECT_SLOT(28, UApplication, runStartupHooks);
    EXPECT_SLOT(29, UApplication, finishStartup);
    EXPECT_SLOT(30, UApplication, windowDeactivated);
    EXPECT_SLOT(31, UApplication, createMenuBar);
    EXPECT_SLOT(32, UApplication, getMenuItem);
    EXPECT_SLOT(33, UApplication, getFileMenu);
    EXPECT_SLOT(34, UApplication, getEditMenu);
    EXPECT_SLOT(35, UApplication, menuCreated);
    EXPECT_SLOT(36, UApplication, createSchemes);
    EXPECT_SLOT(37, UApplication, skinLoaded);
    EXPECT_SLOT(38, UApplication, createControl);
    EXPECT_SLOT(39, UApplication, canQuit);
    EXPECT_SLOT(40, UApplication, hook40);
    EXPECT_SLOT(41, UApplication, hook41);
    EXPECT_SLOT(42, UApplication, showAbout);
    EXPECT_SLOT(43, UApplication, closeAbout);
    EXPECT_SLOT(44, UApplication, showProgress);
    EXPECT_SLOT(45, UApplication, createDocument);
    EXPECT_SLOT(46, UApplication, saveDocument);
    EXPECT_SLOT(47, UApplication, openDocument);
    EXPECT_SLOT(48, UApplication, openDocuments);
    EXPECT_SLOT(49, UApplication, canOpenDocument);
    EXPECT_SLOT(50, UApplication, handleKeyCommand);
    EXPECT_SLOT(51, UApplication, hook51);
    EXPECT_SLOT(52, UPluginApplication, startup);
    EXPECT_SLOT(53, UPluginApplication, hook53);
}

TEST(ApplicationSlots, HostFacesHaveNoDestructor) {
    EXPECT_SLOT(3, IHostClasses, createInstance);
    EXPECT_SLOT(3, IHostSettings, setHostValue);
    EXPECT_SLOT(4, IHostSettings, getHostValue);
}

} // namespace
} // namespace qorl
