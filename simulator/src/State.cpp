#include "State.h"

#include "JsonFile.h"

#include <boost/json/serialize.hpp>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <system_error>
#include <unistd.h>

namespace bmcsim
{
namespace
{

namespace fs = std::filesystem;
namespace json = boost::json;

constexpr std::int64_t FormatVersion = 1;

struct Member
{
    const char* Name;
    json::object Values::*Place;
};

constexpr Member Members[] = {
    {"Effective", &Values::Effective},
    {"Pending", &Values::Pending},
    {"ProtectedEffective", &Values::ProtectedEffective},
    {"ProtectedPending", &Values::ProtectedPending},
};

/// What a settings object from a file says beyond the values in force is pending.
json::object Differences(const json::object& settings, const json::object& effective)
{
    json::object pending;
    for (const auto& [name, value] : settings)
    {
        const json::value* now = effective.if_contains(name);
        if (now == nullptr || *now != value)
        {
            pending.emplace(name, value);
        }
    }
    return pending;
}

Values InitialValues(const Machine& machine)
{
    Values values;
    const json::object* attributes = machine.Bios ? FindObject(*machine.Bios, "Attributes") : nullptr;
    if (attributes != nullptr)
    {
        values.Effective = *attributes;
    }
    const json::object* settings = machine.Settings ? FindObject(*machine.Settings, "Attributes") : nullptr;
    if (settings != nullptr)
    {
        values.Pending = Differences(*settings, values.Effective);
    }
    if (machine.Protected)
    {
        values.ProtectedEffective = *machine.Protected;
    }
    return values;
}

bool ReadValues(const json::object& file, const std::string& identity, Values& values, std::string& reason)
{
    const json::value* version = file.if_contains("Version");
    if (version == nullptr || *version != FormatVersion)
    {
        reason = fmt::format("it has no \"Version\" {}", FormatVersion);
        return false;
    }
    const std::string owner = FindText(file, "Machine");
    if (owner != identity)
    {
        reason = fmt::format("it belongs to machine '{}', this one is '{}'", owner, identity);
        return false;
    }
    for (const Member& member : Members)
    {
        const json::object* object = FindObject(file, member.Name);
        if (object == nullptr)
        {
            reason = fmt::format("it has no object \"{}\"", member.Name);
            return false;
        }
        values.*member.Place = *object;
    }
    return true;
}

std::string SystemMessage() { return std::generic_category().message(errno); }

bool WriteAll(int descriptor, const std::string& text)
{
    std::size_t done = 0;
    while (done < text.size())
    {
        const ssize_t count = write(descriptor, text.data() + done, text.size() - done);
        if (count < 0 && errno != EINTR)
        {
            return false;
        }
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return true;
}

/// A rename is lasting only when its folder is on the disk as well.
bool SyncFolder(const fs::path& file)
{
    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
    {
        return false;
    }
    const bool synced = fsync(descriptor) == 0;
    close(descriptor);
    return synced;
}

bool ReplaceFile(const std::string& file, const std::string& text)
{
    std::string temporary = file + ".XXXXXX";
    const int descriptor = mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor < 0)
    {
        return false;
    }
    const bool written = WriteAll(descriptor, text) && fsync(descriptor) == 0;
    const bool closed = close(descriptor) == 0;
    if (written && closed && std::rename(temporary.c_str(), file.c_str()) == 0)
    {
        return SyncFolder(file);
    }
    const int reason = errno;
    unlink(temporary.c_str());
    errno = reason;
    return false;
}

} // namespace

State::State(std::string identity, std::string file, Values values)
    : m_Identity(std::move(identity)), m_File(std::move(file)), m_Values(std::move(values))
{
}

std::unique_ptr<State> State::Open(const Machine& machine, const std::string& file, std::string& error)
{
    std::unique_ptr<State> state(new State(machine.Identity(), file, InitialValues(machine)));
    if (file.empty())
    {
        return state;
    }
    std::error_code code;
    if (fs::symlink_status(file, code).type() == fs::file_type::not_found)
    {
        return state->Save(error) ? std::move(state) : nullptr;
    }
    const auto text = ReadTextFile(file, error);
    const auto object = text ? ParseObject(*text, file, error) : std::nullopt;
    std::string reason;
    if (object && ReadValues(*object, state->m_Identity, state->m_Values, reason))
    {
        return state;
    }
    error = fmt::format("state file {}", object ? fmt::format("'{}' cannot be used: {}", file, reason) : error);
    return nullptr;
}

Values State::Snapshot() const
{
    const std::lock_guard lock(m_Mutex);
    return m_Values;
}

bool State::Replace(Values values)
{
    const std::lock_guard lock(m_Mutex);
    m_Values = std::move(values);
    std::string error;
    const bool saved = m_File.empty() || Save(error);
    m_Trouble = saved ? m_Trouble : error;
    return saved;
}

std::string State::Trouble() const
{
    const std::lock_guard lock(m_Mutex);
    return m_Trouble;
}

bool State::Save(std::string& error) const
{
    json::object file{{"Version", FormatVersion}, {"Machine", m_Identity}};
    for (const Member& member : Members)
    {
        file.emplace(member.Name, m_Values.*member.Place);
    }
    if (!ReplaceFile(m_File, json::serialize(file) + "\n"))
    {
        error = fmt::format("cannot write state file '{}': {}", m_File, SystemMessage());
        return false;
    }
    return true;
}

} // namespace bmcsim
