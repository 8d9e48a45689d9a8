#include "SavedFile.h"

#include <gtest/gtest.h>

#include <boost/json/serialize.hpp>

#include "TemporaryFolder.h"
#include "TextOutput.h"

using namespace Tavrine::Tool;

namespace
{

std::string Read(const std::string& text)
{
    SavedFile file;
    const std::string error = ParseSavedFile(text, file);
    return error.empty() ? boost::json::serialize(SettingsObject(file.Settings)) : "error: " + error;
}

} // namespace

TEST(SavedFile, BothFormsAreRead)
{
    struct Row
    {
        std::string Text;
        const char* Read;
    };
    const Row rows[] = {
        {R"({"version":1,"settings":{"BIOS.A":1,"B":"x","C":true,"D":null,"E":-1.5},"more":[]})",
         R"({"B":"x","BIOS.A":1,"C":true,"D":null,"E":-1.5E0})"},
        {" \n{\"settings\":{}}", "{}"},
        {"\xEF\xBB\xBF{\"settings\":{\"A\":1}}", R"({"A":1})"},
        {R"({"settings":{"U":18446744073709551615}})", R"({"U":18446744073709551615})"},
        {"", "{}"},
        {"\n# a comment = here\n\nBIOS.A=1\nB=\nC=a=b\n", R"({"B":"","BIOS.A":"1","C":"a=b"})"},
        {"A=1\r\nB=2", R"({"A":"1","B":"2"})"},
        {"A=1\nA=2\n", R"({"A":"2"})"},
        {"A=x\\\\y\\nz\\t\\r\\x01\n", R"({"A":"x\\y\nz\t\r\u0001"})"},
        {"A= { }\n", R"({"A":" { }"})"},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(Read(row.Text), row.Read) << row.Text;
    }
}

TEST(SavedFile, WhatIsNoneIsToldWithItsPlace)
{
    struct Row
    {
        std::string Text;
        const char* Error;
    };
    const Row rows[] = {
        {"{", "no JSON"},
        {"{}", "no object \"settings\""},
        {R"({"settings":[]})", "no object \"settings\""},
        {R"({"settings":{"A":{}}})", "the value of A"},
        {R"({"settings":{"A":[1]}})", "the value of A"},
        {"{\"settings\":" + std::string(1000, '[') + std::string(1000, ']') + "}", "no JSON"},
        {"A=1\nB\n", "line 2: no NAME=VALUE"},
        {"=1\n", "line 1: no NAME=VALUE"},
        {"[1,2]", "line 1: no NAME=VALUE"},
        {"A=\\", "line 1: a \"\\\""},
        {"A=\\q", "line 1: a \"\\\""},
        {"A=\\x1", "line 1: a \"\\\""},
        {"A=\\xG1", "line 1: a \"\\\""},
        {"A=\\x-1", "line 1: a \"\\\""},
    };
    for (const Row& row : rows)
    {
        const std::string read = Read(row.Text);
        EXPECT_EQ(read.find("error: "), 0U) << row.Text << ": " << read;
        EXPECT_NE(read.find(row.Error), std::string::npos) << read;
    }
}

TEST(SavedFile, EscapedTextsComeBack)
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

TEST(SavedFile, FilesThatCannotBeReadAreNamed)
{
    const testdata::TemporaryFolder folder;
    SavedFile file;
    const std::string missing = (folder.Path() / "missing").string();
    const std::optional<Failure> lost = ReadSavedFile(missing, file);
    ASSERT_TRUE(lost);
    EXPECT_EQ(lost->Code, 38);
    EXPECT_NE(lost->Message.find(missing), std::string::npos);
    EXPECT_EQ(ReadSavedFile(folder.Path().string(), file).value_or(Failure()).Code, 38);
    const std::string wrong = folder.Write("wrong", "no settings");
    const std::optional<Failure> bad = ReadSavedFile(wrong, file);
    ASSERT_TRUE(bad);
    EXPECT_EQ(bad->Code, 16);
    EXPECT_NE(bad->Message.find(wrong), std::string::npos);
    EXPECT_TRUE(file.Settings.empty());
    EXPECT_FALSE(ReadSavedFile(folder.Write("good", "A=1\n"), file));
    EXPECT_EQ(file.Settings.size(), 1U);
}
