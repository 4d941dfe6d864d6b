#include "components/CompressionComponents.h"

#include "components/FComponentRegistry.h"
#include "foundation/StartupHook.h"
#include "persistence/streams/FCompressionEngine.h"

#include <new>

namespace qorl {

namespace {

CmObject* createCompressionEngine(FInterface*, FComponentDescription* description) {
    return CompressionEngineRecord::createEngine(description->getId()).detach();
}

bool enterCompressionEngines() try {
    if (auto* registry = FComponentRegistry::instance())
        registerCompressionEngines(*registry);
    return true;
} catch (const std::bad_alloc&) {
    return true; // streams find the engines without the directory
}

const StartupHook compressionHook{"CompressionEngines", StartupHook::prepared, &enterCompressionEngines};

} // namespace

void registerCompressionEngines(FComponentRegistry& registry) {
    const ConstString category(CompressionEngineRecord::category);
    for (const auto* record = CompressionEngineRecord::first(); record; record = record->next()) {
        const FUID id(record->id());
        if (registry.findById(id, category))
            continue;
        const auto description =
            make<FComponentDescription>(category, ConstString(record->name()), id, &createCompressionEngine);
        description->setCardinality(record->priority());
        registry.addComponent(description);
    }
}

} // namespace qorl
