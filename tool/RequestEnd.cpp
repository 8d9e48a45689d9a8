#include "RequestEnd.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string_view>

#include "ChangeDelivery.h"
#include "LibraryTexts.h"

namespace Tavrine::Tool
{
namespace
{

RequestEnd EndOf(Delivery delivery)
{
    return delivery == Delivery::NotSent      ? RequestEnd::NotSent
           : delivery == Delivery::TurnedAway ? RequestEnd::TurnedAway
                                              : RequestEnd::Unknown;
}

/// Of the action that reads what a change is judged by. It ends the path, the second word: further on the BMC speaks.
bool IsAboutRead(std::string_view message)
{
    const std::size_t path = message.find(' ') + 1;
    const std::size_t pathEnd = message.find(' ', path);
    return pathEnd != std::string_view::npos &&
           message.substr(path, pathEnd + 1 - path).ends_with(LibraryTexts::ReadAction);
}

bool IsAboutChange(std::string_view message)
{
    const auto begins = [&](std::string_view call) { return message.starts_with(call); };
    return std::ranges::any_of(LibraryTexts::ChangeCalls, begins) && !IsAboutRead(message);
}

/// A change without an answer, or with one that leaves open whether it was done, has words for it. Without them a read
/// that comes before the change has failed, or the BMC does not know how to do the change.
RequestEnd EndWithoutWords(std::string_view message)
{
    if (!IsAboutChange(message))
    {
        return RequestEnd::NotSent;
    }
    const bool cannot = std::ranges::any_of(LibraryTexts::CannotDo, [&](std::string_view status)
                                            { return message.find(status) != std::string_view::npos; });
    return cannot ? RequestEnd::TurnedAway : RequestEnd::Unknown;
}

/// Refusals of the check have the code of those of the BMC.
RequestEnd EndOfRefusal(std::string_view message)
{
    return IsAboutChange(message) ? RequestEnd::Refused : RequestEnd::Unfit;
}

RequestEnd EndOfAction(std::string_view message)
{
    return IsAboutRead(message) ? RequestEnd::NotSent : RequestEnd::Refused;
}

struct EndByCode
{
    int Code;
    RequestEnd (*End)(std::string_view message);
};

template <RequestEnd End> RequestEnd Always(std::string_view) { return End; }

constexpr EndByCode EndsByCode[] = {
    {CodePartly, Always<RequestEnd::Unfit>},
    {CodeInvalidValue, Always<RequestEnd::Unfit>},
    {CodeNotSupported, Always<RequestEnd::Unfit>},
    {CodeParameter, Always<RequestEnd::Unfit>},
    {CodeNotFound, Always<RequestEnd::Unfit>},
    {CodeNoDefault, Always<RequestEnd::Unfit>},
    {CodeHidden, Always<RequestEnd::Unfit>},
    {CodeInternal, Always<RequestEnd::NotSent>},
    {CodeQuery, Always<RequestEnd::NotSent>},
    {CodeNotReady, Always<RequestEnd::TurnedAway>},
    {CodeActionFailed, EndOfAction},
    {CodeRefused, EndOfRefusal},
    {CodeConnection, EndWithoutWords},
    {CodeUnusable, EndWithoutWords},
    {CodeBmcFailed, EndWithoutWords},
};

} // namespace

RequestEnd EndOf(const Failure& result)
{
    if (IsSuccess(result.Code))
    {
        return RequestEnd::Accepted;
    }
    if (const std::optional<Delivery> told = DeliveryIn(result.Message))
    {
        return EndOf(*told);
    }
    const auto* const end = std::find_if(std::begin(EndsByCode), std::end(EndsByCode),
                                         [&](const EndByCode& one) { return one.Code == result.Code; });
    return end == std::end(EndsByCode) ? RequestEnd::Unknown : end->End(result.Message);
}

} // namespace Tavrine::Tool
