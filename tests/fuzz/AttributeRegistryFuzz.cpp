// Attribute registries: any text is a registry or code 27; of a registry every attribute is
// found, stands in one group, and takes new values as valid JSON that holds them unchanged.
#include <algorithm>
#include <set>

#include "Dependencies.h"
#include "Oracle.h"
#include "PlainJson.h"
#include "RedfishConfigSettingManager.h"
#include "SettingModel.h"
#include "ValueConversions.h"

using namespace fuzztest;
using namespace Tavrine;

namespace
{

using Kind = PlainJson::Kind;

/// No message repeats a value that was refused.
constexpr const char* SecretValue = "Zq7!unspoken";
constexpr std::size_t MostLooks = 12;

/// The names by another reader, in the order of the registry; nothing for a text that is
/// no registry.
std::optional<std::vector<std::string>> AttributeNames(const std::optional<PlainJson>& plain)
{
    const PlainJson* const entries = plain ? plain->Find("RegistryEntries") : nullptr;
    const std::vector<PlainJson>* const attributes =
        entries != nullptr && entries->Is == Kind::Object ? entries->ArrayOf("Attributes") : nullptr;
    if (attributes == nullptr)
    {
        return std::nullopt;
    }
    std::vector<std::string> names;
    std::set<std::string> seen;
    for (const PlainJson& attribute : *attributes)
    {
        const PlainJson* const name = attribute.Find("AttributeName");
        if (name != nullptr && name->Is == Kind::String && seen.insert(name->Text).second)
        {
            names.push_back(name->Text);
        }
    }
    return names;
}

SettingValueMap Values(std::string_view text)
{
    SettingValueMap values;
    bool doubtful = false;
    const std::optional<PlainJson> plain = ReadPlainJson(text, doubtful);
    for (const auto& [name, value] : plain ? plain->Members : decltype(plain->Members)())
    {
        values[name] = value.Is == Kind::String    ? OptionalVar(value.Text)
                       : value.Is == Kind::Integer ? OptionalVar(value.Whole)
                       : value.Is == Kind::Boolean ? OptionalVar(value.Flag)
                                                   : OptionalVar();
    }
    return values;
}

/// The JSON text holds the very value that was asked for.
void CheckContext(const std::string& context, const std::string& wanted)
{
    bool doubtful = false;
    const std::optional<PlainJson> plain = ReadPlainJson(context, doubtful);
    FUZZ_REQUIRE(plain, context);
    const bool plus = wanted.starts_with('+');
    switch (plain->Is)
    {
    case Kind::String:
        FUZZ_REQUIRE(plain->Text == wanted, context + " for " + wanted);
        break;
    case Kind::Boolean:
        FUZZ_REQUIRE(Lowered(wanted) == (plain->Flag ? "true" : "false"), context + " for " + wanted);
        break;
    default:
    {
        // Leading zeros, a plus and a minus before zero mean nothing.
        const bool negative = wanted.starts_with('-');
        std::string digits = wanted.substr(plus || negative ? 1 : 0);
        digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
        FUZZ_REQUIRE(context == (negative && digits != "0" ? "-" : "") + digits, context + " for " + wanted);
    }
    }
}

struct Subject
{
    RedfishConfigSettingManager& Manager;
    std::string_view Registry;
};

/// @return whether it was taken.
bool CheckChange(const Subject& subject, const std::string& name, const std::string& value)
{
    std::string context = "untouched";
    RedfishConfigResult result = subject.Manager.PreparePatchContext(name, value, context, FilterChange);
    if (result == 0)
    {
        FUZZ_REQUIRE(subject.Manager.GetError().empty(), name);
        CheckContext(context, value);
        return true;
    }
    FUZZ_REQUIRE(result == 10 || result == 18, std::to_string(result));
    FUZZ_REQUIRE(context == "untouched" && subject.Manager.GetError().size() == 1, name);
    FUZZ_REQUIRE(result.ErrorSetting() == name, name);
    FUZZ_REQUIRE(value != SecretValue || subject.Registry.find(SecretValue) != std::string_view::npos ||
                     result.ErrorMsg().find(SecretValue) == std::string::npos,
                 result.ErrorMsg());
    return false;
}

void CheckSetting(const Subject& subject, const std::string& name, const std::string& value)
{
    RedfishConfigSettingInfoStru info;
    FUZZ_REQUIRE(subject.Manager.GetSettingProperties(name, info) == 0 && info.AttributeKey == name, name);
    std::string text = "untouched";
    RedfishConfigResult result = subject.Manager.QuerySettingValidValues(name, text);
    FUZZ_REQUIRE(result == 0 || (result == 22 && text == "untouched"), name);
    FUZZ_REQUIRE(subject.Manager.QuerySettingDescription(name, text) == 0, name);
    CheckChange(subject, name, SecretValue);
    CheckChange(subject, name, value);
    for (const auto& [valueName, display] : info.ValueNames)
    {
        const bool plain =
            info.SettingType == "Enumeration" && !info.ReadOnly && !info.Hidden && !info.GrayOut && !info.Immutable;
        FUZZ_REQUIRE(CheckChange(subject, name, valueName) || !plain, name + "=" + valueName);
    }
    text = "untouched";
    result = subject.Manager.QuerySettingDefaultValue(name, text);
    FUZZ_REQUIRE(result == 0 || (result == 21 && text == "untouched"), name);
    std::string context;
    if (result == 0 && subject.Manager.PreparePatchContext(name, text, context, FilterDefaultOne) == 0)
    {
        CheckContext(context, text);
    }
}

void CheckGroups(RedfishConfigSettingManager& manager, const std::vector<std::string>& names)
{
    SettingGroupMap groups;
    manager.GetGroupList(groups);
    std::vector<std::string> grouped;
    for (const auto& [group, members] : groups)
    {
        grouped.insert(grouped.end(), members.begin(), members.end());
    }
    std::vector<std::string> all = names;
    std::sort(all.begin(), all.end());
    std::sort(grouped.begin(), grouped.end());
    FUZZ_REQUIRE(grouped == all, "each attribute in exactly one group");
}

void CheckBatch(RedfishConfigSettingManager& manager, const SettingStringMap& wanted)
{
    SettingStringMap contexts;
    const int code = manager.PreparePatchContext(wanted, contexts, FilterRestoreSameSystem);
    FUZZ_REQUIRE(contexts.size() + manager.GetError().size() == wanted.size(), std::to_string(code));
    FUZZ_REQUIRE((code == 0) == (contexts.size() == wanted.size()), std::to_string(code));
    for (const auto& [name, context] : contexts)
    {
        CheckContext(context, wanted.at(name));
    }
}

void CheckNoRegistry(RedfishConfigSettingManager& manager, std::string_view text)
{
    std::string value = "untouched";
    SettingGroupMap groups = {{"Kept", {}}};
    SettingStringMap contexts;
    FUZZ_REQUIRE(manager.PreparePatchContext("Name", "x", value, FilterChange) == 27, text);
    FUZZ_REQUIRE(manager.QuerySettingDefaultValue("Name", value) == 27 && value == "untouched", text);
    FUZZ_REQUIRE(manager.PreparePatchContext({{"Name", "x"}}, contexts, FilterChange) == 27 && contexts.empty(), text);
    manager.GetGroupList(groups);
    FUZZ_REQUIRE(groups.empty() && manager.GetError().size() == 1, text);
}

/// The rounds end, and a second look sees the same.
void CheckRounds(std::string_view text, const SettingValueMap& values, const SettingValueMap& changes)
{
    AttributeRegistry registry;
    RegistryNotes notes;
    std::string error;
    if (!ReadAttributeRegistry(text, registry, notes, error))
    {
        return;
    }
    std::size_t terms = 0;
    for (const RegistryDependency& dependency : registry.Dependencies)
    {
        terms += dependency.Terms.size();
        FUZZ_REQUIRE(!dependency.Terms.empty() && dependency.Terms.size() <= MaxDependencyTerms, text);
        FUZZ_REQUIRE((dependency.Attribute == NoIndex) != (dependency.Menu == NoIndex), text);
    }
    for (std::size_t menu = 0; menu < registry.Menus.size(); ++menu)
    {
        const std::size_t parent = registry.Menus[menu].Parent;
        FUZZ_REQUIRE(parent == NoIndex || parent < menu, text);
    }
    const SettingModel model(std::move(registry));
    const DependencyEvaluation before(model, values);
    const DependencyEvaluation first(before, changes);
    const DependencyEvaluation second(before, changes);
    FUZZ_REQUIRE(first.Rounds() <= DependencyEvaluation::MaxRounds, text);
    FUZZ_REQUIRE(first.Settled() || first.Rounds() == DependencyEvaluation::MaxRounds, text);
    FUZZ_REQUIRE(first.TermsRead() <= terms * first.Rounds(), text);
    for (std::size_t index = 0; index < model.Registry().Attributes.size(); ++index)
    {
        for (std::size_t row = 0; row < PropertyCount; ++row)
        {
            const auto property = static_cast<SettingProperty>(row);
            FUZZ_REQUIRE(first.Now(index, property) == second.Now(index, property), text);
        }
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // The registry, the values in force as a JSON object, and a new value.
    const std::vector<std::string_view> parts = Parts(Text(data, size), 3);
    bool doubtful = false;
    const std::optional<PlainJson> plain = ReadPlainJson(parts[0], doubtful);
    if (doubtful)
    {
        return 0;
    }
    const SettingValueMap values = Values(parts[1]);
    const std::string value(parts[2]);
    RedfishConfigSettingManager manager{std::string(parts[0]), values, true, Config_Options()};
    const std::optional<std::vector<std::string>> names = AttributeNames(plain);
    if (!names)
    {
        CheckNoRegistry(manager, parts[0]);
        return 0;
    }
    CheckGroups(manager, *names);
    SettingStringMap wanted;
    SettingValueMap changes;
    for (std::size_t i = 0; i < std::min(names->size(), MostLooks); ++i)
    {
        const std::string& name = (*names)[i];
        CheckSetting({manager, parts[0]}, name, value);
        const auto current = values.find(name);
        std::string text = value;
        // Half of them to what they are.
        if (i % 2 == 0 && current != values.end())
        {
            GetOptionalVarAsString(current->second, text);
        }
        wanted[name] = text;
        changes[name] = OptionalVar(text);
    }
    CheckBatch(manager, wanted);
    CheckRounds(parts[0], values, changes);
    SettingStringMap saved;
    FUZZ_REQUIRE(manager.FetchSaveSettingValues(saved, FilterSave) == 0, parts[0]);
    for (const auto& [name, text] : saved)
    {
        FUZZ_REQUIRE(std::find(names->begin(), names->end(), name) != names->end(), name);
    }
    return 0;
}
