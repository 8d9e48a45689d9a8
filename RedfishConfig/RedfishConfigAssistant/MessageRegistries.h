#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "AnswerMessages.h"
#include "RegistryLookup.h"

namespace Tavrine
{

/// The message registries that one BMC serves (DSP0266, "Message registries"), each
/// looked for and read at the first message that needs it and never again, whatever
/// came of it, unless that threw. Used by one thread at a time.
class MessageRegistries
{
  public:
    /// The words of a message by its id, the arguments in their places; empty when its
    /// registry cannot be had or lacks the key. Failures are told in the log alone,
    /// since the caller has the id to show.
    std::string WordsOf(const BmcMessage& message, const ResourceReader& read, const std::string& language);

  private:
    using Texts = std::map<std::string, std::string, std::less<>>;

    static Texts TextsOf(std::string_view registry);

    /// By the front of a message id, "Base.1.8" for example.
    std::map<std::string, Texts> m_Registries;
};

} // namespace Tavrine
