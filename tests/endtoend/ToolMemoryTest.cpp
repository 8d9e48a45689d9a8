// What becomes of the tool's session when memory runs out.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "Bmc.h"
#include "BmcSimulator.h"
#include "FailingMemory.h"
#include "Options.h"

using failingmemory::Failure;
using Tavrine::Tool::Bmc;

namespace
{

std::size_t Count(const std::vector<bmcsim::AccessRecord>& records, const std::string& method, int status)
{
    std::size_t count = 0;
    for (const bmcsim::AccessRecord& record : records)
    {
        count += record.Method == method && record.Status == status ? 1U : 0U;
    }
    return count;
}

/// One with a session of its own.
std::unique_ptr<Bmc> LoggedIn(const Tavrine::Tool::Options& options)
{
    setenv("TAVRINE_PASSWORD", "password", 1);
    auto bmc = std::make_unique<Bmc>(options);
    std::vector<std::string> notes;
    EXPECT_FALSE(bmc->Prepare());
    EXPECT_FALSE(bmc->OpenSession(notes));
    return bmc;
}

} // namespace

TEST(ToolMemory, WhereItIsMissingTheSessionIsClosedAllTheSame)
{
    bmcsim::SimulatorOptions simulated;
    simulated.PlainHttp = true;
    std::string error;
    const auto simulator = bmcsim::BmcSimulator::Start(simulated, error);
    ASSERT_NE(simulator, nullptr) << error;
    Tavrine::Tool::Options options;
    options.Bmc.PlainHttp = true;
    options.Bmc.Host = "127.0.0.1";
    options.Bmc.Port = simulator->Port();
    options.User = "admin";
    constexpr std::size_t Most = 10'000;
    std::size_t failures = 0;
    for (bool happened = true; happened && failures < Most; ++failures)
    {
        std::unique_ptr<Bmc> bmc = LoggedIn(options);
        const Failure failure(failures);
        bmc.reset();
        happened = failure.Happened();
    }
    EXPECT_GT(failures, 5U);
    EXPECT_LT(failures, Most);
    EXPECT_EQ(Count(simulator->AccessLog(), "POST", 201), failures);
    EXPECT_EQ(Count(simulator->AccessLog(), "DELETE", 204), failures);
}
