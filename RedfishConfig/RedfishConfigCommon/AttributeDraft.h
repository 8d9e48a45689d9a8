#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "RegistryScalar.h"
#include "SettingProperty.h"

namespace Tavrine
{

/// What a registry's text says of one attribute, before it is judged: filled by the events of a parser, and
/// filled anew for the next attribute, so that thousands of them need no document. Of several members
/// of one name the last one counts.
class AttributeDraft
{
  public:
    enum class Container : std::uint8_t
    {
        Array,
        Object,
    };
    /// A value as a parser meets it: of arrays and objects that they begin.
    using Value = std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double, std::string_view, Container>;

    /// What one member holds.
    struct Member
    {
        bool Given = false;
        Value Content;
        /// The text of `Content` where it does not stand in the registry's.
        std::string Own;
    };
    struct ValueName
    {
        std::string Name;
        std::optional<std::string> DisplayName;
    };
    /// Members beside those of SettingProperty.
    enum class Field : std::uint8_t
    {
        Name = PropertyCount,
        Type,
        MenuPath,
        SystemUnique,
        Value,
        Oem,
        None,
    };

    // Events. Depths count from the attribute's object, whose members are at 1.

    void Begin();
    void Key(std::string_view key, std::size_t depth);
    /// @param lasts  whether a text stays where it is as long as the draft is read.
    void Put(const Value& value, std::size_t depth, bool lasts = true);
    /// The attribute is whole.
    void End();

    // Answers.

    const Member& Of(SettingProperty property) const { return m_Members[static_cast<std::size_t>(property)]; }
    std::optional<std::string> TextOf(Field field) const;
    bool FlagOf(Field field) const;
    /// This family's machines mark what only their OEM actions reach.
    bool IsProtected() const { return m_Protected; }
    /// The elements of "Value" that have a name. To be moved from.
    std::vector<ValueName>& ValueNames() { return m_Values; }
    /// How many have none.
    std::size_t NamelessValues() const { return m_Nameless; }

  private:
    void PutMember(const Value& value, bool lasts);
    void PutOfValue(const Value& value, std::size_t depth);
    void PutOfOem(const Value& value, std::size_t depth);
    void ForgetValues();
    void EndValue();

    std::array<Member, static_cast<std::size_t>(Field::None)> m_Members;
    std::vector<ValueName> m_Values;
    std::size_t m_Nameless = 0;
    /// The element of "Value" that is being read.
    std::optional<std::string> m_ValueName;
    std::optional<std::string> m_ValueDisplayName;
    bool m_Protected = false;
    /// The member at depth 1 that is being read.
    Field m_Field = Field::None;
    /// "Value" is an array; its element is an object; where in it the reading stands.
    bool m_ValuesOpen = false;
    bool m_ValueOpen = false;
    bool m_AtName = false;
    bool m_AtDisplayName = false;
    /// The same of "Oem", its "Zorvan" and the "Protected" of that.
    bool m_OemOpen = false;
    bool m_AtZorvan = false;
    bool m_ZorvanOpen = false;
    bool m_AtProtected = false;
};

/// As ScalarFromJson.
std::optional<RegistryScalar> ScalarOf(const AttributeDraft::Value& value);

} // namespace Tavrine
