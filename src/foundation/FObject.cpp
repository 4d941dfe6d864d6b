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

uint32_t FObject::releaseLast() {
    // What its dependents are hearing of stays until all have heard.
    if (detail::notificationsUnderWay.load(std::memory_order_acquire) != 0 &&
        UpdateHandler::keepNotified(*this))
        return 0;
    // References that are taken and given back while the object is being destroyed must not reach 0 again.
    count_.store(goingDown, std::memory_order_relaxed);
    delete this;
    return 0;
}

bool FObject::addRefUnlessGone() noexcept {
    int32_t count = count_.load(std::memory_order_relaxed);
    while (count > 0)
        if (count_.compare_exchange_weak(count, count + 1, std::memory_order_relaxed))
            return true;
    return false;
}

void FObject::addDependent(FDependent* dependent) {
    if (UpdateHandler* handler = UpdateHandler::current())
        handler->addDependent(this, dependent);
}

void FObject::removeDependent(FDependent* dependent) {
    if (UpdateHandler* handler = UpdateHandler::current())
        handler->removeDependent(this, dependent);
}

void FObject::changed(int32_t message) {
    if (UpdateHandler* handler = UpdateHandler::current())
        handler->triggerUpdates(this, message);
    else if (message != objectDestroyed)
        updateDone(message);
}

void FObject::deferUpdate(int32_t message) {
    if (UpdateHandler* handler = UpdateHandler::current())
        handler->deferUpdates(this, message);
    else if (message != objectDestroyed)
        updateDone(message);
}

void FObject::updateDone(int32_t) {}

bool FObject::isSameObject(const FObject* other) const {
    return this == other;
}

} // namespace qorl
