#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/json/parse.hpp>

#include "Logging.h"
#include "RunningMachine.h"
#include "SharedData.h"

using endtoend::RunningMachine;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace Tavrine;

namespace
{

constexpr int JsonOutput = 1;

/// What a BMC with this Bios resource shows: strings, integers, booleans and nulls.
boost::json::object ShowableAttributes(const std::string& biosResource)
{
    const boost::json::value resource = boost::json::parse(biosResource);
    boost::json::object showable;
    for (const auto& [name, value] : resource.at("Attributes").as_object())
    {
        if (value.is_string() || value.is_int64() || value.is_bool() || value.is_null())
        {
            showable[name] = value;
        }
    }
    return showable;
}

class EveryMachine : public testing::TestWithParam<std::filesystem::path>
{
};

TEST_P(EveryMachine, ShowsExactlyTheAttributesOfItsBiosResource)
{
    RunningMachine machine(GetParam());
    ASSERT_EQ(machine.Error(), "");
    BiosRedfishConfigProc proc(machine.Info(), SystemTypeBios, {.OutputFormat = JsonOutput});
    SettingStringMap values;
    RedfishConfigResult result = proc.QueryGroupSettingValues(values);
    ASSERT_EQ(result.ErrorCode(), 0) << result.ErrorMsg();
    ASSERT_EQ(values.size(), 1U);
    EXPECT_EQ(boost::json::parse(values.at("BIOS")),
              ShowableAttributes(testdata::ReadFile(GetParam() / "bios.json")));
}

TEST_P(EveryMachine, EveryRegisteredSettingIsInAGroup)
{
    RunningMachine machine(GetParam());
    ASSERT_EQ(machine.Error(), "");
    BiosRedfishConfigProc proc(machine.Info(), SystemTypeBios, {});
    SettingGroupMap groups;
    RedfishConfigResult result = proc.QueryGroupList(groups);
    ASSERT_EQ(result.ErrorCode(), 0) << result.ErrorMsg();
    std::size_t members = 0;
    for (const auto& [group, names] : groups)
    {
        members += names.size();
    }
    const boost::json::value registry = boost::json::parse(testdata::ReadFile(GetParam() / "registry.en.json"));
    EXPECT_EQ(members, registry.at("RegistryEntries").at("Attributes").as_array().size());
}

TEST_P(EveryMachine, OneConnectionServesEverything)
{
    RunningMachine machine(GetParam());
    ASSERT_EQ(machine.Error(), "");
    BiosRedfishConfigProc first(machine.Info(), SystemTypeBios, {});
    BiosRedfishConfigProc second(machine.Info(), SystemTypeBios, {});
    SettingStringMap values;
    SettingGroupMap groups;
    EXPECT_EQ(first.QueryGroupSettingValues(values), 0);
    EXPECT_EQ(first.QueryGroupList(groups), 0);
    EXPECT_EQ(second.QueryGroupSettingValues(values), 0);
    EXPECT_EQ(machine.Counters().Connections, 1U);
    for (const bmcsim::AccessRecord& record : machine.Simulator().AccessLog())
    {
        EXPECT_EQ(record.Connection, 1U) << record.Path;
    }
}

std::string NameOfMachine(const testing::TestParamInfo<std::filesystem::path>& machine)
{
    std::string name = machine.param.filename();
    std::erase_if(name, [](char character) { return std::isalnum(static_cast<unsigned char>(character)) == 0; });
    return name;
}

INSTANTIATE_TEST_SUITE_P(Real, EveryMachine, testing::ValuesIn(testdata::Machines()), NameOfMachine);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(EveryMachine);

TEST(EveryMachineData, IsThere)
{
    if (testdata::Machines().empty())
    {
        GTEST_SKIP() << "no answers of real machines beside the checkout";
    }
    EXPECT_EQ(testdata::Machines().size(), 5U);
}

/// The built-in machine on a UEFI system, one standard setting read twice.
TEST(QuerySettingValue, FirstReadFindsRegistryAndResourceTheSecondSendsNothing)
{
    RunningMachine machine("");
    ASSERT_EQ(machine.Error(), "");
    BiosRedfishConfigProc proc(machine.Info(), SystemTypeUefi, {});
    EXPECT_THAT(machine.NewRequests(), IsEmpty());

    SettingStringMap values;
    RedfishConfigResult result = proc.QuerySettingValue("BootMode", values);
    ASSERT_EQ(result.ErrorCode(), 0) << result.ErrorMsg();
    EXPECT_THAT(values, ElementsAre(std::pair("UEFI.BootMode", "Uefi")));
    EXPECT_THAT(machine.NewRequests(),
                ElementsAre("GET /redfish/v1/Systems", "GET /redfish/v1/Systems/1/Bios", "GET /redfish/v1/Registries",
                            "GET /redfish/v1/Registries/BiosAttributeRegistryZS22.v1_4_0",
                            testing::StartsWith("GET /redfish/v1/"), "GET /redfish/v1/Systems",
                            "GET /redfish/v1/Systems/1/Bios"));

    EXPECT_EQ(proc.QuerySettingValue("BootMode", values), 0);
    EXPECT_THAT(machine.NewRequests(), IsEmpty());
}

TEST(QuerySettingValue, ProtectedSettingNeedsTheOptionAndOneActionMore)
{
    RunningMachine machine("");
    ASSERT_EQ(machine.Error(), "");
    const boost::json::value kept = boost::json::parse(testdata::ReadFile(MACHINE_FOLDER "/protected.json"));
    const std::string name = kept.at("Attributes").as_object().begin()->key();

    SettingStringMap values;
    BiosRedfishConfigProc refusing(machine.Info(), SystemTypeUefi, {});
    RedfishConfigResult refused = refusing.QuerySettingValue(name, values);
    EXPECT_EQ(refused.ErrorCode(), 34);
    EXPECT_EQ(refused.ErrorMsg(), "The operation on setting " + name + " fails since it is hidden.");
    EXPECT_THAT(values, IsEmpty());
    machine.NewRequests();

    BiosRedfishConfigProc allowing(machine.Info(), SystemTypeUefi, {.allowProtectedSettings = true});
    EXPECT_EQ(allowing.QuerySettingValue(name, values), 0);
    EXPECT_TRUE(values.contains("UEFI." + name));
    EXPECT_EQ(machine.NewRequests().back(),
              "POST /redfish/v1/Systems/1/Bios/Actions/Oem/ZorvanBios.GetProtectedAttributes");
}

TEST(QueryGroupSettingValues, TwoRequestsShowAll)
{
    RunningMachine machine("");
    ASSERT_EQ(machine.Error(), "");
    BiosRedfishConfigProc proc(machine.Info(), SystemTypeUefi, {});
    SettingStringMap values;
    EXPECT_EQ(proc.QueryGroupSettingValues(values), 0);
    EXPECT_THAT(machine.NewRequests(), ElementsAre("GET /redfish/v1/Systems", "GET /redfish/v1/Systems/1/Bios"));
}

TEST(Logs, HoldNeitherPasswordNorBodies)
{
    RunningMachine machine("");
    ASSERT_EQ(machine.Error(), "");
    const CapturingLogSink sink;
    BiosRedfishConfigProc proc(machine.Info(), SystemTypeUefi, {});
    SettingStringMap values;
    EXPECT_EQ(proc.QuerySettingValue("AssetTag", values), 0);
    const std::string assetTag = values.at("UEFI.AssetTag");
    ASSERT_FALSE(assetTag.empty());
    EXPECT_FALSE(sink.Records().empty());
    for (const LogRecord& record : sink.Records())
    {
        EXPECT_EQ(record.Text.find("a password"), std::string::npos) << record.Text;
        EXPECT_EQ(record.Text.find(assetTag), std::string::npos) << record.Text;
        EXPECT_TRUE(record.SourcePath.starts_with("RedfishConfig/")) << record.SourcePath;
    }
}

} // namespace
