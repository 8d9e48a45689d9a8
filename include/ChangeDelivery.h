#pragma once

#include <optional>
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

} // namespace DeliveryWords

/// The words for a change that got no answer.
constexpr std::string_view WordsOf(Delivery delivery)
{
    return delivery == Delivery::NotSent      ? DeliveryWords::NothingSent
           : delivery == Delivery::TurnedAway ? DeliveryWords::NotDone
                                              : DeliveryWords::OutcomeUnknown;
}

/// Finds these words in the message of a change that failed.
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
    for (const Meaning& meaning : meanings)
    {
        if (message.find(meaning.Words) != std::string_view::npos)
        {
            return meaning.Told;
        }
    }
    return std::nullopt;
}

} // namespace Tavrine
