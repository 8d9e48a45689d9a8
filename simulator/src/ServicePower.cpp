// The system's power: reset action, start, and what the system's resource tells.

#include "Service.h"

#include "ActionBody.h"
#include "Answers.h"
#include "Changes.h"
#include "JsonFile.h"
#include "RedfishErrors.h"
#include "ServicePaths.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

constexpr const char* ResetName = "#ComputerSystem.Reset";

enum class Effect
{
    None,
    On,
    Off,
    Restart,
    Toggle,
};

struct ResetKind
{
    const char* Type;
    Effect Does;
};

constexpr ResetKind ResetKinds[] = {
    {"On", Effect::On},
    {"ForceOn", Effect::On},
    {"ForceOff", Effect::Off},
    {"GracefulShutdown", Effect::Off},
    {"GracefulRestart", Effect::Restart},
    {"ForceRestart", Effect::Restart},
    {"PowerCycle", Effect::Restart},
    {"FullPowerCycle", Effect::Restart},
    {"PushPowerButton", Effect::Toggle},
    {"Nmi", Effect::None},
};

bool IsKnown(const std::string& type)
{
    return std::any_of(std::begin(ResetKinds), std::end(ResetKinds),
                       [&type](const ResetKind& kind) { return type == kind.Type; });
}

Effect EffectOf(const std::string& type, bool poweredOff)
{
    const auto kind = std::find_if(std::begin(ResetKinds), std::end(ResetKinds),
                                   [&type](const ResetKind& known) { return type == known.Type; });
    const Effect effect = kind != std::end(ResetKinds) ? kind->Does : Effect::None;
    if (effect == Effect::Toggle)
    {
        return poweredOff ? Effect::On : Effect::Off;
    }
    const bool nothingToDo = (effect == Effect::On && !poweredOff) || (effect == Effect::Off && poweredOff);
    return nothingToDo ? Effect::None : effect;
}

void TellPower(json::object& system, const char* power, const char* progress)
{
    system["PowerState"] = power;
    json::value& boot = system["BootProgress"];
    if (!boot.is_object())
    {
        boot.emplace_object();
    }
    boot.get_object()["LastState"] = progress;
}

} // namespace

SystemReset ResetAction(const Machine& machine)
{
    SystemReset reset{UsualResetTarget(machine), {}};
    const json::object* system = FindResource(machine, SystemPath(machine));
    const json::object* actions = system != nullptr ? FindObject(*system, "Actions") : nullptr;
    const json::object* action = actions != nullptr ? FindObject(*actions, ResetName) : nullptr;
    if (action == nullptr)
    {
        return reset;
    }
    const std::string target = FindText(*action, "target");
    reset.Target = target.empty() ? reset.Target : target;
    if (const json::array* types = FindArray(*action, "ResetType@Redfish.AllowableValues"))
    {
        for (const json::value& type : *types)
        {
            if (const json::string* name = type.if_string())
            {
                reset.Types.emplace_back(name->data(), name->size());
            }
        }
    }
    return reset;
}

HttpResponse Service::GetSystem(const HttpRequest& request, const json::object& resource) const
{
    json::object system = resource;
    const auto values = m_State.Current();
    for (const auto& [name, value] : values->System)
    {
        system[name] = value;
    }
    if (values->Starting)
    {
        TellPower(system, "PoweringOn", "MemoryInitializationStarted");
    }
    else if (values->PoweredOff)
    {
        TellPower(system, "Off", "None");
    }
    const std::string tag = TagResource(system, system == resource);
    return ReadAnswer(request, json::serialize(system), tag);
}

HttpResponse Service::ResetSystem(const HttpRequest& request)
{
    HttpResponse refusal;
    const auto body = ActionBody(request, ResetName, {{"ResetType", ActionParameter::Text, true}}, refusal);
    if (!body)
    {
        return refusal;
    }
    const std::string type = FindText(*body, "ResetType");
    const std::vector<std::string> types = ResetAction(m_Machine).Types;
    const bool known = types.empty() ? IsKnown(type) : std::find(types.begin(), types.end(), type) != types.end();
    if (!known)
    {
        return RedfishError(400, Base::ActionParameterValueNotInList, {type, "ResetType", ResetName});
    }
    return Changed(
        [&](Values& values, HttpResponse& response)
        {
            if (values.Starting)
            {
                response = RedfishError(409, Base::ResourceInUse);
                return false;
            }
            response = DoneAnswer({{Base::Success}});
            const Effect effect = EffectOf(type, values.PoweredOff);
            values.PoweredOff = effect == Effect::Off || (effect == Effect::None && values.PoweredOff);
            if (effect == Effect::On || effect == Effect::Restart)
            {
                values.System["LastResetTime"] = UtcNow();
                values.Starting = m_Options.RebootTime.count() > 0;
                m_StartEnds = std::chrono::steady_clock::now() + m_Options.RebootTime;
                if (!values.Starting)
                {
                    ApplyPending(m_Rules, values);
                }
            }
            return effect != Effect::None;
        });
}

/// A start that is over shows with the first request after its end. One that cannot be
/// saved is not over: the next request tries again.
void Service::FinishStart()
{
    if (!m_State.Current()->Starting)
    {
        return;
    }
    m_State.Update(
        [this](Values& values)
        {
            if (!values.Starting || std::chrono::steady_clock::now() < m_StartEnds)
            {
                return false;
            }
            values.Starting = false;
            ApplyPending(m_Rules, values);
            return true;
        });
}

} // namespace bmcsim
