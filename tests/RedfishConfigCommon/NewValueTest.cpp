#include "RedfishConfigSettingManager.h"

#include <limits>
#include <string>

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "Logging.h"
#include "RegistryTexts.h"

using namespace Tavrine;
using namespace registrytext;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace
{

struct Answer
{
    int Code;
    std::string Text; ///< the context, or the refusal's message
};

void PrintTo(const Answer& answer, std::ostream* stream) { *stream << answer.Code << " " << answer.Text; }
bool operator==(const Answer& left, const Answer& right) { return left.Code == right.Code && left.Text == right.Text; }

Answer Change(RedfishConfigSettingManager& manager, const std::string& name, const std::string& value,
              filterAction action = FilterChange)
{
    std::string context = "untouched";
    RedfishConfigResult result = manager.PreparePatchContext(name, value, context, action);
    if (result.ErrorCode() == 0)
    {
        EXPECT_THAT(manager.GetError(), IsEmpty());
        EXPECT_EQ(result.ErrorMsg(), "");
        return {0, context};
    }
    EXPECT_EQ(context, "untouched");
    if (result.ErrorCode() == 16 || result.ErrorCode() == 27)
    {
        EXPECT_THAT(manager.GetError(), IsEmpty());
        return {result.ErrorCode(), result.ErrorMsg()};
    }
    EXPECT_EQ(result.ErrorSetting(), name);
    EXPECT_EQ(manager.GetError().size(), 1U);
    EXPECT_EQ(manager.GetError().at(0).ErrorMsg(), result.ErrorMsg());
    return {result.ErrorCode(), result.ErrorMsg()};
}

Config_Options Hex()
{
    Config_Options options;
    options.HexValueMode = true;
    return options;
}

/// Change of the one setting "Probe".
Answer ChangeProbe(const std::string& type, const std::string& more, const std::string& value,
                   const Config_Options& options = Config_Options(), const SettingValueMap& current = {})
{
    RedfishConfigSettingManager manager(Registry(Typed("Probe", type, more)), current, false, options);
    return Change(manager, "Probe", value);
}

Answer Takes(const std::string& what) { return {10, "The new value is invalid: the setting Probe takes " + what}; }

const std::string Ports = R"(,"Value":[{"ValueName":"Com1","ValueDisplayName":"COM 1; IRQ 4"},)"
                          R"({"ValueName":"Com2","ValueDisplayName":"COM 2"},{"ValueName":"Off"}])";

} // namespace

TEST(NewEnumerationValue, IsAValueNameExactly)
{
    EXPECT_EQ(ChangeProbe("Enumeration", Ports, "Com1"), (Answer{0, R"("Com1")"}));
    EXPECT_EQ(ChangeProbe("Enumeration", Ports, "Off"), (Answer{0, R"("Off")"}));
    for (const char* value : {"", "Com3", "Com1 ", " Com1", "Com", "COM 1"})
    {
        EXPECT_EQ(ChangeProbe("Enumeration", Ports, value), Takes("one of Com1, Com2, Off.")) << value;
    }
}

TEST(NewEnumerationValue, NearMissIsToldTheRightSpelling)
{
    for (const char* value : {"com1", "COM1", "COM 1; IRQ 4", "com 1; irq 4"})
    {
        EXPECT_EQ(ChangeProbe("Enumeration", Ports, value), Takes("one of Com1, Com2, Off. Did you mean Com1?"))
            << value;
    }
    EXPECT_EQ(ChangeProbe("Enumeration", Ports, "off"), Takes("one of Com1, Com2, Off. Did you mean Off?"));
}

TEST(NewEnumerationValue, AmbiguousNearMissIsNotGuessed)
{
    const std::string twins = R"(,"Value":[{"ValueName":"A1","ValueDisplayName":"Same"},)"
                              R"({"ValueName":"A2","ValueDisplayName":"Same"},{"ValueName":"x"},{"ValueName":"X"}])";
    EXPECT_EQ(ChangeProbe("Enumeration", twins, "Same"), Takes("one of A1, A2, x, X."));
    EXPECT_EQ(ChangeProbe("Enumeration", twins, "x"), (Answer{0, R"("x")"}));
    EXPECT_EQ(ChangeProbe("Enumeration", twins, "X"), (Answer{0, R"("X")"}));
}

TEST(NewEnumerationValue, LongListIsCutAtTen)
{
    for (const int count : {10, 11, 13})
    {
        std::string values;
        std::string listed;
        for (int index = 0; index < count; ++index)
        {
            const std::string name = "V" + std::to_string(index);
            values += (index == 0 ? "" : ",") + (R"({"ValueName":")" + name + "\"}");
            listed += index < 10 ? (index == 0 ? "" : ", ") + name : "";
        }
        const std::string more = count == 10 ? "." : " and " + std::to_string(count - 10) + " more.";
        EXPECT_EQ(ChangeProbe("Enumeration", R"(,"Value":[)" + values + "]", "no"), Takes("one of " + listed + more));
    }
}

TEST(NewEnumerationValue, ValueNamesThatHoldTheSettingsNameAreNotQuoted)
{
    const std::string own = R"(,"Value":[{"ValueName":"ProbeAll"},{"ValueName":"None"}])";
    EXPECT_EQ(ChangeProbe("Enumeration", own, "probeall"), Takes("one of None and 1 more."));
    EXPECT_EQ(ChangeProbe("Enumeration", own, "none"), Takes("one of None and 1 more. Did you mean None?"));
    EXPECT_EQ(ChangeProbe("Enumeration", own, "ProbeAll"), (Answer{0, R"("ProbeAll")"}));
    EXPECT_EQ(ChangeProbe("Enumeration", R"(,"Value":[{"ValueName":"Probe"}])", "x"),
              Takes("one of its 1 value names."));
}

TEST(NewEnumerationValue, WithoutValueNamesIsLeftToTheBmc)
{
    const CapturingLogSink sink;
    EXPECT_EQ(ChangeProbe("Enumeration", "", "Secret"), (Answer{0, R"("Secret")"}));
    ASSERT_EQ(sink.Records().size(), 1U);
    EXPECT_EQ(sink.Records().front().Text, "Setting Probe has no value names, so the BMC judges its value.");
    EXPECT_EQ(sink.Records().front().Level, 4U);
}

TEST(NewBooleanValue, IsTrueOrFalseInAnyCase)
{
    for (const char* value : {"true", "True", "TRUE", "tRuE"})
    {
        EXPECT_EQ(ChangeProbe("Boolean", "", value), (Answer{0, "true"})) << value;
    }
    EXPECT_EQ(ChangeProbe("Boolean", "", "False"), (Answer{0, "false"}));
    for (const char* value : {"", "1", "0", "yes", "on", "Enabled", "true ", " true", "truee", "null"})
    {
        EXPECT_EQ(ChangeProbe("Boolean", "", value), Takes("true or false.")) << value;
    }
}

TEST(NewIntegerValue, GrammarIsAnOptionalSignAndDigits)
{
    const struct
    {
        const char* Value;
        const char* Context;
    } taken[] = {
        {"0", "0"},
        {"-0", "0"},
        {"+5", "5"},
        {"007", "7"},
        {"-12", "-12"},
        {"9223372036854775807", "9223372036854775807"},
        {"9223372036854775808", "9223372036854775808"},
        {"18446744073709551615", "18446744073709551615"},
        {"-9223372036854775808", "-9223372036854775808"},
    };
    for (const auto& row : taken)
    {
        EXPECT_EQ(ChangeProbe("Integer", "", row.Value), (Answer{0, row.Context})) << row.Value;
    }
    for (const std::string value :
         {"", "+", "-", "+-1", "-+1", "++1", "--1", " 1", "1 ", "1\n", "0x10", "1.0", "1e3", "1,000", "five",
          "\xD9\xA1", "18446744073709551616", "-9223372036854775809", "99999999999999999999999"})
    {
        EXPECT_EQ(ChangeProbe("Integer", "", value),
                  Takes("a whole number from -9223372036854775808 to 18446744073709551615."))
            << value;
    }
    EXPECT_EQ(ChangeProbe("Integer", "", std::string("1\0", 2)).Code, 10);
}

TEST(NewIntegerValue, KeepsBoundsAndSteps)
{
    const struct
    {
        const char* More;
        std::vector<const char*> Taken;
        std::vector<const char*> Refused;
        const char* Accepted;
    } rows[] = {
        {R"(,"LowerBound":0,"UpperBound":64)", {"0", "1", "64"}, {"-1", "65"}, "a whole number from 0 to 64."},
        {R"(,"LowerBound":-8,"UpperBound":-2)", {"-8", "-2"}, {"-9", "-1", "0"}, "a whole number from -8 to -2."},
        {R"(,"LowerBound":5)", {"5", "18446744073709551615"}, {"4"}, "a whole number of at least 5."},
        {R"(,"UpperBound":5)", {"5", "-9223372036854775808"}, {"6"}, "a whole number of at most 5."},
        {R"(,"LowerBound":7,"UpperBound":7)", {"7"}, {"6", "8"}, "a whole number from 7 to 7."},
        {R"(,"LowerBound":1,"UpperBound":18446744073709551615)",
         {"1", "18446744073709551615", "9223372036854775808"},
         {"0", "-1"},
         "a whole number from 1 to 18446744073709551615."},
        {R"(,"LowerBound":3,"UpperBound":20,"ScalarIncrement":4)",
         {"3", "7", "19"},
         {"4", "8", "20", "-1"},
         "a whole number from 3 to 20 in steps of 4 counted from 3."},
        {R"(,"ScalarIncrement":10)",
         {"0", "10", "-20", "18446744073709551610"},
         {"5", "-5", "18446744073709551615"},
         "a whole number from -9223372036854775808 to 18446744073709551615 in steps of 10 counted from 0."},
        {R"(,"LowerBound":-5,"ScalarIncrement":3)",
         {"-5", "-2", "1", "4"},
         {"-4", "0", "2"},
         "a whole number of at least -5 in steps of 3 counted from -5."},
        {R"(,"LowerBound":-9223372036854775808,"UpperBound":18446744073709551615,"ScalarIncrement":9223372036854775808)",
         {"-9223372036854775808", "0", "9223372036854775808"},
         {"1", "18446744073709551615"},
         "a whole number from -9223372036854775808 to 18446744073709551615 in steps of 9223372036854775808 counted "
         "from -9223372036854775808."},
        {R"(,"LowerBound":0,"UpperBound":9,"ScalarIncrement":0)", {"0", "5"}, {"10"}, "a whole number from 0 to 9."},
        {R"(,"LowerBound":0,"UpperBound":9,"ScalarIncrement":1)", {"0", "5"}, {"10"}, "a whole number from 0 to 9."},
        {R"(,"LowerBound":0,"UpperBound":9,"ScalarIncrement":-2)", {"0", "5"}, {"10"}, "a whole number from 0 to 9."},
        {R"(,"LowerBound":null,"UpperBound":9,"ScalarIncrement":null)", {"-4"}, {"10"}, "a whole number of at most 9."},
        {R"(,"LowerBound":9,"UpperBound":1)", {}, {"0", "5", "10"}, "a whole number from 9 to 1."},
    };
    for (const auto& row : rows)
    {
        for (const char* value : row.Taken)
        {
            EXPECT_EQ(ChangeProbe("Integer", row.More, value), (Answer{0, value})) << row.More;
        }
        for (const char* value : row.Refused)
        {
            EXPECT_EQ(ChangeProbe("Integer", row.More, value), Takes(row.Accepted)) << row.More << " " << value;
        }
    }
}

TEST(NewIntegerValue, HexadecimalModeTellsBothForms)
{
    const SettingValueMap known = {{"Probe", std::int64_t{4}}};
    const std::string bounds = R"(,"LowerBound":0,"UpperBound":64,"ScalarIncrement":4)";
    const std::string words =
        "a hexadecimal number from 0x0 to 0x40 in steps of 0x4 counted from 0x0 (in decimal from 0 "
        "to 64 in steps of 4 counted from 0).";
    EXPECT_EQ(ChangeProbe("Integer", bounds, "16", Hex(), known), (Answer{0, "16"})) << "decimal by then";
    for (const char* value : {"68", "zz", "", "0x10", "+4", "04", "12 "})
    {
        EXPECT_EQ(ChangeProbe("Integer", bounds, value, Hex(), known), Takes(words)) << value;
    }
    EXPECT_EQ(ChangeProbe("Integer", "", "zz", Hex(), known), Takes("a hexadecimal number."));
    EXPECT_EQ(ChangeProbe("Integer", R"(,"UpperBound":9)", "zz", Hex(), known),
              Takes("a hexadecimal number of at most 0x9 (in decimal of at most 9)."));
}

TEST(NewIntegerValue, HexadecimalTextOfASettingWithoutANumberIsReadHere)
{
    for (const SettingValueMap& current : {SettingValueMap(), SettingValueMap{{"Probe", std::nullopt}}})
    {
        EXPECT_EQ(ChangeProbe("Integer", "", "10", Hex(), current), (Answer{0, "16"}));
        EXPECT_EQ(ChangeProbe("Integer", "", "-0xFF", Hex(), current), (Answer{0, "-255"}));
        EXPECT_EQ(ChangeProbe("Integer", R"(,"UpperBound":9)", "10", Hex(), current),
                  Takes("a hexadecimal number of at most 0x9 (in decimal of at most 9)."));
        EXPECT_EQ(ChangeProbe("Integer", "", "xyz", Hex(), current), Takes("a hexadecimal number."));
    }
    EXPECT_EQ(ChangeProbe("String", "", "0x10", Hex()), (Answer{0, R"("0x10")"})) << "numbers alone are hexadecimal";
}

TEST(NewIntegerValue, HexadecimalTextOfAValueThatTheCallerDidNotHaveIsReadHere)
{
    const std::string registry = Registry(Typed("Here", "Integer") + "," + Typed("Held", "Integer"));
    const SettingValueMap all = {{"Held", std::int64_t{4}}, {"Here", std::int64_t{5}}};
    RedfishConfigSettingManager manager(registry, all, false, Hex());
    EXPECT_EQ(Change(manager, "Held", "10"), (Answer{0, "10"})) << "decimal by then";
    manager.UpdateSettingValue({{"here", std::int64_t{5}}});
    EXPECT_EQ(Change(manager, "Held", "10"), (Answer{0, "16"}));
    EXPECT_EQ(Change(manager, "Here", "10"), (Answer{0, "10"}));
    SettingStringMap contexts;
    EXPECT_EQ(manager.PreparePatchContext({{"Held", "0x10"}, {"Here", "10"}}, contexts, FilterRestoreSameSystem), 0);
    EXPECT_THAT(contexts, ElementsAre(std::pair("Held", "16"), std::pair("Here", "10")));
    manager.UpdateSettingValue(all);
    EXPECT_EQ(Change(manager, "Held", "10"), (Answer{0, "10"}));
}

TEST(NewTextValue, KeepsLengthsInCodePoints)
{
    const struct
    {
        const char* More;
        std::vector<std::string> Taken;
        std::vector<std::string> Refused;
        const char* Accepted;
    } rows[] = {
        {R"(,"MinLength":2,"MaxLength":4)",
         {"ab", "abcd", "\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC"},
         {"", "a", "\xE2\x82\xAC", "abcde"},
         "a text from 2 to 4 characters."},
        {R"(,"MinLength":0,"MaxLength":1)", {"", "a"}, {"ab"}, "a text of at most 1 character."},
        {R"(,"MinLength":1)", {"a"}, {""}, "a text of at least 1 character."},
        {R"(,"MinLength":8,"MaxLength":8)", {"12345678"}, {"1234567", "123456789"}, "a text of exactly 8 characters."},
        {R"(,"MaxLength":0)", {""}, {"a"}, "a text of at most 0 characters."},
        {R"(,"ValueExpression":"^[a-z]*$")",
         {"", "abc"},
         {"A", "a1", "a\n"},
         "a text that matches the pattern ^[a-z]*$."},
        {R"(,"MaxLength":3,"ValueExpression":"[0-9]")",
         {"a1b"},
         {"", "abc", "1234"},
         "a text of at most 3 characters that matches the pattern [0-9]."},
        {R"(,"ValueExpression":"^Probe$")",
         {"Probe"},
         {"x"},
         "a text that matches the pattern among its valid values."},
    };
    for (const char* type : {"String", "Password"})
    {
        for (const auto& row : rows)
        {
            for (const std::string& value : row.Taken)
            {
                EXPECT_EQ(ChangeProbe(type, row.More, value), (Answer{0, '"' + value + '"'})) << row.More;
            }
            for (const std::string& value : row.Refused)
            {
                EXPECT_EQ(ChangeProbe(type, row.More, value), Takes(row.Accepted)) << row.More << " " << value;
            }
        }
    }
}

TEST(NewTextValue, IsEscaped)
{
    EXPECT_EQ(ChangeProbe("String", "", "a\"b\\c\n\x01/"), (Answer{0, R"("a\"b\\c\n\u0001/")"}));
    EXPECT_EQ(ChangeProbe("String", "", std::string("\0", 1)), (Answer{0, R"("\u0000")"}));
    EXPECT_EQ(ChangeProbe("String", "", "{\"a\":1}"), (Answer{0, R"("{\"a\":1}")"}));
}

TEST(NewTextValue, ThatIsNoUtf8IsRefusedForEveryType)
{
    for (const char* type : {"String", "Password", "Enumeration", "Integer", "Boolean", "Odd"})
    {
        EXPECT_EQ(ChangeProbe(type, "", "a\xFFz"), Takes("text in UTF-8.")) << type;
    }
}

TEST(NewTextValue, ExpressionThatCannotBeJudgedIsLeftToTheBmcAndTold)
{
    const CapturingLogSink sink;
    EXPECT_EQ(ChangeProbe("Password", R"(,"ValueExpression":"(")", "Secret"), (Answer{0, R"("Secret")"}));
    const std::string slow = std::string(50'000, 'a') + "b";
    EXPECT_EQ(ChangeProbe("String", R"(,"ValueExpression":"(a+)+$")", slow), (Answer{0, '"' + slow + '"'}));
    ASSERT_EQ(sink.Records().size(), 2U);
    EXPECT_EQ(sink.Records()[0].Level, 4U);
    EXPECT_EQ(sink.Records()[0].Text,
              "Value expression of setting Probe is left to the BMC, since it cannot be compiled: "
              "missing closing parenthesis");
    EXPECT_EQ(
        sink.Records()[1].Text,
        "Value expression of setting Probe is left to the BMC, since the search was given up: match limit exceeded");
}

TEST(NewTextValue, LengthIsKeptWhereTheExpressionCannotBeJudged)
{
    EXPECT_EQ(ChangeProbe("String", R"(,"MaxLength":2,"ValueExpression":"(")", "abc").Code, 10);
}

TEST(NewPasswordValue, NeverStandsInAMessageOrInTheLog)
{
    const CapturingLogSink sink;
    for (const char* more : {R"(,"MaxLength":2)", R"(,"ReadOnly":true)", R"(,"ValueExpression":"^[0-9]+$")"})
    {
        const Answer refused = ChangeProbe("Password", more, "Hunter2");
        EXPECT_NE(refused.Code, 0) << more;
        EXPECT_THAT(refused.Text, Not(HasSubstr("unter"))) << more;
    }
    EXPECT_EQ(ChangeProbe("Password", R"(,"ValueExpression":"(")", "Hunter2").Code, 0);
    EXPECT_EQ(sink.Records().size(), 1U);
    for (const LogRecord& record : sink.Records())
    {
        EXPECT_THAT(record.Text, Not(HasSubstr("unter")));
    }
}

TEST(NewValueOfNoKnownType, FollowsValueNamesThenTheCurrentValue)
{
    EXPECT_EQ(ChangeProbe("Odd", Ports, "Com1"), (Answer{0, R"("Com1")"}));
    EXPECT_EQ(ChangeProbe("Odd", Ports, "5").Code, 10);
    EXPECT_EQ(ChangeProbe("Odd", "", "5"), (Answer{0, R"("5")"}));
    EXPECT_EQ(ChangeProbe("Odd", "", "5", {}, {{"probe", std::int64_t{1}}}), (Answer{0, "5"}));
    EXPECT_EQ(ChangeProbe("Odd", "", "x", {}, {{"Probe", std::int64_t{1}}}).Code, 10);
    EXPECT_EQ(ChangeProbe("Odd", "", "TRUE", {}, {{"Probe", false}}), (Answer{0, "true"}));
    EXPECT_EQ(ChangeProbe("Odd", R"(,"CurrentValue":7)", "5"), (Answer{0, "5"}));
    EXPECT_EQ(ChangeProbe("Odd", R"(,"MaxLength":1)", "ab").Code, 10);
}

TEST(NewValue, OfALockedSettingIsRefused)
{
    const struct
    {
        const char* Flags;
        const char* Words;
    } rows[] = {
        {R"(,"ReadOnly":true)", "read-only"},
        {R"(,"Immutable":true)", "immutable"},
        {R"(,"Hidden":true)", "hidden"},
        {R"(,"GrayOut":true)", "grayed out"},
        {R"(,"ReadOnly":true,"GrayOut":true)", "read-only, and grayed out"},
    };
    for (const auto& row : rows)
    {
        for (const char* value : {"x", "\xFF"})
        {
            EXPECT_EQ(ChangeProbe("String", row.Flags, value),
                      (Answer{18, std::string("The setting Probe cannot be changed: it is ") + row.Words + "."}));
        }
    }
    EXPECT_EQ(ChangeProbe("Password", R"(,"WriteOnly":true)", "x"), (Answer{0, R"("x")"}))
        << "writing is what a write-only setting is for";
}

TEST(NewValue, OfAnUnknownSettingIsRefused)
{
    RedfishConfigSettingManager manager(Registry(Attribute("BootMode")), false, Config_Options());
    EXPECT_EQ(Change(manager, "Nothing", "x"), (Answer{20, "Unable to find the setting Nothing"}));
    EXPECT_EQ(Change(manager, "bootmode", "x"),
              (Answer{20, "Unable to find the setting bootmode. Did you mean BootMode?"}));
    RedfishConfigSettingManager empty(Registry(""), false, Config_Options());
    EXPECT_EQ(Change(empty, "A", "x").Code, 20);
    RedfishConfigSettingManager broken("<html>", false, Config_Options());
    EXPECT_EQ(Change(broken, "A", "x").Code, 27);
}

TEST(NewValue, DependencyThatLocksIsTold)
{
    const std::string registry =
        Registry(Attribute("BootMode") + "," + Attribute("Order", R"(,"MenuPath":"./Boot")") + "," + Attribute("Free"),
                 Dependency(Term("BootMode", "EQU", "\"LegacyBios\""), "Order", "ReadOnly", "true") + "," +
                     Dependency(Term("BootMode", "EQU", "\"LegacyBios\"") + "," + Term("Free", "NEQ", "\"Yes\"", "AND"),
                                "Boot", "GrayOut", "true"),
                 Menu("Boot", "./Boot", "Boot"));
    RedfishConfigSettingManager manager(registry, {{"BootMode", "LegacyBios"}, {"Free", "No"}}, false,
                                        Config_Options());
    EXPECT_EQ(Change(manager, "Order", "x"),
              (Answer{18, "The setting Order cannot be changed: it is read-only because BootMode is LegacyBios, and "
                          "grayed out because BootMode is LegacyBios and Free is not Yes."}));
    EXPECT_EQ(Change(manager, "Free", "x"), (Answer{0, R"("x")"}));
    manager.UpdateSettingValue({{"BootMode", "Uefi"}});
    EXPECT_EQ(Change(manager, "Order", "x"), (Answer{0, R"("x")"}));
}

TEST(NewValue, ForcedBoundIsKeptAndTold)
{
    const std::string registry =
        Registry(Attribute("Mode") + "," + Typed("Count", "Integer", R"(,"LowerBound":0,"UpperBound":64)") + "," +
                     Attribute("Label", R"(,"MaxLength":8)"),
                 Dependency(Term("Mode", "EQU", "\"Small\""), "Count", "UpperBound", "4") + "," +
                     Dependency(Term("Mode", "EQU", "\"Small\""), "Label", "MaxLength", "2"));
    RedfishConfigSettingManager manager(registry, {{"Mode", "Small"}}, false, Config_Options());
    EXPECT_EQ(Change(manager, "Count", "4"), (Answer{0, "4"}));
    EXPECT_EQ(
        Change(manager, "Count", "5"),
        (Answer{10, "The new value is invalid: the setting Count takes a whole number from 0 to 4 because Mode is "
                    "Small."}));
    EXPECT_EQ(
        Change(manager, "Label", "abc"),
        (Answer{10, "The new value is invalid: the setting Label takes a text of at most 2 characters because Mode "
                    "is Small."}));
    manager.UpdateSettingValue({{"Mode", "Large"}});
    EXPECT_EQ(Change(manager, "Count", "5"), (Answer{0, "5"}));
}

TEST(NewValue, OwnChangeDoesNotLockItself)
{
    RedfishConfigSettingManager manager(
        Registry(Attribute("A"), Dependency(Term("A", "EQU", "\"Locked\""), "A", "ReadOnly", "true")), {{"A", "Open"}},
        false, Config_Options());
    EXPECT_EQ(Change(manager, "A", "Locked"), (Answer{0, R"("Locked")"}));
    manager.UpdateSettingValue({{"A", "Locked"}});
    EXPECT_EQ(Change(manager, "A", "Open"),
              (Answer{18, "The setting A cannot be changed: it is read-only because A is Locked."}));
}

TEST(NewValue, ActionsDiffer)
{
    RedfishConfigSettingManager manager(Registry(Attribute("Serial", R"(,"IsSystemUniqueProperty":true)") + "," +
                                                 Typed("Count", "Integer", R"(,"DefaultValue":5,"UpperBound":9)") +
                                                 "," + Attribute("Fixed", R"(,"DefaultValue":"d","ReadOnly":true)")),
                                        false, Config_Options());
    for (const filterAction action : {FilterChange, FilterRestoreSameSystem, FilterRestoreOtherSystem})
    {
        EXPECT_EQ(Change(manager, "Serial", "x", action), (Answer{0, R"("x")"})) << action;
        EXPECT_EQ(Change(manager, "Count", "5", action), (Answer{0, "5"})) << action;
    }
    for (const filterAction action : {FilterDefaultOne, FilterDefaultAll})
    {
        EXPECT_EQ(Change(manager, "Serial", "x", action), (Answer{21, "The setting Serial has no default value."}));
        EXPECT_EQ(Change(manager, "Count", "5", action), (Answer{0, "5"}));
        EXPECT_EQ(Change(manager, "Count", "50", action).Code, 10);
        EXPECT_EQ(Change(manager, "Fixed", "d", action),
                  (Answer{18, "The setting Fixed cannot be changed: it is read-only."}));
    }
    EXPECT_EQ(Change(manager, "Count", "5", FilterSave), (Answer{16, "Action 14 changes no setting."}));
    EXPECT_EQ(Change(manager, "Count", "5", static_cast<filterAction>(99)).Code, 16);
}

TEST(NewValue, DefaultIsDecimalInHexadecimalModeAsWell)
{
    RedfishConfigSettingManager manager(Registry(Typed("Count", "Integer", R"(,"DefaultValue":10)")),
                                        {{"Count", std::int64_t{1}}}, false, Hex());
    std::string text;
    ASSERT_EQ(manager.QuerySettingDefaultValue("Count", text), 0);
    EXPECT_EQ(Change(manager, "Count", text, FilterDefaultOne), (Answer{0, "10"}));
}

RC_GTEST_PROP(NewTextValueProperty, IsRefusedOrArrivesUnchanged, (const std::string& text))
{
    RedfishConfigSettingManager manager(Registry(Attribute("Probe") + "," + Typed("Secret", "Password")), false,
                                        Config_Options());
    for (const char* name : {"Probe", "Secret"})
    {
        std::string context;
        RedfishConfigResult result = manager.PreparePatchContext(name, text, context, FilterChange);
        if (result.ErrorCode() != 0)
        {
            RC_ASSERT(result.ErrorCode() == 10);
            RC_ASSERT(result.ErrorMsg() ==
                      "The new value is invalid: the setting " + std::string(name) + " takes text in UTF-8.");
            continue;
        }
        boost::json::error_code error;
        const boost::json::value parsed = boost::json::parse(context, error);
        RC_ASSERT(!error);
        RC_ASSERT(parsed.is_string());
        RC_ASSERT(std::string(parsed.get_string()) == text);
    }
}

RC_GTEST_PROP(NewTextValueProperty, OfCodePointsArrivesUnchanged, (const std::vector<std::uint16_t>& points))
{
    std::string text;
    for (const std::uint16_t raw : points)
    {
        const unsigned point = raw >= 0xD800 && raw <= 0xDFFF ? raw - 0xD800U : raw;
        if (point < 0x80)
        {
            text += static_cast<char>(point);
        }
        else if (point < 0x800)
        {
            text += {static_cast<char>(0xC0U | (point >> 6U)), static_cast<char>(0x80U | (point & 0x3FU))};
        }
        else
        {
            text += {static_cast<char>(0xE0U | (point >> 12U)), static_cast<char>(0x80U | ((point >> 6U) & 0x3FU)),
                     static_cast<char>(0x80U | (point & 0x3FU))};
        }
    }
    RedfishConfigSettingManager manager(Registry(Attribute("Probe")), false, Config_Options());
    std::string context;
    RC_ASSERT(manager.PreparePatchContext("Probe", text, context, FilterChange) == 0);
    RC_ASSERT(std::string(boost::json::parse(context).as_string()) == text);
}

RC_GTEST_PROP(NewIntegerValueProperty, IsTakenExactlyWhereBoundsAndStepAllow,
              (std::int32_t value, std::int16_t lower, std::uint8_t span, std::uint8_t step))
{
    const std::int64_t tried = value % 1000 + lower;
    const std::int64_t upper = std::int64_t{lower} + span * 8;
    RedfishConfigSettingManager manager(
        Registry(Typed("Probe", "Integer",
                       ",\"LowerBound\":" + std::to_string(lower) + ",\"UpperBound\":" + std::to_string(upper) +
                           ",\"ScalarIncrement\":" + std::to_string(step))),
        false, Config_Options());
    std::string context;
    const int code = manager.PreparePatchContext("Probe", std::to_string(tried), context, FilterChange);
    const bool allowed = tried >= lower && tried <= upper && (step == 0 || (tried - lower) % step == 0);
    RC_ASSERT(code == (allowed ? 0 : 10));
    RC_ASSERT(!allowed || context == std::to_string(tried));
}
