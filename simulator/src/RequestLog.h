#pragma once

#include "BmcSimulator.h"
#include "Descriptor.h"
#include "HttpServer.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace bmcsim
{

/// Keeps the records of the requests in memory and, where a file is named, adds a
/// JSON line for each to it.
class RequestLog
{
  public:
    /// The memory of a simulator that runs for weeks must end somewhere; older
    /// records then stand in the file alone.
    static constexpr std::size_t MaxRecords = 100'000;

    /// @param file  empty: none.
    /// @return empty when the file cannot be opened; error names it.
    static std::unique_ptr<RequestLog> Open(const std::string& file, std::string& error);
    RequestLog(const RequestLog&) = delete;
    RequestLog& operator=(const RequestLog&) = delete;

    void Add(const HttpRecord& record);
    std::vector<AccessRecord> Records() const;
    std::string Trouble() const;

  private:
    RequestLog(std::string file, Descriptor descriptor);

    const std::string m_File;
    const Descriptor m_Descriptor;
    mutable std::mutex m_Mutex;
    std::deque<AccessRecord> m_Records;
    std::string m_Trouble;
};

} // namespace bmcsim
