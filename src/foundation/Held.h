#pragma once

#include <utility>

namespace qorl {

/// Sets a flag for the length of a scope; then it is what it was before.
class Held {
public:
    explicit Held(bool& flag) : flag_(flag), before_(std::exchange(flag, true)) {}
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held() { flag_ = before_; }

private:
    bool& flag_;
    bool before_;
};

} // namespace qorl
