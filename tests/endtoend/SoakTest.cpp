// Thousands of operations in a row: soak_test [--operations=N] [--seed=N]
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "SoakRun.h"

namespace
{

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
/// A sanitizer keeps freed memory back, the heap's own figures do not tell of it, and all takes longer.
constexpr bool IsSanitized = true;
#else
constexpr bool IsSanitized = false;
#endif

int operations = IsSanitized ? 200 : 500;
std::uint64_t seed = 20240229;

/// The model is held against the BMC after so many operations.
constexpr int Stretch = 100;
constexpr std::size_t HeapSlack = 256U * 1024U;
constexpr std::size_t ResidentSlack = 8U * 1024U * 1024U;

void Print(int done, const soak::Holding& holding)
{
    std::printf("%6d operations: heap %zu KiB, resident %zu KiB, %zu descriptors\n", done, holding.HeapBytes / 1024,
                holding.ResidentBytes / 1024, holding.Descriptors);
    std::fflush(stdout);
}

} // namespace

TEST(Soak, WhatShouldBeOnTheBmcIsThereAndNothingGrows)
{
    std::printf("soak_test --operations=%d --seed=%llu\n", operations, static_cast<unsigned long long>(seed));
    soak::Run run(seed);
    // After the first fifth everything that is made once is made.
    const int rest = std::max(Stretch, operations / 5 / Stretch * Stretch);
    std::vector<soak::Holding> holdings;
    for (int done = 0; done < operations && run.Faults() == 0;)
    {
        const int stretch = std::min(Stretch, operations - done);
        run.Do(stretch);
        done += stretch;
        run.Compare();
        if (done % rest == 0)
        {
            holdings.push_back(run.Rest());
            Print(done, holdings.back());
        }
    }
    for (const auto& [kind, count] : run.Counts())
    {
        std::printf("%6d %s\n", count, kind.c_str());
    }
    std::printf("%6d harmed on the way\n", run.Harmed());
    ASSERT_EQ(run.Faults(), 0);
    ASSERT_GE(holdings.size(), 2U);
    const soak::Holding& first = holdings.front();
    const soak::Holding& last = holdings.back();
    EXPECT_EQ(last.Descriptors, first.Descriptors);
    if (!IsSanitized)
    {
        EXPECT_LE(last.HeapBytes, first.HeapBytes + HeapSlack);
        EXPECT_LE(last.ResidentBytes, first.ResidentBytes + ResidentSlack);
    }
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    for (int index = 1; index < argc; ++index)
    {
        const std::string argument = argv[index];
        const std::string value = argument.substr(argument.find('=') + 1);
        if (argument.starts_with("--operations="))
        {
            operations = std::atoi(value.c_str());
        }
        else if (argument.starts_with("--seed="))
        {
            seed = std::strtoull(value.c_str(), nullptr, 10);
        }
        else
        {
            std::fprintf(stderr, "soak_test: unknown argument %s\n", argument.c_str());
            return 64;
        }
    }
    return RUN_ALL_TESTS();
}
