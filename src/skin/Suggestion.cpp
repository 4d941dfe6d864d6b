#include "skin/Suggestion.h"

#include <algorithm>
#include <array>

namespace qorl {

namespace {

constexpr size_t longest = 32;

constexpr char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Insertions, deletions, changes and swaps of neighbours that turn one into the other, case aside (optimal
/// string alignment distance).
size_t distance(std::string_view a, std::string_view b) {
    using Row = std::array<size_t, longest + 1>;
    Row before{}, last{}, row{};
    for (size_t j = 0; j <= b.size(); ++j)
        last[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const bool same = lower(a[i - 1]) == lower(b[j - 1]);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
            const bool swapped =
                i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) && lower(a[i - 2]) == lower(b[j - 1]);
            if (swapped)
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before = last;
        last = row;
    }
    return last[b.size()];
}

} // namespace

void Suggestion::offer(std::string_view candidate) {
    if (written_.size() > longest || candidate.size() > longest || candidate.empty())
        return;
    const size_t far = distance(written_, candidate);
    if (far < distance_ && far * 2 < std::max(written_.size(), candidate.size())) {
        best_ = candidate;
        distance_ = far;
    }
}

std::string Suggestion::text(std::string_view open, std::string_view close) const {
    if (best_.empty())
        return {};
    return "; did you mean " + std::string(open) + std::string(best_) + std::string(close) + "?";
}

} // namespace qorl
