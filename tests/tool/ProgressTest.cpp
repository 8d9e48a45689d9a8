#include "Progress.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <pthread.h>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <unistd.h>

using namespace Tavrine::Tool;

namespace
{

/// Standard error is a terminal while this lives.
class ErrorTerminal
{
  public:
    ErrorTerminal() : m_Terminal(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)), m_Former(dup(STDERR_FILENO))
    {
        if (m_Terminal < 0 || grantpt(m_Terminal) != 0 || unlockpt(m_Terminal) != 0)
        {
            throw std::runtime_error("no terminal");
        }
        const int other = open(ptsname(m_Terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
        dup2(other, STDERR_FILENO);
        close(other);
    }
    ErrorTerminal(const ErrorTerminal&) = delete;
    ErrorTerminal& operator=(const ErrorTerminal&) = delete;
    ~ErrorTerminal()
    {
        dup2(m_Former, STDERR_FILENO);
        close(m_Former);
        close(m_Terminal);
    }

    /// What is shown next; waits for it.
    std::string Line() const
    {
        std::string text(1000, '\0');
        const ssize_t size = read(m_Terminal, text.data(), text.size());
        text.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        return text;
    }

  private:
    int m_Terminal;
    int m_Former;
};

/// No thread can be started while this lives: each would need more memory than there can be.
class NoThreads
{
  public:
    NoThreads()
    {
        pthread_getattr_default_np(&m_Former);
        pthread_attr_t huge = m_Former;
        pthread_attr_setstacksize(&huge, std::size_t{1} << 60U);
        EXPECT_EQ(pthread_setattr_default_np(&huge), 0);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;
    ~NoThreads()
    {
        pthread_setattr_default_np(&m_Former);
        pthread_attr_destroy(&m_Former);
    }

  private:
    pthread_attr_t m_Former{};
};

} // namespace

TEST(Progress, WhatTakesLongIsTold)
{
    const ErrorTerminal terminal;
    const Progress progress("reading", std::chrono::milliseconds(0));
    EXPECT_EQ(terminal.Line(), "tavrine: reading\r\n");
}

TEST(Progress, ARunGoesOnWithoutAThreadToTellOfIt)
{
    const ErrorTerminal terminal;
    const NoThreads none;
    EXPECT_THROW(std::thread([] {}).join(), std::system_error);
    const Progress progress("reading", std::chrono::milliseconds(0));
    const Progress::Pause pause;
}
