// What a restore tells, whatever it sent.
#include "RestoreCommand.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Options.h"
#include "RestoreFixture.h"

using namespace Tavrine::Tool;
using namespace tooltest;

TEST(RestoreAnswer, StrangersAreOneFailureAndRowsEach)
{
    Tavrine::SettingStringMap settings;
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
    EXPECT_EQ(answer.Errors[0].Cause, "") << "the file is not what is wrong";
    EXPECT_NE(answer.Text.find("BIOS.Stranger199999\tx\tnot sent: this system does not know the setting\n"),
              std::string::npos);
}

TEST(RestoreAnswer, WhatBefellManyIsToldOnce)
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

TEST(RestoreAnswer, PasswordsAreNotShown)
{
    const RestorePlan plan = PlanOf({{"Word", "hidden1"}}, false, false, {"Word"});
    Answer answer;
    TellRestore(plan, OptionsFor(), "BIOS", answer);
    EXPECT_EQ(answer.Text, "BIOS.Word\t********\twould be sent\n");
}

TEST(RestoreAnswer, FilesOfOtherSystemsNeedForce)
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
