#include "RegistryStream.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/value_stack.hpp>

namespace Tavrine
{

namespace
{

namespace json = boost::json;
using Container = AttributeDraft::Container;

/// The lists of a registry; a member of another name is nobody's.
enum class List
{
    Attributes,
    Menus,
    Dependencies,
    None,
};
constexpr std::array<std::string_view, 3> ListNames = {"Attributes", "Menus", "Dependencies"};
constexpr std::string_view EntriesName = "RegistryEntries";

List ListNamed(std::string_view name)
{
    for (std::size_t row = 0; row < ListNames.size(); ++row)
    {
        if (name == ListNames[row])
        {
            return static_cast<List>(row);
        }
    }
    return List::None;
}

/// Takes the events of the parser. Containers are counted by their depth: 1 is the root,
/// 2 the entries, 3 a list, and what begins in a list is one of its elements.
class RegistryHandler
{
  public:
    static constexpr std::size_t max_object_size = json::object::max_size();
    static constexpr std::size_t max_array_size = json::array::max_size();
    static constexpr std::size_t max_key_size = json::string::max_size();
    static constexpr std::size_t max_string_size = json::string::max_size();

    RegistryHandler(std::string_view text, RegistryLists& lists, const AttributeActions& attributes)
        : m_Whole(text), m_Lists(lists), m_Attributes(attributes)
    {
    }
    RegistryHandler(const RegistryHandler&) = delete;
    RegistryHandler& operator=(const RegistryHandler&) = delete;

    bool RootIsObject() const { return m_RootIsObject; }
    bool HasEntries() const { return m_HasEntries; }
    bool HasAttributes() const { return m_HasAttributes; }

    // The names and results are those that boost::json::basic_parser asks for.
    bool on_document_begin(json::error_code&) { return true; }
    bool on_document_end(json::error_code&) { return true; }

    bool on_object_begin(json::error_code&)
    {
        BeginValue(true);
        m_RootIsObject = m_RootIsObject || m_Depth == 0;
        if (m_Depth == 1 && m_InEntriesMember)
        {
            m_HasEntries = m_InEntries = true;
        }
        ++m_Depth;
        return true;
    }
    bool on_object_end(std::size_t members, json::error_code&)
    {
        if (Building() && !OfAttribute())
        {
            m_Stack.push_object(members);
        }
        --m_Depth;
        m_InEntries = m_InEntries && m_Depth > 1;
        EndElement();
        return true;
    }

    bool on_array_begin(json::error_code&)
    {
        BeginValue(false);
        if (m_InEntries && m_Depth == 2)
        {
            m_Open = m_Member;
            m_HasAttributes = m_HasAttributes || m_Open == List::Attributes;
        }
        ++m_Depth;
        return true;
    }
    bool on_array_end(std::size_t elements, json::error_code&)
    {
        if (Building() && !OfAttribute())
        {
            m_Stack.push_array(elements);
        }
        --m_Depth;
        EndElement();
        if (m_Depth == 2)
        {
            m_Open = List::None;
        }
        return true;
    }

    bool on_key_part(json::string_view part, std::size_t, json::error_code&)
    {
        if (OfAttribute() || m_Depth <= 2)
        {
            m_Key.append(part.data(), part.size());
        }
        else if (Building())
        {
            m_Stack.push_chars(part);
        }
        return true;
    }
    bool on_key(json::string_view part, std::size_t, json::error_code&)
    {
        if (OfAttribute())
        {
            m_Draft.Key(WholeOf(m_Key, part), m_Depth - ListDepth);
            m_Key.clear();
            return true;
        }
        if (Building())
        {
            m_Stack.push_key(part);
            return true;
        }
        m_Key.append(part.data(), part.size());
        if (m_Depth == 1)
        {
            m_InEntriesMember = m_Key == EntriesName;
        }
        else if (m_Depth == 2)
        {
            m_Member = m_InEntries ? ListNamed(m_Key) : List::None;
        }
        m_Key.clear();
        return true;
    }

    bool on_string_part(json::string_view part, std::size_t, json::error_code&)
    {
        if (OfAttribute())
        {
            m_Text.append(part.data(), part.size());
        }
        else if (Building())
        {
            m_Stack.push_chars(part);
        }
        return true;
    }
    bool on_string(json::string_view part, std::size_t, json::error_code&)
    {
        if (OfAttribute())
        {
            const std::string_view text = WholeOf(m_Text, part);
            m_Draft.Put(text, m_Depth - ListDepth, IsOfWhole(text));
            m_Text.clear();
            return true;
        }
        return Scalar([&] { m_Stack.push_string(part); }, std::string_view());
    }
    bool on_number_part(json::string_view, json::error_code&) { return true; }
    bool on_int64(std::int64_t number, json::string_view, json::error_code&)
    {
        return Scalar([&] { m_Stack.push_int64(number); }, number);
    }
    bool on_uint64(std::uint64_t number, json::string_view, json::error_code&)
    {
        return Scalar([&] { m_Stack.push_uint64(number); }, number);
    }
    bool on_double(double number, json::string_view, json::error_code&)
    {
        return Scalar([&] { m_Stack.push_double(number); }, number);
    }
    bool on_bool(bool flag, json::error_code&)
    {
        return Scalar([&] { m_Stack.push_bool(flag); }, flag);
    }
    bool on_null(json::error_code&)
    {
        return Scalar([&] { m_Stack.push_null(); }, nullptr);
    }
    bool on_comment_part(json::string_view, json::error_code&) { return true; }
    bool on_comment(json::string_view, json::error_code&) { return true; }

  private:
    static constexpr std::size_t ListDepth = 3;

    /// Within an element of a list.
    bool Building() const { return m_Open != List::None && m_Depth > ListDepth; }
    bool OfAttribute() const { return m_Open == List::Attributes && m_Depth > ListDepth; }

    /// The end of a text with what came before it.
    static std::string_view WholeOf(std::string& begun, json::string_view end)
    {
        if (begun.empty())
        {
            return {end.data(), end.size()};
        }
        return begun.append(end.data(), end.size());
    }
    bool IsOfWhole(std::string_view text) const
    {
        const std::less_equal<> before;
        return before(m_Whole.data(), text.data()) &&
               before(text.data() + text.size(), m_Whole.data() + m_Whole.size());
    }

    /// An object or an array.
    void BeginValue(bool isObject)
    {
        if (OfAttribute())
        {
            m_Draft.Put(isObject ? Container::Object : Container::Array, m_Depth - ListDepth);
        }
        else if (m_Open != List::None && m_Depth == ListDepth)
        {
            BeginElement(isObject);
        }
        else
        {
            BeginMember();
        }
    }

    /// A member that comes a second time makes the first one void, whatever its kind.
    void BeginMember()
    {
        if (m_Depth == 1 && m_InEntriesMember)
        {
            m_HasEntries = false;
            Forget(List::Attributes);
            Forget(List::Menus);
            Forget(List::Dependencies);
        }
        else if (m_Depth == 2 && m_InEntries)
        {
            Forget(m_Member);
        }
    }

    void BeginElement(bool isObject)
    {
        m_ElementIsObject = isObject;
        if (m_Open == List::Attributes)
        {
            m_Draft.Begin();
        }
        else
        {
            // Made anew: one that is released keeps the size that its blocks have grown to, and doubles it.
            m_Stack.reset(IsKept() ? &m_Lists.Memory : &m_Dropped.emplace());
        }
    }

    void EndElement()
    {
        if (m_Open == List::Attributes && m_Depth == ListDepth)
        {
            m_Draft.End();
            m_Attributes.Take(m_ElementIsObject ? &m_Draft : nullptr);
        }
        else if (m_Open != List::None && m_Depth == ListDepth)
        {
            Deliver(m_Stack.release());
        }
    }

    template <class Push> bool Scalar(const Push& push, const AttributeDraft::Value& scalar)
    {
        if (OfAttribute())
        {
            m_Draft.Put(scalar, m_Depth - ListDepth);
        }
        else if (Building())
        {
            push();
        }
        else if (m_Open == List::Attributes)
        {
            m_Attributes.Take(nullptr);
        }
        else if (m_Open != List::None)
        {
            Deliver(nullptr); // no element of any list is a scalar, so its kind is enough
        }
        else
        {
            BeginMember();
        }
        return true;
    }

    void Deliver(json::value element)
    {
        RegistryLists::List& list = ListOf(m_Open);
        if (++list.Count <= list.Most)
        {
            list.Kept.push_back(std::move(element));
        }
    }

    /// Whether the element that begins outlives its end.
    bool IsKept() { return ListOf(m_Open).Count < ListOf(m_Open).Most; }

    void Forget(List list)
    {
        if (list == List::Attributes)
        {
            m_HasAttributes = false;
            m_Attributes.Begin();
        }
        else if (list != List::None)
        {
            ListOf(list) = {ListOf(list).Most};
        }
    }

    RegistryLists::List& ListOf(List list) { return list == List::Menus ? m_Lists.Menus : m_Lists.Dependencies; }

    std::string_view m_Whole;
    RegistryLists& m_Lists;
    const AttributeActions& m_Attributes;
    AttributeDraft m_Draft;
    /// Of an element of another list that is above the cap.
    std::optional<json::monotonic_resource> m_Dropped;
    json::value_stack m_Stack;
    /// The beginnings of a key and of a text that come in parts.
    std::string m_Key;
    std::string m_Text;
    std::size_t m_Depth = 0;
    List m_Member = List::None;
    /// The list whose elements are being read.
    List m_Open = List::None;
    bool m_ElementIsObject = false;
    bool m_RootIsObject = false;
    bool m_HasEntries = false;
    bool m_HasAttributes = false;
    bool m_InEntriesMember = false;
    bool m_InEntries = false;
};

std::string FaultOf(const json::error_code& failure)
{
    return failure == json::error::too_deep
               ? "it is nested deeper than " + std::to_string(MaxRegistryDepth) + " levels."
               : "it is no JSON: " + failure.message() + ".";
}

} // namespace

std::string ReadRegistryText(std::string_view text, RegistryLists& lists, const AttributeActions& attributes)
{
    if (text.size() > MaxRegistryBytes)
    {
        return "it is larger than " + std::to_string(MaxRegistryBytes) + " bytes.";
    }
    json::parse_options options;
    options.max_depth = MaxRegistryDepth;
    json::basic_parser<RegistryHandler> parser(options, text, lists, attributes);
    json::error_code failure;
    const std::size_t read = parser.write_some(false, text.data(), text.size(), failure);
    if (!failure && read < text.size())
    {
        failure = json::make_error_code(json::error::extra_data);
    }
    if (failure)
    {
        return FaultOf(failure);
    }
    const RegistryHandler& handler = parser.handler();
    return !handler.RootIsObject()    ? "it is no JSON object."
           : !handler.HasEntries()    ? "it has no object \"RegistryEntries\"."
           : !handler.HasAttributes() ? "its \"RegistryEntries\" have no array \"Attributes\"."
                                      : "";
}

} // namespace Tavrine
