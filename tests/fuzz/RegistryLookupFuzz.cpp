// The collection of registries and the registry files: whatever stands in them, the search
// ends, asks for usable paths alone, and answers with a path that one of them named.
#include <algorithm>

#include <boost/json/value.hpp>

#include "JsonText.h"
#include "Oracle.h"
#include "PlainJson.h"
#include "RegistryLookup.h"
#include "RequestTarget.h"

using namespace fuzztest;
using namespace Tavrine;

namespace
{

using Find = RedfishConfigResult (*)(const ResourceReader&, const std::string&, const std::string&, std::string&);

/// Pages, files, and one more for each that no text is left for.
constexpr std::size_t MostReads = 50 + 100;

bool Names(const PlainJson& value, std::string_view text)
{
    return (value.Is == PlainJson::Kind::String && value.Text == text) ||
           std::any_of(value.Elements.begin(), value.Elements.end(), [&](const auto& e) { return Names(e, text); }) ||
           std::any_of(value.Members.begin(), value.Members.end(), [&](const auto& m) { return Names(m.Value, text); });
}

/// A service that answers the requests with one text after the other.
struct Service
{
    std::vector<std::string_view> Texts;
    std::vector<std::string> Paths;
    std::vector<PlainJson> Read;

    RedfishConfigResult Answer(const std::string& path, std::string& text)
    {
        FUZZ_REQUIRE(PathFault(path).empty(), path);
        FUZZ_REQUIRE(!Paths.empty() || path == "/redfish/v1/Registries", path);
        Paths.push_back(path);
        FUZZ_REQUIRE(Paths.size() <= MostReads, path);
        if (Paths.size() > Texts.size())
        {
            return {26, "not found", ""};
        }
        text = Texts[Paths.size() - 1];
        bool doubtful = false;
        if (std::optional<PlainJson> plain = ReadPlainJson(text, doubtful))
        {
            Read.push_back(std::move(*plain));
        }
        return {0, "", ""};
    }

    bool Named(std::string_view text) const
    {
        return std::any_of(Read.begin(), Read.end(), [&](const PlainJson& one) { return Names(one, text); });
    }
};

std::string LastSegment(std::string path)
{
    path = path.substr(0, path.find_first_of("?#"));
    path.erase(path.find_last_not_of('/') + 1);
    return path.substr(path.rfind('/') + 1);
}

/// The identifier stands where it must, to the byte: at the end of the path that was read
/// last, or in the file that was read last.
bool IsTheOne(const Service& service, const std::string& identifier)
{
    const std::string segment = LastSegment(service.Paths.back());
    const PlainJson& file = service.Read.back();
    return segment == identifier || segment == identifier + ".json" || file.TextOf("Id") == identifier ||
           file.TextOf("Registry") == identifier;
}

void CheckSearch(Find find, const std::vector<std::string_view>& parts, bool exact)
{
    const std::string identifier(parts[0]);
    Service service{{parts.begin() + 2, parts.end()}, {}, {}};
    const ResourceReader read = [&](const std::string& path, std::string& text) { return service.Answer(path, text); };
    std::string url = "untouched";
    RedfishConfigResult result = find(read, identifier, std::string(parts[1]), url);
    FUZZ_REQUIRE(OnOneLine(result.ErrorMsg()), result.ErrorMsg());
    if (result != 0)
    {
        FUZZ_REQUIRE(result == 26 && !result.ErrorMsg().empty() && url == "untouched", result.ErrorMsg());
        return;
    }
    FUZZ_REQUIRE(PathFault(url).empty() && service.Named(url), url);
    FUZZ_REQUIRE(!exact || IsTheOne(service, identifier), identifier);
}

/// What `Location` gives for a language, by another hand: one preference after the other.
std::string BestUri(const PlainJson& file, const std::string& language)
{
    const std::vector<PlainJson>* const locations = file.ArrayOf("Location");
    const auto primary = [](const std::string& tag) { return tag.substr(0, tag.find_first_of("-_")); };
    const std::string wanted = Lowered(language);
    for (int preference = 0; locations != nullptr && preference < 4; ++preference)
    {
        for (const PlainJson& location : *locations)
        {
            const std::string offered = Lowered(location.TextOf("Language"));
            const bool suits = preference == 0   ? offered == wanted
                               : preference == 1 ? !offered.empty() && primary(offered) == primary(wanted)
                               : preference == 2 ? primary(offered) == "en"
                                                 : true;
            if (suits && !location.TextOf("Uri").empty())
            {
                return location.TextOf("Uri");
            }
        }
    }
    return {};
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // The identifier, the language, then the answers in the order of the requests.
    const std::vector<std::string_view> parts = Parts(Text(data, size), 3);
    CheckSearch(&FindRegistry, parts, true);
    CheckSearch(&FindMessageRegistry, parts, false);
    bool doubtful = false;
    const std::optional<PlainJson> plain = ReadPlainJson(parts.back(), doubtful);
    const std::optional<boost::json::value> file = ParseJson(parts.back());
    if (plain && file)
    {
        const std::string language(parts[1]);
        FUZZ_REQUIRE(ChooseLocation(*file, language) == BestUri(*plain, language), parts.back());
    }
    return 0;
}
