#include "SetSend.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

#include <boost/json/value.hpp>

#include "ChangeDelivery.h"
#include "JsonValues.h"
#include "MissingActions.h"
#include "Options.h"
#include "OutcomeWords.h"
#include "PendingValues.h"
#include "RequestEnd.h"
#include "Secret.h"
#include "SetOutcome.h"
#include "Signals.h"
#include "ValueConversions.h"

namespace Tavrine::Tool
{
namespace
{

using Indices = std::vector<std::size_t>;

class Sender
{
  public:
    Sender(SetPlan& plan, RedfishConfigProc& front, const Options& options, CauseLog& causes,
           const FrontMaker& freshFront)
        : m_Plan(plan), m_Front(front), m_Options(options), m_Causes(causes), m_FreshFront(freshFront)
    {
    }

    std::optional<Failure> Send()
    {
        RequestEnd end = RequestEnd::Accepted;
        for (const Indices& request : m_Plan.Requests)
        {
            const RedfishConfigResult result = GoesAlone(request) ? SendAlone(request) : SendTogether(request);
            end = Settle(result);
            m_InFlight.clear();
            if (end != RequestEnd::Accepted)
            {
                break;
            }
        }
        if (end != RequestEnd::Accepted)
        {
            Abandon(m_Plan, SetOutcome::NotSent, m_Failed->Code, "not sent, since a change before it failed");
        }
        ReadBack();
        return TellFailure();
    }

  private:
    SetSetting& At(std::size_t index) { return m_Plan.Settings[index]; }

    RedfishConfigResult Patch(const SetSetting& setting, bool batchMode)
    {
        return m_Options.NoCheck
                   ? m_Front.PatchSettingNewValueWithOutCheck(setting.Name, setting.UncheckedText, batchMode)
                   : m_Front.PatchSettingNewValue(setting.Name, setting.Value, batchMode);
    }

    /// Outside batch mode the code for a password hides that of its request, and for a
    /// value that cannot be compared beforehand 1 has two meanings.
    bool GoesAlone(const Indices& request)
    {
        return m_Plan.Settings.size() == 1 && !At(request.front()).Password &&
               (m_Options.NoCheck || At(request.front()).Effective);
    }

    RedfishConfigResult SendAlone(const Indices& request)
    {
        m_InFlight = request;
        At(request.front()).WasSent = true;
        RedfishConfigResult result = Patch(At(request.front()), false);
        CollectErrors();
        return result;
    }

    RedfishConfigResult SendTogether(const Indices& request)
    {
        for (const std::size_t index : request)
        {
            RedfishConfigResult result = Patch(At(index), true);
            CollectErrors();
            if (result == CodeSucceed || result == CodePassword)
            {
                m_InFlight.push_back(index);
                At(index).WasSent = true;
            }
            else if (result == CodeAlready)
            {
                At(index).Outcome = SetOutcome::Already;
            }
            else
            {
                const bool useless = IsUnreachable(result.ErrorCode());
                At(index).Outcome = useless ? SetOutcome::NotSent : SetOutcome::Refused;
                At(index).Why = m_Causes.Explain(result, At(index).ShownName);
                if (useless)
                {
                    return result;
                }
            }
        }
        if (m_InFlight.empty())
        {
            return {CodeSucceed, "", ""};
        }
        const RedfishConfigResult result = m_Front.FlushChanges();
        CollectErrors();
        return result;
    }

    /// The library empties its list when it next sends something, and lists what failed
    /// once as often as it likes.
    void CollectErrors()
    {
        for (RedfishConfigResult& error : m_Front.m_ErrorList)
        {
            m_Errors.try_emplace(error.ErrorSetting(), error);
        }
        m_Front.m_ErrorList.clear();
    }

    std::optional<Failure> OwnError(const SetSetting& setting)
    {
        const auto error = m_Errors.find(m_Front.m_Prefix + "." + setting.Key);
        if (error == m_Errors.end())
        {
            return std::nullopt;
        }
        Failure failure = FailureOf(error->second, setting.ShownName);
        if (failure.Message.find(setting.ShownName) == std::string::npos)
        {
            failure.Message.insert(0, setting.ShownName + ": ");
        }
        return failure;
    }

    RequestEnd Settle(const RedfishConfigResult& result)
    {
        const Failure failure = m_Causes.Explain(result);
        const RequestEnd end = EndOf(failure);
        if (end != RequestEnd::Accepted)
        {
            m_Failed = failure;
        }
        bool explained = false;
        for (const std::size_t index : m_InFlight)
        {
            SetSetting& setting = At(index);
            setting.Why = OwnError(setting);
            setting.Outcome = setting.Why ? SetOutcome::Refused : SetOutcome::Planned;
            explained = explained || setting.Why;
        }
        m_Explained = m_Explained || explained;
        for (const std::size_t index : m_InFlight)
        {
            if (!At(index).Why)
            {
                Conclude(At(index), end, explained);
            }
        }
        return end;
    }

    void Conclude(SetSetting& setting, RequestEnd end, bool othersExplained)
    {
        const auto because = [&](SetOutcome outcome, const std::string& reason)
        {
            setting.Outcome = outcome;
            setting.Why = Failure{m_Failed->Code, setting.ShownName + ": " + reason, setting.ShownName};
        };
        switch (end)
        {
        case RequestEnd::Accepted:
            setting.Outcome = SetOutcome::Changed;
            m_ToReadBack.emplace_back(&setting, end);
            break;
        case RequestEnd::Unfit:
        case RequestEnd::NotSent:
            because(SetOutcome::NotSent, OutcomeWords::NotSent);
            break;
        case RequestEnd::TurnedAway:
            because(SetOutcome::Refused, "not changed, since the BMC turned the request away");
            break;
        case RequestEnd::Refused:
            because(othersExplained ? SetOutcome::RefusedWithOthers : SetOutcome::Refused,
                    othersExplained ? "not changed, refused together with the others"
                                    : "not changed, since the BMC refused the request");
            m_ToReadBack.emplace_back(&setting, end);
            break;
        case RequestEnd::Unknown:
            because(SetOutcome::Unknown, std::string(DeliveryWords::OutcomeUnknown));
            m_ToReadBack.emplace_back(&setting, end);
            break;
        }
    }

    bool IsReadable(const SetSetting& setting) const
    {
        return setting.Effective && !setting.Effective->is_null() && !setting.Secret && !setting.Protected;
    }

    /// Asks the BMC what it holds now. A change that it accepted is what it says it is; of
    /// one that failed it may show that it was done.
    void ReadBack()
    {
        if (m_ToReadBack.empty() || StopSignal() != 0)
        {
            return;
        }
        PendingValues values;
        const bool anyReadable = std::any_of(m_ToReadBack.begin(), m_ToReadBack.end(),
                                             [&](const auto& one) { return IsReadable(*one.first); });
        RedfishConfigResult result(CodeSucceed, "", "");
        if (anyReadable)
        {
            result = ReadPendingValues(*m_FreshFront(), values);
        }
        ReadProtectedBack(values);
        for (const auto& [setting, end] : m_ToReadBack)
        {
            Compare(*setting, values, end);
        }
        if (!IsSuccess(result.ErrorCode()))
        {
            m_Plan.Notes.push_back("warning: the pending values could not be read back: " +
                                   WithoutPasswords(m_Plan, nullptr, m_Causes.Explain(result)).Message);
        }
    }

    /// Costs another read of the registry, and so is done only where nothing else tells.
    void ReadProtectedBack(PendingValues& values)
    {
        std::unique_ptr<RedfishConfigProc> front;
        for (const auto& [setting, end] : m_ToReadBack)
        {
            if (end == RequestEnd::Unknown && setting->Protected && !setting->Secret && setting->Effective)
            {
                front = front ? std::move(front) : m_FreshFront();
                AddPendingValue(*front, setting->Key, values);
            }
        }
    }

    void Compare(SetSetting& setting, const PendingValues& values, RequestEnd end)
    {
        const auto pending = values.Pending.find(setting.Key);
        const auto effective = values.Effective.find(setting.Key);
        const bool known = effective != values.Effective.end();
        const bool waits = known && pending != values.Pending.end();
        Secret wanted(PlainText(setting.Context));
        const bool inForce = known && !waits && IsText(setting, effective->second, wanted.Text());
        if (inForce || (waits && pending->second == wanted.Text()))
        {
            setting.Outcome = SetOutcome::Changed;
            setting.Why.reset();
            setting.InForce = inForce;
            m_Recovered = m_Recovered || end != RequestEnd::Accepted;
        }
        else if (known && end == RequestEnd::Accepted)
        {
            setting.Outcome = SetOutcome::Unknown;
            setting.Why = Failure{CodeRefused,
                                  setting.ShownName + ": the BMC accepted the change, but does not show it among its "
                                                      "pending values",
                                  setting.ShownName};
        }
        else if (end == RequestEnd::Unknown)
        {
            setting.Why->Message += std::string("; ") + (known ? OutcomeWords::NotShown : OutcomeWords::NotRead);
        }
    }

    /// Numbers in force are read in hexadecimal where the options ask for it.
    bool IsText(const SetSetting& setting, const std::string& text, const std::string& wanted) const
    {
        return m_Options.Hex && setting.Effective->is_number() ? HexToDec(text) == wanted : text == wanted;
    }

    /// The failure of a request is told once, unless its settings tell it, or turned out
    /// to be changed.
    std::optional<Failure> TellFailure()
    {
        if (!m_Failed)
        {
            return std::nullopt;
        }
        HintAtMissingAction(*m_Failed, m_Plan.Notes);
        const bool anyLeft = std::any_of(m_Plan.Settings.begin(), m_Plan.Settings.end(),
                                         [](const SetSetting& setting) { return setting.Why.has_value(); });
        if (m_Recovered && !anyLeft)
        {
            m_Plan.Notes.push_back(OutcomeWords::ShownAllTheSame +
                                   WithoutPasswords(m_Plan, nullptr, *m_Failed).Message);
            return std::nullopt;
        }
        m_Plan.RequestFailed = true;
        return m_Explained ? std::nullopt : m_Failed;
    }

    SetPlan& m_Plan;
    RedfishConfigProc& m_Front;
    const Options& m_Options;
    CauseLog& m_Causes;
    const FrontMaker& m_FreshFront;
    /// What the next answer is about.
    Indices m_InFlight;
    /// By full name, the first of each.
    std::unordered_map<std::string, RedfishConfigResult> m_Errors;
    std::vector<std::pair<SetSetting*, RequestEnd>> m_ToReadBack;
    std::optional<Failure> m_Failed;
    bool m_Explained = false;
    bool m_Recovered = false;
};

} // namespace

std::optional<Failure> SendPlan(SetPlan& plan, RedfishConfigProc& front, const Options& options, CauseLog& causes,
                                const FrontMaker& freshFront)
{
    return Sender(plan, front, options, causes, freshFront).Send();
}

} // namespace Tavrine::Tool
