#include "skin/FController.h"
#include "skin/ViewElement.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(SkinSlots, OfElementsFollowTheDestructor) {
    testing::expectEntriesBehind(2, &SkinElement::readAttributes, &SkinElement::writeAttributes,
                                 &SkinElement::resolveSizes, &SkinElement::afterParse, &SkinElement::readData,
                                 &SkinElement::writeData, &SkinElement::getContext, &SkinElement::readBinary,
                                 &SkinElement::writeBinary, &SkinElement::clone, &SkinElement::getType,
                                 static_cast<bool (SkinElement::*)(SkinType) const>(&SkinElement::isOfType),
                                 &ViewElement::getParentElement, &ViewElement::resolveSize);
}

TEST(SkinSlots, OfControllersFollowTheRoot) {
    testing::expectBehindTheRoot(&IController::handleMessage, &IController::getValue,
                                 &IController::getCondition, &IController::getSubController,
                                 &IController::setSubController, &IController::createView,
                                 &IController::viewCreated, &IController::templateCreated);
}

} // namespace
} // namespace qorl
