// What was saved comes back, whatever was changed in between.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <rapidcheck.h>

#include "RandomChanges.h"
#include "SharedData.h"
#include "ToolRun.h"

using endtoend::RandomChanges;
using endtoend::Told;
using endtoend::ToolRun;
using endtoend::WritableSetting;
using endtoend::WritableSettings;
using Tavrine::SettingStringMap;
using Tavrine::Tool::Answer;

namespace
{

struct Place
{
    const char* Name;
    std::filesystem::path Folder;
    /// How often the property is tried; 0 where nothing of the machine can be changed.
    int Runs;
    /// How many settings change at once.
    std::size_t MostChanges;
    std::vector<std::string> Options;
};

void PrintTo(const Place& place, std::ostream* out) { *out << place.Name; }

std::vector<Place> Places()
{
    const std::filesystem::path shared = testdata::SharedData();
    return {{"BuiltIn", MACHINE_FOLDER, 5, 40, {}},
            {"BuiltInAsUefi", MACHINE_FOLDER, 3, 40, {"--system-type", "uefi"}},
            {"hpe_DL360", shared / "hpe-DL360", 3, 60, {}},
            {"hpe_DL325_Gen10Plus_FC", shared / "hpe-DL325_Gen10Plus_FC", 3, 60, {}},
            {"dmtf_example", shared / "dmtf-example", 10, 4, {}},
            {"openstack_sushy", shared / "openstack-sushy", 0, 0, {}},
            {"ami_zt", shared / "ami-zt", 0, 0, {}}};
}

class EveryPlace : public testing::TestWithParam<Place>
{
};

std::string Differences(const SettingStringMap& left, const SettingStringMap& right)
{
    std::string text;
    for (const auto& [name, value] : left)
    {
        const auto other = right.find(name);
        if (other == right.end() || other->second != value)
        {
            text += name + ": " + value + " became " + (other == right.end() ? "nothing" : other->second) + "\n";
        }
    }
    return text.empty() && left.size() != right.size() ? "there are more settings than before\n" : text;
}

/// The steps of one run. One that fails throws what it told.
class Steps
{
  public:
    Steps(const ToolRun& tool, std::vector<std::string> options) : m_Tool(tool), m_Options(std::move(options)) {}

    Answer Run(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.end(), m_Options.begin(), m_Options.end());
        return m_Tool.Run(arguments);
    }

    void Succeed(const std::vector<std::string>& arguments) const
    {
        const Answer answer = Run(arguments);
        if (answer.Code != 0)
        {
            throw std::runtime_error(arguments.front() + ": " + Told(answer));
        }
    }

    SettingStringMap Save(const std::string& file) const
    {
        Succeed({"save", m_Tool.File(file)});
        return m_Tool.Read(file);
    }

    /// Brings back a file with these settings, and looks.
    void Restore(const std::string& file, const SettingStringMap& settings) const
    {
        Succeed({"restore", m_Tool.File(file), "--same-system"});
        Succeed({"reboot"});
        if (const std::string lost = Differences(settings, Save("after-" + file)); !lost.empty())
        {
            throw std::runtime_error(file + " was not brought back: " + lost);
        }
    }

    /// Sends the changes, without those that the machine does not take as it stands.
    void Change(SettingStringMap changes) const
    {
        while (!changes.empty())
        {
            std::vector<std::string> arguments = {"set"};
            for (const auto& [name, value] : changes)
            {
                arguments.push_back(name + "=" + value);
            }
            const Answer answer = Run(arguments);
            if (answer.Code == 0)
            {
                break;
            }
            const std::size_t before = changes.size();
            for (const Tavrine::Tool::Failure& failure : answer.Errors)
            {
                changes.erase(failure.Setting.substr(failure.Setting.find('.') + 1));
            }
            if (changes.size() == before)
            {
                throw std::runtime_error("set: " + Told(answer));
            }
        }
        Succeed({"reboot"});
    }

  private:
    const ToolRun& m_Tool;
    std::vector<std::string> m_Options;
};

std::size_t CountLines(const std::string& text)
{
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

/// Tries the property, and tells what the first run that failed threw: the machine is in
/// another state after it, and so a repetition, as is made for the report, may well hold.
std::string FaultOf(int runs, const std::function<void()>& property)
{
    rc::detail::TestParams params = rc::detail::configuration().testParams;
    params.maxSuccess = runs;
    params.disableShrinking = true;
    std::string fault;
    const auto once = [&]
    {
        try
        {
            property();
        }
        catch (const std::runtime_error& error)
        {
            fault = fault.empty() ? error.what() : fault;
            RC_FAIL(fault);
        }
    };
    const rc::detail::TestResult result = rc::detail::checkTestable(once, rc::detail::TestMetadata(), params);
    rc::detail::printResultMessage(result, std::cerr);
    std::cerr << "\n";
    return fault.empty() && !result.is<rc::detail::SuccessResult>() ? "no run has ended" : fault;
}

/// There and back again: the machine goes to the first file and then to the second, from
/// where the next run starts.
TEST_P(EveryPlace, ARestoreBringsBackWhatWasSaved)
{
    const Place& place = GetParam();
    if (!std::filesystem::exists(place.Folder))
    {
        GTEST_SKIP() << "no " << place.Folder;
    }
    const ToolRun tool(place.Folder);
    ASSERT_EQ(tool.Error(), "");
    const Steps steps(tool, place.Options);
    const std::vector<WritableSetting> settings = WritableSettings(place.Folder);
    ASSERT_EQ(settings.empty(), place.Runs == 0);
    if (settings.empty())
    {
        GTEST_SKIP() << "nothing of it can be changed";
    }
    std::size_t changed = 0;
    EXPECT_EQ(FaultOf(place.Runs,
                      [&]
                      {
                          const std::string ending = *rc::gen::element<std::string>(".json", ".conf");
                          const SettingStringMap first = steps.Save("first" + ending);
                          steps.Change(*RandomChanges(settings, place.MostChanges));
                          const SettingStringMap second = steps.Save("second" + ending);
                          changed += CountLines(Differences(first, second));
                          steps.Restore("first" + ending, first);
                          steps.Restore("second" + ending, second);
                      }),
              "");
    EXPECT_GT(changed, 0U) << "no run has changed anything";
    RecordProperty("changed", static_cast<int>(changed));
}

INSTANTIATE_TEST_SUITE_P(Return, EveryPlace, testing::ValuesIn(Places()),
                         [](const auto& place) { return std::string(place.param.Name); });

} // namespace
