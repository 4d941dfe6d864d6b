#pragma once

#include "foundation/ClassName.h"

#include <qorl/FDependent.h>

#include <atomic>

namespace qorl {

class FObject;

namespace detail {
extern InterfaceId privateInterfaceId;
extern std::atomic<uint32_t> notificationsUnderWay;
} // namespace detail

/// The id that objects of this very load of the library answer with their `FObject` face, and nobody else.
/// It is drawn anew at each load, so that an object of another library never passes for one of ours.
inline const InterfaceId& privateInterfaceId() {
    return detail::privateInterfaceId;
}

/// The root class: a reference count, class identity by name, and dependents.
///
/// An object is born with a count of 1 that its creator owns. Objects may also be members or stand on the
/// stack; their count is then never used to free them. Classes that need no persistence derive from this
/// directly, all others from `CmObject`.
///
/// Slots count operations: the destructor is slot 4. In the Itanium ABI it takes two entries of the table,
/// the one that destroys the object in place and the one that frees its memory as well, so that an operation
/// behind it stands in entry slot + 1. Where the ABI has one entry with a flag for the second, slot and entry
/// are equal. Interfaces without a destructor have no such step.
///
/// Threading: the count is atomic. Dependents and changes may be used on any thread (see `UpdateHandler`).
class FObject : public FDependent {
public:
    FObject() noexcept = default;
    /// A copy is a new object with a count of its own.
    FObject(const FObject&) noexcept {}
    FObject& operator=(const FObject&) noexcept { return *this; }

    static constexpr const ClassName& classNames() { return classNames_; }
    static constexpr const char* className() { return classNames_.text; }

    Result queryInterface(const InterfaceId& id, void** out) override;
    uint32_t addRef() override {
        return static_cast<uint32_t>(count_.fetch_add(1, std::memory_order_relaxed) + 1);
    }
    /// The count that this call left behind. It is not read again: another thread's last release may have
    /// freed the object meanwhile. After a 0 the object is no longer the caller's, also where a notification
    /// that it is in keeps it until all have heard.
    uint32_t release() override {
        const int32_t left = count_.fetch_sub(1, std::memory_order_acq_rel) - 1;
        return left != 0 ? static_cast<uint32_t>(left) : releaseLast();
    }
    void update(FInterface* changed, int32_t message) override;

    virtual ~FObject() = default;

    /// Whether `name` is this object's own class.
    virtual bool isA(const char* name) const;
    virtual const char* getClassName() const;
    /// Whether `name` is this object's class or, with `deep`, one of its bases. Never allocates.
    virtual bool isTypeOf(const char* name, bool deep) const;

    /// `dependent` hears each `changed` of this object until it is removed. Neither holds a reference: the
    /// one who adds must remove before either object goes.
    virtual void addDependent(FDependent* dependent);
    /// Null removes all dependents.
    virtual void removeDependent(FDependent* dependent);

    /// Tells all dependents at once, on this thread.
    virtual void changed(int32_t message = objectChanged);
    /// Tells them when the event queue next runs empty, on the GUI thread. Equal messages collapse into one.
    virtual void deferUpdate(int32_t message = objectChanged);
    /// Called after all dependents have heard a change; never for `objectDestroyed`.
    virtual void updateDone(int32_t message);

    virtual bool isSameObject(const FObject* other) const;

    /// Whether somebody else held a reference too, a moment ago.
    bool isShared() const noexcept { return count_.load(std::memory_order_relaxed) > 1; }

    /// A reference for the caller, unless the last one has been released already. For tables that don't count
    /// what stands in them, while their lock keeps the destructor of the object waiting.
    bool addRefUnlessGone() noexcept;

private:
    friend class UpdateHandler;

    uint32_t releaseLast();

    static constexpr int32_t goingDown = -1000;
    static constexpr ClassName classNames_{"FObject", nullptr};

    std::atomic<int32_t> count_{1};
};

/// `unknown` as an object of this library, null when it is foreign. It is asked for `privateInterfaceId`, and
/// the reference that this takes is given back at once: the caller has none.
inline FObject* borrowObject(FInterface* unknown) {
    void* found = nullptr;
    if (!unknown || unknown->queryInterface(privateInterfaceId(), &found) != Result::ok)
        return nullptr;
    auto* object = static_cast<FObject*>(found);
    object->release();
    return object;
}

} // namespace qorl
