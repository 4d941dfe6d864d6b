#include "schemes/ControlTable.h"

namespace qorl::ControlTable {

namespace {

constinit ControlMaker makers[2][ControlKind::count] = {};

} // namespace

void add(ControlLook look, ControlKind::Kind kind, ControlMaker maker) {
    makers[static_cast<size_t>(look)][kind] = maker;
}

ControlMaker find(ControlLook look, int32_t kind) {
    if (kind < 0 || kind >= ControlKind::count)
        return nullptr;
    const ControlMaker own = makers[static_cast<size_t>(look)][kind];
    return own ? own : makers[static_cast<size_t>(ControlLook::drawn)][kind];
}

} // namespace qorl::ControlTable
