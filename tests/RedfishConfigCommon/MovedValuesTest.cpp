// A manager whose values move one after the other says the same as one that has them from the start.
#include <array>
#include <string>
#include <tuple>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "RedfishConfigSettingManager.h"
#include "RegistryTexts.h"

using namespace Tavrine;
using namespace registrytext;

namespace
{

constexpr std::size_t Settings = 6;
constexpr std::array Properties = {"ReadOnly", "GrayOut",   "Hidden",       "CurrentValue",
                                   "HelpText", "MaxLength", "DefaultValue", "DisplayName"};
constexpr std::array Conditions = {"EQU", "NEQ", "GTR", "LEQ"};

std::string Name(std::size_t number) { return "Setting" + std::to_string(number); }

std::size_t Below(std::size_t end) { return *rc::gen::inRange<std::size_t>(0, end); }

std::string AnyTerm(bool first)
{
    const std::string property = Below(4) == 0 ? Properties[Below(Properties.size())] : "CurrentValue";
    return Term(Name(Below(Settings)), Conditions[Below(Conditions.size())], "\"" + std::to_string(Below(3)) + "\"",
                first      ? ""
                : Below(2) ? "AND"
                           : "OR",
                property);
}

std::string AnyDependency()
{
    const bool onMenu = Below(5) == 0;
    const std::string property = Properties[Below(onMenu ? 3 : Properties.size())];
    const bool flag = property == "ReadOnly" || property == "GrayOut" || property == "Hidden";
    const std::string value = flag                      ? (Below(4) == 0 ? "false" : "true")
                              : property == "MaxLength" ? std::to_string(Below(9))
                                                        : "\"" + std::to_string(Below(3)) + "\"";
    const std::string terms = AnyTerm(true) + (Below(2) ? "," + AnyTerm(false) : "");
    return Dependency(terms, onMenu ? "Menu" : Name(Below(Settings)), property, value);
}

std::string AnyRegistry()
{
    std::string attributes;
    for (std::size_t number = 0; number < Settings; ++number)
    {
        attributes += (attributes.empty() ? "" : ",") +
                      Attribute(Name(number), Below(2) ? R"(,"MenuPath":"./M","CurrentValue":"1")" : "");
    }
    std::string dependencies;
    for (std::size_t count = Below(8); count > 0; --count)
    {
        dependencies += (dependencies.empty() ? "" : ",") + AnyDependency();
    }
    return Registry(attributes, dependencies, Menu("Menu", "./M", "Em"));
}

/// All that dependencies can shape.
auto Shape(RedfishConfigSettingManager& manager, const std::string& name)
{
    RedfishConfigSettingInfoStru info;
    const RedfishConfigResult result = manager.GetSettingProperties(name, info);
    return std::tuple(result.ErrorCode(), info.ReadOnly, info.GrayOut, info.Hidden, info.MaxLength, info.HelpText,
                      info.DisplayName, info.DefaultValue, info.CurrentValue, info.ForcedBy);
}

} // namespace

RC_GTEST_PROP(MovedValues, LeaveNoTraceOfWhatWasThereBefore, ())
{
    const std::string schema = AnyRegistry();
    RedfishConfigSettingManager moved(schema, false, Config_Options());
    SettingValueMap values;
    for (std::size_t step = 1 + Below(6); step > 0; --step)
    {
        SettingValueMap change;
        for (std::size_t count = Below(4); count > 0; --count)
        {
            // The BMC may write a name in another case than the registry.
            const std::string name = (Below(6) == 0 ? "SETTING" : "Setting") + std::to_string(Below(Settings));
            change[name] = Below(6) == 0 ? OptionalVar() : OptionalVar(std::to_string(Below(3)));
        }
        for (const auto& [name, value] : change)
        {
            values[name] = value;
        }
        moved.UpdateSettingValue(change);
        RedfishConfigSettingManager fresh(schema, values, false, Config_Options());
        for (std::size_t number = 0; number < Settings; ++number)
        {
            RC_ASSERT(Shape(moved, Name(number)) == Shape(fresh, Name(number)));
        }
        SettingStringMap wanted = {{Name(Below(Settings)), "2"}, {Name(Below(Settings)), "0"}};
        SettingStringMap contexts;
        SettingStringMap freshContexts;
        const int code = moved.PreparePatchContext(wanted, contexts, FilterChange).ErrorCode();
        RC_ASSERT(code == fresh.PreparePatchContext(wanted, freshContexts, FilterChange).ErrorCode());
        RC_ASSERT(contexts == freshContexts);
    }
}

TEST(MovedValues, ManyAtOnceAreAsGoodAsOneByOne)
{
    constexpr std::size_t many = 400;
    std::string attributes;
    std::string dependencies;
    for (std::size_t number = 0; number < many; ++number)
    {
        attributes += (number == 0 ? "" : ",") + Attribute(Name(number));
        dependencies += (number == 0 ? "" : ",") +
                        Dependency(Term(Name(number), "EQU", "\"1\""), Name((number + 1) % many), "ReadOnly", "true");
    }
    RedfishConfigSettingManager manager(Registry(attributes, dependencies), false, Config_Options());
    for (const std::size_t count : {std::size_t{3}, many, std::size_t{5}})
    {
        for (const char* value : {"1", "0"})
        {
            SettingValueMap values;
            for (std::size_t number = 0; number < count; ++number)
            {
                values[Name(number)] = value;
            }
            manager.UpdateSettingValue(values);
            for (std::size_t number = 0; number < many; ++number)
            {
                RedfishConfigSettingInfoStru info;
                ASSERT_EQ(manager.GetSettingProperties(Name((number + 1) % many), info).ErrorCode(), 0);
                ASSERT_EQ(info.ReadOnly, number < count && std::string(value) == "1") << number << " of " << count;
            }
        }
    }
}
