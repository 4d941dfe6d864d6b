#include "persistence/xml/XmlFile.h"

#include "foundation/text/CmString.h"
#include "persistence/files/ReplaceQuestion.h"
#include "support/FailingAllocation.h"
#include "support/SettingsFolder.h"

#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

TEST(XmlFile, SavesBesideAndKeepsTheEarlierFile) {
    const SettingsFolder folder;
    CmString text("first");
    EXPECT_FALSE(xmlExists("Layout"));
    EXPECT_TRUE(saveXml("Layout", "State", text));
    EXPECT_TRUE(folder.has("settings/Layout.xml"));
    const std::string earlier = folder.read("settings/Layout.xml");
    CmObject stateless;
    EXPECT_FALSE(saveXml("Layout", "State", stateless));
    EXPECT_EQ(folder.read("settings/Layout.xml"), earlier);

    EXPECT_FALSE(restoreXml("Layout"));
    EXPECT_TRUE(backupXml("Layout"));
    EXPECT_TRUE(folder.has("settings/Layout.xml.backup"));
    text.string() = "second";
    EXPECT_TRUE(saveXml("Layout", "State", text));
    EXPECT_TRUE(restoreXml("Layout"));
    EXPECT_FALSE(folder.has("settings/Layout.xml.backup"));
    CmString loaded;
    EXPECT_TRUE(loadXml("Layout", "State", loaded));
    EXPECT_EQ(loaded.string(), ConstString("first"));
    EXPECT_FALSE(loadXml("Layout", "Other", loaded));
    folder.write("settings/Layout.xml", "<State><string name='s' value='half'/>");
    EXPECT_FALSE(loadXml("Layout", "State", loaded));
    EXPECT_EQ(loaded.string(), ConstString("first")) << "nothing of a damaged document";
}

std::string asked;
bool answer = false;

bool noteQuestion(const ConstString& text, const ConstString& first, const ConstString& second) {
    asked += text.toUtf8() + '[' + first.toUtf8() + '|' + second.toUtf8() + ']';
    return answer;
}

TEST(XmlFile, SaysWhyItFails) {
    const SettingsFolder folder;
    CmObject stateless;
    folder.write("settings/Layout.xml", "<State/>");
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(saveXml("Layout", "State", stateless));
    EXPECT_FALSE(loadXml("Layout", "State", stateless));
    const std::string told = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(told.find("the settings file \"Layout\" is not saved: an object of the class CmObject has no "
                        "attributes to store\n"),
              std::string::npos)
        << told;
    EXPECT_NE(told.find("Layout.xml: an object of the class CmObject does not take these attributes\n"),
              std::string::npos)
        << told;
}

TEST(XmlFile, AsksBeforeItReplaces) {
    const SettingsFolder folder;
    const ReplaceQuestionRecord record(&noteQuestion);
    CmString text("first");
    asked.clear();
    answer = false;
    EXPECT_TRUE(saveXml("Layout", "State", text, true));
    EXPECT_EQ(asked, "") << "there was nothing to replace";
    const std::string first = folder.read("settings/Layout.xml");
    text.string() = "second";
    EXPECT_FALSE(saveXml("Layout", "State", text, true));
    EXPECT_EQ(asked, "Do you want to replace Layout?[Replace|Cancel]");
    EXPECT_EQ(folder.read("settings/Layout.xml"), first);
    answer = true;
    EXPECT_TRUE(saveXml("Layout", "State", text, true));
    EXPECT_NE(folder.read("settings/Layout.xml"), first);
}

TEST(XmlFile, LosesNothingWithoutMemory) {
    const SettingsFolder folder;
    const ReplaceQuestionRecord record(&noteQuestion);
    answer = true;
    const std::string texts[] = {std::string(100, 'a'), std::string(100, 'b')};
    CmString earlier(texts[0].c_str());
    CmString later(texts[1].c_str());
    failEachAllocation([&](FailingAllocation& allocation) {
        ASSERT_TRUE(saveXml("Layout", "State", earlier));
        asked.clear();
        const bool isSaved = allocation.during([&] { return saveXml("Layout", "State", later, true); });
        EXPECT_TRUE(isSaved || allocation.hasFailed());
        EXPECT_TRUE(!isSaved || !asked.empty()) << "replaced without a question";
        CmString loaded;
        EXPECT_TRUE(loadXml("Layout", "State", loaded));
        EXPECT_EQ(loaded.string(), ConstString(texts[isSaved].c_str()));
    });
    failEachAllocation([&](FailingAllocation& allocation) {
        CmString loaded("before");
        StoredFile::Found found = StoredFile::Found::missing;
        const bool isLoaded = allocation.during([&] { return loadXml("Layout", "State", loaded, &found); });
        EXPECT_TRUE(isLoaded || allocation.hasFailed());
        EXPECT_EQ(found, isLoaded ? StoredFile::Found::whole : StoredFile::Found::unknown);
        EXPECT_EQ(loaded.string(), ConstString(isLoaded ? texts[1].c_str() : "before"));
    });
}

} // namespace
} // namespace qorl
