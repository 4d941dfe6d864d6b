#include "application/CmHostClasses.h"
#include "application/UPluginApplication.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(ApplicationSlots, StandInTheirPublishedOrder) {
    using testing::expectSlotsFrom;
    expectSlotsFrom(25, &UApplication::init, &UApplication::hook26, &UApplication::preStart,
                    &UApplication::runStartupHooks, &UApplication::finishStartup,
                    &UApplication::windowDeactivated, &UApplication::createMenuBar,
                    &UApplication::getMenuItem, &UApplication::getFileMenu, &UApplication::getEditMenu,
                    &UApplication::menuCreated, &UApplication::createSchemes, &UApplication::skinLoaded,
                    &UApplication::createControl, &UApplication::canQuit, &UApplication::hook40,
                    &UApplication::hook41, &UApplication::showAbout, &UApplication::closeAbout,
                    &UApplication::showProgress, &UApplication::createDocument, &UApplication::saveDocument,
                    &UApplication::openDocument, &UApplication::openDocuments, &UApplication::canOpenDocument,
                    &UApplication::handleKeyCommand, &UApplication::hook51);
    expectSlotsFrom(52, &UPluginApplication::startup, &UPluginApplication::hook53);
}

TEST(ApplicationSlots, HostFacesHaveNoDestructor) {
    testing::expectBehindTheRoot(&IHostClasses::createInstance);
    testing::expectBehindTheRoot(&IHostSettings::setHostValue, &IHostSettings::getHostValue);
}

} // namespace
} // namespace qorl
