#pragma once

#include "foundation/FObject.h"

#include <atomic>

namespace qorl {

/// Holder of one global object that is created on first use and released when the library unloads.
///
/// Declare it `constinit`. `get` is safe on any thread; after the teardown it gives null for ever, and when
/// memory ran out it gives null for this once, so code that can run late tests the result. Objects are
/// released in the order of their creation.
class SingletonSlot {
public:
    constexpr SingletonSlot() = default;
    SingletonSlot(const SingletonSlot&) = delete;
    SingletonSlot& operator=(const SingletonSlot&) = delete;

    /// Whether the library has released its singletons.
    static bool areGone();

    /// Releases the object, if there is one, before the end: the next `get` makes a new one.
    void drop();

protected:
    FObject* load() const { return object_.load(std::memory_order_acquire); }
    FObject* createOnce(FObject* (*create)());

private:
    friend class SingletonList;

    std::atomic<FObject*> object_{nullptr};
};

template <typename T>
class Singleton : public SingletonSlot {
public:
    constexpr Singleton() = default;

    /// The object, made by its default constructor on first use.
    T* get() {
        FObject* object = load();
        return static_cast<T*>(object ? object : createOnce(+[]() -> FObject* { return new T; }));
    }

    /// The object if it has been made.
    T* peek() const { return static_cast<T*>(load()); }
};

} // namespace qorl
