// What becomes of a request is told by one rule, whatever command it was for.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include "ChildProcess.h"
#include "RunningBmc.h"
#include "TemporaryFolder.h"

using namespace tooltest;

namespace
{

bool Says(const std::string& text, const std::string& words) { return text.find(words) != std::string::npos; }

/// The commands that change single settings, with words that make each send one change.
std::vector<std::vector<std::string>> Commands(const testdata::TemporaryFolder& folder)
{
    folder.Write("saved.conf", "BIOS.AltitudeMetres=500\n");
    return {{"set", "AltitudeMetres=500"},
            {"restore", (folder.Path() / "saved.conf").string()},
            {"loaddefault", "AltitudeMetres"}};
}

Finished RunWith(const RunningBmc& bmc, std::vector<std::string> words, const std::vector<std::string>& more)
{
    words.insert(words.end(), more.begin(), more.end());
    return RunToEnd(bmc.Tool(words));
}

std::string OutcomeIn(const Finished& ran)
{
    const boost::json::value document = boost::json::parse(ran.Output);
    const boost::json::value& outcome = document.at("settings").at("BIOS.AltitudeMetres").at("outcome");
    return outcome.as_string().c_str();
}

} // namespace

TEST(ProgramRequestEnd, ThreeCommandsTellOneThing)
{
    struct Row
    {
        const char* Effect;
        const char* Outcome;
        const char* NotRestarted;
    };
    const char* const failed = "tavrine: not restarted, since a request failed\n";
    const char* const unknown = "tavrine: not restarted, since what the BMC has received is not known\n";
    const Row rows[] = {
        {"busy 3", "refused", failed},
        {"status 401", "refused", failed},
        {"status 403", "refused", failed},
        {"status 400", "refused", failed},
        {"status 501", "refused", failed},
        {"status 500", "unknown", unknown},
        {"undone close-before", "unknown", unknown},
    };
    const testdata::TemporaryFolder folder;
    for (const Row& row : rows)
    {
        for (const std::vector<std::string>& command : Commands(folder))
        {
            const RunningBmc bmc({"--fault", std::string("PATCH * ") + row.Effect});
            const Finished data = RunWith(bmc, command, {"--json"});
            EXPECT_NE(data.Status, 0) << command.front() << ", " << row.Effect;
            EXPECT_EQ(OutcomeIn(data), row.Outcome) << command.front() << ", " << row.Effect << ": " << data.Output;
            const Finished text = RunWith(bmc, command, {"--reboot"});
            EXPECT_TRUE(Says(text.Errors, row.NotRestarted))
                << command.front() << ", " << row.Effect << ": " << text.Errors;
        }
    }
}

/// A lenient BMC does what it says that it refuses.
TEST(ProgramRequestEnd, ARefusalIsNoneWhereTheBmcShowsTheChange)
{
    const testdata::TemporaryFolder folder;
    for (const std::vector<std::string>& command : Commands(folder))
    {
        const RunningBmc bmc({"--fault", "PATCH * done status 400"});
        const Finished ran = RunWith(bmc, command, {"--reboot"});
        EXPECT_EQ(ran.Status, 0) << command.front() << ": " << ran.Errors;
        EXPECT_TRUE(Says(ran.Errors, "the request failed, but the BMC shows the changes: "))
            << command.front() << ": " << ran.Errors;
        EXPECT_TRUE(Says(ran.Errors, "tavrine: restart requested ")) << command.front() << ": " << ran.Errors;
    }
}

/// A read that fails keeps the change back, of which nothing is left open then.
TEST(ProgramRequestEnd, WhatWasNotSentIsNotLeftOpen)
{
    for (const std::string effect : {"status 500", "undone close-before", "garbage-json"})
    {
        const RunningBmc bmc({"--fault", "GET */Bios " + effect});
        const Finished loaded = RunToEnd(bmc.Tool({"loaddefault", "AltitudeMetres"}));
        EXPECT_NE(loaded.Status, 0) << effect;
        EXPECT_TRUE(loaded.Output.starts_with("BIOS.AltitudeMetres: not sent: ")) << effect << ": " << loaded.Output;
        EXPECT_FALSE(Says(loaded.Errors, "not known")) << effect << ": " << loaded.Errors;
    }
}
