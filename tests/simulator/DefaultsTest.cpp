// Loads of the defaults.

#include "ChangeFixture.h"
#include "SharedData.h"

#include <set>

namespace
{

using namespace bmctest;
using testing::ElementsAre;

class DefaultsTest : public ChangeTest
{
  protected:
    /// Every attribute that can be set and has one default in the registry must have it.
    /// @return how many these were.
    std::size_t ExpectDefaults(const json::value& values, const json::value& registry, std::set<std::string> but = {})
    {
        const json::value dependencies = At(registry, "/RegistryEntries/Dependencies");
        for (const json::value& dependency : dependencies.is_array() ? dependencies.get_array() : json::array())
        {
            if (At(dependency, "/Dependency/MapToProperty") == "DefaultValue")
            {
                but.insert(At(dependency, "/Dependency/MapToAttribute").as_string().c_str());
            }
        }
        std::size_t count = 0;
        const json::value attributes = At(registry, "/RegistryEntries/Attributes");
        for (const json::value& entry : attributes.as_array())
        {
            const std::string name = At(entry, "/AttributeName").as_string().c_str();
            const json::value* value = values.as_object().if_contains(name);
            const json::value* standard = entry.as_object().if_contains("DefaultValue");
            const bool fixed = At(entry, "/ReadOnly") == true || At(entry, "/Immutable") == true;
            if (value != nullptr && standard != nullptr && !fixed && !but.contains(name))
            {
                EXPECT_EQ(*value, *standard) << name;
                ++count;
            }
        }
        return count;
    }
    json::value Registry() { return ParseFile(BMCSIM_MACHINE_DIR "/registry.en.json"); }
    json::value DefaultsPending() { return At(GetJson(BiosPath), "/ResetBiosToDefaultsPending"); }
};

TEST_F(DefaultsTest, ResetOfTheBiosTakesEffectAtTheNextStart)
{
    for (const char* body : {"{}", "", R"({"ResetType":"Reset"})"})
    {
        StartWith(PlainOptions());
        Accept(R"({"AssetTag":"discarded by the reset"})");
        ASSERT_EQ(Post(WriteProtected, R"({"Attributes":{"TpmClear":true}})")->status, 200);
        const json::value before = Effective();
        const auto answer = Post(ResetBiosPath, body);
        ASSERT_TRUE(answer) << body;
        EXPECT_EQ(answer->status, 200) << body;
        EXPECT_THAT(Messages(answer), ElementsAre("Success")) << body;
        EXPECT_EQ(DefaultsPending(), true);
        EXPECT_EQ(Effective(), before);
        EXPECT_EQ(Pending(), json::object());
        Restart();
        EXPECT_NE(DefaultsPending(), true);
        EXPECT_NE(Effective(), before);
        EXPECT_GT(ExpectDefaults(Effective(), Registry()), 0U);
        EXPECT_GT(ExpectDefaults(Protected(false), Registry()), 0U);
        EXPECT_EQ(At(Effective(), "/SystemModel"), At(before, "/SystemModel"));
        EXPECT_EQ(At(Effective(), "/InstalledMemoryGiB"), At(before, "/InstalledMemoryGiB"));
        EXPECT_TRUE(At(Effective(), "/AdminPassword").is_null());
        EXPECT_EQ(Effective().as_object().size(), before.as_object().size());
    }
}

TEST_F(DefaultsTest, ChangeAfterTheResetOfTheBiosOutlivesIt)
{
    ASSERT_EQ(Post(ResetBiosPath, "{}")->status, 200);
    Accept(R"({"AssetTag":"later"})");
    Restart();
    EXPECT_EQ(At(Effective(), "/AssetTag"), "later");
    EXPECT_GT(ExpectDefaults(Effective(), Registry(), {"AssetTag"}), 0U);
}

TEST_F(DefaultsTest, ParametersOfTheResetAreChecked)
{
    struct Case
    {
        const char* Body;
        const char* Message;
    };
    for (const auto& [body, message] :
         {Case{R"({"ResetType":"Default"})", "ActionParameterValueNotInList|Default|ResetType|#Bios.ResetBios"},
          {R"({"ResetType":true})", "ActionParameterValueTypeError|true|ResetType|#Bios.ResetBios"},
          {R"({"Type":"Reset"})", "ActionParameterUnknown|#Bios.ResetBios|Type"},
          {"[]", "UnrecognizedRequestBody"}})
    {
        const auto answer = Post(ResetBiosPath, body);
        ASSERT_TRUE(answer) << body;
        EXPECT_EQ(answer->status, 400) << body;
        EXPECT_THAT(Messages(answer), ElementsAre(message)) << body;
    }
    EXPECT_NE(DefaultsPending(), true);
}

TEST_F(DefaultsTest, SettingThatLoadsDefaultsSwitchesItselfOff)
{
    Accept(R"({"SystemRecovery_PostLoadSetupDefault":"Enabled"})");
    EXPECT_NE(DefaultsPending(), true);
    Restart();
    EXPECT_EQ(At(Effective(), "/SystemRecovery_PostLoadSetupDefault"), "Disabled");
    EXPECT_GT(ExpectDefaults(Effective(), Registry()), 0U);
    const json::value tag = At(GetJson(BiosPath), "/@odata.etag");
    Restart();
    EXPECT_EQ(At(GetJson(BiosPath), "/@odata.etag"), tag) << "nothing is left to be done";
}

TEST_F(DefaultsTest, DefaultThatDependsOnOtherValuesFollowsThoseThatWillStand)
{
    ASSERT_EQ(Post(ResetBiosPath, "{}")->status, 200);
    Accept(R"({"BootMode":"Legacy"})");
    Restart();
    EXPECT_EQ(At(Effective(), "/SerialTerminal"), "Vt100");
    EXPECT_EQ(At(Effective(), "/ExtendedApic"), "Enabled");
    ASSERT_EQ(Post(ResetBiosPath, "{}")->status, 200);
    Restart();
    EXPECT_EQ(At(Effective(), "/BootMode"), "Uefi");
    EXPECT_NE(At(Effective(), "/SerialTerminal"), "Vt100");
}

TEST_F(DefaultsTest, MachineWithoutASettingsObjectIsGivenNone)
{
    testdata::TemporaryFolder folder;
    folder.Write("bios.json", R"({"@odata.id":"/redfish/v1/Systems/1/Bios","AttributeRegistry":"R.v1_0_0",
        "Attributes":{"A":"x"},"Actions":{"#Bios.ResetBios":{"target":"/redfish/v1/Reset"}}})");
    folder.Write("registry.en.json", R"({"Id":"R.v1_0_0","RegistryEntries":{"Attributes":[
        {"AttributeName":"A","Type":"String","DefaultValue":"d"}]}})");
    auto options = PlainOptions();
    options.MachineDir = folder.Path().string();
    StartWith(options);
    ASSERT_EQ(Post("/redfish/v1/Reset", "{}")->status, 200);
    Restart();
    EXPECT_EQ(Effective(), Parse(R"({"A":"d"})"));
    EXPECT_TRUE(At(GetJson(BiosPath), "/@Redfish.Settings").is_null());
}

TEST_F(DefaultsTest, RealMachinesResetAtTheTargetThatTheyName)
{
    std::size_t count = 0;
    for (const auto& folder : testdata::Machines())
    {
        SCOPED_TRACE(folder);
        auto options = PlainOptions();
        options.MachineDir = folder.string();
        StartWith(options);
        const std::string system = At(GetJson("/redfish/v1/Systems"), "/Members/0/@odata.id").as_string().c_str();
        const json::value bios = GetJson(system + "/Bios");
        const json::value target = At(bios, "/Actions/#Bios.ResetBios/target");
        if (!target.is_string())
        {
            continue;
        }
        const auto answer = Post(target.get_string().c_str(), R"({"ResetType":"Reset"})");
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, 200);
        EXPECT_EQ(At(GetJson(system + "/Bios"), "/ResetBiosToDefaultsPending"), true);
        ASSERT_EQ(Post(system + "/Actions/ComputerSystem.Reset", R"({"ResetType":"ForceRestart"})")->status, 200);
        const json::value after = GetJson(system + "/Bios");
        EXPECT_EQ(At(after, "/Attributes").as_object().size(), At(bios, "/Attributes").as_object().size());
        count += ExpectDefaults(At(after, "/Attributes"), ParseFile((folder / "registry.en.json").string()));
    }
    if (testdata::Machines().empty())
    {
        GTEST_SKIP() << "answers of real machines are not here: " << testdata::SharedData();
    }
    EXPECT_GT(count, 400U);
}

} // namespace
