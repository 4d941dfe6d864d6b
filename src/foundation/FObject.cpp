#include "foundation/FObject.h"

#include "foundation/FUID.h"
#include "foundation/messages/UpdateHandler.h"

namespace qorl {

namespace {

InterfaceId drawId() {
    FUID id;
    id.generate();
    return id;
}

} // namespace

// Drawn before any other static initialiser of the library can ask for them.
[[gnu::init_priority(101)]] InterfaceId detail::privateInterfaceId = drawId();
[[gnu::init_priority(101)]] InterfaceId detail::borrowId = drawId();

Result FObject::queryInterface(const InterfaceId& id, void** out) {
    if (id == detail::borrowId) {
        *out = this;
        return Result::ok;
    }
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
