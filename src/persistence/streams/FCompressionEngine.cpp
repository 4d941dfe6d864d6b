#include "persistence/streams/FCompressionEngine.h"

#include "foundation/Cast.h"

#include <cstring>

namespace qorl {

namespace {

constinit CompressionEngineRecord* firstEngine = nullptr;

} // namespace

std::unique_ptr<FCompressor> FCompressionEngine::createCompressor() {
    return nullptr;
}
std::unique_ptr<FDecompressor> FCompressionEngine::createDecompressor() {
    return nullptr;
}
Result FCompressionEngine::getClassId(FUID&) {
    return Result::no;
}
int32_t FCompressionEngine::getKind() {
    return generalKind;
}
void FCompressionEngine::reserved29() {}
void FCompressionEngine::reserved30() {}

CompressionEngineRecord::CompressionEngineRecord(const char* name, const InterfaceId& id, int32_t priority,
                                                 CreateFunction create)
    : name_(name), id_(id), priority_(priority), create_(create) {
    CompressionEngineRecord** place = &firstEngine;
    while (*place && std::strcmp((*place)->name_, name) < 0)
        place = &(*place)->next_;
    next_ = *place;
    *place = this;
}

const CompressionEngineRecord* CompressionEngineRecord::first() {
    return firstEngine;
}

Ref<FCompressionEngine> CompressionEngineRecord::make() const {
    const Ref<FInterface> made = Ref<FInterface>::adopt(create_());
    return retain(cast<FCompressionEngine>(made.get()));
}

Ref<FCompressionEngine> CompressionEngineRecord::createEngine(const FUID& id) {
    for (const auto* record = first(); record; record = record->next())
        if (FUID(record->id()) == id)
            return record->make();
    return nullptr;
}

Ref<FCompressionEngine> CompressionEngineRecord::createDefault() {
    for (const auto* record = first(); record; record = record->next()) {
        auto engine = record->make();
        if (engine && engine->getKind() == FCompressionEngine::generalKind)
            return engine;
    }
    return nullptr;
}

} // namespace qorl
