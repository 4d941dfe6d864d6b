#include "persistence/attributes/FAttributes.h"
#include "support/Ratio.h"

#include <map>
#include <string>

namespace qorl::bench {
namespace {

constexpr const char* keys[] = {"left", "top", "width", "height", "name", "visible"};

/// The few values of an object on their way through its attributes.
void attributeRoundTrip(benchmark::State& state) {
    for (auto _ : state) {
        FAttributes attributes;
        for (const char* key : keys)
            attributes.setInteger(key, 7);
        int64_t sum = 0;
        for (const char* key : keys)
            sum += attributes.getInteger(key);
        benchmark::DoNotOptimize(sum);
    }
}
void attributeRoundTripFloor(benchmark::State& state) {
    for (auto _ : state) {
        std::map<std::string, int64_t, std::less<>> attributes;
        for (const char* key : keys)
            attributes[key] = 7;
        int64_t sum = 0;
        for (const char* key : keys)
            sum += attributes.find(key)->second;
        benchmark::DoNotOptimize(sum);
    }
}
QORL_RATIO(attributeRoundTrip, attributeRoundTripFloor, 1.0);

} // namespace
} // namespace qorl::bench
