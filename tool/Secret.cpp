#include "Secret.h"

#include <cstring>
#include <utility>

#include <boost/json/serializer.hpp>
#include <boost/json/string.hpp>

namespace Tavrine::Tool
{
namespace
{

/// "\u001f" for one character.
constexpr std::size_t LongestEscape = 6;

} // namespace

Secret::Secret(std::string&& text) : m_Text(std::move(text)) { Wipe(text); }

Secret::~Secret() { Wipe(m_Text); }

void Wipe(std::string& text)
{
    text.resize(text.capacity());
    explicit_bzero(text.data(), text.size());
    text.clear();
}

void Wipe(boost::json::string& text)
{
    explicit_bzero(text.data(), text.size());
    text.clear();
}

std::string QuotedJson(std::string_view text)
{
    std::string json(text.size() * LongestEscape + std::string_view("\"\"").size(), '\0');
    boost::json::serializer serializer;
    serializer.reset(boost::json::string_view(text.data(), text.size()));
    json.resize(serializer.read(json.data(), json.size()).size());
    return json;
}

} // namespace Tavrine::Tool
