#include "LoadDefaultCommand.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "ConfigFile.h"
#include "LoadDefaultFixture.h"
#include "Options.h"

using namespace Tavrine::Tool;
using namespace tooltest;

namespace
{

/// A BMC that tells whether all settings wait for their defaults; of an empty text it tells nothing.
BmcRequests Telling(const std::string& pending)
{
    const auto get = [pending](const std::string& url, std::string& response) -> RedfishConfigResult
    {
        if (pending.empty())
        {
            return {24, "gone", ""};
        }
        response = url == "/redfish/v1/Systems"     ? R"({"Members":[{"@odata.id":"/redfish/v1/Systems/7"}]})"
                   : url == "/redfish/v1/Systems/7" ? "{}"
                                                    : R"({"ResetBiosToDefaultsPending":)" + pending + "}";
        return {0, "", ""};
    };
    return {get,
            [](const std::string&, const std::string&, std::string&) -> RedfishConfigResult
            {
                ADD_FAILURE() << "nothing is to be sent";
                return {13, "", ""};
            }};
}

} // namespace

TEST(LoadDefaultCommand, AllDefaultsAreAskedForByOneOfTwoRequests)
{
    for (const bool post : {false, true})
    {
        LoadScript script;
        Options options = OptionsToLoad({"BIOS"});
        options.Post = post;
        LoadFront front(script);
        const Answer answer = LoadAllDefaults(front, Telling("true"), options);
        EXPECT_EQ(answer.Code, 0);
        EXPECT_TRUE(answer.Notes.empty());
        EXPECT_EQ(answer.Text, "BIOS: sent, takes effect after a reboot\n");
        EXPECT_EQ(script.Asked, (LoadCalls{{"", post ? "post" : "reset-bios"}}));
    }
}

TEST(LoadDefaultCommand, ALoadOfAllThatFailsIsAFailureWithAnOutcome)
{
    struct Case
    {
        RedfishConfigResult Result;
        std::string Word;
        std::string Pending;
    };
    const RedfishConfigResult refused(28, "POST /x was refused by h (400 Bad Request).", "");
    const RedfishConfigResult open(24, "POST /x: no answer of h; whether the change was done is not known.", "");
    const Case cases[] = {
        {refused, "refused", "false"},
        {refused, "refused", ""},
        // What waits was asked for by somebody else.
        {refused, "refused", "true"},
        {{24, "POST /x: no connection to h; nothing was sent.", ""}, "not sent", "true"},
        {open, "unknown", "false"},
        {open, "unknown", ""},
    };
    for (const Case& one : cases)
    {
        LoadScript script;
        script.Answers.emplace("", one.Result);
        LoadFront front(script);
        const std::string message = RedfishConfigResult(one.Result).ErrorMsg();
        Options options = OptionsToLoad({"BIOS"});
        Answer answer = LoadAllDefaults(front, Telling(one.Pending), options);
        EXPECT_EQ(answer.Code, RedfishConfigResult(one.Result).ErrorCode());
        EXPECT_EQ(answer.Message, message);
        EXPECT_EQ(answer.Text, "BIOS: " + one.Word + ": " + message + "\n");
        options.Json = true;
        answer = LoadAllDefaults(front, Telling(one.Pending), options);
        EXPECT_EQ(answer.Data.at("BIOS"), (boost::json::value{{"outcome", one.Word}, {"reason", message}}));
    }
}

TEST(LoadDefaultCommand, ALoadOfAllWhoseAnswerWasLostIsSentWhereTheBmcShowsIt)
{
    const std::string message = "POST /x: no answer of h; whether the change was done is not known.";
    LoadScript script;
    script.Answers.emplace("", RedfishConfigResult(24, message, ""));
    LoadFront front(script);
    const Answer answer = LoadAllDefaults(front, Telling("true"), OptionsToLoad({"BIOS"}));
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "BIOS: sent, takes effect after a reboot\n");
    EXPECT_EQ(answer.Notes,
              std::vector<std::string>{"warning: the request failed, but the BMC shows the changes: " + message});
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
        LoadScript script;
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
        EXPECT_EQ(script.Asked, (LoadCalls{{"A", ""}})) << one.What;
    }
}

/// A registry has the default of a number or a boolean as text as well.
TEST(LoadDefaultCommand, ADefaultIsComparedAsAValueOfItsKind)
{
    LoadScript script;
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
    LoadScript script;
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
        LoadScript script;
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
    LoadScript script;
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
        LoadScript script;
        script.Answers.emplace("A", RedfishConfigResult(24, message, ""));
        int count = 0;
        WaitingChanges waiting;
        const Answer answer = LoadSingleDefaults(
            OptionsToLoad({"A"}), [&] { return std::make_unique<LoadFront>(script); },
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
        LoadScript script;
        script.Read = RedfishConfigResult(one.Read, "", "");
        script.Effective = one.Effective;
        script.Pending = one.Pending;
        script.Defaults = {{"Word", "new"}};
        WaitingChanges waiting;
        const Answer answer = LoadSingleDefaults(
            OptionsToLoad({"Word"}), [&] { return std::make_unique<LoadFront>(script); },
            one.IsKnown ? KindsOf(script) : unknown, waiting);
        EXPECT_EQ(answer.Text, "BIOS.Word: sent, takes effect after a reboot\n") << one.What;
        EXPECT_TRUE(waiting.Expected.empty()) << one.What;
        EXPECT_EQ(waiting.Unreadable, std::vector<std::string>{"BIOS.Word"}) << one.What;
    }
}

TEST(LoadDefaultCommand, WhatTheRegistryDoesNotKnowMayBeAPassword)
{
    LoadScript script;
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
    LoadScript script;
    script.Answers.emplace("OldTime", RedfishConfigResult(18, "The setting OldTime cannot be changed.", "OldTime"));
    Options options = OptionsToLoad({"OldTime"});
    options.LegacyNames = true;
    WaitingChanges waiting;
    const Answer answer = LoadSingleDefaults(
        options, [&] { return std::make_unique<LoadFront>(script); }, KindsOf(script), waiting);
    EXPECT_EQ(answer.Text, "BIOS.OldTime: refused: The setting BIOS.OldTime cannot be changed.\n");
}

TEST(LoadDefaultCommand, ThePasswordThatABmcRepeatsIsBlottedOut)
{
    const auto load = [](const std::string& secret, bool json)
    {
        LoadScript script;
        script.Answers.emplace("Word", RedfishConfigResult(18, "The value " + secret + " is no good.", "Word"));
        script.Answers.emplace("A", RedfishConfigResult(18, "Not with " + secret + ".", "A"));
        script.Defaults = {{"Word", secret}};
        Options options = OptionsToLoad({"Word", "A"});
        options.Json = json;
        WaitingChanges waiting;
        return LoadSingleDefaults(
            options, [&] { return std::make_unique<LoadFront>(script); }, KindsOf(script), waiting);
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
        LoadScript script;
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
    LoadScript script;
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
    LoadScript script;
    script.Effective = {{"BIOS.A", "5"}, {"BIOS.B", "1"}};
    script.Defaults = {{"A", "5"}, {"B", "2"}};
    const Answer answer = Load(script, {"A", "B"});
    EXPECT_EQ(answer.Text, "BIOS.A: in place\nBIOS.B: unknown: no failure was reported, but the BMC does not show the "
                           "default among its pending values\n");
    EXPECT_EQ(answer.Code, 18);
    ASSERT_EQ(answer.Errors.size(), 1U);
    EXPECT_EQ(answer.Errors[0].Setting, "BIOS.B");
}

TEST(LoadDefaultCommand, DataHasTheReasonBesideTheOutcome)
{
    LoadScript script;
    script.Answers.emplace("A", RedfishConfigResult(24, "gone", ""));
    Options options = OptionsToLoad({"A", "B"});
    options.Json = true;
    WaitingChanges waiting;
    const Answer answer = LoadSingleDefaults(
        options, [&] { return std::make_unique<LoadFront>(script); }, KindsOf(script), waiting);
    EXPECT_EQ(boost::json::serialize(answer.Data),
              R"({"BIOS.A":{"outcome":"not sent","reason":"gone"},)"
              R"("BIOS.B":{"outcome":"not sent","reason":"a request before it failed"}})");
    EXPECT_EQ(answer.Text, "");
    EXPECT_FALSE(waiting.Unknown);
    EXPECT_TRUE(waiting.Expected.empty() && waiting.Unreadable.empty());
}
