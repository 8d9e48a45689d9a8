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

void HintAtMissingAction(const Failure& failure, std::vector<std::string>& notes)
{
    if (MissesAction(failure))
    {
        notes.emplace_back(
            "hint: the BMC lacks the OEM actions for protected settings; for such a BMC give --system-type bios");
    }
}

} // namespace Tavrine::Tool
