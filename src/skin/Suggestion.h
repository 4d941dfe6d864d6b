#pragma once

#include <string>
#include <string_view>

namespace qorl {

/// Finds the name that a writer may have meant: offer all candidates, then ask.
class Suggestion {
public:
    explicit Suggestion(std::string_view written) : written_(written) {}

    void offer(std::string_view candidate);
    /// `; did you mean OPEN…CLOSE?`, or empty when nothing comes near.
    std::string text(std::string_view open, std::string_view close) const;

private:
    std::string_view written_;
    std::string_view best_;
    size_t distance_ = 3;
};

} // namespace qorl
