#include "AttributeRegistry.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include <boost/json/value.hpp>

#include "CodePoints.h"
#include "RegistryStream.h"

namespace Tavrine
{

namespace
{

namespace json = boost::json;
using Field = AttributeDraft::Field;

constexpr std::size_t MaxNoteLines = 50;
constexpr std::size_t MaxNameInNote = 200;
/// So many are compared one by one faster than by a table.
constexpr std::size_t FewValues = 16;
/// Texts included, real ones have more.
constexpr std::size_t LeastAttributeBytes = 400;

std::string_view View(const json::string& text) { return {text.data(), text.size()}; }

std::string Quoted(std::string_view name) { return "\"" + std::string(name.substr(0, MaxNameInNote)) + "\""; }

std::optional<std::string> TextOf(const json::object& object, std::string_view key)
{
    const json::value* member = object.if_contains(key);
    const json::string* text = member != nullptr ? member->if_string() : nullptr;
    return text != nullptr ? std::optional<std::string>(View(*text)) : std::nullopt;
}

const json::object* ObjectOf(const json::object& object, std::string_view key)
{
    const json::value* member = object.if_contains(key);
    return member != nullptr ? member->if_object() : nullptr;
}

const json::array* ArrayOf(const json::object& object, std::string_view key)
{
    const json::value* member = object.if_contains(key);
    return member != nullptr ? member->if_array() : nullptr;
}

bool FlagOf(const json::object& object, std::string_view key)
{
    const json::value* member = object.if_contains(key);
    return IsSet(member != nullptr ? ScalarFromJson(*member) : std::nullopt);
}

std::size_t DepthOf(std::string_view normalisedPath)
{
    const auto cuts = std::count(normalisedPath.begin(), normalisedPath.end(), '/');
    return normalisedPath.empty() ? 0 : static_cast<std::size_t>(cuts) + 1;
}

/// Reads one document into one registry; short-lived. Attributes come one by one, before
/// or after the menus that they stand in.
class RegistryReader
{
  public:
    RegistryReader(AttributeRegistry& registry, RegistryNotes& notes) : m_Registry(registry), m_Notes(notes) {}

    bool Read(std::string_view text, std::string& error)
    {
        // Growing would move thousands of attributes time and again; what is not needed stays untouched.
        const std::size_t expected = std::min(text.size() / LeastAttributeBytes, MaxRegistryAttributes);
        m_Registry.Attributes.reserve(expected);
        m_Registry.AttributeIndex.reserve(expected);
        RegistryLists lists;
        error = ReadRegistryText(
            text, lists,
            {[this] { BeginAttributes(); }, [this](AttributeDraft* attribute) { TakeAttribute(attribute); }});
        if (!error.empty())
        {
            return false;
        }
        ReadMenus(lists.Menus);
        EndAttributes();
        ForEachObject(lists.Dependencies, "dependency",
                      [this](const json::object& dependency) { ReadDependency(dependency); });
        return true;
    }

  private:
    void BeginAttributes()
    {
        // A list may begin millions of times, and to clear an index takes as long as it has ever been large.
        if (!m_Registry.Attributes.empty())
        {
            m_Registry.Attributes.clear();
            m_Registry.AttributeIndex = {};
        }
        m_AttributeNotes = {};
        m_AttributeElements = 0;
    }

    void TakeAttribute(AttributeDraft* attribute)
    {
        const std::size_t position = m_AttributeElements++;
        if (position >= MaxRegistryAttributes)
        {
            return;
        }
        if (attribute != nullptr)
        {
            ReadAttribute(*attribute);
        }
        else
        {
            m_AttributeNotes.Add(NoObject("attribute", position));
        }
    }

    /// Menus are known now.
    void EndAttributes()
    {
        if (m_AttributeElements > MaxRegistryAttributes)
        {
            m_AttributeNotes.Add(TooMany("attribute", m_AttributeElements, MaxRegistryAttributes));
        }
        m_Notes.Add(m_AttributeNotes);
        // Thousands of attributes stand in some hundred menus.
        std::unordered_map<std::string_view, MenuPlace> places;
        for (RegistryAttribute& attribute : m_Registry.Attributes)
        {
            if (!attribute.MenuPath)
            {
                continue;
            }
            const auto [place, isNew] = places.try_emplace(*attribute.MenuPath);
            if (isNew)
            {
                place->second = FindMenu(*attribute.MenuPath);
            }
            attribute.Menu = place->second.Menu;
            attribute.MenuIsKnown = place->second.IsKnown;
        }
    }

    static std::string NoObject(const char* what, std::size_t position)
    {
        return "Registry " + std::string(what) + " " + std::to_string(position) + " is no object, so skipped.";
    }

    static std::string TooMany(const char* what, std::size_t count, std::size_t most)
    {
        return "The registry has " + std::to_string(count) + " elements of the kind " + what + ", so those above " +
               std::to_string(most) + " are left out.";
    }

    template <class Reader> void ForEachObject(const RegistryLists::List& list, const char* what, const Reader& read)
    {
        for (std::size_t position = 0; position < list.Kept.size(); ++position)
        {
            if (const json::object* element = list.Kept[position].if_object())
            {
                read(*element);
            }
            else
            {
                m_Notes.Add(NoObject(what, position));
            }
        }
        if (list.Count > list.Most)
        {
            m_Notes.Add(TooMany(what, list.Count, list.Most));
        }
    }

    void ReadMenus(const RegistryLists::List& menus)
    {
        std::vector<RegistryMenu> read;
        ForEachObject(menus, "menu",
                      [this, &read](const json::object& object)
                      {
                          if (std::optional<RegistryMenu> menu = ReadMenu(object))
                          {
                              read.push_back(std::move(*menu));
                          }
                      });
        std::stable_sort(read.begin(), read.end(),
                         [](const RegistryMenu& left, const RegistryMenu& right)
                         { return DepthOf(left.Path) < DepthOf(right.Path); });
        for (RegistryMenu& menu : read)
        {
            EnterMenu(std::move(menu));
        }
    }

    std::optional<RegistryMenu> ReadMenu(const json::object& object)
    {
        const std::optional<std::string> path = TextOf(object, "MenuPath");
        RegistryMenu menu;
        menu.Name = TextOf(object, "MenuName").value_or(std::string());
        if (!path || (menu.Path = NormalisedMenuPath(*path), DepthOf(menu.Path) > MaxMenuDepth))
        {
            m_Notes.Add("Menu " + Quoted(menu.Name) + " has no \"MenuPath\" or one that is too deep, so skipped.");
            return std::nullopt;
        }
        const std::string lastPart = menu.Path.substr(menu.Path.rfind('/') + 1);
        menu.DisplayName = TextOf(object, "DisplayName").value_or(std::string());
        menu.DisplayName = CutText(!menu.DisplayName.empty() ? menu.DisplayName
                                   : !menu.Name.empty()      ? menu.Name
                                                             : lastPart,
                                   MaxMenuName);
        for (const SettingProperty flag : FlagProperties)
        {
            menu.Flags[static_cast<std::size_t>(flag)] = FlagOf(object, PropertyWord(flag));
        }
        return menu;
    }

    void EnterMenu(RegistryMenu menu)
    {
        const std::size_t index = m_Registry.Menus.size();
        menu.Parent = menu.Path.empty() ? NoIndex : NearestMenu(menu.Path.substr(0, LastCut(menu.Path)));
        if (!m_MenuByPath.try_emplace(menu.Path, index).second)
        {
            m_Notes.Add("Menu path " + Quoted(menu.Path) + " occurs twice, so the later menu is skipped.");
            // Dependencies may still name the menu that was left out.
            NameMenu(menu.Name, m_MenuByPath[menu.Path]);
            return;
        }
        NameMenu(menu.Name, index);
        m_Registry.Menus.push_back(std::move(menu));
    }

    /// What names nothing means no menu.
    void NameMenu(const std::string& name, std::size_t index)
    {
        if (!name.empty())
        {
            m_MenuByName.try_emplace(name, index);
        }
    }

    static std::size_t LastCut(std::string_view path)
    {
        const std::size_t cut = path.rfind('/');
        return cut == std::string_view::npos ? 0 : cut;
    }

    /// The menu of this normalised path or of the nearest path above it.
    std::size_t NearestMenu(std::string path) const
    {
        while (true)
        {
            const auto found = m_MenuByPath.find(path);
            if (found != m_MenuByPath.end())
            {
                return found->second;
            }
            if (path.empty())
            {
                return NoIndex;
            }
            path.resize(LastCut(path));
        }
    }

    void ReadAttribute(AttributeDraft& draft)
    {
        std::optional<std::string> name = draft.TextOf(Field::Name);
        if (!name)
        {
            m_AttributeNotes.Add("An attribute without a text in \"AttributeName\" is skipped.");
            return;
        }
        const auto [entry, isNew] =
            m_Registry.AttributeIndex.try_emplace(std::move(*name), m_Registry.Attributes.size());
        if (!isNew)
        {
            m_AttributeNotes.Add("Attribute " + Quoted(entry->first) + " occurs twice, so the later one is skipped.");
            return;
        }
        RegistryAttribute& attribute = m_Registry.Attributes.emplace_back();
        attribute.Key = &entry->first;
        attribute.Type = draft.TextOf(Field::Type);
        attribute.MenuPath = draft.TextOf(Field::MenuPath);
        attribute.IsSystemUnique = draft.FlagOf(Field::SystemUnique);
        attribute.IsProtected = draft.IsProtected();
        ReadProperties(draft, attribute);
        ReadValueNames(draft, attribute);
    }

    void ReadProperties(const AttributeDraft& draft, RegistryAttribute& attribute)
    {
        const auto isGiven = [&](std::size_t row)
        {
            const AttributeDraft::Member& member = draft.Of(static_cast<SettingProperty>(row));
            return member.Given && !std::holds_alternative<std::nullptr_t>(member.Content);
        };
        std::size_t count = 0;
        for (std::size_t row = FlagProperties.size(); row < PropertyCount; ++row)
        {
            count += isGiven(row) ? 1U : 0U;
        }
        attribute.Properties.reserve(count);
        for (std::size_t row = 0; row < PropertyCount; ++row)
        {
            if (isGiven(row))
            {
                const auto property = static_cast<SettingProperty>(row);
                ReadProperty(draft.Of(property).Content, property, attribute);
            }
        }
    }

    void ReadProperty(const AttributeDraft::Value& value, SettingProperty property, RegistryAttribute& attribute)
    {
        // Nearly all are flags and texts, which need no detour.
        if (const bool* const flag = std::get_if<bool>(&value); flag != nullptr && IsFlag(property))
        {
            attribute.Flags.set(static_cast<std::size_t>(property), *flag);
            return;
        }
        if (const auto* const text = std::get_if<std::string_view>(&value); text != nullptr && TakesText(property))
        {
            attribute.Properties.emplace_back(property, std::string(*text));
            return;
        }
        std::optional<RegistryScalar> suited = ScalarOf(value);
        if (suited)
        {
            suited = SuitedTo(property, std::move(*suited));
        }
        if (suited)
        {
            AddRegistryProperty(attribute, property, std::move(*suited));
        }
        else
        {
            m_AttributeNotes.Add("Attribute " + Quoted(attribute.Name()) + " has a wrong kind of \"" +
                                 PropertyWord(property) + "\", so that is left out.");
        }
    }

    void ReadValueNames(AttributeDraft& draft, RegistryAttribute& attribute)
    {
        if (draft.NamelessValues() != 0)
        {
            m_AttributeNotes.Add("Attribute " + Quoted(attribute.Name()) + " has a value without a name.",
                                 draft.NamelessValues());
        }
        const bool few = draft.ValueNames().size() <= FewValues;
        std::unordered_set<std::string_view> seen;
        // Names are looked at where they end up, which room for all of them keeps in place.
        attribute.ValueNames.reserve(draft.ValueNames().size());
        for (AttributeDraft::ValueName& value : draft.ValueNames())
        {
            if (few && std::any_of(attribute.ValueNames.begin(), attribute.ValueNames.end(),
                                   [&](const RegistryValueName& other) { return other.Name == value.Name; }))
            {
                continue;
            }
            attribute.ValueNames.push_back({std::move(value.Name), std::move(value.DisplayName)});
            if (!few && !seen.insert(attribute.ValueNames.back().Name).second)
            {
                attribute.ValueNames.pop_back();
            }
        }
    }

    struct MenuPlace
    {
        std::size_t Menu = NoIndex;
        bool IsKnown = false;
    };

    MenuPlace FindMenu(const std::string& menuPath) const
    {
        const std::string path = NormalisedMenuPath(menuPath);
        return DepthOf(path) <= MaxMenuDepth ? MenuPlace{NearestMenu(path), m_MenuByPath.contains(path)} : MenuPlace();
    }

    void ReadDependency(const json::object& object)
    {
        const std::optional<std::string> type = TextOf(object, "Type");
        const json::object* map = ObjectOf(object, "Dependency");
        if (type.value_or("Map") != "Map" || map == nullptr)
        {
            m_Notes.Add("A dependency that is no \"Map\" is skipped.");
            return;
        }
        RegistryDependency dependency;
        std::string cause;
        if (!ReadTarget(*map, dependency, cause) || !ReadTerms(*map, dependency, cause))
        {
            m_Notes.Add("A dependency on " + Quoted(TextOf(*map, "MapToAttribute").value_or("")) +
                        " is skipped: " + cause);
            return;
        }
        m_Registry.Dependencies.push_back(std::move(dependency));
    }

    bool ReadTarget(const json::object& map, RegistryDependency& dependency, std::string& cause) const
    {
        const std::string name = TextOf(map, "MapToAttribute").value_or("");
        dependency.Attribute = AttributeOf(name);
        const auto menu = m_MenuByName.find(name);
        if (dependency.Attribute == NoIndex && menu != m_MenuByName.end())
        {
            dependency.Menu = menu->second;
        }
        const std::optional<SettingProperty> property = PropertyFromWord(TextOf(map, "MapToProperty").value_or(""));
        const json::value* member = map.if_contains("MapToValue");
        const std::optional<RegistryScalar> scalar = member != nullptr ? ScalarFromJson(*member) : std::nullopt;
        const std::optional<RegistryScalar> suited = property && scalar ? SuitedTo(*property, *scalar) : std::nullopt;
        cause = dependency.Attribute == NoIndex && dependency.Menu == NoIndex ? "there is no such attribute or menu."
                : !property                                        ? "\"MapToProperty\" is no property of a setting."
                : dependency.Menu != NoIndex && !IsFlag(*property) ? "a menu has no such property."
                : !suited                                          ? "\"MapToValue\" does not suit the property."
                                                                   : "";
        if (!cause.empty())
        {
            return false;
        }
        dependency.Property = *property;
        dependency.Value = *suited;
        return true;
    }

    bool ReadTerms(const json::object& map, RegistryDependency& dependency, std::string& cause) const
    {
        const json::array* terms = ArrayOf(map, "MapFrom");
        if (terms == nullptr || terms->empty() || terms->size() > MaxDependencyTerms)
        {
            cause = "\"MapFrom\" has no terms or too many.";
            return false;
        }
        dependency.Terms.reserve(terms->size());
        for (const json::value& element : *terms)
        {
            const json::object* object = element.if_object();
            std::optional<DependencyTerm> term = object != nullptr ? ReadTerm(*object) : std::nullopt;
            if (!term)
            {
                // Leaving out one term would widen the condition, so all of it goes.
                cause = "a term of \"MapFrom\" cannot be understood.";
                return false;
            }
            dependency.Terms.push_back(std::move(*term));
        }
        return true;
    }

    std::optional<DependencyTerm> ReadTerm(const json::object& object) const
    {
        static constexpr std::pair<std::string_view, TermCondition> conditions[] = {
            {"EQU", TermCondition::Equal}, {"NEQ", TermCondition::NotEqual},       {"GTR", TermCondition::Greater},
            {"LSS", TermCondition::Less},  {"GEQ", TermCondition::GreaterOrEqual}, {"LEQ", TermCondition::LessOrEqual},
        };
        const std::string word = TextOf(object, "MapFromCondition").value_or("");
        const auto* condition = std::find_if(std::begin(conditions), std::end(conditions),
                                             [&word](const auto& row) { return row.first == word; });
        const json::value* member = object.if_contains("MapFromValue");
        std::optional<RegistryScalar> value = member != nullptr ? ScalarFromJson(*member) : std::nullopt;
        if (condition == std::end(conditions) || !value)
        {
            return std::nullopt;
        }
        DependencyTerm term;
        term.AttributeName = TextOf(object, "MapFromAttribute").value_or("");
        term.Attribute = AttributeOf(term.AttributeName);
        term.Property = PropertyFromWord(TextOf(object, "MapFromProperty").value_or(""));
        term.Condition = condition->second;
        term.Value = std::move(*value);
        term.Or = TextOf(object, "MapTerms").value_or("") == "OR";
        return term;
    }

    std::size_t AttributeOf(const std::string& name) const
    {
        const auto found = m_Registry.AttributeIndex.find(name);
        return found != m_Registry.AttributeIndex.end() && !name.empty() ? found->second : NoIndex;
    }

    AttributeRegistry& m_Registry;
    RegistryNotes& m_Notes;
    /// They follow those on the menus.
    RegistryNotes m_AttributeNotes;
    std::size_t m_AttributeElements = 0;
    std::unordered_map<std::string, std::size_t> m_MenuByPath;
    std::unordered_map<std::string, std::size_t> m_MenuByName;
};

} // namespace

void RegistryNotes::Add(const std::string& line, std::size_t times)
{
    for (; times > 0 && Lines.size() < MaxNoteLines; --times)
    {
        Lines.push_back(line);
    }
    More += times;
}

void RegistryNotes::Add(const RegistryNotes& others)
{
    for (const std::string& line : others.Lines)
    {
        Add(line);
    }
    More += others.More;
}

RedfishConfigSettingInfoStru InfoOf(const RegistryAttribute& attribute)
{
    RedfishConfigSettingInfoStru info;
    info.AttributeKey = attribute.Name();
    info.SettingType = attribute.Type;
    info.MenuPath = attribute.MenuPath;
    info.IsSystemUnique = attribute.IsSystemUnique;
    info.IsProtected = attribute.IsProtected;
    for (const SettingProperty flag : FlagProperties)
    {
        SetFlag(info, flag, attribute.Flags.test(static_cast<std::size_t>(flag)));
    }
    for (const auto& [property, value] : attribute.Properties)
    {
        SetProperty(info, property, value);
    }
    for (const RegistryValueName& value : attribute.ValueNames)
    {
        info.ValueNames.emplace(value.Name, value.Shown());
    }
    return info;
}

std::string NormalisedMenuPath(std::string_view path)
{
    std::string normalised;
    while (!path.empty())
    {
        const std::size_t cut = std::min(path.find('/'), path.size());
        const std::string_view part = path.substr(0, cut);
        if (!part.empty() && part != ".")
        {
            normalised.append(normalised.empty() ? "" : "/").append(part);
        }
        path.remove_prefix(std::min(cut + 1, path.size()));
    }
    return normalised;
}

bool ReadAttributeRegistry(std::string_view text, AttributeRegistry& registry, RegistryNotes& notes, std::string& error)
{
    return RegistryReader(registry, notes).Read(text, error);
}

} // namespace Tavrine
