#include "RedfishConfigSettingManager.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Logging.h"
#include "ManySettings.h"
#include "RegistryTexts.h"

using namespace Tavrine;
using namespace registrytext;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace
{

struct Outcome
{
    int Code = 0;
    std::string Message;
    std::string Setting;
    SettingStringMap Contexts;
    /// "CODE SETTING MESSAGE" of the error list.
    std::vector<std::string> Errors;
};

Outcome ChangeAll(RedfishConfigSettingManager& manager, const SettingStringMap& values,
                  filterAction action = FilterChange)
{
    Outcome outcome;
    outcome.Contexts = {{"Former", "gone"}};
    RedfishConfigResult result = manager.PreparePatchContext(values, outcome.Contexts, action);
    outcome.Code = result.ErrorCode();
    outcome.Message = result.ErrorMsg();
    outcome.Setting = result.ErrorSetting();
    for (RedfishConfigResult& error : manager.TakeErrors())
    {
        outcome.Errors.push_back(std::to_string(error.ErrorCode()) + " " + error.ErrorSetting() + ": " +
                                 error.ErrorMsg());
    }
    return outcome;
}

const std::string Machine =
    Registry(Attribute("BootMode") + "," + Attribute("Order") + "," +
                 Typed("Count", "Integer", R"(,"UpperBound":9,"DefaultValue":5)") + "," +
                 Attribute("Serial", R"(,"IsSystemUniqueProperty":true,"DefaultValue":"s")") + "," +
                 Attribute("Fixed", R"(,"ReadOnly":true,"DefaultValue":"f")") + "," +
                 Typed("Bad", "String", R"(,"MinLength":3,"DefaultValue":"")"),
             Dependency(Term("BootMode", "EQU", "\"LegacyBios\""), "Order", "ReadOnly", "true") + "," +
                 Dependency(Term("BootMode", "EQU", "\"LegacyBios\""), "Count", "UpperBound", "4"));

} // namespace

TEST(NewValues, AllPassed)
{
    RedfishConfigSettingManager manager(Machine, false, Config_Options());
    const Outcome outcome = ChangeAll(manager, {{"Order", "x"}, {"Count", "3"}});
    EXPECT_EQ(outcome.Code, 0);
    EXPECT_EQ(outcome.Message, "");
    EXPECT_THAT(outcome.Contexts, ElementsAre(Pair("Count", "3"), Pair("Order", R"("x")")));
    EXPECT_THAT(outcome.Errors, IsEmpty());
}

TEST(NewValues, NothingWantedIsDone)
{
    RedfishConfigSettingManager manager(Machine, false, Config_Options());
    for (const filterAction action : {FilterChange, FilterDefaultAll})
    {
        const Outcome outcome = ChangeAll(manager, {}, action);
        EXPECT_EQ(outcome.Code, 0);
        EXPECT_THAT(outcome.Contexts, IsEmpty());
        EXPECT_THAT(outcome.Errors, IsEmpty());
    }
}

TEST(NewValues, SomePassedIsCode7WithOneErrorASettingInTheOrderOfTheMap)
{
    RedfishConfigSettingManager manager(Machine, false, Config_Options());
    const Outcome outcome =
        ChangeAll(manager, {{"Count", "99"}, {"Fixed", "x"}, {"Order", "x"}, {"Unknown", "x"}, {"Absent", "x"}});
    EXPECT_EQ(outcome.Code, 7);
    EXPECT_EQ(outcome.Message, "4 of 5 new values are refused.");
    EXPECT_THAT(outcome.Contexts, ElementsAre(Pair("Order", R"("x")")));
    EXPECT_THAT(outcome.Errors,
                ElementsAre("20 Absent: Unable to find the setting Absent",
                            "10 Count: The new value is invalid: the setting Count takes a whole number of at most 9.",
                            "18 Fixed: The setting Fixed cannot be changed: it is read-only.",
                            "20 Unknown: Unable to find the setting Unknown"));
}

TEST(NewValues, NonePassedIsCode18OrTheOnlyFailureItself)
{
    RedfishConfigSettingManager manager(Machine, false, Config_Options());
    const Outcome several = ChangeAll(manager, {{"Count", "99"}, {"Unknown", "x"}});
    EXPECT_EQ(several.Code, 18);
    EXPECT_EQ(several.Message, "All 2 new values are refused.");
    EXPECT_EQ(several.Setting, "");
    EXPECT_THAT(several.Contexts, IsEmpty());
    EXPECT_EQ(several.Errors.size(), 2U);

    const Outcome one = ChangeAll(manager, {{"Unknown", "x"}});
    EXPECT_EQ(one.Code, 20);
    EXPECT_EQ(one.Message, "Unable to find the setting Unknown");
    EXPECT_EQ(one.Setting, "Unknown");
    EXPECT_EQ(one.Errors.size(), 1U);

    RedfishConfigSettingManager empty(Registry(""), false, Config_Options());
    EXPECT_EQ(ChangeAll(empty, {{"A", "x"}}, FilterDefaultAll).Code, 20);
}

TEST(NewValues, RegistryThatCannotBeReadIsCode27)
{
    RedfishConfigSettingManager manager("{", false, Config_Options());
    const Outcome outcome = ChangeAll(manager, {{"A", "x"}});
    EXPECT_EQ(outcome.Code, 27);
    EXPECT_THAT(outcome.Contexts, IsEmpty());
    EXPECT_EQ(ChangeAll(manager, {{"A", "x"}}, FilterSave).Code, 16);
}

TEST(NewValues, AreJudgedAsTheOthersOfTheCallLeaveThings)
{
    RedfishConfigSettingManager manager(Machine, {{"BootMode", "Uefi"}}, false, Config_Options());
    const Outcome locked = ChangeAll(manager, {{"BootMode", "LegacyBios"}, {"Count", "5"}, {"Order", "x"}});
    EXPECT_EQ(locked.Code, 7);
    EXPECT_THAT(locked.Contexts, ElementsAre(Pair("BootMode", R"("LegacyBios")")));
    EXPECT_THAT(locked.Errors,
                ElementsAre("10 Count: The new value is invalid: the setting Count takes a whole number of at most 4 "
                            "because BootMode is LegacyBios.",
                            "18 Order: The setting Order cannot be changed: it is read-only because BootMode is "
                            "LegacyBios."));

    manager.UpdateSettingValue({{"BootMode", "LegacyBios"}});
    EXPECT_EQ(ChangeAll(manager, {{"Order", "x"}}).Code, 18);
    EXPECT_EQ(ChangeAll(manager, {{"BootMode", "Uefi"}, {"Count", "5"}, {"Order", "x"}}).Code, 0);
}

TEST(NewValues, RefusedValueLocksNothing)
{
    const std::string registry =
        Registry(Typed("Mode", "Enumeration", R"(,"Value":[{"ValueName":"A"}])") + "," +
                     Attribute("Locked", R"(,"ReadOnly":true)") + "," + Attribute("X") + "," + Attribute("Y"),
                 Dependency(Term("Mode", "NEQ", "\"A\""), "X", "ReadOnly", "true") + "," +
                     Dependency(Term("Locked", "EQU", "\"1\""), "Y", "ReadOnly", "true"));
    RedfishConfigSettingManager manager(registry, {{"Mode", "A"}, {"Locked", "0"}}, false, Config_Options());
    const Outcome outcome = ChangeAll(manager, {{"Mode", "B"}, {"Locked", "1"}, {"X", "x"}, {"Y", "y"}});
    EXPECT_EQ(outcome.Code, 7);
    EXPECT_THAT(outcome.Contexts, ElementsAre(Pair("X", R"("x")"), Pair("Y", R"("y")")));
    EXPECT_EQ(outcome.Errors.size(), 2U);
}

TEST(NewValues, OwnChangeNeitherLocksNorFreesItself)
{
    const std::string registry = Registry(Attribute("A") + "," + Attribute("B") + "," + Attribute("C"),
                                          Dependency(Term("A", "EQU", "\"Locked\""), "A", "ReadOnly", "true") + "," +
                                              Dependency(Term("C", "EQU", "\"Lock\""), "A", "GrayOut", "true"));
    RedfishConfigSettingManager open(registry, {{"A", "Open"}}, false, Config_Options());
    EXPECT_EQ(ChangeAll(open, {{"A", "Locked"}, {"B", "x"}}).Code, 0);
    EXPECT_THAT(ChangeAll(open, {{"A", "Locked"}, {"C", "Lock"}}).Errors,
                ElementsAre("18 A: The setting A cannot be changed: it is grayed out because C is Lock."));
    RedfishConfigSettingManager locked(registry, {{"A", "Locked"}}, false, Config_Options());
    EXPECT_THAT(ChangeAll(locked, {{"A", "Open"}, {"B", "x"}}).Errors,
                ElementsAre("18 A: The setting A cannot be changed: it is read-only because A is Locked."));
}

/// Each evaluation without the own change looks at the whole registry.
TEST(NewValues, OfManyThatReadThemselvesTheFirst64AreJudgedWithTheOthersOfTheCall)
{
    std::string attributes = Attribute("Lock");
    std::string dependencies;
    SettingStringMap values = {{"Lock", "On"}};
    for (int number = 100; number < 166; ++number)
    {
        const std::string name = "A" + std::to_string(number);
        attributes += "," + Attribute(name);
        dependencies += (dependencies.empty() ? "" : ",") +
                        Dependency(Term(name, "EQU", "\"x\""), name, "ReadOnly", "true") + "," +
                        Dependency(Term("Lock", "EQU", "\"On\""), name, "GrayOut", "true");
        values[name] = "x";
    }
    RedfishConfigSettingManager manager(Registry(attributes, dependencies), {{"Lock", "Off"}}, false, Config_Options());
    const Outcome outcome = ChangeAll(manager, values);
    EXPECT_EQ(outcome.Errors.size(), 64U);
    EXPECT_THAT(outcome.Contexts, ElementsAre(Pair("A164", R"("x")"), Pair("A165", R"("x")"), Pair("Lock", R"("On")")));
}

TEST(NewValues, MenuThatReadsItsOwnSettingIsSeenWithoutIt)
{
    const std::string registry =
        Registry(Attribute("Enable", R"(,"MenuPath":"./M/N")") + "," + Attribute("Other", R"(,"MenuPath":"./M")"),
                 Dependency(Term("Enable", "EQU", "\"No\""), "M", "GrayOut", "true"),
                 Menu("M", "./M", "M") + "," + Menu("N", "./M/N", "N"));
    RedfishConfigSettingManager manager(registry, {{"Enable", "Yes"}}, false, Config_Options());
    EXPECT_THAT(ChangeAll(manager, {{"Enable", "No"}, {"Other", "x"}}).Errors,
                ElementsAre("18 Other: The setting Other cannot be changed: it is grayed out because Enable is No."));
}

TEST(NewValues, SettingsUniqueToASystemStayWithIt)
{
    const CapturingLogSink sink;
    RedfishConfigSettingManager manager(Machine, false, Config_Options());
    EXPECT_THAT(ChangeAll(manager, {{"Order", "x"}, {"Serial", "1"}}, FilterRestoreSameSystem).Contexts,
                ElementsAre(Pair("Order", R"("x")"), Pair("Serial", R"("1")")));
    EXPECT_THAT(sink.Records(), IsEmpty());
    const Outcome other = ChangeAll(manager, {{"Order", "x"}, {"Serial", "1"}}, FilterRestoreOtherSystem);
    EXPECT_EQ(other.Code, 0);
    EXPECT_THAT(other.Contexts, ElementsAre(Pair("Order", R"("x")")));
    EXPECT_THAT(other.Errors, IsEmpty());
    ASSERT_EQ(sink.Records().size(), 1U);
    EXPECT_EQ(sink.Records().front().Text, "Setting Serial is left out, since it is unique to its system.");
    EXPECT_EQ(sink.Records().front().Level, 4U);
    EXPECT_EQ(ChangeAll(manager, {{"Fixed", "x"}, {"Serial", "1"}}, FilterRestoreOtherSystem).Code, 18)
        << "the only one wanted";
}

TEST(NewValues, DefaultsLeaveOutWhatCannotBeWrittenNow)
{
    for (const filterAction action : {FilterDefaultOne, FilterDefaultAll})
    {
        const CapturingLogSink sink;
        RedfishConfigSettingManager manager(Machine, false, Config_Options());
        const Outcome outcome =
            ChangeAll(manager, {{"Count", "5"}, {"Fixed", "f"}, {"Order", "x"}, {"Serial", "s"}}, action);
        EXPECT_EQ(outcome.Code, 0);
        EXPECT_THAT(outcome.Contexts, ElementsAre(Pair("Count", "5"), Pair("Serial", R"("s")")));
        EXPECT_THAT(outcome.Errors, IsEmpty());
        std::vector<std::string> lines;
        for (const LogRecord& record : sink.Records())
        {
            EXPECT_EQ(record.Level, 4U);
            lines.push_back(record.Text);
        }
        EXPECT_THAT(lines, ElementsAre("Setting Order is left out, since it has no default value.",
                                       "Setting Fixed is left out, since it is read-only."));
    }
}

TEST(NewValues, DefaultThatBreaksItsOwnRulesIsRefused)
{
    RedfishConfigSettingManager manager(Machine, false, Config_Options());
    const Outcome outcome = ChangeAll(manager, {{"Bad", ""}, {"Count", "5"}}, FilterDefaultAll);
    EXPECT_EQ(outcome.Code, 7);
    EXPECT_THAT(outcome.Contexts, ElementsAre(Pair("Count", "5")));
    EXPECT_THAT(
        outcome.Errors,
        ElementsAre("10 Bad: The new value is invalid: the setting Bad takes a text of at least 3 characters."));
}

TEST(NewValues, DefaultTakenForHexadecimalOnTheWayIsSetRight)
{
    Config_Options options;
    options.HexValueMode = true;
    RedfishConfigSettingManager manager(Registry(Typed("Count", "Integer", R"(,"DefaultValue":10)")),
                                        {{"Count", std::int64_t{1}}}, false, options);
    EXPECT_THAT(ChangeAll(manager, {{"Count", "16"}}, FilterDefaultAll).Contexts, ElementsAre(Pair("Count", "10")));
    EXPECT_THAT(ChangeAll(manager, {{"Count", "10"}}, FilterDefaultAll).Contexts, ElementsAre(Pair("Count", "10")));
    EXPECT_THAT(ChangeAll(manager, {{"Count", "17"}}, FilterDefaultAll).Contexts, ElementsAre(Pair("Count", "17")))
        << "another number than the default";
    EXPECT_THAT(ChangeAll(manager, {{"Count", "16"}}, FilterChange).Contexts, ElementsAre(Pair("Count", "16")));
}

TEST(ErrorList, IsLookedAtOrTaken)
{
    RedfishConfigSettingManager manager(Machine, false, Config_Options());
    std::string context;
    ASSERT_EQ(manager.PreparePatchContext("Nothing", "x", context, FilterChange), 20);
    EXPECT_EQ(manager.GetError().size(), 1U);
    EXPECT_EQ(manager.GetError().size(), 1U);
    std::vector<RedfishConfigResult> taken = manager.TakeErrors();
    ASSERT_EQ(taken.size(), 1U);
    EXPECT_EQ(taken.front().ErrorSetting(), "Nothing");
    EXPECT_THAT(manager.GetError(), IsEmpty());
    EXPECT_THAT(manager.TakeErrors(), IsEmpty());
}

TEST(ErrorList, StartsEmptyAtEachChange)
{
    RedfishConfigSettingManager manager(Machine, false, Config_Options());
    std::string context;
    SettingStringMap contexts;
    ASSERT_EQ(manager.PreparePatchContext("Nothing", "x", context, FilterChange), 20);
    ASSERT_EQ(manager.PreparePatchContext("Order", "x", context, FilterChange), 0);
    EXPECT_THAT(manager.GetError(), IsEmpty());
    ASSERT_EQ(manager.PreparePatchContext("Nothing", "x", context, FilterChange), 20);
    ASSERT_EQ(manager.PreparePatchContext({{"Order", "x"}}, contexts, FilterChange), 0);
    EXPECT_THAT(manager.GetError(), IsEmpty());
}

/// Quadratic work would take hours here.
TEST(NewValues, HundredThousandAreJudgedInOneCall)
{
    constexpr int count = AHundredThousand;
    std::string attributes;
    std::string dependencies;
    SettingStringMap values;
    SettingValueMap current;
    for (int index = 0; index < count; ++index)
    {
        const std::string name = "A" + std::to_string(index);
        attributes += (index == 0 ? "" : ",") + Attribute(name, R"(,"ValueExpression":"^[a-z]+$")");
        values[name] = index % 2 == 0 ? "good" : "BAD";
        current[name] = std::string("old");
        if (index % 20 == 0)
        {
            // Each reads itself, so each is seen without its own change.
            dependencies +=
                (index == 0 ? "" : ",") + Dependency(Term(name, "EQU", "\"good\""), name, "ReadOnly", "true");
        }
    }
    RedfishConfigSettingManager manager(Registry(attributes, dependencies), current, false, Config_Options());
    SettingStringMap contexts;
    EXPECT_EQ(manager.PreparePatchContext(values, contexts, FilterChange), 7);
    EXPECT_EQ(contexts.size(), static_cast<std::size_t>(count / 2));
    EXPECT_EQ(manager.TakeErrors().size(), static_cast<std::size_t>(count / 2));
}
