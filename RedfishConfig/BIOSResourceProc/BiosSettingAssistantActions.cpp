// Actions that concern the whole system: the reset to defaults, the custom default file.
#include "BiosSettingAssistant.h"

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "BMCBaseAssistant.h"
#include "JsonNodes.h"
#include "Results.h"
#include "Trace.h"

namespace Tavrine
{

namespace
{

constexpr const char* ReadFileURL = "/redfish/v1/Systems/1/Actions/Oem/ZorvanComputerSystem.DSReadFile";
constexpr const char* WriteFileURL = "/redfish/v1/Systems/1/Actions/Oem/ZorvanComputerSystem.DSWriteFile";
constexpr const char* CustomDefaultFile = "custom_default";
/// Seconds that an action may take.
constexpr int ActionTimeout = 60;

} // namespace

RedfishConfigResult BiosSettingAssistant::QueryLoadToDefaultActionURL(std::string& url)
{
    TAVRINE_LOG(LogOperation) << "Enter QueryLoadToDefaultActionURL()";
    RedfishConfigResult result = NeedValueURL();
    if (result != ResultSuccess)
    {
        return result;
    }
    std::string response;
    result = m_BMCClient->GetData(m_ValueURL, response);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogOperation) << "Query value response error.";
        return result;
    }
    if (!ReadStringNode(response, {"Actions", "#Bios.ResetBios", "target"}, url))
    {
        return {ResultParseFailed, "Failed to get load to default action URL", ""};
    }
    TAVRINE_LOG(LogOperation) << "Parse reset bios action URL is: " << url;
    if (url.empty())
    {
        TAVRINE_LOG(LogFailure) << "Get the load to default action URL from BMC is empty.";
        return BareResult(ResultBmcError);
    }
    return BareResult(ResultSuccess);
}

RedfishConfigResult BiosSettingAssistant::PostResetBiosAction()
{
    std::string url;
    RedfishConfigResult result = QueryLoadToDefaultActionURL(url);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get the post default URL.";
        return result;
    }
    const bool wantsResetType =
        m_SupportedSystemType == SystemTypeResetTypeFirst || m_SupportedSystemType == SystemTypeResetTypeSecond;
    std::string response;
    result =
        m_BMCClient->PostData(url, wantsResetType ? "{\"ResetType\":\"Reset\"}" : "{}", response, false, ActionTimeout);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogDetail) << "Failed to post reset bios duo to: " << response;
        return result;
    }
    result = ResultResetRequired;
    return result;
}

RedfishConfigResult BiosSettingAssistant::ExportUEFICustomDefaultFile(std::string& content)
{
    const std::string body =
        boost::json::serialize(boost::json::object{{"FileName", CustomDefaultFile}, {"Volatile", false}});
    TAVRINE_LOG(LogDetail) << "Prepare post: " << body << " to URL: " << ReadFileURL;
    RedfishConfigResult result = m_BMCClient->PostData(ReadFileURL, body, content, false, ActionTimeout);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to read custom_default file due to: " << content;
    }
    return result;
}

RedfishConfigResult BiosSettingAssistant::ImportUEFICustomDefaultFile(const std::string& content)
{
    const std::string body = boost::json::serialize(boost::json::object{{"FileName", CustomDefaultFile},
                                                                        {"Volatile", false},
                                                                        {"ClearWrite", true},
                                                                        {"Content", content},
                                                                        {"Create", true}});
    TAVRINE_LOG(LogDetail) << "Prepare post: " << body << " to URL: " << WriteFileURL;
    std::string response;
    RedfishConfigResult result = m_BMCClient->PostData(WriteFileURL, body, response, false, ActionTimeout);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogDetail) << "Failed to write custom_default file duo to: " << response;
    }
    return result;
}

} // namespace Tavrine
