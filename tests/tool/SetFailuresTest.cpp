// What became of a change that the BMC refused, did not finish or did not show.
#include "SetFixture.h"

using namespace Tavrine;
using namespace Tavrine::Tool;
using namespace tooltest;

namespace
{

class SetFailures : public SetFixture
{
};

} // namespace

TEST_F(SetFailures, ARefusedRequestNeverCountsAsAChange)
{
    Shows = [](ShownFront& shown)
    {
        shown.Group = {Good, {{"BIOS.Timeout", "10"}, {"BIOS.Owner", "me"}, {"BIOS.NumLock", "true"}}};
        shown.Result = {2, "", ""};
    };
    Front.Flushes = {{{18, "PATCH /x was refused by h (400 Bad Request).", ""},
                      {{10, "The value is bad.", "BIOS.Timeout"},
                       {18, "BIOS.NumLock is read only.", "BIOS.NumLock"},
                       {10, "The value is bad.", "BIOS.Timeout"}}}};
    const Answer answer = Set({"Timeout=20", "Owner=you", "NumLock=false"});
    EXPECT_EQ(answer.Code, 10);
    EXPECT_EQ(answer.Text, "");
    EXPECT_EQ(StderrLines(answer), "tavrine: 10 BIOS.Timeout: The value is bad.\n"
                                   "tavrine: 18 BIOS.NumLock is read only.\n"
                                   "tavrine: 18 BIOS.Owner: not changed, refused together with the others\n");
    EXPECT_EQ(answer.Errors.size(), 3U);
}

TEST_F(SetFailures, ARefusalThatNamesNoSettingIsToldOnceAndForEach)
{
    Shows = [](ShownFront& shown) { shown.Result = {26, "gone", ""}; };
    Front.Flushes = {{{18, "PATCH /x was refused by h (412 Precondition Failed).", ""}, {}}};
    const Answer answer = Set({"Timeout=20", "Owner=you"});
    EXPECT_EQ(answer.Code, 18);
    EXPECT_EQ(StderrLines(answer), "tavrine: 18 PATCH /x was refused by h (412 Precondition Failed).\n"
                                   "tavrine: 18 BIOS.Timeout: not changed, since the BMC refused the request\n"
                                   "tavrine: 18 BIOS.Owner: not changed, since the BMC refused the request\n"
                                   "tavrine: warning: the pending values could not be read back: gone\n");
}

TEST_F(SetFailures, WhatALenientBmcDidOfARefusedRequestIsSeen)
{
    Front.Flushes = {{{18, "PATCH /x was refused by h (200).", ""}, {{10, "bad", "BIOS.Timeout"}}}};
    const Answer answer = Set({"Timeout=20", "Owner=you"});
    EXPECT_EQ(answer.Code, 10);
    EXPECT_EQ(answer.Text, "BIOS.Owner: changed, takes effect after a reboot\n");
    EXPECT_EQ(StderrLines(answer), "tavrine: 10 BIOS.Timeout: bad\n");
}

TEST_F(SetFailures, AnAcceptedChangeThatTheBmcDoesNotShowIsNotClaimed)
{
    struct Row
    {
        tooltest::SettingCompareMap Compared;
        const char* Effective;
        const char* Text;
        int Code;
    };
    const Row rows[] = {
        {{{"BIOS.Timeout", {"10", "20"}}}, "10", "BIOS.Timeout: changed, takes effect after a reboot\n", 0},
        {{}, "20", "BIOS.Timeout: changed, the BMC shows it in force\n", 0},
        {{{"BIOS.timeout", {"10", "20"}}}, "10", "BIOS.Timeout: changed, takes effect after a reboot\n", 0},
        {{}, "10", "", 18},
        {{{"BIOS.Timeout", {"10", "21"}}}, "10", "", 18},
    };
    for (const Row& row : rows)
    {
        Shows = [&](ShownFront& shown)
        {
            shown.Compared = row.Compared;
            shown.Result = {row.Compared.empty() ? 2 : 0, "", ""};
            shown.Group = {Good, {{"BIOS.Timeout", row.Effective}}};
        };
        const Answer answer = Set({"Timeout=20"});
        EXPECT_EQ(answer.Text, row.Text);
        EXPECT_EQ(answer.Code, row.Code);
    }
    EXPECT_EQ(SetData({"Timeout=20"}), R"({"BIOS.Timeout":{"outcome":"unknown"}})");
}

TEST_F(SetFailures, AnAcceptedChangeThatCannotBeReadBackSaysSo)
{
    Shows = [](ShownFront& shown) { shown.Result = {33, "h is not ready", ""}; };
    const Answer answer = Set({"Timeout=20"});
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "BIOS.Timeout: changed, takes effect after a reboot\n");
    EXPECT_EQ(StderrLines(answer), "tavrine: warning: the pending values could not be read back: h is not ready\n");
}

TEST_F(SetFailures, ALostConnectionLeavesTheChangeOpenUnlessTheBmcShowsIt)
{
    Front.Changes.insert({"Timeout", {24, CutOff, ""}});
    Answer answer = Set({"Timeout=20"});
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "BIOS.Timeout: changed, takes effect after a reboot\n");
    EXPECT_NE(StderrLines(answer).find("the request failed, but the BMC shows the changes"), std::string::npos);

    Shows = [](ShownFront& shown)
    {
        shown.Group = {Good, {{"BIOS.Timeout", "10"}}};
        shown.Result = {2, "", ""};
    };
    answer = Set({"Timeout=20"});
    EXPECT_EQ(answer.Code, 24);
    EXPECT_EQ(answer.Text, "");
    EXPECT_EQ(LastWords(answer), "BIOS.Timeout: whether the change was done is not known; the BMC does not "
                                 "show it among its pending values");

    Shows = [](ShownFront& shown) { shown.Result = {24, "h cannot be reached", ""}; };
    answer = Set({"Timeout=20"});
    EXPECT_EQ(answer.Code, 24);
    EXPECT_EQ(LastWords(answer),
              "BIOS.Timeout: whether the change was done is not known; its pending value could not be read");
    EXPECT_EQ(SetData({"Timeout=20"}), R"({"BIOS.Timeout":{"outcome":"unknown"}})");
}

TEST_F(SetFailures, HowFarARequestCameIsToldByItsEnd)
{
    struct Row
    {
        int Code;
        const char* Message;
        const char* Outcome;
    };
    const Row rows[] = {
        {24, "h: the connection was refused; nothing was sent.", "not sent"},
        {18, "PATCH /x y was not sent to h: the path is unusable.", "not sent"},
        {26, "", "not sent"},
        {13, "", "not sent"},
        {32, "BMC internal error.", "not sent"},
        {33, "h is not ready (503 Service Unavailable).", "refused"},
        {24, "h: it refuses the user name or the password (401 Unauthorized).", "refused"},
        {24, "h: the account has not the privilege for PATCH /x (403 Forbidden).", "refused"},
        {18, "PATCH /x was refused by h (400 Bad Request).", "refused"},
        {24, "h: no login; the change was not done.", "refused"},
        {24, "h: time-out; whether the change was done is not known.", "unknown"},
        {33, "h is not ready; whether the change was done is not known.", "unknown"},
        {32, "PATCH /x failed inside h (500 Internal Server Error); whether the change was done is not known.",
         "unknown"},
    };
    Shows = [](ShownFront& shown) { shown.Result = {24, "h cannot be reached", ""}; };
    for (const Row& row : rows)
    {
        Front.Changes.clear();
        Front.Changes.insert({"Timeout", {row.Code, row.Message, ""}});
        EXPECT_EQ(SetData({"Timeout=20"}), std::string(R"({"BIOS.Timeout":{"outcome":")") + row.Outcome + "\"}}")
            << row.Message;
        EXPECT_EQ(Set({"Timeout=20"}).Code, row.Code);
    }
}

TEST_F(SetFailures, RelatedSettingsGoInRequestsOfTheirOwnInAnOrderThatPasses)
{
    // Slot is grayed out until Mode is changed.
    const Answer answer = Set({"Slot=B", "Timeout=20", "Mode=Legacy"});
    EXPECT_EQ(answer.Code, 0) << answer.Message;
    EXPECT_EQ(Front.Done, (Words{"Timeout=20+", "Mode=Legacy+", "flush", "Slot=B+", "flush"}));
    EXPECT_EQ(ReadBacks, 1);
    EXPECT_EQ(Set({"Slot=B"}).Code, 18);
}

TEST_F(SetFailures, AfterAFailedRequestNoOtherIsSent)
{
    Shows = [](ShownFront& shown)
    {
        shown.Group = {Good, {{"BIOS.Mode", "Uefi"}, {"BIOS.Slot", "A"}}};
        shown.Result = {2, "", ""};
    };
    Front.Flushes = {{{18, "PATCH /x was refused by h (400 Bad Request).", ""}, {{18, "no", "BIOS.Mode"}}}};
    const Answer answer = Set({"Mode=Legacy", "Slot=B"});
    EXPECT_EQ(answer.Code, 18);
    EXPECT_EQ(Front.Done, (Words{"Mode=Legacy+", "flush"}));
    EXPECT_EQ(StderrLines(answer), "tavrine: 18 BIOS.Mode: no\n"
                                   "tavrine: 18 BIOS.Slot: not sent, since a change before it failed\n");
}

TEST_F(SetFailures, AFlushThatTheLibraryForcedIsSeenInTheErrorList)
{
    // The errors of a forced flush come with the change that forced it.
    Front.ChangeErrors["Owner"] = {{10, "bad", "BIOS.Timeout"}};
    const Answer answer = Set({"Timeout=20", "Owner=you"});
    EXPECT_EQ(answer.Code, 10);
    EXPECT_EQ(answer.Text, "BIOS.Owner: changed, takes effect after a reboot\n");
    EXPECT_EQ(StderrLines(answer), "tavrine: 10 BIOS.Timeout: bad\n");
}

TEST_F(SetFailures, ABusyBmcInTheMiddleOfABatchStopsIt)
{
    Front.Changes.insert({"Owner", {33, "h is not ready", ""}});
    const Answer answer = Set({"Timeout=20", "Owner=you", "NumLock=false"});
    EXPECT_EQ(answer.Code, 33);
    EXPECT_EQ(answer.Text, "");
    EXPECT_EQ(Front.Done, (Words{"Timeout=20+", "Owner=you+"}));
    EXPECT_EQ(ReadBacks, 0);
    Front.Done.clear();
    EXPECT_EQ(SetData({"Timeout=20", "Owner=you", "NumLock=false"}),
              R"({"BIOS.Timeout":{"outcome":"refused"},"BIOS.Owner":{"outcome":"not sent"},)"
              R"("BIOS.NumLock":{"outcome":"not sent"}})");
}

TEST_F(SetFailures, InABatchOneMeansThatNothingWasToBeDone)
{
    Front.Changes.insert({"Owner", {1, "", ""}});
    const Answer answer = Set({"Timeout=20", "Owner=you"});
    EXPECT_EQ(answer.Text, "BIOS.Timeout: changed, takes effect after a reboot\nBIOS.Owner: already you\n");
}

TEST_F(SetFailures, AWarningOfALaterRequestShowsNoPasswordOfAnEarlierOne)
{
    Front.Changes.insert({"Secret", {4, "", ""}});
    Front.Flushes = {{Good, {}},
                     {{32,
                       "PATCH /x failed inside h (500 Internal Server Error): not with hunter2; whether the change was "
                       "done is not known.",
                       ""},
                      {}}};
    const Answer answer = Set({"Mode=Legacy", "Secret=hunter2", "Slot=B"});
    EXPECT_EQ(Front.Done, (Words{"Mode=Legacy+", "Secret=hunter2+", "flush", "Slot=B+", "flush"}));
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(StderrLines(answer),
              "tavrine: warning: the request failed, but the BMC shows the changes: PATCH /x failed inside h (500 "
              "Internal Server Error): not with ********; whether the change was done is not known.\n");
}

TEST_F(SetFailures, AShortPasswordThatWasNotSentHidesNoWords)
{
    Front.Changes.insert({"Secret", {10, "bad", ""}});
    Front.Flushes = {{{33, "h is not ready (503 Service Unavailable).", ""}, {}}};
    Shows = [](ShownFront& shown) { shown.Result = {24, "gone", ""}; };
    const Answer answer = Set({"Secret=rea", "Owner=you"});
    EXPECT_EQ(Front.Done, (Words{"Secret=rea+", "Owner=you+", "flush"}));
    EXPECT_NE(StderrLines(answer).find("tavrine: 33 h is not ready (503 Service Unavailable).\n"), std::string::npos)
        << StderrLines(answer);
}

/// Without the registry each value may be a password; but of "1" all answers are full.
TEST_F(SetFailures, AShortValueThatIsPerhapsNoPasswordHidesNoWords)
{
    Given.NoCheck = true;
    Front.Registry.first = {28, "POST /x/ZorvanBios.GetProtectedAttributes was refused by h (404 Not Found).", ""};
    Front.Changes.insert({"Timeout", {10, "The value 1 is below 5.", "BIOS.Timeout"}});
    const Answer answer = Set({"Timeout=1"});
    EXPECT_EQ(answer.Code, 10);
    EXPECT_NE(StderrLines(answer).find("The value 1 is below 5."), std::string::npos) << StderrLines(answer);
}

TEST_F(SetFailures, ValuesThatCannotBeReadBackBesideWhatIsPendingAreToldAsWell)
{
    Shows = [](ShownFront& shown)
    {
        shown.Compared = {{"BIOS.Timeout", {"10", "20"}}};
        shown.Group = {{26, "no values", ""}, {}};
    };
    const Answer answer = Set({"Timeout=20"});
    EXPECT_EQ(answer.Text, "BIOS.Timeout: changed, takes effect after a reboot\n");
    EXPECT_EQ(StderrLines(answer), "tavrine: warning: the pending values could not be read back: no values\n");
}

TEST_F(SetFailures, WhatOneSettingSetsFreeGoesInOneRequestBehindIt)
{
    std::string& registry = Front.Registry.second;
    const std::string begin = R"("Dependencies":[)";
    const std::size_t first = registry.find(begin) + begin.size();
    std::string owner = registry.substr(first, registry.rfind("]}}") - first);
    for (std::size_t at = owner.find("Slot"); at != std::string::npos; at = owner.find("Slot", at))
    {
        owner.replace(at, 4, "Owner");
    }
    registry.insert(first, owner + ",");
    EXPECT_EQ(Set({"Mode=Legacy", "Slot=B", "Owner=you"}).Code, 0);
    EXPECT_EQ(Front.Done, (Words{"Mode=Legacy+", "flush", "Slot=B+", "Owner=you+", "flush"}));
}
