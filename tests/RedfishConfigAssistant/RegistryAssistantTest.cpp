#include "RedfishRegistryAssistant.h"

#include <gtest/gtest.h>

#include "BmcConnection.h"
#include "TestServer.h"

using namespace Tavrine;
using namespace resttest;

namespace
{

constexpr const char* BiosPath = "/redfish/v1/Systems/1/Bios";

/// The class as a derived one uses it.
class Assistant : public RedfishRegistryAssistant
{
  public:
    explicit Assistant(const TavrineConnection::ConnectionInfo& info, const std::string& url = BiosPath)
        : RedfishRegistryAssistant(info)
    {
        m_ValueURL = url;
    }
    using RedfishRegistryAssistant::QueryValueURLResponse;
};

std::map<std::string, std::string> Service()
{
    return {{BiosPath,
             R"({"AttributeRegistry":"Reg.v1","Attributes":{"Mode":"Fast","Count":3,"On":true},)"
             R"("@Redfish.Settings":{"SettingsObject":{"@odata.id":"/redfish/v1/Systems/1/Bios/Settings"}}})"},
            {"/redfish/v1/Registries", R"({"Members":[{"@odata.id":"/redfish/v1/Registries/Reg.v1"}]})"},
            {"/redfish/v1/Registries/Reg.v1",
             R"({"Location":[{"Language":"en","Uri":"/store/en"},{"Language":"ja","Uri":"/store/ja"}]})"},
            {"/store/en", R"({"RegistryEntries":{"Attributes":[]},"Language":"en"})"},
            {"/store/ja", R"({"RegistryEntries":{"Attributes":[]},"Language":"ja"})"}};
}

} // namespace

TEST(RegistryAssistant, ReadsTheRegistryThatTheResourceNames)
{
    const TestServer server(Resources(Service()));
    Assistant assistant(server.Info());
    std::string schema;
    EXPECT_THAT(assistant.GetSchema(schema), HasCode(0));
    EXPECT_EQ(schema, Service()["/store/en"]);
    EXPECT_EQ(assistant.GetValueResponse(), Service()[BiosPath]);
    EXPECT_EQ(server.Calls(), (std::vector<std::string>{"GET " + std::string(BiosPath), "GET /redfish/v1/Registries",
                                                        "GET /redfish/v1/Registries/Reg.v1", "GET /store/en"}));
}

TEST(RegistryAssistant, LanguageComesFromTheProfile)
{
    const TestServer server(Resources(Service()));
    TavrineConnection::ConnectionProfile profile;
    profile.Language = "ja";
    const TavrineConnection::BmcConnection connection(server.Info(), profile);
    Assistant assistant(connection.Info());
    std::string schema;
    EXPECT_THAT(assistant.GetSchema(schema), HasCode(0));
    EXPECT_EQ(schema, Service()["/store/ja"]);
}

TEST(RegistryAssistant, FailuresEmptyTheCallersText)
{
    struct Row
    {
        const char* Path;
        const char* Text;
        int Code;
        const char* Says;
    };
    constexpr Row rows[] = {
        {BiosPath, "{}", 26, "names no attribute registry"},
        {BiosPath, R"({"AttributeRegistry":7})", 26, "names no attribute registry"},
        {BiosPath, "nonsense", 27, "no JSON"},
        {BiosPath, R"({"AttributeRegistry":"Other"})", 26, "The attribute registry Other is not among the registries"},
        {"/redfish/v1/Registries/Reg.v1", R"({"Location":[{"Language":"en","Uri":"/nowhere"}]})", 26, "GET /nowhere"},
        {"/redfish/v1/Registries/Reg.v1", R"({"Location":[{"Language":"en","Uri":"http://evil.example/x"}]})", 26,
         "unusable"},
        {"/store/en", "nonsense", 27, "GET /store/en"},
        {"/store/en", "", 26, "Reg.v1 is empty"},
    };
    for (const Row& row : rows)
    {
        auto service = Service();
        service[row.Path] = row.Text;
        const TestServer server(Resources(service));
        Assistant assistant(server.Info());
        std::string schema = "old";
        EXPECT_THAT(assistant.GetSchema(schema), Fails(row.Code, row.Says)) << row.Text;
        EXPECT_EQ(schema, "");
    }
}

TEST(RegistryAssistant, WithoutAUrlNothingIsSent)
{
    const TestServer server(Resources({}));
    Assistant assistant(server.Info(), "");
    std::string schema = "old";
    EXPECT_THAT(assistant.GetSchema(schema), HasCode(26));
    EXPECT_TRUE(server.Calls().empty());
}

TEST(RegistryAssistant, ValuesAreReadOnce)
{
    const TestServer server(Resources(Service()));
    Assistant assistant(server.Info());
    SettingValueMap values;
    EXPECT_THAT(assistant.GetEffectiveValueMap(values), HasCode(0));
    EXPECT_EQ(values, (SettingValueMap{{"Mode", "Fast"}, {"Count", std::int64_t{3}}, {"On", true}}));
    EXPECT_THAT(assistant.GetEffectiveValueMap(values), HasCode(0));
    EXPECT_EQ(server.Calls().size(), 1U);
}

TEST(RegistryAssistant, FlushSendsTypedValuesToTheSettingsObject)
{
    const auto resources = Resources(Service());
    const TestServer server(
        [&](const httplib::Request& request, httplib::Response& response)
        {
            if (request.method == "PATCH")
            {
                response.status = 204;
                return;
            }
            resources(request, response);
        });
    Assistant assistant(server.Info());
    EXPECT_THAT(assistant.UpdateSettingValueCache("Mode", "Slow"), HasCode(0));
    EXPECT_THAT(assistant.UpdateSettingValueCache("Count", "4"), HasCode(0));
    EXPECT_THAT(assistant.UpdateSettingValueCache("On", "false"), HasCode(0));
    EXPECT_THAT(assistant.UpdateSettingValueCache("Count", "many"), Fails(10, "Count"));
    EXPECT_THAT(assistant.FlushChanges(""), HasCode(0));
    ASSERT_EQ(server.Requests().size(), 2U);
    EXPECT_EQ(server.Calls()[1], "PATCH /redfish/v1/Systems/1/Bios/Settings");
    EXPECT_EQ(server.Requests()[1].Body, R"({"Attributes":{"Count":4,"Mode":"Slow","On":false}})");
    EXPECT_THAT(assistant.FlushChanges(""), HasCode(0)); // the cache is empty now
    EXPECT_EQ(server.Requests().size(), 2U);
}

TEST(RegistryAssistant, FlushTakesATargetAndKeepsWhatWasRefused)
{
    const TestServer server(
        [](const httplib::Request&, httplib::Response& response)
        {
            AnswerJson(
                response,
                R"({"error":{"@Message.ExtendedInfo":[{"MessageId":"B.1.PropertyUnknown","MessageArgs":["A"]}]}})",
                400);
        });
    Assistant assistant(server.Info());
    assistant.CacheSetContext("A", "1");
    EXPECT_THAT(assistant.FlushChanges("/target"), HasCode(18));
    EXPECT_EQ(server.Calls(), std::vector<std::string>{"PATCH /target"});
    ASSERT_EQ(assistant.GetError().size(), 1U);
    EXPECT_EQ(assistant.GetError()[0].ErrorSetting(), "A");
    EXPECT_THAT(assistant.GetError()[0], HasCode(9));
    EXPECT_THAT(assistant.FlushChanges("/target"), HasCode(0));
    EXPECT_TRUE(assistant.GetError().empty()) << "those of the last flush, which had nothing to send";
}
