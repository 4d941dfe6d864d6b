#pragma once

#include "foundation/text/ConstString.h"
#include "schemes/SchemeKeys.h"

#include <qorl/Geometry.h>

namespace qorl {

class UControl;

namespace Binding {
class Value;
}

/// Makes a plain control with one reference for the caller. `value` may be null; the control takes its own
/// reference.
using ControlMaker = UControl* (*)(const CmRect& rect, int32_t style, Binding::Value* value,
                                   const ConstString& title);

/// Which family of controls a maker belongs to.
enum class ControlLook : uint8_t {
    drawn,    ///< Drawn by the scheme.
    platform, ///< Of the desktop.
};

/// The makers of the plain controls. The folder of the controls fills it in static initialisers; schemes read
/// it.
namespace ControlTable {

/// The last registration of a kind wins.
void add(ControlLook look, ControlKind::Kind kind, ControlMaker maker);

/// Null when nobody registered one. A kind without a maker of the desktop gives the drawn one.
ControlMaker find(ControlLook look, int32_t kind);

} // namespace ControlTable

} // namespace qorl
