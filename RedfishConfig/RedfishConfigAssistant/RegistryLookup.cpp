#include "RegistryLookup.h"

#include <algorithm>
#include <set>
#include <vector>

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

bool Names(std::string_view path, std::string_view identifier)
{
    std::string_view segment = LastSegment(path);
    if (segment == identifier)
    {
        return true;
    }
    return segment.ends_with(".json") && segment.substr(0, segment.size() - 5) == identifier;
}

/// Members that by their name may well be attribute registries come first, so that
/// few files are read in vain.
void LikelyFirst(std::vector<std::string>& members)
{
    std::stable_partition(members.begin(), members.end(),
                          [](const std::string& path)
                          {
                              const std::string lower = LowerAscii(LastSegment(path));
                              return lower.find("bios") != std::string::npos ||
                                     lower.find("attribute") != std::string::npos;
                          });
}

class Lookup
{
  public:
    Lookup(const ResourceReader& read, const std::string& identifier) : m_Read(read), m_Identifier(identifier) {}

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
        LikelyFirst(m_Members);
        return SearchFiles(file);
    }

    const std::string& Match() const { return m_Match; }

    RedfishConfigResult Missing(const std::string& text) const
    {
        return {26, "The attribute registry " + CleanText(m_Identifier, 200) + " " + text + ".", ""};
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
            if (m_Match.empty() && Names(path, m_Identifier))
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
        for (const std::string& path : m_Members)
        {
            if (++files > MaxFilesRead)
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
            if (TextMember(&*file, "Id") == m_Identifier || TextMember(&*file, "Registry") == m_Identifier)
            {
                m_Match = path;
                return {0, "", ""};
            }
        }
        return Missing("is not among the registries of the BMC" + m_Doubt);
    }

    const ResourceReader& m_Read;
    const std::string& m_Identifier;
    std::vector<std::string> m_Members;
    std::string m_Match;
    /// Why the list may hold more than was seen; empty when it was seen whole.
    std::string m_Doubt;
};

} // namespace

std::string RegistryIdentifier(std::string_view valueResource)
{
    const std::optional<json::value> document = ParseJson(valueResource);
    return std::string(TextMember(document ? &*document : nullptr, "AttributeRegistry"));
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
    Lookup lookup(read, identifier);
    std::optional<json::value> file;
    RedfishConfigResult result = lookup.Find(file);
    if (result != 0)
    {
        return result;
    }
    // Some services list the registry itself in the place of its file.
    const bool isRegistry = Member(&*file, "RegistryEntries") != nullptr;
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

} // namespace Tavrine
