#include "objects/DynamicCast.h"

namespace qorl::bench {

namespace {

struct First : Base {};
struct Middle : First {};
struct Third : Middle {};
struct Leaf : Third {};
struct Beside : First {};

} // namespace

const Base& leaf() {
    static const Leaf object;
    return object;
}

bool isMiddle(const Base& object) {
    return dynamic_cast<const Middle*>(&object) != nullptr;
}

bool isBeside(const Base& object) {
    return dynamic_cast<const Beside*>(&object) != nullptr;
}

} // namespace qorl::bench
