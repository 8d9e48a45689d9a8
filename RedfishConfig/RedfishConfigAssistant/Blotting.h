#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Tavrine
{

/// Blots a secret out of a text, wherever it stands in it. One of less than four bytes stays: it would blot out half of
/// every message.
void Blot(std::string& text, std::string_view secret);

/// The texts of a JSON body's values, names aside. Most are no secrets ("Auto" beside a password), so that each is
/// blotted out as a word of its own alone: the names of settings and the BMC's other words stay whole.
class BodySecrets
{
  public:
    /// @param body  one that is no JSON has none.
    explicit BodySecrets(std::string_view body);
    BodySecrets(const BodySecrets&) = delete;
    BodySecrets& operator=(const BodySecrets&) = delete;
    ~BodySecrets();

    void BlotIn(std::string& text) const;

  private:
    /// The longest first: what is left of one after a shorter one would be shown.
    std::vector<std::string> m_Values;
};

} // namespace Tavrine
