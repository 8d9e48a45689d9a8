#include "GlobalConfig.h"

#include <atomic>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TemporaryFolder.h"

namespace
{

using Tavrine::GlobalConfig;
using testdata::ScopedEnvironment;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class GlobalConfigTest : public testing::Test
{
  protected:
    GlobalConfigTest() { GlobalConfig::Reload(); }
    ~GlobalConfigTest() override { GlobalConfig::Reload(); }

    std::string Path() const { return (m_Folder.Path() / "config.toml").string(); }
    void Write(const std::string& text) const { m_Folder.Write("config.toml", text); }

    testdata::TemporaryFolder m_Folder;
    ScopedEnvironment m_Named{"TAVRINE_CONFIG", Path().c_str()};
};

TEST_F(GlobalConfigTest, FoundItemAnswersZero)
{
    Write("HIDDEN_CONFIG_KEYWORDS_LIST = \"Secret,Hidden\"\n");
    std::string value = "former";
    EXPECT_EQ(GlobalConfig::GetConfigItem("HIDDEN_CONFIG_KEYWORDS_LIST", value), 0);
    EXPECT_EQ(value, "Secret,Hidden");
    EXPECT_EQ(GlobalConfig::LoadError(), "");
}

TEST_F(GlobalConfigTest, MissingItemKeepsTheValue)
{
    Write("a = 1\n[table]\nb = \"2\"\n");
    std::string value = "former";
    for (const char* key : {"", "A", "b", "table", "table.b", "a "})
    {
        EXPECT_EQ(GlobalConfig::GetConfigItem(key, value), 1) << key;
        EXPECT_EQ(value, "former") << key;
    }
}

TEST_F(GlobalConfigTest, BrokenFileAnswersTwoAndKeepsTheValue)
{
    Write("a = 1\nb =\n");
    std::string value = "former";
    EXPECT_EQ(GlobalConfig::GetConfigItem("a", value), 2);
    EXPECT_EQ(value, "former");
    EXPECT_TRUE(GlobalConfig::GetTable("legacy_names").empty());
    EXPECT_THAT(GlobalConfig::LoadError(), StartsWith(Path() + ": line 2, column "));
}

TEST_F(GlobalConfigTest, TellsWhatNobodyReads)
{
    Write("HIDDEN_CONFIG_KEYWORD_LIST = ['Secret']\n"
          "empty = []\n"
          "misspelt = []\n"
          "good = 1\n"
          "nested = [['a']]\n"
          "[names]\n"
          "one = 'two'\n"
          "\"th\\nree\" = 4\n"
          "[nested_table]\n"
          "[good_table]\n"
          "five.six = 'seven'\n"
          "eight = 'nine'\n"
          "[Names]\n"
          "ten = 11\n");
    const auto unread = [](const std::set<std::string>& items, const std::set<std::string>& tables)
    { return GlobalConfig::Unread(items, tables); };
    EXPECT_THAT(
        unread({"HIDDEN_CONFIG_KEYWORDS_LIST", "empty", "good", "nested", "nested_table"}, {"names", "good_table"}),
        ElementsAre(Path() + ": line 1: HIDDEN_CONFIG_KEYWORD_LIST is not known",
                    Path() + ": line 13: Names is not known", Path() + ": line 3: misspelt is not known",
                    Path() + ": line 5: nested is of another kind than expected and left out",
                    Path() + ": line 9: nested_table is of another kind than expected and left out",
                    Path() + ": line 11: good_table.five is no text and left out",
                    Path() + ": line 8: names.th ree is no text and left out"));
    Write("good = 1\n[names]\n'a.b' = 'c'\n");
    GlobalConfig::Reload();
    EXPECT_THAT(unread({"good", "another"}, {"names"}), IsEmpty());
    EXPECT_THAT(unread({"names"}, {"good"}), SizeIs(2));
}

TEST_F(GlobalConfigTest, TellsTenThingsThatNobodyReadsAndCountsTheOthers)
{
    std::string text = "[names]\n";
    for (int number = 0; number < 13; ++number)
    {
        text += std::to_string(number) + " = 1\n";
    }
    Write(text);
    const std::vector<std::string> lines = GlobalConfig::Unread({}, {"names"});
    ASSERT_THAT(lines, SizeIs(11));
    EXPECT_EQ(lines.front(), Path() + ": line 2: names.0 is no text and left out");
    EXPECT_EQ(lines.back(), Path() + ": 3 more like these");
}

TEST_F(GlobalConfigTest, NothingIsUnreadOfAFileThatCannotBeUsed)
{
    Write("good = 1\nbad = = 2\n");
    EXPECT_THAT(GlobalConfig::Unread({}, {}), IsEmpty());
}

TEST_F(GlobalConfigTest, NamedFileThatIsMissingIsAFailure)
{
    std::string value = "former";
    EXPECT_EQ(GlobalConfig::GetConfigItem("a", value), 2);
    EXPECT_EQ(value, "former");
    EXPECT_EQ(GlobalConfig::LoadError(), Path() + ": No such file or directory");
}

TEST_F(GlobalConfigTest, UserFolderIsReadWithoutANamedFile)
{
    m_Folder.Write("tavrine/config.toml", "a = 'xdg'\n");
    m_Folder.Write(".config/tavrine/config.toml", "a = 'home'\n");
    const ScopedEnvironment unnamed("TAVRINE_CONFIG", nullptr);
    const ScopedEnvironment home("HOME", m_Folder.Path().c_str());
    std::string value;
    {
        const ScopedEnvironment folder("XDG_CONFIG_HOME", m_Folder.Path().c_str());
        EXPECT_EQ(GlobalConfig::GetConfigItem("a", value), 0);
        EXPECT_EQ(value, "xdg");
    }
    const ScopedEnvironment folder("XDG_CONFIG_HOME", nullptr);
    GlobalConfig::Reload();
    EXPECT_EQ(GlobalConfig::GetConfigItem("a", value), 0);
    EXPECT_EQ(value, "home");
}

TEST_F(GlobalConfigTest, TableIsReadAndUnknownOnesAreEmpty)
{
    Write("legacy_names = { Old = \"New\" }\nscalar = 1\n");
    const std::map<std::string, std::string> expected = {{"Old", "New"}};
    EXPECT_EQ(GlobalConfig::GetTable("legacy_names"), expected);
    EXPECT_TRUE(GlobalConfig::GetTable("scalar").empty());
    EXPECT_TRUE(GlobalConfig::GetTable("unknown").empty());
}

TEST_F(GlobalConfigTest, FileIsKeptUntilReload)
{
    Write("a = 'first'\n");
    std::string value;
    EXPECT_EQ(GlobalConfig::GetConfigItem("a", value), 0);
    Write("a = 'second'\n");
    EXPECT_EQ(GlobalConfig::GetConfigItem("a", value), 0);
    EXPECT_EQ(value, "first");
    GlobalConfig::Reload();
    EXPECT_EQ(GlobalConfig::GetConfigItem("a", value), 0);
    EXPECT_EQ(value, "second");
}

TEST_F(GlobalConfigTest, ManyThreadsReadWhileOthersReload)
{
    Write("a = 'value'\n[legacy_names]\nOld = 'New'\n");
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
    {
        threads.emplace_back(
            [i, &wrong]
            {
                for (int j = 0; j < 100; ++j)
                {
                    std::string value;
                    wrong += GlobalConfig::GetConfigItem("a", value) == 0 && value == "value" ? 0 : 1;
                    wrong += GlobalConfig::GetTable("legacy_names").size() == 1 ? 0 : 1;
                    if (i % 4 == 0)
                    {
                        GlobalConfig::Reload();
                    }
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

} // namespace
