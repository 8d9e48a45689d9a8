#include "AttributeRules.h"

#include "Fixture.h"

namespace
{

using namespace bmctest;
using bmcsim::AttributeRules;
using bmcsim::Machine;
using bmcsim::RulesNow;

/// Rules of a registry text, over values.
class RulesTest : public testing::Test
{
  protected:
    void Load(const std::string& registry)
    {
        m_Machine = Machine();
        m_Machine.Bios = json::object{{"AttributeRegistry", "R.v1_0_0"}};
        m_Machine.Resources["/redfish/v1/Registries/R.json"] =
            Parse("{\"Id\":\"R.v1_0_0\",\"RegistryEntries\":" + registry + "}").as_object();
        m_Rules = std::make_unique<AttributeRules>(m_Machine);
    }
    RulesNow Now(const std::string& values)
    {
        m_Values = Parse(values).as_object();
        return RulesNow(*m_Rules, [this](std::string_view name) { return m_Values.if_contains(name); });
    }
    /// A registry of attributes A and B, with B's GrayOut depending on A.
    void LoadTerm(const std::string& condition, const std::string& value)
    {
        Load(R"({"Attributes":[{"AttributeName":"A"},{"AttributeName":"B"}],"Dependencies":[{"Dependency":{
            "MapFrom":[{"MapFromAttribute":"A","MapFromProperty":"CurrentValue","MapFromCondition":")" +
             condition + R"(","MapFromValue":)" + value +
             R"(}],"MapToAttribute":"B","MapToProperty":"GrayOut","MapToValue":true}}]})");
    }

    Machine m_Machine;
    std::unique_ptr<AttributeRules> m_Rules;
    json::object m_Values;
};

TEST_F(RulesTest, ConditionsCompareAcrossKinds)
{
    struct Case
    {
        const char* Condition;
        const char* Value;
        const char* Current;
        bool Holds;
    };
    for (const auto& [condition, value, current, holds] : {
             Case{"EQU", "\"x\"", "\"x\"", true},
             {"EQU", "\"x\"", "\"X\"", false},
             {"EQU", "\"0\"", "0", true},
             {"EQU", "0", "\"0\"", true},
             {"EQU", "\"true\"", "true", true},
             {"EQU", "true", "false", false},
             {"EQU", "null", "null", true},
             {"EQU", "null", "1", false},
             {"NEQ", "null", "1", true},
             {"NEQ", "1", "2", true},
             {"NEQ", "1", "1", false},
             {"NEQ", "1", "null", false},
             {"GTR", "5", "6", true},
             {"GTR", "5", "5", false},
             {"GTR", "\"5\"", "10", true},
             {"GEQ", "5", "5", true},
             {"LSS", "5", "-1", true},
             {"LSS", "5", "5", false},
             {"LEQ", "18446744073709551614", "18446744073709551615", false},
             {"LEQ", "18446744073709551615", "18446744073709551615", true},
             {"LEQ", "5", "\"low\"", false},
             {"XXX", "5", "5", false},
         })
    {
        LoadTerm(condition, value);
        const RulesNow now = Now(std::string("{\"A\":") + current + "}");
        EXPECT_EQ(now.Flag("B", "GrayOut"), holds) << condition << ' ' << value << ' ' << current;
        EXPECT_EQ(now.IsWritable("B"), !holds);
    }
    LoadTerm("NEQ", "1");
    EXPECT_TRUE(Now("{}").IsWritable("B")) << "of a missing value nothing can be said";
}

TEST_F(RulesTest, EachLockOfTheRegistryMakesReadOnly)
{
    for (const char* lock : {"ReadOnly", "Immutable", "GrayOut", "Hidden"})
    {
        Load(std::string(R"({"Attributes":[{"AttributeName":"A",")") + lock + R"(":true},{"AttributeName":"B",")" +
             lock + R"(":false},{"AttributeName":"C"}]})");
        const RulesNow now = Now("{}");
        EXPECT_FALSE(now.IsWritable("A")) << lock;
        EXPECT_TRUE(now.IsWritable("B")) << lock;
        EXPECT_TRUE(now.IsWritable("C")) << lock;
    }
}

TEST_F(RulesTest, LocksOfMenusReachWhatIsInThem)
{
    Load(R"({"Menus":[{"MenuName":"M","MenuPath":"./Top/Inner","Hidden":true}],
        "Attributes":[{"AttributeName":"A","MenuPath":"./Top/Inner"},{"AttributeName":"B","MenuPath":"./Top/Inner/Deep"},
        {"AttributeName":"C","MenuPath":"./Top"},{"AttributeName":"D","MenuPath":"./Top/InnerOther"},
        {"AttributeName":"E"}]})");
    const RulesNow now = Now("{}");
    EXPECT_FALSE(now.IsWritable("A"));
    EXPECT_FALSE(now.IsWritable("B"));
    EXPECT_TRUE(now.IsWritable("C"));
    EXPECT_TRUE(now.IsWritable("D"));
    EXPECT_TRUE(now.IsWritable("E"));
}

TEST_F(RulesTest, DependenciesCanNameMenus)
{
    Load(R"({"Menus":[{"MenuName":"M","MenuPath":"./M"}],"Attributes":[{"AttributeName":"A"},
        {"AttributeName":"B","MenuPath":"./M"}],"Dependencies":[{"Dependency":{"MapFrom":[{"MapFromAttribute":"A",
        "MapFromProperty":"CurrentValue","MapFromCondition":"EQU","MapFromValue":1}],"MapToAttribute":"M",
        "MapToProperty":"GrayOut","MapToValue":true}}]})");
    EXPECT_FALSE(Now(R"({"A":1})").IsWritable("B"));
    EXPECT_TRUE(Now(R"({"A":2})").IsWritable("B"));
}

TEST_F(RulesTest, TermsAreJoinedFromTheLeft)
{
    const auto load = [this](const char* second, const char* third)
    {
        std::string terms;
        for (const auto& [name, join] : {std::pair{"A", ""}, {"B", second}, {"C", third}})
        {
            terms += std::string(terms.empty() ? "" : ",") + R"({"MapTerms":")" + join + R"(","MapFromAttribute":")" +
                     name + R"(","MapFromProperty":"CurrentValue","MapFromCondition":"EQU","MapFromValue":1})";
        }
        Load(R"({"Attributes":[{"AttributeName":"T"}],"Dependencies":[{"Dependency":{"MapFrom":[)" + terms +
             R"(],"MapToAttribute":"T","MapToProperty":"ReadOnly","MapToValue":true}}]})");
    };
    load("AND", "OR");
    EXPECT_FALSE(Now(R"({"A":0,"B":0,"C":1})").IsWritable("T"));
    EXPECT_TRUE(Now(R"({"A":1,"B":0,"C":0})").IsWritable("T"));
    load("OR", "AND");
    EXPECT_TRUE(Now(R"({"A":1,"B":0,"C":0})").IsWritable("T"));
    EXPECT_FALSE(Now(R"({"A":1,"B":0,"C":1})").IsWritable("T"));
}

TEST_F(RulesTest, ConditionsOnFlagsAndCirclesEnd)
{
    Load(R"({"Attributes":[{"AttributeName":"A"},{"AttributeName":"B"},
        {"AttributeName":"C","Hidden":false}],"Dependencies":[
        {"Dependency":{"MapFrom":[{"MapFromAttribute":"A","MapFromProperty":"CurrentValue","MapFromCondition":"EQU",
            "MapFromValue":1}],"MapToAttribute":"A","MapToProperty":"GrayOut","MapToValue":true}},
        {"Dependency":{"MapFrom":[{"MapFromAttribute":"A","MapFromProperty":"GrayOut","MapFromCondition":"EQU",
            "MapFromValue":true}],"MapToAttribute":"B","MapToProperty":"GrayOut","MapToValue":true}},
        {"Dependency":{"MapFrom":[{"MapFromAttribute":"C","MapFromProperty":"Hidden","MapFromCondition":"EQU",
            "MapFromValue":false}],"MapToAttribute":"C","MapToProperty":"Hidden","MapToValue":true}}]})");
    const RulesNow gray = Now(R"({"A":1})");
    EXPECT_FALSE(gray.IsWritable("B"));
    EXPECT_TRUE(Now(R"({"A":0})").IsWritable("B"));
    // Each round turns it over, and the last one is even.
    EXPECT_FALSE(gray.Flag("C", "Hidden"));
    EXPECT_TRUE(gray.IsWritable("C"));
}

TEST_F(RulesTest, ADependencyLiftsALockOfTheRegistryButNotThatOfAnother)
{
    const std::string lift = R"({"Dependency":{"MapFrom":[{"MapFromAttribute":"S","MapFromProperty":"CurrentValue",
        "MapFromCondition":"GEQ","MapFromValue":1}],"MapToAttribute":"A","MapToProperty":"GrayOut","MapToValue":false}})";
    const std::string lock = R"({"Dependency":{"MapFrom":[{"MapFromAttribute":"S","MapFromProperty":"CurrentValue",
        "MapFromCondition":"EQU","MapFromValue":2}],"MapToAttribute":"A","MapToProperty":"GrayOut","MapToValue":true}})";
    for (const std::string& list : {lift + ',' + lock, lock + ',' + lift})
    {
        Load(R"({"Attributes":[{"AttributeName":"A","GrayOut":true}],"Dependencies":[)" + list + "]}");
        EXPECT_FALSE(Now(R"({"S":0})").IsWritable("A"));
        EXPECT_TRUE(Now(R"({"S":1})").IsWritable("A"));
        EXPECT_FALSE(Now(R"({"S":2})").IsWritable("A"));
    }
}

TEST_F(RulesTest, RegistriesOfNoFormAreBorne)
{
    for (const char* registry :
         {R"({"Attributes":[]})", R"({"Attributes":[1,null,{}],"Menus":{},"Dependencies":[{},{"Dependency":1},
          {"Dependency":{"MapToValue":true}},{"Dependency":{"MapFrom":[1,{}],"MapToAttribute":"A","MapToProperty":
          "GrayOut","MapToValue":true}}]})"})
    {
        Load(registry);
        EXPECT_TRUE(m_Rules->HasRegistry());
        EXPECT_TRUE(Now("{}").IsWritable("Unknown"));
    }
    m_Machine = Machine();
    EXPECT_FALSE(AttributeRules(m_Machine).HasRegistry());
}

} // namespace
