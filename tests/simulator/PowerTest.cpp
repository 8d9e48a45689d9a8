// Reset of the system: what is pending comes into force.

#include "ChangeFixture.h"
#include "SharedData.h"

#include <regex>

namespace
{

using namespace bmctest;
using testing::ElementsAre;

class PowerTest : public ChangeTest
{
  protected:
    json::value Member(const char* path, const std::string& pointer) { return At(GetJson(path), pointer); }
    void ExpectRefusal(const std::string& body, const std::string& message)
    {
        const auto answer = Post(ResetPath, body);
        ASSERT_TRUE(answer) << body;
        EXPECT_EQ(answer->status, 400) << body;
        EXPECT_THAT(Messages(answer), ElementsAre(message)) << body;
    }
};

TEST_F(PowerTest, RestartPutsPendingValuesIntoForce)
{
    for (const char* type : {"ForceRestart", "GracefulRestart", "PowerCycle"})
    {
        StartWith(PlainOptions());
        json::value expected = Effective();
        const json::value before = GetJson(BiosPath);
        Accept(R"({"AssetTag":"new","BootPromptSeconds":9})");
        Restart(type);
        expected.as_object()["AssetTag"] = "new";
        expected.as_object()["BootPromptSeconds"] = 9;
        EXPECT_EQ(Effective(), expected) << type;
        EXPECT_EQ(Pending(), json::object()) << type;
        const json::value after = GetJson(BiosPath);
        EXPECT_NE(At(after, "/@odata.etag"), At(before, "/@odata.etag")) << type;
        EXPECT_THAT(DescribeMessages(At(after, "/@Redfish.Settings/Messages")), ElementsAre("Success")) << type;
        EXPECT_TRUE(std::regex_match(At(after, "/@Redfish.Settings/Time").as_string().c_str(),
                                     std::regex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}Z")))
            << type;
        EXPECT_EQ(At(after, "/@Redfish.Settings/SettingsObject/@odata.id"), json::string(SettingsPath));
    }
}

TEST_F(PowerTest, RestartWithNothingPendingChangesNothingInTheBiosResource)
{
    const json::value bios = GetJson(BiosPath);
    Restart();
    EXPECT_EQ(GetJson(BiosPath), bios);
    const json::value first = Member(SystemPath, "/LastResetTime");
    EXPECT_TRUE(first.is_string());
    EXPECT_EQ(Member(SystemPath, "/PowerState"), "On");
}

TEST_F(PowerTest, OffAndOnIsARestart)
{
    const json::value tag = Member(SystemPath, "/@odata.etag");
    Accept(R"({"AssetTag":"new"})");
    for (const char* off : {"ForceOff", "GracefulShutdown"})
    {
        Restart(off);
        EXPECT_EQ(Member(SystemPath, "/PowerState"), "Off");
        EXPECT_EQ(Member(SystemPath, "/BootProgress/LastState"), "None");
    }
    EXPECT_NE(Member(SystemPath, "/@odata.etag"), tag);
    EXPECT_NE(At(Effective(), "/AssetTag"), "new");
    Accept(R"({"AssetOwner":"while off"})");
    Restart("On");
    EXPECT_EQ(Member(SystemPath, "/PowerState"), "On");
    EXPECT_EQ(Member(SystemPath, "/BootProgress/LastState"), "OSRunning");
    EXPECT_EQ(At(Effective(), "/AssetTag"), "new");
    EXPECT_EQ(At(Effective(), "/AssetOwner"), "while off");
}

TEST_F(PowerTest, OnIsNothingNewToARunningSystem)
{
    Accept(R"({"AssetTag":"new"})");
    Restart("On");
    EXPECT_NE(At(Effective(), "/AssetTag"), "new");
    EXPECT_EQ(Pending(), Parse(R"({"AssetTag":"new"})"));
}

TEST_F(PowerTest, RestartOfASystemThatIsOffTurnsItOn)
{
    Accept(R"({"AssetTag":"new"})");
    Restart("ForceOff");
    Restart("ForceRestart");
    EXPECT_EQ(Member(SystemPath, "/PowerState"), "On");
    EXPECT_EQ(At(Effective(), "/AssetTag"), "new");
}

TEST_F(PowerTest, ParametersAreChecked)
{
    ExpectRefusal("{}", "ActionParameterMissing|#ComputerSystem.Reset|ResetType");
    ExpectRefusal("", "ActionParameterMissing|#ComputerSystem.Reset|ResetType");
    ExpectRefusal(R"({"ResetType":"Nmi"})", "ActionParameterValueNotInList|Nmi|ResetType|#ComputerSystem.Reset");
    ExpectRefusal(R"({"ResetType":"forcerestart"})",
                  "ActionParameterValueNotInList|forcerestart|ResetType|#ComputerSystem.Reset");
    ExpectRefusal(R"({"ResetType":1})", "ActionParameterValueTypeError|1|ResetType|#ComputerSystem.Reset");
    ExpectRefusal(R"({"ResetType":"On","Delay":1})", "ActionParameterUnknown|#ComputerSystem.Reset|Delay");
    ExpectRefusal("{", "MalformedJSON");
}

TEST_F(PowerTest, StartThatTakesAWhileShowsTheFormerValuesUntilItsEnd)
{
    auto options = PlainOptions();
    options.RebootTime = std::chrono::milliseconds(700);
    StartWith(options);
    Accept(R"({"AssetTag":"new"})");
    Restart();
    EXPECT_EQ(Member(SystemPath, "/PowerState"), "PoweringOn");
    EXPECT_NE(Member(SystemPath, "/BootProgress/LastState"), "OSRunning");
    EXPECT_NE(At(Effective(), "/AssetTag"), "new");
    EXPECT_EQ(At(Pending(), "/AssetTag"), "new");

    for (const auto& answer : {Patch(R"({"AssetTag":"too early"})"), Post(ResetBiosPath, "{}"),
                               Post(WriteProtected, R"({"Attributes":{"TpmClear":true}})"),
                               Post(ResetPath, R"({"ResetType":"ForceRestart"})")})
    {
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, 409);
        EXPECT_EQ(MessageKey(answer), "ResourceInUse");
    }
    while (Member(SystemPath, "/PowerState") != "On")
    {
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_EQ(Member(SystemPath, "/BootProgress/LastState"), "OSRunning");
    EXPECT_EQ(At(Effective(), "/AssetTag"), "new");
    EXPECT_EQ(Pending(), json::object());
}

TEST_F(PowerTest, StartUnderWayAtTheEndOfARunIsOverInTheNext)
{
    testdata::TemporaryFolder folder;
    auto options = PlainOptions();
    options.RebootTime = std::chrono::hours(1);
    options.StateFile = (folder.Path() / "state.json").string();
    StartWith(options);
    Accept(R"({"AssetTag":"new"})");
    Restart();
    EXPECT_NE(At(Effective(), "/AssetTag"), "new");
    StartWith(options);
    EXPECT_EQ(At(Effective(), "/AssetTag"), "new");
    EXPECT_EQ(Member(SystemPath, "/PowerState"), "On");
}

TEST_F(PowerTest, StateFileKeepsWhatIsInForceAndWhatIsPending)
{
    testdata::TemporaryFolder folder;
    auto options = PlainOptions();
    options.StateFile = (folder.Path() / "state.json").string();
    StartWith(options);
    Accept(R"({"AssetTag":"in force"})");
    Restart();
    Accept(R"({"AssetOwner":"pending"})");
    ASSERT_EQ(Post(WriteProtected, R"({"Attributes":{"TpmClear":true}})")->status, 200);
    Restart("ForceOff");
    const json::value bios = GetJson(BiosPath);
    StartWith(options);
    EXPECT_EQ(GetJson(BiosPath), bios);
    EXPECT_EQ(Pending(), Parse(R"({"AssetOwner":"pending"})"));
    EXPECT_EQ(Protected(true), Parse(R"({"TpmClear":true})"));
    EXPECT_EQ(Member(SystemPath, "/PowerState"), "Off");
}

TEST_F(PowerTest, ValueThatHasBecomeBadIsToldAndLeftOut)
{
    Accept(R"({"MaximumRatio":40,"AssetTag":"new"})");
    Accept(R"({"TurboMode":"Disabled"})");
    const json::value ratio = At(Effective(), "/MaximumRatio");
    Restart();
    EXPECT_EQ(At(Effective(), "/MaximumRatio"), ratio);
    EXPECT_EQ(At(Effective(), "/AssetTag"), "new");
    EXPECT_EQ(At(Effective(), "/TurboMode"), "Disabled");
    EXPECT_THAT(DescribeMessages(Member(BiosPath, "/@Redfish.Settings/Messages")),
                ElementsAre("Success", "PropertyValueOutOfRange|40|MaximumRatio|/Attributes/MaximumRatio"));
    EXPECT_EQ(Pending(), json::object());
}

TEST_F(PowerTest, OrderToTheFirmwareHasItsFormerValueAfterwards)
{
    testdata::TemporaryFolder folder;
    folder.Write("bios.json", R"({"@odata.id":"/redfish/v1/Systems/1/Bios","AttributeRegistry":"R.v1_0_0",
        "Attributes":{"Erase":"No"},
        "@Redfish.Settings":{"SettingsObject":{"@odata.id":"/redfish/v1/Systems/1/Bios/Settings"}}})");
    folder.Write("registry.en.json", R"({"Id":"R.v1_0_0","RegistryEntries":{"Attributes":[{"AttributeName":"Erase",
        "Type":"Enumeration","WriteOnly":true,"Value":[{"ValueName":"No"},{"ValueName":"Yes"}]}]}})");
    auto options = PlainOptions();
    options.MachineDir = folder.Path().string();
    StartWith(options);
    Accept(R"({"Erase":"Yes"})");
    EXPECT_EQ(Pending(), Parse(R"({"Erase":"Yes"})"));
    Restart();
    EXPECT_EQ(Effective(), Parse(R"({"Erase":"No"})"));
    EXPECT_EQ(Pending(), json::object());
}

TEST_F(PowerTest, SettingsObjectThatRepeatsAllValuesKeepsItsForm)
{
    const auto machine = testdata::SharedData() / "hpe-DL360";
    if (!std::filesystem::exists(machine / "settings.json"))
    {
        GTEST_SKIP() << "answers of real machines are not here: " << machine;
    }
    auto options = PlainOptions();
    options.MachineDir = machine.string();
    StartWith(options);
    const json::value file = ParseFile((machine / "settings.json").string());
    const json::value bios = GetJson(BiosPath);
    const json::value tag = At(GetJson(SettingsPath), "/@odata.etag");
    Accept(R"({"ServerName":"changed"})");
    json::value expected = At(file, "/Attributes");
    expected.as_object()["ServerName"] = "changed";
    EXPECT_EQ(Pending(), expected);
    EXPECT_NE(At(GetJson(SettingsPath), "/@odata.etag"), tag);
    EXPECT_EQ(GetJson(BiosPath), bios);
    Restart();
    EXPECT_EQ(Pending(), expected);
    EXPECT_EQ(At(Effective(), "/ServerName"), "changed");
    EXPECT_NE(At(GetJson(BiosPath), "/@odata.etag"), At(bios, "/@odata.etag"));
    EXPECT_THAT(DescribeMessages(Member(BiosPath, "/@Redfish.Settings/Messages")), ElementsAre("Success"));
}

TEST_F(PowerTest, ButtonOfATreesSystemTurnsItOffAndOn)
{
    const auto tree = testdata::SharedData() / "dmtf-rackmount1";
    if (!std::filesystem::exists(tree / "index.json"))
    {
        GTEST_SKIP() << "answers of real machines are not here: " << tree;
    }
    auto options = PlainOptions();
    options.MachineDir = tree.string();
    StartWith(options);
    constexpr const char* system = "/redfish/v1/Systems/437XR1138R2";
    const json::value before = GetJson(system);
    const std::string target = At(before, "/Actions/#ComputerSystem.Reset/target").as_string().c_str();
    for (const char* state : {"Off", "On"})
    {
        const auto answer = Post(target, R"({"ResetType":"PushPowerButton"})");
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, 200) << answer->body;
        EXPECT_EQ(Member(system, "/PowerState"), state);
    }
    EXPECT_EQ(Post(target, R"({"ResetType":"Nmi"})")->status, 200);
    EXPECT_EQ(Post(target, R"({"ResetType":"PowerCycle"})")->status, 400);
}

} // namespace
