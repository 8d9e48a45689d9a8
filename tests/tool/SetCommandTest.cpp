#include "SetFixture.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <boost/json/value.hpp>

#include "Signals.h"

using namespace Tavrine;
using namespace Tavrine::Tool;
using namespace tooltest;

namespace
{

class SetCommand : public SetFixture
{
  public:
    /// Of a UEFI system whose protected setting has a value.
    void AskForProtected()
    {
        Given.SystemType = SystemTypeUefi;
        Given.Protected = true;
        Given.FirstPrefix = Given.SecondPrefix = "BIOS";
        Front.Value("Seal", R"("old")");
        Front.Registry.second.replace(Front.Registry.second.find("\"Seal\",") + 7, 0, "\"CurrentValue\":\"old\",");
    }
};

} // namespace

TEST_F(SetCommand, OneSettingGoesWithoutBatchModeAndIsReadBack)
{
    Front.Changes.insert({"Timeout", {1, "", ""}});
    const Answer answer = Set({"bios.Timeout=20"});
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "BIOS.Timeout: changed, takes effect after a reboot\n");
    EXPECT_EQ(StderrLines(answer), "");
    EXPECT_EQ(Front.Done, Words{"Timeout=20"});
    EXPECT_EQ(ReadBacks, 1);
}

TEST_F(SetCommand, SeveralSettingsAreOneBatchWithOneFlush)
{
    const Answer answer = Set({"Timeout=20", "NumLock=false", "Owner=you"});
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "BIOS.Timeout: changed, takes effect after a reboot\n"
                           "BIOS.NumLock: changed, takes effect after a reboot\n"
                           "BIOS.Owner: changed, takes effect after a reboot\n");
    EXPECT_EQ(Front.Done, (Words{"Timeout=20+", "NumLock=false+", "Owner=you+", "flush"}));
    EXPECT_EQ(ReadBacks, 1);
}

TEST_F(SetCommand, AValueThatIsInPlaceIsNotSent)
{
    const Answer answer = Set({"Timeout=10"});
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "BIOS.Timeout: already 10, in force\n");
    EXPECT_TRUE(Front.Done.empty());
    EXPECT_EQ(ReadBacks, 0);
    EXPECT_TRUE(Waiting.Expected.empty());
}

TEST_F(SetCommand, AValueThatIsOnlyPendingIsToldApartFromOneInForce)
{
    Front.Value("Timeout", "5");
    EXPECT_EQ(Set({"Timeout=10"}).Text, "BIOS.Timeout: already 10, takes effect after a reboot\n");
    ASSERT_EQ(Waiting.Expected.size(), 1U);
    EXPECT_EQ(Waiting.Expected[0].Name, "Timeout");
    EXPECT_EQ(Waiting.Expected[0].Text, "10");
    EXPECT_EQ(SetData({"Timeout=10"}), R"({"BIOS.Timeout":{"outcome":"already","value":10,"inForce":false}})");
    EXPECT_TRUE(Front.Done.empty());
}

TEST_F(SetCommand, WhatWaitsForARebootIsHandedOut)
{
    Shows = [](ShownFront& shown)
    {
        shown.Group = {Good, {{"BIOS.Timeout", "10"}, {"BIOS.Owner", "you"}}};
        shown.Compared = {{"BIOS.Timeout", {"10", "20"}}};
    };
    EXPECT_EQ(Set({"Timeout=20", "Owner=you", "Secret=hunter2", "NumLock=true", "Mode=Nowhere"}).Code, 10);
    ASSERT_EQ(Waiting.Expected.size(), 1U);
    EXPECT_EQ(Waiting.Expected[0].Name, "Timeout");
    EXPECT_EQ(Waiting.Expected[0].Text, "20");
    EXPECT_EQ(Waiting.Unreadable, std::vector<std::string>{"BIOS.Secret"});
    EXPECT_FALSE(Waiting.Unknown);
    Front.Changes.insert({"Owner", {24, CutOff, ""}});
    Shows = [](ShownFront& shown) { shown.Result = {24, "gone", ""}; };
    Set({"Owner=they"});
    EXPECT_TRUE(Waiting.Unknown);
}

TEST_F(SetCommand, AValueInAnotherFormIsTheSameValue)
{
    for (const char* const pair : {"NumLock=TRUE", "NumLock=True", "Timeout=+10", "Timeout=010", "Timeout=+0010"})
    {
        EXPECT_TRUE(
            Set({pair}).Text.ends_with(std::string(": already ") + (pair[0] == 'N' ? "true" : "10") + ", in force\n"))
            << pair;
    }
    EXPECT_TRUE(Front.Done.empty());
    Set({"NumLock=FALSE"});
    Set({"Timeout=+020"});
    EXPECT_EQ(Front.Done, (Words{"NumLock=false", "Timeout=20"}));
    for (const char* const pair : {"Timeout=++10", "Timeout=+-10", "Timeout= 10", "Timeout=", "NumLock=1", "NumLock="})
    {
        EXPECT_EQ(Set({pair}).Code, 10) << pair;
    }
    Front.Done.clear();
    Given.Hex = true;
    for (const char* const pair : {"NumLock=TRUE", "Timeout=0X0a", "Timeout=00A"})
    {
        EXPECT_NE(Set({pair}).Text.find(": already "), std::string::npos) << pair;
    }
    EXPECT_TRUE(Front.Done.empty());
}

TEST_F(SetCommand, ATextIsNotBroughtIntoAnotherForm)
{
    Set({"Owner=TRUE"});
    Set({"Owner=+03"});
    Given.NoCheck = true;
    Set({"Owner=TRUE"});
    Set({"Timeout=10"});
    EXPECT_EQ(Front.Done, (Words{"Owner=TRUE", "Owner=+03", "Owner=TRUE!", "Timeout=10!"}));
    EXPECT_EQ(Set({"Timeout=010"}).Code, 10) << "no JSON";
}

TEST_F(SetCommand, InHexadecimalModeNumbersAreComparedAndShownSo)
{
    Given.Hex = true;
    EXPECT_EQ(Set({"Timeout=0xa"}).Text, "BIOS.Timeout: already 0xA, in force\n");
    EXPECT_EQ(Set({"Timeout=0x14"}).Text, "BIOS.Timeout: changed, takes effect after a reboot\n");
    EXPECT_EQ(Front.Done, Words{"Timeout=0x14"});
    EXPECT_EQ(Set({"Timeout=2Z"}).Code, 10);
}

TEST_F(SetCommand, InHexadecimalModeNumbersBehindOtherChangesStayThemselves)
{
    Given.Hex = true;
    Given.DryRun = true;
    EXPECT_EQ(Set({"Owner=you", "Timeout=0x14"}).Text, "{\"Attributes\":{\"Owner\":\"you\",\"Timeout\":20}}\n");
    EXPECT_EQ(Set({"NumLock=false", "Timeout=0xC8", "Owner=10"}).Text,
              "{\"Attributes\":{\"NumLock\":false,\"Owner\":\"10\",\"Timeout\":200}}\n");
}

TEST_F(SetCommand, InHexadecimalModeAChangeThatOthersLookAtLeavesNumbersThemselves)
{
    Given.Hex = true;
    Given.DryRun = true;
    EXPECT_EQ(Set({"Slot=B", "Mode=Legacy", "Timeout=0x14"}).Text,
              "{\"Attributes\":{\"Mode\":\"Legacy\",\"Timeout\":20}}\n{\"Attributes\":{\"Slot\":\"B\"}}\n");
}

TEST_F(SetCommand, InHexadecimalModeOtherKindsTakeTheirTextsAsTheyAre)
{
    Given.Hex = true;
    Given.DryRun = true;
    const std::string integer = R"({"AttributeName":"Timeout","Type":"Integer")";
    Front.Registry.second.replace(Front.Registry.second.find(integer), integer.size(),
                                  R"({"AttributeName":"Timeout","Type":"String")");
    EXPECT_EQ(Set({"Timeout=Hello"}).Text, "{\"Attributes\":{\"Timeout\":\"Hello\"}}\n");
}

TEST_F(SetCommand, InHexadecimalModeANumberBeyond64BitsIsRefusedAndNotReadAsDecimal)
{
    Given.Hex = true;
    const std::string bound = R"(,"UpperBound":255)";
    Front.Registry.second.erase(Front.Registry.second.find(bound), bound.size());
    for (const char* number : {"10000000000000000", "18446744073709551615", "-9000000000000000"})
    {
        const Answer answer = Set({std::string("Timeout=") + number});
        EXPECT_EQ(answer.Code, 10) << number;
        EXPECT_NE(LastWords(answer).find("the setting BIOS.Timeout takes a hexadecimal number"), std::string::npos)
            << LastWords(answer);
    }
    EXPECT_TRUE(Front.Done.empty());
}

TEST_F(SetCommand, DataTellsOutcomesAndTypedValues)
{
    EXPECT_EQ(SetData({"Timeout=20", "Mode=Uefi", "NumLock=maybe"}),
              R"({"BIOS.Timeout":{"outcome":"changed","value":20,"inForce":false},)"
              R"("BIOS.Mode":{"outcome":"already","value":"Uefi","inForce":true},)"
              R"("BIOS.NumLock":{"outcome":"refused"}})");
}

TEST_F(SetCommand, WhatTheCheckRefusesIsToldAndTheOthersAreSent)
{
    const Answer answer = Set({"Timeout=999", "Owner=you", "Mode=legacy"});
    EXPECT_EQ(answer.Code, 10);
    EXPECT_EQ(answer.Text, "BIOS.Owner: changed, takes effect after a reboot\n");
    EXPECT_EQ(Front.Done, (Words{"Owner=you+", "flush"}));
    ASSERT_EQ(answer.Errors.size(), 2U);
    EXPECT_EQ(answer.Errors[0].Setting, "BIOS.Timeout");
    EXPECT_NE(answer.Errors[0].Message.find("the setting BIOS.Timeout takes"), std::string::npos)
        << answer.Errors[0].Message;
    EXPECT_NE(answer.Errors[1].Message.find("Did you mean Legacy?"), std::string::npos) << answer.Errors[1].Message;
}

TEST_F(SetCommand, AHiddenSettingIsFoundOutBeforehand)
{
    const Answer answer = Set({"Seal=x"});
    EXPECT_EQ(answer.Code, 34);
    EXPECT_EQ(answer.Message, "The operation on setting BIOS.Seal fails since it is hidden.");
    EXPECT_TRUE(Front.Done.empty());
}

TEST_F(SetCommand, AnUnknownSettingIsRefused)
{
    const Answer answer = Set({"Nothing=x"});
    EXPECT_EQ(answer.Code, 20);
    EXPECT_EQ(answer.Message, "Unable to find the setting BIOS.Nothing");
    EXPECT_TRUE(Front.Done.empty());
}

TEST_F(SetCommand, ASettingWithoutAValueIsChangedInBatchModeAndNotVerified)
{
    Front.Flushes = {{{1, "", ""}, {}}};
    const Answer answer = Set({"Quiet=x"});
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "BIOS.Quiet: changed, takes effect after a reboot\n");
    EXPECT_EQ(Front.Done, (Words{"Quiet=x+", "flush"}));
    EXPECT_EQ(ReadBacks, 0);
}

TEST_F(SetCommand, ThePasswordCodeDoesNotHideAFailedRequest)
{
    Front.Changes.insert({"Secret", {4, "", ""}});
    EXPECT_EQ(Set({"Secret=hunter2"}).Text, "BIOS.Secret: changed, takes effect after a reboot\n");
    EXPECT_EQ(Front.Done, (Words{"Secret=hunter2+", "flush"}));

    for (const char* shown : {"null", "\"\"", "\"****\""})
    {
        Front.Value("Secret", shown);
        Front.Flushes = {{{24, CutOff, ""}, {}}};
        const Answer lost = Set({"Secret=hunter2"});
        EXPECT_EQ(lost.Code, 24);
        EXPECT_EQ(lost.Text, "");
        EXPECT_EQ(LastWords(lost),
                  "BIOS.Secret: whether the change was done is not known; its pending value could not be read");
    }
}

TEST_F(SetCommand, AValueOfAPasswordIsShownNowhere)
{
    Front.Changes.insert({"Secret", {4, "", ""}});
    EXPECT_EQ(SetData({"Secret=hunter2"}), R"({"BIOS.Secret":{"outcome":"changed"}})");

    Front.Flushes = {{{18, "PATCH /x was refused by h (400 Bad Request): The value hunter2 is bad.", ""},
                      {{10, "The value 'hunter2' is bad.", "BIOS.Secret"}}}};
    Answer answer = Set({"Secret=hunter2"});
    EXPECT_EQ(answer.Code, 10);
    EXPECT_EQ(StderrLines(answer), "tavrine: 10 BIOS.Secret: The value '********' is bad.\n");

    Front.Flushes = {{{18, "PATCH /x was refused by h (400 Bad Request): The value hunter2 is bad.", ""}, {}}};
    answer = Set({"Secret=hunter2"});
    EXPECT_EQ(answer.Code, 18);
    EXPECT_EQ(StderrLines(answer).find("hunter2"), std::string::npos) << StderrLines(answer);

    // Of a short one what is left would tell.
    Front.Flushes = {{{18, "", ""}, {{10, "The value of the setting is bad.", "BIOS.Secret"}}}};
    EXPECT_EQ(StderrLines(Set({"Secret=set"})),
              "tavrine: 10 BIOS.Secret: what the BMC answered is not shown, since a new password may stand in it\n");

    Given.DryRun = true;
    Given.Json = false;
    EXPECT_EQ(Set({"Secret=hunter2"}).Text, "{\"Attributes\":{\"Secret\":\"********\"}}\n");
}

TEST_F(SetCommand, APasswordWithCharactersThatAreEscapedIsShownNowhere)
{
    Front.Changes.insert({"Secret", {4, "", ""}});
    for (const bool noCheck : {false, true})
    {
        Given.NoCheck = noCheck;
        for (const std::string password : {"abcdefgh\"ijkl", "abcd\\efgh", "abcd\tefgh",
                                           "abcd\x1f"
                                           "efgh"})
        {
            const std::string json = boost::json::serialize(boost::json::value(password));
            Front.Done.clear();
            Front.Flushes = {{{18, "refused", ""},
                              {{10, "The value " + password + " is bad: {\"Secret\":" + json + "}", "BIOS.Secret"}}}};
            EXPECT_EQ(StderrLines(Set({"Secret=" + password})),
                      "tavrine: 10 BIOS.Secret: The value ******** is bad: {\"Secret\":\"********\"}\n")
                << noCheck << json;
            const std::string handed = noCheck ? json.substr(1, json.size() - 2) + "!" : password;
            EXPECT_EQ(Front.Done.front(), "Secret=" + handed + "+");
        }
        // Its escaped form is not short.
        Front.Flushes = {{{18, "refused", ""}, {{10, "The value a\"b is bad.", "BIOS.Secret"}}}};
        EXPECT_EQ(
            StderrLines(Set({"Secret=a\"b"})),
            "tavrine: 10 BIOS.Secret: what the BMC answered is not shown, since a new password may stand in it\n");
    }
}

TEST_F(SetCommand, APasswordThatIsOnlyPendingIsReasonForARestart)
{
    const std::string none = R"("Type":"Password","CurrentValue":)";
    Front.Registry.second.replace(Front.Registry.second.find(none) + none.size(), 4, "\"hunter2\"");
    Front.Value("Secret", "\"\"");
    EXPECT_EQ(Set({"Secret=hunter2"}).Text, "BIOS.Secret: already ********, takes effect after a reboot\n");
    EXPECT_EQ(Waiting.Unreadable, std::vector<std::string>{"BIOS.Secret"});
    EXPECT_TRUE(Waiting.Expected.empty());
    ASSERT_EQ(Waiting.Secrets.size(), 1U);
    EXPECT_EQ(Waiting.Secrets.front().Text(), "hunter2");
}

/// What comes of the changes the BMC tells after the restart, when the plan is gone.
TEST_F(SetCommand, PasswordsThatWereSentAreHandedToTheRestart)
{
    Front.Changes.insert({"Secret", {4, "", ""}});
    for (const std::string password : {"hunter2000", "abc"})
    {
        Set({"Timeout=20", "Secret=" + password});
        ASSERT_EQ(Waiting.Secrets.size(), 1U);
        EXPECT_EQ(Waiting.Secrets.front().Text(), password);
    }
    Set({"Timeout=20"});
    EXPECT_TRUE(Waiting.Secrets.empty());
}

TEST_F(SetCommand, AWarningShowsNoPasswordEither)
{
    Front.Changes.insert({"Secret", {4, "", ""}});
    const std::string hidden = "what the BMC answered is not shown, since a new password may stand in it";
    struct Row
    {
        std::string Password;
        std::string Answered;
        std::string Told;
    };
    const Row rows[] = {
        {"hunter2", "h is not ready: it has hunter2.", "h is not ready: it has ********."},
        {"rea", "h is not ready.", hidden},
        {"a\"b", "h is not ready: it has \"a\\\"b\".", hidden},
        {"other", "h is not ready.", "h is not ready."},
    };
    for (const Row& row : rows)
    {
        Shows = [&](ShownFront& front) { front.Result = {33, row.Answered, ""}; };
        EXPECT_EQ(StderrLines(Set({"Owner=you", "Secret=" + row.Password})),
                  "tavrine: warning: the pending values could not be read back: " + row.Told + "\n");
    }
}

TEST_F(SetCommand, WhatAStoppedRunTellsShowsNoPassword)
{
    const auto run = [this](const std::string& password)
    {
        InstallStopSignals();
        std::raise(SIGTERM);
        Front.Changes.insert({"Secret", {4, "", ""}});
        Front.Flushes = {{{18, "refused", ""}, {{10, "The value " + password + " is bad.", "BIOS.Secret"}}}};
        std::string notes;
        for (const std::string& note : Set({"Secret=" + password}).Notes)
        {
            notes += note + "\n";
        }
        std::fputs(notes.c_str(), stderr);
        std::_Exit(0);
    };
    EXPECT_EXIT(run("hunter2"), ::testing::ExitedWithCode(0), "^BIOS.Secret: The value [*]{8} is bad.\n$");
    EXPECT_EXIT(run("val"), ::testing::ExitedWithCode(0), "^BIOS.Secret: what the BMC answered is not shown");
}

TEST_F(SetCommand, AStoppedRunReadsNothingBack)
{
    const auto run = [this]
    {
        InstallStopSignals();
        std::raise(SIGTERM);
        Set({"Timeout=20"});
        std::fprintf(stderr, "%zu done, read back %d times\n", Front.Done.size(), ReadBacks);
        std::_Exit(0);
    };
    EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "^1 done, read back 0 times\n$");
}

TEST_F(SetCommand, WithoutTheCheckTheOtherOperationIsUsed)
{
    Given.NoCheck = true;
    Shows = [](ShownFront& shown)
    {
        shown.Group = {Good, {{"BIOS.Timeout", "10"}, {"BIOS.Owner", "me"}}};
        shown.Compared = {{"BIOS.Timeout", {"10", "999"}}, {"BIOS.Owner", {"me", "a\"b\\\n"}}};
    };
    EXPECT_EQ(Set({"Timeout=999"}).Code, 0);
    EXPECT_EQ(Front.Done, Words{"Timeout=999!"});
    Front.Done.clear();
    EXPECT_EQ(Set({"Timeout=999", "Owner=a\"b\\\n"}).Code, 0);
    EXPECT_EQ(Front.Done, (Words{"Timeout=999!+", "Owner=a\\\"b\\\\\\n!+", "flush"}));
}

TEST_F(SetCommand, WithoutTheCheckAValueStaysWithinItsPlaceInTheBody)
{
    Given.NoCheck = true;
    for (const char* text : {"Timeout=1,\"Owner\":\"x\"", "Timeout=abc", "NumLock=", "NumLock={}", "Owner=\xFF"})
    {
        const Answer answer = Set({text});
        EXPECT_EQ(answer.Code, 10) << text;
        EXPECT_NE(answer.Message.find("cannot be sent"), std::string::npos) << answer.Message;
    }
    EXPECT_TRUE(Front.Done.empty());
    Given.Hex = true;
    EXPECT_EQ(Set({"Timeout=xyz"}).Code, 10);
    Given.DryRun = true;
    EXPECT_EQ(Set({"Timeout=0x14", "NumLock=null"}).Text, "{\"Attributes\":{\"NumLock\":null,\"Timeout\":20}}\n");
}

TEST_F(SetCommand, WithoutTheCheckHiddenAndUnknownSettingsAreRefusedAllTheSame)
{
    Given.NoCheck = true;
    EXPECT_EQ(Set({"Seal=x"}).Code, 34);
    EXPECT_EQ(Set({"Quiet=x"}).Code, 20);
    EXPECT_TRUE(Front.Done.empty());
}

TEST_F(SetCommand, MissingOemActionsNameTheOption)
{
    Front.Registry.first = {28, "POST /x/ZorvanBios.GetProtectedAttributes was refused by h (404 Not Found).", ""};
    Answer answer = Set({"Timeout=20", "Owner=you"});
    EXPECT_EQ(answer.Code, 28);
    EXPECT_TRUE(Front.Done.empty());
    EXPECT_NE(StderrLines(answer).find("--system-type bios"), std::string::npos);
    EXPECT_NE(StderrLines(answer).find("tavrine: 28 BIOS.Owner: not sent\n"), std::string::npos);

    // Without the check nothing protected is needed; but then nobody knows the passwords.
    Given.NoCheck = true;
    Given.Json = true;
    answer = Set({"Timeout=20"});
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(boost::json::serialize(answer.Data), R"({"BIOS.Timeout":{"outcome":"changed"}})");
}

TEST_F(SetCommand, ABmcThatCannotBeReadGetsNoChange)
{
    for (const int code : {24, 26, 27, 33})
    {
        Front.Registry.first = {code, "cause", ""};
        const Answer answer = Set({"Timeout=20"});
        EXPECT_EQ(answer.Code, code);
        EXPECT_EQ(answer.Message, "cause");
        EXPECT_EQ(LastWords(answer), "BIOS.Timeout: not sent");
    }
    Front.Registry.first = Good;
    Front.Single.find("Owner")->second = {{24, "gone", ""}, {}};
    EXPECT_EQ(SetData({"Timeout=20", "Owner=you"}),
              R"({"BIOS.Timeout":{"outcome":"not sent"},"BIOS.Owner":{"outcome":"not sent"}})");
    EXPECT_TRUE(Front.Done.empty());
}

TEST_F(SetCommand, ARegistryThatIsNoneSendsNothing)
{
    Front.Registry.second = "[]";
    EXPECT_EQ(Set({"Timeout=20"}).Code, 27);
    EXPECT_TRUE(Front.Done.empty());
}

TEST_F(SetCommand, ADryRunSendsNothingAndPrintsTheBodies)
{
    Given.DryRun = true;
    Answer answer = Set({"Owner=a\"b", "Timeout=20", "NumLock=true", "Slot=B", "Mode=Legacy"});
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "{\"Attributes\":{\"Mode\":\"Legacy\",\"Owner\":\"a\\\"b\",\"Timeout\":20}}\n"
                           "{\"Attributes\":{\"Slot\":\"B\"}}\n");
    EXPECT_EQ(StderrLines(answer), "tavrine: BIOS.NumLock: already true, in force\n");
    answer = Set({"Slot=B", "Timeout=21"});
    EXPECT_EQ(answer.Code, 18);
    EXPECT_EQ(answer.Text, "{\"Attributes\":{\"Timeout\":21}}\n");
    EXPECT_TRUE(Front.Done.empty());
    EXPECT_EQ(ReadBacks, 0);

    Given.Json = true;
    answer = Set({"Timeout=20", "Owner=me"});
    EXPECT_EQ(boost::json::serialize(answer.Data),
              R"({"BIOS.Timeout":{"outcome":"would change","value":20},)"
              R"("BIOS.Owner":{"outcome":"already","value":"me","inForce":true}})");
    EXPECT_EQ(boost::json::serialize(answer.More), R"({"bodies":[{"Attributes":{"Timeout":20}}]})");
}

TEST_F(SetCommand, ProtectedSettingsHaveABodyOfTheirOwn)
{
    AskForProtected();
    Given.DryRun = true;
    EXPECT_EQ(Set({"Timeout=20", "Seal=new", "Owner=you"}).Text,
              "{\"Attributes\":{\"Seal\":\"new\"}}\n{\"Attributes\":{\"Owner\":\"you\",\"Timeout\":20}}\n");

    // The end of each request is known, since none carries both kinds.
    Given.DryRun = false;
    Front.Flushes = {{{1, "", ""}, {}}, {{33, "h is not ready", ""}, {}}};
    const Answer answer = Set({"Timeout=20", "Seal=new"});
    EXPECT_EQ(Front.Done, (Words{"Seal=new+", "flush", "Timeout=20+", "flush"}));
    EXPECT_EQ(answer.Text, "BIOS.Seal: changed, takes effect after a reboot\n");
    EXPECT_EQ(answer.Code, 33);
}

/// Each costs another read of the registry.
TEST_F(SetCommand, AProtectedSettingIsNotReadBackWhereItsRequestWasAccepted)
{
    AskForProtected();
    EXPECT_EQ(Set({"Timeout=20", "Seal=new"}).Code, 0);
    EXPECT_EQ(Front.Done, (Words{"Seal=new+", "flush", "Timeout=20+", "flush"}));
    EXPECT_EQ(ReadBacks, 1);
}

TEST_F(SetCommand, DataOfAChangeThatWasNotReadBackSaysWhatTheTextSays)
{
    AskForProtected();
    Front.Changes.insert({"Secret", {4, "", ""}});
    EXPECT_EQ(SetData({"Seal=new", "Secret=hunter2"}),
              R"({"BIOS.Seal":{"outcome":"changed","value":"new","inForce":false},)"
              R"("BIOS.Secret":{"outcome":"changed"}})");
    EXPECT_EQ(SetData({"Seal=old"}), R"({"BIOS.Seal":{"outcome":"already","value":"old","inForce":true}})");
    Given.DryRun = true;
    EXPECT_EQ(SetData({"Seal=new"}), R"({"BIOS.Seal":{"outcome":"would change","value":"new"}})");
}

TEST_F(SetCommand, OfASystemWithoutUefiProtectedSettingsGoWithTheOthers)
{
    Given.SystemType = SystemTypeBios;
    Front.Value("Seal", R"("old")");
    Front.Registry.second.replace(Front.Registry.second.find("\"Seal\",") + 7, 0, "\"CurrentValue\":\"old\",");
    EXPECT_EQ(Set({"Timeout=20", "Seal=new"}).Code, 0);
    EXPECT_EQ(Front.Done, (Words{"Timeout=20+", "Seal=new+", "flush"}));
}

TEST_F(SetCommand, AnOldAndANewNameOfOneSettingAreOneTooMany)
{
    const Configured names("[legacy_names]\nOldTimeout = \"Timeout\"\n");
    Given.LegacyNames = true;
    Front.Value("OldTimeout", "10");
    EXPECT_EQ(Set({"OldTimeout=20"}).Code, 0);
    EXPECT_EQ(Front.Done, Words{"OldTimeout=20"});
    EXPECT_EQ(Set({"OldTimeout=20", "Timeout=21"}).Code, StatusUsage);
    EXPECT_EQ(Front.Done.size(), 1U);
}

TEST_F(SetCommand, ARefusalShowsAnOldNameWithItsPrefix)
{
    const Configured names("[legacy_names]\nOldSeal = \"Seal\"\nOldMode = \"Mode\"\n");
    Given.LegacyNames = true;
    Front.Single.insert({"OldSeal", {{34, "The operation on setting OldSeal fails since it is hidden.", ""}, {}}});
    Front.Single.insert({"OldMode", Front.Single.at("Mode")});
    const Answer answer = Set({"OldSeal=x", "OldMode=y"});
    EXPECT_EQ(answer.Errors.at(0).Message, "The operation on setting BIOS.OldSeal fails since it is hidden.");
    EXPECT_NE(answer.Errors.at(1).Message.find("setting BIOS.OldMode "), std::string::npos)
        << answer.Errors.at(1).Message;
}

TEST_F(SetCommand, ASettingThatTheConfigurationHidesIsNotVerified)
{
    const Configured hidden("HIDDEN_CONFIG_KEYWORDS_LIST = 'Timeout'\n");
    Shows = [](ShownFront& shown)
    {
        shown.Group = {Good, {{"BIOS.Owner", "me"}}};
        shown.Result = {2, "", ""};
    };
    EXPECT_EQ(Set({"Timeout=20"}).Text, "BIOS.Timeout: changed, takes effect after a reboot\n");
}
