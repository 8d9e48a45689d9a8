#include "Password.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "TemporaryFolder.h"

using namespace Tavrine::Tool;
using testdata::TemporaryFolder;

namespace
{

const std::string Who = "user at host";

struct Found
{
    std::optional<Failure> Trouble;
    std::string Text;
};

Found FromFile(const std::string& path)
{
    PasswordText password;
    Found found;
    found.Trouble = FindPassword(path, Who, password);
    found.Text = password.Text();
    return found;
}

} // namespace

TEST(PasswordFile, TheFirstLineIsThePassword)
{
    const TemporaryFolder folder;
    struct Row
    {
        std::string Content;
        std::string Password;
    };
    const Row rows[] = {
        {"secret", "secret"},
        {"secret\n", "secret"},
        {"secret\r\n", "secret"},
        {" two words \nsecond line\n", " two words "},
        {"p\xC3\xA4ss\xFF\n", "p\xC3\xA4ss\xFF"},
        {std::string(LongestPassword, 'p') + "\n", std::string(LongestPassword, 'p')},
        {std::string(LongestPassword, 'p'), std::string(LongestPassword, 'p')},
    };
    for (const Row& row : rows)
    {
        const Found found = FromFile(folder.Write("password", row.Content));
        EXPECT_FALSE(found.Trouble) << found.Trouble->Message;
        EXPECT_EQ(found.Text, row.Password);
    }
}

TEST(PasswordFile, OtherContentIsRefusedAndTheFileNamed)
{
    const TemporaryFolder folder;
    for (const std::string& content : {std::string(), std::string("\n"), std::string("\r\nsecret"),
                                       std::string("sec\0ret", 7), std::string(LongestPassword + 1, 'p')})
    {
        const std::string path = folder.Write("password", content);
        const Found found = FromFile(path);
        ASSERT_TRUE(found.Trouble) << content.size();
        EXPECT_EQ(found.Trouble->Code, 16);
        EXPECT_NE(found.Trouble->Message.find(path), std::string::npos) << found.Trouble->Message;
        EXPECT_EQ(found.Trouble->Message.find("sec"), std::string::npos) << found.Trouble->Message;
    }
}

TEST(PasswordFile, WhatCannotBeReadIsNamed)
{
    const TemporaryFolder folder;
    const std::string missing = (folder.Path() / "missing").string();
    const Found notThere = FromFile(missing);
    ASSERT_TRUE(notThere.Trouble);
    EXPECT_EQ(notThere.Trouble->Code, 38);
    EXPECT_EQ(notThere.Trouble->Message, "Unable to open the password file " + missing + ": No such file or directory");

    const Found directory = FromFile(folder.Path().string());
    ASSERT_TRUE(directory.Trouble);
    EXPECT_NE(directory.Trouble->Message.find(folder.Path().string()), std::string::npos);
    EXPECT_NE(directory.Trouble->Message.find("directory"), std::string::npos) << directory.Trouble->Message;
}

TEST(PasswordVariable, IsTakenOutOfTheEnvironment)
{
    setenv("TAVRINE_PASSWORD", "from-environment", 1);
    const char* place = std::getenv("TAVRINE_PASSWORD");
    PasswordText password;
    EXPECT_FALSE(FindPassword("", Who, password));
    EXPECT_EQ(password.Text(), "from-environment");
    EXPECT_EQ(std::getenv("TAVRINE_PASSWORD"), nullptr);
    EXPECT_EQ(*place, '\0');
}

TEST(PasswordVariable, IsTakenUpToTheLimitAndGoneEitherWay)
{
    for (const std::size_t size : {LongestPassword, LongestPassword + 1})
    {
        const std::string text(size, 'p');
        setenv("TAVRINE_PASSWORD", text.c_str(), 1);
        const char* place = std::getenv("TAVRINE_PASSWORD");
        PasswordText password;
        const std::optional<Failure> trouble = FindPassword("", Who, password);
        EXPECT_EQ(password.Text(), trouble ? "" : text);
        EXPECT_EQ(trouble.has_value(), size > LongestPassword);
        if (trouble)
        {
            EXPECT_EQ(trouble->Code, 16);
            EXPECT_EQ(trouble->Message,
                      "Unable to read the password from TAVRINE_PASSWORD: it is longer than 4096 bytes");
        }
        EXPECT_EQ(std::getenv("TAVRINE_PASSWORD"), nullptr);
        EXPECT_EQ(*place, '\0');
    }
}

TEST(PasswordVariable, AFileGoesBeforeIt)
{
    const TemporaryFolder folder;
    setenv("TAVRINE_PASSWORD", "from-environment", 1);
    EXPECT_EQ(FromFile(folder.Write("password", "from-file\n")).Text, "from-file");
    unsetenv("TAVRINE_PASSWORD");
}

TEST(Wipe, LeavesNothingBehind)
{
    std::string text(100, 's');
    const char* memory = text.data();
    const std::size_t capacity = text.capacity();
    text.resize(3);
    Wipe(text);
    EXPECT_TRUE(text.empty());
    for (std::size_t index = 0; index < capacity; ++index)
    {
        ASSERT_EQ(memory[index], '\0') << index;
    }
}
