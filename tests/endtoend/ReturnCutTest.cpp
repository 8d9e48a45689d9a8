// A restore that is cut off leaves a machine that a second one brings to the same end.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "../tool/FaultyProxy.h"
#include "LockingMachine.h"
#include "TemporaryFolder.h"
#include "ToolRun.h"

using endtoend::LockingMachine;
using endtoend::Told;
using endtoend::ToolRun;
using Tavrine::SettingStringMap;
using Tavrine::Tool::Answer;
using tooltest::Fault;
using tooltest::FaultyProxy;

namespace
{

void Succeed(const ToolRun& tool, const std::vector<std::string>& arguments)
{
    const Answer answer = tool.Run(arguments);
    EXPECT_EQ(answer.Code, 0) << arguments.front() << ": " << Told(answer);
}

struct Kind
{
    const char* Name;
    Fault What;
    /// Nothing comes through any more behind it.
    bool Final;
};

void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.Name; }

class CutRestore : public testing::TestWithParam<Kind>
{
  public:
    void SetUp() override
    {
        const ToolRun tool(m_Machine.Path());
        ASSERT_EQ(tool.Error(), "");
        Succeed(tool, {"save", SavedFile()});
        m_Saved = Values(tool);
        ASSERT_EQ(m_Saved.size(), 4U);
        Succeed(tool, {"set", "Mode=Free"});
        Succeed(tool, {"reboot"});
        Succeed(tool, {"set", "Size=3", "Tag=changed", "Light=false"});
        Succeed(tool, {"reboot"});
        m_Changed = tool.State();
    }

    static SettingStringMap Values(const ToolRun& tool)
    {
        Succeed(tool, {"save", tool.File("now.json")});
        return tool.Read("now.json");
    }

    /// Restores over a way on which one request meets with the fault.
    /// @return the requests that were made.
    std::vector<std::string> CutOff(const ToolRun& tool, std::size_t request, Fault fault, Answer& answer) const
    {
        const std::string url = tool.Simulator().Url();
        const FaultyProxy proxy(url.substr(url.rfind(':') + 1), [=](int number, const std::string&)
                                { return static_cast<std::size_t>(number) == request ? fault : Fault::None; });
        answer = tool.RunAt(proxy.Url(), {"restore", SavedFile()});
        return proxy.Requests();
    }

    std::string SavedFile() const { return (m_Folder.Path() / "saved.json").string(); }

    LockingMachine m_Machine;
    testdata::TemporaryFolder m_Folder;
    SettingStringMap m_Saved;
    /// What the BMC keeps once all settings have other values than the saved ones.
    std::string m_Changed;
};

} // namespace

TEST_P(CutRestore, ASecondRestoreComesToTheSameEnd)
{
    const ToolRun clean(m_Machine.Path(), m_Changed);
    ASSERT_EQ(clean.Error(), "");
    ASSERT_NE(Values(clean), m_Saved);
    Answer answer;
    const std::vector<std::string> requests = CutOff(clean, 0, Fault::None, answer);
    ASSERT_EQ(answer.Code, 0) << Told(answer);
    Succeed(clean, {"reboot"});
    ASSERT_EQ(Values(clean), m_Saved);

    const auto last = std::find_if(requests.rbegin(), requests.rend(),
                                   [](const std::string& request) { return request.starts_with("PATCH "); });
    const auto lastChange = static_cast<std::size_t>(requests.rend() - last);
    ASSERT_GT(lastChange, 0U);
    EXPECT_EQ(std::count(requests.begin(), requests.end(), *last), 2) << "both changes are one behind the other";
    for (std::size_t number = 1; number <= requests.size(); ++number)
    {
        const std::string where = requests[number - 1] + ", request " + std::to_string(number);
        const ToolRun tool(m_Machine.Path(), m_Changed);
        ASSERT_EQ(tool.Error(), "");
        EXPECT_GE(CutOff(tool, number, GetParam().What, answer).size(), number) << where;
        if (GetParam().Final && number <= lastChange)
        {
            EXPECT_NE(answer.Code, 0) << where;
        }
        // One that tells of success needs no second one.
        if (answer.Code != 0)
        {
            Succeed(tool, {"restore", SavedFile()});
        }
        Succeed(tool, {"reboot"});
        EXPECT_EQ(Values(tool), m_Saved) << where << ": " << Told(answer);
    }
}

INSTANTIATE_TEST_SUITE_P(Return, CutRestore,
                         testing::Values(Kind{"Busy", Fault::Busy, false}, Kind{"CutBefore", Fault::CutBefore, false},
                                         Kind{"CutAfter", Fault::CutAfter, false},
                                         Kind{"CutWithin", Fault::CutWithin, false},
                                         Kind{"DeadBefore", Fault::DeadBefore, true},
                                         Kind{"DeadAfter", Fault::DeadAfter, true}),
                         [](const auto& place) { return std::string(place.param.Name); });
