#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace Tavrine::Tool
{

/// Tells on standard error, where that is a terminal, what takes long: one line, once,
/// when this lives for longer than the patience; nothing where no thread can be started.
class Progress
{
  public:
    explicit Progress(std::string line, std::chrono::milliseconds patience = std::chrono::seconds(1));
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// While it lives, somebody is asked something: nothing is told meanwhile, and the patience begins anew
    /// behind it. It must not outlive the object that was the last to be made.
    class Pause
    {
      public:
        Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;
        ~Pause();

      private:
        Progress* m_Paused;
    };

  private:
    /// What the thread does.
    void Tell(const std::string& line, std::chrono::milliseconds patience);
    void Set(bool Progress::*state, bool value);

    std::mutex m_Mutex;
    std::condition_variable m_Wake;
    bool m_Done = false;
    bool m_Held = false;
    std::thread m_Thread;
};

} // namespace Tavrine::Tool
