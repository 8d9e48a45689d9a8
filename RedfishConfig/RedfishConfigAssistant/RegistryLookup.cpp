#include "RegistryLookup.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <set>
#include <system_error>
#include <vector>

#include <fmt/format.h>

#include "JsonText.h"
#include "Log.h"
#include "PlainText.h"
#include "RequestTarget.h"

namespace Tavrine
{

namespace
{

namespace json = boost::json;

constexpr const char* CollectionPath = "/redfish/v1/Registries";
constexpr std::size_t MaxPages = 50;
constexpr std::size_t MaxMembers = 5000;
/// Each one is a request on a slow service.
constexpr std::size_t MaxFilesRead = 100;
/// A text that is only nice to have is worth fewer.
constexpr std::size_t MaxMessageFilesRead = 20;

std::string_view PrimarySubtag(std::string_view language) { return language.substr(0, language.find_first_of("-_")); }

unsigned int Suitability(const std::string& offered, const std::string& wanted)
{
    if (offered == wanted)
    {
        return 4;
    }
    if (!offered.empty() && PrimarySubtag(offered) == PrimarySubtag(wanted))
    {
        return 3;
    }
    return PrimarySubtag(offered) == "en" ? 2 : 1;
}

std::string_view LastSegment(std::string_view path)
{
    path = path.substr(0, path.find_first_of("?#"));
    while (!path.empty() && path.back() == '/')
    {
        path.remove_suffix(1);
    }
    return path.substr(path.rfind('/') + 1);
}

/// How well the identifier of a registry suits the one that is looked for.
enum class Fit
{
    None,
    /// Taken when no other is there.
    Near,
    Exact,
};

/// What is looked for, and how far the search goes.
struct Wanted
{
    /// "attribute registry" or "message registry".
    const char* Kind;
    const std::string& Identifier;
    std::function<Fit(std::string_view identifier)> FitOf;
    /// By the last segment of its path, in lower case: a member that may well be it is
    /// looked into before others, so that few files are read in vain.
    std::function<bool(const std::string& segment)> Likely;
    std::size_t MaxFiles;
};

class Lookup
{
  public:
    Lookup(const ResourceReader& read, const Wanted& wanted) : m_Read(read), m_Wanted(wanted) {}

    RedfishConfigResult Find(std::optional<json::value>& file)
    {
        RedfishConfigResult result = ListMembers();
        if (result != 0)
        {
            return result;
        }
        if (!m_Match.empty())
        {
            return ReadFile(m_Match, file);
        }
        std::stable_partition(m_Members.begin(), m_Members.end(),
                              [this](const std::string& path)
                              { return m_Wanted.Likely(LowerAscii(LastSegment(path))); });
        return SearchFiles(file);
    }

    const std::string& Match() const { return m_Match; }

    RedfishConfigResult Missing(const std::string& text) const
    {
        return {26, fmt::format("The {} {} {}.", m_Wanted.Kind, CleanText(m_Wanted.Identifier, 200), text), ""};
    }

  private:
    /// Reads pages until a member bears the identifier or no page is left.
    RedfishConfigResult ListMembers()
    {
        std::set<std::string> seen;
        for (std::string page = CollectionPath; !page.empty() && m_Match.empty();)
        {
            if (!seen.insert(page).second || seen.size() > MaxPages || m_Members.size() >= MaxMembers)
            {
                m_Doubt = seen.size() > MaxPages || m_Members.size() >= MaxMembers
                              ? ", whose list is longer than is read"
                              : ", whose list leads in a circle";
                break;
            }
            std::string text;
            RedfishConfigResult result = m_Read(page, text);
            if (result != 0)
            {
                return result;
            }
            const std::optional<json::value> collection = ParseJson(text);
            if (!collection || !TakeMembers(*collection))
            {
                return Missing("cannot be looked for: " + page + " has no array \"Members\"");
            }
            page = NextPage(*collection);
            if (const std::string fault = page.empty() ? "" : PathFault(page); !fault.empty() && m_Match.empty())
            {
                return Missing("cannot be looked for: the next page of " + std::string(CollectionPath) +
                               " has an unusable path, " + fault);
            }
        }
        return {0, "", ""};
    }

    bool TakeMembers(const json::value& collection)
    {
        const json::value* const member = Member(&collection, "Members");
        const json::array* const members = member == nullptr ? nullptr : member->if_array();
        if (members == nullptr)
        {
            return false;
        }
        for (const json::value& entry : *members)
        {
            const std::string_view path = TextMember(&entry, "@odata.id");
            if (!PathFault(path).empty())
            {
                continue;
            }
            if (m_Match.empty() && IsNamed(LastSegment(path)))
            {
                m_Match = path;
            }
            if (m_Members.size() < MaxMembers)
            {
                m_Members.emplace_back(path);
            }
        }
        return true;
    }

    bool IsNamed(std::string_view segment) const
    {
        constexpr std::string_view extension = ".json";
        return m_Wanted.FitOf(segment) == Fit::Exact ||
               (segment.ends_with(extension) &&
                m_Wanted.FitOf(segment.substr(0, segment.size() - extension.size())) == Fit::Exact);
    }

    Fit FitOfFile(const json::value& file) const
    {
        return std::max(m_Wanted.FitOf(TextMember(&file, "Id")), m_Wanted.FitOf(TextMember(&file, "Registry")));
    }

    static std::string NextPage(const json::value& collection)
    {
        const std::string_view next = TextMember(&collection, "Members@odata.nextLink");
        return std::string(next.empty() ? TextMember(&collection, "@odata.nextLink") : next);
    }

    RedfishConfigResult ReadFile(const std::string& path, std::optional<json::value>& file)
    {
        std::string text;
        RedfishConfigResult result = m_Read(path, text);
        if (result == 0)
        {
            file = ParseJson(text);
        }
        return result == 0 && !file ? Missing("cannot be read: " + path + " is empty") : result;
    }

    RedfishConfigResult SearchFiles(std::optional<json::value>& file)
    {
        std::size_t files = 0;
        std::optional<json::value> near;
        for (const std::string& path : m_Members)
        {
            if (++files > m_Wanted.MaxFiles)
            {
                m_Doubt = ", of which not all were read";
                break;
            }
            RedfishConfigResult result = ReadFile(path, file);
            if (result == 24 || result == 33)
            {
                return result; // the next one would fare no better
            }
            if (result != 0)
            {
                Log(4, __FILE__, __LINE__).Stream() << "Passed over a registry: " << result.ErrorMsg();
                continue;
            }
            const Fit fit = FitOfFile(*file);
            if (fit == Fit::Exact)
            {
                m_Match = path;
                return {0, "", ""};
            }
            if (fit == Fit::Near && !near)
            {
                near = file;
                m_Match = path;
            }
        }
        if (near)
        {
            file = near;
            return {0, "", ""};
        }
        return Missing("is not among the registries of the BMC" + m_Doubt);
    }

    const ResourceReader& m_Read;
    const Wanted& m_Wanted;
    std::vector<std::string> m_Members;
    std::string m_Match;
    /// Why the list may hold more than was seen; empty when it was seen whole.
    std::string m_Doubt;
};

/// "Base.1.8" taken apart.
struct RegistryName
{
    std::string_view Name;
    unsigned int Major = 0;
    unsigned int Minor = 0;
    bool HasVersion = false;
};

/// A number at the front of `text`, which it is taken from.
bool TakeNumber(std::string_view& text, unsigned int& number)
{
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return ec == std::errc();
}

/// Versions are written "1.8", "1.8.0" and "v1_8_0"; without one all of it is the name.
RegistryName SplitIdentifier(std::string_view identifier)
{
    for (std::size_t at = identifier.find('.'); at != std::string_view::npos; at = identifier.find('.', at + 1))
    {
        RegistryName name{identifier.substr(0, at), 0, 0, true};
        std::string_view version = identifier.substr(at + 1);
        version.remove_prefix(version.substr(0, 1) == "v" ? 1 : 0);
        if (!TakeNumber(version, name.Major) || version.find_first_of("._") != 0)
        {
            continue;
        }
        version.remove_prefix(1);
        if (TakeNumber(version, name.Minor))
        {
            return name;
        }
    }
    return {identifier, 0, 0, false};
}

Fit FitOfNames(const RegistryName& wanted, const RegistryName& other)
{
    if (wanted.Name != other.Name || wanted.HasVersion != other.HasVersion || wanted.Major != other.Major)
    {
        return Fit::None;
    }
    return wanted.Minor == other.Minor ? Fit::Exact : Fit::Near;
}

RedfishConfigResult Find(const ResourceReader& read, const Wanted& wanted, const std::string& language,
                         std::string& url)
{
    Lookup lookup(read, wanted);
    std::optional<json::value> file;
    RedfishConfigResult result = lookup.Find(file);
    if (result != 0)
    {
        return result;
    }
    // Some services list the registry itself in the place of its file.
    const bool isRegistry = Member(&*file, "RegistryEntries") != nullptr || Member(&*file, "Messages") != nullptr;
    const std::string location = isRegistry ? lookup.Match() : ChooseLocation(*file, language);
    if (location.empty())
    {
        return lookup.Missing("cannot be read: " + lookup.Match() + " names no \"Uri\" in \"Location\"");
    }
    if (const std::string fault = PathFault(location); !fault.empty())
    {
        return lookup.Missing("cannot be read: the \"Uri\" in " + lookup.Match() + " is unusable, " + fault);
    }
    url = location;
    return {0, "", ""};
}

} // namespace

std::string RegistryIdentifier(std::string_view valueResource)
{
    return TextMemberOf(valueResource, "AttributeRegistry");
}

std::string ChooseLocation(const json::value& registryFile, std::string_view language)
{
    const json::value* const member = Member(&registryFile, "Location");
    const json::array* const locations = member == nullptr ? nullptr : member->if_array();
    const std::string wanted = LowerAscii(language);
    std::string_view best;
    unsigned int bestSuits = 0;
    for (std::size_t i = 0; locations != nullptr && i < locations->size(); ++i)
    {
        const json::value& location = (*locations)[i];
        const std::string_view uri = TextMember(&location, "Uri");
        const unsigned int suits = Suitability(LowerAscii(TextMember(&location, "Language")), wanted);
        if (!uri.empty() && suits > bestSuits)
        {
            best = uri;
            bestSuits = suits;
        }
    }
    return std::string(best);
}

RedfishConfigResult FindRegistry(const ResourceReader& read, const std::string& identifier, const std::string& language,
                                 std::string& url)
{
    const Wanted wanted = {"attribute registry", identifier,
                           [&](std::string_view other) { return other == identifier ? Fit::Exact : Fit::None; },
                           [](const std::string& segment) {
                               return segment.find("bios") != std::string::npos ||
                                      segment.find("attribute") != std::string::npos;
                           },
                           MaxFilesRead};
    return Find(read, wanted, language, url);
}

RedfishConfigResult FindMessageRegistry(const ResourceReader& read, const std::string& identifier,
                                        const std::string& language, std::string& url)
{
    const RegistryName name = SplitIdentifier(identifier);
    const std::string likely = LowerAscii(name.Name);
    const Wanted wanted = {"message registry", identifier,
                           [&](std::string_view other) { return FitOfNames(name, SplitIdentifier(other)); },
                           [&](const std::string& segment) { return segment.rfind(likely, 0) == 0; },
                           MaxMessageFilesRead};
    return Find(read, wanted, language, url);
}

} // namespace Tavrine
