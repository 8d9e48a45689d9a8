#pragma once

#include <memory>
#include <string>

namespace Tavrine::Tool
{

/// One thing to look for in texts, in whatever case.
class TextSearch
{
  public:
    /// @param regex  `word` is a regular expression, else it is taken as it stands.
    TextSearch(const std::string& word, bool regex);
    TextSearch(TextSearch&&) noexcept;
    TextSearch& operator=(TextSearch&&) noexcept;
    ~TextSearch();

    /// Why `word` cannot be looked for; empty when it can.
    const std::string& Error() const { return m_Error; }

    /// Whether the text has it somewhere. An expression that runs into its limits on a
    /// text does not match it.
    bool FoundIn(const std::string& text) const;

  private:
    struct Compiled;
    std::unique_ptr<Compiled> m_Compiled;
    std::string m_Error;
};

} // namespace Tavrine::Tool
