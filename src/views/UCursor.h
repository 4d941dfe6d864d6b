#pragma once

#include "foundation/CmObject.h"
#include "platform/PlatformCursor.h"

#include <qorl/Ref.h>

#include <cstdint>
#include <string_view>

namespace qorl {

/// A mouse cursor: a counted object round the platform's own one. A cursor shows as long as a view owns it on
/// the desktop (`UDesktop::setCursor`).
///
/// The standard shapes are made when first asked for and shared. Threading: user-interface thread.
class UCursor : public CmObject {
    QORL_CLASS(UCursor, CmObject)

public:
    explicit UCursor(platform::CursorShape shape) : shape_(shape) {}

    /// The cursor that skins call `name` ("arrow", "size-horizontal", "pencil"…). Null for an unknown name.
    /// Two names of one shape give one cursor. The library keeps the reference.
    static UCursor* find(std::string_view name);
    static UCursor* standard(platform::CursorShape shape);
    /// Lets go of the platform's cursors, before its desktop services stop.
    static void releaseStandardCursors();

    /// The platform's cursor, made when first asked for; null without desktop services.
    platform::PlatformCursor* platformCursor();

private:
    platform::CursorShape shape_;
    Ref<platform::PlatformCursor> cursor_;
};

} // namespace qorl
