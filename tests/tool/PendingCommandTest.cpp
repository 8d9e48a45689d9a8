#include "PendingCommand.h"

#include <gtest/gtest.h>

#include <boost/json/serialize.hpp>

#include "ConfigFile.h"
#include "Options.h"
#include "SetFront.h"

using namespace Tavrine;
using namespace Tavrine::Tool;
using tooltest::Configured;
using tooltest::ShownFront;

namespace json = boost::json;

namespace
{

using Words = std::vector<std::string>;

class PendingCommand : public ::testing::Test
{
  public:
    /// Sets a new object up; the flag tells that it is of typed output.
    std::function<void(ShownFront&, bool)> Prepare = [](ShownFront&, bool) {};
    int Made = 0;
    Tavrine::Tool::Options Given;

    Answer Pending(const Words& names = {})
    {
        Given.Names = names;
        return ShowPending(Given,
                           [this](OutputForm form)
                           {
                               ++Made;
                               auto front = std::make_unique<ShownFront>();
                               Prepare(*front, form == OutputForm::Typed);
                               return front;
                           });
    }

  private:
    Configured m_NothingConfigured{""};
};

} // namespace

TEST_F(PendingCommand, ALineEach)
{
    Prepare = [](ShownFront& front, bool) { front.Compared = {{"BIOS.B", {"1", "2"}}, {"BIOS.A", {"x\n", ""}}}; };
    const Answer answer = Pending();
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "BIOS.A=x\\n -> \nBIOS.B=1 -> 2\n");
    EXPECT_EQ(Made, 1);
}

TEST_F(PendingCommand, ThatNothingIsPendingIsAnAnswer)
{
    Prepare = [](ShownFront& front, bool) { front.Result = {2, "", ""}; };
    for (const Words& names : {Words{}, Words{"A", "B"}})
    {
        const std::string nothing = names.empty()
                                        ? "Nothing is pending; passwords and protected settings are not looked at.\n"
                                        : "Nothing is pending.\n";
        Given.Json = false;
        Answer answer = Pending(names);
        EXPECT_EQ(answer.Code, 0);
        EXPECT_EQ(answer.Text, nothing);
        EXPECT_TRUE(answer.Errors.empty());
        Given.Json = true;
        answer = Pending(names);
        EXPECT_EQ(answer.Code, 0);
        EXPECT_TRUE(answer.Data.empty());
        EXPECT_EQ(answer.Message + "\n", nothing);
    }
}

TEST_F(PendingCommand, OfASettingWithoutAValueNobodyKnowsWhatWaits)
{
    for (const RedfishConfigResult& compared : {RedfishConfigResult{2, "", ""}, RedfishConfigResult{0, "", ""}})
    {
        Prepare = [&](ShownFront& front, bool)
        {
            front.Result = compared;
            front.Single.insert({"Word", {{8, "", ""}, {}}});
        };
        for (const Words& names : {Words{"Word"}, Words{"A", "Word"}})
        {
            const Answer answer = Pending(names);
            EXPECT_EQ(answer.Code, 0);
            EXPECT_EQ(answer.Text, "Nothing is pending that the BMC shows.\n");
            EXPECT_EQ(answer.Notes, Words{"BIOS.Word: whether a change waits is not known, since the BMC shows no "
                                          "value of it"});
        }
    }
}

TEST_F(PendingCommand, DataHasTheKindsOfTheValuesInForce)
{
    Given.Json = true;
    Prepare = [](ShownFront& front, bool typed)
    {
        front.Compared = {{"BIOS.N", {"1", "-2"}}, {"BIOS.B", {"true", "false"}}, {"BIOS.S", {"1", "2"}}};
        if (typed)
        {
            front.Group = {{0, "", ""}, {{"BIOS", R"({"N":1,"B":true,"S":"1"})"}}};
        }
    };
    EXPECT_EQ(json::serialize(Pending().Data),
              R"({"BIOS.B":{"current":true,"pending":false},"BIOS.N":{"current":1,"pending":-2},)"
              R"("BIOS.S":{"current":"1","pending":"2"}})");
}

TEST_F(PendingCommand, NumbersAreHexadecimalWhereAskedFor)
{
    Given.Hex = true;
    Prepare = [](ShownFront& front, bool typed)
    {
        front.Compared = {{"BIOS.N", {"1", "16"}}, {"BIOS.S", {"1", "16"}}};
        if (typed)
        {
            front.Group = {{0, "", ""}, {{"BIOS", R"({"N":1,"S":"1"})"}}};
        }
    };
    EXPECT_EQ(Pending().Text, "BIOS.N=0x1 -> 0x10\nBIOS.S=1 -> 16\n");
}

TEST_F(PendingCommand, AFailureIsOne)
{
    Prepare = [](ShownFront& front, bool) { front.Result = {26, "no settings", ""}; };
    const Answer answer = Pending();
    EXPECT_EQ(answer.Code, 26);
    EXPECT_EQ(answer.Text, "");
    EXPECT_EQ(StderrLines(answer), "tavrine: 26 no settings\n");
}

TEST_F(PendingCommand, ABmcThatNamesNoSettingsObjectIsToldFromOneThatFails)
{
    // The library answers both with a bare 26; the values in force are there only in the first case.
    bool valuesAreThere = true;
    Prepare = [&](ShownFront& front, bool)
    {
        front.Result = {26, "", ""};
        front.Group = valuesAreThere ? std::pair(RedfishConfigResult{0, "", ""}, SettingStringMap{{"BIOS.A", "1"}})
                                     : std::pair(RedfishConfigResult{26, "", ""}, SettingStringMap{});
    };
    const std::string told = "The BMC names no settings object, so that it does not tell what is pending.";
    EXPECT_EQ(StderrLines(Pending()), "tavrine: 26 " + told + "\n");
    EXPECT_EQ(StderrLines(Pending({"A"})), "tavrine: 26 BIOS.A: " + told + "\n");
    valuesAreThere = false;
    EXPECT_EQ(StderrLines(Pending()), "tavrine: 26 Fail to query the setting.\n");
}

TEST_F(PendingCommand, NamesAreAskedForOneByOne)
{
    std::vector<std::string> asked;
    class Named : public ShownFront
    {
      public:
        explicit Named(std::vector<std::string>& asked) : m_Asked(asked) {}
        RedfishConfigResult CompareSettingPendingValues(tooltest::SettingCompareMap& values,
                                                        const std::string& setting) override
        {
            m_Asked.push_back(setting.empty() ? "*" : setting);
            if (setting == "A")
            {
                values["BIOS.A"] = {"1", "2"};
                return {0, "", ""};
            }
            if (setting.empty())
            {
                values["BIOS.Loose"] = {"3", "4"};
                return {0, "", ""};
            }
            return setting == "Same" ? RedfishConfigResult{2, "Setting has no pending value.", ""}
                                     : RedfishConfigResult{20, "Unable to find the setting " + setting, ""};
        }

      private:
        std::vector<std::string>& m_Asked;
    };
    Given.Names = {"bios.A", "Same", "Loose", "Missing", "A"};
    const Answer answer = ShowPending(Given,
                                      [&](OutputForm)
                                      {
                                          auto front = std::make_unique<Named>(asked);
                                          front->Group = {{0, "", ""}, {{"BIOS.Loose", "3"}}};
                                          return front;
                                      });
    EXPECT_EQ(answer.Text, "BIOS.A=1 -> 2\nBIOS.Loose=3 -> 4\n");
    EXPECT_EQ(answer.Code, 20);
    EXPECT_EQ(StderrLines(answer), "tavrine: 20 Unable to find the setting BIOS.Missing\n");
    // What the BMC reports of all is read once.
    EXPECT_EQ(asked, (Words{"*", "A", "Same", "Loose", "Missing"}));
}

TEST_F(PendingCommand, WhatWasLostOnceIsReadAnew)
{
    class LostOnce : public ShownFront
    {
      public:
        explicit LostOnce(int& asked) : m_Asked(asked) {}
        RedfishConfigResult CompareSettingPendingValues(tooltest::SettingCompareMap& values,
                                                        const std::string& setting) override
        {
            if (!setting.empty())
            {
                return {20, "Unable to find the setting " + setting, ""};
            }
            values["BIOS.Loose"] = {"3", "4"};
            return m_Asked++ == 0 ? RedfishConfigResult{26, "Fail to query the setting.", ""}
                                  : RedfishConfigResult{0, "", ""};
        }

      private:
        int& m_Asked;
    };
    int asked = 0;
    Given.Names = {"Loose", "Missing"};
    const Answer answer = ShowPending(Given,
                                      [&](OutputForm)
                                      {
                                          auto front = std::make_unique<LostOnce>(asked);
                                          front->Group = {{0, "", ""}, {{"BIOS.Loose", "3"}}};
                                          return front;
                                      });
    EXPECT_EQ(answer.Text, "BIOS.Loose=3 -> 4\n");
    EXPECT_EQ(StderrLines(answer), "tavrine: 20 Unable to find the setting BIOS.Missing\n");
    EXPECT_EQ(asked, 2);
}

TEST_F(PendingCommand, OneNameIsAskedForByItself)
{
    Given.Names = {"A", "bios.A"};
    std::vector<Words> asked;
    class Telling : public ShownFront
    {
      public:
        explicit Telling(std::vector<Words>& asked) : m_Asked(asked) { Result = {2, "", ""}; }
        ~Telling() override { m_Asked.push_back(ComparedNames); }

      private:
        std::vector<Words>& m_Asked;
    };
    ShowPending(Given, [&](OutputForm) { return std::make_unique<Telling>(asked); });
    EXPECT_EQ(asked, std::vector<Words>{Words{"A"}});
}

TEST_F(PendingCommand, TheKindOfASettingThatTheGroupLacksIsAskedFor)
{
    Given.Json = true;
    Prepare = [](ShownFront& front, bool typed)
    {
        front.Compared = {{"BIOS.Seal", {"false", "true"}}, {"BIOS.N", {"5", "18"}}};
        if (typed)
        {
            front.Group = {{0, "", ""}, {{"BIOS", R"({"N":5})"}}};
            front.Single.insert({"Seal", {{0, "", ""}, {{"BIOS", R"({"Seal":false})"}}}});
        }
    };
    EXPECT_EQ(json::serialize(Pending().Data),
              R"({"BIOS.N":{"current":5,"pending":18},"BIOS.Seal":{"current":false,"pending":true}})");
}

TEST_F(PendingCommand, ASettingWhoseKindCannotBeReadIsAFailureAndNoText)
{
    Prepare = [](ShownFront& front, bool typed)
    {
        front.Compared = {{"BIOS.Seal", {"5", "18"}}, {"BIOS.N", {"5", "18"}}};
        if (typed)
        {
            front.Group = {{0, "", ""}, {{"BIOS", R"({"N":5})"}}};
            front.Single.insert({"Seal", {{28, "refused", ""}, {}}});
        }
    };
    Given.Hex = true;
    const Answer hex = Pending();
    EXPECT_EQ(hex.Code, 28);
    EXPECT_EQ(hex.Text, "BIOS.N=0x5 -> 0x12\n");
    EXPECT_EQ(StderrLines(hex), "tavrine: 28 BIOS.Seal: the kind of its values could not be read: refused\n");
    Given.Json = true;
    const Answer data = Pending();
    EXPECT_EQ(data.Code, 28);
    EXPECT_EQ(data.Errors.at(0).Setting, "BIOS.Seal");
    EXPECT_EQ(json::serialize(data.Data), R"({"BIOS.N":{"current":5,"pending":18}})");
    Given.Json = Given.Hex = false;
    EXPECT_EQ(Pending().Code, 0);
    EXPECT_EQ(Pending().Text, "BIOS.N=5 -> 18\nBIOS.Seal=5 -> 18\n");
}

TEST_F(PendingCommand, WithoutKindsNothingIsShownThatDependsOnThem)
{
    Prepare = [](ShownFront& front, bool typed)
    {
        front.Compared = {{"BIOS.N", {"5", "18"}}};
        front.Group = {{26, typed ? "no values" : "", ""}, {}};
    };
    Given.Hex = true;
    Answer answer = Pending();
    EXPECT_EQ(answer.Text, "");
    EXPECT_EQ(StderrLines(answer), "tavrine: 26 The kinds of the values could not be read: no values\n");
    Given.Hex = false;
    Given.Json = true;
    answer = Pending();
    EXPECT_EQ(answer.Code, 26);
    EXPECT_TRUE(answer.Data.empty());
    Given.Json = false;
    answer = Pending();
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "BIOS.N=5 -> 18\n");
}

TEST_F(PendingCommand, AfterALostConnectionNobodyIsAskedAgain)
{
    Prepare = [](ShownFront& front, bool) { front.Result = {24, "gone", ""}; };
    const Answer answer = Pending({"A", "B"});
    EXPECT_EQ(answer.Code, 24);
    EXPECT_EQ(answer.Errors.size(), 2U);
    EXPECT_EQ(StderrLines(answer), "tavrine: 24 gone\n");
}

TEST_F(PendingCommand, WhetherTheBmcHasANameIsNotKnownWhereItCannotBeAsked)
{
    class Unregistered : public ShownFront
    {
      public:
        explicit Unregistered(int code) : m_Code(code) {}
        RedfishConfigResult CompareSettingPendingValues(tooltest::SettingCompareMap&,
                                                        const std::string& setting) override
        {
            return setting.empty() ? RedfishConfigResult{m_Code, "gone", ""}
                                   : RedfishConfigResult{20, "Unable to find the setting " + setting, ""};
        }

      private:
        int m_Code;
    };
    Given.Names = {"Unregistered"};
    for (const int code : {24, 32, 33, 26})
    {
        const Answer answer = ShowPending(Given, [&](OutputForm) { return std::make_unique<Unregistered>(code); });
        EXPECT_EQ(answer.Code, code == 26 ? 20 : code);
        ASSERT_EQ(answer.Errors.size(), 1U);
        EXPECT_EQ(answer.Errors[0].Setting, "BIOS.Unregistered");
    }
    Given.Json = true;
    EXPECT_TRUE(ShowPending(Given, [&](OutputForm) { return std::make_unique<Unregistered>(33); })
                    .More.at("defaultsPending")
                    .is_null());
    Given.Names = {"P"};
    Given.Protected = true;
    Prepare = [](ShownFront& front, bool) { front.Result = {2, "", ""}; };
    EXPECT_TRUE(Pending({"P"}).More.at("defaultsPending").is_null());
    EXPECT_EQ(Pending().More.at("defaultsPending"), false);
}

TEST_F(PendingCommand, MissingOemActionsNameTheOption)
{
    Prepare = [](ShownFront& front, bool) {
        front.Result = {28, "POST /x/ZorvanBios.GetProtectedAttributes was refused by h (404 Not Found).", ""};
    };
    EXPECT_NE(StderrLines(Pending({"A"})).find("--system-type bios"), std::string::npos);
}
