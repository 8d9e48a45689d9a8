#include "ValueCheck.h"

#include "JsonFile.h"
#include "Scalars.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/regex.hpp>
#include <cmath>
#include <stdexcept>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

using Verdict = std::optional<Base>;

struct Candidate
{
    const RulesNow& Rules;
    const std::string& Name;
    const json::value& Value;

    std::optional<long double> Bound(const char* property) const
    {
        const json::value* bound = Rules.Property(Name, property);
        return bound != nullptr ? ScalarNumber(*bound) : std::nullopt;
    }
    std::string Text(const char* property) const
    {
        const json::value* text = Rules.Property(Name, property);
        return text != nullptr ? ScalarText(*text).value_or("") : std::string();
    }
};

Verdict CheckInteger(const Candidate& candidate)
{
    if (!candidate.Value.is_int64() && !candidate.Value.is_uint64())
    {
        return Base::PropertyValueTypeError;
    }
    const long double number = *ScalarNumber(candidate.Value);
    const auto lower = candidate.Bound("LowerBound");
    const auto upper = candidate.Bound("UpperBound");
    const auto step = candidate.Bound("ScalarIncrement");
    // Increments count from the lower bound; 0 is no increment at all.
    const bool offStep = step && *step > 0 && std::fmod(number - lower.value_or(0), *step) != 0;
    const bool outside = (lower && number < *lower) || (upper && number > *upper);
    return outside || offStep ? Verdict(Base::PropertyValueOutOfRange) : std::nullopt;
}

Verdict CheckBoolean(const Candidate& candidate)
{
    return candidate.Value.is_bool() ? std::nullopt : Verdict(Base::PropertyValueTypeError);
}

/// A pattern that does not compile, or that needs more steps than the matcher grants,
/// judges nothing. Registries anchor their patterns themselves.
bool Matches(const std::string& pattern, const std::string& text)
try
{
    const boost::wregex expression(CodePoints(pattern), boost::regex_constants::perl);
    return boost::regex_search(CodePoints(text), expression, boost::regex_constants::match_single_line);
}
catch (const std::runtime_error&)
{
    return true;
}

Verdict CheckText(const Candidate& candidate)
{
    if (!candidate.Value.is_string())
    {
        return Base::PropertyValueTypeError;
    }
    const std::string text = *ScalarText(candidate.Value);
    const auto length = static_cast<long double>(CodePoints(text).size());
    const auto shortest = candidate.Bound("MinLength");
    const auto longest = candidate.Bound("MaxLength");
    if ((shortest && length < *shortest) || (longest && length > *longest))
    {
        return Base::PropertyValueFormatError;
    }
    const std::string pattern = candidate.Text("ValueExpression");
    return pattern.empty() || Matches(pattern, text) ? std::nullopt : Verdict(Base::PropertyValueFormatError);
}

Verdict CheckEnumeration(const Candidate& candidate)
{
    if (!candidate.Value.is_string())
    {
        return Base::PropertyValueTypeError;
    }
    const json::value* list = candidate.Rules.Property(candidate.Name, "Value");
    const json::array* names = list != nullptr ? list->if_array() : nullptr;
    const bool found = names == nullptr || names->empty() ||
                       std::any_of(names->begin(), names->end(),
                                   [&](const json::value& name)
                                   {
                                       const json::object* item = name.if_object();
                                       const json::value* own = item ? item->if_contains("ValueName") : nullptr;
                                       return own != nullptr && *own == candidate.Value;
                                   });
    return found ? std::nullopt : Verdict(Base::PropertyValueNotInList);
}

using Check = Verdict (*)(const Candidate&);

struct TypedCheck
{
    const char* Type;
    Check Function;
};

constexpr TypedCheck Checks[] = {
    {"Integer", CheckInteger}, {"Boolean", CheckBoolean},         {"String", CheckText},
    {"Password", CheckText},   {"Enumeration", CheckEnumeration},
};

Check CheckFor(const Candidate& candidate, const json::value* current)
{
    const std::string type = candidate.Text("Type");
    for (const TypedCheck& entry : Checks)
    {
        if (type == entry.Type)
        {
            return entry.Function;
        }
    }
    if (candidate.Rules.Property(candidate.Name, "Value") != nullptr)
    {
        return CheckEnumeration;
    }
    const bool isNumber = current != nullptr && current->is_number();
    const bool isFlag = current != nullptr && current->is_bool();
    return isNumber ? CheckInteger : isFlag ? CheckBoolean : CheckText;
}

} // namespace

std::optional<Notice> CheckValue(const RulesNow& rules, const std::string& name, const json::value& value,
                                 const json::value* current)
{
    const Candidate candidate{rules, name, value};
    const Verdict verdict = CheckFor(candidate, current)(candidate);
    if (!verdict)
    {
        return std::nullopt;
    }
    // A refused password is not to be read in the answer either.
    if (candidate.Text("Type") == "Password")
    {
        return Notice{Base::PropertyValueError, {name}, AttributePointer(name)};
    }
    return Notice{*verdict, {ShortText(value), name}, AttributePointer(name)};
}

std::string AttributePointer(std::string_view name)
{
    std::string pointer = "/Attributes/";
    for (const char c : name)
    {
        pointer += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
    }
    return pointer;
}

} // namespace bmcsim
