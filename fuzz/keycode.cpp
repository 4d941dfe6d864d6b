#include "commands/UKeyCode.h"

#include <cstdint>
#include <cstdlib>
#include <string>

// A key's text, as scripts and lists of commands have it; and each key there is, as a text and back.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace qorl;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const UKeyCode untouched = UKeyCode::fromHash(0x12345678);
    UKeyCode key = untouched;
    if (!UKeyCode::fromText(text, key)) {
        if (!(key == untouched))
            std::abort();
        return 0;
    }
    const std::string written = key.toText();
    UKeyCode again;
    if (key.isEmpty() || !(key.normalised() == key) || !UKeyCode::fromText(written, again) ||
        again.toText() != written)
        std::abort();
    return 0;
}
