#include "FailingMemory.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace
{

constexpr std::size_t Never = std::numeric_limits<std::size_t>::max();

constinit thread_local std::size_t t_Good = Never;
constinit thread_local std::ptrdiff_t t_Held = 0;

void* TakeOrNothing(std::size_t bytes) noexcept
{
    if (t_Good != Never && t_Good-- == 0)
    {
        return nullptr;
    }
    void* const piece = std::malloc(bytes == 0 ? 1 : bytes);
    t_Held += piece != nullptr ? 1 : 0;
    return piece;
}

void* Take(std::size_t bytes)
{
    void* const piece = TakeOrNothing(bytes);
    if (piece == nullptr)
    {
        throw std::bad_alloc();
    }
    return piece;
}

void GiveBack(void* piece) noexcept
{
    t_Held -= piece != nullptr ? 1 : 0;
    std::free(piece);
}

} // namespace

// All of them but those for alignments beyond the usual one: a sanitizer has its own of each, which do not go together
// with these.
void* operator new(std::size_t bytes) { return Take(bytes); }
void* operator new[](std::size_t bytes) { return Take(bytes); }
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return TakeOrNothing(bytes); }
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept { return TakeOrNothing(bytes); }
void operator delete(void* piece) noexcept { GiveBack(piece); }
void operator delete[](void* piece) noexcept { GiveBack(piece); }
void operator delete(void* piece, std::size_t) noexcept { GiveBack(piece); }
void operator delete[](void* piece, std::size_t) noexcept { GiveBack(piece); }
void operator delete(void* piece, const std::nothrow_t&) noexcept { GiveBack(piece); }
void operator delete[](void* piece, const std::nothrow_t&) noexcept { GiveBack(piece); }

namespace failingmemory
{

Failure::Failure(std::size_t good) { t_Good = good; }
Failure::~Failure() { t_Good = Never; }
// Counted down to nothing, it goes on from the highest number.
bool Failure::Happened() const { return t_Good == Never; }
std::ptrdiff_t Held() { return t_Held; }

} // namespace failingmemory
