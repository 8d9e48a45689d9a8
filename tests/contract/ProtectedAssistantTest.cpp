#include "BiosProtectedSettingAssistant.h"

#include <type_traits>

#include "AssistantWorld.h"
#include "BiosProtectedSettingProc.h"
#include "RedfishConfigAssistant.h"
#include "TemporaryFolder.h"

using namespace assistants;
using namespace Tavrine;
using doubles::LogLine;
using doubles::RestCall;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace
{

const std::string ReadAction = "/redfish/v1/Systems/1/Bios/Actions/Oem/ZorvanBios.GetProtectedAttributes";
const std::string WriteAction = "/redfish/v1/Systems/1/Bios/Actions/Oem/ZorvanBios.SetProtectedAttributes";

const LogLine EnterPending{4, "Entering  Tavrine::BiosProtectedSettingAssistant::QueryPendingValue"};
const LogLine ExitPending{4, "Exiting  Tavrine::BiosProtectedSettingAssistant::QueryPendingValue"};
const LogLine EnterFlush{4, "Entering  Tavrine::BiosProtectedSettingAssistant::FlushChanges"};
const LogLine ExitFlush{4, "Exiting  Tavrine::BiosProtectedSettingAssistant::FlushChanges"};
const LogLine NotParsed{1, "Failed to get the current values."};

RestCall Post(const std::string& body)
{
    return {.Verb = "POST", .Url = ReadAction, .Body = body, .Flag = false, .Timeout = 60, .Headers = {}};
}

const RestCall ReadEffective = Post("{}");
const RestCall ReadPending = Post("{\"Pending\":true}");

RestCall Write(const std::string& body)
{
    return {.Verb = "POST+errors", .Url = WriteAction, .Body = body, .Flag = true, .Timeout = 60, .Headers = {}};
}

LogLine Sent(const std::string& body) { return {4, "send patch data: " + body + " to: " + WriteAction}; }

class ProtectedAssistant : public AssistantTest
{
  protected:
    void TellValues(const std::string& attributes)
    {
        world.Tell("POST", ReadAction, "{\"Attributes\":" + attributes + "}");
    }

    BiosProtectedSettingAssistant m_Assistant{m_Connection};
    SettingValueMap m_Values{{"Before", Text("caller")}};
};

const SettingValueMap CallersOwn{{"Before", Text("caller")}};

static_assert(!std::is_base_of_v<RedfishConfigAssistant, BiosProtectedSettingAssistant>);

TEST_F(ProtectedAssistant, IsAClientOfItsOwnAndKnowsItsActions)
{
    EXPECT_THAT(world.Clients, ElementsAre(Pair("bmc1", 6)));
    EXPECT_EQ(ProtectedAttributesGetURL, ReadAction);
    EXPECT_EQ(ProtectedAttributesSetURL, WriteAction);
    const auto* start = static_cast<const void*>(&m_Assistant);
    EXPECT_EQ(static_cast<const void*>(static_cast<BiosBasicSettingAssistant*>(&m_Assistant)), start);
    EXPECT_NE(static_cast<const void*>(static_cast<BMCBaseAssistant*>(&m_Assistant)), start);
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(ProtectedAssistant, ValueResponseIsOfNoUse)
{
    TellValues("{\"A\":1}");
    m_Assistant.SetValueResponse("{\"Attributes\":{\"A\":9}}");
    EXPECT_THAT(m_Assistant.QueryEffectiveValue(m_Values), IsBare(0));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(1)}}));
    EXPECT_THAT(world.Calls, ElementsAre(ReadEffective));
}

TEST_F(ProtectedAssistant, ReadingTheResourceSucceedsWithoutTraffic)
{
    EXPECT_THAT(m_Assistant.QueryValueURLResponse(), IsBare(0));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

// ---- effective values

TEST_F(ProtectedAssistant, EffectiveValuesAreParsedIntoTheCallersMap)
{
    TellValues("{\"A\":1,\"B\":\"b\",\"C\":false,\"D\":null}");
    EXPECT_THAT(m_Assistant.QueryEffectiveValue(m_Values), IsBare(0));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(1)}, {"B", Text("b")}, {"C", Switch(false)}, {"D", NoValue()}}));
    EXPECT_THAT(m_Assistant.m_EffectiveValues, IsEmpty());
    EXPECT_THAT(world.Calls, ElementsAre(ReadEffective));
    EXPECT_THAT(world.Logs, IsEmpty());
}

class ProtectedReadFailure : public AssistantTest, public testing::WithParamInterface<int>
{
};

TEST_P(ProtectedReadFailure, IsHandedOnAndTheAnswerIsNotParsed)
{
    world.Tell("POST", ReadAction,
               {.Result = {GetParam(), "told", "X"}, .Body = "{\"Attributes\":{\"A\":1}}", .Errors = {}});
    BiosProtectedSettingAssistant assistant(m_Connection);
    SettingValueMap values = CallersOwn;
    EXPECT_THAT(assistant.QueryEffectiveValue(values), IsResult(GetParam(), "told", "X"));
    EXPECT_EQ(values, CallersOwn);
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{4, "Fail to get protected settings value"}));
    world.Logs.clear();
    EXPECT_THAT(assistant.QueryPendingValue(values), IsResult(GetParam(), "told", "X"));
    EXPECT_EQ(values, CallersOwn);
    EXPECT_THAT(world.Logs,
                ElementsAre(EnterPending, LogLine{1, "Failed to get the response info for current values."}));
    EXPECT_THAT(world.Calls, ElementsAre(ReadEffective, ReadPending));
}

INSTANTIATE_TEST_SUITE_P(Codes, ProtectedReadFailure, testing::Values(1, 24, 28, 33));

TEST_F(ProtectedAssistant, EffectiveAnswerThatCannotBeParsedGivesTheParsersResult)
{
    world.Tell("POST", ReadAction, "{}");
    EXPECT_THAT(m_Assistant.QueryEffectiveValue(m_Values), IsResult(27, "no attributes", ""));
    EXPECT_EQ(m_Values, CallersOwn);
    EXPECT_THAT(world.Logs, ElementsAre(NotParsed));
}

// ---- pending values

TEST_F(ProtectedAssistant, PendingValuesAreParsedIntoTheCallersMap)
{
    TellValues("{\"A\":2}");
    EXPECT_THAT(m_Assistant.QueryPendingValue(m_Values), IsBare(0));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(2)}}));
    EXPECT_THAT(m_Assistant.m_PendingValues, IsEmpty());
    EXPECT_THAT(world.Calls, ElementsAre(ReadPending));
    EXPECT_THAT(world.Logs, ElementsAre(EnterPending, ExitPending));
}

TEST_F(ProtectedAssistant, PendingAnswerThatCannotBeParsedGivesTheParsersResult)
{
    world.Tell("POST", ReadAction, "no json");
    EXPECT_THAT(m_Assistant.QueryPendingValue(m_Values), IsResult(27, "no attributes", ""));
    EXPECT_EQ(m_Values, CallersOwn);
    EXPECT_THAT(world.Logs, ElementsAre(EnterPending, NotParsed));
}

// ---- both, through the value store

TEST_F(ProtectedAssistant, CurrentValuesAndReloadReadEffectiveThenPending)
{
    TellValues("{\"A\":1,\"B\":1}");
    TellValues("{\"A\":2}");
    TellValues("{\"A\":3,\"B\":3}");
    TellValues("{\"B\":4}");
    EXPECT_THAT(m_Assistant.GetCurrentValuesMap(m_Values), IsBare(0));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(2)}, {"B", Number(1)}}));
    EXPECT_THAT(world.Calls, ElementsAre(ReadEffective, ReadPending));
    EXPECT_THAT(m_Assistant.ReloadAllSettingValues(m_Values), IsBare(0));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(3)}, {"B", Number(4)}}));
    EXPECT_THAT(world.Calls, ElementsAre(ReadEffective, ReadPending, ReadEffective, ReadPending));
}

TEST_F(ProtectedAssistant, FailedPendingReadFallsBackToEffectiveValues)
{
    TellValues("{\"A\":1}");
    world.Fail("POST", ReadAction, 33, "busy");
    EXPECT_THAT(m_Assistant.GetCurrentValuesMap(m_Values), IsBare(0));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(1)}}));
    EXPECT_THAT(world.Logs, ElementsAre(EnterPending, LogLine{1, "Failed to get the response info for current values."},
                                        LogLine{1, "Query pending value error, use effective value directly."}));
}

// ---- the flush

TEST_F(ProtectedAssistant, NothingStagedSendsNothing)
{
    EXPECT_THAT(m_Assistant.FlushChanges(), IsBare(0));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterFlush, LogLine{4, "Nothing need to do for flush changes."}));
}

struct WriteCase
{
    std::string Name;
    SettingStringMap Changes;
    std::string Body;
};

class ProtectedBody : public AssistantTest, public testing::WithParamInterface<WriteCase>
{
};

TEST_P(ProtectedBody, HoldsTheStagedTextsAndSoDoesTheLog)
{
    BiosProtectedSettingAssistant assistant(m_Connection);
    assistant.m_ChangedValues = GetParam().Changes;
    world.Tell("POST+errors", WriteAction, Remarked("{\"Attributes\":{\"A\":1}}"));
    EXPECT_THAT(assistant.FlushChanges(), IsResult(0, "remark", "Remarked"));
    EXPECT_THAT(world.Calls, ElementsAre(Write(GetParam().Body)));
    EXPECT_THAT(world.Logs, ElementsAre(EnterFlush, Sent(GetParam().Body), ExitFlush));
    EXPECT_THAT(assistant.m_ChangedValues, IsEmpty());
    EXPECT_THAT(assistant.m_Errors, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Bodies, ProtectedBody,
    testing::Values(WriteCase{"Number", {{"A", "7"}}, " {\"Attributes\":{ \"A\" : 7 }} "},
                    WriteCase{"Boolean", {{"A", "false"}}, " {\"Attributes\":{ \"A\" : false }} "},
                    WriteCase{"String", {{"Key", "\"secret\""}}, " {\"Attributes\":{ \"Key\" : \"secret\" }} "},
                    WriteCase{"NothingIsEscaped", {{"A\"", "\"a\"\\\""}}, " {\"Attributes\":{ \"A\"\" : \"a\"\\\" }} "},
                    WriteCase{"EmptyNameAndText", {{"", ""}, {"A", "1"}}, " {\"Attributes\":{ \"\" : ,\"A\" : 1 }} "},
                    WriteCase{"ByteOrderAndCaseCounts",
                              {{"b", "2"}, {"B", "3"}, {"a", "1"}},
                              " {\"Attributes\":{ \"B\" : 3,\"a\" : 1,\"b\" : 2 }} "}),
    [](const auto& instance) { return instance.param.Name; });

class ProtectedFlushAnswer : public AssistantTest, public testing::WithParamInterface<int>
{
};

TEST_P(ProtectedFlushAnswer, IsHandedOnAndLosesTheChanges)
{
    const int code = GetParam();
    BiosProtectedSettingAssistant assistant(m_Connection);
    assistant.m_ChangedValues = {{"A", "7"}};
    assistant.m_Errors = {{10, "former", "Z"}};
    assistant.m_EffectiveValues = {{"A", Number(1)}};
    assistant.m_PendingValues = {{"A", Number(2)}};
    assistant.m_CurrentValues = {{"A", Number(3)}};
    world.Tell("POST+errors", WriteAction,
               {.Result = {code, "told", "X"}, .Body = "answer", .Errors = {{9, "unknown", "B"}, {10, "bad", "A"}}});
    EXPECT_THAT(assistant.FlushChanges(), IsResult(code, "told", "X"));
    EXPECT_THAT(assistant.m_ChangedValues, IsEmpty());
    EXPECT_THAT(assistant.m_Errors,
                ElementsAre(IsResult(10, "former", "Z"), IsResult(9, "unknown", "B"), IsResult(10, "bad", "A")));
    EXPECT_EQ(assistant.m_EffectiveValues, (SettingValueMap{{"A", Number(1)}}));
    EXPECT_EQ(assistant.m_PendingValues, (SettingValueMap{{"A", Number(2)}}));
    EXPECT_EQ(assistant.m_CurrentValues, (SettingValueMap{{"A", Number(3)}}));

    std::vector<LogLine> logs{EnterFlush, Sent(" {\"Attributes\":{ \"A\" : 7 }} ")};
    if (code != 0 && code != 1)
    {
        logs.push_back({4, "Fail to post info " + WriteAction});
    }
    logs.push_back(ExitFlush);
    EXPECT_EQ(world.Logs, logs);
}

INSTANTIATE_TEST_SUITE_P(Codes, ProtectedFlushAnswer, testing::Values(0, 1, 2, 18, 24, 33, -1));

TEST_F(ProtectedAssistant, EachFlushSendsItsOwnChangesAndAddsItsErrors)
{
    world.Tell("POST+errors", WriteAction, {.Result = {18, "", ""}, .Body = "", .Errors = {{10, "bad", "A"}}});
    world.Tell("POST+errors", WriteAction, {.Result = {18, "", ""}, .Body = "", .Errors = {{10, "bad", "B"}}});
    for (const std::string name : {"A", "B"})
    {
        m_Assistant.m_ChangedValues[name] = "1";
        EXPECT_THAT(m_Assistant.FlushChanges(), IsBare(18));
    }
    EXPECT_THAT(m_Assistant.FlushChanges(), IsBare(0));
    EXPECT_THAT(world.Calls,
                ElementsAre(Write(" {\"Attributes\":{ \"A\" : 1 }} "), Write(" {\"Attributes\":{ \"B\" : 1 }} ")));
    EXPECT_THAT(m_Assistant.m_Errors, ElementsAre(IsResult(10, "bad", "A"), IsResult(10, "bad", "B")));
}

// ---- the proc

class ProtectedProc : public AssistantTest
{
  protected:
    BiosProtectedSettingProc m_Proc{m_Connection, assistants::EveryOption};
};

TEST_F(ProtectedProc, MakesItsAssistantAndCopiesTheOptions)
{
    ASSERT_NE(dynamic_cast<BiosProtectedSettingAssistant*>(m_Proc.m_Assistant.get()), nullptr);
    ExpectNew(m_Proc);
}

TEST_F(ProtectedProc, DebugFileHasNoEffect)
{
    const testdata::TemporaryFolder folder;
    const std::string path = folder.Write("debug.json", "{\"resource\":{\"Attributes\":{\"A\":9}}}");
    world.Tell("POST", ReadAction, "{\"Attributes\":{\"A\":1}}");
    m_Proc.SetDebugConfigFile(path);
    EXPECT_EQ(m_Proc.m_DebugConfigFile, path);
    m_Proc.SetDebugConfigFile("/no/such/file");
    EXPECT_EQ(m_Proc.m_DebugConfigFile, "/no/such/file");
    EXPECT_THAT(world.Logs, IsEmpty());
    SettingValueMap values;
    EXPECT_THAT(m_Proc.GetCurrentValuesMap(values), IsBare(0));
    EXPECT_EQ(values, (SettingValueMap{{"A", Number(1)}}));
    EXPECT_THAT(world.Calls, ElementsAre(ReadEffective, ReadPending));
}

TEST_F(ProtectedProc, WriteThatNeedsARebootIsAFailureToTheProcAlone)
{
    world.Tell("POST", ReadAction, "{\"Attributes\":{\"A\":\"x\"}}");
    world.Fail("POST+errors", WriteAction, 1, "reboot");
    EXPECT_THAT(m_Proc.PatchSettingNewValueWithOutCheck("A", "y", false), IsResult(1, "reboot", ""));
    EXPECT_THAT(world.Calls, ElementsAre(ReadEffective, Write(" {\"Attributes\":{ \"A\" : \"y\" }} ")));
    EXPECT_THAT(world.LogsAt(1), ElementsAre("Failed in patching data."));
    EXPECT_THAT(world.LogsAt(4), testing::Not(testing::Contains("Fail to post info " + WriteAction)));
}

} // namespace
