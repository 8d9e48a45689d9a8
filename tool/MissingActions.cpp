#include "MissingActions.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "LibraryTexts.h"

namespace Tavrine::Tool
{
namespace
{

constexpr std::array Codes = {CodeRefused, CodeActionFailed, CodeBmcFailed};

} // namespace

bool MissesAction(const Failure& failure)
{
    return failure.Message.find(LibraryTexts::OemAction) != std::string::npos &&
           std::find(Codes.begin(), Codes.end(), failure.Code) != Codes.end() &&
           std::ranges::any_of(LibraryTexts::UnknownAction, [&](std::string_view status)
                               { return failure.Message.find(status) != std::string::npos; });
}

} // namespace Tavrine::Tool
