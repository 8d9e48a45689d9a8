#include "Confirmation.h"

#include <cstddef>
#include <termios.h>
#include <unistd.h>

#include "Options.h"
#include "Progress.h"
#include "Signals.h"
#include "StandardStreams.h"

namespace Tavrine::Tool
{
namespace
{

constexpr std::size_t LongestReply = 16;
/// A terminal hands no longer line over, unless it does not wait for lines.
constexpr std::size_t LongestLine = 4096;

bool HasTerminal() { return isatty(STDIN_FILENO) == 1 && isatty(STDERR_FILENO) == 1; }

/// The begin of a line as the terminal hands it over, without its end. The rest of it is taken from the terminal as
/// well: it would be a command to the shell that reads there next.
std::string ReadReply()
{
    std::string reply;
    char byte = 0;
    for (std::size_t count = 0; WaitForInput(STDIN_FILENO) && read(STDIN_FILENO, &byte, 1) == 1 && byte != '\n';
         ++count)
    {
        if (count == LongestLine)
        {
            tcflush(STDIN_FILENO, TCIFLUSH);
            break;
        }
        if (count < LongestReply)
        {
            reply.push_back(byte);
        }
    }
    return reply;
}

} // namespace

std::string ConfirmationFault(const Options& options, const std::string& what)
{
    return options.Yes || HasTerminal() ? std::string() : what + "; without a terminal to ask on it needs --yes";
}

std::optional<Failure> Confirm(const Options& options, const std::string& what)
{
    if (options.Yes)
    {
        return std::nullopt;
    }
    const Progress::Pause pause;
    WriteError(what + ". Type yes to go on: ");
    if (ReadReply() == "yes")
    {
        return std::nullopt;
    }
    return Failure{StatusUsage, "Not confirmed, nothing was sent"};
}

} // namespace Tavrine::Tool
