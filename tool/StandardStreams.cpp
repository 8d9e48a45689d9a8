#include "StandardStreams.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include "Signals.h"

namespace Tavrine::Tool
{
namespace
{

/// @return 0 when all is written, else errno.
int WriteAll(int descriptor, std::string_view text)
{
    while (!text.empty())
    {
        const ssize_t count = write(descriptor, text.data(), text.size());
        const int cause = count < 0 ? errno : 0;
        if (cause == 0)
        {
            text.remove_prefix(static_cast<std::size_t>(count));
        }
        else if (cause == EAGAIN)
        {
            // Whoever shares the descriptor has made it one that does not wait.
            if (!WaitForOutput(descriptor))
            {
                return StopSignal() != 0 ? EINTR : errno;
            }
        }
        else if (cause != EINTR || StopSignal() != 0)
        {
            return cause;
        }
    }
    return 0;
}

} // namespace

void ReserveStandardStreams()
{
    struct Place
    {
        int Number;
        int WrongMode;
    };
    for (const auto& [number, wrongMode] :
         std::array<Place, 3>{{{STDIN_FILENO, O_WRONLY}, {STDOUT_FILENO, O_RDONLY}, {STDERR_FILENO, O_RDONLY}}})
    {
        if (fcntl(number, F_GETFD) == -1)
        {
            open("/dev/null", wrongMode); // takes the lowest free number, which is this one
        }
    }
}

std::string WriteOutput(std::string_view text)
{
    const int cause = WriteAll(STDOUT_FILENO, text);
    return cause == 0 || cause == EPIPE ? std::string() : std::strerror(cause);
}

void WriteError(std::string_view text) { WriteAll(STDERR_FILENO, text); }

} // namespace Tavrine::Tool
