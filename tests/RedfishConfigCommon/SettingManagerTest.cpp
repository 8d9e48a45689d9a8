#include "RedfishConfigSettingManager.h"

#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Logging.h"
#include "RegistryTexts.h"

using namespace Tavrine;
using namespace registrytext;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

namespace
{

RedfishConfigSettingManager Manager(const std::string& schema, const SettingValueMap& values = {})
{
    return {schema, values, false, Config_Options()};
}

RedfishConfigSettingInfoStru InfoOf(RedfishConfigSettingManager& manager, const std::string& name)
{
    RedfishConfigSettingInfoStru info;
    RedfishConfigResult result = manager.GetSettingProperties(name, info);
    EXPECT_EQ(result.ErrorCode(), 0) << result.ErrorMsg();
    RedfishConfigSettingInfoStru outline;
    outline.HelpText = "cleared";
    EXPECT_EQ(manager.GetSettingOutline(name, outline), 0);
    EXPECT_EQ(outline.AttributeKey, info.AttributeKey);
    EXPECT_EQ(outline.SettingType, info.SettingType) << name;
    EXPECT_EQ(outline.IsProtected, info.IsProtected) << name;
    EXPECT_EQ(outline.CurrentValue, info.CurrentValue) << name;
    EXPECT_EQ(outline.HelpText, std::nullopt);
    return info;
}

/// The texts written, all of level 4.
std::vector<std::string> Details(const CapturingLogSink& sink)
{
    std::vector<std::string> texts;
    for (const LogRecord& record : sink.Records())
    {
        EXPECT_EQ(record.Level, 4U) << record.Text;
        texts.push_back(record.Text);
    }
    return texts;
}

const std::string BootRegistry =
    Registry(Attribute("BootMode") + "," + Attribute("Order", R"(,"UpperBound":9)") + "," + Attribute("Alone"),
             Dependency(Term("BootMode", "EQU", "\"LegacyBios\""), "Order", "ReadOnly", "true") + "," +
                 Dependency(Term("BootMode", "EQU", "\"LegacyBios\""), "Order", "UpperBound", "4"));

} // namespace

TEST(SettingManager, GivesEverySettingOfEveryType)
{
    const char* types[] = {"String", "Integer", "Enumeration", "Boolean", "Password"};
    std::string attributes;
    for (const char* type : types)
    {
        attributes += std::string(attributes.empty() ? "" : ",") + R"({"AttributeName":"My)" + type + R"(","Type":")" +
                      type + "\"}";
    }
    auto manager = Manager(Registry(attributes));
    for (const std::string type : types)
    {
        const RedfishConfigSettingInfoStru info = InfoOf(manager, "My" + type);
        EXPECT_EQ(info.AttributeKey, "My" + type);
        EXPECT_EQ(info.SettingType, type);
    }
}

TEST(SettingManager, SettingOfNoKnownTypeIsKeptWithoutAType)
{
    const CapturingLogSink sink;
    auto manager = Manager(Registry(R"({"AttributeName":"None"},{"AttributeName":"Odd","Type":"Date"},
        {"AttributeName":"Number","Type":7},{"AttributeName":"Lower","Type":"string"})"));
    for (const char* name : {"None", "Odd", "Number", "Lower"})
    {
        EXPECT_EQ(InfoOf(manager, name).SettingType, std::nullopt) << name;
        EXPECT_EQ(InfoOf(manager, name).AttributeKey, name);
    }
    EXPECT_THAT(Details(sink), ElementsAre("Setting None has no known type.", "Setting Odd has no known type.",
                                           "Setting Number has no known type.", "Setting Lower has no known type."));
}

TEST(SettingManager, UnknownNameIsCode20WithTheNameAsSetting)
{
    auto manager = Manager(BootRegistry);
    RedfishConfigSettingInfoStru info;
    info.HelpText = "kept";
    RedfishConfigResult result = manager.GetSettingProperties("Nothing", info);
    EXPECT_EQ(result.ErrorCode(), 20);
    EXPECT_EQ(result.ErrorMsg(), "Unable to find the setting Nothing");
    EXPECT_EQ(result.ErrorSetting(), "Nothing");
    EXPECT_EQ(manager.GetSettingOutline("Nothing", info).ErrorMsg(), result.ErrorMsg());
    EXPECT_EQ(info.HelpText, "kept");
}

TEST(SettingManager, UnknownNameIsHelpedWhereOneNameDiffersInCase)
{
    auto manager = Manager(Registry(Attribute("BootMode") + "," + Attribute("dup") + "," + Attribute("DUP")));
    RedfishConfigSettingInfoStru info;
    EXPECT_EQ(manager.GetSettingProperties("bootmode", info).ErrorMsg(),
              "Unable to find the setting bootmode. Did you mean BootMode?");
    EXPECT_EQ(manager.GetSettingProperties("Dup", info).ErrorMsg(), "Unable to find the setting Dup");
    EXPECT_EQ(manager.GetSettingProperties("", info).ErrorMsg(), "Unable to find the setting ");
    EXPECT_EQ(InfoOf(manager, "dup").AttributeKey, "dup");
    EXPECT_EQ(InfoOf(manager, "DUP").AttributeKey, "DUP");
}

TEST(SettingManager, RegistryOfNoSettingsKnowsNoName)
{
    auto manager = Manager(Registry(""));
    RedfishConfigSettingInfoStru info;
    EXPECT_EQ(manager.GetSettingProperties("A", info).ErrorCode(), 20);
    SettingGroupMap groups = {{"Old", {"A"}}};
    manager.GetGroupList(groups);
    EXPECT_TRUE(groups.empty());
    EXPECT_THAT(manager.GetError(), IsEmpty());
}

TEST(SettingManager, TextThatIsNoRegistryIsCode27AtEveryOperation)
{
    for (const char* text : {"null", "", "{}", "<html>", R"({"RegistryEntries":{"Attributes":null}})"})
    {
        auto manager = Manager(text);
        for (int repeat = 0; repeat < 2; ++repeat)
        {
            RedfishConfigSettingInfoStru info;
            RedfishConfigResult result = manager.GetSettingProperties("A", info);
            EXPECT_EQ(result.ErrorCode(), 27) << text;
            EXPECT_THAT(result.ErrorMsg(), testing::StartsWith("The attribute registry cannot be read: ")) << text;
            manager.UpdateSettingValue({{"A", "x"}});
            SettingGroupMap groups = {{"Old", {"A"}}};
            manager.GetGroupList(groups);
            EXPECT_TRUE(groups.empty()) << text;
            ASSERT_EQ(manager.GetError().size(), 1U) << text;
            EXPECT_EQ(manager.GetError().front().ErrorCode(), 27) << text;
        }
    }
}

TEST(SettingManager, DependenciesFollowTheValues)
{
    auto manager = Manager(BootRegistry);
    EXPECT_FALSE(InfoOf(manager, "Order").ReadOnly);
    EXPECT_EQ(InfoOf(manager, "Order").UpperBound, 9);

    manager.UpdateSettingValue({{"BootMode", "LegacyBios"}});
    const RedfishConfigSettingInfoStru forced = InfoOf(manager, "Order");
    EXPECT_TRUE(forced.ReadOnly);
    EXPECT_EQ(forced.UpperBound, 4);
    EXPECT_THAT(forced.ForcedBy, UnorderedElementsAre(Pair("ReadOnly", "BootMode is LegacyBios"),
                                                      Pair("UpperBound", "BootMode is LegacyBios")));
    EXPECT_THAT(forced.DependencyNames, ElementsAre("BootMode"));
    EXPECT_THAT(InfoOf(manager, "BootMode").DependencyNames, ElementsAre("Order"));
    EXPECT_THAT(InfoOf(manager, "Alone").DependencyNames, IsEmpty());
    EXPECT_THAT(InfoOf(manager, "Alone").ForcedBy, IsEmpty());

    manager.UpdateSettingValue({{"BootMode", "Uefi"}});
    EXPECT_FALSE(InfoOf(manager, "Order").ReadOnly);
    EXPECT_EQ(InfoOf(manager, "Order").UpperBound, 9);
    EXPECT_THAT(InfoOf(manager, "Order").ForcedBy, IsEmpty());
}

TEST(SettingManager, StartsWithTheValuesThatItIsMadeWith)
{
    auto manager = Manager(BootRegistry, {{"BootMode", "LegacyBios"}});
    EXPECT_TRUE(InfoOf(manager, "Order").ReadOnly);
    auto updatedFirst = Manager(BootRegistry);
    updatedFirst.UpdateSettingValue({{"BootMode", "LegacyBios"}});
    EXPECT_TRUE(InfoOf(updatedFirst, "Order").ReadOnly) << "values given before the first operation";
}

TEST(SettingManager, UpdateReplacesNamedValuesAndKeepsTheOthers)
{
    auto manager = Manager(Registry(Attribute("A", R"(,"CurrentValue":"registered")") + "," + Attribute("B") + "," +
                                    Attribute("C", R"(,"CurrentValue":"registered")")),
                           {{"B", "b"}});
    EXPECT_EQ(InfoOf(manager, "A").CurrentValue, OptionalVar("registered"));
    EXPECT_EQ(InfoOf(manager, "B").CurrentValue, OptionalVar("b"));
    manager.UpdateSettingValue({{"A", std::int64_t{5}}, {"c", std::nullopt}, {"Unknown", true}});
    EXPECT_EQ(InfoOf(manager, "A").CurrentValue, OptionalVar(std::int64_t{5}));
    EXPECT_EQ(InfoOf(manager, "B").CurrentValue, OptionalVar("b"));
    EXPECT_EQ(InfoOf(manager, "C").CurrentValue, std::nullopt) << "null is told, not the registry's value";
}

TEST(SettingManager, ValueDependenciesDoNotShowAsCurrentValues)
{
    auto manager = Manager(Registry(Attribute("A") + "," + Attribute("B"),
                                    Dependency(Term("A", "EQU", "1"), "B", "CurrentValue", "\"forced\"")),
                           {{"A", "1"}});
    EXPECT_EQ(InfoOf(manager, "B").CurrentValue, std::nullopt);
    EXPECT_THAT(InfoOf(manager, "B").ForcedBy, IsEmpty());
    EXPECT_THAT(InfoOf(manager, "B").DependencyNames, ElementsAre("A"));
}

TEST(SettingManager, InfoIsReplacedWhole)
{
    auto manager = Manager(BootRegistry);
    RedfishConfigSettingInfoStru info;
    info.IsProtected = true;
    info.HelpText = "old";
    info.ForcedBy["ReadOnly"] = "old";
    info.DependencyNames = {"old"};
    ASSERT_EQ(manager.GetSettingProperties("Alone", info), 0);
    EXPECT_FALSE(info.IsProtected);
    EXPECT_EQ(info.HelpText, std::nullopt);
    EXPECT_TRUE(info.ForcedBy.empty());
    EXPECT_TRUE(info.DependencyNames.empty());
}

TEST(SettingManager, GroupListReplacesWhatStood)
{
    auto manager =
        Manager(Registry(Attribute("A", R"(,"MenuPath":"./M","Hidden":true)"), "", Menu("M", "./M", "Menu")));
    for (int repeat = 0; repeat < 2; ++repeat)
    {
        SettingGroupMap groups = {{"Old", {"x"}}};
        manager.GetGroupList(groups);
        EXPECT_EQ(groups, (SettingGroupMap{{"Menu", {"A"}}}));
        EXPECT_THAT(manager.GetError(), IsEmpty());
    }
}

TEST(SettingManager, DuplicatesAndOddElementsAreToldAtLevel4)
{
    const CapturingLogSink sink;
    auto manager = Manager(Registry(Attribute("A") + "," + Attribute("A") + ",7,{\"Type\":\"String\"}"));
    EXPECT_EQ(InfoOf(manager, "A").AttributeKey, "A");
    EXPECT_THAT(Details(sink), ElementsAre(HasSubstr("\"A\" occurs twice"), HasSubstr("is no object, so skipped"),
                                           HasSubstr("without a text in \"AttributeName\"")));
}

TEST(SettingManager, ARegistryWithoutSettingsIsReadOnce)
{
    const CapturingLogSink sink;
    auto manager = Manager(Registry("7"));
    for (int repeat = 0; repeat < 3; ++repeat)
    {
        RedfishConfigSettingInfoStru info;
        EXPECT_EQ(manager.GetSettingProperties("A", info).ErrorCode(), 20);
    }
    EXPECT_THAT(Details(sink), ElementsAre(HasSubstr("is no object, so skipped")));
}

TEST(SettingManager, DependenciesThatDoNotSettleAreToldAtLevel4)
{
    const CapturingLogSink sink;
    auto manager =
        Manager(Registry(Attribute("A"), Dependency(Term("A", "EQU", "false", "", "GrayOut"), "A", "GrayOut", "true")));
    InfoOf(manager, "A");
    EXPECT_THAT(Details(sink), ElementsAre("Dependencies of the attribute registry did not settle after 16 rounds."));
}
