#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Tavrine
{

/// A text from outside made fit for a message: control characters become blanks,
/// blanks at both ends go, and what is longer than `limit` bytes is cut between
/// two characters and ends in "...".
std::string CleanText(std::string_view text, std::size_t limit = 1000);

/// Lower-case copy, ASCII letters alone.
std::string LowerAscii(std::string_view text);

/// Appends `text` as a JSON string, quotes included.
void AppendJsonString(std::string& target, std::string_view text);

/// Overwrites the whole buffer of `secret`, then empties it.
void Wipe(std::string& secret);

/// A text that is overwritten before its memory is given back.
class SecretText
{
  public:
    SecretText() = default;
    explicit SecretText(std::string_view text) : m_Text(text) {}
    SecretText(const SecretText&) = delete;
    SecretText& operator=(const SecretText&) = delete;
    ~SecretText() { Wipe(m_Text); }

    void Set(std::string_view text);
    void Clear() { Wipe(m_Text); }
    const std::string& Get() const { return m_Text; }
    std::string& Buffer() { return m_Text; }

  private:
    std::string m_Text;
};

} // namespace Tavrine
