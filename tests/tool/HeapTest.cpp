#include "Heap.h"

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <unistd.h>

#include <gtest/gtest.h>

using namespace Tavrine::Tool;

namespace
{

std::uintptr_t Address(const void* pointer) { return reinterpret_cast<std::uintptr_t>(pointer); }

/// The bytes of this process that are in memory.
std::size_t ResidentBytes()
{
    std::ifstream statm("/proc/self/statm");
    std::size_t all = 0;
    std::size_t resident = 0;
    statm >> all >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

constexpr std::size_t MiB = 1024U * 1024U;

/// Ends the process, with 0 where all is well and else with the number of what is not.
[[noreturn, maybe_unused]] void TryHeap()
{
    const std::size_t resident = ResidentBytes();
    const std::uintptr_t before = Address(sbrk(0));
    ReserveHeap();
    const std::uintptr_t end = Address(sbrk(0));
    if (end < before + 16 * MiB)
    {
        std::_Exit(1);
    }
    if (ResidentBytes() > resident + 8 * MiB)
    {
        std::_Exit(2);
    }
    // A block that would have its own mapping otherwise comes out of it.
    const std::unique_ptr<void, decltype(&std::free)> block(std::malloc(8 * MiB), &std::free);
    std::_Exit(Address(block.get()) < end && Address(sbrk(0)) == end ? 0 : 3);
}

} // namespace

TEST(Heap, GrowsInOnePieceThatCountsOnceItIsTouched)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer has an allocator of its own";
#else
    // A process that has done nothing yet.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(TryHeap(), testing::ExitedWithCode(0), "");
#endif
}
