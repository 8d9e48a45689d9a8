#include "RedfishConfigSettingManager.h"

#include <string>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "ManySettings.h"
#include "RegistryTexts.h"

using namespace Tavrine;
using namespace registrytext;

namespace
{

/// Every operation once; what comes out does not matter, that it ends does.
void Exercise(const std::string& schema)
{
    RedfishConfigSettingManager manager(schema, false, Config_Options());
    manager.UpdateSettingValue({{"A", "x"}, {"B", std::int64_t{1}}, {"C", true}, {"D", std::nullopt}});
    SettingGroupMap groups;
    manager.GetGroupList(groups);
    RedfishConfigSettingInfoStru info;
    for (const auto& [group, names] : groups)
    {
        for (const std::string& name : names)
        {
            ASSERT_EQ(manager.GetSettingProperties(name, info).ErrorCode(), 0) << name;
            ASSERT_EQ(info.AttributeKey, name);
        }
    }
    manager.UpdateSettingValue({{"A", std::nullopt}});
    manager.GetSettingProperties("nobody", info);
}

const std::string Whole =
    Registry(Attribute("A", R"(,"MenuPath":"./M","LowerBound":1,"Value":[{"ValueName":"v","ValueDisplayName":"V"}])") +
                 "," + Attribute("B", R"(,"Oem":{"Zorvan":{"Protected":true}},"CurrentValue":null)"),
             Dependency(Term("A", "EQU", "1") + "," + Term("B", "NEQ", "true", "OR"), "B", "ReadOnly", "true") + "," +
                 Dependency(Term("B", "GTR", "1"), "M", "Hidden", "true"),
             Menu("M", "./M", "Menu", R"(,"Hidden":false)"));

/// Puts `wrong` in the place of the `countdown`th value of the document, in order.
bool Replace(boost::json::value& value, const boost::json::value& wrong, int& countdown)
{
    if (countdown-- == 0)
    {
        value = wrong;
        return true;
    }
    if (auto* object = value.if_object())
    {
        for (auto& member : *object)
        {
            if (Replace(member.value(), wrong, countdown))
            {
                return true;
            }
        }
    }
    if (auto* list = value.if_array())
    {
        for (auto& element : *list)
        {
            if (Replace(element, wrong, countdown))
            {
                return true;
            }
        }
    }
    return false;
}

} // namespace

TEST(HostileRegistry, EveryValueOfAWrongKindIsBorne)
{
    const char* wrongs[] = {
        "null", "true",   "-1", "18446744073709551615", "1e300",  "0.5", R"("")", R"("A")", R"("M")", "[]",
        "[[]]", "[null]", "{}", R"({"a":1})",           R"("./")"};
    int replaced = 0;
    for (const char* wrong : wrongs)
    {
        for (int place = 0;; ++place)
        {
            boost::json::value document = boost::json::parse(Whole);
            int countdown = place;
            if (!Replace(document, boost::json::parse(wrong), countdown))
            {
                break;
            }
            Exercise(boost::json::serialize(document));
            ++replaced;
        }
    }
    EXPECT_GT(replaced, 15 * 40);
}

TEST(HostileRegistry, EveryTruncationIsBorne)
{
    for (std::size_t length = 0; length < Whole.size(); ++length)
    {
        RedfishConfigSettingManager manager(Whole.substr(0, length), false, Config_Options());
        RedfishConfigSettingInfoStru info;
        ASSERT_EQ(manager.GetSettingProperties("A", info).ErrorCode(), 27) << length;
    }
}

TEST(HostileRegistry, DeepNestingIsRefused)
{
    for (const char* brackets : {"[]", "{}"})
    {
        std::string deep;
        for (int level = 0; level < 10'000; ++level)
        {
            deep += brackets[0];
            deep += brackets[0] == '{' ? R"("a":)" : "";
        }
        RedfishConfigSettingManager manager(R"({"RegistryEntries":{"Attributes":)" + deep, false, Config_Options());
        RedfishConfigSettingInfoStru info;
        EXPECT_EQ(manager.GetSettingProperties("A", info).ErrorCode(), 27);
    }
}

TEST(HostileRegistry, HundredThousandSettingsUnderOneMenuAreServed)
{
    constexpr int count = AHundredThousand;
    std::string attributes = Attribute("A0", R"(,"MenuPath":"./")");
    for (int index = 1; index < count; ++index)
    {
        attributes += "," + Attribute("A" + std::to_string(index), R"(,"MenuPath":"./M/N")");
    }
    const std::string menus = Menu("M", "./M", "M") + "," + Menu("N", "./M/N", "N");
    RedfishConfigSettingManager manager(
        Registry(attributes, Dependency(Term("A0", "EQU", "1"), "M", "GrayOut", "true"), menus), false,
        Config_Options());
    manager.UpdateSettingValue({{"A0", "1"}});
    RedfishConfigSettingInfoStru info;
    for (int index = 1; index < count; ++index)
    {
        ASSERT_EQ(manager.GetSettingProperties("A" + std::to_string(index), info).ErrorCode(), 0) << index;
        ASSERT_TRUE(info.GrayOut) << index;
        ASSERT_EQ(info.DependencyNames.size(), 1U) << index;
    }
    ASSERT_EQ(manager.GetSettingProperties("A0", info).ErrorCode(), 0);
    EXPECT_EQ(info.DependencyNames.size(), static_cast<std::size_t>(count) - 1);
    EXPECT_EQ(manager.GetSettingProperties("a5", info).ErrorMsg(), "Unable to find the setting a5. Did you mean A5?");
}

TEST(HostileRegistry, TwentyThousandDependenciesInACircleEnd)
{
    constexpr int count = 20'000;
    std::string attributes;
    std::string dependencies;
    for (int index = 0; index < count; ++index)
    {
        const std::string name = "A" + std::to_string(index);
        const std::string next = "A" + std::to_string((index + 1) % count);
        attributes += (index == 0 ? "" : ",") + Attribute(name);
        dependencies += (index == 0 ? "" : ",") +
                        Dependency(Term(name, "EQU", "\"1\""), next, "CurrentValue", "\"1\"") + "," +
                        Dependency(Term(name, "EQU", "false", "", "GrayOut"), next, "GrayOut", "true");
    }
    RedfishConfigSettingManager manager(Registry(attributes, dependencies), false, Config_Options());
    manager.UpdateSettingValue({{"A0", "1"}});
    RedfishConfigSettingInfoStru info;
    ASSERT_EQ(manager.GetSettingProperties("A1", info).ErrorCode(), 0);
    EXPECT_EQ(info.DependencyNames, (std::vector<std::string>{"A0", "A2"}));
}

RC_GTEST_PROP(HostileRegistryProperty, ARegistryThatIsCutIsNone, ())
{
    const std::string whole =
        Registry(Attribute("A"), Dependency(Term("A", "EQU", "1"), "A", "ReadOnly", "true"), Menu("M", "./M", "Menu"));
    const auto kept = *rc::gen::inRange<std::size_t>(0, whole.size() + 1);
    RedfishConfigSettingManager manager(whole.substr(0, kept), false, Config_Options());
    RedfishConfigSettingInfoStru info;
    RC_ASSERT(manager.GetSettingProperties("A", info).ErrorCode() == (kept == whole.size() ? 0 : 27));
}
