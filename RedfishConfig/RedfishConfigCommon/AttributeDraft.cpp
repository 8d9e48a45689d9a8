#include "AttributeDraft.h"

#include <type_traits>
#include <utility>

#include <boost/json/value.hpp>

namespace Tavrine
{

namespace
{

using Field = AttributeDraft::Field;
using Value = AttributeDraft::Value;

constexpr std::size_t LongestWord = 32;

using FieldWord = std::pair<std::string_view, Field>;

/// By the length of the word, which tells most of them apart.
using FieldTable = std::array<std::vector<FieldWord>, LongestWord + 1>;

FieldTable MakeFieldTable()
{
    std::vector<FieldWord> words = {{"AttributeName", Field::Name}, {"Type", Field::Type},
                                    {"MenuPath", Field::MenuPath},  {"IsSystemUniqueProperty", Field::SystemUnique},
                                    {"Value", Field::Value},        {"Oem", Field::Oem}};
    for (std::size_t row = 0; row < PropertyCount; ++row)
    {
        words.emplace_back(PropertyWord(static_cast<SettingProperty>(row)), static_cast<Field>(row));
    }
    FieldTable table;
    for (const FieldWord& word : words)
    {
        table.at(word.first.size()).push_back(word);
    }
    return table;
}

Field FieldNamed(std::string_view key)
{
    static const FieldTable table = MakeFieldTable();
    if (key.size() <= LongestWord)
    {
        for (const auto& [word, field] : table[key.size()])
        {
            if (key == word)
            {
                return field;
            }
        }
    }
    return Field::None;
}

bool IsText(const Value& value) { return std::holds_alternative<std::string_view>(value); }

bool Is(AttributeDraft::Container container, const Value& value)
{
    const auto* const begun = std::get_if<AttributeDraft::Container>(&value);
    return begun != nullptr && *begun == container;
}

bool IsArray(const Value& value) { return Is(AttributeDraft::Container::Array, value); }
bool IsObject(const Value& value) { return Is(AttributeDraft::Container::Object, value); }

} // namespace

std::optional<RegistryScalar> ScalarOf(const Value& value)
{
    return std::visit(
        [](const auto& content) -> std::optional<RegistryScalar>
        {
            using Content = std::decay_t<decltype(content)>;
            if constexpr (std::is_same_v<Content, std::string_view>)
            {
                return RegistryScalar(std::string(content));
            }
            else if constexpr (std::is_same_v<Content, AttributeDraft::Container>)
            {
                return std::nullopt;
            }
            else
            {
                return ScalarFromJson(boost::json::value(content));
            }
        },
        value);
}

void AttributeDraft::Begin()
{
    for (Member& member : m_Members)
    {
        member.Given = false;
    }
    ForgetValues();
    m_Protected = false;
    m_Field = Field::None;
}

void AttributeDraft::Key(std::string_view key, std::size_t depth)
{
    if (depth == 1)
    {
        m_Field = FieldNamed(key);
    }
    else if (m_Field == Field::Value && depth == 3)
    {
        m_AtName = key == "ValueName";
        m_AtDisplayName = key == "ValueDisplayName";
    }
    else if (m_Field == Field::Oem && depth == 2)
    {
        m_AtZorvan = key == "Zorvan";
    }
    else if (m_Field == Field::Oem && depth == 3)
    {
        m_AtProtected = key == "Protected";
    }
}

void AttributeDraft::Put(const Value& value, std::size_t depth, bool lasts)
{
    if (depth == 1)
    {
        PutMember(value, lasts);
    }
    else if (m_Field == Field::Value && m_ValuesOpen)
    {
        PutOfValue(value, depth);
    }
    else if (m_Field == Field::Oem && m_OemOpen)
    {
        PutOfOem(value, depth);
    }
}

void AttributeDraft::PutMember(const Value& value, bool lasts)
{
    if (m_Field == Field::None)
    {
        return;
    }
    if (m_Field == Field::Value)
    {
        ForgetValues();
        m_ValuesOpen = IsArray(value);
    }
    else if (m_Field == Field::Oem)
    {
        m_Protected = m_AtZorvan = m_ZorvanOpen = false;
        m_OemOpen = IsObject(value);
    }
    Member& member = m_Members[static_cast<std::size_t>(m_Field)];
    member.Given = true;
    member.Content = value;
    if (!lasts && IsText(value))
    {
        member.Own = std::get<std::string_view>(value);
        member.Content = std::string_view(member.Own);
    }
}

void AttributeDraft::PutOfValue(const Value& value, std::size_t depth)
{
    if (depth == 2)
    {
        EndValue();
        m_ValueOpen = IsObject(value);
        m_Nameless += m_ValueOpen ? 0U : 1U;
        m_AtName = m_AtDisplayName = false;
    }
    else if (depth == 3 && m_ValueOpen && (m_AtName || m_AtDisplayName))
    {
        std::optional<std::string>& part = m_AtName ? m_ValueName : m_ValueDisplayName;
        const auto* const text = std::get_if<std::string_view>(&value);
        part = text != nullptr ? std::optional<std::string>(*text) : std::nullopt;
    }
}

void AttributeDraft::ForgetValues()
{
    m_Values.clear();
    m_Nameless = 0;
    m_ValueName.reset();
    m_ValueDisplayName.reset();
    m_ValuesOpen = m_ValueOpen = false;
}

/// Only what has a name takes room.
void AttributeDraft::EndValue()
{
    if (m_ValueOpen && m_ValueName)
    {
        m_Values.push_back({std::move(*m_ValueName), std::move(m_ValueDisplayName)});
    }
    else if (m_ValueOpen)
    {
        ++m_Nameless;
    }
    m_ValueOpen = false;
    m_ValueName.reset();
    m_ValueDisplayName.reset();
}

void AttributeDraft::End() { EndValue(); }

void AttributeDraft::PutOfOem(const Value& value, std::size_t depth)
{
    if (depth == 2)
    {
        m_Protected = m_Protected && !m_AtZorvan;
        m_ZorvanOpen = m_AtZorvan && IsObject(value);
        m_AtProtected = false;
    }
    else if (depth == 3 && m_ZorvanOpen && m_AtProtected)
    {
        m_Protected = IsSet(ScalarOf(value));
    }
}

std::optional<std::string> AttributeDraft::TextOf(Field field) const
{
    const Member& member = m_Members[static_cast<std::size_t>(field)];
    return member.Given && IsText(member.Content)
               ? std::optional<std::string>(std::get<std::string_view>(member.Content))
               : std::nullopt;
}

bool AttributeDraft::FlagOf(Field field) const
{
    const Member& member = m_Members[static_cast<std::size_t>(field)];
    return member.Given && IsSet(ScalarOf(member.Content));
}

} // namespace Tavrine
