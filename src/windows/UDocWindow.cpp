#include "windows/UDocWindow.h"

namespace qorl {

UDocWindow::UDocWindow(const CmRect& frame, uint32_t style, const ConstString& title)
    : UWindow(frame.isEmpty() ? defaultFrame : frame, style, title) {
    setWindowFlag(firstFrontList | secondFrontList, true);
}

} // namespace qorl
