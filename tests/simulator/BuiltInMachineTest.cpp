// What the machine that is written for this project promises its users, as the
// service shows it.

#include "Fixture.h"

#include <algorithm>
#include <map>
#include <optional>
#include <regex>
#include <set>

namespace
{

using namespace bmctest;

std::string Text(const json::value& value) { return value.is_string() ? value.get_string().c_str() : ""; }

class BuiltInMachineTest : public SimulatorTest
{
  protected:
    void SetUp() override
    {
        SimulatorTest::SetUp();
        m_Bios = At(GetJson("/redfish/v1/Systems/1/Bios"), "/Attributes");
        const json::value file = GetJson("/redfish/v1/Registries/BiosAttributeRegistryZS22.v1_4_0");
        m_Registry = GetJson(Text(At(file, "/Location/0/Uri")));
        const auto answer = m_Client->Post("/redfish/v1/Systems/1/Bios/Actions/Oem/ZorvanBios.GetProtectedAttributes",
                                           "{}", "application/json");
        ASSERT_TRUE(answer);
        m_Protected = At(Parse(answer->body), "/Attributes");
        m_Attributes = At(m_Registry, "/RegistryEntries/Attributes");
        m_Menus = At(m_Registry, "/RegistryEntries/Menus");
        m_Dependencies = At(m_Registry, "/RegistryEntries/Dependencies");
        ASSERT_TRUE(m_Bios.is_object() && m_Protected.is_object());
        ASSERT_TRUE(m_Attributes.is_array() && m_Menus.is_array() && m_Dependencies.is_array());
        for (const json::value& attribute : m_Attributes.get_array())
        {
            EXPECT_TRUE(m_ByName.emplace(Text(At(attribute, "/AttributeName")), attribute).second)
                << At(attribute, "/AttributeName");
        }
    }

    static bool IsProtected(const json::value& attribute)
    {
        return At(attribute, "/Oem/Zorvan/Protected") == json::value(true);
    }
    /// The current value, wherever it is read; empty where there is none.
    std::optional<json::value> Current(const std::string& name) const
    {
        for (const json::value* values : {&m_Bios, &m_Protected})
        {
            if (const json::value* value = values->get_object().if_contains(name))
            {
                return *value;
            }
        }
        return std::nullopt;
    }

    json::value m_Bios;
    json::value m_Protected;
    json::value m_Registry;
    json::value m_Attributes;
    json::value m_Menus;
    json::value m_Dependencies;
    std::map<std::string, json::value> m_ByName;
};

TEST_F(BuiltInMachineTest, HasSeveralHundredAttributesOfAllTypes)
{
    std::map<std::string, int> types;
    for (const auto& [name, attribute] : m_ByName)
    {
        ++types[Text(At(attribute, "/Type"))];
    }
    EXPECT_GE(m_ByName.size(), 350U);
    EXPECT_EQ(types.size(), 5U);
    for (const auto& [type, least] : std::map<std::string, int>{
             {"Enumeration", 100}, {"Integer", 50}, {"Boolean", 30}, {"String", 20}, {"Password", 3}})
    {
        EXPECT_GE(types[type], least) << type;
    }
}

TEST_F(BuiltInMachineTest, TextsAreThereAndDiffer)
{
    std::set<std::string> names;
    std::set<std::string> helps;
    for (const auto& [name, attribute] : m_ByName)
    {
        EXPECT_GT(Text(At(attribute, "/HelpText")).size(), 15U) << name;
        EXPECT_FALSE(Text(At(attribute, "/DisplayName")).empty()) << name;
        names.insert(Text(At(attribute, "/DisplayName")));
        helps.insert(Text(At(attribute, "/HelpText")));
    }
    EXPECT_EQ(names.size(), m_ByName.size());
    EXPECT_EQ(helps.size(), m_ByName.size());
}

TEST_F(BuiltInMachineTest, MenusAreThreeDeepAndHoldEveryAttribute)
{
    std::set<std::string> paths;
    std::ptrdiff_t deepest = 0;
    for (const json::value& menu : m_Menus.get_array())
    {
        const std::string path = Text(At(menu, "/MenuPath"));
        EXPECT_TRUE(paths.insert(path).second) << path;
        if (path != "./")
        {
            deepest = std::max(deepest, std::count(path.begin(), path.end(), '/'));
            const std::string parent = path.substr(0, path.rfind('/'));
            EXPECT_TRUE(paths.contains(parent == "." ? "./" : parent)) << path;
        }
    }
    EXPECT_GE(paths.size(), 25U);
    EXPECT_GE(deepest, 3);
    for (const auto& [name, attribute] : m_ByName)
    {
        EXPECT_TRUE(paths.contains(Text(At(attribute, "/MenuPath")))) << name;
    }
}

TEST_F(BuiltInMachineTest, ProtectedAttributesAreReadByTheActionAlone)
{
    std::set<std::string> marked;
    for (const auto& [name, attribute] : m_ByName)
    {
        if (IsProtected(attribute))
        {
            marked.insert(name);
            EXPECT_FALSE(m_Bios.get_object().contains(name)) << name;
        }
    }
    std::set<std::string> read;
    for (const auto& [name, value] : m_Protected.get_object())
    {
        read.insert(name);
    }
    EXPECT_GE(read.size(), 8U);
    EXPECT_EQ(read, marked);
}

/// Whether a value may stand for an attribute.
bool Fits(const json::value& attribute, const json::value& value)
{
    const std::string type = Text(At(attribute, "/Type"));
    if (type == "Enumeration")
    {
        const json::array& values = attribute.at("Value").as_array();
        return std::any_of(values.begin(), values.end(),
                           [&](const json::value& entry) { return At(entry, "/ValueName") == value; });
    }
    if (type == "Boolean")
    {
        return value.is_bool();
    }
    const json::object& object = attribute.as_object();
    const json::value* low = object.if_contains(type == "Integer" ? "LowerBound" : "MinLength");
    const json::value* high = object.if_contains(type == "Integer" ? "UpperBound" : "MaxLength");
    if (type == "Integer")
    {
        const auto wide = [](const json::value& number)
        {
            return number.is_uint64() ? static_cast<long double>(number.get_uint64())
                                      : static_cast<long double>(number.as_int64());
        };
        return (value.is_int64() || value.is_uint64()) && (low == nullptr || wide(value) >= wide(*low)) &&
               (high == nullptr || wide(value) <= wide(*high));
    }
    const std::string text = Text(value);
    const auto length = std::count_if(text.begin(), text.end(),
                                      [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; });
    const json::value* expression = object.if_contains("ValueExpression");
    return value.is_string() && length >= low->as_int64() && length <= high->as_int64() &&
           (expression == nullptr || std::regex_search(text, std::regex(Text(*expression))));
}

TEST_F(BuiltInMachineTest, DefaultsAndValuesFitTheirAttributes)
{
    for (const auto& [name, attribute] : m_ByName)
    {
        if (const json::value* fallback = attribute.as_object().if_contains("DefaultValue"))
        {
            EXPECT_TRUE(Fits(attribute, *fallback)) << name << ' ' << *fallback;
        }
        const auto current = Current(name);
        if (Text(At(attribute, "/Type")) == "Password")
        {
            EXPECT_TRUE(current && current->is_null()) << name;
        }
        else if (current && !current->is_null())
        {
            EXPECT_TRUE(Fits(attribute, *current)) << name << ' ' << *current;
        }
    }
}

TEST_F(BuiltInMachineTest, DependenciesNameAttributesAndMenus)
{
    std::set<std::string> menus;
    for (const json::value& menu : m_Menus.get_array())
    {
        menus.insert(Text(At(menu, "/MenuName")));
        EXPECT_FALSE(m_ByName.contains(Text(At(menu, "/MenuName"))));
    }
    int toMenus = 0;
    for (const json::value& dependency : m_Dependencies.get_array())
    {
        const std::string target = Text(At(dependency, "/Dependency/MapToAttribute"));
        toMenus += menus.contains(target) ? 1 : 0;
        EXPECT_TRUE(m_ByName.contains(target) || menus.contains(target)) << dependency;
        for (const json::value& from : dependency.at("Dependency").at("MapFrom").as_array())
        {
            EXPECT_TRUE(m_ByName.contains(Text(At(from, "/MapFromAttribute")))) << dependency;
        }
    }
    EXPECT_GE(toMenus, 1);
}

TEST_F(BuiltInMachineTest, DependenciesAreOfEveryKind)
{
    std::set<std::string> properties;
    std::set<std::string> conditions;
    std::set<std::string> terms;
    for (const json::value& dependency : m_Dependencies.get_array())
    {
        properties.insert(Text(At(dependency, "/Dependency/MapToProperty")));
        for (const json::value& from : dependency.at("Dependency").at("MapFrom").as_array())
        {
            conditions.insert(Text(At(from, "/MapFromCondition")));
            terms.insert(Text(At(from, "/MapTerms")));
        }
    }
    EXPECT_GE(m_Dependencies.get_array().size(), 60U);
    EXPECT_EQ(conditions, (std::set<std::string>{"EQU", "NEQ", "GTR", "LSS", "GEQ", "LEQ"}));
    EXPECT_EQ(terms, (std::set<std::string>{"", "AND", "OR"}));
    for (const char* property :
         {"ReadOnly", "GrayOut", "Hidden", "WriteOnly", "Immutable", "CurrentValue", "DefaultValue", "LowerBound",
          "UpperBound", "MinLength", "MaxLength", "ScalarIncrement", "DisplayName", "HelpText", "WarningText",
          "ValueExpression", "DisplayOrder"})
    {
        EXPECT_TRUE(properties.contains(property)) << property;
    }
}

TEST_F(BuiltInMachineTest, TwoDependenciesFormACycle)
{
    std::set<std::pair<std::string, std::string>> links;
    for (const json::value& dependency : m_Dependencies.get_array())
    {
        for (const json::value& from : dependency.at("Dependency").at("MapFrom").as_array())
        {
            links.emplace(Text(At(from, "/MapFromAttribute")), Text(At(dependency, "/Dependency/MapToAttribute")));
        }
    }
    EXPECT_TRUE(links.contains({"BootMode", "SecureBoot"}));
    EXPECT_TRUE(links.contains({"SecureBoot", "BootMode"}));
}

TEST_F(BuiltInMachineTest, HasTheOdditiesOfRealMachines)
{
    int withoutValue = 0;
    int nullText = 0;
    int unregistered = 0;
    int negativeBound = 0;
    int largeBound = 0;
    int anyStep = 0;
    int withoutStep = 0;
    int slashed = 0;
    int foreignText = 0;
    int foreignName = 0;
    const auto isForeign = [](const std::string& text)
    { return std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; }); };
    for (const auto& [name, attribute] : m_ByName)
    {
        const std::string type = Text(At(attribute, "/Type"));
        const auto current = Current(name);
        withoutValue += current ? 0 : 1;
        nullText += type == "String" && current && current->is_null() ? 1 : 0;
        foreignText += type == "String" && current && isForeign(Text(*current)) ? 1 : 0;
        foreignName += isForeign(Text(At(attribute, "/DisplayName"))) ? 1 : 0;
        const json::value low = At(attribute, "/LowerBound");
        negativeBound += low.is_int64() && low.get_int64() < 0 ? 1 : 0;
        largeBound += At(attribute, "/UpperBound") == json::value(std::uint64_t{18446744073709551615U}) ? 1 : 0;
        anyStep += At(attribute, "/ScalarIncrement") == json::value(0) ? 1 : 0;
        withoutStep += type == "Integer" && !attribute.as_object().contains("ScalarIncrement") ? 1 : 0;
        slashed += type == "Enumeration" && Fits(attribute, "CD/DVD") ? 1 : 0;
    }
    for (const auto& [name, value] : m_Bios.get_object())
    {
        unregistered += m_ByName.contains(name) ? 0 : 1;
    }
    EXPECT_GE(withoutValue, 3);
    EXPECT_GE(nullText, 1);
    EXPECT_EQ(unregistered, 1);
    EXPECT_GE(negativeBound, 3);
    EXPECT_GE(largeBound, 1);
    EXPECT_GE(anyStep, 1);
    EXPECT_GE(withoutStep, 1);
    EXPECT_GE(slashed, 1);
    EXPECT_GE(foreignText, 1);
    EXPECT_GE(foreignName, 1);
    EXPECT_EQ(At(m_Bios, "/DiagnosticSeed"), std::int64_t{81985529216486895});
}

TEST_F(BuiltInMachineTest, HasTheSettingThatLoadsDefaults)
{
    const json::value& attribute = m_ByName["SystemRecovery_PostLoadSetupDefault"];
    EXPECT_TRUE(Fits(attribute, "Enabled"));
    EXPECT_EQ(At(m_Bios, "/SystemRecovery_PostLoadSetupDefault"), "Disabled");
}

} // namespace
