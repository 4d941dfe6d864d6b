#pragma once

namespace qorl::Binding {

/// What a number becomes when a user types `text` over it: the number typed, or, with a trailing `*`, `+`,
/// `-` or `/`, the result of that operation on `current`. A comma counts as the decimal point; text without a
/// number as 0; a division by 0 leaves `current`.
double calculateFromText(const char16_t* text, double current);

} // namespace qorl::Binding
