#include "Dependencies.h"

#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RegistryTexts.h"

using namespace Tavrine;
using namespace registrytext;
using testing::ElementsAre;

namespace
{

std::unique_ptr<SettingModel> ModelOf(const std::string& attributes, const std::string& dependencies,
                                      const std::string& menus = "")
{
    AttributeRegistry registry;
    RegistryNotes notes;
    std::string error;
    EXPECT_TRUE(ReadAttributeRegistry(Registry(attributes, dependencies, menus), registry, notes, error)) << error;
    EXPECT_THAT(notes.Lines, testing::IsEmpty());
    return std::make_unique<SettingModel>(std::move(registry));
}

/// Attributes of these one-letter names, in order.
std::string Letters(const std::string& names)
{
    std::string attributes;
    for (const char name : names)
    {
        attributes += (attributes.empty() ? "" : ",") + Attribute(std::string(1, name));
    }
    return attributes;
}

/// Whether attribute B is read-only when A has `value` and this condition forces it.
bool Forces(const std::string& terms, const OptionalVar& value)
{
    const auto model = ModelOf(Letters("ABC"), Dependency(terms, "B", "ReadOnly", "true"));
    return DependencyEvaluation(*model, {{"A", value}, {"C", "c"}}).Flag(1, SettingProperty::ReadOnly);
}

const OptionalVar One = std::int64_t{1};
const OptionalVar TextOne = std::string("1");
const OptionalVar Yes = true;

std::string ValueText(const DependencyEvaluation& evaluation, std::size_t attribute)
{
    return ScalarText(evaluation.Now(attribute, SettingProperty::CurrentValue));
}

} // namespace

TEST(DependencyConditions, CompareAsTheWordSays)
{
    struct Row
    {
        const char* Condition;
        const char* Value;
        OptionalVar Now;
        bool Holds;
    };
    const Row rows[] = {
        {"EQU", "1", One, true},
        {"EQU", "\"1\"", One, true},
        {"EQU", "1", TextOne, true},
        {"EQU", "2", One, false},
        {"EQU", "true", Yes, true},
        {"EQU", "\"True\"", Yes, true},
        {"EQU", "\"true\"", One, false},
        {"NEQ", "1", One, false},
        {"NEQ", "\"1\"", One, false},
        {"NEQ", "2", One, true},
        {"NEQ", "\"x\"", One, true},
        {"GTR", "0", One, true},
        {"GTR", "1", One, false},
        {"GTR", "\"0\"", TextOne, true},
        {"LSS", "2", One, true},
        {"LSS", "1", One, false},
        {"GEQ", "1", One, true},
        {"GEQ", "2", One, false},
        {"LEQ", "1", One, true},
        {"LEQ", "0", One, false},
        {"LSS", "18446744073709551615", One, true},
        {"GTR", "-1", One, true},
        {"GTR", "\"a\"", One, false},
        {"LEQ", "\"a\"", One, false},
        {"EQU", "1", std::nullopt, false},
        {"NEQ", "1", std::nullopt, false},
        {"LSS", "1", std::nullopt, false},
        {"EQU", "null", std::nullopt, true},
        {"NEQ", "null", std::nullopt, false},
        {"NEQ", "null", One, true},
        {"EQU", "null", One, false},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(Forces(Term("A", row.Condition, row.Value), row.Now), row.Holds)
            << row.Condition << " " << row.Value << " with " << ScalarText(ScalarFromValue(row.Now));
    }
}

TEST(DependencyConditions, TermsAreJoinedFromLeftToRight)
{
    const std::string yes = R"("c")";
    const std::string no = R"("d")";
    struct Row
    {
        std::string First;
        const char* Join;
        std::string Second;
        const char* NextJoin;
        std::string Third;
        bool Holds;
    };
    const Row rows[] = {
        {yes, "AND", yes, "AND", yes, true}, {yes, "AND", yes, "AND", no, false}, {no, "OR", no, "OR", yes, true},
        {no, "OR", no, "OR", no, false},     {yes, "OR", yes, "AND", no, false},  {no, "AND", no, "OR", yes, true},
        {yes, "OR", no, "AND", yes, true},   {no, "AND", yes, "OR", no, false},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(Forces(Term("C", "EQU", row.First) + "," + Term("C", "EQU", row.Second, row.Join) + "," +
                             Term("C", "EQU", row.Third, row.NextJoin),
                         One),
                  row.Holds)
            << row.First << row.Join << row.Second << row.NextJoin << row.Third;
    }
    EXPECT_FALSE(Forces(Term("C", "EQU", yes) + "," + Term("C", "EQU", no), One)) << "no word joins as AND";
    EXPECT_FALSE(Forces(Term("C", "EQU", no, "OR"), One)) << "the first word joins nothing";
}

TEST(DependencyConditions, UnknownAttributesAndPropertiesAreFalse)
{
    EXPECT_FALSE(Forces(Term("Nobody", "EQU", "1"), One));
    EXPECT_FALSE(Forces(Term("Nobody", "NEQ", "1"), One));
    EXPECT_FALSE(Forces(Term("Nobody", "EQU", "null"), One));
    EXPECT_FALSE(Forces(Term("A", "NEQ", "5", "", "Colour"), One));
    EXPECT_TRUE(Forces(Term("Nobody", "EQU", "1") + "," + Term("A", "EQU", "1", "OR"), One));
}

TEST(DependencyConditions, ReadEveryProperty)
{
    const std::string reader = R"({"AttributeName":"A","Type":"Integer","ReadOnly":true,"LowerBound":1,"UpperBound":2,
        "ScalarIncrement":3,"MinLength":4,"MaxLength":18446744073709551615,"DefaultValue":6,"CurrentValue":7})";
    const std::pair<const char*, const char*> rows[] = {
        {"ReadOnly", "true"},   {"WriteOnly", "false"},
        {"GrayOut", "false"},   {"Hidden", "\"false\""},
        {"Immutable", "false"}, {"LowerBound", "1"},
        {"UpperBound", "2"},    {"ScalarIncrement", "\"3\""},
        {"MinLength", "4"},     {"MaxLength", "18446744073709551615"},
        {"DefaultValue", "6"},  {"CurrentValue", "7"},
    };
    for (const auto& [property, value] : rows)
    {
        const auto model = ModelOf(reader + "," + Letters("B"),
                                   Dependency(Term("A", "EQU", value, "", property), "B", "GrayOut", "true"));
        EXPECT_TRUE(DependencyEvaluation(*model, {}).Flag(1, SettingProperty::GrayOut)) << property;
    }
}

TEST(Dependencies, ForceEveryKindOfProperty)
{
    const std::string when = Term("A", "EQU", "1");
    const std::pair<const char*, const char*> rows[] = {
        {"ReadOnly", "true"},
        {"WriteOnly", "\"True\""},
        {"GrayOut", "true"},
        {"Hidden", "true"},
        {"Immutable", "true"},
        {"LowerBound", "-7"},
        {"UpperBound", "\"18446744073709551615\""},
        {"ScalarIncrement", "2"},
        {"MinLength", "1"},
        {"MaxLength", "9"},
        {"DisplayOrder", "4"},
        {"DisplayName", "\"Name\""},
        {"HelpText", "\"Help\""},
        {"WarningText", "null"},
        {"ValueExpression", "\"^x$\""},
        {"DefaultValue", "false"},
        {"CurrentValue", "\"v\""},
    };
    for (const auto& [property, value] : rows)
    {
        const auto model = ModelOf(Letters("AB"), Dependency(when, "B", property, value));
        const SettingProperty which = *PropertyFromWord(property);
        const DependencyEvaluation holds(*model, {{"A", One}});
        const DependencyEvaluation holdsNot(*model, {{"A", "2"}});
        std::string expected = value;
        std::erase(expected, '"');
        EXPECT_EQ(ScalarText(holds.Now(1, which)), expected == "True" ? "true" : expected) << property;
        EXPECT_NE(holds.Cause(1, which), nullptr) << property;
        EXPECT_EQ(ScalarText(holdsNot.Now(1, which)), IsFlag(which) ? "false" : "null") << property;
        EXPECT_EQ(holdsNot.Cause(1, which), nullptr) << property;
    }
}

TEST(Dependencies, TrueFlagWinsAndElseTheLastThatHolds)
{
    const std::string when = Term("A", "EQU", "1");
    const auto model = ModelOf(
        Letters("AB"), Dependency(when, "B", "ReadOnly", "false") + "," + Dependency(when, "B", "ReadOnly", "true") +
                           "," + Dependency(when, "B", "ReadOnly", "false") + "," +
                           Dependency(when, "B", "LowerBound", "1") + "," + Dependency(when, "B", "LowerBound", "2"));
    const DependencyEvaluation evaluation(*model, {{"A", One}});
    EXPECT_TRUE(evaluation.Flag(1, SettingProperty::ReadOnly));
    EXPECT_EQ(ScalarText(evaluation.Now(1, SettingProperty::LowerBound)), "2");
}

TEST(Dependencies, ForcedFalseLiftsTheFlagOfTheRegistry)
{
    const auto model = ModelOf(Letters("A") + "," + Attribute("B", ",\"ReadOnly\":true"),
                               Dependency(Term("A", "EQU", "1"), "B", "ReadOnly", "false"));
    EXPECT_FALSE(DependencyEvaluation(*model, {{"A", One}}).Flag(1, SettingProperty::ReadOnly));
    EXPECT_EQ(DependencyEvaluation(*model, {{"A", One}}).Cause(1, SettingProperty::ReadOnly), nullptr);
    EXPECT_TRUE(DependencyEvaluation(*model, {}).Flag(1, SettingProperty::ReadOnly));
}

TEST(Dependencies, MenuFlagsReachSettingsOfAllMenusBelow)
{
    const std::string attributes = Letters("A") + "," + Attribute("Top", R"(,"MenuPath":"./M")") + "," +
                                   Attribute("Low", R"(,"MenuPath":"./M/N/Unknown")") + "," +
                                   Attribute("Beside", R"(,"MenuPath":"./Mx")");
    const std::string menus =
        Menu("M", "./M", "M") + "," + Menu("N", "./M/N", "N") + "," + Menu("Mx", "./Mx", "Mx", R"(,"Hidden":true)");
    const auto model = ModelOf(attributes,
                               Dependency(Term("A", "EQU", "1"), "M", "GrayOut", "true") + "," +
                                   Dependency(Term("A", "EQU", "2"), "Mx", "Hidden", "false"),
                               menus);
    const DependencyEvaluation forced(*model, {{"A", One}});
    EXPECT_FALSE(forced.Flag(0, SettingProperty::GrayOut));
    EXPECT_TRUE(forced.Flag(1, SettingProperty::GrayOut));
    EXPECT_TRUE(forced.Flag(2, SettingProperty::GrayOut));
    EXPECT_FALSE(forced.Flag(3, SettingProperty::GrayOut));
    ASSERT_NE(forced.Cause(2, SettingProperty::GrayOut), nullptr);
    EXPECT_EQ(ConditionText(*forced.Cause(2, SettingProperty::GrayOut)), "A is 1");
    EXPECT_TRUE(forced.Flag(3, SettingProperty::Hidden)) << "the menu's own flag";
    EXPECT_EQ(forced.Cause(3, SettingProperty::Hidden), nullptr);
    EXPECT_FALSE(DependencyEvaluation(*model, {{"A", "2"}}).Flag(3, SettingProperty::Hidden));
}

TEST(Dependencies, FlagsOfMenusAreSeenByConditions)
{
    const auto model = ModelOf(Letters("AC") + "," + Attribute("B", R"(,"MenuPath":"./M")"),
                               Dependency(Term("B", "EQU", "true", "", "Hidden"), "C", "ReadOnly", "true") + "," +
                                   Dependency(Term("A", "EQU", "1"), "M", "Hidden", "true"),
                               Menu("M", "./M", "M"));
    EXPECT_TRUE(DependencyEvaluation(*model, {{"A", One}}).Flag(1, SettingProperty::ReadOnly));
    EXPECT_FALSE(DependencyEvaluation(*model, {}).Flag(1, SettingProperty::ReadOnly));
}

TEST(DependencyValues, ReportedValuesAreNeverReplaced)
{
    const auto model =
        ModelOf(Letters("ABC"), Dependency(Term("A", "EQU", "1"), "B", "CurrentValue", "\"forced\"") + "," +
                                    Dependency(Term("B", "EQU", "\"forced\""), "C", "GrayOut", "true"));
    const DependencyEvaluation reported(*model, {{"A", One}, {"B", "reported"}});
    EXPECT_EQ(ValueText(reported, 1), "reported");
    EXPECT_FALSE(reported.Flag(2, SettingProperty::GrayOut));
    for (const SettingValueMap& values :
         {SettingValueMap{{"A", One}}, SettingValueMap{{"A", One}, {"B", std::nullopt}}})
    {
        const DependencyEvaluation missing(*model, values);
        EXPECT_EQ(ValueText(missing, 1), "forced");
        EXPECT_TRUE(missing.Flag(2, SettingProperty::GrayOut));
    }
}

TEST(DependencyValues, RegistryValueStandsWhereNothingWasReported)
{
    const auto model = ModelOf(Attribute("A", R"(,"CurrentValue":"1")") + "," + Letters("B"),
                               Dependency(Term("A", "EQU", "1"), "B", "ReadOnly", "true"));
    EXPECT_TRUE(DependencyEvaluation(*model, {}).Flag(1, SettingProperty::ReadOnly));
    EXPECT_FALSE(DependencyEvaluation(*model, {{"A", std::nullopt}}).Flag(1, SettingProperty::ReadOnly));
}

TEST(DependencyValues, ValuesAreFoundWhateverTheCaseOfTheirName)
{
    const auto model = ModelOf(Letters("AB"), Dependency(Term("A", "EQU", "1"), "B", "ReadOnly", "true"));
    EXPECT_TRUE(DependencyEvaluation(*model, {{"a", One}}).Flag(1, SettingProperty::ReadOnly));
}

TEST(DependencyValues, ChangesCarryOnThroughReportedValues)
{
    const auto model =
        ModelOf(Letters("ABCD"), Dependency(Term("A", "EQU", "\"x\""), "B", "CurrentValue", "\"byA\"") + "," +
                                     Dependency(Term("B", "EQU", "\"byA\""), "C", "CurrentValue", "\"byB\"") + "," +
                                     Dependency(Term("D", "EQU", "\"d\""), "D", "CurrentValue", "\"self\""));
    const SettingValueMap values = {{"A", "a"}, {"B", "b"}, {"C", "c"}, {"D", "d"}};
    const DependencyEvaluation changed(DependencyEvaluation(*model, values), {{"A", "x"}});
    EXPECT_EQ(ValueText(changed, 0), "x");
    EXPECT_EQ(ValueText(changed, 1), "byA");
    EXPECT_EQ(ValueText(changed, 2), "byB");
    EXPECT_EQ(ValueText(changed, 3), "d") << "nothing that its condition reads has moved";
    EXPECT_TRUE(changed.Settled());

    const DependencyEvaluation withBoth(DependencyEvaluation(*model, values), {{"A", "x"}, {"B", "mine"}});
    EXPECT_EQ(ValueText(withBoth, 1), "mine") << "a change is never replaced";
    EXPECT_EQ(ValueText(withBoth, 2), "c");

    const DependencyEvaluation withUntold(DependencyEvaluation(*model, values), {{"A", "x"}, {"B", std::nullopt}});
    EXPECT_EQ(ValueText(withUntold, 1), "null") << "nor is one to a number that no value can hold";

    const SettingValueMap already = {{"A", "x"}, {"B", "b"}, {"C", "c"}};
    const DependencyEvaluation same(DependencyEvaluation(*model, already), {{"A", "x"}});
    EXPECT_EQ(ValueText(same, 1), "b") << "a change to the value that stands moves nothing";
}

TEST(DependencyValues, ValueThatUndoesItsOwnConditionStays)
{
    // Two ports that must not share one address: each moves away from the other.
    const auto away = [](const std::string& first, const std::string& second, const char* shared, const char* other)
    {
        const std::string value = std::string("\"") + shared + "\"";
        return Dependency(Term(first, "EQU", value) + "," + Term(second, "EQU", value, "AND"), second, "CurrentValue",
                          std::string("\"") + other + "\"");
    };
    const auto model = ModelOf(Letters("EV"), away("E", "V", "1", "2") + "," + away("E", "V", "2", "1") + "," +
                                                  away("V", "E", "1", "2") + "," + away("V", "E", "2", "1"));
    const SettingValueMap reported = {{"E", "2"}, {"V", "1"}};
    const DependencyEvaluation changed(DependencyEvaluation(*model, reported), {{"E", "1"}});
    EXPECT_TRUE(changed.Settled());
    EXPECT_EQ(ValueText(changed, 0), "1");
    EXPECT_EQ(ValueText(changed, 1), "2");
}

TEST(DependencyRounds, StopWhenNothingMoves)
{
    const auto none = ModelOf(Letters("AB"), "");
    EXPECT_EQ(DependencyEvaluation(*none, {}).Rounds(), 1U);
    EXPECT_TRUE(DependencyEvaluation(*none, {}).Settled());

    const auto chain = ModelOf(Letters("ABCD"), Dependency(Term("C", "EQU", "1"), "D", "CurrentValue", "1") + "," +
                                                    Dependency(Term("B", "EQU", "1"), "C", "CurrentValue", "1") + "," +
                                                    Dependency(Term("A", "EQU", "1"), "B", "CurrentValue", "1"));
    const DependencyEvaluation evaluation(*chain, {{"A", One}});
    EXPECT_EQ(ValueText(evaluation, 3), "1");
    EXPECT_TRUE(evaluation.Settled());
    EXPECT_EQ(evaluation.Rounds(), 4U);
}

TEST(DependencyRounds, SelfReferenceThatContradictsItselfHitsTheBound)
{
    const auto model =
        ModelOf(Letters("A"), Dependency(Term("A", "EQU", "false", "", "GrayOut"), "A", "GrayOut", "true"));
    const DependencyEvaluation evaluation(*model, {});
    EXPECT_FALSE(evaluation.Settled());
    EXPECT_EQ(evaluation.Rounds(), DependencyEvaluation::MaxRounds);
}

TEST(DependencyRounds, CircleThatAgreesSettles)
{
    const auto model = ModelOf(Letters("AB"), Dependency(Term("A", "EQU", "1"), "B", "CurrentValue", "1") + "," +
                                                  Dependency(Term("B", "EQU", "1"), "A", "CurrentValue", "1"));
    const DependencyEvaluation evaluation(*model, {{"A", One}});
    EXPECT_TRUE(evaluation.Settled());
    EXPECT_EQ(ValueText(evaluation, 1), "1");
}

TEST(DependencyRounds, CostIsTheNumberOfTermsARound)
{
    for (const int count : {1'000, 20'000})
    {
        std::string attributes = Attribute("A0");
        std::string dependencies;
        for (int index = 1; index <= count; ++index)
        {
            const std::string name = "A" + std::to_string(index);
            attributes += "," + Attribute(name);
            dependencies += (index == 1 ? "" : ",") + Dependency(Term("A0", "EQU", "1"), name, "GrayOut", "true");
        }
        const auto model = ModelOf(attributes, dependencies);
        const DependencyEvaluation evaluation(*model, {{"A0", One}});
        EXPECT_TRUE(evaluation.Flag(static_cast<std::size_t>(count), SettingProperty::GrayOut));
        EXPECT_EQ(evaluation.Rounds(), 2U);
        EXPECT_EQ(evaluation.TermsRead(), static_cast<std::size_t>(count) * 2);
        EXPECT_EQ(model->RelatedSettings(0).size(), static_cast<std::size_t>(count));
        EXPECT_THAT(model->RelatedSettings(1), ElementsAre("A0"));
    }
}

TEST(ConditionText, TellsEveryTermInWords)
{
    const auto model = ModelOf(
        Letters("AB"), Dependency(Term("A", "EQU", "\"x\"") + "," + Term("B", "NEQ", "true", "AND") + "," +
                                      Term("Nobody", "GTR", "1", "OR") + "," + Term("A", "LSS", "2", "AND") + "," +
                                      Term("A", "GEQ", "3", "AND") + "," + Term("A", "LEQ", "4", "OR", "UpperBound"),
                                  "A", "ReadOnly", "true"));
    EXPECT_EQ(ConditionText(model->Registry().Dependencies.front()),
              "A is x and B is not true or Nobody is above 1 and A is below 2 and A is at least 3 "
              "or A UpperBound is at most 4");
}

TEST(ConditionText, IsCutBetweenCharacters)
{
    std::string value = "\"";
    for (int index = 0; index < 400; ++index)
    {
        value += "\xc3\xa4";
    }
    const auto model = ModelOf(Letters("A"), Dependency(Term("A", "EQU", value + "\""), "A", "ReadOnly", "true"));
    const std::string text = ConditionText(model->Registry().Dependencies.front());
    EXPECT_LE(text.size(), 403U);
    EXPECT_TRUE(text.ends_with("\xc3\xa4...")) << text;
}

TEST(RelatedSettings, StandInBothDirectionsOnceInRegistryOrder)
{
    const std::string attributes = Letters("DCBA") + "," + Attribute("M1", R"(,"MenuPath":"./M")") + "," +
                                   Attribute("M2", R"(,"MenuPath":"./M/N")");
    const auto model = ModelOf(
        attributes,
        Dependency(Term("A", "EQU", "1") + "," + Term("B", "EQU", "1", "AND") + "," + Term("Nobody", "EQU", "1", "AND"),
                   "C", "ReadOnly", "true") +
            "," + Dependency(Term("A", "EQU", "1"), "C", "GrayOut", "true") + "," +
            Dependency(Term("C", "EQU", "1"), "D", "GrayOut", "true") + "," +
            Dependency(Term("A", "EQU", "1"), "A", "GrayOut", "true") + "," +
            Dependency(Term("B", "EQU", "1"), "M", "Hidden", "true"),
        Menu("M", "./M", "M") + "," + Menu("N", "./M/N", "N"));
    EXPECT_THAT(model->RelatedSettings(0), ElementsAre("C"));
    EXPECT_THAT(model->RelatedSettings(1), ElementsAre("D", "B", "A"));
    EXPECT_THAT(model->RelatedSettings(2), ElementsAre("C", "M1", "M2"));
    EXPECT_THAT(model->RelatedSettings(3), ElementsAre("C"));
    EXPECT_THAT(model->RelatedSettings(5), ElementsAre("B"));
}
