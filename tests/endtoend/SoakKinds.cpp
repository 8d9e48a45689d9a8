// The kinds of operations of a soak run.
#include "SoakKinds.h"

#include <array>
#include <utility>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

namespace json = boost::json;

using namespace Tavrine;

namespace soak
{
namespace
{

constexpr std::size_t MostCopies = 6;
constexpr const char* Nonsense = "no such value";

std::string Post(const char* url) { return std::string("POST ") + url; }

} // namespace

const std::vector<Run::Kind>& Run::Kinds()
{
    static const std::vector<Kind> kinds = {
        {"change, checked", 10, &Run::ChangeChecked},
        {"change, unchecked", 8, &Run::ChangeUnchecked},
        {"queue, checked", 14, &Run::QueueChecked},
        {"queue, unchecked", 10, &Run::QueueUnchecked},
        {"change through another object", 3, &Run::ChangeOfAnother},
        {"change to nonsense", 5, &Run::ChangeToNonsense},
        {"flush", 10, &Run::Flush},
        {"restore", 6, &Run::Restore},
        {"default of one", 6, &Run::DefaultOfOne},
        {"default of all", 2, &Run::DefaultOfAll},
        {"default at the next start", 2, &Run::DefaultAtStart},
        {"restart", 4, &Run::Restart},
        {"read through a copy", 24, &Run::ReadSomething},
        {"look at all", 3, &Run::LookAtAll},
        {"look at one", 2, &Run::LookAtOne},
        {"look at what is pending", 3, &Run::LookAtPending},
        {"look at a protected one", 2, &Run::LookAtProtected},
        {"change a protected one", 5, &Run::ChangeProtected},
        {"queue protected ones", 3, &Run::QueueProtected},
        {"change a protected one without leave", 2, &Run::ChangeProtectedWithoutLeave},
        {"look through a file", 2, &Run::LookThroughAFile},
        {"write the file of defaults", 4, &Run::WriteFile},
        {"read the file of defaults", 4, &Run::ReadFile},
        {"copy", 5, &Run::Copy},
        {"assign", 3, &Run::Assign},
        {"new object", 2, &Run::NewObject},
        {"names and the rest", 4, &Run::NamesAndTheRest},
    };
    return kinds;
}

void Run::Change(bool checked, bool batch)
{
    Proc& proc = AnyCopy();
    const Setting& setting = AnySetting();
    const json::value& value = AnyValue(setting);
    const Outcome outcome =
        Perform(std::string(checked ? "change " : "unchecked change ") + (batch ? "later " : "") + setting.Name + "=" +
                    TextOf(value),
                [&]
                {
                    return checked ? proc.PatchSettingNewValue(setting.Name, TextOf(value), batch)
                                   : proc.PatchSettingNewValueWithOutCheck(setting.Name, TextOf(value), batch);
                });
    Staged(outcome, m_Queue, setting.Name, value, batch, Ordinary);
}

bool Run::IsInPlace(const Setting& setting, const json::value& value, const Place& place) const
{
    const json::value* pending = (m_Model.*place.Pending).if_contains(setting.Name);
    return (pending != nullptr ? *pending : (m_Model.*place.InForce).at(setting.Name)) == value;
}

/// Its own values are fresh, so that what it takes for unchanged is.
void Run::ChangeOfAnother()
{
    const Setting& setting = AnySetting();
    const json::value& value = AnyValue(setting);
    const bool inPlace = IsInPlace(setting, value, Ordinary);
    const std::unique_ptr<Proc> other = FreshObject();
    Queue queue;
    const Outcome outcome = Perform("another changes " + setting.Name + "=" + TextOf(value),
                                    [&] { return other->PatchSettingNewValue(setting.Name, TextOf(value), false); });
    Expect(outcome.Harmed() || (outcome.Sent("PATCH ") == 0) == inPlace, "whether a value was in place");
    Staged(outcome, queue, setting.Name, value, false, Ordinary);
}

void Run::ChangeToNonsense()
{
    Proc& proc = AnyCopy();
    const Setting& setting = AnySetting();
    if (!setting.Default.is_string())
    {
        const Outcome refused = Perform("change " + setting.Name + " to nonsense",
                                        [&] { return proc.PatchSettingNewValue(setting.Name, Nonsense, false); });
        Expect(refused.Sent("PATCH ") == 0 && !refused.Succeeded(), "nonsense was taken for a value");
        return;
    }
    // Too long for every text, and the name of no value.
    const std::string text(2000, 'x');
    const Outcome refused = Perform("unchecked change of " + setting.Name + " to nonsense",
                                    [&] { return proc.PatchSettingNewValueWithOutCheck(setting.Name, text, false); });
    // A BMC that refuses can be harmed so that its answer says 200.
    Expect(!refused.Succeeded() || refused.Harmed(), "nonsense was accepted");
    if (refused.Sent("PATCH ") > 0)
    {
        m_Queue.clear(); // refused as a whole
    }
}

void Run::Flush()
{
    Proc& proc = AnyCopy();
    const bool empty = m_Queue.empty();
    const Outcome outcome = Perform("flush", [&] { return proc.FlushChanges(); });
    Expect(!empty || (outcome.Exchanges.empty() && outcome.Result == 0), "a flush of nothing");
    Expect(empty || outcome.Sent("PATCH ") > 0, "a flush that sent nothing");
    Flushed(outcome, m_Queue, Ordinary);
}

void Run::Restore()
{
    Proc& proc = AnyCopy();
    SettingStringMap values;
    std::map<std::string, json::value> typed;
    for (std::size_t count = 1 + Pick(12); count > 0; --count)
    {
        const Setting& setting = AnySetting();
        typed[setting.Name] = AnyValue(setting);
        values[setting.Name] = TextOf(typed[setting.Name]);
    }
    const bool unknown = Chance(8);
    if (unknown)
    {
        values["NoSuchSetting"] = "1";
    }
    SettingStringMap done;
    SettingStringMap failed;
    const Outcome outcome = Perform("restore of " + std::to_string(values.size()) + (unknown ? ", one unknown" : ""),
                                    [&] { return proc.Restore(values, done, failed, Chance(2), Chance(2)); });
    if (outcome.Sent("PATCH ") > 0)
    {
        Expect(!unknown, "a restore with an unknown name sent something");
        for (const auto& entry : values)
        {
            m_Queue[entry.first] = typed.at(entry.first);
        }
        Flushed(outcome, m_Queue, Ordinary);
    }
    else if (outcome.Succeeded())
    {
        Expect(!unknown && values.empty() && m_Queue.empty(), "a restore that sent nothing");
    }
    else
    {
        Expect(unknown || outcome.Harmed(), "a restore failed: " + outcome.Told());
    }
    // Errors of a former restore can stand in `failed` when nothing was sent; those of this one cannot.
    Expect(!outcome.Succeeded() || done.size() == typed.size(), "what a restore did");
    for (const auto& entry : typed)
    {
        Expect(!outcome.Succeeded() || !failed.contains(proc.m_Prefix + "." + entry.first),
               "what a restore did not do");
    }
}

void Run::DefaultOfOne()
{
    Proc& proc = AnyCopy();
    const Setting& setting = AnySetting();
    const Outcome outcome =
        Perform("default of " + setting.Name, [&] { return proc.PostDefaultvalue(setting.Name, ""); });
    if (outcome.Sent("PATCH ") > 0)
    {
        m_Queue[setting.Name] = setting.Default;
        Flushed(outcome, m_Queue, Ordinary);
        return;
    }
    ExpectCode(outcome, {0}, "a default that was in place");
}

void Run::DefaultOfAll()
{
    Proc& proc = AnyCopy();
    const bool named = Chance(2);
    const Outcome outcome =
        Perform("default of all", [&]
                { return named ? proc.PostDefaultvalue("BootMode", "reset-bios") : proc.PostDefaultvalue("", ""); });
    const bool arrived = outcome.Arrived(Post(ResetBiosUrl)) > 0;
    ExpectCode(outcome, {1}, "the reset to defaults");
    Expect(arrived || !outcome.Succeeded(), "a reset to defaults was claimed that was not sent");
    if (arrived)
    {
        m_Model.ResetBios();
    }
}

void Run::DefaultAtStart()
{
    Proc& proc = AnyCopy();
    const Outcome outcome =
        Perform("default at the next start", [&] { return proc.PostDefaultvalue("BootMode", "post"); });
    Staged(outcome, m_Queue, DefaultsWish, "Enabled", false, Ordinary);
}

/// Of settings that others depend on the model does not know the defaults: it takes the BMC's word.
void Run::Restart()
{
    std::string response;
    const RedfishConfigResult result = m_Clean->Post(ResetUrl, R"({"ResetType":"ForceRestart"})", response, 60);
    Note(std::to_string(m_Done) + " restart");
    Expect(result == 0, "a restart");
    if (!m_Model.Restart(m_Settings, m_Guarded))
    {
        return;
    }
    const auto take = [](json::object told, const std::vector<Setting>& known, json::object& inForce)
    {
        for (const Setting& setting : known)
        {
            told[setting.Name] = inForce.at(setting.Name);
        }
        inForce = std::move(told);
    };
    const json::value wish = m_Model.InForce.at(DefaultsWish);
    take(Resource(*m_Clean, BiosUrl).at("Attributes").as_object(), m_Settings, m_Model.InForce);
    take(Protected(*m_Clean, "{}"), m_Guarded, m_Model.ProtectedInForce);
    m_Model.InForce[DefaultsWish] = wish;
}

void Run::ReadSomething()
{
    Proc& proc = AnyCopy();
    const std::string& name = AnySetting().Name;
    const std::string which = Chance(3) ? std::string() : name;
    SettingStringMap texts;
    SettingGroupMap groups;
    SettingCompareMap pairs;
    struct Reading
    {
        const char* Name;
        std::function<RedfishConfigResult()> Read;
        std::initializer_list<int> Codes;
    };
    const std::array<Reading, 9> readings = {{
        {"QueryGroupSettingValues", [&] { return proc.QueryGroupSettingValues(texts); }, {0}},
        {"QuerySettingValue", [&] { return proc.QuerySettingValue(name, texts); }, {0}},
        {"QueryGroupList", [&] { return proc.QueryGroupList(groups); }, {0}},
        {"QuerySettingValidValues", [&] { return proc.QuerySettingValidValues(texts, which); }, {0}},
        {"QuerySettingDefaultValues", [&] { return proc.QuerySettingDefaultValues(texts, which); }, {0, 7}},
        {"QuerySettingDescriptions", [&] { return proc.QuerySettingDescriptions(texts, which); }, {0}},
        {"QuerySaveSettingValues", [&] { return proc.QuerySaveSettingValues(texts); }, {0}},
        {"CompareSettingPendingValues", [&] { return proc.CompareSettingPendingValues(pairs, which); }, {0, 2}},
        {"CompareSettingDefaultValues", [&] { return proc.CompareSettingDefaultValues(pairs, which); }, {0, 7}},
    }};
    const Reading& reading = readings[Pick(readings.size())];
    const Outcome outcome = Perform(reading.Name, reading.Read);
    ExpectCode(outcome, reading.Codes, reading.Name);
    Expect(outcome.Sent("PATCH ") == 0, "a reading operation sent a change");
}

void Run::LookAtAll()
{
    const std::unique_ptr<Proc> proc = FreshObject(1);
    SettingStringMap values;
    const Outcome outcome = Perform("look at all", [&] { return proc->QueryGroupSettingValues(values); });
    ExpectCode(outcome, {0}, "QueryGroupSettingValues");
    if (outcome.Succeeded())
    {
        const std::string differences = Differences(m_Model.InForce, json::parse(values.at("UEFI")).as_object());
        Expect(differences.empty(), "what is shown:" + differences);
    }
}

void Run::LookAtOne()
{
    const std::unique_ptr<Proc> proc = FreshObject();
    const std::string& name = AnySetting().Name;
    SettingStringMap values;
    const Outcome outcome = Perform("look at " + name, [&] { return proc->QuerySettingValue(name, values); });
    ExpectCode(outcome, {0}, "QuerySettingValue");
    Expect(!outcome.Succeeded() || values == SettingStringMap{{"UEFI." + name, TextOf(m_Model.InForce.at(name))}},
           "what is shown of " + name);
}

void Run::LookAtPending()
{
    const std::unique_ptr<Proc> proc = FreshObject();
    SettingCompareMap compared;
    const Outcome outcome =
        Perform("look at what is pending", [&] { return proc->CompareSettingPendingValues(compared, ""); });
    ExpectCode(outcome, {0, 2}, "CompareSettingPendingValues");
    if (outcome.Succeeded() || outcome.Result == 2)
    {
        SettingCompareMap expected;
        for (const auto& [name, texts] : m_Model.Waiting())
        {
            expected["UEFI." + name] = texts;
        }
        Expect(compared == expected, "what is shown as pending: " + std::to_string(compared.size()) + " of " +
                                         std::to_string(expected.size()));
    }
}

void Run::LookAtProtected()
{
    const std::unique_ptr<Proc> proc = FreshObject(0, true);
    const std::string& name = AnyGuarded().Name;
    SettingStringMap values;
    const Outcome outcome =
        Perform("look at the protected " + name, [&] { return proc->QuerySettingValue(name, values); });
    ExpectCode(outcome, {0}, "QuerySettingValue of a protected setting");
    Expect(!outcome.Succeeded() ||
               values == SettingStringMap{{"UEFI." + name, TextOf(m_Model.ProtectedInForce.at(name))}},
           "a protected value");
}

void Run::ChangeProtected()
{
    const Setting& setting = AnyGuarded();
    const json::value& value = AnyValue(setting);
    const bool inPlace = IsInPlace(setting, value, Guarded);
    const bool checked = Chance(2);
    const std::unique_ptr<Proc> proc = FreshObject(0, true);
    Queue queue;
    const Outcome outcome =
        Perform("change the protected " + setting.Name + "=" + TextOf(value),
                [&]
                {
                    return checked ? proc->PatchSettingNewValue(setting.Name, TextOf(value), false)
                                   : proc->PatchSettingNewValueWithOutCheck(setting.Name, TextOf(value), false);
                });
    Expect(outcome.Harmed() || !checked || (outcome.Sent(Guarded.Request) == 0) == inPlace,
           "whether a protected value was in place");
    Staged(outcome, queue, setting.Name, value, false, Guarded);
}

void Run::QueueProtected()
{
    const std::unique_ptr<Proc> proc = FreshObject(0, true);
    Queue queue;
    for (std::size_t count = 1 + Pick(4); count > 0; --count)
    {
        const Setting& setting = AnyGuarded();
        const json::value& value = AnyValue(setting);
        const Outcome staged = Perform("queue the protected " + setting.Name + "=" + TextOf(value),
                                       [&] { return proc->PatchSettingNewValue(setting.Name, TextOf(value), true); });
        Staged(staged, queue, setting.Name, value, true, Guarded);
    }
    const bool empty = queue.empty();
    const Outcome outcome = Perform("flush protected ones", [&] { return proc->FlushChanges(); });
    Expect(empty || outcome.Sent(Guarded.Request) > 0, "a flush that sent nothing");
    Flushed(outcome, queue, Guarded);
}

/// Queued, since a change that is sent at once answers with what became of the sending. 1: the value is in place.
void Run::ChangeProtectedWithoutLeave()
{
    const std::unique_ptr<Proc> proc = FreshObject();
    const Setting& setting = AnyGuarded();
    const json::value& value = AnyValue(setting);
    const bool inPlace = IsInPlace(setting, value, Guarded);
    const Outcome outcome = Perform("change the protected " + setting.Name + "=" + TextOf(value) + " without leave",
                                    [&] { return proc->PatchSettingNewValue(setting.Name, TextOf(value), true); });
    ExpectCode(outcome, {inPlace ? 1 : 34}, "a change of a protected setting without leave");
    Expect(outcome.Sent(Guarded.Request) == 0 && outcome.Sent(Ordinary.Request) == 0,
           "a protected setting was changed without leave");
}

/// The values of a file stand in for those of the BMC, which is not asked.
void Run::LookThroughAFile()
{
    const std::string& name = AnySetting().Name;
    const json::object resource = {{"Attributes", {{name, "of the file"}}}};
    const std::string path = m_Folder.Write("resource.json", json::serialize(json::object{{"resource", resource}}));
    const std::unique_ptr<Proc> proc = FreshObject();
    proc->SetDebugConfigFile(path);
    SettingStringMap values;
    const Outcome outcome = Perform("look through a file", [&] { return proc->QueryGroupSettingValues(values); });
    Expect(outcome.Exchanges.empty() && values == SettingStringMap{{"UEFI." + name, "of the file"}},
           "what is shown of a file");
}

void Run::WriteFile()
{
    Proc& proc = AnyCopy();
    const std::string content = "defaults \"" + std::to_string(m_Random()) + "\"\n";
    const Outcome outcome = Perform("write the file", [&] { return proc.ImportUEFICustomDefaultFile(content); });
    const bool arrived = outcome.Arrived(Post(WriteFileUrl)) > 0;
    ExpectCode(outcome, {0}, "ImportUEFICustomDefaultFile");
    Expect(arrived || !outcome.Succeeded(), "a file was claimed that was not sent");
    if (arrived)
    {
        m_Model.File = content;
    }
}

void Run::ReadFile()
{
    Proc& proc = AnyCopy();
    std::string content;
    const Outcome outcome = Perform("read the file", [&] { return proc.ExportUEFICustomDefaultFile(content); });
    Expect(outcome.Harmed() || outcome.Succeeded() == m_Model.File.has_value(), "whether there is a file");
    // The library hands the answer on as it stands.
    json::error_code unreadable;
    const json::value answer = json::parse(content, unreadable);
    Expect(!outcome.Succeeded() || (unreadable && outcome.Harmed()) ||
               (!unreadable && answer.at("Content") == json::value(*m_Model.File)),
           "the file");
}

void Run::Copy()
{
    if (m_Copies.size() == MostCopies)
    {
        m_Copies.erase(m_Copies.begin() + static_cast<std::ptrdiff_t>(Pick(m_Copies.size())));
    }
    m_Copies.push_back(std::make_unique<Proc>(AnyCopy()));
    Note(std::to_string(m_Done) + " copy");
}

void Run::Assign()
{
    AnyCopy() = AnyCopy();
    Note(std::to_string(m_Done) + " assign");
}

/// What waits in an object goes with it. The former object goes for another reason, too: failures of
/// its flushes gather in it for as long as it lives, as they must.
void Run::NewObject()
{
    m_Copies.clear();
    m_Queue.clear();
    Config_Options options;
    options.OutputFormat = static_cast<std::int32_t>(Pick(2));
    m_Copies.push_back(
        std::make_unique<Proc>(m_Connection->Info(), Chance(3) ? SystemTypeBios : SystemTypeUefi, options));
    Note(std::to_string(m_Done) + " new object");
}

void Run::NamesAndTheRest()
{
    Proc& proc = AnyCopy();
    proc.SetPrefix("A" + std::to_string(Pick(10)), "B");
    const Outcome outcome =
        Perform("names and the rest",
                [&]
                {
                    using Unsupported = RedfishConfigResult (RedfishConfigProc::*)();
                    constexpr Unsupported operations[] = {
                        &RedfishConfigProc::UnsupportedOperation1, &RedfishConfigProc::UnsupportedOperation2,
                        &RedfishConfigProc::UnsupportedOperation3, &RedfishConfigProc::UnsupportedOperation4,
                        &RedfishConfigProc::UnsupportedOperation5, &RedfishConfigProc::UnsupportedOperation6,
                        &RedfishConfigProc::UnsupportedOperation7, &RedfishConfigProc::UnsupportedOperation8,
                        &RedfishConfigProc::UnsupportedOperation9, &RedfishConfigProc::UnsupportedOperation10};
                    for (const Unsupported operation : operations)
                    {
                        Expect((proc.*operation)() == 11, "an operation without a meaning");
                    }
                    return proc.CheckSettingCouldbeSupported("BootMode");
                });
    Expect(outcome.Result == 0 && outcome.Exchanges.empty(), "CheckSettingCouldbeSupported");
    Expect(proc.GetSecondPrefix() == "B", "GetSecondPrefix");
}

} // namespace soak
