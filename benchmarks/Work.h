#pragma once

#include <string>
#include <vector>

#include "Children.h"

namespace bench
{

/// One kind of work. It is done in two ways in turn, so that a change is one each time.
struct Work
{
    std::string Name;
    Words Arguments[2];
    /// What the PATCH of it carries; empty for work that changes nothing.
    std::string Bodies[2];
};

/// Everything that an administrator does often.
/// @param savedFiles  two files with all settings of the machine, no value the same.
std::vector<Work> AllWork(const std::string (&savedFiles)[2], const std::string& folder);

/// Writes the second of two saved files: as the first, with other values.
void WriteOtherValues(const std::string& savedFile, const std::string& otherFile);

} // namespace bench
