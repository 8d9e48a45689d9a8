// docs/embedding.md shows a program that is built and run here as it says.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../tool/RunningBmc.h"
#include "Examples.h"
#include "SharedData.h"
#include "TemporaryFolder.h"

using tooltest::Finished;
using tooltest::Launch;

namespace
{

const std::string Folder = DOCUMENTED_PROJECT "/docs";

std::string Document() { return testdata::ReadFile(Folder + "/embedding.md"); }

void ExpectSuccess(const std::vector<std::string>& command)
{
    Launch launch;
    launch.Program = command.front();
    launch.Arguments.assign(command.begin() + 1, command.end());
    const Finished finished = tooltest::RunToEnd(launch);
    ASSERT_EQ(finished.Status, 0) << finished.Output << finished.Errors;
}

} // namespace

TEST(Embedding, TheDocumentShowsTheFilesAsTheyAre)
{
    EXPECT_EQ(docs::BlocksOf(Document(), "cpp"),
              std::vector{testdata::ReadFile(Folder + "/examples/change_setting.cpp")});
    EXPECT_EQ(docs::BlocksOf(Document(), "cmake"),
              std::vector{testdata::ReadFile(Folder + "/examples/CMakeLists.txt")});
}

TEST(Embedding, TheProgramIsBuiltAgainstAnInstallationAndDoesWhatIsShown)
{
    const testdata::TemporaryFolder folder;
    const std::string prefix = (folder.Path() / "installed").string();
    const std::string build = (folder.Path() / "build").string();
    ASSERT_NO_FATAL_FAILURE(ExpectSuccess({CMAKE_PROGRAM, "--install", PROJECT_BUILD, "--prefix", prefix}));
    ASSERT_NO_FATAL_FAILURE(
        ExpectSuccess({CMAKE_PROGRAM, "-G", CMAKE_GENERATOR_NAME, "-S", Folder + "/examples", "-B", build,
                       "-DCMAKE_PREFIX_PATH=" + prefix, "-DCMAKE_CXX_FLAGS=" EXAMPLE_FLAGS}));
    ASSERT_NO_FATAL_FAILURE(ExpectSuccess({CMAKE_PROGRAM, "--build", build}));

    const tooltest::RunningBmc bmc;
    const std::vector<docs::Example> examples = docs::ExamplesOf(Document());
    ASSERT_FALSE(examples.empty());
    for (const docs::Example& example : examples)
    {
        Launch launch;
        launch.Program = "/bin/sh";
        launch.Arguments = {"-c", "exec 2>&1; PATH=\"$1:$PATH\"; eval \"$2\"", "sh", build, example.Command};
        launch.Variables = {
            {"PORT", bmc.Port()}, {"SHA256", bmc.Pin().substr(bmc.Pin().find(':') + 1)}, {"BMC_PASSWORD", "password"}};
        EXPECT_EQ(tooltest::RunToEnd(launch).Output, example.Output) << "line " << example.Line;
    }
}
