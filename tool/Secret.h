#pragma once

#include <string>

namespace Tavrine::Tool
{

/// A text that is wiped when it goes. Its memory never moves while text is added
/// within the capacity that it was made with.
class Secret
{
  public:
    explicit Secret(std::size_t capacity) { m_Text.reserve(capacity); }
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

} // namespace Tavrine::Tool
