#include "foundation/ClassRecord.h"

#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

namespace qorl {
namespace {

/// Stored files carry these names and versions, and their readers walk up to these bases.
struct Family {
    const char* base; ///< Null for none.
    std::initializer_list<const char*> names;
};

const Family families[] = {
    {nullptr, {"CmObject", "PPresetList", "PPreset"}},
    {"CmObject",
     {"FModuleBase",
      "CmDelegatingUnknown",
      "CmUID",
      "FMessage",
      "CmTime",
      "CmString",
      "CmContainer",
      "CmDate",
      "CmBuffer",
      "CmAssociation",
      "FAttributeValue",
      "UValue",
      "UFont",
      "UWindowManager",
      "GCommandManager",
      "UColor",
      "UBrush",
      "UPen",
      "UColumn",
      "UColumnList",
      "UWindowLayout",
      "GCommand",
      "GCommandCategory",
      "GKeyCommand",
      "GPreferenceManager",
      "GRecentDocumentPaths",
      "GEditModifierPool",
      "GEditModifiers",
      "UWindowState",
      "GTree",
      "GUndoManagerBase",
      "FFileType",
      "FPath",
      "FRegistryBackup",
      "FRegistryEntry",
      "FAttributes",
      "FStream",
      "FFileSystem",
      "NMessenger",
      "NServer",
      "NSocket",
      "FMultiPreset",
      "FPreset",
      "FPresetList",
      "FPresetPointer",
      "FPresetPool",
      "CmTokens",
      "CmILink",
      "CmVariant",
      "UHostList",
      "CmRegularExpression",
      "CmIDLink",
      "FEncryptionKey",
      "UPoint",
      "URect",
      "CmRational"}},
    {"FModuleBase", {"FModule"}},
    {"CmContainer",
     {"CmOrderedArray", "CmArray", "CmLinkedList", "CmBTree", "CmILinkedList", "CmHashTable", "CmDLinkedList",
      "CmIDLinkedList", "GSelection"}},
    {"CmBTree", {"CmBTreeDictionary"}},
    {"CmLinkedList", {"CmQueue", "CmStack", "FPresetPointerList"}},
    {"CmHashTable", {"CmHashDictionary"}},
    {"CmDLinkedList", {"CmDictionary"}},
    {"FAttributeValue", {"FIntIDAttribute", "FStringIDAttribute"}},
    {"UValue",
     {"UIntValue", "UFloatValue", "UStringValue", "URationalValue", "UValueProxy", "GCommandValue",
      "UBitmapValue", "UPresetListValue"}},
    {"UIntValue", {"UIntDefValue", "UColorValue"}},
    {"UFloatValue", {"UFloatDefValue"}},
    {"UIntDefValue", {"UStringListValue"}},
    {"UStringListValue", {"URecentStringListValue"}},
    {"UValueProxy", {"UAliasValue"}},
    {"GCommand", {"GMacroCommand"}},
    {"CmBuffer", {"UTextEditorBuffer"}},
    {"GTree", {"GContainerTree"}},
    {"CmIDLink", {"GTreeEntry"}},
    {"GSelection", {"GSelectionList"}},
    {"GUndoManagerBase", {"GUndoManager", "GFilteredUndoManager", "GCombinedUndoManager"}},
    {"FPath", {"FNPath", "FUrl"}},
    {"FStream", {"FMemoryStream", "FFileStream", "FStreamProxy", "NStream"}},
    {"NStream", {"NBroadcastStream", "NUDPStream"}},
    {"FFileSystem", {"FResourceArchive"}},
    {"CmILink", {"FFileArchiveNode"}},
    {"FFileArchiveNode", {"FResourceEntry"}},
    {"FPresetList", {"FFilePresetList", "FPresetListOwnFile"}},
};

uint16_t versionOf(const std::string& name) {
    struct Row {
        const char* name;
        uint16_t version;
    };
    constexpr Row rows[] = {{"UBrush", 2}, {"UColumn", 2},           {"UColumnList", 1},
                            {"GTree", 2},  {"UTextEditorBuffer", 1}, {"GTreeEntry", 3},
                            {"FUrl", 1}};
    for (const Row& row : rows)
        if (name == row.name)
            return row.version;
    return 0;
}

TEST(ClassRecords, StandOnTheBaseAndInTheVersionThatStoredFilesRelyOn) {
    const ClassFactory& factory = *ClassFactory::instance();
    int found = 0;
    for (const Family& family : families) {
        for (const char* name : family.names) {
            const ClassRecord* record = factory.findByName(name);
            if (!record)
                continue;
            ++found;
            EXPECT_STREQ(record->parent() ? record->parent()->name() : nullptr, family.base) << name;
            EXPECT_EQ(record->version(), versionOf(name)) << name;
            EXPECT_STREQ(record->persistentName(),
                         std::string_view(name) == "FAttributes" ? "Attributes" : name);
        }
    }
    EXPECT_GE(found, 51) << "records are missing";
}

TEST(ClassRecords, MakeAnObjectThatKnowsItsRecord) {
    const ClassFactory& factory = *ClassFactory::instance();
    for (const Family& family : families) {
        for (const char* name : family.names) {
            const ClassRecord* record = factory.findByName(name);
            if (!record || !record->create())
                continue;
            const Ref<FInterface> made = factory.createByName(name);
            const auto* object = cast<CmObject>(made);
            ASSERT_NE(object, nullptr) << name;
            EXPECT_EQ(object->getClassRecord(), record) << name;
        }
    }
}

} // namespace
} // namespace qorl
