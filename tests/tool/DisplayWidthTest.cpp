#include "DisplayWidth.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "SharedData.h"
#include "TextOutput.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>

using namespace Tavrine::Tool;

using Lines = std::vector<std::string>;

namespace
{

bool IsUtf8(std::string_view text)
{
    while (!text.empty())
    {
        const std::size_t length = Utf8Length(text);
        if (length == 0)
        {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::string WithoutBlanks(std::string text)
{
    std::erase(text, ' ');
    return text;
}

} // namespace

TEST(DisplayWidth, WideCharactersTakeTwoColumnsAndCombiningOnesNone)
{
    struct Row
    {
        const char* Text;
        std::size_t Width;
    };
    const Row rows[] = {
        {"", 0},     {"abc", 3}, {"é", 1},        {"e\xCC\x81", 1}, {"設定", 4}, {"a設b", 4}, {"ｱ", 1},
        {"한국", 4}, {"…", 1},   {"\xFF\xFE", 2}, {"Ａ", 2},        {"😀", 2},    {"ё", 1},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(DisplayWidth(row.Text), row.Width) << row.Text;
    }
}

TEST(CutToWidth, KeepsCharactersWhole)
{
    struct Row
    {
        const char* Text;
        std::size_t Columns;
        const char* Cut;
    };
    const Row rows[] = {
        {"abc", 3, "abc"},
        {"abcd", 3, "ab…"},
        {"abcd", 1, "…"},
        {"abcd", 0, ""},
        {"", 0, ""},
        {"設定値", 6, "設定値"},
        {"設定値", 5, "設定…"},
        {"設定値", 4, "設…"},
        {"設定値", 3, "設…"},
        {"設定値", 2, "…"},
        {"a設定", 4, "a設…"},
        {"e\xCC\x81x", 2, "e\xCC\x81x"},
        {"e\xCC\x81xyz", 2, "e\xCC\x81…"},
    };
    for (const Row& row : rows)
    {
        const std::string cut = CutToWidth(row.Text, row.Columns);
        EXPECT_EQ(cut, row.Cut) << row.Text << " at " << row.Columns;
        EXPECT_LE(DisplayWidth(cut), row.Columns);
    }
}

TEST(WrapText, BreaksAtBlanksAndBesideWideCharacters)
{
    struct Row
    {
        const char* Text;
        std::size_t Columns;
        Lines Wrapped;
    };
    const Row rows[] = {
        {"", 10, {""}},
        {"one two", 7, {"one two"}},
        {"one two", 6, {"one", "two"}},
        {"one  two", 8, {"one  two"}},
        {"one  two", 7, {"one", "two"}},
        {"abcdef gh", 4, {"abcd", "ef", "gh"}},
        {"a bcdefgh", 4, {"a", "bcde", "fgh"}},
        {"設定を変更", 4, {"設定", "を変", "更"}},
        {"設定を変更", 5, {"設定", "を変", "更"}},
        {"設定。変更", 4, {"設", "定。", "変更"}},
        {"CPUの設定", 5, {"CPUの", "設定"}},
        {"設定値Intel", 6, {"設定値", "Intel"}},
        {"x", 0, {"x"}},
        {"設", 1, {"設"}},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(WrapText(row.Text, row.Columns), row.Wrapped) << row.Text << " at " << row.Columns;
    }
}

TEST(WrapText, WithoutAWidthNothingIsTouched)
{
    EXPECT_EQ(WrapText("a  b \xFF 設定 " + std::string(500, 'x'), std::nullopt),
              (Lines{"a  b \xFF 設定 " + std::string(500, 'x')}));
}

TEST(WrapText, JapaneseHelpKeepsItsCharactersAtEveryWidth)
{
    const auto file = testdata::SharedData() / "hpe-DL360" / "registry.ja.json";
    if (!std::filesystem::exists(file))
    {
        GTEST_SKIP() << "no " << file;
    }
    const boost::json::value registry = boost::json::parse(testdata::ReadFile(file));
    std::size_t wide = 0;
    for (const auto& attribute : registry.at("RegistryEntries").at("Attributes").as_array())
    {
        const auto* help = attribute.as_object().if_contains("HelpText");
        if (help == nullptr || !help->is_string())
        {
            continue;
        }
        const std::string text(help->get_string());
        wide += DisplayWidth(text) > text.size() / 2 ? 1U : 0U;
        for (const std::size_t columns : {2U, 21U, 40U, 80U})
        {
            std::string joined;
            for (const std::string& line : WrapText(EscapeControls(text), columns))
            {
                ASSERT_LE(DisplayWidth(line), columns) << line;
                ASSERT_TRUE(IsUtf8(line)) << line;
                joined += line;
            }
            ASSERT_EQ(WithoutBlanks(joined), WithoutBlanks(EscapeControls(text)));
            ASSERT_TRUE(IsUtf8(CutToWidth(text, columns)));
            ASSERT_LE(DisplayWidth(CutToWidth(text, columns)), columns);
        }
    }
    EXPECT_GT(wide, 100U);
}

TEST(TableText, HasTabsWhereThereIsNoTerminal)
{
    EXPECT_EQ(TableText({"H", "I"}, {{"a", "long text"}, {"bb", ""}}, std::nullopt), "a\tlong text\nbb\t\n");
    EXPECT_EQ(TableText({"H", "I"}, {}, 80), "");
    EXPECT_EQ(TableText({"H", "I"}, {}, std::nullopt), "");
}

TEST(TableText, AlignsByColumnsOfTheTerminal)
{
    EXPECT_EQ(TableText({"NAME", "X"}, {{"設定", "1"}, {"a", "22"}}, 80), "NAME  X\n設定  1\na     22\n");
}

TEST(TableText, CutsTheWidestColumns)
{
    EXPECT_EQ(TableText({"A", "B"}, {{"abc", std::string(40, 'x')}}, 12), "A    B\nabc  xxxxxx…\n");
    EXPECT_EQ(TableText({"A", "B"}, {{std::string(40, 'y'), std::string(40, 'x')}}, 12), "A      B\nyyyy…  xxxx…\n");
    EXPECT_EQ(TableText({"A", "B"}, {{"設定設定設定", "設定設定設定"}}, 12), "A      B\n設定…  設定…\n");
    for (std::size_t columns = 0; columns < 60; ++columns)
    {
        const std::string table =
            TableText({"A", "BB", "C"}, {{"設定値", "abcdefghij", std::string(30, 'z')}}, columns);
        for (const std::string& line : {table.substr(0, table.find('\n')), table.substr(table.find('\n') + 1)})
        {
            const std::string plain = line.substr(0, line.find('\n'));
            EXPECT_LE(DisplayWidth(plain), std::max<std::size_t>(columns, 7)) << plain;
            EXPECT_TRUE(IsUtf8(plain));
        }
    }
}
