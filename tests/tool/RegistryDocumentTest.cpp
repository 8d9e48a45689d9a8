#include "RegistryDocument.h"

#include <gtest/gtest.h>

#include <set>

#include "RedfishConfigSettingManager.h"
#include "SharedData.h"
#include "SmallRegistry.h"

using namespace Tavrine;
using namespace Tavrine::Tool;

namespace
{

using Words = std::vector<std::string>;

SettingRelations Related(const RegistryDocument& document, const std::string& name)
{
    Words all;
    for (const RegistrySetting& setting : document.Settings())
    {
        all.push_back(setting.Name);
    }
    return document.Sort(name, all);
}

} // namespace

TEST(RegistryDocument, TextsAreRead)
{
    RegistryDocument document;
    ASSERT_TRUE(document.Read(tooltest::SmallRegistry));
    EXPECT_EQ(document.Settings().size(), 6U);
    const RegistrySetting* mode = document.Find("Mode");
    ASSERT_NE(mode, nullptr);
    EXPECT_EQ(mode->Type, "Enumeration");
    EXPECT_EQ(mode->DisplayName, "Boot Mode");
    EXPECT_EQ(mode->WarningText, "Think twice.");
    EXPECT_EQ(mode->ValueTexts, (Words{"Uefi", "UEFI Mode", "Legacy", ""}));
    EXPECT_EQ(document.Find("mode"), nullptr);
}

TEST(RegistryDocument, RelationsHaveADirection)
{
    RegistryDocument document;
    ASSERT_TRUE(document.Read(tooltest::SmallRegistry));
    EXPECT_EQ(Related(document, "Secure").DependsOn, Words{"Mode"});
    EXPECT_EQ(Related(document, "Mode").NeededBy, Words{"Secure"});
    EXPECT_EQ(Related(document, "Mode").DependsOn, Words{});
    EXPECT_EQ(Related(document, "Timeout").DependsOn, Words{"Fixed"});
    EXPECT_EQ(Related(document, "Fixed").NeededBy, Words{"Timeout"});
}

TEST(RegistryDocument, WhatIsNoRegistryIsRefusedAndOddPartsAreLeftOut)
{
    for (const char* text : {"", "{", "[]", "{}", R"({"RegistryEntries":[]})"})
    {
        RegistryDocument document;
        EXPECT_FALSE(document.Read(text)) << text;
    }
    RegistryDocument document;
    EXPECT_TRUE(document.Read(R"({"RegistryEntries":{"Attributes":[1,{},{"AttributeName":5},
        {"AttributeName":"A","DisplayName":7,"Value":[1,{"ValueName":2}],"MenuPath":3},{"AttributeName":"A"}],
        "Menus":[null,{"MenuName":"M"}],"Dependencies":[{},{"Dependency":[]},{"Dependency":{"MapFrom":{}}}]}})"));
    ASSERT_EQ(document.Settings().size(), 1U);
    EXPECT_EQ(document.Settings()[0].DisplayName, "");
    EXPECT_TRUE(Related(document, "A").DependsOn.empty());
}

TEST(RegistryDocument, EveryRelatedSettingOfRealMachinesHasADirection)
{
    if (testdata::Machines().empty())
    {
        GTEST_SKIP() << "no machines in " << testdata::SharedData();
    }
    std::size_t relations = 0;
    for (const auto& machine : testdata::Machines())
    {
        SCOPED_TRACE(machine.string());
        const std::string text = testdata::ReadFile(machine / "registry.en.json");
        RegistryDocument document;
        ASSERT_TRUE(document.Read(text));
        RedfishConfigSettingManager manager(text, false, Config_Options());
        for (const RegistrySetting& setting : document.Settings())
        {
            RedfishConfigSettingInfoStru info;
            ASSERT_EQ(manager.GetSettingProperties(setting.Name, info).ErrorCode(), 0) << setting.Name;
            const SettingRelations sorted = document.Sort(setting.Name, info.DependencyNames);
            std::set<std::string> found(sorted.DependsOn.begin(), sorted.DependsOn.end());
            found.insert(sorted.NeededBy.begin(), sorted.NeededBy.end());
            EXPECT_EQ(found, std::set<std::string>(info.DependencyNames.begin(), info.DependencyNames.end()))
                << setting.Name;
            relations += found.size();
        }
    }
    EXPECT_GT(relations, 500U);
}
