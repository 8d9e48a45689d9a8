#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Tavrine
{

/// What a message of a BMC means for the request that it answers.
enum class MessageKind
{
    Success,
    /// Worth telling, no failure.
    Note,
    ResetNeeded,
    /// The service will be there later.
    Busy,
    BadValue,
    Unknown,
    /// Any other reason for not doing it.
    Refused,
};

struct KnownMessage
{
    std::string_view Key;
    MessageKind Kind;
    /// Which argument names the property, counted from 1; 0 for none.
    unsigned int PropertyArgument;
    /// English text with %1, %2 for arguments, never empty.
    std::string_view Text;
};

/// The key of a message id: what stands behind the last "." or ":".
std::string_view MessageKey(std::string_view messageId);

/// Null for a key that is not known.
const KnownMessage* FindMessage(std::string_view key);

/// A message text of a registry with the arguments in the places of %1 to %9; "?"
/// where one is missing.
std::string FilledText(std::string_view text, const std::vector<std::string>& arguments);

/// A message's text for a BMC that sent the id alone: the Base registry's words with
/// the arguments in their places, or the id itself where there are none.
std::string MessageText(std::string_view messageId, const std::vector<std::string>& arguments);

} // namespace Tavrine
