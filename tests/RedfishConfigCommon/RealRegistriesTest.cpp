#include <map>
#include <set>
#include <string>

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Logging.h"
#include "RealBiosValues.h"
#include "RedfishConfigSettingManager.h"
#include "SharedData.h"

using namespace Tavrine;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace
{

namespace json = boost::json;

const char* const Machines[] = {"hpe-DL360", "hpe-DL325_Gen10Plus_FC", "dmtf-example", "openstack-sushy", "ami-zt"};

std::string RegistryText(const std::string& machine)
{
    return testdata::ReadFile(testdata::SharedData() / machine / "registry.en.json");
}

RedfishConfigSettingInfoStru InfoOf(RedfishConfigSettingManager& manager, const std::string& name)
{
    RedfishConfigSettingInfoStru info;
    RedfishConfigResult result = manager.GetSettingProperties(name, info);
    EXPECT_EQ(result.ErrorCode(), 0) << result.ErrorMsg();
    return info;
}

class RealRegistry : public testing::TestWithParam<const char*>
{
  protected:
    void SetUp() override
    {
        if (!std::filesystem::exists(testdata::SharedData() / GetParam()))
        {
            GTEST_SKIP() << "no answers of " << GetParam() << " beside this checkout";
        }
    }
};

class RealServer : public testing::Test
{
  protected:
    void SetUp() override
    {
        if (!std::filesystem::exists(testdata::SharedData() / "hpe-DL360"))
        {
            GTEST_SKIP() << "no answers of hpe-DL360 beside this checkout";
        }
        m_Manager = std::make_unique<RedfishConfigSettingManager>(RegistryText("hpe-DL360"), false, Config_Options());
    }

    std::unique_ptr<RedfishConfigSettingManager> m_Manager;
};

std::string MachineName(const testing::TestParamInfo<const char*>& machine)
{
    std::string name = machine.param;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char letter) { return std::isalnum(letter) == 0; }, '_');
    return name;
}

} // namespace

TEST_P(RealRegistry, EveryAttributeHasTheRegistrysProperties)
{
    RedfishConfigSettingManager manager(RegistryText(GetParam()), false, Config_Options());
    const json::value registry = json::parse(RegistryText(GetParam()));
    const json::array& attributes = registry.at("RegistryEntries").at("Attributes").as_array();
    ASSERT_FALSE(attributes.empty());
    for (const json::value& attribute : attributes)
    {
        const std::string name(attribute.at("AttributeName").as_string());
        const RedfishConfigSettingInfoStru info = InfoOf(manager, name);
        EXPECT_EQ(info.AttributeKey, name);
        EXPECT_EQ(info.SettingType, std::string(attribute.at("Type").as_string())) << name;
        EXPECT_EQ(info.DisplayName, std::string(attribute.at("DisplayName").as_string())) << name;
        EXPECT_EQ(info.ReadOnly, attribute.at("ReadOnly").as_bool()) << name;
        if (const auto* upper = attribute.as_object().if_contains("UpperBound"))
        {
            EXPECT_EQ(info.UpperBound, upper->as_int64()) << name;
        }
        if (const auto* values = attribute.as_object().if_contains("Value"))
        {
            EXPECT_EQ(info.ValueNames.size(), values->as_array().size()) << name;
        }
        EXPECT_TRUE(info.ForcedBy.empty()) << name << ": nothing is known, so nothing is forced";
    }
}

TEST_P(RealRegistry, EveryAttributeStandsInExactlyOneGroup)
{
    RedfishConfigSettingManager manager(RegistryText(GetParam()), false, Config_Options());
    SettingGroupMap groups;
    manager.GetGroupList(groups);
    std::map<std::string, int> seen;
    for (const auto& [group, names] : groups)
    {
        EXPECT_FALSE(names.empty()) << group;
        for (const std::string& name : names)
        {
            ++seen[name];
        }
    }
    const json::value registry = json::parse(RegistryText(GetParam()));
    const json::array& attributes = registry.at("RegistryEntries").at("Attributes").as_array();
    EXPECT_EQ(seen.size(), attributes.size());
    for (const json::value& attribute : attributes)
    {
        EXPECT_EQ(seen[std::string(attribute.at("AttributeName").as_string())], 1)
            << attribute.at("AttributeName").as_string();
    }
}

TEST_P(RealRegistry, CurrentValuesAreThoseOfTheBiosResourceAndDependenciesSettle)
{
    const CapturingLogSink sink;
    RedfishConfigSettingManager manager(RegistryText(GetParam()), false, Config_Options());
    const SettingValueMap values = BiosValues(testdata::SharedData() / GetParam());
    ASSERT_FALSE(values.empty());
    manager.UpdateSettingValue(values);
    const json::value registry = json::parse(RegistryText(GetParam()));
    std::set<std::string> registered;
    for (const json::value& attribute : registry.at("RegistryEntries").at("Attributes").as_array())
    {
        registered.emplace(attribute.at("AttributeName").as_string());
    }
    ASSERT_THAT(registered, Not(IsEmpty()));
    for (const auto& [name, value] : values)
    {
        RedfishConfigSettingInfoStru info;
        EXPECT_EQ(manager.GetSettingProperties(name, info), registered.contains(name) ? 0 : 20) << name;
        EXPECT_TRUE(!registered.contains(name) || info.CurrentValue == value) << name;
        RedfishConfigSettingInfoStru outline;
        EXPECT_EQ(manager.GetSettingOutline(name, outline), registered.contains(name) ? 0 : 20) << name;
        EXPECT_EQ(outline.SettingType, info.SettingType) << name;
        EXPECT_EQ(outline.CurrentValue, info.CurrentValue) << name;
    }
    for (const LogRecord& record : sink.Records())
    {
        EXPECT_THAT(record.Text, Not(testing::HasSubstr("did not settle")));
    }
}

INSTANTIATE_TEST_SUITE_P(Machines, RealRegistry, testing::ValuesIn(Machines), MachineName);

TEST_F(RealServer, WorkloadProfileMakesSettingsReadOnly)
{
    EXPECT_FALSE(InfoOf(*m_Manager, "PowerRegulator").ReadOnly);
    m_Manager->UpdateSettingValue(BiosValues(testdata::SharedData() / "hpe-DL360"));
    const RedfishConfigSettingInfoStru forced = InfoOf(*m_Manager, "PowerRegulator");
    EXPECT_TRUE(forced.ReadOnly);
    EXPECT_THAT(forced.ForcedBy, ElementsAre(Pair("ReadOnly", "WorkloadProfile is GeneralPowerEfficientCompute")));
    EXPECT_THAT(forced.DependencyNames, Contains("WorkloadProfile"));
    EXPECT_THAT(InfoOf(*m_Manager, "WorkloadProfile").DependencyNames, Contains("PowerRegulator"));

    m_Manager->UpdateSettingValue({{"WorkloadProfile", "Custom"}});
    EXPECT_FALSE(InfoOf(*m_Manager, "PowerRegulator").ReadOnly);
    EXPECT_THAT(InfoOf(*m_Manager, "PowerRegulator").ForcedBy, IsEmpty());
}

TEST_F(RealServer, MenuThatIsGrayedOutGraysItsSettings)
{
    m_Manager->UpdateSettingValue(BiosValues(testdata::SharedData() / "hpe-DL360"));
    const RedfishConfigSettingInfoStru port = InfoOf(*m_Manager, "NvmePort1");
    EXPECT_TRUE(port.GrayOut);
    EXPECT_EQ(port.ForcedBy.at("GrayOut"), "NvmeRaid is Disabled");
    EXPECT_THAT(port.DependencyNames, Contains("NvmeRaid"));
    EXPECT_THAT(port.DependencyNames, Contains("IntelVmdSupport"));

    m_Manager->UpdateSettingValue({{"NvmeRaid", "Enabled"}});
    EXPECT_FALSE(InfoOf(*m_Manager, "NvmePort1").GrayOut);
    EXPECT_TRUE(InfoOf(*m_Manager, "VmdonCpu1Stack1Port1").GrayOut);
}

TEST_F(RealServer, ConditionsCompareAcrossKindsAndLeaveUnknownValuesAlone)
{
    m_Manager->UpdateSettingValue(BiosValues(testdata::SharedData() / "hpe-DL360"));
    EXPECT_EQ(InfoOf(*m_Manager, "DramRapl").ForcedBy.at("ReadOnly"), "DramRaplLimit is not BiosControl");
    EXPECT_FALSE(InfoOf(*m_Manager, "ProcessorConfigTDPLevel").ReadOnly)
        << "IntelSpeedSelectConfigLevel is not reported, so nothing is said of it being other than Base";
}

TEST_F(RealServer, GroupsAreTheMenusOfTheSetupScreen)
{
    SettingGroupMap groups;
    m_Manager->GetGroupList(groups);
    EXPECT_THAT(groups.at("BIOS/Platform Configuration (RBSU)"), ElementsAre("WorkloadProfile"));
    EXPECT_THAT(groups.at("System Options/Boot Time Optimizations"), Contains("ExtendedMemTest"));
    EXPECT_THAT(groups.at("System Options/Serial Port Options/BIOS Serial Console and EMS"),
                Contains("SerialConsolePort"));
}
