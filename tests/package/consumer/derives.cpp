// A program that derives from the class library: its class is found beside the library's own.

#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"
#include "foundation/CmObject.h"
#include "foundation/Version.h"

#include <cstdio>

namespace {

class Gadget : public qorl::CmObject {
    QORL_CLASS(Gadget, CmObject)
    QORL_RECORD(Gadget)

public:
    int turns() const { return 3; }
};

QORL_REGISTER(Gadget, "Gadget", CmObject, 1)

} // namespace

int main() {
    const auto object = qorl::ClassFactory::instance()->createByName("Gadget");
    const Gadget* gadget = qorl::cast<Gadget>(object.get());
    if (!gadget || gadget->turns() != 3) {
        std::fprintf(stderr, "the program's own class is not created by name\n");
        return 1;
    }
    std::printf("derives: qorl-frame %s\n", qorl::libraryVersion());
    return 0;
}
