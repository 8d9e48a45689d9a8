#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <boost/json/fwd.hpp>

namespace Tavrine::Tool
{

/// A text that is wiped when it goes. Its memory never moves while text is added
/// within the capacity that it was made with.
class Secret
{
  public:
    explicit Secret(std::size_t capacity) { m_Text.reserve(capacity); }
    /// Takes over a text, of which nothing is left where it was.
    explicit Secret(std::string&& text);
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;
    ~Secret();

    std::string& Text() { return m_Text; }

  private:
    std::string m_Text;
};

/// Overwrites the whole memory of a text, its unused capacity included, and
/// empties it.
void Wipe(std::string& text);
/// The same for the text of a JSON document, which was never longer than it is.
void Wipe(boost::json::string& text);

/// A text as JSON, quotes included, which was written nowhere but in the memory that
/// is handed out.
std::string QuotedJson(std::string_view text);

} // namespace Tavrine::Tool
