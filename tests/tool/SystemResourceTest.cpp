#include "SystemResource.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>

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
