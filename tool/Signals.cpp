#include "Signals.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <poll.h>

#include "BmcConnection.h"

namespace Tavrine::Tool
{
namespace
{

constexpr std::array StopSignals = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t caughtSignal = 0;

void OnStop(int signal)
{
    if (caughtSignal != 0)
    {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
        return;
    }
    caughtSignal = signal;
    TavrineConnection::BmcConnection::AbortRequests();
}

bool WaitFor(int descriptor, short event)
{
    if (descriptor < 0)
    {
        errno = EBADF; // ppoll would wait for ever
        return false;
    }
    const HeldStopSignals held;
    pollfd awaited{descriptor, event, 0};
    int ready = -1;
    // Signals get through inside ppoll alone, so none can come between test and wait.
    while (StopSignal() == 0 && ready < 0)
    {
        ready = ppoll(&awaited, 1, nullptr, &held.Former());
        if (ready < 0 && errno != EINTR)
        {
            break;
        }
    }
    return ready > 0;
}

} // namespace

void InstallStopSignals()
{
    struct sigaction action
    {
    };
    action.sa_handler = OnStop;
    sigemptyset(&action.sa_mask);
    for (const int signal : StopSignals)
    {
        struct sigaction former
        {
        };
        sigaction(signal, nullptr, &former);
        if (former.sa_handler != SIG_IGN)
        {
            sigaction(signal, &action, nullptr);
        }
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

int StopSignal() { return caughtSignal; }

HeldStopSignals::HeldStopSignals()
{
    sigset_t stops;
    sigemptyset(&stops);
    for (const int signal : StopSignals)
    {
        sigaddset(&stops, signal);
    }
    for (const int signal : {SIGQUIT, SIGTSTP})
    {
        sigaddset(&stops, signal);
    }
    pthread_sigmask(SIG_BLOCK, &stops, &m_Former);
}

HeldStopSignals::~HeldStopSignals() { pthread_sigmask(SIG_SETMASK, &m_Former, nullptr); }

bool WaitForInput(int descriptor) { return WaitFor(descriptor, POLLIN); }

bool WaitForOutput(int descriptor) { return WaitFor(descriptor, POLLOUT); }

} // namespace Tavrine::Tool
