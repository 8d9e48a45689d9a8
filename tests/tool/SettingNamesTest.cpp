#include "SettingNames.h"

#include <gtest/gtest.h>

using namespace Tavrine::Tool;

TEST(BareName, OnlyAPrefixInForceIsTaken)
{
    struct Row
    {
        const char* Name;
        const char* Bare;
    };
    const Row rows[] = {
        {"BootMode", "BootMode"},
        {"BIOS.BootMode", "BootMode"},
        {"bios.BootMode", "BootMode"},
        {"BiOs.bootmode", "bootmode"},
        {"UEFI.BootMode", "UEFI.BootMode"},
        {"BIOSBootMode", "BIOSBootMode"},
        {"BIOS.BIOS.X", "BIOS.X"},
        {"BIOS.", ""},
        {"BIOS", "BIOS"},
        {"", ""},
        {".X", ".X"},
        {"xBIOS.X", "xBIOS.X"},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(BareName(row.Name, {"BIOS", "BIOS"}), row.Bare) << row.Name;
    }
}

TEST(BareName, BothPrefixesAreInForce)
{
    EXPECT_EQ(BareName("one.X", {"One", "Two"}), "X");
    EXPECT_EQ(BareName("TWO.X", {"One", "Two"}), "X");
    EXPECT_EQ(BareName("BIOS.X", {"One", "Two"}), "BIOS.X");
}

TEST(BareNames, EachNameOnceInItsFirstPlace)
{
    EXPECT_EQ(BareNames({"B", "UEFI.A", "uefi.B", "A", "a"}, {"UEFI", "UEFI"}),
              (std::vector<std::string>{"B", "A", "a"}));
}

TEST(HiddenKeywords, AreSplitAndStripped)
{
    EXPECT_EQ(SplitKeywords(R"( "Raid Card" , Foo,,)"), (std::vector<std::string>{"RaidCard", "Foo", "", ""}));
    EXPECT_EQ(SplitKeywords(""), (std::vector<std::string>{""}));
}

TEST(HiddenKeywords, MatchAnywhereInTheShownName)
{
    EXPECT_TRUE(IsHidden("BIOS.RaidCard0", {"X", "RaidCard"}));
    EXPECT_FALSE(IsHidden("BIOS.RaidCard0", {"raidcard"}));
    EXPECT_TRUE(IsHidden("BIOS.Anything", {"BIOS"}));
    EXPECT_TRUE(IsHidden("BIOS.Anything", {""}));
    EXPECT_FALSE(IsHidden("BIOS.Anything", {}));
}

TEST(WithShownName, TheFirstMentionOfASettingIsReplaced)
{
    EXPECT_EQ(WithShownName("Unable to find the setting Mode", "Mode", "BIOS.Mode"),
              "Unable to find the setting BIOS.Mode");
    EXPECT_EQ(WithShownName("The setting A needs setting A", "A", "BIOS.A"), "The setting BIOS.A needs setting A");
    EXPECT_EQ(WithShownName("The setting BIOS.A is hidden", "A", "BIOS.A"), "The setting BIOS.A is hidden");
    EXPECT_EQ(WithShownName("A is hidden", "A", "BIOS.A"), "A is hidden");
}
