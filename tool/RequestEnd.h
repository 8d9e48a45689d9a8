#pragma once

#include "Answer.h"

namespace Tavrine::Tool
{

/// What the result of a change says about the settings in it.
enum class RequestEnd
{
    Accepted,
    /// The library's own check refuses it: there was no request.
    Unfit,
    /// It never reached the BMC.
    NotSent,
    /// The BMC did nothing of it.
    TurnedAway,
    /// The BMC refuses it; a lenient one may have done a part.
    Refused,
    Unknown,
};

/// @param result  as the library words it, with nothing hidden yet. What neither its words nor its code settle stays
/// open.
RequestEnd EndOf(const Failure& result);

} // namespace Tavrine::Tool
