#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <sys/stat.h>
#include <thread>

#include <boost/json/parse.hpp>

#include "BmcSimulator.h"
#include "ChildProcess.h"
#include "RunningBmc.h"
#include "SharedData.h"
#include "TestMachine.h"

using namespace tooltest;

namespace fs = std::filesystem;
namespace json = boost::json;

namespace
{

using Words = std::vector<std::string>;

struct Request
{
    std::string Method;
    std::string Path;
    int Status = 0;
    std::size_t Bytes = 0;
};

/// A simulated BMC, and the tool with a cache of its own.
class CachedTool
{
  public:
    explicit CachedTool(const Words& more = {}) : m_Bmc(Arguments(more)) {}

    Launch Prepare(const Words& arguments) const
    {
        Launch launch = m_Bmc.Tool(arguments);
        launch.Variables["XDG_CACHE_HOME"] = (m_Folder.Path() / "home").string();
        return launch;
    }
    Finished Run(const Words& arguments) const { return RunToEnd(Prepare(arguments)); }

    fs::path Cache() const { return m_Folder.Path() / "home" / "tavrine"; }
    const testdata::TemporaryFolder& Folder() const { return m_Folder; }

    /// The requests that came since the last call, once so many runs have ended.
    std::vector<Request> Take(std::size_t runs = 1)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        for (; std::chrono::steady_clock::now() < deadline; std::this_thread::yield())
        {
            const std::vector<Request> requests = Logged();
            std::size_t ended = 0;
            for (std::size_t i = m_Taken; i < requests.size(); ++i)
            {
                ended += requests[i].Method == "DELETE" ? 1U : 0U;
            }
            if (ended >= runs)
            {
                const std::vector<Request> fresh(requests.begin() + static_cast<std::ptrdiff_t>(m_Taken),
                                                 requests.end());
                m_Taken = requests.size();
                return fresh;
            }
        }
        ADD_FAILURE() << "the runs did not end";
        return {};
    }

  private:
    Words Arguments(const Words& more) const
    {
        Words arguments = {"--access-log", Log()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
    std::string Log() const { return (m_Folder.Path() / "access").string(); }

    std::vector<Request> Logged() const
    {
        std::vector<Request> requests;
        std::istringstream lines(testdata::ReadFile(Log()));
        for (std::string line; std::getline(lines, line) && !lines.eof();)
        {
            const json::value record = json::parse(line);
            requests.push_back({record.at("method").as_string().c_str(), record.at("path").as_string().c_str(),
                                static_cast<int>(record.at("status").as_int64()),
                                static_cast<std::size_t>(record.at("bytes").as_int64())});
        }
        return requests;
    }

    testdata::TemporaryFolder m_Folder;
    RunningBmc m_Bmc;
    std::size_t m_Taken = 0;
};

bool IsRegistry(const Request& request) { return request.Path.ends_with(".json"); }

/// Status of each read of the registry's text.
std::vector<int> RegistryReads(const std::vector<Request>& requests)
{
    std::vector<int> statuses;
    for (const Request& request : requests)
    {
        if (IsRegistry(request))
        {
            statuses.push_back(request.Status);
        }
    }
    return statuses;
}

std::vector<fs::path> FilesIn(const fs::path& folder)
{
    std::vector<fs::path> files;
    std::error_code missing;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, missing))
    {
        files.push_back(entry.path());
    }
    return files;
}

} // namespace

TEST(ProgramCache, TheSecondRunGetsNoRegistryBody)
{
    CachedTool tool({"--attributes", "200"});
    const Words describe = {"describe", "Setting000007"};
    const Finished first = tool.Run(describe);
    EXPECT_EQ(first.Status, 0) << first.Errors;
    const std::vector<Request> fetching = tool.Take();
    EXPECT_EQ(RegistryReads(fetching), std::vector<int>{200});
    const Finished second = tool.Run(describe);
    EXPECT_EQ(second.Status, 0) << second.Errors;
    EXPECT_EQ(second.Output, first.Output);
    EXPECT_EQ(second.Errors, "");
    const std::vector<Request> checking = tool.Take();
    EXPECT_EQ(RegistryReads(checking), std::vector<int>{304});
    for (const Request& request : checking)
    {
        EXPECT_TRUE(!IsRegistry(request) || request.Bytes == 0) << request.Path;
    }
    const std::size_t login = 2; // and logout
    EXPECT_LE(checking.size(), login + 8U);
    EXPECT_EQ(checking.size() + 2, fetching.size()) << "the lists of registries are not read again";
}

TEST(ProgramCache, NoCommandGetsABodyThatIsKept)
{
    CachedTool tool({"--attributes", "100"});
    ASSERT_EQ(tool.Run({"describe", "Setting000001"}).Status, 0);
    tool.Take();
    const Words commands[] = {{"schema"},    {"values", "Setting000001"}, {"defaults"},
                              {"find", "7"}, {"compare", "defaults"},     {"set", "Setting000001=Auto"},
                              {"pending"}};
    for (const Words& command : commands)
    {
        const Finished finished = tool.Run(command);
        EXPECT_EQ(finished.Status, 0) << command[0] << ": " << finished.Errors;
        for (const int status : RegistryReads(tool.Take()))
        {
            EXPECT_EQ(status, 304) << command[0];
        }
    }
}

TEST(ProgramCache, IsForItsUserAlone)
{
    CachedTool tool;
    ASSERT_EQ(tool.Run({"schema"}).Status, 0);
    struct stat state = {};
    ASSERT_EQ(stat(tool.Cache().c_str(), &state), 0);
    EXPECT_EQ(state.st_mode & 07777U, 0700U);
    const std::vector<fs::path> files = FilesIn(tool.Cache());
    EXPECT_EQ(files.size(), 2U);
    for (const fs::path& file : files)
    {
        ASSERT_EQ(stat(file.c_str(), &state), 0);
        EXPECT_EQ(state.st_mode & 07777U, 0600U) << file;
    }
}

/// The same name in another folder may be another file.
TEST(ProgramCache, IsForTheAuthoritiesOfOneFile)
{
    std::string error;
    const auto bmc = bmcsim::BmcSimulator::Start({}, error);
    ASSERT_NE(bmc, nullptr) << error;
    const testdata::TemporaryFolder folder;
    for (const std::string place : {"one", "other", "one"})
    {
        folder.Write(place + "/ca.pem", bmc->CertificatePem());
        Launch launch;
        launch.Arguments = {"-c",
                            R"(cd "$0" && exec "$@")",
                            (folder.Path() / place).string(),
                            launch.Program,
                            "schema",
                            "--bmc",
                            bmc->Url(),
                            "--user",
                            "admin",
                            "--cacert",
                            "ca.pem"};
        launch.Program = "/bin/sh";
        launch.Variables = {{"TAVRINE_PASSWORD", "password"}, {"XDG_CACHE_HOME", (folder.Path() / "home").string()}};
        const Finished shown = RunToEnd(launch);
        ASSERT_EQ(shown.Status, 0) << shown.Errors;
    }
    std::vector<int> reads;
    for (const bmcsim::AccessRecord& record : bmc->AccessLog())
    {
        if (record.Path.ends_with(".json"))
        {
            reads.push_back(record.Status);
        }
    }
    EXPECT_EQ(reads, (std::vector<int>{200, 200, 304}));
}

TEST(ProgramCache, OptionsTurnItOffAndElsewhere)
{
    CachedTool tool;
    for (int run = 0; run < 2; ++run)
    {
        ASSERT_EQ(tool.Run({"schema", "--no-cache"}).Status, 0);
        EXPECT_EQ(RegistryReads(tool.Take()), std::vector<int>{200});
    }
    EXPECT_FALSE(fs::exists(tool.Cache()));
    const std::string other = (tool.Folder().Path() / "other").string();
    ASSERT_EQ(tool.Run({"schema", "--cache-dir", other}).Status, 0);
    ASSERT_EQ(tool.Run({"schema", "--cache-dir", other}).Status, 0);
    EXPECT_EQ(RegistryReads(tool.Take(2)), (std::vector<int>{200, 304}));
    EXPECT_FALSE(fs::exists(tool.Cache()));
    EXPECT_EQ(FilesIn(other).size(), 2U);
}

TEST(ProgramCache, AFolderNamedFromTheWorkingFolderKeepsToo)
{
    CachedTool tool;
    for (int run = 0; run < 2; ++run)
    {
        Launch launch = tool.Prepare({"schema", "--cache-dir", "kept"});
        const Words inFolder = {"-c", R"(cd "$0" && exec "$@")", tool.Folder().Path().string(), launch.Program};
        launch.Arguments.insert(launch.Arguments.begin(), inFolder.begin(), inFolder.end());
        launch.Program = "/bin/sh";
        const Finished shown = RunToEnd(launch);
        ASSERT_EQ(shown.Status, 0) << shown.Errors;
    }
    EXPECT_EQ(RegistryReads(tool.Take(2)), (std::vector<int>{200, 304}));
    EXPECT_EQ(FilesIn(tool.Folder().Path() / "kept").size(), 2U);
}

TEST(ProgramCache, TheSimulatedBmcKeepsNothing)
{
    const testdata::TemporaryFolder folder;
    Launch launch;
    launch.Arguments = {"--simulate", "schema"};
    launch.Variables = {{"XDG_CACHE_HOME", folder.Path().string()}};
    EXPECT_EQ(RunToEnd(launch).Status, 0);
    EXPECT_TRUE(FilesIn(folder.Path()).empty());
}

TEST(ProgramCache, DamagedFilesAreFetchedAgain)
{
    CachedTool tool;
    const Finished first = tool.Run({"schema"});
    ASSERT_EQ(first.Status, 0);
    tool.Take();
    const std::vector<fs::path> files = FilesIn(tool.Cache());
    ASSERT_EQ(files.size(), 2U);
    for (const fs::path& file : files)
    {
        std::fstream(file, std::ios::in | std::ios::out | std::ios::binary).put('#');
        const Finished again = tool.Run({"schema"});
        EXPECT_EQ(again.Status, 0) << again.Errors;
        EXPECT_EQ(again.Output, first.Output);
        EXPECT_EQ(again.Errors, "");
        EXPECT_EQ(RegistryReads(tool.Take()), std::vector<int>{200}) << file;
        EXPECT_EQ(tool.Run({"schema"}).Output, first.Output);
        EXPECT_EQ(RegistryReads(tool.Take()), std::vector<int>{304}) << file;
    }
}

TEST(ProgramCache, AFolderThatCannotBeWrittenIsALineInTheLog)
{
    CachedTool tool;
    const std::string file = tool.Folder().Write("plain", "mine");
    const std::string log = (tool.Folder().Path() / "log").string();
    const Finished finished = tool.Run({"schema", "--cache-dir", file, "--log-file", log});
    EXPECT_EQ(finished.Status, 0);
    EXPECT_EQ(finished.Errors, "");
    EXPECT_NE(testdata::ReadFile(log).find("Registries are not kept in " + file + ": "), std::string::npos);
    EXPECT_EQ(testdata::ReadFile(file), "mine");
}

TEST(ProgramCache, ManyProcessesAtOnceAgree)
{
    CachedTool tool;
    const Finished alone = tool.Run({"schema", "--no-cache"});
    ASSERT_EQ(alone.Status, 0);
    tool.Take();
    for (int round = 0; round < 2; ++round)
    {
        std::vector<std::unique_ptr<ChildProcess>> children;
        for (int child = 0; child < 4; ++child)
        {
            children.push_back(std::make_unique<ChildProcess>(tool.Prepare({"schema"})));
        }
        for (const auto& child : children)
        {
            const Finished finished = child->Wait();
            EXPECT_EQ(finished.Status, 0) << finished.Errors;
            EXPECT_EQ(finished.Output, alone.Output);
        }
        const std::vector<int> reads = RegistryReads(tool.Take(children.size()));
        EXPECT_EQ(reads.size(), children.size());
        if (round == 1)
        {
            EXPECT_EQ(reads, std::vector<int>(children.size(), 304));
        }
    }
    EXPECT_EQ(FilesIn(tool.Cache()).size(), 2U);
}
