#include "platform/PlatformWindow.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

namespace qorl::platform {
namespace {

using testing::entryOf;

TEST(SinkSlots, StandInPublishedOrder) {
    using Sink = PlatformWindow;
    testing::expectBehindTheRoot(
        &Sink::show, &Sink::setTitle, &Sink::setPositionSize, &Sink::update, &Sink::center, &Sink::activate,
        &Sink::enable, &Sink::invalidate, &Sink::raise, &Sink::setShowState, &Sink::getHandle,
        &Sink::clientToScreen, &Sink::setStyleFlag, &Sink::setBackground, &Sink::setOpacity, &Sink::setLimits,
        &Sink::close, &Sink::getActivationState, &Sink::setTransparencyColor, &Sink::getPlacement,
        &Sink::setPlacement, &Sink::getSurface, &Sink::getScaleFactor);
    for (const ptrdiff_t own : {entryOf(&Sink::scrollRect), entryOf(&Sink::setToolTip)})
        EXPECT_GT(own, entryOf(&Sink::getScaleFactor))
            << "an operation of ours stands in the published table";
}

TEST(SinkSlots, CallBackInPublishedOrder) {
    using Client = PlatformWindowClient;
    testing::expectEntriesBehind(0, &Client::paint, &Client::mouse, &Client::key, &Client::moved,
                                 &Client::sized, &Client::sizeTrackingStarted, &Client::sizeTrackingEnded,
                                 &Client::activated, &Client::deactivated, &Client::closePressed,
                                 &Client::minimized, &Client::maximized, &Client::restored,
                                 &Client::colorSchemeChanged);
}

} // namespace
} // namespace qorl::platform
