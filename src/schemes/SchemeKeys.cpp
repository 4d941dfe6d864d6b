#include "schemes/SchemeTables.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace qorl {

namespace {

/// The numbers of the names in the order of the names, for binary search.
template <size_t count, typename Row>
constexpr std::array<uint8_t, count> sortedByName(const Row (&rows)[count]) {
    std::array<uint8_t, count> order{};
    for (size_t i = 0; i < count; ++i)
        order[i] = static_cast<uint8_t>(i);
    std::sort(order.begin(), order.end(), [&rows](uint8_t a, uint8_t b) {
        return std::string_view(rows[a].name) < std::string_view(rows[b].name);
    });
    return order;
}

template <size_t count, typename Row>
int32_t findName(const Row (&rows)[count], const std::array<uint8_t, count>& order, std::string_view name) {
    const auto found =
        std::lower_bound(order.begin(), order.end(), name,
                         [&rows](uint8_t index, std::string_view key) { return rows[index].name < key; });
    return found == order.end() || rows[*found].name != name ? -1 : *found;
}

constexpr auto colorsByName = sortedByName(schemeColorTable);
constexpr auto metricsByName = sortedByName(schemeMetricTable);
constexpr auto fontsByName = sortedByName(schemeFontTable);

} // namespace

int32_t findSchemeColor(std::string_view name) {
    return findName(schemeColorTable, colorsByName, name);
}

int32_t findSchemeMetric(std::string_view name) {
    return findName(schemeMetricTable, metricsByName, name);
}

int32_t findSchemeFont(std::string_view name) {
    return findName(schemeFontTable, fontsByName, name);
}

} // namespace qorl
