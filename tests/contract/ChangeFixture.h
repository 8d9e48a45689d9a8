#pragma once

#include <string>
#include <utility>
#include <vector>

#include "StagingFixture.h"

/// Changes of single settings: what the setting manager says to them and what the stores
/// answer to a flush.
namespace changing
{

using doubles::LogLine;

inline const LogLine PatchEnter{3, "Enter BiosRedfishConfigProc::PatchSettingNewValue()"};
inline const LogLine StaysInBatch{4, "Will not be flush changed until FlushChanges called by batch mode."};

/// The answer of every busy BMC here, and the record of each step that meets it.
inline const RedfishConfigResult Busy{33, "BMC is not ready.", "Ethernet"};
inline const LogLine BusyLog{4, "Requested operation is temporarily unavailable: BMC is not ready."};

inline staging::Flush Answer(RedfishConfigResult result, std::vector<RedfishConfigResult> errors = {})
{
    return {.Result = std::move(result), .Errors = std::move(errors)};
}

class ChangeTest : public staging::StagingTest
{
  protected:
    /// The manager finds new values of this setting good and makes this text of them.
    void Accept(const std::string& name, const std::string& text) { TellText("PreparePatchContext " + name, text); }
    void Refuse(const std::string& name, RedfishConfigResult result, std::vector<RedfishConfigResult> errors)
    {
        world.ManagerAnswers["PreparePatchContext " + name] = {
            .Result = std::move(result), .Text = "\"refused\"", .Map = {}, .Errors = std::move(errors)};
    }
    /// Makes the names of the front class and of its procs tell themselves apart.
    void TellPrefixesApart()
    {
        m_Front->m_Prefix = "Front";
        m_Front->m_SecondPrefix = "Fronts";
        for (const auto& [resource, proc] : m_Front->m_ProcCreator->m_ProcMap)
        {
            proc->m_Prefix = "Proc";
            proc->m_SecondPrefix = "Procs";
        }
    }
    /// What the assistant of the front class holds as the failures of its last flush.
    void TellAssistantErrors(const std::vector<RedfishConfigResult>& errors)
    {
        m_Front->m_SettingAssistant->UpdateError(errors);
    }
    Tavrine::BiosBasicSettingProc& ProcOf(const std::string& resource)
    {
        return *m_Front->m_ProcCreator->m_ProcMap.at(resource);
    }
    /// The steps since the last call of this.
    std::vector<std::string> TakeSteps() { return std::exchange(world.ManagerCalls, {}); }
    std::vector<LogLine> TakeLogs() { return std::exchange(world.Logs, {}); }
};

} // namespace changing
