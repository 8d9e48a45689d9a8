#include "SystemResource.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

using namespace Tavrine::Tool;

TEST(SystemResource, MessagesOfAChangeAreTakenUpToTheLimit)
{
    for (const auto& [sent, taken] : {std::pair{std::size_t{100'000}, std::size_t{100'000}}, {100'001, 100'000}})
    {
        std::string messages = "{}";
        for (std::size_t number = 1; number < sent; ++number)
        {
            messages += ",{}";
        }
        BmcRequests requests;
        requests.Get = [&](const std::string&, std::string& response) -> RedfishConfigResult
        {
            response = R"({"@Redfish.Settings":{"Messages":[)" + messages + "]}}";
            return {0, "", ""};
        };
        BiosResource bios;
        EXPECT_EQ(ReadBios(requests, {}, bios), 0);
        EXPECT_EQ(bios.Messages.size(), taken) << sent;
    }
}

TEST(SystemResource, OfSeveralSystemsTheFirstCounts)
{
    std::vector<std::string> asked;
    BmcRequests requests;
    requests.Get = [&](const std::string& url, std::string& response) -> RedfishConfigResult
    {
        asked.push_back(url);
        response = url == "/redfish/v1/Systems"
                       ? R"({"Members":[7,{},{"@odata.id":"/first"},{"@odata.id":"/second"},{"@odata.id":"/third"}]})"
                       : R"({"Model":"M"})";
        return {0, "", ""};
    };
    SystemResource system;
    EXPECT_EQ(ReadSystem(requests, system), 0);
    EXPECT_EQ(system.Path, "/first");
    EXPECT_EQ(system.Model, "M");
    EXPECT_EQ(asked, (std::vector<std::string>{"/redfish/v1/Systems", "/first"}));
}
