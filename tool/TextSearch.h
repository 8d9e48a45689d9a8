#pragma once

#include <memory>
#include <string>

namespace Tavrine::Tool
{

/// Whether a text has what is looked for.
enum class Occurrence
{
    None,
    Found,
    /// It took too many steps or too much memory, or a stop signal came.
    GivenUp
};

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

    /// Whether the text has it somewhere.
    Occurrence LookIn(const std::string& text) const;

  private:
    struct Compiled;
    std::unique_ptr<Compiled> m_Compiled;
    std::string m_Error;
};

} // namespace Tavrine::Tool
