#include "AnswerMessages.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <unordered_set>
#include <utility>

#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <fmt/format.h>

#include "JsonParts.h"
#include "JsonText.h"
#include "PlainText.h"
#include "SettingPointer.h"

namespace Tavrine
{

namespace
{

namespace json = boost::json;

constexpr std::size_t MaxMessages = 500;
constexpr std::size_t MaxArguments = 20;
/// Of all messages together: each of them becomes an entry with the message's words.
constexpr std::size_t MaxNamedSettings = 5000;
constexpr std::size_t MaxIdBytes = 256;
constexpr std::string_view ExtendedInfo = "@Message.ExtendedInfo";

/// Arguments can come as JSON text of their own: "\"Lit\"".
std::string Unquoted(std::string text)
{
    const bool quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return quoted ? text.substr(1, text.size() - 2) : text;
}

std::vector<std::string> ArgumentsOf(const json::value& message)
{
    std::vector<std::string> arguments;
    const json::value* const list = Member(&message, "MessageArgs");
    const json::array* const array = list == nullptr ? nullptr : list->if_array();
    for (std::size_t i = 0; array != nullptr && i < std::min(array->size(), MaxArguments); ++i)
    {
        const json::string* const text = (*array)[i].if_string();
        arguments.push_back(Unquoted(
            CleanText(text != nullptr ? std::string(text->data(), text->size()) : json::serialize((*array)[i]))));
    }
    return arguments;
}

/// Each once, in their order; pointers are texts (DSP0268, Message), anything else there names nothing.
std::vector<std::string> RelatedSettings(const json::value& message)
{
    std::vector<std::string> settings;
    std::unordered_set<std::string> seen;
    const json::value* const list = Member(&message, "RelatedProperties");
    const json::array* const array = list == nullptr ? nullptr : list->if_array();
    for (std::size_t i = 0; array != nullptr && i < array->size() && settings.size() <= MaxNamedSettings; ++i)
    {
        const json::string* const pointer = (*array)[i].if_string();
        std::string setting = pointer == nullptr ? "" : SettingOfPointer(CleanText(std::string(*pointer)));
        if (!setting.empty() && seen.insert(setting).second)
        {
            settings.push_back(std::move(setting));
        }
    }
    return settings;
}

MessageKind KindOf(const KnownMessage* known, const json::value& message, bool refused)
{
    if (known != nullptr)
    {
        return known->Kind;
    }
    std::string_view severity = TextMember(&message, "MessageSeverity");
    severity = severity.empty() ? TextMember(&message, "Severity") : severity;
    const std::string lower = LowerAscii(severity);
    if (lower == "ok" || lower == "informational")
    {
        return MessageKind::Note;
    }
    return refused || lower == "critical" ? MessageKind::Refused : MessageKind::Note;
}

std::vector<std::string> SettingsOf(const json::value& message, const KnownMessage* known,
                                    const std::vector<std::string>& arguments, const std::string& annotated)
{
    std::vector<std::string> settings = RelatedSettings(message);
    if (settings.empty() && !annotated.empty())
    {
        settings.push_back(annotated);
    }
    const unsigned int place = known == nullptr ? 0 : known->PropertyArgument;
    if (settings.empty() && place > 0 && place <= arguments.size())
    {
        std::string setting = SettingOfPointer(arguments[place - 1]);
        if (!setting.empty())
        {
            settings.push_back(std::move(setting));
        }
    }
    return settings;
}

void SetWords(BmcMessage& message, std::string_view id, std::string_view words, const KnownMessage* known)
{
    message.Key = CleanText(MessageKey(id), MaxIdBytes);
    message.Id = CleanText(id, MaxIdBytes);
    message.Text = CleanText(words.empty() ? MessageText(id, message.Arguments) : std::string(words));
    message.Wordless = words.empty() && !id.empty() && known == nullptr;
}

BmcMessage ReadOne(const json::value& message, bool refused, const std::string& annotated)
{
    std::string_view id = TextMember(&message, "MessageId");
    id = id.empty() ? TextMember(&message, "MessageID") : id;
    BmcMessage read;
    read.Arguments = ArgumentsOf(message);
    const KnownMessage* const known = FindMessage(MessageKey(id));
    read.Kind = KindOf(known, message, refused);
    SetWords(read, id, TextMember(&message, "Message"), known);
    read.Settings = SettingsOf(message, known, read.Arguments, annotated);
    return read;
}

/// Collects the messages of one answer.
class Collector
{
  public:
    explicit Collector(bool refused) : m_Refused(refused) {}

    /// A list of messages, or a single one without its list.
    void AddAll(const json::value* messages, const std::string& annotated = {})
    {
        if (messages == nullptr)
        {
            return;
        }
        if (messages->is_object())
        {
            Add(ReadOne(*messages, m_Refused, annotated));
        }
        const json::array* const array = messages->if_array();
        for (std::size_t i = 0; array != nullptr && i < array->size() && !m_IsFull; ++i)
        {
            if ((*array)[i].is_object())
            {
                Add(ReadOne((*array)[i], m_Refused, annotated));
            }
        }
    }

    void AddAnnotations(const json::value* parent)
    {
        const json::object* const object = parent == nullptr ? nullptr : parent->if_object();
        if (object == nullptr)
        {
            return;
        }
        for (const auto& member : *object)
        {
            const std::string_view key(member.key().data(), member.key().size());
            if (key.size() > ExtendedInfo.size() && key.ends_with(ExtendedInfo))
            {
                AddAll(&member.value(), SettingOfPointer(CleanText(key.substr(0, key.size() - ExtendedInfo.size()))));
            }
        }
    }

    void Add(BmcMessage message)
    {
        if (message.Key.empty() && message.Text.empty())
        {
            return;
        }
        m_Empty = false;
        // A service may send one of these for each setting: they must not take the places of faults.
        if (message.Kind == MessageKind::Success || message.Kind == MessageKind::Note)
        {
            return;
        }
        std::string fault = FaultOf(message);
        if (m_Held.contains(fault))
        {
            return;
        }
        if (m_List.Messages.size() == MaxMessages)
        {
            m_IsFull = true;
            m_List.Unread = "full of messages";
            return;
        }
        if (message.Settings.size() > MaxNamedSettings - m_NamedSettings)
        {
            message.Settings.resize(MaxNamedSettings - m_NamedSettings); // its kind and its words count all the same
            m_List.Unread = "full of names";
        }
        m_NamedSettings += message.Settings.size();
        m_Held.insert(std::move(fault));
        m_List.Messages.push_back(std::move(message));
    }

    bool Empty() const { return m_Empty; }
    MessageList Take() { return std::move(m_List); }

  private:
    /// The same text for all messages of one fault. About a setting one key is one fault, in whatever words.
    static std::string FaultOf(const BmcMessage& message)
    {
        if (message.Kind == MessageKind::ResetNeeded)
        {
            return {};
        }
        std::vector<std::string> parts = {message.Key, message.Settings.empty() ? message.Text : std::string()};
        const std::vector<std::string>& rest = message.Settings.empty() ? message.Arguments : message.Settings;
        if (message.Wordless || !message.Settings.empty())
        {
            parts.emplace_back();
            parts.insert(parts.end(), rest.begin(), rest.end());
        }
        return fmt::format("{}", fmt::join(parts, "\n"));
    }

    bool m_Refused;
    bool m_Empty = true;
    bool m_IsFull = false;
    std::size_t m_NamedSettings = 0;
    MessageList m_List;
    std::unordered_set<std::string> m_Held;
};

/// An "error" without a list: "code" and "message", the latter at times an object with
/// the text in "value".
BmcMessage BareError(const json::value& error)
{
    BmcMessage bare;
    const std::string_view id = TextMember(&error, "code");
    std::string_view words = TextMember(&error, "message");
    words = words.empty() ? TextMember(Member(&error, "message"), "value") : words;
    const KnownMessage* const known = FindMessage(MessageKey(id));
    SetWords(bare, id, words, known);
    bare.Kind = known != nullptr             ? known->Kind
                : bare.Key == "ExtendedInfo" ? MessageKind::Note // it says "see the list", which is not there
                                             : MessageKind::Refused;
    return bare;
}

/// What of an answer can be messages.
Keep MessageParts(std::string_view parent, std::string_view name)
{
    if (name.ends_with(ExtendedInfo))
    {
        return Keep::All;
    }
    if (parent.empty())
    {
        return name == "Messages" ? Keep::All : name == "error" || name == "Attributes" ? Keep::Members : Keep::Nothing;
    }
    return parent == "error" && (name == "code" || name == "message") ? Keep::All : Keep::Nothing;
}

} // namespace

MessageList ReadMessages(std::string_view body, bool refused)
{
    if (body.empty())
    {
        return {};
    }
    JsonParts parts = ParseParts(body, MessageParts);
    if (!parts.Document)
    {
        return {{}, std::move(parts.Fault)};
    }
    const json::value* const document = &*parts.Document;
    const json::value* const error = Member(document, "error");
    Collector collector(refused);
    collector.AddAll(Member(error, ExtendedInfo));
    collector.AddAll(Member(document, ExtendedInfo));
    collector.AddAll(Member(document, "Messages"));
    collector.AddAnnotations(error);
    collector.AddAnnotations(document);
    collector.AddAnnotations(Member(document, "Attributes"));
    if (collector.Empty() && error != nullptr && error->is_object())
    {
        collector.Add(BareError(*error));
    }
    MessageList list = collector.Take();
    list.Unread = list.Unread.empty() ? std::move(parts.Fault) : list.Unread;
    return list;
}

} // namespace Tavrine
