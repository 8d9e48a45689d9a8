#include "TextOutput.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using namespace Tavrine;
using namespace Tavrine::Tool;

TEST(EscapeText, EachKindOfByteHasItsForm)
{
    struct Row
    {
        std::string Text;
        std::string Escaped;
    };
    const Row rows[] = {
        {"", ""},
        {"Enabled", "Enabled"},
        {"a b=c\"'", "a b=c\"'"},
        {"line\nbreak", "line\\nbreak"},
        {"\t\r", "\\t\\r"},
        {std::string("\0", 1), "\\x00"},
        {"\x1B[31m", "\\x1B[31m"},
        {"\x7F", "\\x7F"},
        {"C:\\n", "C:\\\\n"},
        {"gr\xC3\xBC\xC3\x9F", "gr\xC3\xBC\xC3\x9F"},
        {"\xE6\x97\xA5\xE6\x9C\xAC", "\xE6\x97\xA5\xE6\x9C\xAC"},
        {"\xF0\x9F\x99\x82", "\xF0\x9F\x99\x82"},
        {"\xC2\x9B", "\\xC2\\x9B"},                   // CSI in eight bits
        {"\xC2\xA0", "\xC2\xA0"},                     // the first one that is no control character
        {"\xFF", "\\xFF"},                            // never a part of UTF-8
        {"\x80", "\\x80"},                            // continuation without a start
        {"\xC3", "\\xC3"},                            // cut off
        {"\xE6\x97", "\\xE6\\x97"},                   // cut off
        {"\xC0\xAF", "\\xC0\\xAF"},                   // overlong
        {"\xE0\x80\xAF", "\\xE0\\x80\\xAF"},          // overlong
        {"\xED\xA0\x80", "\\xED\\xA0\\x80"},          // surrogate
        {"\xF4\x90\x80\x80", "\\xF4\\x90\\x80\\x80"}, // beyond U+10FFFF
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(EscapeText(row.Text), row.Escaped);
    }
}

TEST(EscapeText, MessagesKeepTheirBackslashes) { EXPECT_EQ(EscapeControls("C:\\temp\x1B\n"), "C:\\temp\\x1B\\n"); }

TEST(ForEachCharacter, PiecesAreRunsCharactersAndBytesThatAreNone)
{
    std::vector<std::pair<std::string, bool>> pieces;
    ForEachCharacter("a b\\c\xC3\xBC\xC3\x9F\n\xE6\x97\xFF",
                     [&](std::string_view piece, bool isUtf8) { pieces.emplace_back(piece, isUtf8); });
    const std::vector<std::pair<std::string, bool>> expected = {
        {"a b", true}, {"\\", true},    {"c", true},     {"\xC3\xBC", true}, {"\xC3\x9F", true},
        {"\n", true},  {"\xE6", false}, {"\x97", false}, {"\xFF", false}};
    EXPECT_EQ(pieces, expected);
    ForEachCharacter("", [](std::string_view, bool) { FAIL() << "a piece of nothing"; });
}

TEST(SettingLines, ByteOrderAndOneLineEach)
{
    EXPECT_EQ(SettingLines({{"BIOS.b", "1"}, {"BIOS.B", "x\ny"}, {"BIOS.a\tb", ""}}),
              "BIOS.B=x\\ny\nBIOS.a\\tb=\nBIOS.b=1\n");
    EXPECT_EQ(SettingLines({}), "");
}

TEST(GroupLines, EveryMembershipIsALineInByteOrder)
{
    EXPECT_EQ(GroupLines({{"Boot", {"BIOS.Z", "BIOS.A"}}, {"A\tB", {"BIOS.C"}}}),
              "A\\tB\tBIOS.C\nBoot\tBIOS.A\nBoot\tBIOS.Z\n");
}

TEST(GroupTree, MenusNestAndOnlyChildrenShareALine)
{
    EXPECT_EQ(GroupTree({{"System/Boot", {"BIOS.B", "BIOS.A"}},
                         {"System/Boot/Network", {"BIOS.N"}},
                         {"System/Memory", {"BIOS.M"}},
                         {"I/O Options", {"BIOS.I"}}}),
              "I/O Options\n"
              "  BIOS.I\n"
              "System\n"
              "  Boot\n"
              "    BIOS.A\n"
              "    BIOS.B\n"
              "    Network\n"
              "      BIOS.N\n"
              "  Memory\n"
              "    BIOS.M\n");
}

TEST(GroupTree, HostileDepthIsBounded)
{
    std::string group;
    for (int depth = 0; depth < 100000; ++depth)
    {
        group += "m/";
    }
    const std::string tree = GroupTree({{group + "m", {"BIOS.A"}}, {"m/m", {"BIOS.B"}}});
    EXPECT_NE(tree.find("BIOS.A\n"), std::string::npos);
    EXPECT_LT(tree.find("BIOS.B"), tree.size());
}

TEST(GroupTree, MenusBelowTheDeepestStayFlat)
{
    std::string label = "m";
    for (int depth = 1; depth < 31; ++depth)
    {
        label += "/m";
    }
    EXPECT_EQ(GroupTree({{label, {"BIOS.A"}}, {label + "/m", {"BIOS.B"}}}), label + "\n  BIOS.A\n  m\n    BIOS.B\n");
    EXPECT_EQ(GroupTree({{label + "/m", {"BIOS.A"}}, {label + "/m/m", {"BIOS.B"}}}),
              label + "\n  m\n    BIOS.A\n  m/m\n    BIOS.B\n");
}

TEST(UnescapeText, GivesBackEveryText)
{
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
    {
        all += static_cast<char>(byte);
    }
    for (const std::string& text : {all, std::string(), std::string("\\n"), std::string("設定\x7F\xC2\x85")})
    {
        EXPECT_EQ(UnescapeText(EscapeText(text)), text);
    }
}

TEST(UnescapeText, WhatIsNoEscapeIsNoText)
{
    for (const char* line : {"\\", "a\\", "\\q", "\\x", "\\x1", "\\xG1", "\\x-1", "\\x 1", "\\N"})
    {
        EXPECT_FALSE(UnescapeText(line)) << line;
    }
}
