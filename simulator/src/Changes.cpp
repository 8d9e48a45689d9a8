#include "Changes.h"

#include "ValueCheck.h"

#include <boost/json/array.hpp>
#include <chrono>
#include <fmt/chrono.h>
#include <string>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

constexpr const char* LoadDefaultsAttribute = "SystemRecovery_PostLoadSetupDefault";

struct Half
{
    json::object Values::*Effective;
    json::object Values::*Pending;
};

constexpr Half StandardHalf{&Values::Effective, &Values::Pending};
constexpr Half ProtectedHalf{&Values::ProtectedEffective, &Values::ProtectedPending};
constexpr Half Halves[] = {StandardHalf, ProtectedHalf};

const Half& HalfOf(Place place) { return place == Place::Standard ? StandardHalf : ProtectedHalf; }

/// The values as they will stand after the next start.
ValueLookup ComingValues(const Values& values, const json::object& change)
{
    return [&values, &change](std::string_view name)
    {
        const json::value* value = change.if_contains(name);
        for (const auto place :
             {&Values::Pending, &Values::ProtectedPending, &Values::Effective, &Values::ProtectedEffective})
        {
            value = value != nullptr ? value : (values.*place).if_contains(name);
        }
        return value;
    };
}

/// Without a registry a resource's own list is all that is known of its attributes;
/// with one, an attribute stands either here or behind the other way of access.
bool BelongsTo(const AttributeRules& rules, const Values& values, Place place, std::string_view name)
{
    if (!rules.HasRegistry() || place == Place::Protected)
    {
        return (values.*HalfOf(place).Effective).contains(name);
    }
    return rules.Knows(name) && !values.ProtectedEffective.contains(name);
}

bool IsLoadOfDefaultsDue(const Values& values)
{
    const json::value* pending = values.Pending.if_contains(LoadDefaultsAttribute);
    const json::value* wish = pending != nullptr ? pending : values.Effective.if_contains(LoadDefaultsAttribute);
    return values.DefaultsPending || (wish != nullptr && *wish == "Enabled");
}

/// Gives every attribute that is no fact the default that `defaultOf` knows for it.
template <typename DefaultOf> void TakeDefaults(const AttributeRules& rules, Values& values, const DefaultOf& defaultOf)
{
    for (const Half& half : Halves)
    {
        for (auto& [name, value] : values.*half.Effective)
        {
            const json::value* wanted = defaultOf(name);
            if (wanted != nullptr && !rules.IsFixed(name) && !rules.IsSecret(name))
            {
                value = *wanted;
            }
        }
    }
}

/// A default can depend on other values: on those that will stand then.
void LoadDefaults(const AttributeRules& rules, Values& values)
{
    const json::object none;
    Values plain = values;
    TakeDefaults(rules, plain,
                 [&rules](std::string_view name)
                 {
                     const json::object* entry = rules.Entry(name);
                     return entry != nullptr ? entry->if_contains("DefaultValue") : nullptr;
                 });
    const RulesNow then(rules, ComingValues(plain, none));
    TakeDefaults(rules, values, [&then](std::string_view name) { return then.Property(name, "DefaultValue"); });
}

/// @param applied  set where a value came into force.
std::vector<Notice> MovePending(const AttributeRules& rules, Values& values, bool& applied)
{
    std::vector<Notice> faults;
    const json::object none;
    for (const Half& half : Halves)
    {
        json::object effective = values.*half.Effective;
        const RulesNow now(rules, ComingValues(values, none));
        for (const auto& [name, value] : values.*half.Pending)
        {
            const bool secret = rules.IsSecret(name);
            auto fault =
                secret || !rules.Knows(name) ? std::nullopt : CheckValue(now, name, value, effective.if_contains(name));
            if (fault)
            {
                faults.push_back(std::move(*fault));
                continue;
            }
            applied = true;
            if (!rules.IsOrder(name))
            {
                effective[name] = value;
            }
        }
        values.*half.Effective = std::move(effective);
        (values.*half.Pending).clear();
    }
    return faults;
}

} // namespace

std::string UtcNow()
{
    const auto now = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(std::chrono::system_clock::to_time_t(now)),
                       now.time_since_epoch().count() % 1000);
}

std::vector<Notice> CheckChange(const AttributeRules& rules, const Values& values, Place place,
                                const json::object& change)
{
    std::vector<Notice> faults;
    const RulesNow now(rules, ComingValues(values, change));
    for (const auto& [key, value] : change)
    {
        const std::string name = key;
        if (!BelongsTo(rules, values, place, name))
        {
            faults.push_back({Base::PropertyUnknown, {name}, AttributePointer(name)});
        }
        else if (!now.IsWritable(name))
        {
            faults.push_back({Base::PropertyNotWritable, {name}, AttributePointer(name)});
        }
        else if (auto fault = CheckValue(now, name, value, (values.*HalfOf(place).Effective).if_contains(name)))
        {
            faults.push_back(std::move(*fault));
        }
    }
    return faults;
}

void StageChange(const AttributeRules& rules, Values& values, Place place, const json::object& change)
{
    json::object& pending = values.*HalfOf(place).Pending;
    for (const auto& [name, value] : change)
    {
        pending[name] = rules.IsSecret(name) ? json::value(nullptr) : value;
    }
}

void ApplyPending(const AttributeRules& rules, Values& values)
{
    const bool defaults = IsLoadOfDefaultsDue(values);
    if (!defaults && values.Pending.empty() && values.ProtectedPending.empty())
    {
        return;
    }
    bool applied = defaults;
    if (defaults)
    {
        LoadDefaults(rules, values);
    }
    const std::vector<Notice> faults = MovePending(rules, values, applied);
    if (json::value* wish = values.Effective.if_contains(LoadDefaultsAttribute); wish != nullptr && defaults)
    {
        *wish = "Disabled";
    }
    values.DefaultsPending = false;
    json::array messages;
    if (applied)
    {
        messages.emplace_back(DescribeNotice({Base::Success}));
    }
    for (const Notice& fault : faults)
    {
        messages.emplace_back(DescribeNotice(fault));
    }
    values.Outcome = {{"Time", UtcNow()}, {"Messages", std::move(messages)}};
}

} // namespace bmcsim
