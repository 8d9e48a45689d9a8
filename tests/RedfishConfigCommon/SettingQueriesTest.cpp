#include "RedfishConfigSettingManager.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "RegistryTexts.h"
#include "ValidValuesSplit.h"

using namespace Tavrine;
using namespace registrytext;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using validvalues::Item;

namespace
{

using QueryOne = RedfishConfigResult (RedfishConfigSettingManager::*)(const std::string, std::string&);
using QueryAll = RedfishConfigResult (RedfishConfigSettingManager::*)(SettingStringMap&);

struct QueryPair
{
    QueryOne One;
    QueryAll All;
};

const QueryPair Defaults = {&RedfishConfigSettingManager::QuerySettingDefaultValue,
                            &RedfishConfigSettingManager::QueryGroupSettingDefaultValues};
const QueryPair ValidValues = {&RedfishConfigSettingManager::QuerySettingValidValues,
                               &RedfishConfigSettingManager::QueryGroupSettingValidValues};
const QueryPair Descriptions = {&RedfishConfigSettingManager::QuerySettingDescription,
                                &RedfishConfigSettingManager::QueryGroupSettingDescriptions};

/// "CODE MESSAGE" of a failure, else the text.
std::string Ask(RedfishConfigSettingManager& manager, const QueryPair& query, const std::string& name)
{
    std::string text = "untouched";
    RedfishConfigResult result = (manager.*query.One)(name, text);
    if (result.ErrorCode() == 0)
    {
        return text;
    }
    EXPECT_EQ(text, "untouched");
    return std::to_string(result.ErrorCode()) + " " + result.ErrorMsg();
}

std::string AskProbe(const QueryPair& query, const std::string& attribute, const Config_Options& options = {},
                     const SettingValueMap& current = {})
{
    RedfishConfigSettingManager manager(Registry(attribute), current, false, options);
    return Ask(manager, query, "Probe");
}

} // namespace

TEST(Queries, UnknownSettingAndUnreadableRegistryAreTold)
{
    RedfishConfigSettingManager manager(Registry(Attribute("BootMode")), false, Config_Options());
    RedfishConfigSettingManager empty(Registry(""), false, Config_Options());
    RedfishConfigSettingManager broken("[]", false, Config_Options());
    for (const QueryPair& query : {Defaults, ValidValues, Descriptions})
    {
        EXPECT_EQ(Ask(manager, query, "bootmode"), "20 Unable to find the setting bootmode. Did you mean BootMode?");
        EXPECT_EQ(Ask(empty, query, "A"), "20 Unable to find the setting A");
        EXPECT_THAT(Ask(broken, query, "A"), testing::StartsWith("27 The attribute registry cannot be read: "));
        SettingStringMap values = {{"Former", "gone"}};
        EXPECT_EQ((empty.*query.All)(values).ErrorCode(), 0);
        EXPECT_THAT(values, IsEmpty());
        EXPECT_EQ((broken.*query.All)(values).ErrorCode(), 27);
    }
}

TEST(Defaults, AreTheExactTextOfTheRegistry)
{
    const struct
    {
        const char* Default;
        const char* Text;
    } rows[] = {
        {R"("Enabled")", "Enabled"},
        {R"("")", ""},
        {"5", "5"},
        {"-9223372036854775808", "-9223372036854775808"},
        {"18446744073709551615", "18446744073709551615"},
        {"true", "true"},
        {"false", "false"},
        {R"("null")", "null"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(AskProbe(Defaults, Typed("Probe", "String", std::string(",\"DefaultValue\":") + row.Default)),
                  row.Text);
    }
    for (const char* none : {"", R"(,"DefaultValue":null)", R"(,"DefaultValue":[1])", R"(,"DefaultValue":0.5)"})
    {
        EXPECT_EQ(AskProbe(Defaults, Attribute("Probe", none)), "21 The setting Probe has no default value.") << none;
    }
}

TEST(Defaults, AreDecimalInHexadecimalMode)
{
    Config_Options options;
    options.HexValueMode = true;
    EXPECT_EQ(AskProbe(Defaults, Typed("Probe", "Integer", R"(,"DefaultValue":255)"), options), "255");
}

TEST(Defaults, ForcedByADependencyApply)
{
    RedfishConfigSettingManager manager(
        Registry(Attribute("Mode") + "," + Typed("Count", "Integer", R"(,"DefaultValue":1)"),
                 Dependency(Term("Mode", "EQU", "\"Big\""), "Count", "DefaultValue", "18446744073709551615") + "," +
                     Dependency(Term("Mode", "EQU", "\"None\""), "Count", "DefaultValue", "null")),
        {{"Mode", "Big"}}, false, Config_Options());
    EXPECT_EQ(Ask(manager, Defaults, "Count"), "18446744073709551615");
    manager.UpdateSettingValue({{"Mode", "None"}});
    EXPECT_EQ(Ask(manager, Defaults, "Count"), "21 The setting Count has no default value.");
    manager.UpdateSettingValue({{"Mode", "Other"}});
    EXPECT_EQ(Ask(manager, Defaults, "Count"), "1");
}

TEST(Defaults, OfAllNameThoseThatHaveNone)
{
    RedfishConfigSettingManager manager(
        Registry(Attribute("B") + "," + Attribute("A", R"(,"DefaultValue":"a")") + "," + Attribute("C")), false,
        Config_Options());
    SettingStringMap values = {{"Former", "gone"}};
    for (int repeat = 0; repeat < 2; ++repeat)
    {
        RedfishConfigResult result = manager.QueryGroupSettingDefaultValues(values);
        EXPECT_EQ(result.ErrorCode(), 7);
        EXPECT_EQ(result.ErrorMsg(), "2 of 3 settings are missing.");
        EXPECT_THAT(values, ElementsAre(Pair("A", "a")));
        std::vector<RedfishConfigResult> errors = manager.GetError();
        ASSERT_EQ(errors.size(), 2U);
        EXPECT_EQ(errors[0].ErrorCode(), 21);
        EXPECT_EQ(errors[0].ErrorSetting(), "B");
        EXPECT_EQ(errors[1].ErrorMsg(), "The setting C has no default value.");
    }
}

TEST(ValidValues, OfEveryTypeReadAsTold)
{
    Config_Options hex;
    hex.HexValueMode = true;
    const struct
    {
        const char* Type;
        const char* More;
        const char* Text;
        const char* HexText;
    } rows[] = {
        {"Boolean", "", "true; false", "true; false"},
        {"Integer", R"(,"LowerBound":0,"UpperBound":64)", "0 to 64", "0 to 64 (0x0 to 0x40)"},
        {"Integer", R"(,"LowerBound":-8,"UpperBound":18446744073709551615,"ScalarIncrement":4)",
         "-8 to 18446744073709551615, step 4",
         "-8 to 18446744073709551615, step 4 (-0x8 to 0xFFFFFFFFFFFFFFFF, step 0x4)"},
        {"Integer", R"(,"LowerBound":1,"ScalarIncrement":1)", "1 to any", "1 to any (0x1 to any)"},
        {"Integer", R"(,"UpperBound":9,"ScalarIncrement":0)", "any to 9", "any to 9 (any to 0x9)"},
        {"Integer", "", "any to any", "any to any"},
        {"String", "", "0 to any characters", "0 to any characters"},
        {"String", R"(,"MinLength":1,"MaxLength":14)", "1 to 14 characters", "1 to 14 characters"},
        {"Password", R"(,"MaxLength":14,"ValueExpression":"^a, pattern; b$")",
         "0 to 14 characters, pattern ^a, pattern; b$", "0 to 14 characters, pattern ^a, pattern; b$"},
        {"String", R"(,"ValueExpression":"")", "0 to any characters", "0 to any characters"},
        {"Enumeration",
         R"(,"Value":[{"ValueName":"On"},{"ValueName":"Off","ValueDisplayName":"Off"},)"
         R"({"ValueName":"CD/DVD","ValueDisplayName":"CD or DVD"}])",
         "On; Off; CD/DVD [CD or DVD]", "On; Off; CD/DVD [CD or DVD]"},
        {"Enumeration",
         R"(,"Value":[{"ValueName":"a; b","ValueDisplayName":"[x] \"y\""},{"ValueName":"","ValueDisplayName":" z"}])",
         R"("a; b" ["[x] \"y\""]; "" [" z"])", R"("a; b" ["[x] \"y\""]; "" [" z"])"},
        {"Enumeration", "", "22 The registry gives no value names for the setting Probe.",
         "22 The registry gives no value names for the setting Probe."},
        {"Odd", "", "0 to any characters", "0 to any characters"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(AskProbe(ValidValues, Typed("Probe", row.Type, row.More)), row.Text);
        EXPECT_EQ(AskProbe(ValidValues, Typed("Probe", row.Type, row.More), hex), row.HexText);
    }
    EXPECT_EQ(AskProbe(ValidValues, Typed("Probe", "Odd"), {}, {{"Probe", true}}), "true; false");
    EXPECT_EQ(AskProbe(ValidValues, Typed("Probe", "Odd"), {}, {{"Probe", std::int64_t{1}}}), "any to any");
}

TEST(ValidValues, BoundsForcedByADependencyApply)
{
    RedfishConfigSettingManager manager(
        Registry(Attribute("Mode") + "," + Typed("Count", "Integer", R"(,"LowerBound":0,"UpperBound":64)"),
                 Dependency(Term("Mode", "EQU", "\"Small\""), "Count", "UpperBound", "4") + "," +
                     Dependency(Term("Mode", "EQU", "\"Small\""), "Count", "ScalarIncrement", "2")),
        {{"Mode", "Small"}}, false, Config_Options());
    EXPECT_EQ(Ask(manager, ValidValues, "Count"), "0 to 4, step 2");
    manager.UpdateSettingValue({{"Mode", "Large"}});
    EXPECT_EQ(Ask(manager, ValidValues, "Count"), "0 to 64");
}

TEST(ValidValues, OfAllNameThoseThatFail)
{
    RedfishConfigSettingManager manager(Registry(Typed("B", "Boolean") + "," + Typed("E", "Enumeration")), false,
                                        Config_Options());
    SettingStringMap values;
    EXPECT_EQ(manager.QueryGroupSettingValidValues(values).ErrorCode(), 7);
    EXPECT_THAT(values, ElementsAre(Pair("B", "true; false")));
    ASSERT_EQ(manager.GetError().size(), 1U);
    EXPECT_EQ(manager.GetError()[0].ErrorSetting(), "E");
}

RC_GTEST_PROP(ValidValuesProperty, OfEnumerationsSplitIntoTheirNames, ())
{
    // Letters that the form treats in a special way come often.
    const auto word =
        rc::gen::container<std::string>(rc::gen::element('a', 'B', ' ', ';', '[', ']', '"', '\\', '\n', '\x01', ','));
    const auto wanted = *rc::gen::nonEmpty(
        rc::gen::container<std::vector<std::pair<std::string, std::string>>>(rc::gen::pair(word, word)));
    boost::json::array list;
    std::vector<Item> items;
    for (const auto& [name, display] : wanted)
    {
        const bool isNew =
            std::none_of(items.begin(), items.end(), [&name = name](const Item& item) { return item.Name == name; });
        list.push_back({{"ValueName", name}, {"ValueDisplayName", display}});
        if (isNew)
        {
            items.push_back({name, display});
        }
    }
    RedfishConfigSettingManager manager(
        Registry(Typed("Probe", "Enumeration", ",\"Value\":" + boost::json::serialize(list))), false, Config_Options());
    std::string text;
    RC_ASSERT(manager.QuerySettingValidValues("Probe", text) == 0);
    const std::optional<std::vector<Item>> split = validvalues::SplitItems(text);
    RC_ASSERT(split.has_value());
    RC_ASSERT(*split == items);
}

RC_GTEST_PROP(ValidValuesProperty, OfIntegersSplitIntoBoundsAndStep, (std::int64_t lower, std::uint64_t upper))
{
    const bool hasLower = *rc::gen::arbitrary<bool>();
    const bool hasUpper = *rc::gen::arbitrary<bool>();
    const auto step = *rc::gen::inRange<std::uint64_t>(0, 50);
    Config_Options options;
    options.HexValueMode = *rc::gen::arbitrary<bool>();
    const std::string more = (hasLower ? ",\"LowerBound\":" + std::to_string(lower) : "") +
                             (hasUpper ? ",\"UpperBound\":" + std::to_string(upper) : "") +
                             ",\"ScalarIncrement\":" + std::to_string(step);
    const validvalues::Range range =
        validvalues::SplitRange(AskProbe(ValidValues, Typed("Probe", "Integer", more), options));
    RC_ASSERT(range.Lower == (hasLower ? std::to_string(lower) : "any"));
    RC_ASSERT(range.Upper == (hasUpper ? std::to_string(upper) : "any"));
    RC_ASSERT(range.Step == (step > 1 ? std::to_string(step) : ""));
}

TEST(Descriptions, AreDisplayNameHelpAndWarning)
{
    const struct
    {
        const char* More;
        const char* Text;
    } rows[] = {
        {"", "Probe"},
        {R"(,"DisplayName":"The probe")", "The probe"},
        {R"(,"DisplayName":"")", "Probe"},
        {R"(,"DisplayName":"The probe","HelpText":"It probes.\nOften.")", "The probe\nIt probes.\nOften."},
        {R"(,"DisplayName":"The probe","WarningText":"Careful.")", "The probe\nWarning: Careful."},
        {R"(,"DisplayName":"The probe","HelpText":"It probes.","WarningText":"Careful.")",
         "The probe\nIt probes.\nWarning: Careful."},
        {R"(,"HelpText":"","WarningText":null)", "Probe"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(AskProbe(Descriptions, Attribute("Probe", row.More)), row.Text);
    }
}

TEST(Descriptions, ForcedTextsApply)
{
    RedfishConfigSettingManager manager(
        Registry(Attribute("Mode") + "," + Attribute("Probe", R"(,"HelpText":"Old.")"),
                 Dependency(Term("Mode", "EQU", "\"x\""), "Probe", "HelpText", "\"New.\"")),
        {{"Mode", "x"}}, false, Config_Options());
    EXPECT_EQ(Ask(manager, Descriptions, "Probe"), "Probe\nNew.");
    SettingStringMap all;
    EXPECT_EQ(manager.QueryGroupSettingDescriptions(all), 0);
    EXPECT_THAT(all, ElementsAre(Pair("Mode", "Mode"), Pair("Probe", "Probe\nNew.")));
    EXPECT_THAT(manager.GetError(), IsEmpty());
}

TEST(SavedValues, AreTheCurrentValuesThatCanEverBeWritten)
{
    const std::string attributes =
        Attribute("Text") + "," + Typed("Count", "Integer") + "," + Typed("Flag", "Boolean") + "," +
        Attribute("Registered", R"(,"CurrentValue":"r")") + "," + Attribute("Null", R"(,"CurrentValue":"r")") + "," +
        Attribute("Unset") + "," + Typed("Secret", "Password") + "," + Attribute("Ro", R"(,"ReadOnly":true)") + "," +
        Attribute("Wo", R"(,"WriteOnly":true)") + "," + Attribute("Im", R"(,"Immutable":true)") + "," +
        Attribute("Hidden", R"(,"Hidden":true)") + "," + Attribute("Gray", R"(,"GrayOut":true)") + "," +
        Attribute("InGrayMenu", R"(,"MenuPath":"./M")") + "," + Attribute("LockedNow") + "," +
        Attribute("LiftedAtTimes", R"(,"ReadOnly":true)") + "," + Attribute("LockedTwice", R"(,"ReadOnly":true)") +
        "," + Attribute("Unique", R"(,"IsSystemUniqueProperty":true)");
    const std::string dependencies = Dependency(Term("Text", "EQU", "\"t\""), "LockedNow", "ReadOnly", "true") + "," +
                                     Dependency(Term("Text", "EQU", "\"u\""), "LiftedAtTimes", "ReadOnly", "false") +
                                     "," + Dependency(Term("Text", "EQU", "\"u\""), "LockedTwice", "ReadOnly", "true");
    SettingValueMap current = {{"text", "t"}, {"Count", std::int64_t{-5}}, {"Flag", true}, {"Null", std::nullopt}};
    for (const char* name : {"Secret", "Ro", "Wo", "Im", "Hidden", "Gray", "InGrayMenu", "LockedNow", "LiftedAtTimes",
                             "LockedTwice", "Unique", "NotInTheRegistry"})
    {
        current[name] = "x";
    }
    RedfishConfigSettingManager manager(Registry(attributes, dependencies, Menu("M", "./M", "M", R"(,"GrayOut":true)")),
                                        current, false, Config_Options());
    SettingStringMap saved = {{"Former", "gone"}};
    EXPECT_EQ(manager.FetchSaveSettingValues(saved, FilterSave), 0);
    EXPECT_THAT(saved,
                ElementsAre(Pair("Count", "-5"), Pair("Flag", "true"), Pair("LiftedAtTimes", "x"),
                            Pair("LockedNow", "x"), Pair("Registered", "r"), Pair("Text", "t"), Pair("Unique", "x")));
}

TEST(SavedValues, AreKeptWhereEachLockIsLiftedInItsOwnPlace)
{
    const std::string attributes = Attribute("A") + "," + Attribute("Own", R"(,"ReadOnly":true,"MenuPath":"./M")") +
                                   "," + Attribute("OfParent", R"(,"MenuPath":"./Gray/Child")") + "," +
                                   Attribute("OfMenu", R"(,"MenuPath":"./Lifted")");
    const std::string menus = Menu("M", "./M", "M") + "," + Menu("Gray", "./Gray", "Gray", R"(,"GrayOut":true)") + "," +
                              Menu("Child", "./Gray/Child", "Child") + "," +
                              Menu("Lifted", "./Lifted", "Lifted", R"(,"GrayOut":true)");
    const std::string term = Term("A", "EQU", "\"x\"");
    const std::string dependencies = Dependency(term, "M", "ReadOnly", "false") + "," +
                                     Dependency(term, "Child", "GrayOut", "false") + "," +
                                     Dependency(term, "Lifted", "GrayOut", "false");
    RedfishConfigSettingManager manager(Registry(attributes, dependencies, menus),
                                        {{"A", "x"}, {"Own", "x"}, {"OfParent", "x"}, {"OfMenu", "x"}}, false,
                                        Config_Options());
    SettingStringMap saved;
    EXPECT_EQ(manager.FetchSaveSettingValues(saved, FilterSave), 0);
    EXPECT_THAT(saved, ElementsAre(Pair("A", "x"), Pair("OfMenu", "x")));
    SettingStringMap contexts;
    const SettingStringMap all = {{"OfMenu", "y"}, {"OfParent", "y"}, {"Own", "y"}};
    EXPECT_EQ(manager.PreparePatchContext(all, contexts, FilterRestoreSameSystem), 7);
    EXPECT_THAT(contexts, ElementsAre(Pair("OfMenu", "\"y\"")));
}

TEST(SavedValues, NeedARegistryAndTheActionOfASave)
{
    RedfishConfigSettingManager broken("", false, Config_Options());
    RedfishConfigSettingManager manager(Registry(Attribute("A", R"(,"CurrentValue":"a")")), false, Config_Options());
    SettingStringMap saved = {{"Former", "gone"}};
    EXPECT_EQ(broken.FetchSaveSettingValues(saved, FilterSave), 27);
    EXPECT_THAT(saved, IsEmpty());
    RedfishConfigResult result = manager.FetchSaveSettingValues(saved, FilterChange);
    EXPECT_EQ(result.ErrorCode(), 16);
    EXPECT_EQ(result.ErrorMsg(), "Action 8 lists no settings.");
}
