#include "platform/x11/X11Settings.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

// What a settings daemon and a resource database publish.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace qorl::platform;
    X11Look look;
    parseXSettings({data, size}, look);
    const double dpi = parseResourceDpi({reinterpret_cast<const char*>(data), size});
    if (!std::isfinite(look.scale) || look.scale <= 0 || !std::isfinite(dpi) || dpi < 0)
        std::abort();
    return 0;
}
