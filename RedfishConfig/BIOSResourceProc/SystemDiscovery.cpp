#include "SystemDiscovery.h"

#include <optional>

#include "BMCBaseAssistant.h"
#include "JsonNodes.h"
#include "Results.h"
#include "Trace.h"

namespace Tavrine
{

namespace
{

bool FirstMember(const std::string& collection, std::string& memberURL)
{
    const std::optional<boost::json::value> root = ParseNodes(collection);
    if (!root)
    {
        return false;
    }
    const boost::json::value* members = FindNode(*root, {"Members"});
    if (members == nullptr || !members->is_array())
    {
        return false;
    }
    for (const boost::json::value& member : members->get_array())
    {
        if (ReadStringNode(member, {"@odata.id"}, memberURL))
        {
            return true;
        }
    }
    return false;
}

} // namespace

RedfishConfigResult DiscoverValueURL(BMCBaseAssistant& client, const std::string& collectionURL, std::string& valueURL)
{
    TAVRINE_LOG(LogOperation) << "Enter ComplementQueryValuesURL()";
    std::string collection;
    RedfishConfigResult result = client.GetData(collectionURL, collection);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogOperation) << "Query url " << collectionURL << "error.";
        return result;
    }

    std::string memberURL;
    if (FirstMember(collection, memberURL))
    {
        TAVRINE_LOG(LogDetail) << "Systems member url: " << memberURL;
        valueURL = memberURL + "/Bios";
    }
    if (valueURL.empty())
    {
        TAVRINE_LOG(LogFailure) << "Failed to complement the URL: Not found resource at specify system.";
        return BareResult(ResultQueryFailed);
    }
    return BareResult(ResultSuccess);
}

} // namespace Tavrine
