#include "SettingPairs.h"

#include <gtest/gtest.h>

#include <array>
#include <fcntl.h>
#include <limits>
#include <thread>
#include <unistd.h>

#include "ConfigOptions.h"
#include "Options.h"

using namespace Tavrine::Tool;

namespace
{

using Words = std::vector<std::string>;

Options With(const Words& words)
{
    Options options;
    options.Names = words;
    return options;
}

/// The value that "A=-" gets from this input, or the failure's message.
std::string FromInput(const std::string& input)
{
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    std::thread writer(
        [&]
        {
            std::size_t done = 0;
            while (done < input.size())
            {
                const ssize_t count = write(ends[1], input.data() + done, input.size() - done);
                if (count <= 0)
                {
                    break;
                }
                done += static_cast<std::size_t>(count);
            }
            close(ends[1]);
        });
    std::vector<SettingPair> pairs;
    const std::optional<Failure> failure = ReadPairs(With({"A=-"}), ends[0], pairs);
    std::array<char, 4096> rest{};
    while (read(ends[0], rest.data(), rest.size()) > 0)
    {
    }
    close(ends[0]);
    writer.join();
    return failure ? failure->Message : pairs.at(0).Value;
}

} // namespace

TEST(SettingPairs, OnlyTheFirstEqualsSignSplits)
{
    std::vector<SettingPair> pairs;
    ASSERT_FALSE(ReadPairs(With({"A=b=c==", "BIOS.B=", "bios.C=--", "D= x "}), -1, pairs));
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"A", "b=c=="}, {"B", ""}, {"C", "--"}, {"D", " x "}};
    ASSERT_EQ(pairs.size(), expected.size());
    for (std::size_t index = 0; index < expected.size(); ++index)
    {
        EXPECT_EQ(pairs[index].Name, expected[index].first);
        EXPECT_EQ(pairs[index].Value, expected[index].second);
    }
}

TEST(SettingPairs, FaultsNeverRepeatWhatMayBeAValue)
{
    EXPECT_EQ(PairsFault(With({"A=1", "hunter2"})), "Argument 2 is no NAME=VALUE");
    EXPECT_EQ(PairsFault(With({"=hunter2"})), "Argument 1 is no NAME=VALUE");
    EXPECT_EQ(PairsFault(With({"BIOS.=hunter2"})), "Argument 1 is no NAME=VALUE");
    EXPECT_EQ(PairsFault(With({"A=hunter2", "B=1", "bios.A=2"})), "The setting A is given twice");
    EXPECT_EQ(PairsFault(With({"A=1", "a=2"})), "");
    EXPECT_EQ(PairsFault(With({"A=-", "B=-"})), "Only one value can come from standard input");
    Options options = With({"A=-"});
    EXPECT_EQ(PairsFault(options), "");
    options.PasswordFile = "-";
    EXPECT_EQ(PairsFault(options), "--password-file - and NAME=- cannot both read standard input");
    options.Names = {"A=--"};
    EXPECT_EQ(PairsFault(options), "");
}

TEST(SettingPairs, ThePrefixesAreThoseOfTheSystem)
{
    Options options = With({"A=1", "UEFI.A=2"});
    EXPECT_EQ(PairsFault(options), "");
    options.SystemType = Tavrine::SystemTypeUefi;
    EXPECT_NE(PairsFault(options), "");
    options.FirstPrefix = "One";
    options.SecondPrefix = "Two";
    EXPECT_EQ(PairsFault(options), "");
    options.Names = {"one.A=1", "Two.A=2"};
    EXPECT_NE(PairsFault(options), "");
}

TEST(SettingPairs, AValueFromStandardInputIsAllOfIt)
{
    EXPECT_EQ(FromInput("hunter2\n"), "hunter2");
    EXPECT_EQ(FromInput("hunter2"), "hunter2");
    EXPECT_EQ(FromInput("a\nb\n\n"), "a\nb\n");
    for (const char* nothing : {"", "\n"})
    {
        EXPECT_EQ(FromInput(nothing),
                  "Unable to read the value of BIOS.A from standard input: nothing came; NAME= sets an empty value");
    }
    EXPECT_EQ(FromInput(std::string("a\0b", 3)), std::string("a\0b", 3));
}

TEST(SettingPairs, AValueFromStandardInputHasALimit)
{
    const std::string largest(LargestInputValue, 'x');
    EXPECT_EQ(FromInput(largest), largest);
    EXPECT_EQ(FromInput(largest + "\n"), largest);
    const std::string refusal =
        "Unable to read the value of BIOS.A from standard input: it is longer than 1048576 bytes";
    EXPECT_EQ(FromInput(largest + "x"), refusal);
    EXPECT_EQ(FromInput(largest + "x\n"), refusal);
    EXPECT_EQ(FromInput(largest + "\nx"), refusal);
    EXPECT_EQ(FromInput(std::string(4 * LargestInputValue, 'x')), refusal);
}

TEST(SettingPairs, AStandardInputThatCannotBeReadIsAFailure)
{
    const int unreadable = open("/dev/null", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(unreadable, 0);
    // Numbers that no descriptor has: one that means none, and one out of reach.
    for (const int input : {unreadable, -1, std::numeric_limits<int>::max()})
    {
        std::vector<SettingPair> pairs;
        const std::optional<Failure> failure = ReadPairs(With({"A=-"}), input, pairs);
        ASSERT_TRUE(failure) << input;
        EXPECT_EQ(failure->Code, 16);
        EXPECT_EQ(failure->Setting, "BIOS.A");
        EXPECT_NE(failure->Message.find("Bad file descriptor"), std::string::npos) << failure->Message;
    }
    close(unreadable);
}
