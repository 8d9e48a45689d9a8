#include "State.h"

#include "Descriptor.h"
#include "JsonFile.h"
#include "SystemMessage.h"

#include <boost/json/serialize.hpp>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace bmcsim
{
namespace
{

namespace fs = std::filesystem;
namespace json = boost::json;

constexpr std::int64_t FormatVersion = 2;
/// Had only what stands in every version.
constexpr std::int64_t FirstVersion = 1;

struct Member
{
    const char* Name;
    json::object Values::*Place;
    std::int64_t Since = FirstVersion;
};

constexpr Member Members[] = {
    {"Effective", &Values::Effective},
    {"Pending", &Values::Pending},
    {"ProtectedEffective", &Values::ProtectedEffective},
    {"ProtectedPending", &Values::ProtectedPending},
    {"Files", &Values::Files, FormatVersion},
    {"Outcome", &Values::Outcome, FormatVersion},
    {"System", &Values::System, FormatVersion},
};

struct Flag
{
    const char* Name;
    bool Values::*Place;
};

constexpr Flag Flags[] = {
    {"DefaultsPending", &Values::DefaultsPending},
    {"PoweredOff", &Values::PoweredOff},
    {"Starting", &Values::Starting},
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
    const json::value* defaults = machine.Bios ? machine.Bios->if_contains("ResetBiosToDefaultsPending") : nullptr;
    values.DefaultsPending = defaults != nullptr && *defaults == true;
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

bool ReadMembers(const json::object& file, std::int64_t version, Values& values, std::string& reason)
{
    for (const Member& member : Members)
    {
        const json::object* object = FindObject(file, member.Name);
        if (object == nullptr && version >= member.Since)
        {
            reason = fmt::format("it has no object \"{}\"", member.Name);
            return false;
        }
        values.*member.Place = object != nullptr ? *object : json::object();
    }
    for (const Flag& flag : Flags)
    {
        const json::value* value = file.if_contains(flag.Name);
        const bool* set = value != nullptr ? value->if_bool() : nullptr;
        if (set == nullptr && version >= FormatVersion)
        {
            reason = fmt::format("it has no boolean \"{}\"", flag.Name);
            return false;
        }
        values.*flag.Place = set != nullptr && *set;
    }
    return true;
}

bool ReadValues(const json::object& file, const std::string& identity, Values& values, std::string& reason)
{
    const json::value* number = file.if_contains("Version");
    const std::int64_t* version = number != nullptr ? number->if_int64() : nullptr;
    if (version == nullptr || *version < FirstVersion || *version > FormatVersion)
    {
        reason = fmt::format("it has no \"Version\" {} to {}", FirstVersion, FormatVersion);
        return false;
    }
    const std::string owner = FindText(file, "Machine");
    if (owner != identity)
    {
        reason = fmt::format("it belongs to machine '{}', this one is '{}'", owner, identity);
        return false;
    }
    return ReadMembers(file, *version, values, reason);
}

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

bool IsNamed(const Descriptor& opened, const std::string& file)
{
    struct stat ours = {};
    struct stat named = {};
    return fstat(opened.Get(), &ours) == 0 && stat(file.c_str(), &named) == 0 && ours.st_dev == named.st_dev &&
           ours.st_ino == named.st_ino;
}

/// By the open file, so that another State of this process is kept out, too, and flock(1) around a whole run is not.
/// @return false where another one has the lock.
bool Lock(const Descriptor& opened)
{
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    return fcntl(opened.Get(), F_OFD_SETLK, &whole) == 0 || (errno != EAGAIN && errno != EACCES);
}

/// Locks the file that bears the name now, for as long as the descriptor lives: what two simulators keep in one file
/// would be lost by turns. Waits for another to end. A file that must not be written, or whose file system has no
/// locks, goes without.
/// @return invalid where the file cannot be opened, or `taken` where another keeps it.
Descriptor LockFile(const std::string& file, std::chrono::milliseconds patience, bool& taken)
{
    constexpr std::chrono::milliseconds pause(20);
    const auto until = std::chrono::steady_clock::now() + patience;
    for (;;)
    {
        Descriptor opened(open(file.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
        if (!opened.Valid())
        {
            opened = Descriptor(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        }
        taken = opened.Valid() && (!Lock(opened) || !IsNamed(opened, file));
        if (!taken || std::chrono::steady_clock::now() >= until)
        {
            return taken ? Descriptor() : std::move(opened);
        }
        std::this_thread::sleep_for(pause); // no lock of an open file is waited for up to a time
    }
}

bool PutInPlace(const std::string& temporary, const std::string& file, bool mayReplace)
{
    if (!mayReplace && renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, file.c_str(), RENAME_NOREPLACE) == 0)
    {
        return true;
    }
    // Not every file system knows that flag.
    return (mayReplace || errno == EINVAL || errno == ENOSYS) && std::rename(temporary.c_str(), file.c_str()) == 0;
}

/// On failure the file is as it was.
/// @param lock  of the file that is replaced; a file that another one has made there meanwhile is not. Of the new
/// one afterwards.
bool ReplaceFile(const std::string& file, const std::string& text, Descriptor& lock)
{
    const fs::path parent = fs::path(file).parent_path();
    const Descriptor folder(open(parent.empty() ? "." : parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::string temporary = file + ".XXXXXX";
    Descriptor made(!folder.Valid() ? -1 : mkostemp(temporary.data(), O_CLOEXEC));
    if (!made.Valid())
    {
        return false;
    }
    const bool written = WriteAll(made.Get(), text) && fsync(made.Get()) == 0;
    if (written)
    {
        Lock(made); // nobody else knows it yet
    }
    if (written && PutInPlace(temporary, file, lock.Valid() && IsNamed(lock, file)))
    {
        // The new file stands; a folder that cannot be synced does not take it back.
        fsync(folder.Get());
        lock = std::move(made);
        return true;
    }
    const int reason = errno;
    unlink(temporary.c_str());
    errno = reason;
    return false;
}

} // namespace

State::State(std::string identity, std::string file, Values values, Descriptor lock)
    : m_Identity(std::move(identity)), m_File(std::move(file)), m_Lock(std::move(lock)),
      m_Values(std::make_shared<const Values>(std::move(values)))
{
}

std::unique_ptr<State> State::Open(const Machine& machine, const std::string& file, std::string& error,
                                   std::chrono::milliseconds patience)
{
    const std::string identity = machine.Identity();
    Values values = InitialValues(machine);
    std::error_code code;
    if (file.empty() || fs::symlink_status(file, code).type() == fs::file_type::not_found)
    {
        std::unique_ptr<State> state(new State(identity, file, values, Descriptor()));
        if (state->Save(*state->m_Values, error))
        {
            return state;
        }
        if (fs::symlink_status(file, code).type() == fs::file_type::not_found)
        {
            return nullptr;
        }
        error.clear(); // another one has just made it
    }
    bool taken = false;
    Descriptor lock = LockFile(file, patience, taken);
    if (taken)
    {
        error = fmt::format("state file '{}' is in use by another simulator", file);
        return nullptr;
    }
    const auto text = ReadTextFile(file, error);
    const auto object = text ? ParseObject(*text, file, error) : std::nullopt;
    std::string reason;
    if (!object || !ReadValues(*object, identity, values, reason))
    {
        error = fmt::format("state file {}", object ? fmt::format("'{}' cannot be used: {}", file, reason) : error);
        return nullptr;
    }
    return std::unique_ptr<State>(new State(identity, file, std::move(values), std::move(lock)));
}

std::shared_ptr<const Values> State::Current() const
{
    const std::lock_guard lock(m_Mutex);
    return m_Values;
}

bool State::Update(const std::function<bool(Values&)>& change)
{
    const std::lock_guard onlyChange(m_ChangeMutex);
    auto values = std::make_shared<Values>(*Current());
    if (!change(*values))
    {
        return true;
    }
    std::string error;
    const bool saved = Save(*values, error);
    const std::lock_guard lock(m_Mutex);
    if (saved)
    {
        m_Values = std::move(values);
    }
    else
    {
        m_Trouble = error;
    }
    return saved;
}

std::string State::Trouble() const
{
    const std::lock_guard lock(m_Mutex);
    return m_Trouble;
}

bool State::Save(const Values& values, std::string& error)
{
    if (m_File.empty())
    {
        return true;
    }
    json::object file{{"Version", FormatVersion}, {"Machine", m_Identity}};
    for (const Member& member : Members)
    {
        file.emplace(member.Name, values.*member.Place);
    }
    for (const Flag& flag : Flags)
    {
        file.emplace(flag.Name, values.*flag.Place);
    }
    if (!ReplaceFile(m_File, json::serialize(file) + "\n", m_Lock))
    {
        error = fmt::format("cannot write state file '{}': {}", m_File, SystemMessage(errno));
        return false;
    }
    return true;
}

} // namespace bmcsim
