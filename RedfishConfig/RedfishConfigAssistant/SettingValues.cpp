#include "SettingValues.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>

#include "JsonText.h"
#include "Log.h"
#include "OrderedLookup.h"
#include "PlainText.h"
#include "ShapeHandler.h"
#include "ValueConversions.h"

namespace Tavrine
{

namespace
{

namespace json = boost::json;

struct ReadValue
{
    std::string Name;
    OptionalVar Value;
    /// False for a kind that no setting has: arrays, objects, and numbers beyond 64 bits signed.
    bool Usable = false;
};

/// Keeps the members of the object "Attributes" of the top level. There may be thousands, so no document is made.
class ValuesHandler : public ShapeHandler
{
  public:
    /// In the order of the text; nothing where the last "Attributes" is no object, or there is none.
    std::optional<std::vector<ReadValue>>& Values() { return m_Values; }

    bool on_object_begin(json::error_code& ec)
    {
        Take({}, false);
        if (Depth() == 1 && m_AtAttributes)
        {
            m_Values.emplace();
            m_Inside = true;
        }
        return ShapeHandler::on_object_begin(ec);
    }
    bool on_object_end(std::size_t size, json::error_code& ec)
    {
        m_Inside = m_Inside && Depth() > 2;
        return ShapeHandler::on_object_end(size, ec);
    }
    bool on_array_begin(json::error_code& ec)
    {
        Take({}, false);
        return ShapeHandler::on_array_begin(ec);
    }
    bool on_key_part(json::string_view part, std::size_t size, json::error_code& ec)
    {
        m_Text.append(part.data(), part.size());
        return ShapeHandler::on_key_part(part, size, ec);
    }
    bool on_key(json::string_view part, std::size_t size, json::error_code& ec)
    {
        m_Text.append(part.data(), part.size());
        if (Depth() == 1)
        {
            m_AtAttributes = m_Text == "Attributes";
        }
        else if (AtAttribute())
        {
            m_Name.swap(m_Text);
        }
        m_Text.clear();
        return ShapeHandler::on_key(part, size, ec);
    }
    bool on_string_part(json::string_view part, std::size_t, json::error_code&)
    {
        m_Text.append(part.data(), part.size());
        return true;
    }
    bool on_string(json::string_view part, std::size_t size, json::error_code& ec)
    {
        Take(m_Text.append(part.data(), part.size()), true);
        m_Text.clear();
        return ShapeHandler::on_string(part, size, ec);
    }
    bool on_int64(std::int64_t number, json::string_view text, json::error_code& ec)
    {
        Take(number, true);
        return ShapeHandler::on_int64(number, text, ec);
    }
    bool on_uint64(std::uint64_t number, json::string_view text, json::error_code& ec)
    {
        Take({}, false);
        return ShapeHandler::on_uint64(number, text, ec);
    }
    bool on_double(double number, json::string_view text, json::error_code& ec)
    {
        Take({}, false);
        return ShapeHandler::on_double(number, text, ec);
    }
    bool on_bool(bool flag, json::error_code& ec)
    {
        Take(flag, true);
        return ShapeHandler::on_bool(flag, ec);
    }
    bool on_null(json::error_code& ec)
    {
        Take({}, true);
        return ShapeHandler::on_null(ec);
    }

  private:
    bool AtAttribute() const { return m_Inside && Depth() == 2; }

    /// A value, or its beginning.
    void Take(const OptionalVar& value, bool usable)
    {
        if (AtAttribute())
        {
            m_Values->push_back({m_Name, value, usable});
        }
        else if (Depth() == 1 && m_AtAttributes)
        {
            m_Values.reset();
        }
    }

    std::optional<std::vector<ReadValue>> m_Values;
    std::string m_Name;
    /// A key or text as far as it is read.
    std::string m_Text;
    bool m_AtAttributes = false;
    bool m_Inside = false;
};

/// Leaves the last of several values of one name, in the place of the first.
void KeepLastOfEach(std::vector<ReadValue>& values)
{
    std::vector<ReadValue> kept;
    std::unordered_map<std::string, std::size_t> places;
    for (ReadValue& value : values)
    {
        const auto [place, isNew] = places.try_emplace(value.Name, kept.size());
        if (isNew)
        {
            kept.emplace_back();
        }
        kept[place->second] = std::move(value);
    }
    values.swap(kept);
}

SettingValueMap UsableValues(const std::vector<ReadValue>& values)
{
    SettingValueMap usable;
    auto place = usable.begin();
    for (const ReadValue& value : values)
    {
        if (value.Usable)
        {
            place = PutNear(usable, place, value.Name, value.Value);
        }
    }
    return usable;
}

} // namespace

RedfishConfigResult ReadSettingValues(std::string_view response, SettingValueMap& values)
{
    json::basic_parser<ValuesHandler> parser(JsonOptions());
    const std::string fault = ParseShape(parser, response);
    if (!fault.empty())
    {
        return {27, "The values cannot be read: the text is " + fault + ".", ""};
    }
    std::optional<std::vector<ReadValue>>& attributes = parser.handler().Values();
    if (!attributes)
    {
        return {27, "The values cannot be read: the text has no object \"Attributes\".", ""};
    }
    SettingValueMap read = UsableValues(*attributes);
    if (read.size() != attributes->size()) // some are of no use, or stand there more than once
    {
        KeepLastOfEach(*attributes);
        for (const ReadValue& attribute : *attributes)
        {
            if (!attribute.Usable)
            {
                Log(4, __FILE__, __LINE__).Stream()
                    << "The value of " << CleanText(attribute.Name) << " is of no usable kind, so skipped.";
            }
        }
        read = UsableValues(*attributes);
    }
    values = std::move(read);
    return {0, "", ""};
}

RedfishConfigResult MakeValueText(const std::string& name, const std::string& value, const OptionalVar& current,
                                  std::string& jsonText)
{
    OptionalVar changed = current;
    if (!TransferStringToOptionalVar(changed, value) || !changed)
    {
        return {10, "The new value of " + name + " is not of the kind of its value in force.", name};
    }
    jsonText = json::serialize(VariantToJson(*changed));
    return {0, "", ""};
}

} // namespace Tavrine
