#pragma once

#include "foundation/FObject.h"

#include <qorl/Ref.h>

namespace qorl {

/// What an object is known by in a table, whatever face it came in through: its root interface.
///
/// An object that comes in as one of ours needn't be asked; any other is asked once, and a foreign one is
/// held while this stands.
class RootIdentity {
public:
    explicit RootIdentity(FObject* object) : own_(object), root_(object) {
        if (object && object->isStandIn())
            ask(object);
    }
    explicit RootIdentity(FInterface* object) { ask(object); }

    /// Null for no object.
    FInterface* get() const { return root_; }
    /// Null for a foreign object.
    FObject* own() const { return own_; }
    explicit operator bool() const { return root_ != nullptr; }

private:
    void ask(FInterface* object) {
        own_ = borrowObject(object);
        root_ = own_;
        if (own_ || !object)
            return;
        object->queryInterface(FInterface::iid, foreign_.out());
        root_ = foreign_.get();
    }

    FObject* own_ = nullptr;
    FInterface* root_ = nullptr;
    Ref<FInterface> foreign_;
};

} // namespace qorl
