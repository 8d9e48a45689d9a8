#include "InputFile.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <fmt/format.h>

#include "Signals.h"

namespace Tavrine::Tool
{
namespace
{

std::string WhyNothingCame() { return StopSignal() != 0 ? "interrupted" : std::strerror(errno); }

std::string ReadDescriptor(int descriptor, std::size_t most, FileContent& content)
{
    struct stat kind = {};
    const bool isKnown = fstat(descriptor, &kind) == 0;
    if (isKnown && S_ISDIR(kind.st_mode))
    {
        return std::strerror(EISDIR);
    }
    content.IsPlainFile = isKnown && S_ISREG(kind.st_mode);
    std::array<char, 65536> buffer{};
    for (;;)
    {
        std::string error;
        const std::optional<std::size_t> count = ReadSome(descriptor, buffer.data(), buffer.size(), error);
        if (count.value_or(0) == 0)
        {
            return error;
        }
        content.Text.append(buffer.data(), *count);
        if (content.Text.size() > most)
        {
            return fmt::format("it is larger than {} bytes", most);
        }
    }
}

std::string WhyNoFirstByte(const std::string& path)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    char byte = 0;
    std::string error = file >= 0 && read(file, &byte, 1) >= 0 ? "" : std::strerror(errno);
    if (file >= 0)
    {
        close(file);
    }
    return error;
}

} // namespace

std::optional<std::size_t> ReadSome(int descriptor, char* buffer, std::size_t most, std::string& error)
{
    while (WaitForInput(descriptor))
    {
        const ssize_t count = read(descriptor, buffer, most);
        if (count >= 0)
        {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR)
        {
            error = std::strerror(errno);
            return std::nullopt;
        }
    }
    error = WhyNothingCame();
    return std::nullopt;
}

std::string ReadWholeFile(const std::string& path, std::size_t most, FileContent& content)
{
    if (path == "-")
    {
        return ReadDescriptor(STDIN_FILENO, most, content);
    }
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC); // of a named pipe, once somebody writes into it
    if (descriptor < 0)
    {
        return WhyNothingCame();
    }
    std::string error = ReadDescriptor(descriptor, most, content);
    close(descriptor);
    return error;
}

std::string InputName(const std::string& path) { return path == "-" ? "standard input" : "the file " + path; }

std::string InputNameFirst(const std::string& path) { return path == "-" ? "Standard input" : "The file " + path; }

std::optional<Failure> LoadFile(const std::string& path, std::size_t most, FileContent& content)
{
    const std::string error = ReadWholeFile(path, most, content);
    return error.empty() ? std::nullopt
                         : std::optional(Failure{CodeOpenFile, "Unable to read " + InputName(path) + ": " + error});
}

std::string WhyNotReadable(const std::string& path, Reading reading)
{
    struct stat kind = {};
    if (stat(path.c_str(), &kind) != 0)
    {
        return std::strerror(errno);
    }
    if (S_ISREG(kind.st_mode) || S_ISDIR(kind.st_mode))
    {
        return WhyNoFirstByte(path);
    }
    if (reading == Reading::Often)
    {
        return "it is no plain file, and is read more than once";
    }
    // Opened and closed, a named pipe would lose the one who writes into it.
    return access(path.c_str(), R_OK) == 0 ? "" : std::strerror(errno);
}

} // namespace Tavrine::Tool
