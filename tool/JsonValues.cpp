#include "JsonValues.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/string.hpp>

#include "Secret.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

/// The value that a JSON text writes, null where it is no JSON. Nothing of it is left when it goes: it may be a
/// password.
class PassingValue
{
  public:
    explicit PassingValue(const std::string& text)
    {
        json::error_code failure;
        m_Value = json::parse(text, failure);
    }
    PassingValue(const PassingValue&) = delete;
    PassingValue& operator=(const PassingValue&) = delete;
    ~PassingValue()
    {
        if (json::string* const text = m_Value.if_string())
        {
            Wipe(*text);
        }
    }

    const json::value& Get() const { return m_Value; }

  private:
    json::value m_Value;
};

} // namespace

json::value ValueOfJson(const std::string& text)
{
    json::error_code failure;
    json::value value = json::parse(text, failure);
    return failure ? json::value(text) : value;
}

OptionalVar VariantOfJson(const std::string& text)
{
    const PassingValue value(text);
    if (const auto* const words = value.Get().if_string())
    {
        return SettingVariant(std::string(*words));
    }
    if (const auto* const number = value.Get().if_int64())
    {
        return SettingVariant(*number);
    }
    const auto* const flag = value.Get().if_bool();
    return flag != nullptr ? OptionalVar(SettingVariant(*flag)) : std::nullopt;
}

std::string PlainText(const std::string& text)
{
    const PassingValue value(text);
    const auto* const words = value.Get().if_string();
    return words != nullptr ? std::string(*words) : text;
}

std::string ValueText(const json::value& value)
{
    const json::string* text = value.if_string();
    return text != nullptr ? std::string(*text) : json::serialize(value);
}

} // namespace Tavrine::Tool
