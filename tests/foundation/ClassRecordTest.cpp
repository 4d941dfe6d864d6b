#include "foundation/ClassRecord.h"

#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"

#include <functional>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <utility>

namespace qorl {
namespace {

/// Stored files carry these names and versions, and their readers walk up to these bases.
struct Family {
    const char* base;  ///< Null for none.
    const char* names; ///< Separated by blanks.
};

const Family families[] = {
    {nullptr, "CmObject PPresetList PPreset"},
    {"CmObject",
     "FModuleBase CmDelegatingUnknown CmUID FMessage CmTime CmString CmContainer CmDate CmBuffer "
     "CmAssociation FAttributeValue UValue UFont UWindowManager GCommandManager UColor UBrush UPen UColumn "
     "UColumnList UWindowLayout GCommand GCommandCategory GKeyCommand GPreferenceManager "
     "GRecentDocumentPaths GEditModifierPool GEditModifiers UWindowState GTree GUndoManagerBase FFileType "
     "FPath FRegistryBackup FRegistryEntry FAttributes FStream FFileSystem NMessenger NServer NSocket "
     "FMultiPreset FPreset FPresetList FPresetPointer FPresetPool CmTokens CmILink CmVariant UHostList "
     "CmRegularExpression CmIDLink FEncryptionKey UPoint URect CmRational"},
    {"FModuleBase", "FModule"},
    {"CmContainer",
     "CmOrderedArray CmArray CmLinkedList CmBTree CmILinkedList CmHashTable CmDLinkedList CmIDLinkedList "
     "GSelection"},
    {"CmBTree", "CmBTreeDictionary"},
    {"CmLinkedList", "CmQueue CmStack FPresetPointerList"},
    {"CmHashTable", "CmHashDictionary"},
    {"CmDLinkedList", "CmDictionary"},
    {"FAttributeValue", "FIntIDAttribute FStringIDAttribute"},
    {"UValue", "UIntValue UFloatValue UStringValue URationalValue UValueProxy GCommandValue UBitmapValue "
               "UPresetListValue"},
    {"UIntValue", "UIntDefValue UColorValue"},
    {"UFloatValue", "UFloatDefValue"},
    {"UIntDefValue", "UStringListValue"},
    {"UStringListValue", "URecentStringListValue"},
    {"UValueProxy", "UAliasValue"},
    {"GCommand", "GMacroCommand"},
    {"CmBuffer", "UTextEditorBuffer"},
    {"GTree", "GContainerTree"},
    {"CmIDLink", "GTreeEntry"},
    {"GSelection", "GSelectionList"},
    {"GUndoManagerBase", "GUndoManager GFilteredUndoManager GCombinedUndoManager"},
    {"FPath", "FNPath FUrl"},
    {"FStream", "FMemoryStream FFileStream FStreamProxy NStream"},
    {"NStream", "NBroadcastStream NUDPStream"},
    {"FFileSystem", "FResourceArchive"},
    {"CmILink", "FFileArchiveNode"},
    {"FFileArchiveNode", "FResourceEntry"},
    {"FPresetList", "FFilePresetList FPresetListOwnFile"},
};

/// Calls `look(family, name, record)` with each of these classes that there is.
void forEachRecord(const std::function<void(const Family&, const std::string&, const ClassRecord&)>& look) {
    for (const Family& family : families) {
        std::istringstream names(family.names);
        for (std::string name; names >> name;)
            if (const ClassRecord* record = ClassFactory::instance()->findByName(name.c_str()))
                look(family, name, *record);
    }
}

uint16_t versionOf(const std::string& name) {
    const std::pair<const char*, uint16_t> rows[] = {
        {"UBrush", 2},     {"UColumn", 2}, {"UColumnList", 1}, {"GTree", 2}, {"UTextEditorBuffer", 1},
        {"GTreeEntry", 3}, {"FUrl", 1}};
    for (const auto& [known, version] : rows)
        if (name == known)
            return version;
    return 0;
}

TEST(ClassRecords, StandOnTheBaseAndInTheVersionThatStoredFilesRelyOn) {
    int found = 0;
    forEachRecord([&](const Family& family, const std::string& name, const ClassRecord& record) {
        ++found;
        EXPECT_STREQ(record.parent() ? record.parent()->name() : nullptr, family.base) << name;
        EXPECT_EQ(record.version(), versionOf(name)) << name;
        EXPECT_EQ(record.persistentName(), name == "FAttributes" ? "Attributes" : name);
    });
    EXPECT_GE(found, 51) << "records are missing";
}

TEST(ClassRecords, MakeAnObjectThatKnowsItsRecord) {
    forEachRecord([](const Family&, const std::string& name, const ClassRecord& record) {
        if (!record.create())
            return;
        const Ref<FInterface> made = ClassFactory::instance()->createByName(name.c_str());
        const auto* object = cast<CmObject>(made);
        ASSERT_NE(object, nullptr) << name;
        EXPECT_EQ(object->getClassRecord(), &record) << name;
    });
}

} // namespace
} // namespace qorl
