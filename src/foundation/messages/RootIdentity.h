#pragma once

#include "foundation/FObject.h"

#include <qorl/Ref.h>

#include <atomic>
#include <cstdint>

namespace qorl {

/// A member of each class whose `queryInterface` goes to another object: as long as one stands, no object is
/// taken for what it is known by. Costs no memory there. Any thread.
class StandInMark {
public:
    StandInMark() noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
    StandInMark(const StandInMark&) = delete;
    StandInMark& operator=(const StandInMark&) = delete;
    ~StandInMark() { count_.fetch_sub(1, std::memory_order_relaxed); }

    /// Whoever was handed such an object sees that it stands.
    static bool anyStands() { return count_.load(std::memory_order_relaxed) != 0; }

private:
    static constinit inline std::atomic<uint32_t> count_{0};
};

/// What an object is known by in a table, whatever face it came in through: its root interface.
///
/// An object that comes in as one of ours needn't be asked unless there are some that stand in for others;
/// any other is asked once, and a foreign one is held while this stands.
class RootIdentity {
public:
    explicit RootIdentity(FObject* object) : own_(object), root_(object) {
        if (StandInMark::anyStands())
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
