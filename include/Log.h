#pragma once

#include <optional>
#include <sstream>

#include "Export.h"

namespace Tavrine
{

/// One log record: constructed, filled through Stream(), written out by its
/// destructor. Levels: 1 failures and refusals, 3 entry and exit of the
/// interface's operations, 4 detail. Where records go is told by Logging.
///
/// Values of settings can stand in records of level 1: in the BMC's words, which may quote them, and in
/// its whole answer where the export of the custom defaults did not end in 0. Those of level 4 can hold
/// others, also passwords that are sent to protected settings. What logs in to a BMC is never
/// written, and is taken out of the BMC's words; but answers of actions on the whole system that are
/// written whole (that of the export, and on level 4 those of the import and the reset) stand as the BMC
/// sent them.
///
/// A record whose level no sink takes when it is made is never written: its
/// stream, one for all such records of a thread, takes insertions and formats nothing,
/// which keeps it cheap.
///
/// A record belongs to the thread that made it; writing records from many
/// threads at once is safe.
class TAVRINE_EXPORT Log
{
  public:
    /// @param sourcePath  kept by pointer: a literal, relative to the repository.
    Log(unsigned int level, const char* sourcePath, int sourceLine);
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;
    virtual ~Log();

    std::ostringstream& Stream();

  private:
    unsigned int m_Level;
    const char* m_SourcePath;
    int m_SourceLine;
    /// Empty for a record that nobody wants.
    std::optional<std::ostringstream> m_Stream;
};

} // namespace Tavrine
