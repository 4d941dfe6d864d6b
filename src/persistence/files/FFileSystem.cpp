#include "persistence/files/FFileSystem.h"

#include "persistence/files/FPath.h"

namespace qorl {

QORL_REGISTER_ABSTRACT(FFileSystem, "FFileSystem", CmObject, 0)

namespace {

constexpr int32_t maxLegalLength = 260;
constexpr std::u16string_view illegalCharacters = u"\\*?/:<>|\"\t\n\r";

} // namespace

bool FFileSystem::makeLegalName(String& text, char16_t replacement) {
    text.toWide();
    bool isChanged = text.size() > maxLegalLength;
    text.remove(maxLegalLength);
    char16_t* units = text.buffer16();
    for (int32_t i = 0; units && i < text.size(); ++i) {
        if (illegalCharacters.find(units[i]) == std::u16string_view::npos)
            continue;
        units[i] = replacement;
        isChanged = true;
    }
    return isChanged;
}

void FFileSystem::notify(int32_t, const FPath&, FInterface*) {
    changed(objectChanged);
}

} // namespace qorl
