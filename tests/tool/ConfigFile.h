#pragma once

#include <string>

#include "GlobalConfig.h"
#include "TemporaryFolder.h"

namespace tooltest
{

/// The configuration of this process for as long as this lives.
class Configured
{
  public:
    explicit Configured(const std::string& toml)
        : m_Variable("TAVRINE_CONFIG", m_Folder.Write("config.toml", toml).c_str())
    {
        Tavrine::GlobalConfig::Reload();
    }
    Configured(const Configured&) = delete;
    Configured& operator=(const Configured&) = delete;
    ~Configured() { Tavrine::GlobalConfig::Reload(); }

  private:
    testdata::TemporaryFolder m_Folder;
    testdata::ScopedEnvironment m_Variable;
};

} // namespace tooltest
