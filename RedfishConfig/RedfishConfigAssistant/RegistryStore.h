#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace Tavrine
{

/// A text as a server gave it, with the path at which it lay and the ETag (RFC 9110) that it
/// had there.
struct StoredText
{
    std::string Path;
    std::string Tag;
    std::string Text;
};

/// Texts in a folder on disk, found by a key. Any number of processes may use one
/// folder at once: a file appears complete or not at all and is checked against its own
/// checksum when it is read. Texts are kept once, however many keys lead to them. What
/// cannot be read or written is logged and otherwise as if it were not there.
class RegistryStore
{
  public:
    struct Limits
    {
        /// What an answer may have (ConnectionInfo): the largest ones are those that are worth keeping most.
        std::uint64_t MaxTextBytes = 64U * 1024U * 1024U;
        /// Beyond these the files that were not used for longest go.
        std::uint64_t MaxFolderBytes = 128U * 1024U * 1024U;
        std::size_t MaxFiles = 4096;
    };

    /// @param folder  absolute; empty for none, which keeps nothing. It is made when something
    ///                is kept, with mode 0700 and with the folder above it. One that
    ///                belongs to another user or that others may write to is not used.
    explicit RegistryStore(std::string folder) : RegistryStore(std::move(folder), Limits()) {}
    RegistryStore(std::string folder, Limits limits);

    bool IsOn() const { return !m_Folder.empty(); }
    /// What was kept under a key; a damaged file is removed.
    std::optional<StoredText> Load(const std::string& key) const;
    void Save(const std::string& key, const StoredText& stored) const;
    void Drop(const std::string& key) const;

  private:
    std::string m_Folder;
    Limits m_Limits;
};

} // namespace Tavrine
