// Changes from the call of the front class down to the requests: bodies, headers and log
// records byte for byte.
#include "ChangeFixture.h"

using namespace changing;
using namespace Tavrine;
using doubles::BiosResource;
using doubles::RestCall;
using reading::BiosReadLogs;
using reading::BiosUrl;
using reading::DiscoveryLogs;
using reading::Get;
using reading::Join;
using reading::ReadProtected;
using reading::ReadSchema;
using reading::SettingsUrl;
using reading::SystemsUrl;
using staging::CacheLogs;
using staging::FlushEnter;
using staging::FlushExit;
using staging::FlushLogs;
using staging::Patch;
using staging::PatchUrlLogs;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pair;

namespace
{

const std::string SetUrl = "/redfish/v1/Systems/1/Bios/Actions/Oem/ZorvanBios.SetProtectedAttributes";

const LogLine StandardEnter{4, "Entering  Tavrine::BiosStandardSettingAssistant::FlushChanges"};
const LogLine ProtectedEnter{4, "Entering  Tavrine::BiosProtectedSettingAssistant::FlushChanges"};
const LogLine ProtectedExit{4, "Exiting  Tavrine::BiosProtectedSettingAssistant::FlushChanges"};
const LogLine NothingToDo{4, "Nothing need to do for flush changes."};
const std::vector<LogLine> NothingFlushed = {FlushEnter, StandardEnter, NothingToDo, FlushExit};
const std::vector<LogLine> ProtectedPendingLogs = {
    {4, "Entering  Tavrine::BiosProtectedSettingAssistant::QueryPendingValue"},
    {4, "Exiting  Tavrine::BiosProtectedSettingAssistant::QueryPendingValue"}};

RestCall SetProtected(const std::string& body)
{
    return {.Verb = "POST+errors", .Url = SetUrl, .Body = body, .Flag = true, .Timeout = 60, .Headers = {}};
}

class ChangeRoad : public ChangeTest
{
  protected:
    /// A UEFI system over the real assistants, with the protected settings Lock and Seal.
    void StartRealUefi()
    {
        m_Front = MakeUefi({.allowProtectedSettings = true});
        TellStandard(R"({"BootMode":"Uefi","Wake":true})");
        TellSchema();
        for (const char* name : {"BootMode", "Wake", "Lock", "Seal"})
        {
            Know(name);
        }
        Know("Lock").IsProtected = true;
        Know("Seal").IsProtected = true;
    }
    /// Wake waits in a batch; BootMode is related to it. Both are known and good.
    void StartRelatedBatch()
    {
        StartReal();
        Know("BootMode").DependencyNames = {"Wake"};
        Accept("Wake", "false");
        Accept("BootMode", "\"Legacy\"");
        ASSERT_THAT(m_Front->PatchSettingNewValue("Wake", "false", true), IsBare(0));
        Forget();
    }
    void TellPatch(int code, const std::vector<RedfishConfigResult>& errors = {})
    {
        world.Tell("PATCH", SettingsUrl, {.Result = {code, "of the BMC", ""}, .Body = "", .Errors = errors});
    }
    void Forget()
    {
        world.Calls.clear();
        TakeLogs();
        TakeSteps();
    }
};

// --- first changes of an object -----------------------------------------------------------

TEST_F(ChangeRoad, FirstStandardChange)
{
    StartReal();
    Accept("BootMode", "\"Legacy\"");
    world.Tell("PATCH", SettingsUrl, "");
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), ReadSchema(BiosUrl), Get(SystemsUrl), Get(BiosUrl),
                                         Get(SettingsUrl), Patch("\"BootMode\":\"Legacy\"")));
    EXPECT_THAT(world.Logs, ElementsAreArray(Join({{PatchEnter},
                                                   DiscoveryLogs,
                                                   BiosReadLogs,
                                                   PatchUrlLogs,
                                                   CacheLogs("BootMode"),
                                                   FlushLogs("\"BootMode\":********")})));
}

TEST_F(ChangeRoad, FirstProtectedChange)
{
    StartRealUefi();
    TellProtected(R"({"Lock":"Off"})");
    Accept("Lock", "\"On\"");
    world.Tell("POST+errors", SetUrl, {.Result = {1, "reset", ""}, .Body = "answer", .Errors = {}});
    EXPECT_THAT(m_Front->PatchSettingNewValue("Lock", "On", false), IsResult(1, "reset", ""));
    const std::string body = " {\"Attributes\":{ \"Lock\" : \"On\" }} ";
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), ReadSchema(BiosUrl), ReadProtected("{}"),
                                         ReadProtected("{\"Pending\":true}"), Get(SystemsUrl), Get(BiosUrl),
                                         Get(SettingsUrl), SetProtected(body)));
    EXPECT_THAT(world.Logs, ElementsAreArray(Join({{PatchEnter},
                                                   DiscoveryLogs,
                                                   ProtectedPendingLogs,
                                                   BiosReadLogs,
                                                   PatchUrlLogs,
                                                   CacheLogs("Lock"),
                                                   {FlushEnter,
                                                    ProtectedEnter,
                                                    {4, "send patch data: " + body + " to: " + SetUrl},
                                                    ProtectedExit,
                                                    StandardEnter,
                                                    NothingToDo,
                                                    FlushExit}})));
}

TEST_F(ChangeRoad, FirstUncheckedStandardChange)
{
    StartReal();
    world.Tell("PATCH", SettingsUrl, "");
    EXPECT_THAT(m_Front->PatchSettingNewValueWithOutCheck("BootMode", "a \"b\" c", false), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), ReadSchema(BiosUrl), Get(SystemsUrl), Get(BiosUrl),
                                         Patch("\"BootMode\":\"a \"b\" c\"")));
    EXPECT_THAT(
        world.Logs,
        ElementsAreArray(Join({{{3, "Enter BiosRedfishConfigProc::PatchSettingNewValueWithOutCheck()"}},
                               DiscoveryLogs,
                               BiosReadLogs,
                               CacheLogs("BootMode"),
                               {StandardEnter},
                               PatchUrlLogs,
                               {{4, "send patch data: {\"Attributes\":{\"BootMode\":********}} to: " + SettingsUrl},
                                {4, "Exiting  Tavrine::BiosStandardSettingAssistant::FlushChanges"},
                                {4, "Exiting  Tavrine::BiosBasicSettingProc::PatchSettingNewValueWithOutCheck"},
                                {3, "Exit BiosRedfishConfigProc::PatchSettingNewValueWithOutCheck() with code 0"}}})));
}

TEST_F(ChangeRoad, FirstUncheckedProtectedChange)
{
    StartRealUefi();
    TellProtected(R"({"Lock":"Off"})");
    world.Fail("POST+errors", SetUrl, 28, "refused");
    EXPECT_THAT(m_Front->PatchSettingNewValueWithOutCheck("Lock", "On", false), IsResult(28, "refused", ""));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), ReadSchema(BiosUrl), ReadProtected("{}"),
                                         SetProtected(" {\"Attributes\":{ \"Lock\" : \"On\" }} ")));
    EXPECT_THAT(world.LogsAt(1), ElementsAre("Failed in patching data."));
    EXPECT_THAT(world.LogsAt(4), testing::Contains("Fail to post info " + SetUrl));
}

// The standard proc alone has been made, so nothing asks the protected resource.
TEST_F(ChangeRoad, FlushAfterAnUncheckedStandardChangeAsksTheStandardResourceAlone)
{
    StartRealUefi();
    ASSERT_THAT(m_Front->PatchSettingNewValueWithOutCheck("Wake", "false", true), IsBare(0));
    Forget();
    TellPatch(0);
    EXPECT_THAT(m_Front->FlushChanges(), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(Patch("\"Wake\":false")));
    EXPECT_THAT(world.Logs, testing::Not(testing::Contains(ProtectedEnter)));
}

// --- batches ------------------------------------------------------------------------------

TEST_F(ChangeRoad, BatchIsOneRequestInByteOrderAndItsLogShowsNoValue)
{
    StartReal();
    Know("Pin").SettingType = "Password";
    Know("alpha");
    Accept("Pin", "\"s3cret \\\"x\\\"\"");
    Accept("alpha", "7");
    Accept("BootMode", "\"Legacy\"");
    Accept("Wake", "false");
    EXPECT_THAT(m_Front->PatchSettingNewValue("Pin", "s3cret \"x\"", true), IsBare(4));
    EXPECT_THAT(m_Front->PatchSettingNewValue("alpha", "7", true), IsBare(0));
    EXPECT_THAT(m_Front->PatchSettingNewValue("Wake", "false", true), IsBare(0));
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(0));
    for (const LogLine& line : world.Logs)
    {
        EXPECT_THAT(line.Text, testing::Not(testing::HasSubstr("s3cret")));
    }
    Forget();
    TellPatch(0);
    EXPECT_THAT(m_Front->FlushChanges(), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(Patch(R"("BootMode":"Legacy","Pin":"s3cret \"x\"","Wake":false,"alpha":7)")));
    EXPECT_THAT(world.Logs,
                ElementsAreArray(FlushLogs(R"("BootMode":********,"Pin":********,"Wake":********,"alpha":********)")));
    Forget();
    EXPECT_THAT(m_Front->FlushChanges(), IsBare(0));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAreArray(NothingFlushed));
}

TEST_F(ChangeRoad, BatchOverBothResourcesSendsProtectedSettingsFirst)
{
    StartRealUefi();
    TellProtected(R"({"Lock":"Off","Seal":"Off"})");
    Accept("Wake", "false");
    Accept("Seal", "\"On\"");
    Accept("Lock", "\"On\"");
    ASSERT_THAT(m_Front->PatchSettingNewValue("Wake", "false", true), IsBare(0));
    ASSERT_THAT(m_Front->PatchSettingNewValue("Seal", "On", true), IsBare(0));
    ASSERT_THAT(m_Front->PatchSettingNewValue("Lock", "On", true), IsBare(0));
    Forget();
    TellPatch(1);
    world.Tell("POST+errors", SetUrl,
               {.Result = {18, "refused", ""}, .Body = "", .Errors = {{10, "bad Lock", "Lock"}}});
    EXPECT_THAT(m_Front->FlushChanges(), IsResult(1, "of the BMC", ""));
    EXPECT_THAT(world.Calls, ElementsAre(SetProtected(" {\"Attributes\":{ \"Lock\" : \"On\",\"Seal\" : \"On\" }} "),
                                         Patch("\"Wake\":false")));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(10, "bad UEFI.Lock", "UEFI.Lock")));
}

TEST_F(ChangeRoad, QueuedValueIsInPlaceForTheNextChange)
{
    StartReal();
    Accept("BootMode", "\"Legacy\"");
    ASSERT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(0));
    Forget();
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(1));
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(ChangeRoad, EveryFlushSendsTheTagOfTheFirstRead)
{
    StartReal();
    world.Answers.erase({"GET", BiosUrl});
    world.Tell("GET", BiosUrl, BiosResource(R"({"BootMode":"Uefi","Wake":true})", SettingsUrl, R"(W/\"tag-7\")"));
    world.Tell("GET", BiosUrl, BiosResource("{}", SettingsUrl, "other"));
    TellPatch(0);
    Accept("BootMode", "\"Legacy\"");
    Accept("Wake", "false");
    ASSERT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsBare(0));
    ASSERT_THAT(m_Front->PatchSettingNewValue("Wake", "false", false), IsBare(0));
    std::vector<SettingStringMap> headers;
    for (const RestCall& call : world.Calls)
    {
        if (call.Verb == "PATCH")
        {
            headers.push_back(call.Headers);
        }
    }
    const SettingStringMap tagged{{"Expect", ""}, {"If-None-Match", "tag-7"}};
    EXPECT_THAT(headers, ElementsAre(tagged, tagged));
}

TEST_F(ChangeRoad, ChangesThatCouldNotBeSentWaitForTheNextFlush)
{
    StartReal();
    world.Answers.erase({"GET", BiosUrl});
    world.Tell("GET", BiosUrl, BiosResource(R"({"BootMode":"Uefi","Wake":true})", SettingsUrl, ""));
    Accept("BootMode", "\"Legacy\"");
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsBare(26));
    EXPECT_THAT(world.LogsAt(1),
                ElementsAre("Failed to get the odata id", "Failed to parse etag from value response."));
    Forget();
    EXPECT_THAT(m_Front->FlushChanges(), IsBare(26));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.LogsAt(4),
                testing::Contains("send patch data: {\"Attributes\":{\"BootMode\":********}} to: " + SettingsUrl));
}

TEST_F(ChangeRoad, ErrorsOfTwoFailingFlushesGrow)
{
    StartReal();
    TellPatch(18, {{10, "BootMode is bad", "BootMode"}});
    TellPatch(18, {{9, "no Wake", "Wake"}});
    Accept("BootMode", "\"Legacy\"");
    Accept("Wake", "false");
    const auto boot = IsResult(10, "BIOS.BootMode is bad", "BIOS.BootMode");
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsResult(18, "of the BMC", ""));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(boot));
    Forget();
    EXPECT_THAT(m_Front->PatchSettingNewValue("Wake", "false", false), IsResult(18, "of the BMC", ""));
    EXPECT_THAT(world.Calls, testing::Contains(Patch("\"Wake\":false")));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(boot, boot, IsResult(9, "no BIOS.Wake", "BIOS.Wake")));
}

// A setting of the other resource later on: its value is looked for among those of both.
TEST_F(ChangeRoad, StandardChangeAfterAProtectedOneSeesTheValuesOfBothResources)
{
    StartRealUefi();
    TellProtected(R"({"Lock":"Off"})", R"({"Lock":"On"})");
    Accept("Lock", "\"On\"");
    Accept("BootMode", "\"Legacy\"");
    ASSERT_THAT(m_Front->PatchSettingNewValue("Lock", "Off", true), IsBare(0));
    Forget();
    world.UpdatedValues.clear();
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(0));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.UpdatedValues,
                ElementsAre(ElementsAre(Pair("BootMode", OptionalVar("Uefi")), Pair("Lock", OptionalVar("On")),
                                        Pair("Wake", OptionalVar(true)))));
    EXPECT_THAT(world.LogsAt(1), IsEmpty());
}

// --- related settings ---------------------------------------------------------------------

TEST_F(ChangeRoad, RelatedSettingForcesAFlushInTheMiddleOfABatch)
{
    StartRelatedBatch();
    TellPatch(1);
    Accept("Cores", "8");
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(Patch("\"Wake\":false")));
    EXPECT_THAT(
        world.Logs,
        ElementsAreArray(Join({{PatchEnter}, FlushLogs("\"Wake\":********"), CacheLogs("BootMode"), {StaysInBatch}})));
    Forget();
    EXPECT_THAT(m_Front->PatchSettingNewValue("Cores", "8", true), IsBare(0));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(m_Front->FlushChanges(), IsResult(1, "of the BMC", ""));
    EXPECT_THAT(world.Calls, ElementsAre(Patch("\"BootMode\":\"Legacy\",\"Cores\":8")));
}

TEST_F(ChangeRoad, RelatedSettingAfterTheFlushOfItsBatchFlushesNothing)
{
    StartRelatedBatch();
    TellPatch(0);
    ASSERT_THAT(m_Front->FlushChanges(), IsBare(0));
    Forget();
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(0));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs,
                ElementsAreArray(Join({{PatchEnter}, NothingFlushed, CacheLogs("BootMode"), {StaysInBatch}})));
}

// The reload brings the cache back to what the BMC holds.
TEST_F(ChangeRoad, FailedForcedFlushIsFollowedByAReload)
{
    StartRelatedBatch();
    TellPatch(18, {{10, "Wake is locked", "Wake"}});
    TellPatch(0);
    world.Answers.erase({"GET", SettingsUrl});
    world.Tell("GET", SettingsUrl, R"({"Attributes":{"Cores":12}})");
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(Patch("\"Wake\":false"), Get(SettingsUrl)));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("UpdateSettingValue", "PreparePatchContext BootMode=Legacy 8",
                                                "GetSettingProperties BootMode", "UpdateSettingValue"));
    EXPECT_THAT(world.UpdatedValues.back(),
                ElementsAre(Pair("BootMode", OptionalVar("Uefi")), Pair("Cores", OptionalVar(std::int64_t{12})),
                            Pair("Wake", OptionalVar(true))));
    EXPECT_THAT(
        world.Logs,
        ElementsAreArray(Join({{PatchEnter}, FlushLogs("\"Wake\":********"), CacheLogs("BootMode"), {StaysInBatch}})));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(10, "BIOS.Wake is locked", "BIOS.Wake")));
    Forget();
    EXPECT_THAT(m_Front->PatchSettingNewValue("Wake", "false", true), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(Patch("\"BootMode\":\"Legacy\"")));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
}

TEST_F(ChangeRoad, FailedForcedFlushReadsTheProtectedResourceAnew)
{
    StartRealUefi();
    TellProtected(R"({"Lock":"Off","Seal":"Off"})", R"({"Seal":"Off"})");
    Know("Seal").DependencyNames = {"Lock"};
    Accept("Lock", "\"On\"");
    Accept("Seal", "\"On\"");
    ASSERT_THAT(m_Front->PatchSettingNewValue("Lock", "On", true), IsBare(0));
    Forget();
    world.Fail("POST+errors", SetUrl, 28, "refused");
    EXPECT_THAT(m_Front->PatchSettingNewValue("Seal", "On", true), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(SetProtected(" {\"Attributes\":{ \"Lock\" : \"On\" }} "), ReadProtected("{}"),
                                         ReadProtected("{\"Pending\":true}"), Get(SettingsUrl)));
    EXPECT_THAT(world.LogsAt(1), IsEmpty());
}

TEST_F(ChangeRoad, FailedReloadDoesNotStopTheChange)
{
    StartRealUefi();
    TellProtected(R"({"Lock":"Off","Seal":"Off"})", R"({"Seal":"Off"})");
    Know("Seal").DependencyNames = {"Lock"};
    Accept("Lock", "\"On\"");
    Accept("Seal", "\"On\"");
    ASSERT_THAT(m_Front->PatchSettingNewValue("Lock", "On", true), IsBare(0));
    Forget();
    world.UpdatedValues.clear();
    world.Fail("POST+errors", SetUrl, 28, "refused");
    world.Answers.erase({"POST", reading::ProtectedUrl});
    world.Fail("POST", reading::ProtectedUrl, 24, "connection lost");
    EXPECT_THAT(m_Front->PatchSettingNewValue("Seal", "On", true), IsBare(0));
    EXPECT_THAT(world.Calls,
                ElementsAre(SetProtected(" {\"Attributes\":{ \"Lock\" : \"On\" }} "), ReadProtected("{}")));
    EXPECT_THAT(world.LogsAt(1), ElementsAre("Query current value error: connection lost",
                                             "Failed in get current value map though: connection lost",
                                             "Failed in get current value map though: connection lost",
                                             "Failed to reload all values with error: connection lost"));
    EXPECT_EQ(world.UpdatedValues.size(), 1U);
    Forget();
    m_Front->FlushChanges();
    EXPECT_THAT(world.Calls, ElementsAre(SetProtected(" {\"Attributes\":{ \"Seal\" : \"On\" }} ")));
}

// What was sent to the busy BMC is dropped; the setting that forced it has opened the next
// batch without being queued, so that a second call queues it.
TEST_F(ChangeRoad, BusyBmcInTheMiddleOfABatchAnswersAtOnce)
{
    StartRelatedBatch();
    TellPatch(33);
    TellPatch(0);
    const LogLine busy = staging::Busy("of the BMC");
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsResult(33, "of the BMC", ""));
    EXPECT_THAT(world.Calls, ElementsAre(Patch("\"Wake\":false")));
    EXPECT_THAT(world.Logs, ElementsAreArray(Join({{PatchEnter}, FlushLogs("\"Wake\":********"), {busy, busy, busy}})));
    Forget();
    EXPECT_THAT(m_Front->FlushChanges(), IsBare(0));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsBare(0));
    EXPECT_THAT(world.Calls, testing::Contains(Patch("\"BootMode\":\"Legacy\"")));
}

} // namespace
