// docs/embedding.md shows a program that is built and run here as it says.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
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
constexpr bool SanitizedTool = !std::string_view(EXAMPLE_FLAGS).empty();

std::string Document() { return testdata::ReadFile(Folder + "/embedding.md"); }

void ExpectSuccess(const std::vector<std::string>& command)
{
    Launch launch;
    launch.Program = command.front();
    launch.Arguments.assign(command.begin() + 1, command.end());
    const Finished finished = tooltest::RunToEnd(launch);
    ASSERT_EQ(finished.Status, 0) << finished.Output << finished.Errors;
}

void Install(const std::string& prefix)
{
    ExpectSuccess({CMAKE_PROGRAM, "--install", PROJECT_BUILD, "--prefix", prefix});
}

} // namespace

TEST(Embedding, TheDocumentShowsTheFilesAsTheyAre)
{
    EXPECT_EQ(docs::BlocksOf(Document(), "cpp"),
              std::vector{testdata::ReadFile(Folder + "/examples/change_setting.cpp")});
    EXPECT_EQ(docs::BlocksOf(Document(), "cmake"),
              std::vector{testdata::ReadFile(Folder + "/examples/CMakeLists.txt")});
}

TEST(Embedding, TheInstalledToolFindsItsSimulator)
{
    const testdata::TemporaryFolder folder;
    ASSERT_NO_FATAL_FAILURE(Install(folder.Path().string()));
    Launch launch;
    launch.Program = (folder.Path() / "bin/tavrine").string();
    launch.Arguments = {"--simulate", "groups"};
    const Finished found = tooltest::RunToEnd(launch);
    EXPECT_EQ(found.Status, 0) << found.Errors;
    EXPECT_NE(found.Output, "");

    std::vector<std::filesystem::path> simulator;
    for (const auto& file : std::filesystem::recursive_directory_iterator(folder.Path()))
    {
        if (file.path().filename().string().starts_with("libtavrine-bmcsim.so"))
        {
            simulator.push_back(file.path());
        }
    }
    ASSERT_FALSE(simulator.empty());
    if (SanitizedTool)
    {
        return; // which has the path of the build
    }
    for (const std::filesystem::path& file : simulator)
    {
        std::filesystem::remove(file);
    }
    const Finished missed = tooltest::RunToEnd(launch);
    EXPECT_EQ(missed.Status, 15);
    EXPECT_TRUE(missed.Errors.starts_with("tavrine: 15 Unable to start the simulated BMC: libtavrine-bmcsim.so"))
        << missed.Errors;
    EXPECT_EQ(missed.Output, "");
}

TEST(Embedding, TheProgramIsBuiltAgainstAnInstallationAndDoesWhatIsShown)
{
    const testdata::TemporaryFolder folder;
    const std::string prefix = (folder.Path() / "installed").string();
    const std::string build = (folder.Path() / "build").string();
    ASSERT_NO_FATAL_FAILURE(Install(prefix));
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
