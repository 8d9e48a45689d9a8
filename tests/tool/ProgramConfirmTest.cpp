// What wipes a whole machine is asked about on a terminal.

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "OnTerminal.h"
#include "SharedData.h"
#include "TemporaryFolder.h"

using namespace tooltest;

namespace
{

/// The built-in machine with one setting that is not at its default.
class ProgramConfirm : public ::testing::Test
{
  public:
    void SetUp() override
    {
        for (const std::vector<std::string>& arguments :
             {std::vector<std::string>{"set", "BootFailLimit=3"}, {"reboot", "--wait", "20"}})
        {
            const Finished finished = RunToEnd(Tool(arguments));
            ASSERT_EQ(finished.Status, 0) << finished.Errors;
        }
        m_Before = State();
    }

    Launch Tool(const std::vector<std::string>& arguments) const
    {
        Launch launch;
        launch.Arguments = {"--simulate", "--state", (m_Folder.Path() / "state.json").string()};
        launch.Arguments.insert(launch.Arguments.end(), arguments.begin(), arguments.end());
        return launch;
    }

    std::string State() const { return testdata::ReadFile(m_Folder.Path() / "state.json"); }
    bool IsAsItWas() const { return State() == m_Before; }
    std::string Limit() const { return RunToEnd(Tool({"show", "BootFailLimit"})).Output; }

  private:
    testdata::TemporaryFolder m_Folder;
    std::string m_Before;
};

} // namespace

TEST_F(ProgramConfirm, YesGoesOn)
{
    OnTerminal tool(Tool({"loaddefault", "UEFI", "--reboot", "--wait", "20"}));
    ASSERT_TRUE(tool.Shows("Type yes to go on: ")) << tool.Shown();
    EXPECT_TRUE(tool.Echoes());
    EXPECT_TRUE(IsAsItWas()) << "sent before the answer";
    tool.Type("yes\n");
    EXPECT_EQ(tool.ReadToEnd(), 0) << tool.Shown();
    EXPECT_EQ(Limit(), "UEFI.BootFailLimit=5\n");
}

TEST_F(ProgramConfirm, AnythingElseSendsNothing)
{
    for (const std::string typed : {"no\n", "\n", "y\n", "YES\n", "yes please\n", " yes\n", "\x04"})
    {
        OnTerminal tool(Tool({"loaddefault", "UEFI"}));
        ASSERT_TRUE(tool.Shows("Type yes to go on: ")) << tool.Shown();
        tool.Type(typed);
        EXPECT_EQ(tool.ReadToEnd(), 64) << tool.Shown();
        EXPECT_NE(tool.Shown().find("tavrine: 64 Not confirmed, nothing was sent"), std::string::npos) << tool.Shown();
        EXPECT_TRUE(IsAsItWas()) << typed;
    }
}

/// What is left there is a command to the shell that reads next.
TEST_F(ProgramConfirm, NothingOfALongReplyIsLeftInTheTerminal)
{
    for (const std::string typed : {"yes or rather echo LEFTOVER\n", "0123456789abcdefecho LEFTOVER\n"})
    {
        OnTerminal tool(Tool({"loaddefault", "UEFI"}));
        ASSERT_TRUE(tool.Shows("Type yes to go on: ")) << tool.Shown();
        tool.Type(typed);
        EXPECT_EQ(tool.ReadToEnd(), 64) << tool.Shown();
        EXPECT_EQ(tool.Unread(), 0);
        EXPECT_TRUE(IsAsItWas()) << typed;
    }
}

TEST_F(ProgramConfirm, AReplyWithoutAnEndIsNotWaitedFor)
{
    OnTerminal tool(Tool({"loaddefault", "UEFI"}));
    ASSERT_TRUE(tool.Shows("Type yes to go on: ")) << tool.Shown();
    tool.WaitForNoLines();
    tool.Type(std::string(5000, 'y'));
    EXPECT_EQ(tool.ReadToEnd(), 64) << tool.Shown();
    EXPECT_TRUE(IsAsItWas());
}

TEST_F(ProgramConfirm, ASignalAtTheQuestionSendsNothing)
{
    OnTerminal tool(Tool({"loaddefault", "UEFI", "--post"}));
    ASSERT_TRUE(tool.Shows("Type yes to go on: ")) << tool.Shown();
    tool.Type("\x03");
    EXPECT_EQ(tool.ReadToEnd(), 128 + SIGINT) << tool.Shown();
    EXPECT_TRUE(IsAsItWas());
}

TEST_F(ProgramConfirm, TheQuestionTellsWhatIsLost)
{
    const auto asks = [this](const std::vector<std::string>& arguments, const std::string& question)
    {
        OnTerminal tool(Tool(arguments));
        EXPECT_TRUE(tool.Shows("the simulated BMC: " + question + " Type yes to go on: ")) << tool.Shown();
    };
    asks({"loaddefault", "UEFI"}, "This resets all settings of the system to their defaults.");
    asks({"loaddefault", "UEFI", "--post"},
         "This sets all settings of the system to their defaults at its next start.");
}

TEST_F(ProgramConfirm, YesOnTheCommandLineIsNotAskedFor)
{
    OnTerminal tool(Tool({"loaddefault", "UEFI", "--yes", "--reboot", "--wait", "20"}));
    EXPECT_EQ(tool.ReadToEnd(), 0) << tool.Shown();
    EXPECT_EQ(tool.Shown().find("Type yes"), std::string::npos) << tool.Shown();
    EXPECT_EQ(Limit(), "UEFI.BootFailLimit=5\n");
}

TEST_F(ProgramConfirm, SingleSettingsAreNotAskedAbout)
{
    OnTerminal tool(Tool({"loaddefault", "BootFailLimit"}));
    EXPECT_EQ(tool.ReadToEnd(), 0) << tool.Shown();
    EXPECT_EQ(tool.Shown().find("Type yes"), std::string::npos) << tool.Shown();
    EXPECT_FALSE(IsAsItWas());
}
