#include "MissingActions.h"

#include <algorithm>
#include <array>

namespace Tavrine::Tool
{
namespace
{

constexpr std::array Codes = {18, 28, 32};
constexpr std::array Statuses = {"(404 ", "(405 ", "(501 "};

} // namespace

bool MissesAction(const Failure& failure)
{
    return failure.Message.find("/ZorvanBios.") != std::string::npos &&
           std::find(Codes.begin(), Codes.end(), failure.Code) != Codes.end() &&
           std::any_of(Statuses.begin(), Statuses.end(),
                       [&](const char* status) { return failure.Message.find(status) != std::string::npos; });
}

} // namespace Tavrine::Tool
