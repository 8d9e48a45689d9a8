// A file that was damaged after it was saved.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>

#include "LockingMachine.h"
#include "SharedData.h"
#include "TemporaryFolder.h"
#include "ToolRun.h"

namespace json = boost::json;

using endtoend::LockingMachine;
using endtoend::Told;
using endtoend::ToolRun;
using Tavrine::Tool::Answer;

namespace
{

/// What waits for a reboot.
std::vector<std::string> Pending(const ToolRun& tool)
{
    const json::value state = json::parse(tool.State());
    std::vector<std::string> names;
    for (const auto& [name, value] : state.at("Pending").as_object())
    {
        if (value != state.at("Effective").at(name))
        {
            names.emplace_back(name);
        }
    }
    return names;
}

} // namespace

TEST(DamagedFile, AFlippedBitReachesAtMostTheSettingThatItHits)
{
    const LockingMachine machine;
    const testdata::TemporaryFolder folder;
    const ToolRun tool(machine.Path());
    ASSERT_EQ(tool.Error(), "");
    std::size_t refused = 0;
    std::size_t changed = 0;
    for (const std::string name : {"saved.json", "saved.conf"})
    {
        ASSERT_EQ(tool.Run({"save", tool.File(name)}).Code, 0);
        const std::string saved = testdata::ReadFile(tool.File(name));
        const std::size_t settings = saved.find("BIOS.Light");
        ASSERT_NE(settings, std::string::npos);
        // Of every other byte one bit, another one each time.
        for (std::size_t at = settings; at < saved.size(); at += 2)
        {
            std::string damaged = saved;
            damaged[at] = static_cast<char>(static_cast<unsigned char>(damaged[at]) ^ (1U << (at / 2 % 8)));
            const std::string file = folder.Write("damaged", damaged);
            const Answer answer = tool.Run({"restore", file});
            const std::vector<std::string> pending = Pending(tool);
            EXPECT_LE(pending.size(), 1U) << damaged;
            changed += pending.size();
            if (answer.Code == 16)
            {
                ++refused;
                EXPECT_TRUE(pending.empty()) << damaged;
                EXPECT_NE(answer.Message.find(file), std::string::npos) << answer.Message;
            }
            if (!pending.empty())
            {
                EXPECT_EQ(tool.Run({"restore", tool.File(name)}).Code, 0);
                EXPECT_TRUE(Pending(tool).empty()) << "the file as it was brings back what the damaged one has changed";
            }
        }
    }
    EXPECT_GT(refused, 0U);
    EXPECT_GT(changed, 0U);
}

TEST(DamagedFile, AnIncompleteDocumentIsRefused)
{
    const LockingMachine machine;
    const testdata::TemporaryFolder folder;
    const ToolRun tool(machine.Path());
    ASSERT_EQ(tool.Error(), "");
    ASSERT_EQ(tool.Run({"save", tool.File("saved.json")}).Code, 0);
    const std::string whole = testdata::ReadFile(tool.File("saved.json"));
    const std::size_t end = whole.find_last_of('}');
    ASSERT_NE(end, std::string::npos);
    for (std::size_t length = 0; length <= end; length += 7)
    {
        const Answer answer = tool.Run({"restore", folder.Write("half.json", whole.substr(0, length))});
        EXPECT_EQ(answer.Code, 16) << length << ": " << Told(answer);
    }
    EXPECT_TRUE(Pending(tool).empty());
}

TEST(SavedFile, WhatWaitsForARebootIsTakenBack)
{
    const LockingMachine machine;
    const ToolRun tool(machine.Path());
    ASSERT_EQ(tool.Error(), "");
    ASSERT_EQ(tool.Run({"save", tool.File("saved.json")}).Code, 0);
    ASSERT_EQ(tool.Run({"set", "Tag=waits", "Light=false"}).Code, 0);
    ASSERT_EQ(Pending(tool).size(), 2U);
    const Answer answer = tool.Run({"restore", tool.File("saved.json")});
    EXPECT_EQ(answer.Code, 0) << Told(answer);
    EXPECT_TRUE(Pending(tool).empty());
}
