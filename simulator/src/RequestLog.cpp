#include "RequestLog.h"

#include "SystemMessage.h"

#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

namespace bmcsim
{
namespace
{

/// A request line may hold any bytes; the log is UTF-8.
std::string PlainText(const std::string& target)
{
    std::string text;
    for (const char c : target)
    {
        const auto byte = static_cast<unsigned char>(c);
        text += byte < 0x80 ? std::string(1, c) : fmt::format("%{:02X}", byte);
    }
    return text;
}

std::string Line(const HttpRecord& record)
{
    // Written by hand but for the texts, since the time is best read as a plain
    // decimal fraction.
    return fmt::format("{{\"method\":{},\"path\":{},\"status\":{},\"bytes\":{},\"connection\":{},\"ms\":{}.{:03}}}\n",
                       boost::json::serialize(boost::json::value(PlainText(record.Method))),
                       boost::json::serialize(boost::json::value(PlainText(record.Target))), record.Status,
                       record.Bytes, record.Connection, record.Duration.count() / 1000, record.Duration.count() % 1000);
}

} // namespace

RequestLog::RequestLog(std::string file, Descriptor descriptor)
    : m_File(std::move(file)), m_Descriptor(std::move(descriptor))
{
}

std::unique_ptr<RequestLog> RequestLog::Open(const std::string& file, std::string& error)
{
    Descriptor descriptor;
    if (!file.empty())
    {
        descriptor = Descriptor(open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
        if (!descriptor.Valid())
        {
            error = fmt::format("cannot open access log '{}': {}", file, SystemMessage(errno));
            return nullptr;
        }
    }
    return std::unique_ptr<RequestLog>(new RequestLog(file, std::move(descriptor)));
}

void RequestLog::Add(const HttpRecord& record)
{
    const std::string line = m_Descriptor.Valid() ? Line(record) : std::string();
    const std::lock_guard lock(m_Mutex);
    if (m_Records.size() >= MaxRecords)
    {
        m_Records.pop_front();
    }
    m_Records.push_back({record.Method, record.Target, record.Status, record.Bytes, record.Connection});
    if (m_Descriptor.Valid())
    {
        const ssize_t written = write(m_Descriptor.Get(), line.data(), line.size());
        if (written != static_cast<ssize_t>(line.size()))
        {
            // Of a line that was written in part the system gives no reason.
            const std::string reason = written < 0
                                           ? SystemMessage(errno)
                                           : fmt::format("{} of a line's {} bytes were written", written, line.size());
            m_Trouble = fmt::format("cannot write access log '{}': {}", m_File, reason);
        }
    }
}

std::vector<AccessRecord> RequestLog::Records() const
{
    const std::lock_guard lock(m_Mutex);
    return {m_Records.begin(), m_Records.end()};
}

std::string RequestLog::Trouble() const
{
    const std::lock_guard lock(m_Mutex);
    return m_Trouble;
}

} // namespace bmcsim
