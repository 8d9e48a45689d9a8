#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ReadingFixture.h"

/// Front objects whose resources are played by value stores, for the operations that stage
/// many changes or send one at once.
namespace staging
{

using doubles::LogLine;

inline const LogLine FlushEnter{4, "Entering  Tavrine::BiosRedfishConfigProc::FlushChanges"};
inline const LogLine FlushExit{4, "Exiting  Tavrine::BiosRedfishConfigProc::FlushChanges"};
inline const LogLine NoProc{1, "Can not create BIOS redfish procs."};
inline const LogLine Protected{1, "setting is protected."};
inline const LogLine FilterFailed{1, "find error when filter setting value is change or not."};

inline LogLine NoNeed(const std::string& fullName) { return {4, "no need to change setting " + fullName}; }
inline LogLine NotFound(const std::string& fullName) { return {1, "Not find setting " + fullName + " in value list."}; }
inline LogLine NoValues(const std::string& message)
{
    return {1, "Failed in get current value map though: " + message};
}
inline LogLine NoManager(const std::string& message)
{
    return {1, "Failed to get setting manager with error: " + message};
}
inline LogLine Busy(const std::string& message)
{
    return {4, "Requested operation is temporarily unavailable: " + message};
}

/// Records of the real standard assistant, for tests over requests.
inline const std::vector<LogLine> PatchUrlLogs = {{3, "Enter BiosBasicSettingAssistant::QueryPatchURL()"},
                                                  {3, "Exit BiosBasicSettingAssistant::QueryPatchURL()"}};
inline std::vector<LogLine> CacheLogs(const std::string& name)
{
    return {{4, "Enter UpdateSettingValueCache to update setting: " + name},
            {4, "Exit BiosBasicSettingAssistant::UpdateSettingValueCache()"}};
}
/// A flush of the standard resource alone; `masked` is what the log shows of the body.
inline std::vector<LogLine> FlushLogs(const std::string& masked)
{
    return {FlushEnter,
            {4, "Entering  Tavrine::BiosStandardSettingAssistant::FlushChanges"},
            {4, "send patch data: {\"Attributes\":{" + masked + "}} to: " + reading::SettingsUrl},
            {4, "Exiting  Tavrine::BiosStandardSettingAssistant::FlushChanges"},
            FlushExit};
}
inline doubles::RestCall Patch(const std::string& attributes)
{
    return {.Verb = "PATCH",
            .Url = reading::SettingsUrl,
            .Body = "{\"Attributes\":{" + attributes + "}}",
            .Flag = true,
            .Timeout = 0,
            .Headers = {{"Expect", ""}, {"If-None-Match", "1"}}};
}

/// What a store answers to one flush.
struct Flush
{
    RedfishConfigResult Result{0, "", ""};
    std::vector<RedfishConfigResult> Errors;
};

/// A value store that enters its steps among the calls of the setting manager, so that one
/// list tells the order of all: "read standard", "cache standard NAME=TEXT, staged TEXT",
/// "flush standard {A=1,B=2}". Flushes that are not scripted succeed.
class ChangeStore final : public Tavrine::BiosBasicSettingAssistant
{
  public:
    explicit ChangeStore(std::string label) : m_Label(std::move(label)) {}

    RedfishConfigResult FlushChanges() override
    {
        std::string pairs;
        for (const auto& [name, text] : m_ChangedValues)
        {
            pairs += (pairs.empty() ? "" : ",") + name + "=" + text;
        }
        Enter("flush " + m_Label + " {" + pairs + "}");
        Flush flush;
        if (!Flushes.empty())
        {
            flush = Flushes.front();
            Flushes.pop_front();
        }
        TakeFlushErrors(flush.Errors);
        return flush.Result;
    }
    /// Fails, since nobody is to look at it.
    RedfishConfigResult UpdateSettingValueCache(const std::string& settingName, const std::string& value) override
    {
        const auto staged = m_ChangedValues.find(settingName);
        Enter("cache " + m_Label + " " + settingName + "=" + value + ", staged " +
              (staged != m_ChangedValues.end() ? staged->second : "nothing"));
        if (OnCache)
        {
            OnCache();
        }
        return {99, "nobody looks at this", settingName};
    }
    RedfishConfigResult QueryEffectiveValue(Tavrine::SettingValueMap& values) override
    {
        Enter("read " + m_Label);
        if (ReadResult == 0)
        {
            values = Values;
        }
        return ReadResult;
    }
    RedfishConfigResult QueryPendingValue(Tavrine::SettingValueMap&) override { return {0, "", ""}; }
    RedfishConfigResult QueryValueURLResponse() override { return {99, "no read expected", ""}; }

    Tavrine::SettingValueMap Values;
    RedfishConfigResult ReadResult{0, "", ""};
    std::deque<Flush> Flushes;
    std::function<void()> OnCache;

  private:
    static void Enter(const std::string& step) { doubles::TheWorld().ManagerCalls.push_back(step); }

    std::string m_Label;
};

class StagingTest : public reading::FrontClassTest
{
  protected:
    /// A BIOS system with a few standard settings; the registry is known already.
    void StartBios(const Tavrine::Config_Options& options = {}) { Start(MakeBios(options)); }
    /// A UEFI system with the protected settings Lock and Seal besides.
    void StartUefi(const Tavrine::Config_Options& options = {})
    {
        Start(MakeUefi(options));
        m_Protected = EnterStore("ProtectedSettings", "protected");
        m_Protected->Values = {{"Lock", "Off"}, {"Seal", "Off"}};
        for (const char* name : {"Lock", "Seal"})
        {
            Know(name).IsProtected = true;
        }
    }
    /// A front object of a BIOS system and nothing else.
    void StartBare() { Replace(MakeBios()); }
    /// The front object over the real assistants and requests.
    void StartReal()
    {
        StartBare();
        TellStandard(R"({"BootMode":"Uefi","Cores":10,"Wake":true})");
        TellSchema();
        KnowStandard();
    }
    void MakeManager()
    {
        ASSERT_THAT(m_Front->QuerySettingManagerWithoutValue(), IsBare(0));
        world.Logs.clear();
        world.Calls.clear();
    }

    void TellContexts(Tavrine::SettingStringMap contexts, RedfishConfigResult result = {0, "", ""},
                      std::vector<RedfishConfigResult> errors = {})
    {
        world.ManagerAnswers["PreparePatchContext"] = {
            .Result = std::move(result), .Text = "", .Map = std::move(contexts), .Errors = std::move(errors)};
    }
    void TellText(const std::string& operation, const std::string& text, RedfishConfigResult result = {0, "", ""})
    {
        world.ManagerAnswers[operation] = {.Result = std::move(result), .Text = text, .Map = {}, .Errors = {}};
    }

    std::unique_ptr<Front> m_Front;
    std::shared_ptr<ChangeStore> m_Standard;
    std::shared_ptr<ChangeStore> m_Protected;

  private:
    /// Also forgets what the end of an earlier one has logged.
    void Replace(std::unique_ptr<Front> front)
    {
        m_Front = std::move(front);
        world.Logs.clear();
    }
    void Start(std::unique_ptr<Front> front)
    {
        Replace(std::move(front));
        m_Front->m_Schema = reading::Schema;
        m_Standard = EnterStore("StandardSettings", "standard");
        m_Standard->Values = {{"BootMode", "Uefi"},
                              {"Cores", std::int64_t{10}},
                              {"Wake", true},
                              {"Nothing", std::nullopt},
                              {"Pin", "16"}};
        KnowStandard();
    }
    void KnowStandard()
    {
        for (const char* name : {"BootMode", "Cores", "Wake", "Nothing", "Pin"})
        {
            Know(name);
        }
    }
    std::shared_ptr<ChangeStore> EnterStore(const std::string& resource, const std::string& label)
    {
        auto proc = std::make_shared<Tavrine::BiosBasicSettingProc>();
        auto store = std::make_shared<ChangeStore>(label);
        proc->m_Prefix = m_Front->m_Prefix;
        proc->m_Assistant = store;
        m_Front->m_ProcCreator->m_ProcMap[resource] = proc;
        return store;
    }
};

/// Calls Restore with maps that the test fills and reads.
class RestoreFixture : public StagingTest
{
  protected:
    RedfishConfigResult Call(bool restoreMode = true, bool reservedFlag = false)
    {
        return m_Front->Restore(m_Values, m_Done, m_Failed, restoreMode, reservedFlag);
    }

    Tavrine::SettingStringMap m_Values;
    Tavrine::SettingStringMap m_Done;
    Tavrine::SettingStringMap m_Failed;
};

inline const LogLine RestoreEnter{3, "Enter BiosRedfishConfigProc::Restore()"};
inline LogLine RestoreExit(int code)
{
    return {3, "Exit BiosRedfishConfigProc::Restore(), ret = " + std::to_string(code)};
}

} // namespace staging
