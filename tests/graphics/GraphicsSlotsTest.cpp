#include "graphics/GraphicsFactory.h"
#include "graphics/UBitmapFamily.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::expectBehindTheRoot;

TEST(GraphicsSlots, OfInterfacesFollowTheRoot) {
    expectBehindTheRoot(
        &DrawBackEnd::drawLine, &DrawBackEnd::drawRect, &DrawBackEnd::drawEllipse, &DrawBackEnd::drawPath,
        &DrawBackEnd::drawString, &DrawBackEnd::drawBitmap, &DrawBackEnd::drawBitmapStretched,
        &DrawBackEnd::clearRect, &DrawBackEnd::setDrawAntialiased, &DrawBackEnd::setPenColor,
        &DrawBackEnd::setPenWidth, &DrawBackEnd::setLineStyle, &DrawBackEnd::setBrushColor,
        &DrawBackEnd::concatTransformMatrix, &DrawBackEnd::setClip, &DrawBackEnd::saveGlobalState,
        &DrawBackEnd::restoreGlobalState, &DrawBackEnd::createFastLines, &DrawBackEnd::drawFastLines,
        &DrawBackEnd::createFastRects, &DrawBackEnd::drawFastRects, &DrawBackEnd::getFontMetrics,
        &DrawBackEnd::measureStringHeight, &DrawBackEnd::measureStringWidth);
    expectBehindTheRoot(&GraphicsFactory::getBitmapFactory, &GraphicsFactory::getBitmapFilterFactory,
                        &GraphicsFactory::getFontCollection, &GraphicsFactory::createGraphicsPath,
                        &GraphicsFactory::createDrawDevice, &GraphicsFactory::getCompositor,
                        &GraphicsFactory::createSwapChain, &GraphicsFactory::getImageCodecs);
    expectBehindTheRoot(&GraphicsBitmap::getBackendImage, &GraphicsBitmap::getWidth,
                        &GraphicsBitmap::getHeight, &GraphicsBitmap::getPixels, &GraphicsBitmap::isValid,
                        &GraphicsBitmap::draw, &GraphicsBitmap::drawTiled, &GraphicsBitmap::blit);
}

TEST(GraphicsSlots, OfObjectsGoOnBehindTheirBase) {
    testing::expectConsecutive(
        {SLOT(UBitmap, getSourceBitmap), SLOT(UBitmap, getRootBitmap), SLOT(UBitmap, createSection)}, 25);
    testing::expectConsecutive({SLOT(UBitmapCollection, count), SLOT(UBitmapCollection, add),
                                SLOT(UBitmapCollection, get), SLOT(UBitmapCollection, getByName),
                                SLOT(UBitmapCollection, getName), SLOT(UBitmapCollection, indexOf),
                                SLOT(UBitmapCollection, remove)},
                               25);
}

} // namespace
} // namespace qorl
