#include "graphics/GraphicsFactory.h"
#include "graphics/UBitmap.h"

#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

// A file of a bitmap. What can be read is written and read again without a change.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace qorl;
    [[maybe_unused]] static const bool isReady = selectGraphicsBackend("default");
    std::string error;
    const Ref<UBitmap> bitmap = UBitmap::fromFile(std::as_bytes(std::span(data, size)), error);
    if (!bitmap) {
        if (error.empty())
            std::abort();
        return 0;
    }
    const auto written = bitmap->toPng();
    const Ref<UBitmap> again = UBitmap::fromFile(written, error);
    if (!again || again->getSize() != bitmap->getSize() || again->toPng() != written)
        std::abort();
    return 0;
}
