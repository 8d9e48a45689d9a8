#include "ConfigFile.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TemporaryFolder.h"

namespace
{

using namespace Tavrine;
using testing::StartsWith;

struct PlacesCase
{
    std::map<std::string, std::string> Environment;
    std::vector<std::string> Paths;
    bool FirstIsRequired = false;
};

TEST(ConfigFileCandidates, FollowTheEnvironment)
{
    const std::string system = "/etc/tavrine/config.toml";
    const PlacesCase cases[] = {
        {{}, {system}},
        {{{"HOME", "/home/a"}}, {"/home/a/.config/tavrine/config.toml", system}},
        {{{"HOME", ""}}, {system}},
        {{{"HOME", "/home/a"}, {"XDG_CONFIG_HOME", "/x"}}, {"/x/tavrine/config.toml", system}},
        {{{"XDG_CONFIG_HOME", "/x"}}, {"/x/tavrine/config.toml", system}},
        {{{"HOME", "/home/a"}, {"XDG_CONFIG_HOME", ""}}, {"/home/a/.config/tavrine/config.toml", system}},
        {{{"HOME", "/home/a"}, {"XDG_CONFIG_HOME", "x"}}, {"/home/a/.config/tavrine/config.toml", system}},
        {{{"TAVRINE_CONFIG", "/c.toml"}, {"HOME", "/home/a"}, {"XDG_CONFIG_HOME", "/x"}}, {"/c.toml"}, true},
        {{{"TAVRINE_CONFIG", ""}, {"XDG_CONFIG_HOME", "/x"}}, {"/x/tavrine/config.toml", system}},
    };
    for (const PlacesCase& item : cases)
    {
        const auto candidates = ConfigFile::Candidates(
            [&item](const char* name) -> const char*
            {
                const auto found = item.Environment.find(name);
                return found != item.Environment.end() ? found->second.c_str() : nullptr;
            });
        ASSERT_EQ(candidates.size(), item.Paths.size());
        for (std::size_t i = 0; i < candidates.size(); ++i)
        {
            EXPECT_EQ(candidates[i].Path, item.Paths[i]);
            EXPECT_EQ(candidates[i].Required, item.FirstIsRequired);
        }
    }
}

class ConfigFileTest : public testing::Test
{
  protected:
    ConfigFile::Content LoadText(const std::string& text) const
    {
        return ConfigFile::Load({{m_Folder.Write("config.toml", text), true}});
    }
    std::string Path() const { return (m_Folder.Path() / "config.toml").string(); }

    testdata::TemporaryFolder m_Folder;
};

struct ItemCase
{
    const char* Toml;
    const char* Text;
};

TEST_F(ConfigFileTest, ItemsReadAsText)
{
    const ItemCase cases[] = {
        {R"("a, b")", "a, b"},
        {R"("")", ""},
        {R"('C:\x')", "C:\\x"},
        {R"("é")", "é"},
        {"0", "0"},
        {"-9223372036854775808", "-9223372036854775808"},
        {"9223372036854775807", "9223372036854775807"},
        {"0x1F", "31"},
        {"1.0", "1.0"},
        {"2.5", "2.5"},
        {"true", "true"},
        {"false", "false"},
        {R"(["a", "b"])", "a,b"},
        {R"(["only"])", "only"},
        {R"(["a", 1, true, 2.5])", "a,1,true,2.5"},
    };
    for (const ItemCase& item : cases)
    {
        const auto content = LoadText(std::string("key = ") + item.Toml + "\n");
        ASSERT_EQ(content.Error, "") << item.Toml;
        ASSERT_EQ(content.Items.count("key"), 1U) << item.Toml;
        EXPECT_EQ(content.Items.at("key"), item.Text) << item.Toml;
    }
}

TEST_F(ConfigFileTest, OtherKindsAndEmptyArraysAreNoItems)
{
    for (const char* toml :
         {"{ a = 1 }", "1979-05-27", "07:32:00", "1979-05-27T07:32:00Z", "[[1]]", "[{ a = 1 }]", "[\"a\", 1979-05-27]"})
    {
        const auto content = LoadText(std::string("key = ") + toml + "\n");
        EXPECT_EQ(content.Error, "") << toml;
        EXPECT_EQ(content.Items.count("key"), 0U) << toml;
    }
}

TEST_F(ConfigFileTest, TablesKeepTheirStringsInByteOrder)
{
    const auto content = LoadText("[names]\nb = \"2\"\na = \"1\"\nB = \"3\"\n\"x.y\" = \"4\"\nnumber = 5\n"
                                  "[names.inner]\nc = \"6\"\n[empty]\n");
    ASSERT_EQ(content.Error, "");
    const std::map<std::string, std::string> expected = {{"B", "3"}, {"a", "1"}, {"b", "2"}, {"x.y", "4"}};
    EXPECT_EQ(content.Tables.at("names"), expected);
    EXPECT_TRUE(content.Tables.at("empty").empty());
}

TEST_F(ConfigFileTest, EmptyFileIsSound)
{
    const auto content = LoadText("");
    EXPECT_EQ(content.Error, "");
    EXPECT_TRUE(content.Items.empty());
}

struct BrokenCase
{
    std::string Toml;
    const char* Place;
};

TEST_F(ConfigFileTest, BrokenFileIsToldWithLineAndColumn)
{
    const BrokenCase cases[] = {
        {"a = 1\nb = = 2\n", ": line 2, column 5: "},
        {"a = 1\na = 2\n", ": line 2, column "},
        {"x", ": line 1, column "},
        {"\n\n  [table\n", ": line 3, column "},
        {"a = \"open\n", ": line 1, column "},
        {"a = 9223372036854775808\n", ": line 1, column "},
        {"a = \"\xFF\"\n", ": line 1, column "},
        {std::string("a = \"\0\"\n", 8), ": line 1, column "},
        {"a = " + std::string(5000, '[') + "\n", ": line 1, column "},
    };
    for (const BrokenCase& item : cases)
    {
        const auto content = LoadText("sound = 1\n" + item.Toml);
        const auto alone = LoadText(item.Toml);
        EXPECT_THAT(alone.Error, StartsWith(Path() + item.Place)) << item.Toml.substr(0, 60);
        EXPECT_GT(alone.Error.size(), (Path() + item.Place).size());
        EXPECT_EQ(alone.Error.find_first_of(std::string("\n\r\t\0", 4)), std::string::npos) << alone.Error;
        EXPECT_NE(content.Error, "");
        EXPECT_TRUE(content.Items.empty()) << "half a file is no configuration";
    }
}

TEST_F(ConfigFileTest, SizeIsLimitedToOneMebibyte)
{
    const std::string start = "a = 1\n#";
    const std::string fits = start + std::string(1024 * 1024 - start.size(), 'x');
    EXPECT_EQ(LoadText(fits).Error, "");
    EXPECT_EQ(LoadText(fits).Items.at("a"), "1");
    EXPECT_EQ(LoadText(fits + "x").Error, Path() + ": larger than 1048576 bytes");
    EXPECT_EQ(ConfigFile::Load({{"/dev/zero", true}}).Error, "/dev/zero: larger than 1048576 bytes");
}

TEST_F(ConfigFileTest, FirstExistingCandidateIsTheOne)
{
    const std::string first = m_Folder.Write("first.toml", "a = 'first'\n");
    const std::string second = m_Folder.Write("second.toml", "a = 'second'\nb = 1\n");
    const std::string missing = (m_Folder.Path() / "missing.toml").string();
    EXPECT_EQ(ConfigFile::Load({{first, false}, {second, false}}).Items.at("a"), "first");
    EXPECT_EQ(ConfigFile::Load({{first, false}, {second, false}}).Items.count("b"), 0U);
    EXPECT_EQ(ConfigFile::Load({{missing, false}, {second, false}}).Items.at("a"), "second");
    // A path that leads through a file is as missing as any other.
    EXPECT_EQ(ConfigFile::Load({{first + "/config.toml", false}, {second, false}}).Items.at("a"), "second");
}

TEST_F(ConfigFileTest, NoFileAtAllIsNoFailure)
{
    const std::string missing = (m_Folder.Path() / "missing.toml").string();
    EXPECT_EQ(ConfigFile::Load({{missing, false}}).Error, "");
    EXPECT_EQ(ConfigFile::Load({}).Error, "");
}

TEST_F(ConfigFileTest, RequiredFileThatIsMissingIsAFailure)
{
    const std::string missing = (m_Folder.Path() / "missing.toml").string();
    EXPECT_EQ(ConfigFile::Load({{missing, true}}).Error, missing + ": No such file or directory");
}

TEST_F(ConfigFileTest, FolderInPlaceOfAFileIsAFailureAndNotSkipped)
{
    const std::string folder = m_Folder.Path().string();
    const std::string second = m_Folder.Write("second.toml", "a = 1\n");
    EXPECT_EQ(ConfigFile::Load({{folder, false}, {second, false}}).Error, folder + ": Is a directory");
}

} // namespace
