// PATCH of the settings object.

#include "ChangeFixture.h"
#include "HttpServer.h"
#include "SharedData.h"

namespace
{

using namespace bmctest;
using testing::ElementsAre;
using testing::HasSubstr;

class SettingsChangeTest : public ChangeTest
{
};

TEST_F(SettingsChangeTest, AcceptedValuesArePendingAndThoseInForceStay)
{
    const json::value before = GetJson(BiosPath);
    const auto answer =
        Patch(R"({"AssetTag":"A–1","BootPromptSeconds":9,"UsbPortFront2":true,"BootMode":"Legacy","ContactTeam":""})");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200);
    EXPECT_THAT(
        Messages(answer),
        ElementsAre("Success", "ResetRequired|/redfish/v1/Systems/1/Actions/ComputerSystem.Reset|ForceRestart"));
    EXPECT_EQ(
        Pending(),
        Parse(R"({"AssetTag":"A–1","BootPromptSeconds":9,"UsbPortFront2":true,"BootMode":"Legacy","ContactTeam":""})"));
    EXPECT_EQ(GetJson(BiosPath), before);
}

TEST_F(SettingsChangeTest, LaterChangesAddToEarlierOnesAndReplaceThem)
{
    Accept(R"({"AssetTag":"one","AssetOwner":"two"})");
    Accept(R"({"AssetTag":"three","ServerName":"four"})");
    EXPECT_EQ(Pending(), Parse(R"({"AssetTag":"three","AssetOwner":"two","ServerName":"four"})"));
}

TEST_F(SettingsChangeTest, ChangeOfNothingNeedsNoReset)
{
    const auto answer = Patch("{}");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200);
    EXPECT_THAT(Messages(answer), ElementsAre("Success"));
}

TEST_F(SettingsChangeTest, PathMayBeWrittenInEveryWay)
{
    for (const char* path : {"/redfish/v1/systems/1/bios/settings", "/redfish/v1/Systems/1/Bios/Settings/",
                             "//redfish//v1/SYSTEMS/1/Bios//Settings"})
    {
        const auto answer = m_Client->Patch(path, R"({"Attributes":{"AssetTag":"x"}})", JsonType);
        ASSERT_TRUE(answer) << path;
        EXPECT_EQ(answer->status, 200) << path;
    }
}

TEST_F(SettingsChangeTest, EachBadValueIsToldByItself)
{
    struct Case
    {
        const char* Attributes;
        const char* Message;
    };
    const std::string longTag(33, 'x');
    const std::string longTagChange = "{\"AssetTag\":\"" + longTag + "\"}";
    const std::string longTagMessage = "PropertyValueFormatError|" + longTag + "|AssetTag|/Attributes/AssetTag";
    for (const auto& [attributes, message] : {
             Case{R"({"NoSuchThing":1})", "PropertyUnknown|NoSuchThing|/Attributes/NoSuchThing"},
             {R"({"":1})", "PropertyUnknown||/Attributes/"},
             {R"({"assettag":"x"})", "PropertyUnknown|assettag|/Attributes/assettag"},
             {R"({"a/b~c":1})", "PropertyUnknown|a/b~c|/Attributes/a~1b~0c"},
             {R"({"TpmState":"Hidden"})", "PropertyUnknown|TpmState|/Attributes/TpmState"},
             {R"({"FactoryBurnInResult":"x"})", "PropertyUnknown|FactoryBurnInResult|/Attributes/FactoryBurnInResult"},
             {R"({"SystemModel":"x"})", "PropertyNotWritable|SystemModel|/Attributes/SystemModel"},
             {R"({"Slot8State":"Enabled"})", "PropertyNotWritable|Slot8State|/Attributes/Slot8State"},
             {R"({"BootMode":"uefi"})", "PropertyValueNotInList|uefi|BootMode|/Attributes/BootMode"},
             {R"({"BootMode":""})", "PropertyValueNotInList||BootMode|/Attributes/BootMode"},
             {R"({"BootMode":1})", "PropertyValueTypeError|1|BootMode|/Attributes/BootMode"},
             {R"({"BootMode":null})", "PropertyValueTypeError|null|BootMode|/Attributes/BootMode"},
             {R"({"BootMode":["Uefi"]})", "PropertyValueTypeError|[\"Uefi\"]|BootMode|/Attributes/BootMode"},
             {R"({"UsbPortFront2":"true"})", "PropertyValueTypeError|true|UsbPortFront2|/Attributes/UsbPortFront2"},
             {R"({"UsbPortFront2":1})", "PropertyValueTypeError|1|UsbPortFront2|/Attributes/UsbPortFront2"},
             {R"({"ActiveCores":"5"})", "PropertyValueTypeError|5|ActiveCores|/Attributes/ActiveCores"},
             {R"({"ActiveCores":true})", "PropertyValueTypeError|true|ActiveCores|/Attributes/ActiveCores"},
             {R"({"ActiveCores":1.5})", "PropertyValueTypeError|1.5E0|ActiveCores|/Attributes/ActiveCores"},
             {R"({"ActiveCores":33})", "PropertyValueOutOfRange|33|ActiveCores|/Attributes/ActiveCores"},
             {R"({"ActiveCores":-1})", "PropertyValueOutOfRange|-1|ActiveCores|/Attributes/ActiveCores"},
             {R"({"ActiveCores":18446744073709551615})",
              "PropertyValueOutOfRange|18446744073709551615|ActiveCores|/Attributes/ActiveCores"},
             {R"({"SleepExitLatencyUs":15})",
              "PropertyValueOutOfRange|15|SleepExitLatencyUs|/Attributes/SleepExitLatencyUs"},
             {R"({"AssetTag":7})", "PropertyValueTypeError|7|AssetTag|/Attributes/AssetTag"},
             {longTagChange.c_str(), longTagMessage.c_str()},
             {R"({"ContactEmail":"nobody"})", "PropertyValueFormatError|nobody|ContactEmail|/Attributes/ContactEmail"},
         })
    {
        const auto answer = Patch(attributes);
        ASSERT_TRUE(answer) << attributes;
        EXPECT_EQ(answer->status, 400) << attributes;
        EXPECT_THAT(Messages(answer), ElementsAre(message)) << attributes;
        EXPECT_EQ(At(Parse(answer->body), "/error/code"),
                  At(Parse(answer->body), "/error/@Message.ExtendedInfo/0/MessageId"));
    }
    EXPECT_EQ(Pending(), json::object());
}

TEST_F(SettingsChangeTest, ValuesAtTheBoundsAreAccepted)
{
    Accept(R"({"ActiveCores":0})");
    Accept(R"({"ActiveCores":32})");
    Accept(R"({"TimestampAdjust":-500,"SleepExitLatencyUs":1000})");
    Accept("{\"AssetTag\":\"" + std::string(32, 'x') + "\"}");
    std::string umlauts;
    for (int i = 0; i < 32; ++i)
    {
        umlauts += "ü";
    }
    Accept("{\"AssetTag\":\"" + umlauts + "\"}");
}

TEST_F(SettingsChangeTest, OneBadValueRefusesTheWholeChange)
{
    const auto answer = Patch(R"({"AssetTag":"good","BootMode":"Sideways","NoSuchThing":1,"ServerName":"srv"})");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 400);
    EXPECT_THAT(Messages(answer), ElementsAre("PropertyValueNotInList|Sideways|BootMode|/Attributes/BootMode",
                                              "PropertyUnknown|NoSuchThing|/Attributes/NoSuchThing"));
    EXPECT_THAT(At(Parse(answer->body), "/error/code").as_string().c_str(), HasSubstr("GeneralError"));
    EXPECT_EQ(Pending(), json::object());
}

TEST_F(SettingsChangeTest, MessagesTellTheirTextsInFull)
{
    const auto answer = Patch(R"({"BootMode":"uefi"})");
    ASSERT_TRUE(answer);
    const json::value info = At(Parse(answer->body), "/error/@Message.ExtendedInfo/0");
    EXPECT_EQ(At(info, "/MessageId"), "Base.1.18.0.PropertyValueNotInList");
    EXPECT_EQ(At(info, "/Message"),
              "The value 'uefi' for the property BootMode is not in the list of acceptable values.");
    EXPECT_EQ(At(info, "/MessageSeverity"), "Warning");
    EXPECT_TRUE(At(info, "/Resolution").is_string());
}

TEST_F(SettingsChangeTest, LongRefusedValueIsRepeatedInPart)
{
    const std::string value(5000, 'x');
    const auto answer = Patch("{\"BootMode\":\"" + value + "\"}");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 400);
    EXPECT_LT(answer->body.size(), 2000U);
    EXPECT_THAT(answer->body, HasSubstr(std::string(256, 'x') + "..."));
}

TEST_F(SettingsChangeTest, WhatAnotherValueLocksCannotBeChanged)
{
    // In force: DeepCoreSleep and MonitorWait are on, the latency is open.
    Accept(R"({"SleepExitLatencyUs":100})");
    const auto together = Patch(R"({"DeepCoreSleep":"Disabled","SleepExitLatencyUs":50})");
    ASSERT_TRUE(together);
    EXPECT_EQ(together->status, 400);
    EXPECT_THAT(Messages(together),
                ElementsAre("PropertyNotWritable|SleepExitLatencyUs|/Attributes/SleepExitLatencyUs"));

    Accept(R"({"DeepCoreSleep":"Disabled"})");
    const auto locked = Patch(R"({"SleepExitLatencyUs":50})");
    ASSERT_TRUE(locked);
    EXPECT_EQ(locked->status, 400) << "a pending value locks, too";

    Accept(R"({"DeepCoreSleep":"Enabled","SleepExitLatencyUs":50})");
}

TEST_F(SettingsChangeTest, BoundsFollowOtherValues)
{
    Accept(R"({"MaximumRatio":40})");
    const auto refused = Patch(R"({"TurboMode":"Disabled","MaximumRatio":40})");
    ASSERT_TRUE(refused);
    EXPECT_THAT(Messages(refused), ElementsAre("PropertyValueOutOfRange|40|MaximumRatio|/Attributes/MaximumRatio"));
    Accept(R"({"TurboMode":"Disabled","MaximumRatio":26})");
}

TEST_F(SettingsChangeTest, BodiesOfNoUseAreRefused)
{
    struct Case
    {
        std::string Body;
        const char* Message;
    };
    for (const auto& [body, message] :
         {Case{"", "MalformedJSON"},
          {"{", "MalformedJSON"},
          {R"({"Attributes":{"AssetTag":"x"}} trailing)", "MalformedJSON"},
          {"{\"Attributes\":{\"AssetTag\":\"\xff\"}}", "MalformedJSON"},
          {R"({"Attributes":{"AssetTag":"\ud800"}})", "MalformedJSON"},
          {std::string(200000, '['), "MalformedJSON"},
          {"[]", "UnrecognizedRequestBody"},
          {"{}", "PropertyMissing|Attributes|/Attributes"},
          {R"({"Attributes":null})", "PropertyValueTypeError|null|Attributes|/Attributes"},
          {R"({"Attributes":[]})", "PropertyValueTypeError|[]|Attributes|/Attributes"},
          {R"({"Attributes":{"AssetTag":"x"},"Id":"y"})", "PropertyNotWritable|Id|/Id"},
          {R"({"Attributes":{"AssetTag":"x"},"Colour":"y"})", "PropertyUnknown|Colour|/Colour"}})
    {
        const auto answer = m_Client->Patch(SettingsPath, body, JsonType);
        ASSERT_TRUE(answer) << body.substr(0, 80);
        EXPECT_EQ(answer->status, 400) << body.substr(0, 80);
        EXPECT_THAT(Messages(answer), ElementsAre(message)) << body.substr(0, 80);
    }
    EXPECT_EQ(Pending(), json::object());
}

TEST_F(SettingsChangeTest, AnnotationsAreNoFault)
{
    const auto answer = m_Client->Patch(
        SettingsPath, R"({"@Redfish.SettingsApplyTime":{"ApplyTime":"OnReset"},"Attributes":{"AssetTag":"x"}})",
        JsonType);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200);
}

TEST_F(SettingsChangeTest, BodyIsJsonWhateverItIsCalled)
{
    std::string attributes = "{\"DeploymentNote\":\"" + std::string(200, 'x') + "\"}";
    attributes.insert(1, std::string(20000, ' '));
    for (const char* type : {"application/x-www-form-urlencoded", "text/plain", "multipart/form-data; boundary=x"})
    {
        const auto answer = m_Client->Patch(SettingsPath, "{\"Attributes\":" + attributes + "}", type);
        ASSERT_TRUE(answer) << type;
        EXPECT_EQ(answer->status, 200) << type << answer->body;
    }
}

TEST_F(SettingsChangeTest, BodyOverTheLimitIsRefused)
{
    const std::string blanks(bmcsim::HttpServer::MaxBody - 31, ' ');
    const auto taken = Patch(blanks + R"({"AssetTag":"x"})");
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->status, 200);
    const auto refused = Patch(blanks + R"({"AssetTag":"xx"})");
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->status, 413);
    EXPECT_EQ(Pending(), Parse(R"({"AssetTag":"x"})"));
}

TEST_F(SettingsChangeTest, OnlyIfMatchIsACondition)
{
    const auto bios = m_Client->Get(BiosPath);
    ASSERT_TRUE(bios);
    std::string bare = bios->get_header_value("ETag");
    bare = bare.substr(1, bare.size() - 2);
    for (const std::string& tag : {bare, std::string("*"), std::string("\"other\"")})
    {
        const auto answer = Patch(R"({"AssetTag":"x"})", {{"If-None-Match", tag}});
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, 200) << tag;
    }
    const auto settings = m_Client->Get(SettingsPath);
    ASSERT_TRUE(settings);
    const std::string tag = settings->get_header_value("ETag");
    for (const std::string& known : {tag, "W/" + tag, std::string("*"), "\"a\", " + tag, tag.substr(1, tag.size() - 2)})
    {
        const auto answer = Patch(R"({"AssetTag":"x"})", {{"If-Match", known}});
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, 200) << known;
    }
    Accept(R"({"AssetTag":"y"})");
    for (const std::string& former : {tag, std::string("\"other\""), bare})
    {
        const auto answer = Patch(R"({"AssetTag":"z"})", {{"If-Match", former}});
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, 412) << former;
        EXPECT_EQ(MessageKey(answer), "PreconditionFailed");
    }
    EXPECT_EQ(At(Pending(), "/AssetTag"), "y");
}

TEST_F(SettingsChangeTest, PasswordsAreTakenAndNeverTold)
{
    testdata::TemporaryFolder folder;
    auto options = PlainOptions();
    options.StateFile = (folder.Path() / "state.json").string();
    StartWith(options);
    Accept(R"({"AdminPassword":"Unt0ld-Secret"})");
    EXPECT_EQ(Pending(), Parse(R"({"AdminPassword":null})"));
    Restart();
    EXPECT_TRUE(At(Effective(), "/AdminPassword").is_null());
    const auto refused = Patch(R"({"IscsiChapSecret":"sh0rt"})");
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->status, 400);
    EXPECT_THAT(Messages(refused), ElementsAre("PropertyValueError|IscsiChapSecret|/Attributes/IscsiChapSecret"));
    EXPECT_THAT(refused->body, testing::Not(HasSubstr("sh0rt")));
    EXPECT_THAT(testdata::ReadFile(options.StateFile), testing::Not(HasSubstr("Unt0ld")));
}

TEST_F(SettingsChangeTest, ChangeNeedsCredentials)
{
    const auto answer =
        ConnectWithoutCredentials(*m_Simulator)->Patch(SettingsPath, R"({"Attributes":{"AssetTag":"x"}})", JsonType);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 401);
    EXPECT_EQ(Pending(), json::object());
}

TEST_F(SettingsChangeTest, WithoutARegistryTheValuesInForceSayWhatThereIs)
{
    testdata::TemporaryFolder folder;
    folder.Write("bios.json", R"({"@odata.id":"/redfish/v1/Systems/1/Bios","Attributes":{"Text":"a","Number":1,
        "Flag":true},"@Redfish.Settings":{"SettingsObject":{"@odata.id":"/redfish/v1/Systems/1/Bios/Settings"}}})");
    auto options = PlainOptions();
    options.MachineDir = folder.Path().string();
    StartWith(options);
    Accept(R"({"Text":"b","Number":2,"Flag":false})");
    const auto answer = Patch(R"({"Text":1,"Number":"2","Flag":0,"Other":1})");
    ASSERT_TRUE(answer);
    EXPECT_THAT(Messages(answer), ElementsAre("PropertyValueTypeError|1|Text|/Attributes/Text",
                                              "PropertyValueTypeError|2|Number|/Attributes/Number",
                                              "PropertyValueTypeError|0|Flag|/Attributes/Flag",
                                              "PropertyUnknown|Other|/Attributes/Other"));
    Restart();
    EXPECT_EQ(Effective(), Parse(R"({"Text":"b","Number":2,"Flag":false})"));
}

TEST_F(SettingsChangeTest, SettingsObjectWithoutValuesShowsThePendingOnes)
{
    testdata::TemporaryFolder folder;
    folder.Write("bios.json", R"({"@odata.id":"/redfish/v1/Systems/1/Bios","Attributes":{"Text":"a"},
        "@Redfish.Settings":{"SettingsObject":{"@odata.id":"/redfish/v1/Systems/1/Bios/Settings"}}})");
    folder.Write("settings.json", R"({"@odata.id":"/redfish/v1/Systems/1/Bios/Settings","@odata.etag":"\"own\""})");
    auto options = PlainOptions();
    options.MachineDir = folder.Path().string();
    StartWith(options);
    EXPECT_EQ(At(GetJson(SettingsPath), "/@odata.etag"), "\"own\"");
    Accept(R"({"Text":"b"})");
    EXPECT_EQ(Pending(), Parse(R"({"Text":"b"})"));
    EXPECT_NE(At(GetJson(SettingsPath), "/@odata.etag"), "\"own\"");
}

TEST_F(SettingsChangeTest, ChangeThatCannotBeSavedIsRefused)
{
    testdata::TemporaryFolder folder;
    auto options = PlainOptions();
    const std::filesystem::path place = folder.Path() / "gone";
    std::filesystem::create_directory(place);
    options.StateFile = (place / "state.json").string();
    StartWith(options);
    Accept(R"({"AssetTag":"kept"})");
    std::filesystem::remove_all(place);
    const auto answer = Patch(R"({"AssetTag":"lost"})");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 500);
    EXPECT_EQ(MessageKey(answer), "InternalError");
    EXPECT_EQ(Pending(), Parse(R"({"AssetTag":"kept"})"));
    EXPECT_THAT(m_Simulator->Trouble(), HasSubstr(options.StateFile));
    const auto reset = Post(ResetPath, R"({"ResetType":"ForceRestart"})");
    ASSERT_TRUE(reset);
    EXPECT_EQ(reset->status, 500);
    EXPECT_EQ(Pending(), Parse(R"({"AssetTag":"kept"})"));
    std::filesystem::create_directory(place);
    Accept(R"({"AssetTag":"found"})");
}

} // namespace
