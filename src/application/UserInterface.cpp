#include "application/UserInterface.h"

#include "foundation/messages/FMessenger.h"
#include "foundation/messages/UpdateHandler.h"
#include "graphics/GraphicsFactory.h"
#include "platform/DesktopServices.h"
#include "platform/Platform.h"
#include "schemes/GlobalSchemes.h"

namespace qorl {

UserInterface::UserInterface() {
    UpdateHandler::instance();
    FMessenger::connect();
    reopenGraphics();
    selectGraphicsBackend("default");
    GlobalSchemes::createForLibrary();
    controller_ = make<UController>(ApplicationType::windowMenus);
    desktop().toolTips();
}

UserInterface::~UserInterface() {
    controller_.reset();
    FMessenger::disconnect();
}

void UserInterface::settle() {
    do
        loop().flushEvents();
    while (platform::desktop()->hasEvent());
}

} // namespace qorl
