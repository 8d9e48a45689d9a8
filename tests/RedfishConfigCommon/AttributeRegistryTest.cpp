#include "AttributeRegistry.h"

#include <algorithm>
#include <limits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RegistryTexts.h"

using namespace Tavrine;
using namespace registrytext;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace
{

struct ReadOutcome
{
    AttributeRegistry Registry;
    RegistryNotes Notes;
    std::string Error;
    bool Succeeded = false;
};

ReadOutcome Read(const std::string& text)
{
    ReadOutcome outcome;
    outcome.Succeeded = ReadAttributeRegistry(text, outcome.Registry, outcome.Notes, outcome.Error);
    return outcome;
}

} // namespace

TEST(AttributeRegistry, ReadsEveryPropertyOfAnAttribute)
{
    const ReadOutcome outcome = Read(Registry(R"({"AttributeName":"Cores","Type":"Integer","DisplayName":"Core count",
        "HelpText":"Help","WarningText":"Warning","ReadOnly":true,"WriteOnly":true,"Hidden":true,"GrayOut":true,
        "Immutable":true,"IsSystemUniqueProperty":true,"LowerBound":-4,"UpperBound":18446744073709551615,
        "ScalarIncrement":0,"MinLength":1,"MaxLength":2,"DisplayOrder":3,"MenuPath":"./Cpu","DefaultValue":8,
        "CurrentValue":"x","ValueExpression":"^a$","Oem":{"Zorvan":{"Protected":true}},
        "Value":[{"ValueName":"Z","ValueDisplayName":"Zed"},{"ValueName":"A"},{"ValueName":"Z"},{},7]})"));
    ASSERT_TRUE(outcome.Succeeded) << outcome.Error;
    ASSERT_EQ(outcome.Registry.Attributes.size(), 1U);
    const RegistryAttribute& attribute = outcome.Registry.Attributes.front();
    const RedfishConfigSettingInfoStru info = InfoOf(attribute);
    EXPECT_EQ(info.AttributeKey, "Cores");
    EXPECT_EQ(info.SettingType, "Integer");
    EXPECT_EQ(info.DisplayName, "Core count");
    EXPECT_EQ(info.HelpText, "Help");
    EXPECT_EQ(info.WarningText, "Warning");
    EXPECT_EQ(info.ValueExpression, "^a$");
    EXPECT_EQ(info.MenuPath, "./Cpu");
    EXPECT_TRUE(info.ReadOnly && info.WriteOnly && info.Hidden && info.GrayOut && info.Immutable);
    EXPECT_TRUE(info.IsSystemUnique && info.IsProtected);
    EXPECT_EQ(info.LowerBound, -4);
    EXPECT_EQ(info.UpperBound, std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(PropertyOfRegistry(attribute, SettingProperty::UpperBound),
              RegistryScalar(ExactFromUnsigned(std::numeric_limits<std::uint64_t>::max())));
    EXPECT_EQ(info.ScalarIncrement, 0);
    EXPECT_EQ(info.MinLength, 1);
    EXPECT_EQ(info.MaxLength, 2);
    EXPECT_EQ(info.DisplayOrder, 3);
    EXPECT_EQ(info.DefaultValue, OptionalVar(std::int64_t{8}));
    EXPECT_EQ(info.CurrentValue, OptionalVar(std::string("x")));
    ASSERT_EQ(attribute.ValueNames.size(), 2U);
    EXPECT_EQ(attribute.ValueNames[0].Name, "Z");
    EXPECT_EQ(attribute.ValueNames[0].DisplayName, "Zed");
    EXPECT_EQ(attribute.ValueNames[1].Name, "A");
    EXPECT_EQ(attribute.ValueNames[1].DisplayName, std::nullopt);
    EXPECT_EQ(info.ValueNames, (SettingStringMap{{"A", "A"}, {"Z", "Zed"}}));
}

TEST(AttributeRegistry, MissingMembersStayEmpty)
{
    const ReadOutcome outcome = Read(Registry(R"({"AttributeName":"Bare"})"));
    ASSERT_EQ(outcome.Registry.Attributes.size(), 1U);
    const RedfishConfigSettingInfoStru info = InfoOf(outcome.Registry.Attributes.front());
    EXPECT_FALSE(info.ReadOnly || info.WriteOnly || info.IsProtected || info.Hidden || info.GrayOut || info.Immutable ||
                 info.IsSystemUnique);
    EXPECT_FALSE(info.LowerBound || info.UpperBound || info.ScalarIncrement || info.MinLength || info.MaxLength ||
                 info.DisplayOrder);
    EXPECT_FALSE(info.SettingType || info.DisplayName || info.HelpText || info.WarningText || info.MenuPath ||
                 info.ValueExpression || info.CurrentValue || info.DefaultValue);
    EXPECT_TRUE(info.ValueNames.empty());
    EXPECT_TRUE(outcome.Notes.Lines.empty());
}

TEST(AttributeRegistry, WrongKindsAreLeftOutWithANote)
{
    for (const std::string wrong : {"{}", "[]", "[1]", "0.5", "{\"a\":[null]}"})
    {
        std::string members;
        for (const char* member : {"DisplayName",     "HelpText",     "WarningText",
                                   "ReadOnly",        "WriteOnly",    "Hidden",
                                   "GrayOut",         "Immutable",    "IsSystemUniqueProperty",
                                   "LowerBound",      "UpperBound",   "ScalarIncrement",
                                   "MinLength",       "MaxLength",    "DisplayOrder",
                                   "MenuPath",        "DefaultValue", "CurrentValue",
                                   "ValueExpression", "Oem"})
        {
            members.append(",\"").append(member).append("\":").append(wrong);
        }
        const ReadOutcome outcome = Read(Registry(Attribute("Odd", members + ",\"Value\":" + wrong)));
        ASSERT_TRUE(outcome.Succeeded) << wrong;
        ASSERT_EQ(outcome.Registry.Attributes.size(), 1U) << wrong;
        EXPECT_TRUE(outcome.Registry.Attributes.front().Properties.empty()) << wrong;
        EXPECT_TRUE(outcome.Registry.Attributes.front().Flags.none()) << wrong;
        EXPECT_THAT(outcome.Notes.Lines, testing::Contains(AllOf(HasSubstr("Odd"), HasSubstr("LowerBound")))) << wrong;
    }
}

TEST(AttributeRegistry, ManyLongListsOfValuesAreRead)
{
    constexpr int values = 400;
    std::string names;
    for (int value = 0; value < values; ++value)
    {
        names += std::string(value == 0 ? "" : ",") + R"({"ValueName":"Value)" + std::to_string(value) + "\"}";
    }
    std::string attributes;
    for (int attribute = 0; attribute < 100; ++attribute)
    {
        attributes += (attribute == 0 ? "" : ",") + Typed("A" + std::to_string(attribute), "Enumeration",
                                                          R"(,"Value":[)" + names + R"(,{"ValueName":"Value7"}])");
    }
    const ReadOutcome outcome = Read(Registry(attributes));
    ASSERT_TRUE(outcome.Succeeded) << outcome.Error;
    ASSERT_EQ(outcome.Registry.Attributes.size(), 100U);
    for (const RegistryAttribute& attribute : outcome.Registry.Attributes)
    {
        EXPECT_EQ(attribute.ValueNames.size(), static_cast<std::size_t>(values)) << attribute.Name();
    }
}

TEST(AttributeRegistry, ElementsWithoutATextNameAreSkippedWithANote)
{
    const ReadOutcome outcome =
        Read(Registry(R"(7,null,"x",[],{},{"AttributeName":5},{"AttributeName":null},)" + Attribute("Good")));
    ASSERT_EQ(outcome.Registry.Attributes.size(), 1U);
    EXPECT_EQ(outcome.Registry.Attributes.front().Name(), "Good");
    EXPECT_EQ(outcome.Notes.Lines.size(), 7U);
}

TEST(AttributeRegistry, FirstOfTwoAttributesOfOneNameWins)
{
    const ReadOutcome outcome = Read(Registry(Attribute("A", R"(,"HelpText":"first")") + "," + Attribute("a") + "," +
                                              Attribute("A", R"(,"HelpText":"second")")));
    ASSERT_EQ(outcome.Registry.Attributes.size(), 2U);
    EXPECT_EQ(InfoOf(outcome.Registry.Attributes.front()).HelpText, "first");
    EXPECT_THAT(outcome.Notes.Lines, ElementsAre(HasSubstr("\"A\" occurs twice")));
}

TEST(AttributeRegistry, ListsMayStandInAnyOrderAndAmongOtherMembers)
{
    const std::string menus = R"("Menus":[)" + Menu("M", "./M", "Em") + "]";
    const std::string attributes =
        R"("Attributes":[)" + Attribute("A", R"(,"MenuPath":"./M")") + "," + Attribute("B") + "]";
    const std::string dependencies =
        R"("Dependencies":[)" + Dependency(Term("A", "EQU", "1"), "B", "ReadOnly", "true") + "]";
    const std::string other =
        R"("Attributes2":[{"AttributeName":"No"}],"More":{"Attributes":[{"AttributeName":"No"}]})";
    std::vector<std::string> parts = {menus, attributes, dependencies, other};
    std::sort(parts.begin(), parts.end());
    do
    {
        const std::string text = R"({"Attributes":[{"AttributeName":"No"}],"Other":[[{"RegistryEntries":{}}],7],)"
                                 R"("RegistryEntries":{)" +
                                 parts[0] + "," + parts[1] + "," + parts[2] + "," + parts[3] + R"(},"Id":"x"})";
        const ReadOutcome outcome = Read(text);
        ASSERT_TRUE(outcome.Succeeded) << outcome.Error << " " << text;
        ASSERT_EQ(outcome.Registry.Attributes.size(), 2U) << text;
        EXPECT_EQ(outcome.Registry.Attributes[0].Name(), "A") << text;
        EXPECT_EQ(outcome.Registry.Attributes[0].Menu, 0U) << text;
        EXPECT_TRUE(outcome.Registry.Attributes[0].MenuIsKnown) << text;
        EXPECT_EQ(outcome.Registry.Attributes[1].Name(), "B") << text;
        EXPECT_EQ(outcome.Registry.Dependencies.size(), 1U) << text;
        EXPECT_TRUE(outcome.Notes.Lines.empty()) << text;
    } while (std::next_permutation(parts.begin(), parts.end()));
}

TEST(AttributeRegistry, OfMembersOfOneNameTheLastCounts)
{
    const std::string first = R"("Attributes":[)" + Attribute("A") + R"(,7],"Menus":[5],"Dependencies":[6])";
    const std::string second = R"("Attributes":[)" + Attribute("B") + R"(],"Menus":[],"Dependencies":[])";
    for (const std::string& text : {R"({"RegistryEntries":{)" + first + "," + second + "}}",
                                    R"({"RegistryEntries":{)" + first + R"(},"RegistryEntries":{)" + second + "}}"})
    {
        const ReadOutcome outcome = Read(text);
        ASSERT_TRUE(outcome.Succeeded) << text;
        ASSERT_EQ(outcome.Registry.Attributes.size(), 1U) << text;
        EXPECT_EQ(outcome.Registry.Attributes.front().Name(), "B") << text;
        EXPECT_EQ(outcome.Registry.AttributeIndex.size(), 1U) << text;
        EXPECT_TRUE(outcome.Notes.Lines.empty()) << text;
    }
    for (const char* last : {"null", "[]", "\"x\"", "7", "{}"})
    {
        EXPECT_EQ(Read(R"({"RegistryEntries":{)" + first + R"(},"RegistryEntries":)" + last + "}").Error,
                  std::string(last) == "{}" ? "its \"RegistryEntries\" have no array \"Attributes\"."
                                            : "it has no object \"RegistryEntries\".")
            << last;
        EXPECT_EQ(Read(R"({"RegistryEntries":{)" + first + R"(,"Attributes":)" + last + "}}").Succeeded,
                  std::string(last) == "[]")
            << last;
    }
}

TEST(AttributeRegistry, AListThatReplacesAnotherIsCountedFromItsOwnBeginning)
{
    const ReadOutcome outcome =
        Read(R"({"RegistryEntries":{"Attributes":[)" + Attribute("A") + R"(,7],"Attributes":[7]}})");
    EXPECT_THAT(outcome.Notes.Lines, ElementsAre(HasSubstr("attribute 0 is no object")));
}

TEST(AttributeRegistry, NotesOnMenusStandBeforeThoseOnAttributesAndDependencies)
{
    const ReadOutcome outcome = Read(R"({"RegistryEntries":{"Dependencies":[1],"Attributes":[2],"Menus":[3]}})");
    EXPECT_THAT(outcome.Notes.Lines,
                ElementsAre(HasSubstr("menu 0"), HasSubstr("attribute 0"), HasSubstr("dependency 0")));
}

TEST(AttributeRegistry, ProtectedMarkerMustBeTrueInItsPlace)
{
    const std::pair<const char*, bool> rows[] = {
        {R"(,"Oem":{"Zorvan":{"Protected":true}})", true}, {R"(,"Oem":{"Zorvan":{"Protected":false}})", false},
        {R"(,"Oem":{"Zorvan":{"Protected":[]}})", false},  {R"(,"Oem":{"Zorvan":true})", false},
        {R"(,"Oem":{"Other":{"Protected":true}})", false}, {R"(,"Oem":true)", false},
        {R"(,"Zorvan":{"Protected":true})", false},        {R"(,"Protected":true)", false},
    };
    for (const auto& [member, isProtected] : rows)
    {
        EXPECT_EQ(Read(Registry(Attribute("A", member))).Registry.Attributes.front().IsProtected, isProtected)
            << member;
    }
}

TEST(AttributeRegistry, TextsThatAreNoRegistryAreRefusedWithTheCause)
{
    const std::pair<std::string, const char*> rows[] = {
        {"", "no JSON"},
        {"{", "no JSON"},
        {"{} trailing", "no JSON"},
        {"\xff", "no JSON"},
        {"null", "no JSON object"},
        {"[]", "no JSON object"},
        {"7", "no JSON object"},
        {"{}", "no object \"RegistryEntries\""},
        {R"({"RegistryEntries":[]})", "no object \"RegistryEntries\""},
        {R"({"RegistryEntries":{}})", "no array \"Attributes\""},
        {R"({"RegistryEntries":{"Attributes":{}}})", "no array \"Attributes\""},
        {std::string(100'000, '['), "nested deeper than 32 levels"},
    };
    for (const auto& [text, cause] : rows)
    {
        const ReadOutcome outcome = Read(text);
        EXPECT_FALSE(outcome.Succeeded) << text.substr(0, 50);
        EXPECT_THAT(outcome.Error, HasSubstr(cause)) << text.substr(0, 50);
    }
}

TEST(AttributeRegistry, DepthIsCapped)
{
    const auto nested = [](std::size_t depth)
    {
        // The three levels around an attribute, the attribute itself, then the arrays.
        return Registry(Attribute("A", ",\"X\":" + std::string(depth, '[') + std::string(depth, ']')));
    };
    EXPECT_TRUE(Read(nested(MaxRegistryDepth - 4)).Succeeded);
    const ReadOutcome deeper = Read(nested(MaxRegistryDepth - 3));
    EXPECT_FALSE(deeper.Succeeded);
    EXPECT_EQ(deeper.Error, "it is nested deeper than 32 levels.");
}

TEST(AttributeRegistry, SizeIsCapped)
{
    std::string text = Registry(Attribute("A"));
    text.resize(MaxRegistryBytes, ' ');
    EXPECT_TRUE(Read(text).Succeeded);
    const ReadOutcome larger = Read(text + ' ');
    EXPECT_FALSE(larger.Succeeded);
    EXPECT_EQ(larger.Error, "it is larger than 134217728 bytes.");
}

TEST(AttributeRegistry, MenusAndDependenciesAboveTheCapAreLeftOutWithANote)
{
    // What is no menu and no dependency counts as well: the work is what is capped.
    const auto elements = [](std::size_t count, const std::string& last)
    {
        std::string list;
        for (std::size_t index = 0; index < count; ++index)
        {
            list += "{},";
        }
        return "[" + list + last + "]";
    };
    const auto read = [&](std::size_t menus, std::size_t dependencies)
    {
        const std::string menu = R"({"MenuName":"Last","MenuPath":"./Last"})";
        const std::string dependency = Dependency(Term("A", "EQU", "1", "AND"), "A", "ReadOnly", "true");
        return Read(R"({"RegistryEntries":{"Menus":)" + elements(menus, menu) + R"(,"Attributes":[)" + Attribute("A") +
                    R"(],"Dependencies":)" + elements(dependencies, dependency) + "}}");
    };
    const ReadOutcome atCap = read(MaxRegistryMenus - 1, MaxRegistryDependencies - 1);
    EXPECT_EQ(atCap.Registry.Menus.size(), 1U);
    EXPECT_EQ(atCap.Registry.Dependencies.size(), 1U);
    const ReadOutcome above = read(MaxRegistryMenus, MaxRegistryDependencies);
    EXPECT_TRUE(above.Registry.Menus.empty());
    EXPECT_TRUE(above.Registry.Dependencies.empty());
    // One more empty element of each kind, and a note for each cap.
    EXPECT_EQ(above.Notes.More, atCap.Notes.More + 4);
}

TEST(AttributeRegistry, LongMenusAboveTheCapCostNoMoreThanTheirLength)
{
    std::string menus;
    for (std::size_t index = 0; index < MaxRegistryMenus; ++index)
    {
        menus += "{},";
    }
    const std::string longMenu = R"({"MenuName":")" + std::string(20'000, 'x') + "\"}";
    for (int index = 0; index < 100; ++index)
    {
        menus += longMenu + (index < 99 ? "," : "");
    }
    const ReadOutcome outcome = Read(Registry(Attribute("A"), "", menus));
    ASSERT_TRUE(outcome.Succeeded) << outcome.Error;
    EXPECT_TRUE(outcome.Registry.Menus.empty());
    EXPECT_EQ(outcome.Registry.Attributes.size(), 1U);
}

TEST(AttributeRegistry, ValuesWithoutANameAreCounted)
{
    const ReadOutcome outcome = Read(
        Registry(Typed("A", "Enumeration", R"(,"Value":[7,{"ValueName":"X"},{},{"ValueDisplayName":"d"},null,[]])")));
    ASSERT_TRUE(outcome.Succeeded) << outcome.Error;
    const std::string note = "Attribute \"A\" has a value without a name.";
    EXPECT_THAT(outcome.Notes.Lines, ElementsAre(note, note, note, note, note));
    ASSERT_EQ(outcome.Registry.Attributes[0].ValueNames.size(), 1U);
    EXPECT_EQ(outcome.Registry.Attributes[0].ValueNames[0].Name, "X");
}

TEST(AttributeRegistry, AttributesAboveTheCapAreLeftOutWithANote)
{
    std::string attributes = R"({"AttributeName":"N0"})";
    for (std::size_t index = 1; index < MaxRegistryAttributes; ++index)
    {
        attributes += R"(,{"AttributeName":"N)" + std::to_string(index) + "\"}";
    }
    const ReadOutcome atCap = Read(Registry(attributes));
    EXPECT_EQ(atCap.Registry.Attributes.size(), MaxRegistryAttributes);
    EXPECT_TRUE(atCap.Notes.Lines.empty());
    const ReadOutcome above = Read(Registry(attributes + R"(,{"AttributeName":"One more"})"));
    EXPECT_EQ(above.Registry.Attributes.size(), MaxRegistryAttributes);
    EXPECT_EQ(above.Notes.Lines.size(), 1U);
}

TEST(AttributeRegistry, NotesAreCountedAboveTheFirstFifty)
{
    std::string attributes = "1";
    for (int index = 1; index < 60; ++index)
    {
        attributes += ",1";
    }
    const ReadOutcome outcome = Read(Registry(attributes));
    EXPECT_EQ(outcome.Notes.Lines.size(), 50U);
    EXPECT_EQ(outcome.Notes.More, 10U);
}

TEST(AttributeRegistry, AConditionMayHaveAsManyTermsAsTheCap)
{
    std::string terms = Term("A", "EQU", "1");
    for (std::size_t index = 1; index < MaxDependencyTerms; ++index)
    {
        terms += "," + Term("A", "EQU", "1", "AND");
    }
    const ReadOutcome outcome = Read(Registry(Attribute("A"), Dependency(terms, "A", "ReadOnly", "true")));
    ASSERT_EQ(outcome.Registry.Dependencies.size(), 1U);
    EXPECT_EQ(outcome.Registry.Dependencies.front().Terms.size(), MaxDependencyTerms);
}

TEST(AttributeRegistry, DependenciesThatCannotBeUnderstoodAreSkippedWithANote)
{
    const std::string good = Term("A", "EQU", "1");
    std::string terms65 = good;
    for (int index = 1; index < 65; ++index)
    {
        terms65 += "," + Term("A", "EQU", "1", "AND");
    }
    const std::pair<std::string, const char*> rows[] = {
        {Dependency(good, "Nobody", "ReadOnly", "true"), "no such attribute or menu"},
        {Dependency(good, "A", "Colour", "true"), "no property"},
        {Dependency(good, "A", "ReadOnly", "5"), "does not suit"},
        {Dependency(good, "A", "ReadOnly", "null"), "does not suit"},
        {Dependency(good, "A", "LowerBound", "\"low\""), "does not suit"},
        {Dependency(good, "A", "HelpText", "5"), "does not suit"},
        {Dependency(good, "A", "CurrentValue", "{}"), "does not suit"},
        {Dependency(good, "M", "LowerBound", "5"), "a menu has no such property"},
        {Dependency("", "A", "ReadOnly", "true"), "no terms or too many"},
        {Dependency(terms65, "A", "ReadOnly", "true"), "no terms or too many"},
        {Dependency(Term("A", "LIKE", "1"), "A", "ReadOnly", "true"), "cannot be understood"},
        {Dependency(Term("A", "EQU", "[]"), "A", "ReadOnly", "true"), "cannot be understood"},
        {Dependency("7", "A", "ReadOnly", "true"), "cannot be understood"},
        {Dependency(good + ",7", "A", "ReadOnly", "true"), "cannot be understood"},
        {R"({"Type":"Jump","Dependency":{}})", "no \"Map\""},
        {R"({"Type":"Map","Dependency":[]})", "no \"Map\""},
        {R"({"Type":"Map"})", "no \"Map\""},
        {"[]", "is no object"},
    };
    for (const auto& [dependency, cause] : rows)
    {
        const ReadOutcome outcome = Read(Registry(Attribute("A"), dependency, Menu("M", "./M", "Menu")));
        EXPECT_TRUE(outcome.Registry.Dependencies.empty()) << dependency;
        EXPECT_THAT(outcome.Notes.Lines, ElementsAre(HasSubstr(cause))) << dependency;
    }
}

TEST(AttributeRegistry, AnEmptyNameMeansNoMenuAndNoAttribute)
{
    const std::string term = Term("A", "EQU", "1");
    for (const std::string& registry :
         {Registry(Attribute("A"), Dependency(term, "", "ReadOnly", "true"), R"({"MenuPath":"./"})"),
          Registry(Attribute("A"), Dependency(term, "", "ReadOnly", "true"), R"({"MenuPath":"./"},{"MenuPath":"./"})"),
          Registry(Attribute("A") + "," + Attribute(""), Dependency(term, "", "ReadOnly", "true"))})
    {
        const ReadOutcome outcome = Read(registry);
        EXPECT_THAT(outcome.Registry.Dependencies, IsEmpty()) << registry;
        EXPECT_THAT(outcome.Notes.Lines, Contains(HasSubstr("no such attribute or menu"))) << registry;
    }
    const ReadOutcome outcome =
        Read(Registry(Attribute("A") + "," + Attribute(""), Dependency(Term("", "EQU", "1"), "A", "ReadOnly", "true")));
    ASSERT_EQ(outcome.Registry.Dependencies.size(), 1U);
    EXPECT_EQ(outcome.Registry.Dependencies.front().Terms.front().Attribute, NoIndex);
}

TEST(AttributeRegistry, LongNamesOfMenusAreCut)
{
    const ReadOutcome outcome = Read(Registry(Attribute("A"), "",
                                              Menu("M", "./M", std::string(127, 'x') + "\u00e9" + "yyy") + "," +
                                                  Menu("N", "./N", std::string(128, 'x'))));
    ASSERT_EQ(outcome.Registry.Menus.size(), 2U);
    EXPECT_EQ(outcome.Registry.Menus[0].DisplayName, std::string(127, 'x') + "...");
    EXPECT_EQ(outcome.Registry.Menus[1].DisplayName, std::string(128, 'x'));
}

TEST(AttributeRegistry, TheNameOfAMenuThatIsLeftOutMeansTheOneOfItsPath)
{
    const ReadOutcome outcome = Read(
        Registry(Attribute("A"), Dependency(Term("A", "EQU", "1"), "Again", "GrayOut", "true"),
                 Menu("Root", "./", "All") + "," + Menu("Top", "./Top", "Top") + "," + Menu("Again", "/Top", "Again")));
    ASSERT_EQ(outcome.Registry.Menus.size(), 2U);
    ASSERT_EQ(outcome.Registry.Dependencies.size(), 1U);
    EXPECT_EQ(outcome.Registry.Dependencies.front().Menu, 1U);
}

TEST(AttributeRegistry, MenusAreReadParentsFirst)
{
    const ReadOutcome outcome =
        Read(Registry(Attribute("A", R"(,"MenuPath":"./Top/Deep/Unknown/")"), "",
                      Menu("Deep", "./Top/Deep/", "Deep one", R"(,"Hidden":true,"GrayOut":true)") + "," +
                          Menu("Top", "./Top", "") + "," + Menu("Again", "/Top", "Again") + "," +
                          Menu("Root", "./", "All", R"(,"ReadOnly":true)") + R"(,7,{"MenuName":"Pathless"})"));
    const std::vector<RegistryMenu>& menus = outcome.Registry.Menus;
    ASSERT_EQ(menus.size(), 3U);
    EXPECT_EQ(menus[0].DisplayName, "All");
    EXPECT_EQ(menus[1].DisplayName, "Top") << "the menu's name stands in for a missing display name";
    EXPECT_EQ(menus[2].DisplayName, "Deep one");
    EXPECT_EQ(menus[0].Parent, NoIndex);
    EXPECT_EQ(menus[1].Parent, 0U);
    EXPECT_EQ(menus[2].Parent, 1U);
    EXPECT_THAT(menus[0].Flags, ElementsAre(true, false, false, false, false));
    EXPECT_THAT(menus[2].Flags, ElementsAre(false, false, true, true, false));
    EXPECT_EQ(outcome.Registry.Attributes.front().Menu, 2U);
    EXPECT_FALSE(outcome.Registry.Attributes.front().MenuIsKnown);
    EXPECT_EQ(outcome.Notes.Lines.size(), 3U);
}

TEST(NormalisedMenuPath, DropsDotsAndEmptyParts)
{
    const std::pair<const char*, const char*> rows[] = {
        {"", ""},         {".", ""},
        {"./", ""},       {"/", ""},
        {"././", ""},     {"./A", "A"},
        {"./A/", "A"},    {"/A", "A"},
        {"A", "A"},       {"./A//B///", "A/B"},
        {"A/./B", "A/B"}, {"./A b/C.d", "A b/C.d"},
        {"..", ".."},
    };
    for (const auto& [path, normalised] : rows)
    {
        EXPECT_EQ(NormalisedMenuPath(path), normalised) << path;
    }
}
