#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

namespace qorl {

/// Owns one reference on a counted object, or nothing. Raw pointers never own.
///
/// There is no construction from a raw pointer: `Ref<T>::adopt(p)` takes over a reference that the caller
/// holds, `retain(p)` adds one. Copies add a reference, moves hand it on. Threading: as a plain pointer.
template <typename T>
class Ref {
public:
    constexpr Ref() noexcept = default;
    constexpr Ref(std::nullptr_t) noexcept {}
    Ref(const Ref& other) noexcept : pointer_(other.pointer_) { add(); }
    Ref(Ref&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}

    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    Ref(const Ref<U>& other) noexcept : pointer_(other.get()) {
        add();
    }
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    Ref(Ref<U>&& other) noexcept : pointer_(other.detach()) {}

    ~Ref() {
        if (pointer_)
            pointer_->release();
    }

    Ref& operator=(Ref other) noexcept {
        std::swap(pointer_, other.pointer_);
        return *this;
    }

    /// Takes over the reference that the caller holds on `object`.
    static Ref adopt(T* object) noexcept {
        Ref ref;
        ref.pointer_ = object;
        return ref;
    }

    T* get() const noexcept { return pointer_; }
    T* operator->() const noexcept { return pointer_; }
    T& operator*() const noexcept { return *pointer_; }
    explicit operator bool() const noexcept { return pointer_ != nullptr; }

    /// Hands the reference to the caller and holds nothing afterwards.
    [[nodiscard]] T* detach() noexcept { return std::exchange(pointer_, nullptr); }

    void reset() noexcept { *this = Ref(); }

    /// For operations that store a new reference through an out-pointer. Gives up what it held before.
    void** out() noexcept {
        static_assert(!std::is_const_v<T>);
        reset();
        return reinterpret_cast<void**>(&pointer_);
    }

    friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.pointer_ == b.pointer_; }
    friend bool operator!=(const Ref& a, const Ref& b) noexcept { return a.pointer_ != b.pointer_; }
    friend bool operator==(const Ref& a, const T* b) noexcept { return a.pointer_ == b; }
    friend bool operator!=(const Ref& a, const T* b) noexcept { return a.pointer_ != b; }
    friend bool operator==(const Ref& a, std::nullptr_t) noexcept { return !a.pointer_; }
    friend bool operator!=(const Ref& a, std::nullptr_t) noexcept { return a.pointer_; }

private:
    void add() noexcept {
        if (pointer_)
            pointer_->addRef();
    }

    T* pointer_ = nullptr;
};

/// A reference of one's own on `object`, which may be null.
template <typename T>
Ref<T> retain(T* object) noexcept {
    if (object)
        object->addRef();
    return Ref<T>::adopt(object);
}

/// A new object, whose first reference the result owns.
template <typename T, typename... Arguments>
Ref<T> make(Arguments&&... arguments) {
    return Ref<T>::adopt(new T(std::forward<Arguments>(arguments)...));
}

} // namespace qorl
