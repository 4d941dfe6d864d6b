#include "persistence/archive/FObjectArchive.h"

#include "platform/System.h"

#include <string>

namespace qorl {

namespace {

constinit ArchiveListener* globalListener = nullptr;

} // namespace

void FObjectArchive::setGlobalListener(ArchiveListener* listener) {
    globalListener = listener;
}

void FObjectArchive::reportGlobally(int32_t code, const char* text) {
    if (globalListener)
        globalListener->report(code, text);
    else
        platform::debugOutput("stored object: error " + std::to_string(code) + ": " + text);
}

} // namespace qorl
