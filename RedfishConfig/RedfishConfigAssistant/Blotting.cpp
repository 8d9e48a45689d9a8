#include "Blotting.h"

#include <algorithm>

#include <boost/json/value.hpp>

#include "JsonText.h"
#include "PlainText.h"

namespace Tavrine
{

namespace
{

namespace json = boost::json;

constexpr std::size_t Shortest = 4;
constexpr std::string_view Mark = "********";

bool IsWordByte(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

/// Whether a word goes on at the place between two bytes.
bool IsInsideWord(std::string_view text, std::size_t place)
{
    return place > 0 && place < text.size() && IsWordByte(text[place - 1]) && IsWordByte(text[place]);
}

void BlotWord(std::string& text, std::string_view word)
{
    for (std::size_t at = text.find(word); at != std::string::npos;)
    {
        const bool part = IsInsideWord(text, at) || IsInsideWord(text, at + word.size());
        if (!part)
        {
            text.replace(at, word.size(), Mark);
        }
        at = text.find(word, at + (part ? 1 : Mark.size()));
    }
}

/// As it stands and as JSON has it: services quote either.
void AddText(std::string_view text, std::vector<std::string>& values)
{
    if (text.size() < Shortest)
    {
        return;
    }
    values.emplace_back(text);
    std::string quoted;
    AppendJsonString(quoted, text);
    if (quoted.size() > text.size() + 2)
    {
        values.push_back(quoted.substr(1, quoted.size() - 2));
    }
    Wipe(quoted);
}

void AddTexts(const json::value& value, std::vector<std::string>& values)
{
    if (const json::string* const text = value.if_string())
    {
        AddText({text->data(), text->size()}, values);
    }
    else if (const json::array* const array = value.if_array())
    {
        std::for_each(array->begin(), array->end(), [&](const json::value& entry) { AddTexts(entry, values); });
    }
    else if (const json::object* const object = value.if_object())
    {
        std::for_each(object->begin(), object->end(), [&](const auto& member) { AddTexts(member.value(), values); });
    }
}

} // namespace

void Blot(std::string& text, std::string_view secret)
{
    for (std::size_t at = secret.size() < Shortest ? std::string::npos : text.find(secret); at != std::string::npos;
         at = text.find(secret, at + Mark.size()))
    {
        text.replace(at, secret.size(), Mark);
    }
}

BodySecrets::BodySecrets(std::string_view body)
{
    const auto document = body.empty() ? std::nullopt : ParseJson(body);
    if (document)
    {
        AddTexts(*document, m_Values);
    }
    std::sort(m_Values.begin(), m_Values.end(),
              [](const std::string& left, const std::string& right) { return left.size() > right.size(); });
}

BodySecrets::~BodySecrets() { std::for_each(m_Values.begin(), m_Values.end(), Wipe); }

void BodySecrets::BlotIn(std::string& text) const
{
    for (const std::string& value : m_Values)
    {
        BlotWord(text, value);
    }
}

} // namespace Tavrine
