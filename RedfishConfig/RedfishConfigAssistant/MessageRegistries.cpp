#include "MessageRegistries.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "JsonText.h"
#include "Log.h"
#include "MessageTable.h"
#include "PlainText.h"

namespace Tavrine
{

namespace
{

namespace json = boost::json;

/// A BMC has a handful; one that names another in each message means no good.
constexpr std::size_t MaxRegistries = 8;
constexpr std::size_t MaxRegistryBytes = 8U * 1024U * 1024U;
constexpr std::size_t MaxTexts = 5000;
constexpr std::size_t MaxTextBytes = 1000;

/// What stands before the key in a message id; empty for a bare key.
std::string FrontOf(const std::string& id)
{
    const std::size_t mark = id.find_last_of(".:");
    return mark == std::string::npos ? std::string() : id.substr(0, mark);
}

RedfishConfigResult ReadRegistry(const ResourceReader& read, const std::string& identifier, const std::string& language,
                                 std::string& text)
{
    std::string url;
    RedfishConfigResult result = FindMessageRegistry(read, identifier, language, url);
    return result == 0 ? read(url, text) : result;
}

} // namespace

std::string MessageRegistries::WordsOf(const BmcMessage& message, const ResourceReader& read,
                                       const std::string& language)
{
    const std::string identifier = FrontOf(message.Id);
    if (identifier.empty())
    {
        return {};
    }
    auto entry = m_Registries.find(identifier);
    if (entry == m_Registries.end())
    {
        if (m_Registries.size() == MaxRegistries)
        {
            return {};
        }
        std::string text;
        const RedfishConfigResult result = ReadRegistry(read, identifier, language, text);
        // Entered when it is whole: one for which memory ran out is read again.
        Texts texts = result == 0 && text.size() <= MaxRegistryBytes ? TextsOf(text) : Texts();
        entry = m_Registries.emplace(identifier, std::move(texts)).first;
        Log(4, __FILE__, __LINE__).Stream() << "The message registry " << identifier << " gave " << entry->second.size()
                                            << " texts, code " << result.ErrorCode();
    }
    const auto text = entry->second.find(message.Key);
    return text == entry->second.end() ? std::string() : FilledText(text->second, message.Arguments);
}

MessageRegistries::Texts MessageRegistries::TextsOf(std::string_view registry)
{
    Texts texts;
    const std::optional<json::value> document = ParseJson(registry);
    const json::value* const member = Member(document ? &*document : nullptr, "Messages");
    const json::object* const messages = member == nullptr ? nullptr : member->if_object();
    if (messages == nullptr)
    {
        return texts;
    }
    for (const auto& entry : *messages)
    {
        const std::string_view text = TextMember(&entry.value(), "Message");
        if (texts.size() < MaxTexts && !text.empty() && text.size() <= MaxTextBytes)
        {
            texts.emplace(std::string_view(entry.key().data(), entry.key().size()), text);
        }
    }
    return texts;
}

} // namespace Tavrine
