#include "ValueCheck.h"

#include "Fixture.h"

namespace
{

using namespace bmctest;
using bmcsim::AttributeRules;
using bmcsim::Machine;
using bmcsim::RulesNow;

/// Whether an attribute described by `entry` takes a value.
bool Takes(const std::string& entry, const json::value& value, const json::value* current = nullptr)
{
    Machine machine;
    machine.Resources["/r"] =
        Parse(R"({"RegistryEntries":{"Attributes":[{"AttributeName":"A",)" + entry + "}]}}").as_object();
    const AttributeRules rules(machine);
    const RulesNow now(rules, [](std::string_view) { return nullptr; });
    return !bmcsim::CheckValue(now, "A", value, current);
}

TEST(ValueCheck, IntegersByBoundsAndStep)
{
    struct Case
    {
        const char* Entry;
        const char* Value;
        bool Taken;
    };
    for (const auto& [entry, value, taken] : {
             Case{R"("Type":"Integer")", "-9223372036854775808", true},
             {R"("Type":"Integer")", "18446744073709551615", true},
             {R"("Type":"Integer")", "1.0", false},
             {R"("Type":"Integer","LowerBound":-5,"UpperBound":5)", "-5", true},
             {R"("Type":"Integer","LowerBound":-5,"UpperBound":5)", "-6", false},
             {R"("Type":"Integer","LowerBound":-5,"UpperBound":5)", "6", false},
             {R"("Type":"Integer","UpperBound":18446744073709551614)", "18446744073709551614", true},
             {R"("Type":"Integer","UpperBound":18446744073709551614)", "18446744073709551615", false},
             {R"("Type":"Integer","LowerBound":9223372036854775807)", "9223372036854775806", false},
             {R"("Type":"Integer","LowerBound":3,"ScalarIncrement":5)", "8", true},
             {R"("Type":"Integer","LowerBound":3,"ScalarIncrement":5)", "10", false},
             {R"("Type":"Integer","LowerBound":-3,"ScalarIncrement":5)", "2", true},
             {R"("Type":"Integer","ScalarIncrement":5)", "10", true},
             {R"("Type":"Integer","ScalarIncrement":5)", "-10", true},
             {R"("Type":"Integer","ScalarIncrement":5)", "11", false},
             {R"("Type":"Integer","ScalarIncrement":0)", "11", true},
             {R"("Type":"Integer","LowerBound":null,"UpperBound":null,"ScalarIncrement":null)", "7", true},
             {R"("Type":"Integer","UpperBound":"5")", "6", false},
         })
    {
        EXPECT_EQ(Takes(entry, Parse(value)), taken) << entry << ' ' << value;
    }
}

TEST(ValueCheck, TextsByLengthInCodePointsAndPattern)
{
    struct Case
    {
        const char* Entry;
        std::string Value;
        bool Taken;
    };
    for (const auto& [entry, value, taken] : {
             Case{R"("Type":"String")", std::string("\0\x1f ü 𝄞", 10), true},
             {R"("Type":"String","MinLength":1)", "", false},
             {R"("Type":"String","MaxLength":3)", "äöü", true},
             {R"("Type":"String","MaxLength":3)", "𝄞𝄞𝄞", true},
             {R"("Type":"String","MaxLength":3)", "𝄞𝄞𝄞𝄞", false},
             {R"("Type":"String","ValueExpression":"^.$")", "𝄞", true},
             {R"("Type":"String","ValueExpression":"^[ä-ü]+$")", "äöü", true},
             {R"("Type":"String","ValueExpression":"^[0-9]+$")", "12", true},
             {R"("Type":"String","ValueExpression":"^[0-9]+$")", "12\n", false},
             {R"("Type":"String","ValueExpression":"^[0-9]+$")", "x\n12", false},
             {R"("Type":"String","ValueExpression":"[0-9]")", "x1x", true},
             {R"("Type":"String","ValueExpression":"")", "any", true},
             {R"("Type":"String","ValueExpression":"([")", "a pattern that does not compile", true},
             {R"("Type":"String","ValueExpression":"^(a+)+$")", std::string(5000, 'a') + "b", true},
             {R"("Type":"String","ValueExpression":"^(\\?:a|b)*$")", std::string(200'000, 'a'), false},
             {R"("Type":"Password","MinLength":4)", "abc", false},
         })
    {
        EXPECT_EQ(Takes(entry, json::string(value)), taken) << entry << ' ' << value.substr(0, 20);
    }
}

TEST(ValueCheck, EnumerationsByTheirNamesAlone)
{
    constexpr const char* entry =
        R"("Type":"Enumeration","Value":[{"ValueName":"I/O","ValueDisplayName":"Shown"},{"ValueName":"1"},{},7])";
    EXPECT_TRUE(Takes(entry, "I/O"));
    EXPECT_TRUE(Takes(entry, "1"));
    for (const json::value& value : {json::value("i/o"), json::value("Shown"), json::value(""), json::value(1)})
    {
        EXPECT_FALSE(Takes(entry, value)) << value;
    }
    EXPECT_TRUE(Takes(R"("Type":"Enumeration")", "anything"));
}

TEST(ValueCheck, KindOfTheCurrentValueStandsInForAMissingType)
{
    const json::value number = 1;
    const json::value flag = true;
    EXPECT_TRUE(Takes(R"("X":1)", 5, &number));
    EXPECT_FALSE(Takes(R"("X":1)", "5", &number));
    EXPECT_TRUE(Takes(R"("X":1)", false, &flag));
    EXPECT_FALSE(Takes(R"("X":1)", "false", &flag));
    EXPECT_TRUE(Takes(R"("X":1)", "text"));
    EXPECT_FALSE(Takes(R"("Value":[{"ValueName":"a"}])", "b", &number));
}

} // namespace
