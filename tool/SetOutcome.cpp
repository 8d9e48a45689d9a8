#include "SetOutcome.h"

#include <algorithm>
#include <deque>
#include <string>
#include <string_view>
#include <utility>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "ChangeDelivery.h"
#include "JsonOutput.h"
#include "Options.h"
#include "Secret.h"
#include "TextOutput.h"
#include "ValueConversions.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

constexpr const char* Blot = "********";
/// Messages are full of shorter texts.
constexpr std::size_t ShortestBlotted = 4;

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
        return "refused";
    case SetOutcome::RefusedWithOthers:
        return "not changed";
    case SetOutcome::Unknown:
        return "unknown";
    default:
        return "not sent";
    }
}

json::value ValueOf(const std::string& context)
{
    json::error_code failure;
    json::value value = json::parse(context, failure);
    return failure ? json::value(context) : value; // a number beyond 64 bits, for example
}

std::string TextOf(const SetSetting& setting, const Options& options)
{
    const json::value value = ValueOf(setting.Context);
    if (const auto* text = value.if_string())
    {
        return EscapeText(std::string(*text));
    }
    return options.Hex && value.is_number() ? DecToHex(setting.Context) : EscapeText(setting.Context);
}

/// A secret that the BMC was sent, in the two forms in which its own words may repeat it.
struct SentSecret
{
    explicit SentSecret(const SetSetting& setting) : Setting(setting), Json(QuotedJson(setting.Value)) {}

    const SetSetting& Setting;
    Secret Json;
};
/// Few, as a rule, while there may be thousands of answers to look through.
using SentSecrets = std::deque<SentSecret>;

SentSecrets SecretsOf(const SetPlan& plan)
{
    SentSecrets secrets;
    for (const SetSetting& setting : plan.Settings)
    {
        if (setting.Secret && setting.WasSent)
        {
            secrets.emplace_back(setting);
        }
    }
    return secrets;
}

void HideValues(SentSecrets& secrets, std::string& text)
{
    for (SentSecret& secret : secrets)
    {
        const std::string_view json = secret.Json.Text();
        for (const std::string_view value : {json.substr(1, json.size() - 2), std::string_view(secret.Setting.Value)})
        {
            std::size_t at = value.size() >= ShortestBlotted ? text.find(value) : std::string::npos;
            for (; at != std::string::npos; at = text.find(value, at + std::string_view(Blot).size()))
            {
                text.replace(at, value.size(), Blot);
            }
        }
    }
}

/// Whether an answer about `subject`, or with none about all that was sent, has a password in it that is too short to
/// be blotted out: it could be read off what is left.
bool HoldsShortPassword(const SentSecrets& secrets, const SetSetting* subject, const Failure& failure)
{
    const std::string text = failure.Message + failure.Cause;
    const auto isIn = [&](const SentSecret& secret)
    {
        const SetSetting& setting = secret.Setting;
        const bool isMeant = setting.Password && (subject == nullptr || subject == &setting);
        const bool isShort = !setting.Value.empty() && setting.Value.size() < ShortestBlotted;
        return isMeant && isShort && text.find(setting.Value) != std::string::npos;
    };
    return failure.Code != CodeConnection && std::ranges::any_of(secrets, isIn);
}

/// @param subject  the setting that it is about; null for the whole request.
void AddHidden(SentSecrets& secrets, const SetSetting* subject, Answer& answer, Failure failure)
{
    if (HoldsShortPassword(secrets, subject, failure))
    {
        const std::optional<Delivery> told = DeliveryIn(failure.Message);
        failure.Message = (subject != nullptr ? subject->ShownName + ": " : "") +
                          "what the BMC answered is not shown, since a new password may stand in it" +
                          (told ? "; " + std::string(WordsOf(*told)) : "");
        failure.Cause.clear();
    }
    HideValues(secrets, failure.Message);
    HideValues(secrets, failure.Cause);
    AddFailure(answer, std::move(failure));
}

void AddFailures(const SetPlan& plan, const std::optional<Failure>& failure, Answer& answer)
{
    SentSecrets secrets = SecretsOf(plan);
    for (const std::string& note : plan.Notes)
    {
        HideValues(secrets, answer.Notes.emplace_back(note));
    }
    for (const std::optional<Failure>& one : {plan.Stop, failure})
    {
        if (one)
        {
            AddHidden(secrets, nullptr, answer, *one);
        }
    }
    for (const SetOutcome outcome :
         {SetOutcome::Unknown, SetOutcome::Refused, SetOutcome::RefusedWithOthers, SetOutcome::NotSent})
    {
        for (const SetSetting& setting : plan.Settings)
        {
            if (setting.Outcome == outcome && setting.Why)
            {
                AddHidden(secrets, &setting, answer, *setting.Why);
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
            entry["value"] = ValueOf(setting.Context);
        }
        if (setting.InForce)
        {
            entry["inForce"] = *setting.InForce;
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
        options.Json ? static_cast<void>(bodies.push_back(ValueOf(body)))
                     : static_cast<void>(answer.Text += body + "\n");
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
