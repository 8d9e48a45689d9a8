#include "RedfishConfigSettingManager.h"

#include <algorithm>
#include <set>

#include <boost/json/parse.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RegistryTexts.h"
#include "SharedData.h"

using namespace Tavrine;
using namespace registrytext;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace
{

RedfishConfigSettingManager Manager(const std::string& schema, const SettingValueMap& values = {})
{
    return {schema, values, false, Config_Options()};
}

int CodeOf(const RedfishConfigResult& result) { return result.ErrorCode(); }

std::string Member(const boost::json::value& object, const char* name)
{
    const boost::json::value* member = object.as_object().if_contains(name);
    return member != nullptr && member->is_string() ? std::string(member->get_string()) : std::string();
}

/// Holds each attribute of a registry's document against what the manager says of it.
/// @return the number of texts.
std::size_t ExpectTexts(RedfishConfigSettingManager& manager, const boost::json::array& attributes)
{
    std::size_t count = 0;
    Tavrine::SettingGroupMap groups;
    manager.GetGroupList(groups);
    for (const boost::json::value& attribute : attributes)
    {
        const std::string name = Member(attribute, "AttributeName");
        RedfishConfigSettingTexts texts;
        EXPECT_EQ(CodeOf(manager.GetSettingTexts(name, texts)), 0) << name;
        EXPECT_EQ(texts.DisplayName, Member(attribute, "DisplayName")) << name;
        EXPECT_EQ(texts.HelpText, Member(attribute, "HelpText")) << name;
        EXPECT_EQ(texts.WarningText, Member(attribute, "WarningText")) << name;
        EXPECT_THAT(groups[texts.Group], Contains(name));
        std::vector<std::string> values;
        if (const boost::json::value* list = attribute.as_object().if_contains("Value"); list && list->is_array())
        {
            for (const boost::json::value& value : list->get_array())
            {
                values.push_back(Member(value, "ValueName"));
            }
        }
        std::vector<std::string> told;
        for (const auto& value : texts.Values)
        {
            told.push_back(value.first);
        }
        EXPECT_EQ(told, values) << name;
        count += values.size() + (texts.HelpText.empty() ? 0U : 1U);
    }
    return count;
}

/// Both ends of each dependency on another attribute name each other.
/// @return the number of those ends.
std::size_t ExpectEnds(RedfishConfigSettingManager& manager, const boost::json::value& dependency,
                       const std::vector<std::string>& names)
{
    std::size_t count = 0;
    const boost::json::value& map = dependency.at("Dependency");
    const std::string target = Member(map, "MapToAttribute");
    RedfishConfigSettingRelations ofTarget;
    if (CodeOf(manager.GetSettingRelations(target, ofTarget)) != 0)
    {
        return 0; // a menu
    }
    for (const boost::json::value& term : map.at("MapFrom").as_array())
    {
        const std::string source = Member(term, "MapFromAttribute");
        RedfishConfigSettingRelations ofSource;
        if (source == target || std::find(names.begin(), names.end(), source) == names.end())
        {
            continue;
        }
        EXPECT_EQ(CodeOf(manager.GetSettingRelations(source, ofSource)), 0) << source;
        EXPECT_THAT(ofTarget.DependsOn, testing::Contains(source)) << target;
        EXPECT_THAT(ofSource.NeededBy, testing::Contains(target)) << source;
        ++count;
    }
    return count;
}

const std::string Mode =
    Typed("Mode", "Enumeration",
          R"(,"DisplayName":"Boot Mode","HelpText":"How to start.","WarningText":"Think twice.","MenuPath":"./Boot",)"
          R"("Value":[{"ValueName":"Uefi","ValueDisplayName":"UEFI Mode"},{"ValueName":"Legacy"}])");
const std::string Big = Typed("Big", "Integer", R"(,"LowerBound":-5,"UpperBound":18446744073709551615)");

} // namespace

TEST(SettingWords, NamesStandInTheOrderOfTheRegistry)
{
    RedfishConfigSettingManager manager =
        Manager(Registry(Attribute("Zone") + "," + Attribute("alpha") + "," + Attribute("Mid")));
    EXPECT_THAT(manager.GetSettingNames(), ElementsAre("Zone", "alpha", "Mid"));
    EXPECT_THAT(manager.GetError(), IsEmpty());
}

TEST(SettingWords, NoRegistryHasNoNames)
{
    RedfishConfigSettingManager manager = Manager("no json");
    EXPECT_THAT(manager.GetSettingNames(), IsEmpty());
    ASSERT_EQ(manager.GetError().size(), 1U);
    EXPECT_EQ(CodeOf(manager.GetError().front()), 27);
    RedfishConfigSettingTexts texts;
    RedfishConfigSettingRelations relations;
    EXPECT_EQ(CodeOf(manager.GetSettingTexts("Mode", texts)), 27);
    EXPECT_EQ(CodeOf(manager.GetSettingRelations("Mode", relations)), 27);
}

TEST(SettingWords, TextsAreThoseOfTheRegistry)
{
    RedfishConfigSettingManager manager =
        Manager(Registry(Mode + "," + Big, Dependency(Term("Big", "GEQ", "0"), "Mode", "HelpText", "\"forced\"")),
                {{"Big", std::int64_t{1}}});
    RedfishConfigSettingTexts texts;
    ASSERT_EQ(CodeOf(manager.GetSettingTexts("Mode", texts)), 0);
    EXPECT_EQ(texts.DisplayName, "Boot Mode");
    EXPECT_EQ(texts.HelpText, "How to start.");
    EXPECT_EQ(texts.WarningText, "Think twice.");
    EXPECT_EQ(texts.Type, "Enumeration");
    EXPECT_EQ(texts.CurrentValue, "");
    EXPECT_THAT(texts.Values, ElementsAre(Pair("Uefi", "UEFI Mode"), Pair("Legacy", "")));
    EXPECT_THAT(texts.Numbers, IsEmpty());
    ASSERT_EQ(CodeOf(manager.GetSettingTexts("Big", texts)), 0);
    EXPECT_EQ(texts.Type, "Integer");
    EXPECT_EQ(texts.CurrentValue, "1");
    EXPECT_EQ(texts.DisplayName, "");
    EXPECT_THAT(texts.Values, IsEmpty());
    EXPECT_THAT(texts.Numbers, ElementsAre(Pair("LowerBound", "-5"), Pair("UpperBound", "18446744073709551615")));
}

TEST(SettingWords, TheCurrentValueIsTheGivenOneElseThatOfTheRegistry)
{
    const std::string held = R"(,"CurrentValue":18446744073709551615)";
    RedfishConfigSettingManager manager =
        Manager(Registry(Typed("Given", "Integer", held) + "," + Typed("Null", "Integer", held) + "," +
                         Typed("Held", "Integer", held)),
                {{"given", std::int64_t{-3}}, {"Null", std::nullopt}});
    const std::vector<std::pair<const char*, const char*>> rows = {
        {"Given", "-3"}, {"Null", ""}, {"Held", "18446744073709551615"}};
    for (const auto& [name, value] : rows)
    {
        RedfishConfigSettingTexts texts;
        ASSERT_EQ(CodeOf(manager.GetSettingTexts(name, texts)), 0);
        EXPECT_EQ(texts.CurrentValue, value) << name;
    }
}

TEST(SettingWords, UnknownNamesLeaveTheAnswerAlone)
{
    RedfishConfigSettingManager manager = Manager(Registry(Mode));
    RedfishConfigSettingTexts texts{.Type = "",
                                    .DisplayName = "kept",
                                    .HelpText = "",
                                    .WarningText = "",
                                    .Values = {},
                                    .CurrentValue = "",
                                    .Numbers = {},
                                    .Group = ""};
    RedfishConfigResult result = manager.GetSettingTexts("mode", texts);
    EXPECT_EQ(result.ErrorCode(), 20);
    EXPECT_EQ(result.ErrorMsg(), "Unable to find the setting mode. Did you mean Mode?");
    EXPECT_EQ(texts.DisplayName, "kept");
    RedfishConfigSettingRelations relations{.DependsOn = {"kept"}, .NeededBy = {}};
    EXPECT_EQ(CodeOf(manager.GetSettingRelations("mode", relations)), 20);
    EXPECT_THAT(relations.DependsOn, ElementsAre("kept"));
}

TEST(SettingWords, RelationsHaveADirection)
{
    const std::string inMenu = R"(,"MenuPath":"./Boot/Deep")";
    RedfishConfigSettingManager manager =
        Manager(Registry(Attribute("Secure") + "," + Mode + "," + Attribute("Deep", inMenu) + "," + Attribute("Round"),
                         Dependency(Term("Mode", "EQU", "\"Uefi\""), "Secure", "ReadOnly", "true") + "," +
                             Dependency(Term("Round", "EQU", "\"x\""), "BootMenu", "Hidden", "true") + "," +
                             Dependency(Term("Secure", "EQU", "\"x\""), "Round", "Hidden", "true") + "," +
                             Dependency(Term("Round", "EQU", "\"x\"") + "," + Term("Round", "EQU", "\"y\"", "OR"),
                                        "Round", "GrayOut", "true") +
                             "," + Dependency(Term("Round", "EQU", "\"y\""), "Secure", "GrayOut", "true"),
                         Menu("BootMenu", "./Boot", "Boot")));
    const auto of = [&](const std::string& name)
    {
        RedfishConfigSettingRelations relations;
        EXPECT_EQ(CodeOf(manager.GetSettingRelations(name, relations)), 0);
        return relations;
    };
    EXPECT_THAT(of("Secure").DependsOn, ElementsAre("Mode", "Round"));
    EXPECT_THAT(of("Secure").NeededBy, ElementsAre("Round"));
    EXPECT_THAT(of("Mode").DependsOn, ElementsAre("Round"));
    EXPECT_THAT(of("Mode").NeededBy, ElementsAre("Secure"));
    EXPECT_THAT(of("Deep").DependsOn, ElementsAre("Round"));
    EXPECT_THAT(of("Deep").NeededBy, IsEmpty());
    EXPECT_THAT(of("Round").DependsOn, ElementsAre("Secure"));
    EXPECT_THAT(of("Round").NeededBy, ElementsAre("Secure", "Mode", "Deep"));
}

TEST(SettingWords, ARegistryIsTakenOverWithoutTheValues)
{
    RedfishConfigSettingManager first = Manager(Registry(Mode + "," + Big), {{"Mode", "Legacy"}});
    RedfishConfigSettingManager second = Manager("", {{"Big", std::int64_t{7}}});
    second.TakeRegistryOf(first);
    second.TakeRegistryOf(second); // it has it
    EXPECT_THAT(second.GetSettingNames(), ElementsAre("Mode", "Big"));
    RedfishConfigSettingInfoStru info;
    ASSERT_EQ(CodeOf(second.GetSettingProperties("Big", info)), 0);
    EXPECT_EQ(info.CurrentValue, OptionalVar(std::int64_t{7}));
    ASSERT_EQ(CodeOf(second.GetSettingProperties("Mode", info)), 0);
    EXPECT_EQ(info.CurrentValue, OptionalVar());
    second.UpdateSettingValue({{"Mode", "Uefi"}});
    ASSERT_EQ(CodeOf(first.GetSettingProperties("Mode", info)), 0);
    EXPECT_EQ(info.CurrentValue, OptionalVar("Legacy"));
}

TEST(SettingWords, WhatIsNoRegistryIsTakenOverAsWell)
{
    RedfishConfigSettingManager none = Manager("no json");
    RedfishConfigSettingManager second = Manager(Registry(Mode));
    EXPECT_THAT(second.GetSettingNames(), ElementsAre("Mode"));
    second.TakeRegistryOf(none);
    RedfishConfigSettingInfoStru info;
    EXPECT_EQ(CodeOf(second.GetSettingProperties("Mode", info)), 27);
    RedfishConfigSettingManager empty = Manager(Registry(""));
    second.TakeRegistryOf(empty);
    EXPECT_EQ(CodeOf(second.GetSettingProperties("Mode", info)), 20);
}

TEST(SettingWords, OddPartsHaveNoWords)
{
    RedfishConfigSettingManager manager = Manager(R"({"RegistryEntries":{"Attributes":[1,{},{"AttributeName":5},
        {"AttributeName":"A","DisplayName":7,"Value":[1,{"ValueName":2}],"MenuPath":3},{"AttributeName":"A"}],
        "Menus":[null,{"MenuName":"M"}],"Dependencies":[{},{"Dependency":[]},{"Dependency":{"MapFrom":{}}}]}})");
    EXPECT_THAT(manager.GetSettingNames(), ElementsAre("A"));
    RedfishConfigSettingTexts texts;
    ASSERT_EQ(CodeOf(manager.GetSettingTexts("A", texts)), 0);
    EXPECT_EQ(texts.DisplayName, "");
    EXPECT_THAT(texts.Values, IsEmpty());
    RedfishConfigSettingRelations relations;
    ASSERT_EQ(CodeOf(manager.GetSettingRelations("A", relations)), 0);
    EXPECT_THAT(relations.DependsOn, IsEmpty());
    EXPECT_THAT(relations.NeededBy, IsEmpty());
}

TEST(SettingWords, RegistriesOfRealMachinesAreToldInTheirOwnWords)
{
    if (testdata::Machines().empty())
    {
        GTEST_SKIP() << "no machines in " << testdata::SharedData();
    }
    std::size_t texts = 0;
    std::size_t ends = 0;
    for (const auto& machine : testdata::Machines())
    {
        SCOPED_TRACE(machine.string());
        const std::string text = testdata::ReadFile(machine / "registry.en.json");
        const boost::json::value document = boost::json::parse(text);
        const boost::json::object& entries = document.at("RegistryEntries").as_object();
        RedfishConfigSettingManager manager = Manager(text);
        std::vector<std::string> names;
        for (const boost::json::value& attribute : entries.at("Attributes").as_array())
        {
            names.push_back(Member(attribute, "AttributeName"));
        }
        EXPECT_EQ(manager.GetSettingNames(), names);
        texts += ExpectTexts(manager, entries.at("Attributes").as_array());
        if (const boost::json::value* dependencies = entries.if_contains("Dependencies"))
        {
            for (const boost::json::value& dependency : dependencies->as_array())
            {
                ends += ExpectEnds(manager, dependency, names);
            }
        }
    }
    EXPECT_GT(texts, 1000U);
    EXPECT_GT(ends, 500U);
}

TEST(SettingWords, EveryRelatedSettingOfRealMachinesHasADirection)
{
    if (testdata::Machines().empty())
    {
        GTEST_SKIP() << "no machines in " << testdata::SharedData();
    }
    std::size_t count = 0;
    for (const auto& machine : testdata::Machines())
    {
        SCOPED_TRACE(machine.string());
        RedfishConfigSettingManager manager = Manager(testdata::ReadFile(machine / "registry.en.json"));
        for (const std::string& name : manager.GetSettingNames())
        {
            RedfishConfigSettingInfoStru info;
            RedfishConfigSettingRelations relations;
            ASSERT_EQ(CodeOf(manager.GetSettingProperties(name, info)), 0) << name;
            ASSERT_EQ(CodeOf(manager.GetSettingRelations(name, relations)), 0) << name;
            std::set<std::string> found(relations.DependsOn.begin(), relations.DependsOn.end());
            found.insert(relations.NeededBy.begin(), relations.NeededBy.end());
            EXPECT_EQ(found, std::set<std::string>(info.DependencyNames.begin(), info.DependencyNames.end())) << name;
            count += found.size();
        }
    }
    EXPECT_GT(count, 500U);
}
