#include "SetOutcome.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>

#include "JsonOutput.h"
#include "JsonValues.h"
#include "Options.h"
#include "OutcomeWords.h"
#include "Secret.h"
#include "TextOutput.h"
#include "ValueConversions.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

const char* WordOf(SetOutcome outcome)
{
    switch (outcome)
    {
    case SetOutcome::Planned:
        return "would change";
    case SetOutcome::Changed:
        return "changed";
    case SetOutcome::Already:
        return "already";
    case SetOutcome::Refused:
        return OutcomeWords::Refused;
    case SetOutcome::RefusedWithOthers:
        return "not changed";
    case SetOutcome::Unknown:
        return OutcomeWords::Unknown;
    case SetOutcome::NotSent:
        return OutcomeWords::NotSent;
    }
    return OutcomeWords::Unknown;
}

std::string TextOf(const SetSetting& setting, const Options& options)
{
    const bool hexadecimal = options.Hex && ValueOfJson(setting.Context).is_number();
    return hexadecimal ? DecToHex(setting.Context) : EscapeText(PlainText(setting.Context));
}

/// Secrets that the BMC may repeat in an answer about `subject`, or with none about all that was sent. What may be no
/// password at all is not looked for where it is short: of "1" all answers are full.
SecretTexts SecretsIn(const SetPlan& plan, const SetSetting* subject)
{
    SecretTexts secrets;
    for (const SetSetting& setting : plan.Settings)
    {
        const bool isMeant = setting.Password && (subject == nullptr || subject == &setting);
        if (setting.Secret && setting.WasSent && (isMeant || !IsShortSecret(setting.Value)))
        {
            secrets.push_back(setting.Value);
        }
    }
    return secrets;
}

void AddFailures(const SetPlan& plan, const std::optional<Failure>& failure, Answer& answer)
{
    answer.Notes = plan.Notes;
    for (const std::optional<Failure>& one : {plan.Stop, failure})
    {
        if (one)
        {
            AddFailure(answer, WithoutPasswords(plan, nullptr, *one));
        }
    }
    for (const SetOutcome outcome :
         {SetOutcome::Unknown, SetOutcome::Refused, SetOutcome::RefusedWithOthers, SetOutcome::NotSent})
    {
        for (const SetSetting& setting : plan.Settings)
        {
            if (setting.Outcome == outcome && setting.Why)
            {
                AddFailure(answer, WithoutPasswords(plan, &setting, *setting.Why));
            }
        }
    }
}

json::object DataOf(const SetPlan& plan)
{
    json::object settings;
    for (const SetSetting& setting : plan.Settings)
    {
        json::object entry{{"outcome", WordOf(setting.Outcome)}};
        const bool good = setting.Outcome == SetOutcome::Planned || setting.Outcome == SetOutcome::Changed ||
                          setting.Outcome == SetOutcome::Already;
        if (good && !setting.Secret)
        {
            entry["value"] = ValueOfJson(setting.Context);
        }
        if (setting.InForce || (setting.Outcome == SetOutcome::Changed && !setting.Secret))
        {
            entry["inForce"] = setting.InForce.value_or(false); // what LineOf says of a change that was not read back
        }
        settings[ValidUtf8(setting.ShownName)] = std::move(entry);
    }
    return settings;
}

std::string LineOf(const SetSetting& setting, const Options& options)
{
    const std::string name = EscapeText(setting.ShownName);
    if (setting.Outcome == SetOutcome::Changed)
    {
        return name + (setting.InForce.value_or(false) ? ": changed, the BMC shows it in force\n"
                                                       : ": changed, takes effect after a reboot\n");
    }
    if (setting.Outcome == SetOutcome::Already)
    {
        const std::string value = setting.Secret ? Blot : TextOf(setting, options);
        const char* const since = !setting.InForce   ? "\n"
                                  : *setting.InForce ? ", in force\n"
                                                     : ", takes effect after a reboot\n";
        return name + ": already " + value + since;
    }
    return {};
}

std::string BodyOf(const SetPlan& plan, const std::vector<std::size_t>& request)
{
    SettingStringMap sorted;
    for (const std::size_t index : request)
    {
        const SetSetting& setting = plan.Settings[index];
        sorted[setting.Key] = setting.Secret ? json::serialize(json::value(Blot)) : setting.Context;
    }
    std::string body;
    for (const auto& [name, context] : sorted)
    {
        body += (body.empty() ? "" : ",") + json::serialize(json::value(name)) + ":" + context;
    }
    return "{\"Attributes\":{" + body + "}}";
}

} // namespace

Failure WithoutPasswords(const SetPlan& plan, const SetSetting* subject, Failure failure)
{
    return Hidden(std::move(failure), SecretsIn(plan, subject), subject != nullptr ? subject->ShownName : "");
}

Answer AnswerOf(const SetPlan& plan, const std::optional<Failure>& failure, const Options& options)
{
    Answer answer;
    AddFailures(plan, failure, answer);
    if (options.Json)
    {
        answer.Data = DataOf(plan);
        return answer;
    }
    for (const SetSetting& setting : plan.Settings)
    {
        answer.Text += LineOf(setting, options);
    }
    return answer;
}

Answer DryRunAnswerOf(const SetPlan& plan, const Options& options)
{
    Answer answer;
    AddFailures(plan, std::nullopt, answer);
    json::array bodies;
    bool oemAction = false;
    for (const std::vector<std::size_t>& request : plan.Requests)
    {
        const std::string body = BodyOf(plan, request);
        oemAction = oemAction || plan.Settings[request.front()].Protected;
        if (options.Json)
        {
            bodies.push_back(ValueOfJson(body));
        }
        else
        {
            answer.Text += body + "\n";
        }
    }
    if (options.Json)
    {
        answer.Data = DataOf(plan);
        answer.More["bodies"] = std::move(bodies);
        return answer;
    }
    for (const SetSetting& setting : plan.Settings)
    {
        if (setting.Outcome == SetOutcome::Already)
        {
            std::string line = LineOf(setting, options);
            line.pop_back();
            answer.Notes.push_back(std::move(line));
        }
    }
    if (oemAction)
    {
        answer.Notes.emplace_back("protected settings go first, to an OEM action of the BMC, in a body of their own");
    }
    return answer;
}

} // namespace Tavrine::Tool
