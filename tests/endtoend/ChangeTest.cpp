#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <optional>

#include <boost/json/parse.hpp>

#include "BMCBaseAssistant.h"
#include "ChangeableSettings.h"
#include "RunningMachine.h"

using endtoend::RunningMachine;
using testdata::ChangeableSetting;
using testdata::MachineFiles;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace Tavrine;

namespace
{

using Words = std::vector<std::string>;

constexpr int CodeResetNeeded = 1;
constexpr int CodeNothingPending = 2;
constexpr int CodeInvalidValue = 10;
/// Machines lock their settings by other ones; so many are tried until one is free.
constexpr std::size_t MostTries = 40;

bool IsGood(const RedfishConfigResult& result) { return result == 0 || result == CodeResetNeeded; }

Words Patches(const Words& requests)
{
    Words patches;
    std::copy_if(requests.begin(), requests.end(), std::back_inserter(patches),
                 [](const std::string& request) { return request.starts_with("PATCH "); });
    return patches;
}

/// A machine that is changed, each look at it through an object of its own.
class ChangedMachine : public testing::TestWithParam<std::filesystem::path>
{
  public:
    const MachineFiles Files{GetParam()};
    RunningMachine Machine{GetParam()};

    std::unique_ptr<BiosRedfishConfigProc> Fresh()
    {
        return std::make_unique<BiosRedfishConfigProc>(Machine.Info(), SystemTypeBios, Config_Options());
    }

    std::string ValueOf(const std::string& name)
    {
        SettingStringMap values;
        RedfishConfigResult result = Fresh()->QuerySettingValue(name, values);
        EXPECT_EQ(result.ErrorCode(), 0) << result.ErrorMsg();
        return values["BIOS." + name];
    }

    SettingCompareMap Pending()
    {
        SettingCompareMap pending;
        RedfishConfigResult result = Fresh()->CompareSettingPendingValues(pending, "");
        EXPECT_TRUE(result == 0 || (result == CodeNothingPending && pending.empty())) << result.ErrorMsg();
        return pending;
    }

    void Restart()
    {
        BMCBaseAssistant client(Machine.Info(), SystemTypeBios);
        std::string text;
        ASSERT_EQ(client.GetData("/redfish/v1/Systems", text), 0);
        const std::string system(boost::json::parse(text).at("Members").at(0).at("@odata.id").as_string());
        ASSERT_EQ(client.GetData(system, text), 0);
        const boost::json::value reset = boost::json::parse(text).at("Actions").at("#ComputerSystem.Reset");
        const std::string target(reset.at("target").as_string());
        RedfishConfigResult result = client.PostData(target, R"({"ResetType":"ForceRestart"})", text, false, 0);
        ASSERT_TRUE(IsGood(result)) << result.ErrorMsg();
    }

    /// @return the first setting whose change, sent at once, passes the check.
    std::optional<ChangeableSetting> ChangeOne()
    {
        const std::unique_ptr<BiosRedfishConfigProc> proc = Fresh();
        std::size_t tries = 0;
        for (const ChangeableSetting& setting : Files.Changeable())
        {
            if (++tries > MostTries)
            {
                break;
            }
            RedfishConfigResult result = proc->PatchSettingNewValue(setting.Name, setting.Other, false);
            if (IsGood(result) && !Patches(Machine.NewRequests()).empty())
            {
                return setting;
            }
            m_Refusals += setting.Name + ": " + result.ErrorMsg() + "\n";
        }
        return std::nullopt;
    }

    const std::string& Refusals() const { return m_Refusals; }

  private:
    std::string m_Refusals;
};

TEST_P(ChangedMachine, AChangeWaitsForTheRestartAndIsThenInForce)
{
    ASSERT_EQ(Machine.Error(), "");
    if (Files.Changeable().empty())
    {
        GTEST_SKIP() << "the machine has no enumeration with a value that could be changed";
    }
    if (!Files.HasSettingsObject())
    {
        const ChangeableSetting setting = Files.Changeable().at(0);
        RedfishConfigResult result = Fresh()->PatchSettingNewValue(setting.Name, setting.Other, false);
        EXPECT_FALSE(IsGood(result));
        EXPECT_THAT(Patches(Machine.NewRequests()), IsEmpty());
        EXPECT_EQ(ValueOf(setting.Name), setting.Now);
        return;
    }
    const std::optional<ChangeableSetting> changed = ChangeOne();
    ASSERT_TRUE(changed) << "no setting of the machine could be changed\n" << Refusals();
    EXPECT_EQ(ValueOf(changed->Name), changed->Now);
    EXPECT_THAT(Pending(), ElementsAre(std::pair("BIOS." + changed->Name, std::pair(changed->Now, changed->Other))));
    ASSERT_NO_FATAL_FAILURE(Restart());
    EXPECT_EQ(ValueOf(changed->Name), changed->Other);
    EXPECT_THAT(Pending(), IsEmpty());
}

TEST_P(ChangedMachine, RelatedSettingsOfOneBatchGoInTwoRequests)
{
    ASSERT_EQ(Machine.Error(), "");
    std::map<std::string, ChangeableSetting> free;
    for (const ChangeableSetting& setting : Files.Changeable())
    {
        free[setting.Name] = setting;
    }
    std::size_t tries = 0;
    for (const auto& [from, to] : Files.Dependencies())
    {
        if (!Files.HasSettingsObject() || !free.contains(from) || !free.contains(to) || ++tries > MostTries)
        {
            continue;
        }
        const std::unique_ptr<BiosRedfishConfigProc> proc = Fresh();
        if (!IsGood(proc->PatchSettingNewValue(from, free[from].Other, true)))
        {
            continue;
        }
        EXPECT_THAT(Patches(Machine.NewRequests()), IsEmpty());
        if (!IsGood(proc->PatchSettingNewValue(to, free[to].Other, true)))
        {
            continue;
        }
        EXPECT_EQ(Patches(Machine.NewRequests()).size(), 1U) << from << ", " << to;
        EXPECT_THAT(Pending(), ElementsAre(testing::Key("BIOS." + from)));
        EXPECT_TRUE(IsGood(proc->FlushChanges()));
        EXPECT_EQ(Patches(Machine.NewRequests()).size(), 1U);
        EXPECT_THAT(Pending(), testing::UnorderedElementsAre(testing::Key("BIOS." + from), testing::Key("BIOS." + to)));
        return;
    }
    GTEST_SKIP() << "the machine has no two related enumerations that can both be changed";
}

TEST_P(ChangedMachine, ARefusedBatchShowsEveryReasonAndChangesNothing)
{
    ASSERT_EQ(Machine.Error(), "");
    const std::vector<ChangeableSetting> settings = Files.Changeable();
    if (!Files.HasSettingsObject() || settings.size() < 2)
    {
        GTEST_SKIP() << "the machine takes no batch of two enumerations";
    }
    const std::unique_ptr<BiosRedfishConfigProc> proc = Fresh();
    // Of three where there are so many, the first could well be changed.
    const std::size_t good = settings.size() > 2 ? 1 : 0;
    if (good == 1)
    {
        EXPECT_EQ(proc->PatchSettingNewValueWithOutCheck(settings[0].Name, settings[0].Other, true), 0);
    }
    EXPECT_EQ(proc->PatchSettingNewValueWithOutCheck(settings[good].Name, "No such value", true), 0);
    EXPECT_EQ(proc->PatchSettingNewValueWithOutCheck(settings[good + 1].Name, "Nor this", true), 0);
    RedfishConfigResult result = proc->FlushChanges();
    EXPECT_FALSE(IsGood(result));
    std::map<std::string, int> reasons;
    for (RedfishConfigResult& error : proc->m_ErrorList)
    {
        EXPECT_FALSE(error.ErrorMsg().empty());
        reasons[error.ErrorSetting()] = error.ErrorCode();
    }
    EXPECT_THAT(reasons, Contains(std::pair("BIOS." + settings[good].Name, CodeInvalidValue)));
    EXPECT_THAT(reasons, Contains(std::pair("BIOS." + settings[good + 1].Name, CodeInvalidValue)));
    EXPECT_THAT(Pending(), IsEmpty());
    EXPECT_EQ(Patches(Machine.NewRequests()).size(), 1U);
}

std::string NameOfMachine(const testing::TestParamInfo<std::filesystem::path>& machine)
{
    std::string name = machine.param.filename();
    std::erase_if(name, [](char character) { return std::isalnum(static_cast<unsigned char>(character)) == 0; });
    return name;
}

INSTANTIATE_TEST_SUITE_P(BuiltIn, ChangedMachine, testing::Values(std::filesystem::path(MACHINE_FOLDER)),
                         NameOfMachine);
INSTANTIATE_TEST_SUITE_P(Real, ChangedMachine, testing::ValuesIn(testdata::Machines()), NameOfMachine);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ChangedMachine);

} // namespace
