#include "skin/UViewClass.h"

#include <string>
#include <utility>
#include <vector>

namespace qorl {

namespace {

using Factories = std::vector<std::pair<std::string, ViewFactory>>;

/// Made on first use, since start-up code registers in static initialisers.
Factories& viewFactories() {
    static Factories factories;
    return factories;
}

Factories& controlFactories() {
    static Factories factories;
    return factories;
}

constinit ViewFactory controlFallback = nullptr;

ViewFactory findIn(const Factories& factories, std::string_view name) {
    for (auto entry = factories.rbegin(); entry != factories.rend(); ++entry)
        if (entry->first == name)
            return entry->second;
    return nullptr;
}

} // namespace

void UViewClass::add(std::string_view name, ViewFactory factory) {
    viewFactories().emplace_back(name, factory);
}

ViewFactory UViewClass::find(std::string_view name) {
    return findIn(viewFactories(), name);
}

void UControlClass::add(std::string_view name, ViewFactory factory) {
    controlFactories().emplace_back(name, factory);
}

ViewFactory UControlClass::find(std::string_view name) {
    return findIn(controlFactories(), name);
}

void UControlClass::setFallback(ViewFactory factory) {
    controlFallback = factory;
}

ViewFactory UControlClass::fallback() {
    return controlFallback;
}

} // namespace qorl
