#pragma once

namespace qorl::bench {

/// The compiler's own cast over a hierarchy as deep as that of a control, for comparison. Built with run-time
/// type information, which the library does without.
struct Base {
    virtual ~Base() = default;
};

const Base& leaf();
/// From the root to the class in the middle that `leaf` derives from, and to one beside it.
bool isMiddle(const Base& object);
bool isBeside(const Base& object);

} // namespace qorl::bench
