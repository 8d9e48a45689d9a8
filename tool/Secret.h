#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json/fwd.hpp>

#include "Answer.h"

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
    const std::string& Text() const { return m_Text; }

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

/// What is shown in a secret's place.
inline constexpr const char* Blot = "********";

/// Secrets as they are, without quotes or escapes. They belong to someone else.
using SecretTexts = std::vector<std::string_view>;

/// Whether it is too short to be blotted out: what is left of a message would tell it.
bool IsShortSecret(std::string_view secret);

/// Whether one of the short secrets stands in the text, in any form. An empty one stands nowhere.
bool HoldsShortSecret(std::string_view text, const SecretTexts& secrets);

/// Whether words of the BMC may stand in it. A connection that failed is told in the library's own, unless the BMC
/// refused the login or the privilege.
bool QuotesBmc(const Failure& failure);

/// A message that quotes the BMC, as it may be shown where the BMC was sent secrets that its
/// words may repeat. They are blotted out in every form: as they are, as a message of the library
/// holds them (control characters are blanks there, and a long text is cut), escaped for JSON, and
/// escaped twice. With a short one in it (HoldsShortSecret) nothing of the message is left but how
/// far the change came, where it tells that. Hand in those short ones alone that the message can
/// be about: of "1" many messages are full.
std::string WithoutSecrets(const std::string& text, const SecretTexts& secrets);

/// A failure as it may be shown. Where it does not quote the BMC, short secrets are not looked for. Of one that is left
/// out for a short secret the cause goes, too.
/// @param secrets  short ones only where it can be about them.
/// @param shownName  stands before what is left out; empty where the failure is about no single setting, or where the
/// name stands beside it.
Failure Hidden(Failure failure, const SecretTexts& secrets, const std::string& shownName = {});

} // namespace Tavrine::Tool
