#include "GlobalConfig.h"

#include <atomic>
#include <map>
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
