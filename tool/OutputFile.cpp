#include "OutputFile.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace Tavrine::Tool
{
namespace
{

/// A file under a temporary name, removed unless it was renamed.
class TemporaryFile
{
  public:
    explicit TemporaryFile(const std::string& target)
        : m_Name(target + ".XXXXXX"), m_Descriptor(mkostemp(m_Name.data(), O_CLOEXEC))
    {
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile()
    {
        if (m_Descriptor >= 0)
        {
            close(m_Descriptor);
            unlink(m_Name.c_str());
        }
    }

    bool Good() const { return m_Descriptor >= 0; }

    bool Fill(std::string_view text, mode_t mode) const
    {
        while (!text.empty())
        {
            const ssize_t count = write(m_Descriptor, text.data(), text.size());
            if (count < 0 && errno != EINTR)
            {
                return false;
            }
            text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
        }
        return fchmod(m_Descriptor, mode) == 0 && fsync(m_Descriptor) == 0;
    }

    bool RenameTo(const std::string& target)
    {
        if (rename(m_Name.c_str(), target.c_str()) != 0)
        {
            return false;
        }
        close(m_Descriptor);
        m_Descriptor = -1;
        return true;
    }

  private:
    std::string m_Name;
    int m_Descriptor;
};

mode_t NewFileMode(mode_t mode)
{
    const mode_t mask = umask(0);
    umask(mask);
    return mode & ~mask;
}

/// The new name lasts only when its folder is on the disk. Not every folder may be read, and not every file system
/// knows such a sync.
/// @return what failed else; 0 for nothing.
int SyncFolder(const std::filesystem::path& file)
{
    const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
    {
        return errno == EACCES ? 0 : errno;
    }
    const int failure = fsync(descriptor) == 0 ? 0 : errno;
    close(descriptor);
    return failure == EINVAL || failure == ENOTSUP ? 0 : failure;
}

/// Why a link cannot be followed.
std::string LinkFault(const std::error_code& error)
{
    const bool leadsNowhere =
        error == std::errc::no_such_file_or_directory || error == std::errc::too_many_symbolic_link_levels;
    return leadsNowhere ? "is a link that leads nowhere" : error.message();
}

} // namespace

std::string WriteWholeFile(const std::string& path, std::string_view text, mode_t mode)
{
    std::error_code unresolved;
    std::error_code nothing;
    const std::filesystem::path real = std::filesystem::canonical(path, unresolved);
    if (unresolved && std::filesystem::is_symlink(path, nothing))
    {
        return LinkFault(unresolved); // in a folder of many users it may be anyone's
    }
    const std::string target = unresolved ? path : real.string();
    struct stat former = {};
    const bool exists = stat(target.c_str(), &former) == 0;
    if (exists && !S_ISREG(former.st_mode))
    {
        return "is no plain file";
    }
    TemporaryFile file(target);
    if (!file.Good() || !file.Fill(text, exists ? former.st_mode & mode : NewFileMode(mode)) || !file.RenameTo(target))
    {
        return std::strerror(errno);
    }
    const int failure = SyncFolder(target);
    return failure == 0 ? std::string()
                        : "its folder cannot be synced, so that its new content may go with the power: " +
                              std::string(std::strerror(failure));
}

std::optional<Failure> SaveFile(const std::string& path, std::string_view text, mode_t mode)
{
    const std::string error = WriteWholeFile(path, text, mode);
    return error.empty() ? std::nullopt
                         : std::optional(Failure{CodeOpenFile, "Unable to write the file " + path + ": " + error});
}

} // namespace Tavrine::Tool
