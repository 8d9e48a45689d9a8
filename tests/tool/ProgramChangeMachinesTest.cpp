// The tool changes settings of the built-in machine and of real ones.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include <boost/json/parse.hpp>

#include "ChangeableSettings.h"
#include "InsideRun.h"

using namespace tooltest;
using testdata::ChangeableSetting;
using testdata::MachineFiles;

namespace json = boost::json;

namespace
{

using Words = std::vector<std::string>;

constexpr std::size_t MostTries = 10;

class ProgramChangeMachine : public ::testing::TestWithParam<std::filesystem::path>
{
  public:
    const MachineFiles Files{GetParam()};
    const InsideBmc Bmc{GetParam()};
    const InsideRun Tool{Bmc.Url()};

    std::size_t Patches() const
    {
        const std::vector<bmcsim::AccessRecord> log = Bmc.Simulator().AccessLog();
        return static_cast<std::size_t>(
            std::count_if(log.begin(), log.end(), [](const auto& one) { return one.Method == "PATCH"; }));
    }
};

} // namespace

TEST_P(ProgramChangeMachine, AChangeIsPendingAndAfterTheRestartInForce)
{
    if (Files.Changeable().empty())
    {
        GTEST_SKIP() << "the machine has no enumeration with a value that could be changed";
    }
    std::size_t tries = 0;
    for (const ChangeableSetting& setting : Files.Changeable())
    {
        const std::string shown = "BIOS." + setting.Name;
        const Finished set = Tool({"set", setting.Name + "=" + setting.Other});
        SCOPED_TRACE(setting.Name + "\n" + set.Output + set.Errors);
        if (!Files.HasSettingsObject())
        {
            EXPECT_EQ(set.Status, 26);
            EXPECT_NE(set.Errors.find(shown + ": not sent"), std::string::npos);
            EXPECT_EQ(Patches(), 0U);
            return;
        }
        if (set.Status == 18 && Patches() == 0 && ++tries < MostTries)
        {
            continue; // another setting locks it
        }
        EXPECT_EQ(set.Status, 0);
        EXPECT_EQ(set.Output, shown + ": changed, takes effect after a reboot\n");
        EXPECT_EQ(Patches(), 1U);
        EXPECT_EQ(Tool({"pending"}).Output, shown + "=" + setting.Now + " -> " + setting.Other + "\n");
        EXPECT_EQ(Tool({"show", setting.Name}).Output, shown + "=" + setting.Now + "\n");
        const Finished again = Tool({"set", setting.Name + "=" + setting.Other});
        EXPECT_EQ(again.Output, shown + ": already " + setting.Other + ", takes effect after a reboot\n");
        const Finished reboot = Tool({"reboot", "--wait", "60"});
        EXPECT_EQ(reboot.Status, 0) << reboot.Errors;
        EXPECT_EQ(Tool({"show", setting.Name}).Output, shown + "=" + setting.Other + "\n");
        EXPECT_EQ(Tool({"pending"}).Output, NothingPending);
        EXPECT_EQ(Patches(), 1U);
        return;
    }
    FAIL() << "no setting of the machine could be changed";
}

namespace
{

std::string NameOfMachine(const testing::TestParamInfo<std::filesystem::path>& machine)
{
    std::string name = machine.param.filename();
    std::erase_if(name, [](char character) { return std::isalnum(static_cast<unsigned char>(character)) == 0; });
    return name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(BuiltIn, ProgramChangeMachine, testing::Values(std::filesystem::path(MACHINE_FOLDER)),
                         NameOfMachine);
INSTANTIATE_TEST_SUITE_P(Real, ProgramChangeMachine, testing::ValuesIn(testdata::Machines()), NameOfMachine);

TEST(ProgramChangeMachines, AreThere)
{
    if (testdata::Machines().empty())
    {
        GTEST_SKIP() << "no answers of real machines beside the checkout";
    }
    EXPECT_EQ(testdata::Machines().size(), 5U);
}
