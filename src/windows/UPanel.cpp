#include "windows/UPanel.h"

namespace qorl {

UPanel::UPanel(const CmRect& frame, uint32_t style, const ConstString& title) : UWindow(frame, style, title) {
    setWindowFlag(secondFrontList, false);
    setWindowFlag(firstFrontList, true);
}

} // namespace qorl
