#include "LoadDefaultCommand.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>

#include "ConfigFile.h"
#include "FakeFront.h"
#include "Options.h"

using namespace Tavrine::Tool;
using namespace tooltest;

namespace
{

/// What the library and the BMC say; the objects that are made for each question answer
/// from here.
struct Script
{
    /// Setting and request of each call.
    std::vector<std::pair<std::string, std::string>> Asked;
    /// By setting; 1 where there is none.
    std::map<std::string, RedfishConfigResult> Answers;
    RedfishConfigResult Read{0, "", ""};
    SettingStringMap Effective;
    SettingCompareMap Pending;
    /// Of the registry, by setting.
    SettingStringMap Defaults;
};

constexpr const char* Registry = R"({"@odata.type":"#AttributeRegistry.v1_3_6.AttributeRegistry","Id":"R.v1_0_0",
    "RegistryEntries":{"Attributes":[
    {"AttributeName":"A","Type":"String","CurrentValue":"1"},
    {"AttributeName":"B","Type":"String","CurrentValue":"1"},
    {"AttributeName":"C","Type":"String","CurrentValue":"1"},
    {"AttributeName":"D","Type":"String","CurrentValue":"1"},
    {"AttributeName":"Mode","Type":"Enumeration","CurrentValue":"1"},
    {"AttributeName":"Size","Type":"Integer","CurrentValue":1},
    {"AttributeName":"Flag","Type":"Boolean","CurrentValue":true},
    {"AttributeName":"Bare"},
    {"AttributeName":"Word","Type":"Password"}]}})";

/// Reads the registry with the defaults of the script.
ManagerReader KindsOf(const Script& script)
{
    return [&script](Tavrine::RedfishConfigProc& front, std::unique_ptr<RedfishConfigSettingManager>& manager)
    {
        boost::json::value registry = boost::json::parse(Registry);
        for (boost::json::value& attribute : registry.at("RegistryEntries").at("Attributes").as_array())
        {
            const auto known = script.Defaults.find(attribute.at("AttributeName").as_string().c_str());
            if (known != script.Defaults.end())
            {
                attribute.as_object()["DefaultValue"] = known->second;
            }
        }
        manager =
            std::make_unique<RedfishConfigSettingManager>(boost::json::serialize(registry), false, front.m_Options);
        return RedfishConfigResult(0, "", "");
    };
}

class ScriptedFront : public FakeFront
{
  public:
    explicit ScriptedFront(Script& script) : m_Script(script) {}

    RedfishConfigResult PostDefaultvalue(const std::string& setting, const std::string& request) override
    {
        m_Script.Asked.emplace_back(setting, request);
        const auto answer = m_Script.Answers.find(setting);
        return answer != m_Script.Answers.end() ? answer->second : RedfishConfigResult(1, "", "");
    }
    RedfishConfigResult CompareSettingPendingValues(SettingCompareMap& values, const std::string&) override
    {
        values = m_Script.Pending;
        return m_Script.Read == 0 && m_Script.Pending.empty() ? RedfishConfigResult(2, "", "") : m_Script.Read;
    }
    RedfishConfigResult QueryGroupSettingValues(SettingStringMap& values) override
    {
        values = m_Script.Effective;
        return m_Script.Read;
    }

  private:
    Script& m_Script;
};

Options OptionsFor(const std::vector<std::string>& names)
{
    Options options;
    options.Names = names;
    return options;
}

Answer Load(Script& script, const std::vector<std::string>& names, WaitingChanges& waiting)
{
    return LoadSingleDefaults(
        OptionsFor(names), [&] { return std::make_unique<ScriptedFront>(script); }, KindsOf(script), waiting);
}

Answer Load(Script& script, const std::vector<std::string>& names)
{
    WaitingChanges waiting;
    return Load(script, names, waiting);
}

using Calls = std::vector<std::pair<std::string, std::string>>;

} // namespace

TEST(LoadDefaultCommand, AllDefaultsAreAskedForByOneOfTwoRequests)
{
    for (const bool post : {false, true})
    {
        Script script;
        Options options = OptionsFor({"BIOS"});
        options.Post = post;
        ScriptedFront front(script);
        const Answer answer = LoadAllDefaults(front, options);
        EXPECT_EQ(answer.Code, 0);
        EXPECT_EQ(answer.Text, "BIOS: sent, takes effect after a reboot\n");
        EXPECT_EQ(script.Asked, (Calls{{"", post ? "post" : "reset-bios"}}));
    }
}

TEST(LoadDefaultCommand, ARefusedLoadOfAllIsAFailure)
{
    Script script;
    script.Answers.emplace("", RedfishConfigResult(28, "refused", ""));
    ScriptedFront front(script);
    const Answer answer = LoadAllDefaults(front, OptionsFor({"BIOS"}));
    EXPECT_EQ(answer.Code, 28);
    EXPECT_EQ(answer.Text, "");
}

/// Code 0 alone tells nothing: it is also that of a change that the BMC took and keeps waiting.
TEST(LoadDefaultCommand, EachSettingIsToldByWhatTheBmcShows)
{
    struct Case
    {
        const char* What;
        int Code;
        int Read;
        SettingStringMap Effective;
        SettingCompareMap Pending;
        const char* Default;
        std::string Word;
        int Exit;
        const char* Expected;
    };
    const std::string sent = "sent, takes effect after a reboot";
    const std::string notShown =
        "unknown: no failure was reported, but the BMC does not show the default among its pending values";
    const std::string open = "unknown: whether it has its default, or gets it with a reboot, is not known";
    const std::string unread = open + "; its pending value could not be read";
    const std::string noDefault = open + "; its default could not be read";
    const SettingStringMap shown = {{"BIOS.A", "1"}};
    const Case cases[] = {
        {"accepted and shown", 1, 0, shown, {{"BIOS.A", {"1", "5"}}}, "5", sent, 0, "5"},
        {"accepted and shown, no default", 1, 0, shown, {{"BIOS.A", {"1", "5"}}}, nullptr, sent, 0, "5"},
        {"accepted, not shown", 1, 0, shown, {}, "5", notShown, 18, nullptr},
        {"accepted, not shown, no default", 1, 0, shown, {}, nullptr, noDefault, 18, nullptr},
        {"accepted, another value waits", 1, 0, shown, {{"BIOS.A", {"1", "4"}}}, "5", notShown, 18, nullptr},
        {"accepted, another value than the one in force waits",
         1,
         0,
         shown,
         {{"BIOS.A", {"1", "4"}}},
         "1",
         notShown,
         18,
         nullptr},
        {"accepted, unreadable", 1, 24, {}, {}, "5", sent, 0, "5"},
        {"accepted, unreadable, no default", 1, 24, {}, {}, nullptr, sent, 0, nullptr},
        {"nothing to do", 0, 0, shown, {}, "1", "in place", 0, nullptr},
        {"nothing done, a default in another case", 0, 0, {{"BIOS.A", "RACK"}}, {}, "Rack", notShown, 18, nullptr},
        {"another value waits, in other letters",
         1,
         0,
         shown,
         {{"BIOS.A", {"1", "Uefi"}}},
         "UEFI",
         notShown,
         18,
         nullptr},
        {"accepted, in force in other letters", 1, 0, {{"BIOS.A", "Uefi"}}, {}, "UEFI", notShown, 18, nullptr},
        {"taken and dropped", 0, 0, shown, {}, "5", notShown, 18, nullptr},
        {"waits already", 0, 0, shown, {{"BIOS.A", {"1", "5"}}}, "5", sent, 0, "5"},
        {"another value waits", 0, 0, shown, {{"BIOS.A", {"1", "4"}}}, "5", notShown, 18, nullptr},
        {"nothing to do or taken, unreadable", 0, 32, {}, {}, "5", unread, 32, nullptr},
        {"nothing to do or taken, without a value", 0, 0, {}, {}, "5", unread, 18, nullptr},
        {"nothing to do or taken, no default", 0, 0, shown, {}, nullptr, noDefault, 18, nullptr},
        {"a value waits, no default", 0, 0, shown, {{"BIOS.A", {"1", "5"}}}, nullptr, noDefault, 18, nullptr},
    };
    for (const Case& one : cases)
    {
        Script script;
        script.Answers.emplace("A", RedfishConfigResult(one.Code, "", ""));
        script.Read = RedfishConfigResult(one.Read, "", "");
        script.Effective = one.Effective;
        script.Pending = one.Pending;
        script.Defaults = one.Default != nullptr ? SettingStringMap{{"A", one.Default}} : SettingStringMap();
        WaitingChanges waiting;
        const Answer answer = Load(script, {"BIOS.A"}, waiting);
        EXPECT_EQ(answer.Text, "BIOS.A: " + one.Word + "\n") << one.What;
        EXPECT_EQ(answer.Code, one.Exit) << one.What;
        EXPECT_EQ(waiting.Expected.size() + waiting.Unreadable.size(), one.Word == sent ? 1U : 0U) << one.What;
        EXPECT_EQ(waiting.Unknown, one.Exit != 0) << one.What;
        ASSERT_EQ(waiting.Expected.size(), one.Expected != nullptr ? 1U : 0U) << one.What;
        EXPECT_TRUE(one.Expected == nullptr || waiting.Expected[0].Text == one.Expected) << one.What;
        EXPECT_EQ(script.Asked, (Calls{{"A", ""}})) << one.What;
    }
}

/// A registry has the default of a number or a boolean as text as well.
TEST(LoadDefaultCommand, ADefaultIsComparedAsAValueOfItsKind)
{
    Script script;
    script.Answers = {{"Flag", {0, "", ""}}, {"Size", {1, "", ""}}};
    script.Effective = {{"BIOS.Flag", "true"}, {"BIOS.Size", "1"}};
    script.Pending = {{"BIOS.Size", {"1", "5"}}};
    script.Defaults = {{"Flag", "True"}, {"Size", "05"}};
    EXPECT_EQ(Load(script, {"Flag", "Size"}).Text,
              "BIOS.Flag: in place\nBIOS.Size: sent, takes effect after a reboot\n");
    script.Defaults = {{"Flag", "False"}, {"Size", "6"}};
    EXPECT_EQ(Load(script, {"Flag", "Size"}).Code, 18);
}

TEST(LoadDefaultCommand, WhereTheRegistryDoesNotTheBmcTellsWhatIsABoolean)
{
    Script script;
    script.Effective = {{"BIOS.Bare", "true"}};
    script.Pending = {{"BIOS.Bare", {"true", "false"}}};
    script.Defaults = {{"Bare", "False"}};
    EXPECT_EQ(Load(script, {"Bare"}).Text, "BIOS.Bare: sent, takes effect after a reboot\n");
    script.Defaults = {{"Bare", "True"}};
    EXPECT_EQ(Load(script, {"Bare"}).Code, 18);
}

TEST(LoadDefaultCommand, TheNameOfAValueMayBeKeptInOtherLetters)
{
    for (const int code : {0, 1})
    {
        Script script;
        script.Answers.emplace("Mode", RedfishConfigResult(code, "", ""));
        script.Effective = {{"BIOS.Mode", "1"}};
        script.Pending = {{"BIOS.Mode", {"1", "Uefi"}}};
        script.Defaults = {{"Mode", "UEFI"}};
        WaitingChanges waiting;
        const Answer answer = Load(script, {"Mode"}, waiting);
        EXPECT_EQ(answer.Text, "BIOS.Mode: sent, takes effect after a reboot\n");
        EXPECT_EQ(answer.Code, 0);
        ASSERT_EQ(waiting.Expected.size(), 1U);
        EXPECT_EQ(waiting.Expected[0].Text, "Uefi");
    }
}

/// Whose request got lost may have had another value waiting in these letters.
TEST(LoadDefaultCommand, ALostDefaultIsNotTakenForOneInOtherLetters)
{
    Script script;
    script.Answers.emplace("Mode", RedfishConfigResult(24, "h: gone; whether the change was done is not known.", ""));
    script.Effective = {{"BIOS.Mode", "1"}};
    script.Pending = {{"BIOS.Mode", {"1", "Uefi"}}};
    script.Defaults = {{"Mode", "UEFI"}};
    const Answer answer = Load(script, {"Mode"});
    EXPECT_TRUE(answer.Text.starts_with("BIOS.Mode: unknown: ")) << answer.Text;
    EXPECT_EQ(answer.Code, 24);
}

/// Each read of a silent BMC costs a whole time-out.
TEST(LoadDefaultCommand, OfABmcThatDoesNotAnswerNothingIsReadToHideItsWords)
{
    for (const auto& [message, reads] : {std::pair("h: time-out; nothing was sent.", 0),
                                         std::pair("h: no privilege for PATCH /x (403 Forbidden).", 1)})
    {
        Script script;
        script.Answers.emplace("A", RedfishConfigResult(24, message, ""));
        int count = 0;
        WaitingChanges waiting;
        const Answer answer = LoadSingleDefaults(
            OptionsFor({"A"}), [&] { return std::make_unique<ScriptedFront>(script); },
            [&](auto&, auto&)
            {
                ++count;
                return RedfishConfigResult(26, "", "");
            },
            waiting);
        EXPECT_EQ(answer.Code, 24);
        EXPECT_EQ(count, reads) << message;
    }
}

TEST(LoadDefaultCommand, NoPasswordIsExpected)
{
    struct Case
    {
        const char* What;
        int Read;
        SettingStringMap Effective;
        SettingCompareMap Pending;
        bool IsKnown;
    };
    const ManagerReader unknown = [](auto&, auto&) { return RedfishConfigResult(26, "", ""); };
    const Case cases[] = {
        {"without a value", 0, {}, {}, true},
        {"not read back", 32, {}, {}, true},
        {"shown", 0, {{"BIOS.Word", "old"}}, {{"BIOS.Word", {"old", "new"}}}, true},
        {"not read back, perhaps none", 32, {}, {}, false},
        {"shown, perhaps none", 0, {{"BIOS.Word", "old"}}, {{"BIOS.Word", {"old", "new"}}}, false},
    };
    for (const Case& one : cases)
    {
        Script script;
        script.Read = RedfishConfigResult(one.Read, "", "");
        script.Effective = one.Effective;
        script.Pending = one.Pending;
        script.Defaults = {{"Word", "new"}};
        WaitingChanges waiting;
        const Answer answer = LoadSingleDefaults(
            OptionsFor({"Word"}), [&] { return std::make_unique<ScriptedFront>(script); },
            one.IsKnown ? KindsOf(script) : unknown, waiting);
        EXPECT_EQ(answer.Text, "BIOS.Word: sent, takes effect after a reboot\n") << one.What;
        EXPECT_TRUE(waiting.Expected.empty()) << one.What;
        EXPECT_EQ(waiting.Unreadable, std::vector<std::string>{"BIOS.Word"}) << one.What;
    }
}

TEST(LoadDefaultCommand, WhatTheRegistryDoesNotKnowMayBeAPassword)
{
    Script script;
    script.Effective = {{"BIOS.Stranger", "old"}};
    script.Pending = {{"BIOS.Stranger", {"old", "new"}}};
    WaitingChanges waiting;
    EXPECT_EQ(Load(script, {"Stranger"}, waiting).Text, "BIOS.Stranger: sent, takes effect after a reboot\n");
    EXPECT_TRUE(waiting.Expected.empty());
    EXPECT_EQ(waiting.Unreadable, std::vector<std::string>{"BIOS.Stranger"});
}

TEST(LoadDefaultCommand, AFailureNamesTheSettingAsTheCallerDid)
{
    const Configured names("[legacy_names]\nOldTime = \"Time\"\n");
    Script script;
    script.Answers.emplace("OldTime", RedfishConfigResult(18, "The setting OldTime cannot be changed.", "OldTime"));
    Options options = OptionsFor({"OldTime"});
    options.LegacyNames = true;
    WaitingChanges waiting;
    const Answer answer = LoadSingleDefaults(
        options, [&] { return std::make_unique<ScriptedFront>(script); }, KindsOf(script), waiting);
    EXPECT_EQ(answer.Text, "BIOS.OldTime: refused: The setting BIOS.OldTime cannot be changed.\n");
}

TEST(LoadDefaultCommand, ThePasswordThatABmcRepeatsIsBlottedOut)
{
    const auto load = [](const std::string& secret, bool json)
    {
        Script script;
        script.Answers.emplace("Word", RedfishConfigResult(18, "The value " + secret + " is no good.", "Word"));
        script.Answers.emplace("A", RedfishConfigResult(18, "Not with " + secret + ".", "A"));
        script.Defaults = {{"Word", secret}};
        Options options = OptionsFor({"Word", "A"});
        options.Json = json;
        WaitingChanges waiting;
        return LoadSingleDefaults(
            options, [&] { return std::make_unique<ScriptedFront>(script); }, KindsOf(script), waiting);
    };
    const Answer shown = load("plainplain77", false);
    EXPECT_EQ(shown.Text, "BIOS.Word: refused: The value ******** is no good.\nBIOS.A: refused: Not with ********.\n");
    EXPECT_EQ(shown.Message, "The value ******** is no good.");
    EXPECT_EQ(boost::json::serialize(load("plainplain77", true).Data).find("plain"), std::string::npos);
    EXPECT_EQ(load("p7", false).Text,
              "BIOS.Word: refused: what the BMC answered is not shown, since a new password may stand in it\n"
              "BIOS.A: refused: Not with p7.\n");
}

TEST(LoadDefaultCommand, AWarningShowsNoPasswordEither)
{
    struct Case
    {
        std::string Secret;
        std::string Told;
    };
    const Case cases[] = {
        {"plain77", "Not ready for ********."},
        {"rea", "what the BMC answered is not shown, since a new password may stand in it"},
        {"war", "Not ready for plain77."},
    };
    for (const Case& one : cases)
    {
        Script script;
        script.Defaults = {{"Word", one.Secret}};
        script.Read = {33, "Not ready for plain77.", ""};
        WaitingChanges waiting;
        EXPECT_EQ(Load(script, {"Word"}, waiting).Notes,
                  std::vector<std::string>{"warning: the pending values could not be read back: " + one.Told});
        ASSERT_EQ(waiting.Secrets.size(), 1U);
        EXPECT_EQ(waiting.Secrets.front().Text(), one.Secret);
    }
}

/// The name of a setting may read as words, and has what a password has.
TEST(LoadDefaultCommand, OnlyTheWordsOfAWarningAreSearchedForPasswords)
{
    Script script;
    const std::string lost = "h: gone; whether the change was done is not known.";
    script.Answers.emplace("Odd: war", RedfishConfigResult(24, lost, ""));
    script.Defaults = {{"Word", "war"}};
    EXPECT_EQ(Load(script, {"Word", "Odd: war"}).Notes, std::vector<std::string>{"warning: BIOS.Odd: war: " + lost});
    script.Defaults = {{"Word", "gone"}};
    EXPECT_EQ(
        Load(script, {"Word", "Odd: war"}).Notes,
        std::vector<std::string>{"warning: BIOS.Odd: war: h: ********; whether the change was done is not known."});
}

/// A BMC drops a pending value rather than keep a default pending that is in force.
TEST(LoadDefaultCommand, WhatIsInForceAlreadyIsInPlace)
{
    Script script;
    script.Effective = {{"BIOS.A", "5"}, {"BIOS.B", "1"}};
    script.Defaults = {{"A", "5"}, {"B", "2"}};
    const Answer answer = Load(script, {"A", "B"});
    EXPECT_EQ(answer.Text, "BIOS.A: in place\nBIOS.B: unknown: no failure was reported, but the BMC does not show the "
                           "default among its pending values\n");
    EXPECT_EQ(answer.Code, 18);
    ASSERT_EQ(answer.Errors.size(), 1U);
    EXPECT_EQ(answer.Errors[0].Setting, "BIOS.B");
}

TEST(LoadDefaultCommand, OfALostRequestTheBmcTellsWhetherItArrived)
{
    struct Case
    {
        std::string Effective;
        SettingCompareMap Pending;
        int Read;
        std::string Word;
        std::string Doubt;
    };
    const std::string open = "whether the change was done is not known";
    const std::string notShown = open + "; the BMC does not show it among its pending values";
    const Case cases[] = {
        {"1", {{"BIOS.A", {"1", "5"}}}, 0, "sent, takes effect after a reboot", ""},
        {"5", {}, 0, "in place", ""},
        {"1", {}, 0, "unknown: ", notShown},
        {"1", {{"BIOS.A", {"1", "4"}}}, 0, "unknown: ", notShown},
        {"5", {{"BIOS.A", {"5", "4"}}}, 0, "unknown: ", notShown},
        {"1", {}, 24, "unknown: ", open + "; its pending value could not be read"},
    };
    for (const Case& one : cases)
    {
        Script script;
        script.Answers.emplace("A", RedfishConfigResult(24, "h: gone; whether the change was done is not known.", ""));
        script.Defaults = {{"A", "5"}};
        script.Read = RedfishConfigResult(one.Read, "", "");
        script.Effective = one.Read == 0 ? SettingStringMap{{"BIOS.A", one.Effective}} : SettingStringMap();
        script.Pending = one.Pending;
        const Answer answer = Load(script, {"A", "B"});
        EXPECT_EQ(script.Asked, (Calls{{"A", ""}})) << "a change was sent behind one that got lost";
        EXPECT_EQ(answer.Text, "BIOS.A: " + one.Word + one.Doubt + "\nBIOS.B: not sent: a request before it failed\n");
        EXPECT_EQ(answer.Code, 24);
        ASSERT_EQ(answer.Errors.size(), one.Doubt.empty() ? 1U : 2U);
        EXPECT_TRUE(one.Doubt.empty() || answer.Errors[0].Message == "BIOS.A: " + one.Doubt);
        EXPECT_EQ(answer.Errors.back().Message, "BIOS.B: not sent, since a request before it failed");
        ASSERT_EQ(answer.Notes.size(), one.Read == 0 ? 1U : 2U);
        EXPECT_EQ(answer.Notes.front(), "warning: BIOS.A: h: gone; whether the change was done is not known.");
        EXPECT_EQ(answer.Notes.back().starts_with("warning: the pending values could not be read back: "),
                  one.Read != 0);
    }
}

TEST(LoadDefaultCommand, OneRefusedSettingDoesNotKeepTheOthersBack)
{
    Script script;
    script.Answers.emplace("B", RedfishConfigResult(21, "BIOS.B: it has no default", "BIOS.B"));
    script.Effective = {{"BIOS.A", "1"}, {"BIOS.B", "1"}, {"BIOS.C", "1"}};
    script.Pending = {{"BIOS.A", {"1", "5"}}, {"BIOS.C", {"1", "6"}}};
    script.Defaults = {{"A", "5"}, {"C", "6"}};
    WaitingChanges waiting;
    const Answer answer = Load(script, {"A", "B", "BIOS.C", "A"}, waiting);
    EXPECT_EQ(script.Asked, (Calls{{"A", ""}, {"B", ""}, {"C", ""}}));
    EXPECT_EQ(answer.Code, 21);
    ASSERT_EQ(answer.Errors.size(), 1U);
    EXPECT_EQ(answer.Errors[0].Setting, "BIOS.B");
    EXPECT_EQ(answer.Errors[0].Message, "BIOS.B: it has no default");
    EXPECT_EQ(answer.Text, "BIOS.A: sent, takes effect after a reboot\nBIOS.B: refused: it has no default\n"
                           "BIOS.C: sent, takes effect after a reboot\n");
    EXPECT_FALSE(waiting.Unknown);
    EXPECT_FALSE(waiting.RequestFailed) << "there was none for it";
    ASSERT_EQ(waiting.Expected.size(), 2U);
    EXPECT_EQ(waiting.Expected[0].Name + "=" + waiting.Expected[0].Text, "A=5");
    EXPECT_EQ(waiting.Expected[1].Name + "=" + waiting.Expected[1].Text, "C=6");
}

TEST(LoadDefaultCommand, AFailedRequestKeepsARestartBackUnlessAllIsAsItShouldBe)
{
    struct Case
    {
        int Code;
        std::string Message;
        bool Failed;
        std::string Word;
    };
    const Case cases[] = {
        {1, "", false, "sent, takes effect after a reboot"},
        {18, "The setting B is read-only.", false, "refused: The setting BIOS.B is read-only."},
        {18, "PATCH /x was refused by h (400).", true, "refused: PATCH /x was refused by h (400)."},
        {32, "GET /x failed inside h (500).", true, "not sent: GET /x failed inside h (500)."},
        {33, "h is not ready (503).", true, "refused: h is not ready (503)."},
        {24, "h: gone; whether the change was done is not known.", false, "sent, takes effect after a reboot"},
    };
    for (const Case& one : cases)
    {
        Script script;
        script.Answers.emplace("B", RedfishConfigResult(one.Code, one.Message, "B"));
        script.Effective = {{"BIOS.A", "1"}, {"BIOS.B", "1"}};
        script.Pending = {{"BIOS.A", {"1", "5"}}, {"BIOS.B", {"1", "5"}}};
        script.Defaults = {{"A", "5"}, {"B", "5"}};
        WaitingChanges waiting;
        const Answer answer = Load(script, {"A", "B"}, waiting);
        EXPECT_EQ(waiting.RequestFailed, one.Failed) << one.Message;
        EXPECT_EQ(answer.Text, "BIOS.A: sent, takes effect after a reboot\nBIOS.B: " + one.Word + "\n");
    }
}

/// Each name has its outcome, also where the failures are not told.
TEST(LoadDefaultCommand, BehindABmcThatCannotBeReachedNothingElseIsSent)
{
    for (const int code : {24, 33})
    {
        Script script;
        script.Answers.emplace("B", RedfishConfigResult(code, "gone", ""));
        script.Read = RedfishConfigResult(24, "gone", "");
        const Answer answer = Load(script, {"A", "B", "C", "D"});
        EXPECT_EQ(script.Asked, (Calls{{"A", ""}, {"B", ""}}));
        EXPECT_EQ(answer.Text, "BIOS.A: sent, takes effect after a reboot\nBIOS.B: " +
                                   std::string(code == 24 ? "not sent" : "refused") +
                                   ": gone\n"
                                   "BIOS.C: not sent: a request before it failed\n"
                                   "BIOS.D: not sent: a request before it failed\n");
        EXPECT_EQ(answer.Code, code);
        ASSERT_EQ(answer.Errors.size(), 3U);
        EXPECT_EQ(answer.Errors[1].Message, "BIOS.C: not sent, since a request before it failed");
        EXPECT_EQ(answer.Errors[2].Setting, "BIOS.D");
        EXPECT_EQ(answer.Errors[2].Code, code);
    }
}

TEST(LoadDefaultCommand, DataHasTheReasonBesideTheOutcome)
{
    Script script;
    script.Answers.emplace("A", RedfishConfigResult(24, "gone", ""));
    Options options = OptionsFor({"A", "B"});
    options.Json = true;
    WaitingChanges waiting;
    const Answer answer = LoadSingleDefaults(
        options, [&] { return std::make_unique<ScriptedFront>(script); }, KindsOf(script), waiting);
    EXPECT_EQ(boost::json::serialize(answer.Data),
              R"({"BIOS.A":{"outcome":"not sent","reason":"gone"},)"
              R"("BIOS.B":{"outcome":"not sent","reason":"a request before it failed"}})");
    EXPECT_EQ(answer.Text, "");
    EXPECT_FALSE(waiting.Unknown);
    EXPECT_TRUE(waiting.Expected.empty() && waiting.Unreadable.empty());
}
