#include "SettingNames.h"

#include <gtest/gtest.h>

#include <boost/json/serialize.hpp>

#include "BiosRedfishConfigProc.h"
#include "ConfigFile.h"
#include "Options.h"

using namespace Tavrine::Tool;

TEST(PrefixesOf, AreThoseOfAFrontObject)
{
    for (const auto type : {Tavrine::SystemTypeBios, Tavrine::SystemTypeUefi})
    {
        Tavrine::BiosRedfishConfigProc front({}, type, {});
        Options options;
        options.SystemType = type;
        EXPECT_EQ(PrefixesOf(options).First, front.m_Prefix);
        EXPECT_EQ(PrefixesOf(options).Second, front.GetSecondPrefix());

        options.FirstPrefix = "One";
        options.SecondPrefix = "Two";
        front.SetPrefix("One", "Two");
        EXPECT_EQ(PrefixesOf(options).First, front.m_Prefix);
        EXPECT_EQ(PrefixesOf(options).Second, front.GetSecondPrefix());
    }
}

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

TEST(HiddenKeywords, AreTheSameThatTheLibraryHides)
{
    const std::vector<std::string> names = {"RaidCard",   "Raid", "Card", "A,B", "quote\"d", "tab\tbed",
                                            "\u00A0wide", "wide", "x85",  "",    "B00T",     "boot"};
    const testdata::TemporaryFolder folder;
    boost::json::object attributes;
    for (const std::string& name : names)
    {
        attributes[name] = 1;
    }
    const std::string file = folder.Write(
        "debug.json", boost::json::serialize(boost::json::object{{"resource", {{"Attributes", attributes}}}}));
    for (const char* keywords :
         {R"("")", R"("Raid")", R"(" Raid\tCard ,")", R"("\"Raid\" \"Card\"")", R"("A,B")", R"("\n")",
          R"("\u000B\f\r")", R"("B\u000B00\fT\r,ca\nrd")", R"("\u00A0")", R"("\u0085")", R"("\u2003wide")",
          R"("wide\u00A0")", R"("\\")", R"("BIOS")", R"("S.b")", R"("'boot'")"})
    {
        SCOPED_TRACE(keywords);
        const tooltest::Configured configured("HIDDEN_CONFIG_KEYWORDS_LIST = " + std::string(keywords) + "\n");
        Tavrine::BiosRedfishConfigProc front({}, Tavrine::SystemTypeBios, {});
        front.SetDebugConfigFile(file);
        Tavrine::SettingStringMap shown;
        ASSERT_EQ(front.QueryGroupSettingValues(shown), 0);
        Tavrine::SettingStringMap expected;
        for (const std::string& name : names)
        {
            if (!IsHidden("BIOS." + name, HiddenKeywords()))
            {
                expected["BIOS." + name] = "1";
            }
        }
        EXPECT_EQ(shown, expected);
    }
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
