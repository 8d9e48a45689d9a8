#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "MessageTable.h"

namespace Tavrine
{

/// One message of an answer, freed of the many shapes in which it can come.
struct BmcMessage
{
    std::string Key;
    /// Of a key that is not known: taken from "Severity", Note where that is harmless.
    MessageKind Kind = MessageKind::Refused;
    /// The BMC's words, or those of the message's key, or else the whole message id.
    std::string Text;
    /// Text is only the id: words may stand in the message registry that the BMC serves.
    bool Wordless = false;
    std::string Id;
    std::vector<std::string> Arguments;
    /// The settings that it is about; often none.
    std::vector<std::string> Settings;
};

struct MessageList
{
    /// None of the kinds Success and Note, and ResetNeeded once at the most.
    std::vector<BmcMessage> Messages;
    /// Why there may be more, which were not read, going on from "it is"; empty for nothing.
    std::string Unread;
};

/// The messages of an answer's body, duplicates of one fault merged: those of "error"
/// and of the top level, and those that annotate a property ("X@Message.ExtendedInfo").
/// A body that is no JSON has none, unless it begins as an object: then there may be some. Of more messages than
/// JsonParts keep those in front are read.
/// @param refused  the status says that the request was not done: then a message with
///                 an unknown key is a fault unless it says that it is none.
MessageList ReadMessages(std::string_view body, bool refused);

} // namespace Tavrine
