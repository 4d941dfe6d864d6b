#include "skin/PreviewController.h"

#include "binding/StringValue.h"
#include "foundation/Cast.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(PreviewController, MakesValuesOnDemandAndOnce) {
    auto preview = make<PreviewController>();
    EXPECT_FALSE(preview->findValue("gain"));
    Binding::Value* gain = preview->getValue("gain");
    EXPECT_EQ(gain->getMax(), 100);
    EXPECT_EQ(preview->getValue("gain"), gain);
    EXPECT_EQ(preview->getSubController("eq")->getSubController("low")->getValue("gain"),
              preview->getValue("eq/low/gain"));
    EXPECT_NE(preview->getSubController("eq")->getValue("gain"), gain);
}

TEST(PreviewController, ReadsValuesAndTellsFaultsByLine) {
    auto preview = make<PreviewController>();
    DiagnosticList faults;
    EXPECT_FALSE(preview->readValues("# levels\ngain = -3 in -20..20\n\nname=\"Main = out\"\r\neq/low = 40\n"
                                     "broken\nloud = very\nfar = 5 in 9..1\nover = 101\n= 5\n" +
                                         std::string(257, 'v') + " = 5\n" + std::string(257, 'v') +
                                         " = \"five\"\n",
                                     "values.txt", faults));
    EXPECT_EQ(preview->findValue("gain")->getValue(), -3);
    EXPECT_EQ(preview->findValue("gain")->getMin(), -20);
    EXPECT_EQ(cast<Binding::StringValue>(preview->findValue("name"))->getText().string().toUtf8(),
              "Main = out");
    EXPECT_EQ(preview->getSubController("eq")->getValue("low")->getValue(), 40);
    std::string lines;
    for (const Diagnostic& fault : faults.all())
        lines += toText(fault.position) + " ";
    EXPECT_EQ(lines, "values.txt:6:1 values.txt:7:1 values.txt:8:1 values.txt:9:1 values.txt:10:1 "
                     "values.txt:11:1 values.txt:12:1 ");
    EXPECT_EQ(faults.all().back().text, "a name of 257 bytes; expected at most 256");
}

TEST(PreviewController, TakesNumbersAndTexts) {
    auto preview = make<PreviewController>();
    EXPECT_TRUE(preview->setValue("gain", "30"));
    EXPECT_TRUE(preview->setValue("gain", "400"));
    EXPECT_EQ(preview->findValue("gain")->getValue(), 100) << "limited by the range";
    EXPECT_FALSE(preview->setValue("gain", "loud"));
    EXPECT_TRUE(preview->setValue("name", "loud"));
    EXPECT_TRUE(preview->setValue("name", "30"));
    EXPECT_EQ(cast<Binding::StringValue>(preview->findValue("name"))->getText().string().toUtf8(), "30");
}

TEST(PreviewController, MakesNoControllersAndValuesWithoutEnd) {
    auto preview = make<PreviewController>();
    IController* inner = preview.get();
    int32_t depth = 0;
    for (; inner && depth < 1000; ++depth)
        inner = inner->getSubController("a");
    EXPECT_EQ(depth, 129) << "as deep as a name of 256 bytes";
    EXPECT_FALSE(preview->getValue(std::string(257, 'v').c_str()));
    EXPECT_FALSE(preview->setValue(std::string(257, 'v'), "3"));
    EXPECT_FALSE(preview->setValue(std::string(257, 'v'), "three"));
    EXPECT_TRUE(preview->setValue(std::string(256, 'v'), "3"));
    EXPECT_TRUE(preview->setValue(std::string(256, 't'), "three"));
    int32_t count = 0;
    while (count < 20'000 && preview->getSubController(std::to_string(count).c_str()))
        ++count;
    EXPECT_EQ(count + 128, 10'000);
    EXPECT_TRUE(preview->getSubController("0")) << "those that are there stay";
}

} // namespace
} // namespace qorl
