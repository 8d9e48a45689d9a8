#include "RestoreCommand.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "FakeFront.h"
#include "Options.h"
#include "RestoreSend.h"

using namespace Tavrine::Tool;
using namespace tooltest;

namespace
{

constexpr const char* Registry = R"({"@odata.type":"#AttributeRegistry.v1_3_6.AttributeRegistry","Id":"R.v1_0_0",
    "RegistryEntries":{"Attributes":[
    {"AttributeName":"Mode","Type":"Enumeration","CurrentValue":"Free","Value":[{"ValueName":"Free"},{"ValueName":"Fixed"}]},
    {"AttributeName":"Size","Type":"Integer","CurrentValue":7,"LowerBound":1,"UpperBound":9},
    {"AttributeName":"Tag","Type":"String","CurrentValue":"t","MaxLength":4},
    {"AttributeName":"Unique","Type":"String","CurrentValue":"u","IsSystemUniqueProperty":true},
    {"AttributeName":"Fixed","Type":"String","CurrentValue":"f","ReadOnly":true},
    {"AttributeName":"Silent","Type":"String"},
    {"AttributeName":"Seal","Type":"String","CurrentValue":"s","Oem":{"Zorvan":{"Protected":true}}},
    {"AttributeName":"Word","Type":"Password"},
    {"AttributeName":"_first","Type":"String","CurrentValue":"1"},
    {"AttributeName":"Zone","Type":"Integer","CurrentValue":1,"UpperBound":9},
    {"AttributeName":"apple","Type":"String","CurrentValue":"1"}],
    "Dependencies":[{"Type":"Map","DependencyFor":"Size","Dependency":{"MapFrom":[{"MapFromAttribute":"Mode",
    "MapFromProperty":"CurrentValue","MapFromCondition":"EQU","MapFromValue":"Fixed"}],"MapToAttribute":"Size",
    "MapToProperty":"ReadOnly","MapToValue":true}}]}})";

RestorePlan PlanOf(const SettingStringMap& settings, bool sameSystem = false, bool uefi = false,
                   const std::set<std::string>& reported = {})
{
    RestorePlan plan;
    EXPECT_EQ(TakeSavedNames({{}, settings}, {"BIOS", "BIOS"}, plan), "");
    RedfishConfigSettingManager manager(Registry, false, Tavrine::Config_Options());
    RedfishConfigResult result = JudgeRestore(
        manager, sameSystem, uefi, [&](const std::string& name) { return reported.contains(name); }, plan);
    EXPECT_EQ(result.ErrorCode(), 0) << result.ErrorMsg();
    return plan;
}

const RestoreSetting& Find(const RestorePlan& plan, const std::string& name)
{
    for (const RestoreSetting& setting : plan.Settings)
    {
        if (setting.Name == name)
        {
            return setting;
        }
    }
    throw std::out_of_range(name);
}

std::vector<std::vector<std::string>> Calls(const RestorePlan& plan)
{
    std::vector<std::vector<std::string>> calls;
    for (const auto& call : plan.Calls)
    {
        std::vector<std::string>& names = calls.emplace_back();
        for (const std::size_t index : call)
        {
            names.push_back(plan.Settings[index].Name);
        }
    }
    return calls;
}

using Names = std::vector<std::vector<std::string>>;

/// What the library and the BMC say during one restore; the object that is made for
/// each question answers from here.
struct Script
{
    std::vector<SettingStringMap> Asked;
    std::vector<bool> SameSystem;
    RedfishConfigResult Answer{0, "", ""};
    SettingStringMap Failed;
    std::vector<RedfishConfigResult> Errors;
    RedfishConfigResult Read{0, "", ""};
    SettingStringMap Effective;
    SettingCompareMap Pending;
};

class ScriptedFront : public FakeFront
{
  public:
    explicit ScriptedFront(Script& script) : m_Script(script) {}

    RedfishConfigResult Restore(SettingStringMap& values, SettingStringMap& done, SettingStringMap& failed,
                                bool sameSystem, bool) override
    {
        m_Script.Asked.push_back(values);
        m_Script.SameSystem.push_back(sameSystem);
        for (const auto& [name, value] : values)
        {
            done["BIOS." + name] = value; // says nothing
        }
        failed = m_Script.Failed;
        m_ErrorList = m_Script.Errors;
        return m_Script.Answer;
    }
    RedfishConfigResult CompareSettingPendingValues(SettingCompareMap& values, const std::string&) override
    {
        values = m_Script.Pending;
        return m_Script.Pending.empty() && m_Script.Read == 0 ? RedfishConfigResult(2, "", "") : m_Script.Read;
    }
    RedfishConfigResult QueryGroupSettingValues(SettingStringMap& values) override
    {
        values = m_Script.Effective;
        return m_Script.Read;
    }

  private:
    Script& m_Script;
};

Options OptionsFor()
{
    Options options;
    options.Names = {"file.json"};
    return options;
}

RestorePlan Sent(Script& script, const SettingStringMap& settings, const Options& options = OptionsFor())
{
    RestorePlan plan = PlanOf(settings);
    std::vector<std::string> notes;
    SendRestore(
        plan, options, [&] { return std::make_unique<ScriptedFront>(script); }, notes);
    return plan;
}

} // namespace

TEST(RestorePlan, SettingsAreJudgedBeforeAnythingIsSent)
{
    const RestorePlan plan = PlanOf({{"BIOS.Mode", "Free"},
                                     {"BIOS.Size", "11"},
                                     {"BIOS.Tag", "new"},
                                     {"BIOS.Unique", "v"},
                                     {"BIOS.Fixed", "g"},
                                     {"BIOS.Silent", "x"},
                                     {"BIOS.Stranger", "x"}});
    EXPECT_EQ(Find(plan, "Mode").Outcome, RestoreOutcome::InPlace);
    EXPECT_EQ(Find(plan, "Tag").Outcome, RestoreOutcome::Planned);
    EXPECT_EQ(Find(plan, "Size").Outcome, RestoreOutcome::Refused);
    EXPECT_EQ(Find(plan, "Size").Code, 10);
    EXPECT_EQ(Find(plan, "Fixed").Outcome, RestoreOutcome::Refused);
    EXPECT_EQ(Find(plan, "Fixed").Code, 18);
    EXPECT_EQ(Find(plan, "Unique").Outcome, RestoreOutcome::NotSent);
    EXPECT_EQ(Find(plan, "Unique").Code, 0);
    EXPECT_EQ(Find(plan, "Silent").Outcome, RestoreOutcome::NotSent);
    EXPECT_EQ(Find(plan, "Silent").Code, 20);
    EXPECT_EQ(Find(plan, "Stranger").Outcome, RestoreOutcome::NotSent);
    EXPECT_TRUE(Find(plan, "Stranger").Stranger);
    EXPECT_EQ(Calls(plan), (Names{{"Tag"}}));
}

TEST(RestorePlan, WhatBelongsToOneSystemGoesToTheSameSystem)
{
    EXPECT_EQ(Calls(PlanOf({{"Unique", "v"}}, true)), (Names{{"Unique"}}));
}

TEST(RestorePlan, AReportedSettingWithoutAValueIsSent)
{
    EXPECT_EQ(Calls(PlanOf({{"Silent", "v"}}, false, false, {"Silent"})), (Names{{"Silent"}}));
}

TEST(RestorePlan, ProtectedSettingsOfAUefiSystemAreLeftOut)
{
    const RestorePlan plan = PlanOf({{"Seal", "v"}}, false, true);
    EXPECT_EQ(Find(plan, "Seal").Outcome, RestoreOutcome::NotSent);
    EXPECT_EQ(Find(plan, "Seal").Code, 34);
    EXPECT_EQ(Calls(PlanOf({{"Seal", "v"}})), (Names{{"Seal"}}));
}

TEST(RestorePlan, WhatAnotherSettingOfTheFileLocksGoesFirst)
{
    EXPECT_EQ(Calls(PlanOf({{"Mode", "Fixed"}, {"Size", "3"}, {"Tag", "new"}})), (Names{{"Size"}, {"Mode", "Tag"}}));
}

TEST(RestorePlan, NamesAreFoundWhereTheirBytesComeInAnotherOrder)
{
    const RestorePlan plan =
        PlanOf({{"apple", "2"}, {"_first", "2"}, {"Zone", "10"}, {"Mode", "Fixed"}, {"Size", "3"}});
    EXPECT_EQ(Find(plan, "Zone").Outcome, RestoreOutcome::Refused);
    EXPECT_EQ(Find(plan, "Zone").Code, 10);
    for (const char* name : {"apple", "_first", "Mode", "Size"})
    {
        EXPECT_EQ(Find(plan, name).Outcome, RestoreOutcome::Planned) << name;
    }
    EXPECT_EQ(Calls(plan), (Names{{"Size"}, {"Mode", "_first", "apple"}}));
}

TEST(RestorePlan, OneSettingUnderTwoNamesIsRefused)
{
    RestorePlan plan;
    EXPECT_EQ(TakeSavedNames({{}, {{"BIOS.A", "1"}, {"A", "2"}}}, {"BIOS", "BIOS"}, plan),
              "the setting A stands in it under two names");
}

TEST(RestorePlan, ThePrefixOfTheFileIsTakenOff)
{
    RestorePlan plan;
    SavedSettings saved{{}, {{"UEFI.A", "1"}, {"B", "2"}}};
    saved.Header.Prefix = "UEFI";
    EXPECT_EQ(TakeSavedNames(saved, {"BIOS", "BIOS"}, plan), "");
    ASSERT_EQ(plan.Settings.size(), 2U);
    EXPECT_EQ(plan.Settings[0].Name, "A");
    EXPECT_EQ(plan.Settings[1].Name, "B");
}

TEST(RestorePlan, ThePrefixOfAnotherKindOfSystemIsTakenOff)
{
    RestorePlan plan;
    EXPECT_EQ(TakeSavedNames({{}, {{"BIOS.A", "1"}, {"UEFI.B", "2"}}}, {"UEFI", "UEFI"}, plan), "");
    ASSERT_EQ(plan.Settings.size(), 2U);
    EXPECT_EQ(plan.Settings[0].Name, "A");
    EXPECT_EQ(plan.Settings[1].Name, "B");
}

TEST(RestoreCommand, OneRefusedSettingDoesNotKeepTheOthersBack)
{
    Script script;
    script.Effective = {{"BIOS.Tag", "t"}, {"BIOS.Size", "7"}};
    script.Pending = {{"BIOS.Tag", {"t", "new"}}};
    const RestorePlan plan = Sent(script, {{"Tag", "new"}, {"Size", "100"}});
    EXPECT_EQ(script.Asked, (std::vector<SettingStringMap>{{{"Tag", "new"}}}));
    EXPECT_EQ(Find(plan, "Tag").Outcome, RestoreOutcome::Sent);
    EXPECT_EQ(Find(plan, "Size").Outcome, RestoreOutcome::Refused);
}

TEST(RestoreCommand, SameSystemIsHandedOn)
{
    Script script;
    Options options = OptionsFor();
    Sent(script, {{"Tag", "new"}}, options);
    options.SameSystem = true;
    Sent(script, {{"Tag", "new"}}, options);
    EXPECT_EQ(script.SameSystem, (std::vector<bool>{false, true}));
}

TEST(RestoreCommand, NothingToSendAsksForNothing)
{
    Script script;
    script.Effective = {{"BIOS.Tag", "t"}};
    const RestorePlan plan = Sent(script, {{"Tag", "t"}});
    EXPECT_TRUE(script.Asked.empty());
    EXPECT_EQ(Find(plan, "Tag").Outcome, RestoreOutcome::InPlace);
}

TEST(RestoreCommand, WhatWaitsAlreadyIsNotInPlace)
{
    Script script;
    script.Effective = {{"BIOS.Tag", "old"}};
    script.Pending = {{"BIOS.Tag", {"old", "t"}}};
    EXPECT_EQ(Find(Sent(script, {{"Tag", "t"}}), "Tag").Outcome, RestoreOutcome::Waiting);
    EXPECT_TRUE(script.Asked.empty());
}

/// The library's list of what is done holds every setting in each of these.
TEST(RestoreCommand, NothingIsClaimedThatIsNotKnown)
{
    struct Case
    {
        const char* What;
        RedfishConfigResult Answer;
        std::vector<RedfishConfigResult> Errors;
        SettingStringMap Failed;
        int Read;
        std::string Effective;
        SettingCompareMap Pending;
        RestoreOutcome Outcome;
        std::string Why;
    };
    const SettingCompareMap waiting = {{"BIOS.Tag", {"t", "new"}}};
    const std::string notShown = "the BMC does not show it among its pending values";
    const Case cases[] = {
        {"accepted and shown", {1, "", ""}, {}, {}, 0, "t", waiting, RestoreOutcome::Sent, ""},
        {"accepted and in force", {0, "", ""}, {}, {}, 0, "new", {}, RestoreOutcome::InPlace, ""},
        {"accepted, not shown", {0, "", ""}, {}, {}, 0, "t", {}, RestoreOutcome::Unknown, notShown},
        {"accepted, unreadable", {0, "", ""}, {}, {}, 24, "", {}, RestoreOutcome::Sent, ""},
        {"refused by name",
         {18, "no", ""},
         {{10, "bad value", "BIOS.Tag"}},
         {},
         0,
         "t",
         {},
         RestoreOutcome::Refused,
         "bad value"},
        {"refused, bare name",
         {18, "no", ""},
         {{10, "bad value", "Tag"}},
         {},
         24,
         "",
         {},
         RestoreOutcome::Refused,
         "bad value"},
        {"in the failed map", {7, "", ""}, {}, {{"BIOS.Tag", "bad"}}, 0, "t", {}, RestoreOutcome::Refused, "bad"},
        {"cut off, unreadable", {24, "gone", ""}, {}, {}, 24, "", {}, RestoreOutcome::Unknown, "gone"},
        {"cut off, not shown", {24, "gone", ""}, {}, {}, 0, "t", {}, RestoreOutcome::Unknown, "gone; " + notShown},
        {"cut off, but shown", {24, "gone", ""}, {}, {}, 0, "t", waiting, RestoreOutcome::Sent, ""},
        {"cut off, whole sentence",
         {24, "It is gone.", ""},
         {},
         {},
         0,
         "t",
         {},
         RestoreOutcome::Unknown,
         "It is gone; " + notShown},
        {"busy", {33, "busy", ""}, {}, {}, 33, "", {}, RestoreOutcome::Unknown, "busy"},
    };
    for (const Case& one : cases)
    {
        Script script;
        script.Answer = one.Answer;
        script.Errors = one.Errors;
        script.Failed = one.Failed;
        script.Read = RedfishConfigResult(one.Read, "", "");
        script.Effective = {{"BIOS.Tag", one.Effective}};
        script.Pending = one.Pending;
        const RestorePlan plan = Sent(script, {{"Tag", "new"}});
        EXPECT_EQ(Find(plan, "Tag").Outcome, one.Outcome) << one.What;
        EXPECT_EQ(Find(plan, "Tag").Why, one.Why) << one.What;
    }
}

TEST(RestoreCommand, BehindALostConnectionNothingElseIsSent)
{
    Script script;
    script.Answer = {24, "gone", ""};
    script.Read = {24, "gone", ""};
    const RestorePlan plan = Sent(script, {{"Mode", "Fixed"}, {"Size", "3"}});
    EXPECT_EQ(script.Asked, (std::vector<SettingStringMap>{{{"Size", "3"}}}));
    EXPECT_EQ(Find(plan, "Size").Outcome, RestoreOutcome::Unknown);
    EXPECT_EQ(Find(plan, "Mode").Outcome, RestoreOutcome::NotSent);
}

TEST(RestoreCommand, WhatWasNotSentHasTheCodeOfWhatStoppedTheRun)
{
    Script script;
    script.Answer = {33, "not ready", ""};
    script.Read = {33, "not ready", ""};
    const RestorePlan plan = Sent(script, {{"Mode", "Fixed"}, {"Size", "3"}});
    EXPECT_EQ(Find(plan, "Mode").Outcome, RestoreOutcome::NotSent);
    EXPECT_EQ(Find(plan, "Mode").Code, 33);
}

TEST(RestoreCommand, WhatIsInPlaceMayWaitWhereItCannotBeReadBack)
{
    Script script;
    script.Read = {26, "no values", ""};
    const RestorePlan plan = Sent(script, {{"Mode", "Free"}, {"Tag", "new"}});
    EXPECT_EQ(Find(plan, "Mode").Outcome, RestoreOutcome::InPlace);
    Answer answer;
    TellRestore(plan, OptionsFor(), "BIOS", answer);
    EXPECT_EQ(answer.Text, "BIOS.Mode\tFree\tin place: whether it waits for a reboot is not known\n"
                           "BIOS.Tag\tnew\tsent, takes effect after a reboot\n");
    EXPECT_EQ(answer.Code, 0);
}

TEST(RestoreCommand, NothingIsInPlaceWhereAnotherValueMayWait)
{
    Script script;
    script.Read = {26, "no values", ""};
    RestorePlan plan = PlanOf({{"Mode", "Free"}});
    plan.PendingUnread = true;
    std::vector<std::string> notes;
    SendRestore(
        plan, OptionsFor(), [&] { return std::make_unique<ScriptedFront>(script); }, notes);
    EXPECT_EQ(plan.Settings.front().Outcome, RestoreOutcome::Unknown);
    EXPECT_EQ(plan.Settings.front().Code, 26);
    Options options = OptionsFor();
    options.Json = true;
    Answer answer;
    TellRestore(plan, options, "BIOS", answer);
    EXPECT_EQ(answer.Data,
              (boost::json::object{
                  {"BIOS.Mode",
                   {{"value", "Free"}, {"outcome", "unknown"}, {"reason", "another value may wait for a reboot"}}}}));
    EXPECT_EQ(answer.Code, 26);
}

TEST(RestoreCommand, StrangersAreOneFailureAndRowsEach)
{
    SettingStringMap settings;
    for (int number = 0; number < 100'000; ++number)
    {
        settings["BIOS.Stranger" + std::to_string(100'000 + number)] = "x";
    }
    const RestorePlan plan = PlanOf(settings);
    Answer answer;
    TellRestore(plan, OptionsFor(), "BIOS", answer);
    ASSERT_EQ(answer.Errors.size(), 1U);
    EXPECT_EQ(answer.Errors[0].Code, 20);
    EXPECT_EQ(answer.Errors[0].Message, "100000 settings of the file are not known to this system and left out: "
                                        "Stranger100000, Stranger100001, Stranger100002, Stranger100003, "
                                        "Stranger100004 and 99995 more");
    EXPECT_EQ(answer.Errors[0].Cause, "file file.json");
    EXPECT_NE(answer.Text.find("BIOS.Stranger199999\tx\tnot sent: this system does not know the setting\n"),
              std::string::npos);
}

TEST(RestoreCommand, WhatBefellManyIsToldOnce)
{
    RestorePlan plan;
    for (const char* name : {"A", "B", "C", "D", "E", "F", "G"})
    {
        RestoreSetting& setting = plan.Settings.emplace_back();
        setting.Name = name;
        setting.Outcome = RestoreOutcome::Unknown;
        setting.Code = 24;
        setting.Why = "gone";
    }
    plan.Settings[2].Why = "lost";
    Answer answer;
    TellRestore(plan, OptionsFor(), "BIOS", answer);
    ASSERT_EQ(answer.Errors.size(), 2U);
    EXPECT_EQ(answer.Errors[0].Message, "6 settings: unknown: gone");
    EXPECT_EQ(answer.Errors[1].Message, "BIOS.C: unknown: lost");
    EXPECT_EQ(answer.Code, 24);
    EXPECT_NE(answer.Text.find("BIOS.G\t\tunknown: gone\n"), std::string::npos) << answer.Text;

    plan.Settings.pop_back();
    Answer few;
    TellRestore(plan, OptionsFor(), "BIOS", few);
    EXPECT_EQ(few.Errors.size(), 6U);
}

TEST(RestoreCommand, PasswordsAreNotShown)
{
    const RestorePlan plan = PlanOf({{"Word", "hidden1"}}, false, false, {"Word"});
    Answer answer;
    TellRestore(plan, OptionsFor(), "BIOS", answer);
    EXPECT_EQ(answer.Text, "BIOS.Word\t********\twould be sent\n");
}

/// A BMC may repeat what it was sent in its refusal of that, of something else or of all.
TEST(RestoreCommand, PasswordsThatABmcRepeatsAreBlottedOut)
{
    struct Case
    {
        const char* What;
        std::string Secret;
        RedfishConfigResult Answer;
        std::vector<RedfishConfigResult> Errors;
        std::string OfWord;
        std::string OfTag;
    };
    const std::string leftOut = "what the BMC answered is not shown, since a new password may stand in it";
    const std::string spaced = R"(plain "77")";
    const Case cases[] = {
        {"refused by name",
         "plain77",
         {18, "no", ""},
         {{18, "The value plain77 is bad", "BIOS.Word"}},
         "refused: The value ******** is bad",
         "unknown: no"},
        {"refused with another",
         "plain77",
         {18, "no", ""},
         {{18, "Not with plain77", "BIOS.Tag"}},
         "unknown: no",
         "refused: Not with ********"},
        {"the whole call", "plain77", {18, "No plain77", ""}, {}, "unknown: No ********", "unknown: No ********"},
        {"as JSON",
         spaced,
         {18, R"(No {"Word":"plain \"77\""})", ""},
         {},
         R"(unknown: No {"Word":"********"})",
         R"(unknown: No {"Word":"********"})"},
        {"short",
         "77",
         {18, "no", ""},
         {{18, "The value 77 is bad", "BIOS.Word"}},
         "refused: " + leftOut,
         "unknown: no"},
        {"short, the whole call", "77", {18, "No 77", ""}, {}, "unknown: " + leftOut, "unknown: " + leftOut},
        {"short, refused by name before the answer was lost",
         "77",
         {24, "gone", ""},
         {{18, "The value 77 is bad", "BIOS.Word"}},
         "refused: " + leftOut,
         "unknown: gone"},
        {"short, and no answer", "77", {24, "h:77: gone", ""}, {}, "unknown: h:77: gone", "unknown: h:77: gone"},
    };
    for (const Case& one : cases)
    {
        Script script;
        script.Answer = one.Answer;
        script.Errors = one.Errors;
        script.Read = {24, "", ""};
        RestorePlan plan = PlanOf({{"Word", one.Secret}, {"Tag", "new"}}, false, false, {"Word"});
        std::vector<std::string> notes;
        SendRestore(
            plan, OptionsFor(), [&] { return std::make_unique<ScriptedFront>(script); }, notes);
        Answer text;
        TellRestore(plan, OptionsFor(), "BIOS", text);
        EXPECT_EQ(text.Text, "BIOS.Tag\tnew\t" + one.OfTag + "\nBIOS.Word\t********\t" + one.OfWord + "\n") << one.What;
        Options options = OptionsFor();
        options.Json = true;
        Answer data;
        TellRestore(plan, options, "BIOS", data);
        std::string told = data.Message + boost::json::serialize(data.Data);
        for (const Failure& failure : data.Errors)
        {
            told += failure.Message + failure.Cause;
        }
        EXPECT_TRUE(told.find("77") == std::string::npos || one.Answer.ErrorCode() == 24) << one.What << told;
    }
}

TEST(RestoreCommand, AWarningShowsNoPasswordEither)
{
    struct Case
    {
        std::string Secret;
        RedfishConfigResult Read;
        std::string Told;
    };
    const std::string leftOut = "what the BMC answered is not shown, since a new password may stand in it";
    const Case cases[] = {
        {"plain77", {33, "Not ready for plain77.", ""}, "Not ready for ********."},
        {"rea", {33, "Not ready.", ""}, leftOut},
        {"rea", {24, "Not ready.", ""}, "Not ready."},
        {"other", {33, "Not ready.", ""}, "Not ready."},
    };
    for (const Case& one : cases)
    {
        Script script;
        script.Read = one.Read;
        RestorePlan plan = PlanOf({{"Word", one.Secret}, {"Mode", "Free"}}, false, false, {"Word"});
        std::vector<std::string> notes;
        ScriptedFront front(script);
        FindWaiting(plan, front, notes);
        SendRestore(
            plan, OptionsFor(), [&] { return std::make_unique<ScriptedFront>(script); }, notes);
        EXPECT_EQ(notes, (std::vector<std::string>{"warning: what waits for a reboot could not be read: " + one.Told,
                                                   "warning: the values could not be read back: " + one.Told}));
    }
}

TEST(RestoreCommand, FilesOfOtherSystemsNeedForce)
{
    struct Case
    {
        std::string Model, Registry, Serial;
        bool Same, Force;
        std::string Trait;
    };
    const Case cases[] = {
        {"M", "R", "S", false, false, ""},      {"M", "R", "S", true, false, ""},
        {"N", "R", "S", false, false, "model"}, {"M", "Q", "S", false, false, "attribute registry"},
        {"M", "R", "T", false, false, ""},      {"M", "R", "T", true, false, "serial number"},
        {"N", "Q", "T", true, true, ""},        {"", "", "", true, false, ""},
    };
    for (const Case& one : cases)
    {
        SavedHeader header;
        header.Model = one.Model;
        header.Registry = one.Registry;
        header.SerialNumber = one.Serial;
        SystemResource system;
        system.Model = "M";
        system.SerialNumber = "S";
        BiosResource bios;
        bios.Registry = "R";
        Options options = OptionsFor();
        options.SameSystem = one.Same;
        options.Force = one.Force;
        std::vector<std::string> notes;
        const auto failure = OtherSystem(header, system, bios, options, notes);
        EXPECT_EQ(failure.has_value(), !one.Trait.empty()) << one.Model << one.Registry << one.Serial;
        if (failure)
        {
            EXPECT_EQ(failure->Code, 16);
            EXPECT_TRUE(failure->Message.starts_with("The file file.json is from another system: its " + one.Trait))
                << failure->Message;
        }
        EXPECT_EQ(notes.size(), one.Model.empty() ? 1U : 0U);
    }
}
