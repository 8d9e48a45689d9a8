#include "RedfishConfigSettingManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RegistryTexts.h"

using namespace Tavrine;
using namespace registrytext;
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
    EXPECT_THAT(texts.Values, ElementsAre(Pair("Uefi", "UEFI Mode"), Pair("Legacy", "")));
    EXPECT_THAT(texts.Numbers, IsEmpty());
    ASSERT_EQ(CodeOf(manager.GetSettingTexts("Big", texts)), 0);
    EXPECT_EQ(texts.DisplayName, "");
    EXPECT_THAT(texts.Values, IsEmpty());
    EXPECT_THAT(texts.Numbers, ElementsAre(Pair("LowerBound", "-5"), Pair("UpperBound", "18446744073709551615")));
}

TEST(SettingWords, UnknownNamesLeaveTheAnswerAlone)
{
    RedfishConfigSettingManager manager = Manager(Registry(Mode));
    RedfishConfigSettingTexts texts{
        .DisplayName = "kept", .HelpText = "", .WarningText = "", .Values = {}, .Numbers = {}};
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
