#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Log.h"
#include "Logging.h"
#include "SharedData.h"
#include "TemporaryFolder.h"

namespace
{

using Tavrine::Log;
using Tavrine::LogContext;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::StartsWith;
namespace Logging = Tavrine::Logging;

std::vector<std::string> Lines(const std::string& path)
{
    std::vector<std::string> lines;
    std::istringstream file(testdata::ReadFile(path));
    for (std::string line; std::getline(file, line);)
    {
        lines.push_back(line);
    }
    return lines;
}

mode_t ModeOf(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

// Removes the sink at the end of the test, failed or not.
struct FileSink
{
    FileSink(const std::string& path, unsigned int maxLevel) : Id(Logging::AddFileSink(path, maxLevel, Error)) {}
    FileSink(const FileSink&) = delete;
    FileSink& operator=(const FileSink&) = delete;
    ~FileSink() { Logging::RemoveSink(Id); }

    std::string Error;
    Logging::SinkId Id;
};

class FileSinkTest : public testing::Test
{
  protected:
    std::string Path() const { return (m_Folder.Path() / "tavrine.log").string(); }

    testdata::TemporaryFolder m_Folder;
};

TEST_F(FileSinkTest, LineTellsTimeLevelContextSourceAndText)
{
    const FileSink sink(Path(), 4);
    ASSERT_NE(sink.Id, 0U) << sink.Error;
    {
        const LogContext context("bmc-a");
        Log(3, "RedfishConfig/x/Y.cpp", 42).Stream() << "Enter show";
    }
    Log(1, "a.cpp", 7).Stream() << "plain";
    const auto lines = Lines(Path());
    ASSERT_EQ(lines.size(), 2U);
    const std::string time = "^[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}[.][0-9]{6}Z";
    EXPECT_THAT(lines[0], ContainsRegex(time + " 3 \\[bmc-a\\] RedfishConfig/x/Y[.]cpp:42 Enter show$"));
    EXPECT_THAT(lines[1], ContainsRegex(time + " 1 \\[\\] a[.]cpp:7 plain$"));
}

TEST_F(FileSinkTest, LineIsInTheFileAtOnce)
{
    const FileSink sink(Path(), 4);
    Log(1, "a.cpp", 1).Stream() << "one";
    EXPECT_EQ(Lines(Path()).size(), 1U);
    Log(1, "a.cpp", 1).Stream() << "two";
    EXPECT_EQ(Lines(Path()).size(), 2U);
}

TEST_F(FileSinkTest, LevelsAboveItsOwnAreLeftOut)
{
    const FileSink sink(Path(), 3);
    Log(4, "a.cpp", 1).Stream() << "detail";
    Log(3, "a.cpp", 1).Stream() << "call";
    const auto lines = Lines(Path());
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines[0], HasSubstr(" call"));
}

struct Escape
{
    std::string Text;
    std::string Shown;
};

TEST_F(FileSinkTest, ControlCharactersAreEscapedSoThatARecordIsOneLine)
{
    const Escape escapes[] = {
        {"a\nb", "a\\nb"},
        {"a\tb", "a\\tb"},
        {"a\rb", "a\\x0Db"},
        {std::string("a\0b", 3), "a\\x00b"},
        {"\x1B[2J", "\\x1B[2J"},
        {"a\x7F", "a\\x7F"},
        {"\xC2\x9B", "\\xC2\\x9B"},
        {"\xC2", "\xC2"},
        {"\xC2\xA0\xC3\xA9", "\xC2\xA0\xC3\xA9"},
        {"C:\\new", "C:\\new"},
        {"%v %s {}", "%v %s {}"},
        {"", ""},
    };
    for (const Escape& escape : escapes)
    {
        std::filesystem::remove(Path());
        const FileSink sink(Path(), 4);
        Log(1, "a.cpp", 1).Stream() << escape.Text;
        const auto lines = Lines(Path());
        ASSERT_EQ(lines.size(), 1U) << escape.Shown;
        EXPECT_THAT(lines[0], testing::EndsWith("a.cpp:1 " + escape.Shown));
    }
}

TEST_F(FileSinkTest, ContextIsEscapedToo)
{
    const FileSink sink(Path(), 4);
    const LogContext context("bmc\n9999 forged");
    Log(1, "a.cpp", 1).Stream() << "x";
    const auto lines = Lines(Path());
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines[0], HasSubstr("[bmc\\n9999 forged]"));
}

TEST_F(FileSinkTest, NewFileIsForItsOwnerAloneWhateverTheUmask)
{
    for (const mode_t mask : {mode_t{0}, mode_t{022}, mode_t{0777}})
    {
        std::filesystem::remove(Path());
        const mode_t former = ::umask(mask);
        const FileSink sink(Path(), 4);
        ::umask(former);
        ASSERT_NE(sink.Id, 0U) << sink.Error;
        EXPECT_EQ(ModeOf(Path()), mode_t{0600}) << mask;
    }
}

TEST_F(FileSinkTest, ExistingFileIsAppendedToAndKeepsItsMode)
{
    m_Folder.Write("tavrine.log", "former line\n");
    ASSERT_EQ(::chmod(Path().c_str(), 0640), 0);
    const FileSink sink(Path(), 4);
    Log(1, "a.cpp", 1).Stream() << "new line";
    const auto lines = Lines(Path());
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], "former line");
    EXPECT_EQ(ModeOf(Path()), mode_t{0640});
}

TEST_F(FileSinkTest, FileThatCannotBeOpenedIsToldWithPathAndCause)
{
    const std::string missing = (m_Folder.Path() / "missing" / "x.log").string();
    const Escape cases[] = {
        {missing, missing + ": No such file or directory"},
        {m_Folder.Path().string(), m_Folder.Path().string() + ": Is a directory"},
        {"", ": No such file or directory"},
    };
    for (const Escape& item : cases)
    {
        const FileSink sink(item.Text, 4);
        EXPECT_EQ(sink.Id, 0U);
        EXPECT_EQ(sink.Error, item.Shown);
    }
    EXPECT_FALSE(std::filesystem::exists(m_Folder.Path() / "missing"));
}

TEST_F(FileSinkTest, FailingWriteIsNoticedAndEveryoneElseGoesOn)
{
    if (!std::filesystem::exists("/dev/full"))
    {
        GTEST_SKIP() << "no /dev/full";
    }
    const FileSink full("/dev/full", 4);
    ASSERT_NE(full.Id, 0U) << full.Error;
    const FileSink sound(Path(), 4);
    Log(1, "a.cpp", 1).Stream() << "one";
    Log(1, "a.cpp", 1).Stream() << "two";
    const std::string trouble = Logging::Trouble(full.Id);
    EXPECT_THAT(trouble, StartsWith("lost 2 log record(s): "));
    EXPECT_THAT(trouble, HasSubstr("/dev/full"));
    EXPECT_THAT(trouble, HasSubstr("No space left on device"));
    EXPECT_EQ(Logging::Trouble(sound.Id), "");
    EXPECT_EQ(Lines(Path()).size(), 2U);
}

TEST_F(FileSinkTest, TwoSinksOfOneFileDoNotOverwriteEachOther)
{
    const FileSink first(Path(), 4);
    const FileSink second(Path(), 4);
    Log(1, "a.cpp", 1).Stream() << "x";
    Log(1, "a.cpp", 1).Stream() << "y";
    EXPECT_EQ(Lines(Path()).size(), 4U);
}

} // namespace
