#include "Confirmation.h"

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

bool HasTerminal() { return isatty(STDIN_FILENO) == 1 && isatty(STDERR_FILENO) == 1; }

/// A line as the terminal hands it over, without its end.
std::string ReadReply()
{
    std::string reply;
    char byte = 0;
    while (reply.size() < LongestReply && WaitForInput(STDIN_FILENO) && read(STDIN_FILENO, &byte, 1) == 1 &&
           byte != '\n')
    {
        reply.push_back(byte);
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
    return Failure{StatusUsage, "Not confirmed, nothing was sent", {}, {}};
}

} // namespace Tavrine::Tool
