#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Tavrine
{

/// How far a change that failed came.
enum class Delivery
{
    NotSent,
    /// The BMC turned it away and did nothing.
    TurnedAway,
    /// Part of it or all of it went out; what became of it is not known.
    Sent,
};

/// Words of BMCBaseAssistant's messages that tell it.
namespace DeliveryWords
{

inline constexpr std::string_view NothingSent = "nothing was sent";
inline constexpr std::string_view NotDone = "the change was not done";
inline constexpr std::string_view OutcomeUnknown = "whether the change was done is not known";
/// Stands between a malformed request and the BMC that it was kept from.
inline constexpr std::string_view KeptBack = " was not sent to ";
inline constexpr std::string_view NoLogin = "(401 Unauthorized)";
inline constexpr std::string_view NoPrivilege = "(403 Forbidden)";
/// Around what somebody else has said in such words. The first follows a blank, of which paths have none, or begins
/// the message.
inline constexpr std::string_view ForeignBegin = " <<";
inline constexpr std::string_view ForeignEnd = ">>";

} // namespace DeliveryWords

/// The words for a change that got no answer.
constexpr std::string_view WordsOf(Delivery delivery)
{
    return delivery == Delivery::NotSent      ? DeliveryWords::NothingSent
           : delivery == Delivery::TurnedAway ? DeliveryWords::NotDone
                                              : DeliveryWords::OutcomeUnknown;
}

/// Finds these words in the message of a change that failed, but for what AsForeignWords has marked in it. Since that
/// may have such marks of its own, the first and the last count.
/// @return nothing where there are none: then the BMC has answered, and the code tells.
constexpr std::optional<Delivery> DeliveryIn(std::string_view message)
{
    struct Meaning
    {
        std::string_view Words;
        Delivery Told;
    };
    // Doubt first: a message that holds several must not claim more than is known.
    constexpr Meaning meanings[] = {
        {DeliveryWords::OutcomeUnknown, Delivery::Sent}, {DeliveryWords::NothingSent, Delivery::NotSent},
        {DeliveryWords::KeptBack, Delivery::NotSent},    {DeliveryWords::NotDone, Delivery::TurnedAway},
        {DeliveryWords::NoLogin, Delivery::TurnedAway},  {DeliveryWords::NoPrivilege, Delivery::TurnedAway},
    };
    const std::size_t begin =
        message.starts_with(DeliveryWords::ForeignBegin.substr(1)) ? 0 : message.find(DeliveryWords::ForeignBegin);
    const std::size_t end = message.rfind(DeliveryWords::ForeignEnd);
    const bool isMarked = begin != std::string_view::npos && end != std::string_view::npos && begin < end;
    const std::string_view before = isMarked ? message.substr(0, begin) : message;
    const std::string_view behind = isMarked ? message.substr(end) : std::string_view();
    for (const Meaning& meaning : meanings)
    {
        if (before.find(meaning.Words) != std::string_view::npos ||
            behind.find(meaning.Words) != std::string_view::npos)
        {
            return meaning.Told;
        }
    }
    return std::nullopt;
}

/// What somebody else has said, to stand at the beginning of a message or behind a blank: with marks around it where it
/// would be taken for these words.
inline std::string AsForeignWords(std::string words)
{
    const bool isAlike = DeliveryIn(" " + words + " ").has_value();
    return isAlike ? std::string(DeliveryWords::ForeignBegin.substr(1)).append(words).append(DeliveryWords::ForeignEnd)
                   : words;
}

} // namespace Tavrine
