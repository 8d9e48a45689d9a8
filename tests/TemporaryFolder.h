#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace testdata
{

/// A folder of its own for one test, removed with all that is in it.
class TemporaryFolder
{
  public:
    TemporaryFolder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "tavrine-test-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr)
        {
            throw std::runtime_error("no temporary folder: " + pattern);
        }
        m_Path = pattern;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_Path, ignored);
    }

    const std::filesystem::path& Path() const { return m_Path; }

    /// Writes a file in it, with the folders above.
    std::string Write(const std::filesystem::path& name, const std::string& content) const
    {
        const std::filesystem::path path = m_Path / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << content;
        return path.string();
    }

  private:
    std::filesystem::path m_Path;
};

/// Sets an environment variable (null: unsets it) and brings the former value back.
class ScopedEnvironment
{
  public:
    ScopedEnvironment(std::string name, const char* value) : m_Name(std::move(name))
    {
        const char* former = std::getenv(m_Name.c_str());
        m_WasSet = former != nullptr;
        m_Former = m_WasSet ? former : "";
        Set(value);
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;
    ~ScopedEnvironment() { Set(m_WasSet ? m_Former.c_str() : nullptr); }

  private:
    void Set(const char* value) const
    {
        if (value != nullptr)
        {
            ::setenv(m_Name.c_str(), value, 1);
        }
        else
        {
            ::unsetenv(m_Name.c_str());
        }
    }

    std::string m_Name;
    std::string m_Former;
    bool m_WasSet = false;
};

} // namespace testdata
