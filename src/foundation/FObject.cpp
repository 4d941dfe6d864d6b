#include "foundation/FObject.h"

#include "foundation/FUID.h"
#include "foundation/messages/UpdateHandler.h"

namespace qorl {

namespace {

/// Without randomness the place in memory tells this load from every other library in the process.
InterfaceId drawId(const void* place) {
    FUID id;
    if (id.generate())
        return id;
    const auto address = reinterpret_cast<uintptr_t>(place);
    return FUID(0x716F726C, 0, static_cast<uint32_t>(address >> 16 >> 16), static_cast<uint32_t>(address));
}

} // namespace

// Drawn before any other static initialiser of the library can ask for it.
[[gnu::init_priority(101)]] InterfaceId detail::privateInterfaceId = drawId(&detail::privateInterfaceId);

Result FObject::queryInterface(const InterfaceId& id, void** out) {
    if (id == FInterface::iid || id == FDependent::iid || id == privateInterfaceId()) {
        addRef();
        *out = this;
        return Result::ok;
    }
    *out = nullptr;
    return Result::noInterface;
}

void FObject::update(FInterface*, int32_t) {}

bool FObject::isA(const char* name) const {
    return isTypeOf(name, false);
}

const char* FObject::getClassName() const {
    return className();
}

bool FObject::isTypeOf(const char* name, bool deep) const {
    return classNames_.matches(name, deep);
}

void FObject::addDependent(FDependent* dependent) {
    if (FUpdateRegistry* registry = FUpdateRegistry::current())
        registry->addDependent(this, dependent);
}

void FObject::removeDependent(FDependent* dependent) {
    if (FUpdateRegistry* registry = FUpdateRegistry::current())
        registry->removeDependent(this, dependent);
}

void FObject::changed(int32_t message) {
    if (FUpdateRegistry* registry = FUpdateRegistry::current())
        registry->triggerUpdates(this, message);
    else
        updateDone(message);
}

void FObject::deferUpdate(int32_t message) {
    if (FUpdateRegistry* registry = FUpdateRegistry::current())
        registry->deferUpdates(this, message);
    else
        updateDone(message);
}

void FObject::updateDone(int32_t) {}

bool FObject::isSameObject(const FObject* other) const {
    return this == other;
}

} // namespace qorl
