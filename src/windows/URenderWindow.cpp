#include "windows/URenderWindow.h"

namespace qorl {

URenderWindow::URenderWindow(const CmRect& frame, uint32_t style) : UWindow(frame, style, {}) {}

} // namespace qorl
