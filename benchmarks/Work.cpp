#include "Work.h"

#include <charconv>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <fmt/format.h>

namespace bench
{
namespace
{

namespace json = boost::json;

constexpr unsigned int ChangesAtOnce = 50;
constexpr const char* EnumerationNames[2] = {"Auto", "Enabled"};

json::object ReadDocument(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    return json::parse(text).as_object();
}

bool IsNumber(const std::string& text, int& number)
{
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    return failure == std::errc() && end == text.data() + text.size();
}

bool IsFlag(const std::string& text) { return text == "true" || text == "false"; }

/// What the generated machine takes in the place of a value.
std::string OtherText(const std::string& text)
{
    int number = 0;
    if (IsNumber(text, number))
    {
        return std::to_string((number + 10) % 1000);
    }
    if (IsFlag(text))
    {
        return text == "true" ? "false" : "true";
    }
    return text == "Enabled" ? "Auto" : text + " too";
}

std::string PatchBody(const std::string& savedFile)
{
    json::object attributes;
    const json::object document = ReadDocument(savedFile);
    for (const auto& [name, value] : document.at("settings").as_object())
    {
        const std::string text(value.as_string());
        const std::string bare(name.substr(name.rfind('.') + 1));
        int number = 0;
        attributes[bare] = IsNumber(text, number) ? json::value(number)
                           : IsFlag(text)         ? json::value(text == "true")
                                                  : json::value(text);
    }
    return json::serialize(json::object{{"Attributes", std::move(attributes)}});
}

/// The first enumerations of the generated machine, which has six of them in each ten.
Work ChangeSettings(const char* name, unsigned int count)
{
    Work work{name, {{"set"}, {"set"}}, {}};
    for (int way = 0; way < 2; ++way)
    {
        json::object attributes;
        for (unsigned int number = 0; attributes.size() < count; ++number)
        {
            if (number % 10 < 6)
            {
                const std::string setting = fmt::format("Setting{:06}", number);
                work.Arguments[way].push_back(setting + "=" + EnumerationNames[way]);
                attributes[setting] = EnumerationNames[way];
            }
        }
        work.Bodies[way] = json::serialize(json::object{{"Attributes", std::move(attributes)}});
    }
    return work;
}

} // namespace

void WriteOtherValues(const std::string& savedFile, const std::string& otherFile)
{
    json::object document = ReadDocument(savedFile);
    for (auto& [name, value] : document.at("settings").as_object())
    {
        value = OtherText(std::string(value.as_string()));
    }
    std::ofstream(otherFile, std::ios::binary) << json::serialize(document);
}

std::vector<Work> AllWork(const std::string (&savedFiles)[2], const std::string& folder)
{
    const auto reading = [](const char* name, const Words& arguments) {
        return Work{name, {arguments, arguments}, {}};
    };
    return {
        reading("show all", {"show"}),
        reading("show one", {"show", "Setting000000"}),
        reading("describe one", {"describe", "Setting000000"}),
        reading("describe one, no cache", {"describe", "Setting000000", "--no-cache"}),
        ChangeSettings("set one", 1),
        ChangeSettings("set 50 in a batch", ChangesAtOnce),
        reading("save", {"save", folder + "/again.json"}),
        Work{"restore of all",
             {{"restore", savedFiles[1]}, {"restore", savedFiles[0]}},
             {PatchBody(savedFiles[1]), PatchBody(savedFiles[0])}},
        reading("compare defaults", {"compare", "defaults"}),
    };
}

} // namespace bench
