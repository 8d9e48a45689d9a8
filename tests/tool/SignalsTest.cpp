#include "Signals.h"

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <unistd.h>

#include "Bmc.h"
#include "EmbeddedSimulator.h"
#include "Options.h"
#include "Restart.h"

using namespace Tavrine::Tool;
namespace fs = std::filesystem;

namespace
{

std::set<std::string> Threads()
{
    std::set<std::string> threads;
    for (const auto& entry : fs::directory_iterator("/proc/self/task"))
    {
        threads.insert(entry.path().filename());
    }
    return threads;
}

bool Holds(const std::string& thread, int signal)
{
    std::ifstream status("/proc/self/task/" + thread + "/status");
    for (std::string line; std::getline(status, line);)
    {
        if (line.starts_with("SigBlk:"))
        {
            return (std::stoull(line.substr(7), nullptr, 16) >> static_cast<unsigned int>(signal - 1) & 1U) != 0;
        }
    }
    throw std::runtime_error("no thread " + thread);
}

} // namespace

TEST(Signals, TheSimulatorLeavesThemToTheThreadThatWaits)
{
    const std::set<std::string> before = Threads();
    std::string error;
    const auto simulator = StartSimulator({}, error);
    ASSERT_NE(simulator, nullptr) << error;
    std::size_t own = 0;
    for (const std::string& thread : Threads())
    {
        if (before.contains(thread))
        {
            continue;
        }
        ++own;
        for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        {
            EXPECT_TRUE(Holds(thread, signal)) << thread << ": " << strsignal(signal);
        }
    }
    EXPECT_GT(own, 0U);
}

TEST(Signals, OneEndsThePauseBetweenTwoLooksAtASystem)
{
    const auto run = []
    {
        InstallStopSignals();
        alarm(60); // ends the process where the pause does not end
        Options options;
        options.Bmc.Host = "127.0.0.1";
        Bmc bmc(options);
        std::thread signal(
            [failed = bmc.Prepare().has_value()]
            {
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
                kill(getpid(), failed ? SIGKILL : SIGTERM);
            });
        const bool waited = MeansOf(bmc).Pause(std::chrono::hours(1));
        signal.join();
        std::_Exit(waited ? 1 : 0);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST(Signals, AreHeldForAWhile)
{
    const std::string self = std::to_string(gettid());
    {
        const HeldStopSignals held;
        EXPECT_TRUE(Holds(self, SIGINT) && Holds(self, SIGTERM) && Holds(self, SIGHUP));
        EXPECT_FALSE(sigismember(&held.Former(), SIGINT));
    }
    EXPECT_FALSE(Holds(self, SIGINT) || Holds(self, SIGTERM) || Holds(self, SIGHUP));
}
