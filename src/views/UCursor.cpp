#include "views/UCursor.h"

#include "platform/DesktopServices.h"
#include "platform/Platform.h"

#include <array>

namespace qorl {

namespace {

using platform::CursorShape;

struct CursorName {
    std::string_view name;
    CursorShape shape;
};

constexpr CursorName cursorNames[] = {
    {"arrow", CursorShape::arrow},
    {"cross", CursorShape::cross},
    {"no", CursorShape::no},
    {"help", CursorShape::help},
    {"beam", CursorShape::beam},
    {"size-horizontal", CursorShape::sizeHorizontal},
    {"split-horizontal", CursorShape::sizeHorizontal},
    {"size-vertical", CursorShape::sizeVertical},
    {"split-vertical", CursorShape::sizeVertical},
    {"size-nw-se", CursorShape::sizeNorthWestSouthEast},
    {"size-sw-ne", CursorShape::sizeSouthWestNorthEast},
    {"size-all", CursorShape::sizeAll},
    {"wait", CursorShape::wait},
    {"copy", CursorShape::copy},
    {"pointhand", CursorShape::pointingHand},
    {"pencil", CursorShape::pointingHand},
    {"movehand", CursorShape::movingHand},
};

using StandardCursors = std::array<Ref<UCursor>, platform::cursorShapeCount>;
constinit StandardCursors standardCursors{};

} // namespace

UCursor* UCursor::find(std::string_view name) {
    for (const CursorName& entry : cursorNames)
        if (entry.name == name)
            return standard(entry.shape);
    return nullptr;
}

UCursor* UCursor::standard(CursorShape shape) {
    const auto index = static_cast<size_t>(shape);
    if (index >= standardCursors.size())
        return nullptr;
    if (!standardCursors[index])
        standardCursors[index] = make<UCursor>(shape);
    return standardCursors[index].get();
}

void UCursor::releaseStandardCursors() {
    for (Ref<UCursor>& cursor : standardCursors) {
        // Views and documents may hold on to the object.
        if (cursor)
            cursor->cursor_.reset();
        cursor.reset();
    }
}

platform::PlatformCursor* UCursor::platformCursor() {
    if (!cursor_ && platform::desktop())
        cursor_ = platform::desktop()->createCursor(shape_);
    return cursor_.get();
}

} // namespace qorl
