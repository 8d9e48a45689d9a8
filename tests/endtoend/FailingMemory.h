#pragma once

#include <cstddef>

/// Takes the place of the program's allocation functions. Counts what is not given back, and
/// fails where it is told to. For one thread at a time.
namespace failingmemory
{

/// While it stands, `good` more allocations of this thread succeed and the next one throws
/// std::bad_alloc, once.
class Failure
{
  public:
    explicit Failure(std::size_t good);
    Failure(const Failure&) = delete;
    Failure& operator=(const Failure&) = delete;
    ~Failure();

    /// Whether the one that fails was reached.
    bool Happened() const;
};

/// Pieces of memory that this thread has taken and not given back.
std::ptrdiff_t Held();

} // namespace failingmemory
