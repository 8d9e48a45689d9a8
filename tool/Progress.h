#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace Tavrine::Tool
{

/// Tells on standard error, where that is a terminal, what takes long: one line, once,
/// when this lives for longer than the patience.
class Progress
{
  public:
    explicit Progress(std::string line, std::chrono::milliseconds patience = std::chrono::seconds(1));
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

  private:
    std::mutex m_Mutex;
    std::condition_variable m_Wake;
    bool m_Done = false;
    std::thread m_Thread;
};

} // namespace Tavrine::Tool
