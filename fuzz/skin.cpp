#include "schemes/GlobalSchemes.h"
#include "skin/PreviewController.h"
#include "skin/UIWizard.h"
#include "skin/ValueRegistry.h"
#include "views/UView.h"

#include <cstdint>
#include <string_view>

// A document from memory, all of its templates built.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace qorl;
    [[maybe_unused]] static const bool ready = [] {
        GlobalSchemes::createForLibrary();
        GlobalSchemes::resetAll();
        return true;
    }();
    const auto wizard = make<UIWizard>();
    if (wizard->loadFromString({reinterpret_cast<const char*>(data), size})) {
        const auto controller = make<PreviewController>();
        if (const SkinElement* templates =
                wizard->description()->peekSection(UIDescription::Section::templates))
            for (const SkinElement* element : templates->children())
                wizard->createView(element->name(), controller.get(), nullptr);
    }
    ValueRegistry::instance()->clear();
    return 0;
}
