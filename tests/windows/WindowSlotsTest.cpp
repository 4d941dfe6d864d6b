#include "support/Slots.h"
#include "windows/UWindow.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::entryOf;

TEST(WindowSlots, FollowThoseOfTheViewInPublishedOrder) {
    using W = UWindow;
    const ptrdiff_t first = entryOf(&W::getWindowType);
    testing::expectEntriesBehind(
        first, &W::getWindowType, &W::getListTitle, &W::isListed, &W::update, &W::closeRequest, &W::canClose,
        &W::willClose, &W::setMinimized, &W::setMaximized, &W::setPosition, &W::getPosition, &W::setSize,
        &W::getSize, &W::setSizeLimits, &W::getSizeLimits, &W::center, &W::clientToScreen, &W::screenToClient,
        &W::frameToScreen, static_cast<void (W::*)()>(&W::activate), &W::isActive,
        static_cast<void (W::*)(const UColor&)>(&W::setBackgroundColor), &W::setOpacity, &W::setFocusView);
    for (const ptrdiff_t view : {entryOf(&UView::endOverlayDrawing), entryOf(&UView::getFocusView)})
        EXPECT_GT(first, view);
    EXPECT_GT(entryOf(&W::viewClosing), entryOf(&W::setFocusView))
        << "an operation of ours stands in the published table";
}

} // namespace
} // namespace qorl
