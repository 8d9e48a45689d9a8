#include "RequestLog.h"

#include "Fixture.h"
#include "SharedData.h"

#include <sstream>
#include <sys/resource.h>

namespace
{

using namespace bmctest;
using testing::HasSubstr;

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
    {
        lines.push_back(line);
    }
    return lines;
}

class RequestLogTest : public SimulatorTest
{
  protected:
    void SetUp() override
    {
        auto options = PlainOptions();
        options.AccessLogFile = LogFile();
        StartWith(options);
    }
    std::string LogFile() const { return (m_Folder.Path() / "access.log").string(); }

    testdata::TemporaryFolder m_Folder;
};

TEST_F(RequestLogTest, FileAndMemoryTellTheSame)
{
    const auto other = ConnectWithoutCredentials(*m_Simulator);
    const auto bios = m_Client->Get("/redfish/v1/Systems/1/Bios", {{"Accept-Encoding", "identity"}});
    ASSERT_TRUE(bios);
    ASSERT_TRUE(other->Get("/redfish/v1/Systems?a=b"));
    ASSERT_TRUE(m_Client->Head("/redfish/v1/"));
    ASSERT_TRUE(m_Client->Post("/redfish/v1/Systems/1/Actions/ComputerSystem.Reset", "{}", "application/json"));

    struct Expected
    {
        const char* Method;
        const char* Path;
        int Status;
        unsigned int Connection;
    };
    constexpr Expected expected[] = {
        {"GET", "/redfish/v1/Systems/1/Bios", 200, 1},
        {"GET", "/redfish/v1/Systems?a=b", 401, 2},
        {"HEAD", "/redfish/v1/", 200, 1},
        {"POST", "/redfish/v1/Systems/1/Actions/ComputerSystem.Reset", 400, 1},
    };
    const auto records = m_Simulator->AccessLog();
    const auto lines = Lines(testdata::ReadFile(LogFile()));
    ASSERT_EQ(records.size(), std::size(expected));
    ASSERT_EQ(lines.size(), std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); ++i)
    {
        SCOPED_TRACE(lines[i]);
        EXPECT_EQ(records[i].Method, expected[i].Method);
        EXPECT_EQ(records[i].Path, expected[i].Path);
        EXPECT_EQ(records[i].Status, expected[i].Status);
        EXPECT_EQ(records[i].Connection, expected[i].Connection);
        const json::value line = Parse(lines[i]);
        EXPECT_EQ(At(line, "/method"), json::string(records[i].Method));
        EXPECT_EQ(At(line, "/path"), json::string(records[i].Path));
        EXPECT_EQ(At(line, "/status"), records[i].Status);
        EXPECT_EQ(At(line, "/bytes"), records[i].Bytes);
        EXPECT_EQ(At(line, "/connection"), records[i].Connection);
        EXPECT_TRUE(At(line, "/ms").is_number());
    }
    EXPECT_EQ(records[0].Bytes, bios->body.size());
    EXPECT_EQ(records[2].Bytes, 0U);
    EXPECT_EQ(m_Simulator->Trouble(), "");
}

TEST_F(RequestLogTest, OddPathsDoNotBreakTheLines)
{
    ASSERT_TRUE(m_Client->Get("/a\"b\\c"));
    const auto lines = Lines(testdata::ReadFile(LogFile()));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(At(Parse(lines[0]), "/path"), json::string(m_Simulator->AccessLog()[0].Path));
}

TEST_F(RequestLogTest, NextRunWritesOn)
{
    ASSERT_TRUE(m_Client->Get("/redfish"));
    SetUp();
    ASSERT_TRUE(m_Client->Get("/redfish/v1"));
    EXPECT_EQ(Lines(testdata::ReadFile(LogFile())).size(), 2U);
    EXPECT_EQ(m_Simulator->AccessLog().size(), 1U);
}

TEST_F(RequestLogTest, FileThatCannotBeOpenedIsNamed)
{
    auto options = PlainOptions();
    options.AccessLogFile = (m_Folder.Path() / "missing" / "access.log").string();
    EXPECT_THAT(StartError(options), HasSubstr(options.AccessLogFile));
}

TEST(RequestLog, FullDiskIsTold)
{
    if (!std::filesystem::exists("/dev/full"))
    {
        GTEST_SKIP() << "the system has no /dev/full";
    }
    auto options = PlainOptions();
    options.AccessLogFile = "/dev/full";
    const auto simulator = Start(options);
    ASSERT_TRUE(simulator);
    EXPECT_EQ(simulator->Trouble(), "");
    ASSERT_TRUE(Connect(*simulator)->Get("/redfish"));
    EXPECT_THAT(simulator->Trouble(), HasSubstr("/dev/full"));
    EXPECT_EQ(simulator->AccessLog().size(), 1U);
}

TEST(RequestLog, LineWrittenInPartIsTold)
{
    const testdata::TemporaryFolder folder;
    const std::string file = (folder.Path() / "log").string();
    std::string error;
    const auto log = bmcsim::RequestLog::Open(file, error);
    ASSERT_TRUE(log) << error;
    rlimit former{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &former), 0);
    const rlimit less{10, former.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &less), 0);
    log->Add({});
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &former), 0);
    EXPECT_EQ(testdata::ReadFile(file).size(), 10U);
    EXPECT_THAT(log->Trouble(),
                testing::MatchesRegex("cannot write access log '.*': 10 of a line's [0-9]+ bytes were written"));
}

TEST(RequestLog, MemoryKeepsTheNewestRecords)
{
    std::string error;
    const auto log = bmcsim::RequestLog::Open("", error);
    ASSERT_TRUE(log);
    bmcsim::HttpRecord record;
    for (std::size_t i = 0; i < bmcsim::RequestLog::MaxRecords + 1; ++i)
    {
        record.Bytes = i;
        log->Add(record);
    }
    const auto records = log->Records();
    EXPECT_EQ(records.size(), bmcsim::RequestLog::MaxRecords);
    EXPECT_EQ(records.front().Bytes, 1U);
    EXPECT_EQ(records.back().Bytes, bmcsim::RequestLog::MaxRecords);
}

TEST(RequestLog, BytesThatAreNoTextAreEscaped)
{
    const testdata::TemporaryFolder folder;
    const std::string file = (folder.Path() / "log").string();
    std::string error;
    const auto log = bmcsim::RequestLog::Open(file, error);
    ASSERT_TRUE(log) << error;
    bmcsim::HttpRecord record;
    record.Method = "GET";
    record.Target = "/\xFF\x01";
    log->Add(record);
    EXPECT_EQ(At(Parse(testdata::ReadFile(file)), "/path"), json::string("/%FF\x01"));
}

} // namespace
