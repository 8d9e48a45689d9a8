#include "RegistryStore.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <random>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <fmt/format.h>
#define XXH_INLINE_ALL
#include <xxhash.h>

#include "JsonText.h"
#include "Log.h"
#include "TlsCheck.h"

namespace Tavrine
{

namespace
{

namespace json = boost::json;

constexpr std::int64_t Format = 3;
constexpr std::uint64_t MaxEntryBytes = 64U * 1024U;
constexpr std::size_t DigestDigits = 64;
/// "DIGEST.entry" leads from a key to "DIGEST.text"; anything else in the folder is not
/// the store's.
constexpr std::string_view EntryEnd = ".entry";
constexpr std::string_view TextEnd = ".text";
constexpr std::string_view UnfinishedEnd = ".new";
/// What a process that died has left behind.
constexpr std::time_t UnfinishedSeconds = 3600;

class Descriptor
{
  public:
    explicit Descriptor(int value = -1) : m_Value(value) {}
    Descriptor(Descriptor&& other) noexcept : m_Value(std::exchange(other.m_Value, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor()
    {
        if (m_Value >= 0)
        {
            close(m_Value);
        }
    }
    int Get() const { return m_Value; }
    void Release() { m_Value = -1; }
    explicit operator bool() const { return m_Value >= 0; }

  private:
    int m_Value;
};

std::string Cause() { return std::strerror(errno); }

void Tell(const std::string& folder, const std::string& text)
{
    Log(3, __FILE__, __LINE__).Stream() << "Registries are not kept in " << folder << ": " << text;
}

std::string EntryName(const std::string& key) { return Sha256Text(Sha256Of(key)).append(EntryEnd); }
std::string TextName(const std::string& digest) { return digest + std::string(TextEnd); }

/// The folder, or why it is not used.
Descriptor OpenFolder(const std::string& folder, std::string& fault)
{
    Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat state = {};
    if (!opened || fstat(opened.Get(), &state) != 0)
    {
        fault = Cause();
        return Descriptor();
    }
    // What another user may put there is what that user says, not what the BMC said.
    if (state.st_uid != geteuid() || (state.st_mode & (S_IWGRP | S_IWOTH)) != 0)
    {
        fault = "others can write to it";
        return Descriptor();
    }
    return opened;
}

Descriptor MakeFolder(const std::string& folder, std::string& fault)
{
    const std::string above = folder.substr(0, folder.find_last_of('/'));
    for (const std::string& each : {above, folder})
    {
        if (!each.empty() && mkdir(each.c_str(), 0700) != 0 && errno != EEXIST)
        {
            fault = Cause();
            return Descriptor();
        }
    }
    return OpenFolder(folder, fault);
}

/// The content of a file of this user within the limit; nothing otherwise.
std::optional<std::string> ReadFile(const Descriptor& folder, const std::string& name, std::uint64_t limit)
{
    // A pipe of that name must not hold anyone up.
    const Descriptor file(openat(folder.Get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat state = {};
    if (!file || fstat(file.Get(), &state) != 0 || !S_ISREG(state.st_mode) || state.st_uid != geteuid() ||
        static_cast<std::uint64_t>(state.st_size) > limit)
    {
        return std::nullopt;
    }
    std::string content(static_cast<std::size_t>(state.st_size), '\0');
    std::size_t have = 0;
    while (have < content.size())
    {
        const ssize_t count = read(file.Get(), content.data() + have, content.size() - have);
        if (count == 0 || (count < 0 && errno != EINTR))
        {
            return std::nullopt;
        }
        have += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    return content;
}

bool WriteAll(int file, std::string_view text)
{
    while (!text.empty())
    {
        const ssize_t count = write(file, text.data(), text.size());
        if (count < 0 && errno != EINTR)
        {
            return false;
        }
        text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return true;
}

/// Not synced to the disk: what a power failure leaves half-written is found out by its checksum.
bool WriteFile(const Descriptor& folder, const std::string& name, std::string_view content)
{
    std::random_device random;
    const std::string draft = fmt::format("{}-{:08x}{:08x}{}", name, random(), random(), UnfinishedEnd);
    const Descriptor file(openat(folder.Get(), draft.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file)
    {
        return false;
    }
    if (WriteAll(file.Get(), content) && renameat(folder.Get(), draft.c_str(), folder.Get(), name.c_str()) == 0)
    {
        return true;
    }
    const int cause = errno;
    unlinkat(folder.Get(), draft.c_str(), 0);
    errno = cause;
    return false;
}

void MarkUsed(const Descriptor& folder, const std::string& name)
{
    if (utimensat(folder.Get(), name.c_str(), nullptr, AT_SYMLINK_NOFOLLOW) != 0)
    {
        // It stands among the older ones then, no more.
        Log(4, __FILE__, __LINE__).Stream() << "The time of " << name << " stays: " << Cause();
    }
}

struct Entry
{
    std::string Path;
    std::string Tag;
    std::string Digest;
    std::string Checksum;
};

/// Against damage, not against people, whom the folder keeps out; a digest takes many times as long at each read.
std::string ChecksumOf(std::string_view text) { return fmt::format("{:016x}", XXH3_64bits(text.data(), text.size())); }

bool IsDigest(std::string_view text)
{
    return text.size() == DigestDigits && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

std::optional<Entry> ReadEntry(const std::string& content, const std::string& key)
{
    const std::optional<json::value> document = ParseJson(content);
    const json::value* const root = document ? &*document : nullptr;
    const json::value* const format = Member(root, "Format");
    Entry entry{std::string(TextMember(root, "Path")), std::string(TextMember(root, "ETag")),
                std::string(TextMember(root, "Sha256")), std::string(TextMember(root, "Xxh3"))};
    const bool good = format != nullptr && *format == Format && TextMember(root, "Key") == key &&
                      IsDigest(entry.Digest) && !entry.Checksum.empty() && !entry.Tag.empty() && !entry.Path.empty();
    return good ? std::optional(std::move(entry)) : std::nullopt;
}

struct FileOnDisk
{
    std::string Name;
    std::uint64_t Bytes = 0;
    std::int64_t Seconds = 0;
    std::int64_t Nanoseconds = 0;
};

enum class FileKind
{
    Foreign,
    Kept,
    Unfinished,
};

FileKind KindOf(std::string_view name)
{
    if (!IsDigest(name.substr(0, DigestDigits)))
    {
        return FileKind::Foreign;
    }
    const std::string_view rest = name.substr(DigestDigits);
    if (rest == EntryEnd || rest == TextEnd)
    {
        return FileKind::Kept;
    }
    const bool started = rest.starts_with(std::string(EntryEnd) + "-") || rest.starts_with(std::string(TextEnd) + "-");
    return started && rest.ends_with(UnfinishedEnd) ? FileKind::Unfinished : FileKind::Foreign;
}

/// The files of the store; those that were never finished are removed on the way.
std::vector<FileOnDisk> ListFiles(const Descriptor& folder)
{
    std::vector<FileOnDisk> files;
    Descriptor copy(openat(folder.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(copy ? fdopendir(copy.Get()) : nullptr, &closedir);
    if (listing)
    {
        copy.Release(); // the listing closes it
    }
    const std::time_t now = std::time(nullptr);
    while (const dirent* const found = listing ? readdir(listing.get()) : nullptr)
    {
        const FileKind kind = KindOf(found->d_name);
        struct stat state = {};
        if (kind == FileKind::Foreign || fstatat(folder.Get(), found->d_name, &state, AT_SYMLINK_NOFOLLOW) != 0)
        {
            continue;
        }
        if (kind == FileKind::Kept)
        {
            files.push_back({found->d_name, static_cast<std::uint64_t>(state.st_size), state.st_mtim.tv_sec,
                             state.st_mtim.tv_nsec});
        }
        else if (state.st_mtim.tv_sec < now - UnfinishedSeconds)
        {
            unlinkat(folder.Get(), found->d_name, 0);
        }
    }
    return files;
}

void Prune(const Descriptor& folder, const RegistryStore::Limits& limits)
{
    std::vector<FileOnDisk> files = ListFiles(folder);
    std::sort(files.begin(), files.end(),
              [](const FileOnDisk& one, const FileOnDisk& other)
              { return std::pair(one.Seconds, one.Nanoseconds) > std::pair(other.Seconds, other.Nanoseconds); });
    std::uint64_t bytes = 0;
    for (std::size_t i = 0; i < files.size(); ++i)
    {
        bytes += files[i].Bytes;
        if (bytes > limits.MaxFolderBytes || i >= limits.MaxFiles)
        {
            unlinkat(folder.Get(), files[i].Name.c_str(), 0);
        }
    }
}

bool IsThere(const Descriptor& folder, const std::string& name, std::uint64_t bytes)
{
    struct stat state = {};
    return fstatat(folder.Get(), name.c_str(), &state, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(state.st_mode) &&
           static_cast<std::uint64_t>(state.st_size) == bytes;
}

} // namespace

RegistryStore::RegistryStore(std::string folder, Limits limits) : m_Folder(std::move(folder)), m_Limits(limits)
{
    while (m_Folder.size() > 1 && m_Folder.back() == '/')
    {
        m_Folder.pop_back();
    }
    if (!m_Folder.empty() && m_Folder.front() != '/')
    {
        Tell(m_Folder, "the path is not absolute");
        m_Folder.clear();
    }
}

std::optional<StoredText> RegistryStore::Load(const std::string& key) const
{
    std::string fault;
    const Descriptor folder = IsOn() ? OpenFolder(m_Folder, fault) : Descriptor();
    const std::string name = EntryName(key);
    if (!folder || faccessat(folder.Get(), name.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) != 0)
    {
        return std::nullopt; // nothing was kept yet; why nothing can be is told by Save
    }
    const std::optional<std::string> content = ReadFile(folder, name, MaxEntryBytes);
    const std::optional<Entry> entry = content ? ReadEntry(*content, key) : std::nullopt;
    if (!entry)
    {
        Log(3, __FILE__, __LINE__).Stream() << "A damaged file is removed: " << m_Folder << "/" << name;
        unlinkat(folder.Get(), name.c_str(), 0);
        return std::nullopt;
    }
    const std::string textName = TextName(entry->Digest);
    std::optional<std::string> text = ReadFile(folder, textName, m_Limits.MaxTextBytes);
    if (!text || ChecksumOf(*text) != entry->Checksum)
    {
        // Other entries may lead to a text that is whole; what cannot be read must not stand in its place.
        const bool whole = text && Sha256Text(Sha256Of(*text)) == entry->Digest;
        Log(3, __FILE__, __LINE__).Stream()
            << (whole ? "A damaged file is removed: " : "A damaged or missing file is given up: ") << m_Folder << "/"
            << (whole ? name : textName);
        if (!whole)
        {
            unlinkat(folder.Get(), textName.c_str(), 0);
        }
        unlinkat(folder.Get(), name.c_str(), 0);
        return std::nullopt;
    }
    MarkUsed(folder, textName);
    MarkUsed(folder, name);
    return StoredText{entry->Path, entry->Tag, std::move(*text)};
}

void RegistryStore::Save(const std::string& key, const StoredText& stored) const
{
    if (!IsOn() || stored.Tag.empty())
    {
        return;
    }
    if (stored.Text.size() > m_Limits.MaxTextBytes)
    {
        Tell(m_Folder, "one is larger than " + std::to_string(m_Limits.MaxTextBytes) + " bytes");
        return;
    }
    std::string fault;
    const Descriptor folder = MakeFolder(m_Folder, fault);
    if (!folder)
    {
        Tell(m_Folder, fault);
        return;
    }
    const std::string digest = Sha256Text(Sha256Of(stored.Text));
    const std::string entry = json::serialize(json::object{{"Format", Format},
                                                           {"Key", key},
                                                           {"Path", stored.Path},
                                                           {"ETag", stored.Tag},
                                                           {"Sha256", digest},
                                                           {"Xxh3", ChecksumOf(stored.Text)}});
    const std::string textName = TextName(digest);
    const bool there = IsThere(folder, textName, stored.Text.size());
    if (entry.size() > MaxEntryBytes || (!there && !WriteFile(folder, textName, stored.Text)) ||
        !WriteFile(folder, EntryName(key), entry))
    {
        Tell(m_Folder, entry.size() > MaxEntryBytes ? "the registry's name is too long" : Cause());
    }
    else if (there)
    {
        MarkUsed(folder, textName);
    }
    Prune(folder, m_Limits);
}

void RegistryStore::Drop(const std::string& key) const
{
    std::string fault;
    const Descriptor folder = IsOn() ? OpenFolder(m_Folder, fault) : Descriptor();
    if (folder)
    {
        unlinkat(folder.Get(), EntryName(key).c_str(), 0);
    }
}

} // namespace Tavrine
