#pragma once

#include <type_traits>
#include <utility>

namespace qorl {

/// Sets a variable, most often a flag, for the length of a scope; then it is what it was before, however the
/// scope is left.
template <typename T>
class Held {
public:
    explicit Held(T& variable, std::type_identity_t<T> value = true)
        : variable_(variable), before_(std::exchange(variable, std::move(value))) {}
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held() { variable_ = std::move(before_); }

private:
    T& variable_;
    T before_;
};

} // namespace qorl
