#include "Dispatch.h"

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tavrine::Logging
{

namespace
{

void AppendHexByte(std::string& line, unsigned char byte)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    line += "\\x";
    line += digits[byte >> 4U];
    line += digits[byte & 0x0FU];
}

bool IsControl(unsigned char byte) { return byte < 0x20 || byte == 0x7F; }

// U+0080 to U+009F in UTF-8, which terminals obey as well.
bool IsWideControl(unsigned char first, unsigned char second)
{
    return first == 0xC2 && second >= 0x80 && second < 0xA0;
}

void AppendEscaped(std::string& line, std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : static_cast<unsigned char>(0);
        if (text[i] == '\n' || text[i] == '\t')
        {
            line += text[i] == '\n' ? "\\n" : "\\t";
        }
        else if (IsWideControl(byte, next))
        {
            AppendHexByte(line, byte);
            AppendHexByte(line, next);
            ++i;
        }
        else if (IsControl(byte))
        {
            AppendHexByte(line, byte);
        }
        else
        {
            line += text[i];
        }
    }
}

std::string UtcTime(std::chrono::system_clock::time_point when)
{
    using namespace std::chrono;
    const auto seconds = floor<std::chrono::seconds>(when);
    const auto micros = duration_cast<microseconds>(when - seconds).count();
    const std::time_t clock = system_clock::to_time_t(seconds);
    std::tm parts{};
    if (gmtime_r(&clock, &parts) == nullptr)
    {
        return "-";
    }
    char text[64];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    char fraction[32];
    std::snprintf(fraction, sizeof fraction, ".%06lldZ", static_cast<long long>(micros));
    return std::string(text, length) + fraction;
}

std::string Cause(const std::string& path, int error) { return path + ": " + std::generic_category().message(error); }

// Makes a missing file for the owner alone, whatever the umask says, before
// spdlog opens it; a file that is there keeps its mode.
bool EnsureLogFile(const std::string& path, std::string& error)
{
    int file = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    const bool isNew = file >= 0;
    if (!isNew && errno == EEXIST)
    {
        file = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    }
    if (file < 0)
    {
        error = Cause(path, errno);
        return false;
    }
    const int failure = isNew && ::fchmod(file, 0600) != 0 ? errno : 0;
    ::close(file);
    error = failure != 0 ? Cause(path, failure) : error;
    return failure == 0;
}

} // namespace

std::string FormatLine(const LogRecord& record)
{
    std::string line = UtcTime(record.Time) + ' ' + std::to_string(record.Level) + " [";
    AppendEscaped(line, record.Context);
    line += "] ";
    AppendEscaped(line, record.SourcePath);
    line += ':' + std::to_string(record.SourceLine) + ' ';
    AppendEscaped(line, record.Text);
    return line;
}

SinkId AddFileSink(const std::string& path, unsigned int maxLevel, std::string& error)
{
    if (!EnsureLogFile(path, error))
    {
        return 0;
    }
    try
    {
        // Without spdlog's own lock: sinks are called one at a time.
        auto file = std::make_shared<spdlog::sinks::basic_file_sink_st>(path);
        file->set_pattern("%v");
        return AddSink(maxLevel,
                       [file](const LogRecord& record)
                       {
                           const std::string line = FormatLine(record);
                           file->log(spdlog::details::log_msg("", spdlog::level::info, line));
                           file->flush();
                       });
    }
    catch (const std::exception& failure)
    {
        error = path + ": " + failure.what();
        return 0;
    }
}

} // namespace Tavrine::Logging
