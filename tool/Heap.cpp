#include "Heap.h"

#include <cstdint>
#include <cstdlib>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

namespace Tavrine::Tool
{
namespace
{

constexpr int MiB = 1024 * 1024;
constexpr int HeapBytes = 20 * MiB;
/// Texts of megabytes come from the heap as well, and what they leave is used again.
constexpr int LargestBlock = 32 * MiB; // glibc takes no more
constexpr std::uintptr_t LargePage = 2 * MiB;

std::uintptr_t HeapEnd() { return reinterpret_cast<std::uintptr_t>(sbrk(0)); }

} // namespace

void ReserveHeap()
{
    // Where one of these is not taken, as with another allocator, all stays as it is.
    if (mallopt(M_MMAP_THRESHOLD, LargestBlock) == 0 || mallopt(M_TRIM_THRESHOLD, LargestBlock) == 0 ||
        mallopt(M_TOP_PAD, HeapBytes) == 0)
    {
        return;
    }
    const std::uintptr_t before = HeapEnd();
    void* volatile block = std::malloc(MiB); // grows the heap by the padding; seen, so that it is not left out
    std::free(block);
    const std::uintptr_t begin = (before + LargePage - 1) / LargePage * LargePage;
    const std::uintptr_t end = HeapEnd();
    mallopt(M_TOP_PAD, MiB);
    if (end > begin)
    {
        // A system without large pages says so, and gives small ones.
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
    }
}

} // namespace Tavrine::Tool
