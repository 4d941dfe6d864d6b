#pragma once

#include <atomic>
#include <cstdint>

namespace qorl::platform {

/// The shapes that every desktop has. The numbers are those of the cursor name table.
enum class CursorShape : int32_t {
    arrow = 0,
    cross = 1,
    no = 2,
    help = 3,
    beam = 4,
    sizeHorizontal = 5,
    sizeVertical = 6,
    sizeNorthWestSouthEast = 7,
    sizeSouthWestNorthEast = 8,
    sizeAll = 9,
    wait = 10,
    copy = 11,
    pointingHand = 12,
    movingHand = 13,
};
constexpr int32_t cursorShapeCount = 14;

/// A mouse pointer of the desktop, made by `DesktopServices`. Counted; must go before the desktop services
/// stop.
class PlatformCursor {
public:
    uint32_t addRef() { return ++references_; }
    uint32_t release() {
        const uint32_t left = --references_;
        if (left == 0)
            delete this;
        return left;
    }

protected:
    PlatformCursor() = default;
    virtual ~PlatformCursor() = default;
    PlatformCursor(const PlatformCursor&) = delete;
    PlatformCursor& operator=(const PlatformCursor&) = delete;

private:
    std::atomic<uint32_t> references_ = 1;
};

} // namespace qorl::platform
