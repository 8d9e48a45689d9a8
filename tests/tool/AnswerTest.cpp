#include "Answer.h"

#include <gtest/gtest.h>

#include <utility>

#include "CauseLog.h"
#include "Log.h"

using namespace Tavrine;
using namespace Tavrine::Tool;

TEST(ExitStatus, FollowsTheCode)
{
    struct Row
    {
        int Code;
        int Status;
    };
    const Row rows[] = {{0, 0},   {1, 0},     {2, 2},    {3, 0},    {4, 0},   {5, 0},
                        {6, 6},   {7, 7},     {20, 20},  {24, 24},  {33, 33}, {38, 38},
                        {64, 64}, {127, 127}, {128, 13}, {256, 13}, {-1, 13}, {512 + 20, 13}};
    for (const Row& row : rows)
    {
        EXPECT_EQ(ExitStatus(row.Code), row.Status) << row.Code;
    }
}

TEST(Failures, ABareResultGetsItsTextFromTheTable)
{
    EXPECT_EQ(FailureOf({26, "", ""}).Message, "Fail to query the setting.");
    EXPECT_EQ(FailureOf({13, "", ""}, "BIOS.A").Message, "BIOS.A: Redfish config internal error.");
    EXPECT_EQ(FailureOf({14, "", ""}).Message, "Error 14.");
    EXPECT_EQ(FailureOf({20, "Unable to find the setting BIOS.A", ""}, "BIOS.A").Message,
              "Unable to find the setting BIOS.A");
}

TEST(Failures, TheFirstFailingCodeIsThatOfTheAnswer)
{
    Answer answer;
    AddFailure(answer, {1, "reboot", "BIOS.A", ""});
    EXPECT_EQ(answer.Code, 0);
    AddFailure(answer, {34, "hidden", "BIOS.B", ""});
    AddFailure(answer, {20, "unknown", "BIOS.C", ""});
    EXPECT_EQ(answer.Code, 34);
    EXPECT_EQ(answer.Message, "hidden");
    EXPECT_EQ(answer.Errors.size(), 3U);
}

TEST(Failures, OneOfTheWholeBmcOutranksThoseOfSingleSettings)
{
    for (const int code : {24, 32, 33})
    {
        Answer answer;
        AddFailure(answer, {18, "refused", "BIOS.A", ""});
        AddFailure(answer, {code, "gone", "BIOS.B", ""});
        AddFailure(answer, {code == 24 ? 33 : 24, "later", "BIOS.C", ""});
        AddFailure(answer, {20, "unknown", "BIOS.D", ""});
        EXPECT_EQ(answer.Code, code);
        EXPECT_EQ(answer.Message, "gone");
        EXPECT_EQ(answer.Errors.size(), 4U);
    }
}

TEST(StderrLines, OneLineAFailureWithoutControlCharacters)
{
    Answer answer;
    AddFailure(answer, {26, "refused:\nthe BMC says \x1B[2J", "", "HTTP 404\r"});
    AddFailure(answer, {24, "gone", "BIOS.A", ""});
    AddFailure(answer, {24, "gone", "BIOS.B", ""});
    answer.Notes = {"warning: careful"};
    EXPECT_EQ(StderrLines(answer), "tavrine: 26 refused:\\nthe BMC says \\x1B[2J\n"
                                   "tavrine: cause: HTTP 404\\r\n"
                                   "tavrine: 24 gone\n"
                                   "tavrine: warning: careful\n");
}

TEST(CauseLog, ABareFailureIsExplainedByTheLibrarysOwnLine)
{
    CauseLog causes;
    Log(1, "a.cpp", 1).Stream() << "Failed in get current value map though: HTTP 404";
    Log(1, "a.cpp", 2).Stream() << "Failed in get current value map though: ";
    Log(4, "a.cpp", 3).Stream() << "detail";
    EXPECT_EQ(causes.Explain({26, "", ""}).Cause, "HTTP 404");
    EXPECT_EQ(causes.Explain({26, "", ""}).Cause, "");
    Log(1, "a.cpp", 4).Stream() << "Failed to get schema though: lost";
    EXPECT_EQ(causes.Explain({24, "lost", ""}).Cause, "");
}

TEST(CauseLog, OnlyTheLastLinesAreKept)
{
    for (const auto& [behind, cause] : {std::pair{63, "first"}, {64, ""}})
    {
        CauseLog causes;
        Log(1, "a.cpp", 1).Stream() << "Failed though: first";
        for (int line = 0; line < behind; ++line)
        {
            Log(1, "a.cpp", 2).Stream() << "Failed though: ";
        }
        EXPECT_EQ(causes.Explain({26, "", ""}).Cause, cause) << behind;
    }
}

TEST(CauseLog, TheQuotedPartOfALineIsTheCause)
{
    EXPECT_EQ(QuotedCause("Failed to get schema though: no answer"), "no answer");
    EXPECT_EQ(QuotedCause("Failed to get setting manager with error: x though: y"), "y");
    EXPECT_EQ(QuotedCause("Failed to get schema though: "), "");
    EXPECT_EQ(QuotedCause("Construct assistant error."), "Construct assistant error.");
}
