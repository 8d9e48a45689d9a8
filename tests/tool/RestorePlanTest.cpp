#include "RestorePlan.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "RestoreFixture.h"

using namespace Tavrine::Tool;
using namespace tooltest;

namespace
{

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

TEST(RestorePlan, ARequestForAllDefaultsIsNoStateToGoBackTo)
{
    const RestorePlan plan = PlanOf({{"SystemRecovery_PostLoadSetupDefault", "Enabled"}, {"Tag", "new"}});
    EXPECT_EQ(Find(plan, "SystemRecovery_PostLoadSetupDefault").Outcome, RestoreOutcome::NotSent);
    EXPECT_EQ(Find(plan, "SystemRecovery_PostLoadSetupDefault").Code, 0);
    EXPECT_EQ(Calls(plan), (Names{{"Tag"}}));
    EXPECT_EQ(Find(PlanOf({{"SystemRecovery_PostLoadSetupDefault", "Disabled"}}), "SystemRecovery_PostLoadSetupDefault")
                  .Outcome,
              RestoreOutcome::InPlace);
}

TEST(RestorePlan, WhatAnotherSettingOfTheFileLocksGoesFirst)
{
    EXPECT_EQ(Calls(PlanOf({{"Mode", "Fixed"}, {"Size", "3"}, {"Tag", "new"}})), (Names{{"Size"}, {"Mode", "Tag"}}));
}

TEST(RestorePlan, AValueBeyondTheBoundsThatTheFileLeavesIsNotSentBeforeThem)
{
    const RestorePlan plan = PlanOf({{"Mode", "Fixed"}, {"Limited", "7"}});
    EXPECT_EQ(Find(plan, "Limited").Outcome, RestoreOutcome::Refused);
    EXPECT_EQ(Find(plan, "Limited").Code, 10);
    EXPECT_EQ(Calls(plan), (Names{{"Mode"}}));
    EXPECT_EQ(Calls(PlanOf({{"Limited", "7"}})), (Names{{"Limited"}}));
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
