#include <iterator>

#include "AssistantWorld.h"
#include "BiosStandardSettingAssistant.h"

using namespace assistants;
using namespace Tavrine;
using doubles::BiosResource;
using doubles::LogLine;
using doubles::RestCall;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace
{

const LogLine EnterFlush{4, "Entering  Tavrine::BiosStandardSettingAssistant::FlushChanges"};
const LogLine ExitFlush{4, "Exiting  Tavrine::BiosStandardSettingAssistant::FlushChanges"};
const LogLine NoEtag{1, "Failed to get the odata id"};
const LogLine NoHeaders{1, "Failed to parse etag from value response."};
const LogLine NoPatchURL{4, "Failed to get the pending URL."};
const LogLine EnterPatchURL{3, "Enter BiosBasicSettingAssistant::QueryPatchURL()"};
const LogLine ExitPatchURL{3, "Exit BiosBasicSettingAssistant::QueryPatchURL()"};
const LogLine EnterResponse{4, "Enter RedfishRegistryAssistant::QueryValueURLResponse()"};
const LogLine ExitResponse{4, "Exit BiosStandardSettingAssistant::QueryValueURLResponse()"};
const LogLine NoResource{1, "Fail to get the resource."};
const LogLine NoResponse{1, "Failed to get the response info for current values."};

LogLine Masked(const std::string& pairs)
{
    return {4, "send patch data: {\"Attributes\":{" + pairs + "}} to: " + SettingsURL};
}

RestCall Patch(const std::string& body, const std::string& etag)
{
    return {.Verb = "PATCH",
            .Url = SettingsURL,
            .Body = body,
            .Flag = true,
            .Timeout = 0,
            .Headers = {{"Expect", ""}, {"If-None-Match", etag}}};
}

class StandardFlush : public AssistantTest
{
  protected:
    /// Everything that a flush needs is there already.
    void StoreResponse(const std::string& etag)
    {
        m_Assistant.SetValueResponse(BiosResource("{}", SettingsURL, etag));
        m_Assistant.m_PatchURL = SettingsURL;
    }

    BiosStandardSettingAssistant m_Assistant{m_Connection};
    const SettingStringMap m_Change{{"A", "7"}};
};

// ---- the headers of a change

struct EtagCase
{
    std::string Name;
    /// As JSON text.
    std::string Etag;
    std::string Sent;
};

class StandardEtag : public AssistantTest, public testing::WithParamInterface<EtagCase>
{
};

TEST_P(StandardEtag, IsCutToItsTokenAndSentAsIfNoneMatch)
{
    BiosStandardSettingAssistant assistant(m_Connection);
    assistant.SetValueResponse("{\"@odata.etag\":" + GetParam().Etag + "}");
    SettingStringMap headers;
    EXPECT_THAT(assistant.BuildPatchHeaders(headers), IsBare(0));
    EXPECT_EQ(headers, (SettingStringMap{{"If-None-Match", GetParam().Sent}, {"Expect", ""}}));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Etags, StandardEtag,
    testing::Values(EtagCase{"Strong", R"("\"12ab\"")", "12ab"}, EtagCase{"Weak", R"("W/\"12ab\"")", "12ab"},
                    EtagCase{"Unquoted", R"("12ab")", "12ab"}, EtagCase{"WeakUnquoted", R"("W/12ab")", "W/12ab"},
                    EtagCase{"Empty", R"("")", ""}, EtagCase{"EmptyToken", R"("W/\"\"")", ""},
                    EtagCase{"OneCharacter", R"("\"x\"")", "x"}, EtagCase{"NoSecondQuote", R"("W/\"12ab")", "12ab"},
                    EtagCase{"QuoteAtTheEnd", R"("12ab\"")", ""}, EtagCase{"QuoteAlone", R"("\"")", ""},
                    EtagCase{"BehindTheSecondQuote", R"("\"12\"ab\"")", "12"},
                    EtagCase{"BlanksStay", R"("\" 1 2 \"")", " 1 2 "}),
    [](const auto& instance) { return instance.param.Name; });

TEST_F(StandardFlush, HeadersAreAddedToThoseThatStand)
{
    StoreResponse("tag-1");
    SettingStringMap headers{{"Expect", "100-continue"}, {"If-None-Match", "old"}, {"Other", "stays"}};
    EXPECT_THAT(m_Assistant.BuildPatchHeaders(headers), IsBare(0));
    EXPECT_EQ(headers, (SettingStringMap{{"Expect", ""}, {"If-None-Match", "tag-1"}, {"Other", "stays"}}));
}

TEST_F(StandardFlush, HeadersFetchTheResponseIfThereIsNone)
{
    TellStandard("{}", "{}");
    m_Assistant.m_ValueURL = BiosURL;
    SettingStringMap headers;
    EXPECT_THAT(m_Assistant.BuildPatchHeaders(headers), IsBare(0));
    EXPECT_EQ(headers, (SettingStringMap{{"Expect", ""}, {"If-None-Match", "tag-1"}}));
    EXPECT_THAT(world.Calls, ElementsAre(Get(BiosURL)));
    EXPECT_THAT(world.Logs, ElementsAre(EnterResponse, ExitResponse));
}

TEST_F(StandardFlush, HeadersWithoutAResponseFail)
{
    m_Assistant.m_ValueURL = BiosURL;
    world.Fail("GET", BiosURL, 33, "busy");
    SettingStringMap headers;
    EXPECT_THAT(m_Assistant.BuildPatchHeaders(headers), IsResult(33, "busy", ""));
    EXPECT_THAT(headers, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterResponse, NoResource, NoResponse));
}

class StandardWithoutEtag : public AssistantTest, public testing::WithParamInterface<std::string>
{
};

TEST_P(StandardWithoutEtag, IsAFailedQuery)
{
    BiosStandardSettingAssistant assistant(m_Connection);
    assistant.SetValueResponse(GetParam());
    SettingStringMap headers;
    EXPECT_THAT(assistant.BuildPatchHeaders(headers), IsBare(26));
    EXPECT_THAT(headers, IsEmpty());
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(NoEtag));
}

INSTANTIATE_TEST_SUITE_P(Responses, StandardWithoutEtag,
                         testing::Values("null", "{}", "[]", "no json", "{\"@odata.etag\":null}",
                                         "{\"@odata.etag\":17}", "{\"@odata.id\":\"/x\"}", "{\"ETag\":\"x\"}",
                                         "{\"@Redfish.Settings\":{\"@odata.etag\":\"x\"}}", "{\"@odata.etag\":\"x\""));

// ---- the flush

TEST_F(StandardFlush, NothingStagedSendsNothingAndNeedsNoURL)
{
    EXPECT_THAT(m_Assistant.FlushChanges(), IsBare(0));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterFlush, LogLine{4, "Nothing need to do for flush changes."}));
}

TEST_F(StandardFlush, ChangeOfANewObjectFindsItsWayAndIsSent)
{
    TellStandard("{}", "{}");
    world.Tell("PATCH", SettingsURL, Remarked(""));
    m_Assistant.m_ChangedValues = m_Change;
    EXPECT_THAT(m_Assistant.FlushChanges(), IsResult(0, "remark", "Remarked"));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsURL), Get(BiosURL), Patch("{\"Attributes\":{\"A\":7}}", "tag-1")));
    EXPECT_THAT(world.Logs,
                ElementsAre(EnterFlush, EnterPatchURL, EnterResponse, LogLine{3, "Enter ComplementQueryValuesURL()"},
                            LogLine{4, "Systems member url: /redfish/v1/Systems/blade-7"}, ExitResponse, ExitPatchURL,
                            Masked("\"A\":********"), ExitFlush));
    EXPECT_THAT(m_Assistant.m_ChangedValues, IsEmpty());
    EXPECT_THAT(m_Assistant.m_Errors, IsEmpty());
}

struct BodyCase
{
    std::string Name;
    SettingStringMap Changes;
    std::string Pairs, MaskedPairs;
};

class StandardBody : public AssistantTest, public testing::WithParamInterface<BodyCase>
{
};

TEST_P(StandardBody, HoldsTheStagedTextsAndTheLogNone)
{
    BiosStandardSettingAssistant assistant(m_Connection);
    assistant.SetValueResponse(BiosResource("{}", SettingsURL, "tag-1"));
    assistant.m_PatchURL = SettingsURL;
    assistant.m_ChangedValues = GetParam().Changes;
    world.Tell("PATCH", SettingsURL, "");
    EXPECT_THAT(assistant.FlushChanges(), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(Patch("{\"Attributes\":{" + GetParam().Pairs + "}}", "tag-1")));
    EXPECT_THAT(world.Logs, ElementsAre(EnterFlush, Masked(GetParam().MaskedPairs), ExitFlush));
}

INSTANTIATE_TEST_SUITE_P(
    Bodies, StandardBody,
    testing::Values(BodyCase{"Number", {{"A", "7"}}, "\"A\":7", "\"A\":********"},
                    BodyCase{"Boolean", {{"A", "true"}}, "\"A\":true", "\"A\":********"},
                    BodyCase{"String", {{"A", "\"secret\""}}, "\"A\":\"secret\"", "\"A\":********"},
                    BodyCase{"NothingIsEscaped", {{"A\"", "\"a\"b\\\""}}, "\"A\"\":\"a\"b\\\"", "\"A\"\":********"},
                    BodyCase{"EmptyText", {{"A", ""}}, "\"A\":", "\"A\":********"},
                    BodyCase{"EmptyName", {{"", "1"}, {"A", "2"}}, "\"\":1,\"A\":2", "\"\":********,\"A\":********"},
                    BodyCase{"ByteOrderAndCaseCounts",
                             {{"b", "2"}, {"B", "3"}, {"a", "1"}, {"C", "\"x\""}},
                             "\"B\":3,\"C\":\"x\",\"a\":1,\"b\":2",
                             "\"B\":********,\"C\":********,\"a\":********,\"b\":********"}),
    [](const auto& instance) { return instance.param.Name; });

TEST_F(StandardFlush, EtagIsCutAndMayBeEmpty)
{
    for (const auto& [etag, sent] : {std::pair{"W/\\\"12ab\\\"", "12ab"}, std::pair{"\\\"\\\"", ""}})
    {
        world.Calls.clear();
        StoreResponse(etag);
        m_Assistant.m_ChangedValues = m_Change;
        world.Tell("PATCH", SettingsURL, "");
        EXPECT_THAT(m_Assistant.FlushChanges(), IsBare(0));
        EXPECT_THAT(world.Calls, ElementsAre(Patch("{\"Attributes\":{\"A\":7}}", sent)));
    }
}

TEST_F(StandardFlush, EveryFlushSendsTheSameEtagWithoutANewRead)
{
    TellStandard("{}", "{}");
    world.Tell("GET", BiosURL, BiosResource("{}", "/other", "tag-2"));
    world.Tell("PATCH", SettingsURL, "");
    for (const std::string text : {"1", "2"})
    {
        m_Assistant.m_ChangedValues = {{"A", text}};
        EXPECT_THAT(m_Assistant.FlushChanges(), IsBare(0));
    }
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsURL), Get(BiosURL), Patch("{\"Attributes\":{\"A\":1}}", "tag-1"),
                                         Patch("{\"Attributes\":{\"A\":2}}", "tag-1")));
}

class StandardFlushAnswer : public AssistantTest, public testing::WithParamInterface<int>
{
};

TEST_P(StandardFlushAnswer, IsHandedOnAndLosesTheChanges)
{
    BiosStandardSettingAssistant assistant(m_Connection);
    assistant.SetValueResponse(BiosResource("{}", SettingsURL, "tag-1"));
    assistant.m_PatchURL = SettingsURL;
    assistant.m_ChangedValues = {{"A", "7"}, {"B", "8"}};
    assistant.m_Errors = {{10, "former", "Z"}};
    assistant.m_EffectiveValues = {{"A", Number(1)}};
    assistant.m_PendingValues = {{"A", Number(2)}};
    assistant.m_CurrentValues = {{"A", Number(3)}};
    world.Tell("PATCH", SettingsURL,
               {.Result = {GetParam(), "told", "X"}, .Body = "", .Errors = {{9, "unknown", "B"}, {10, "bad", "A"}}});
    EXPECT_THAT(assistant.FlushChanges(), IsResult(GetParam(), "told", "X"));
    EXPECT_THAT(assistant.m_ChangedValues, IsEmpty());
    EXPECT_THAT(assistant.m_Errors,
                ElementsAre(IsResult(10, "former", "Z"), IsResult(9, "unknown", "B"), IsResult(10, "bad", "A")));
    EXPECT_EQ(assistant.m_EffectiveValues, (SettingValueMap{{"A", Number(1)}}));
    EXPECT_EQ(assistant.m_PendingValues, (SettingValueMap{{"A", Number(2)}}));
    EXPECT_EQ(assistant.m_CurrentValues, (SettingValueMap{{"A", Number(3)}}));
    EXPECT_THAT(world.Logs, ElementsAre(EnterFlush, Masked("\"A\":********,\"B\":********"), ExitFlush));
}

INSTANTIATE_TEST_SUITE_P(Codes, StandardFlushAnswer, testing::Values(0, 1, 18, 24, 33));

// ---- failures before anything is sent

TEST_F(StandardFlush, FailureBeforeThePatchKeepsTheChanges)
{
    struct Case
    {
        std::string Name, Response;
        int Code;
        std::string Message;
        std::vector<LogLine> Logs;
    };
    const std::vector<Case> cases{
        {"no settings object", BiosResource("{}", "", "tag-1"), 26, "", {EnterPatchURL, NoEtag, NoPatchURL}},
        {"empty settings URL",
         "{\"@Redfish.Settings\":{\"SettingsObject\":{\"@odata.id\":\"\"}}}",
         32,
         "BMC internal error.",
         {EnterPatchURL, {1, "Failed to get the patch URL."}, NoPatchURL}},
        {"no etag",
         BiosResource("{}", SettingsURL, ""),
         26,
         "",
         {EnterPatchURL, ExitPatchURL, Masked("\"A\":********"), NoEtag, NoHeaders}},
    };
    for (const Case& given : cases)
    {
        SCOPED_TRACE(given.Name);
        doubles::ResetWorld();
        BiosStandardSettingAssistant assistant(m_Connection);
        assistant.SetValueResponse(given.Response);
        assistant.m_ChangedValues = m_Change;
        EXPECT_THAT(assistant.FlushChanges(), IsResult(given.Code, given.Message, ""));
        EXPECT_EQ(assistant.m_ChangedValues, m_Change);
        EXPECT_THAT(assistant.m_Errors, IsEmpty());
        EXPECT_THAT(world.Calls, IsEmpty());
        std::vector<LogLine> logs{EnterFlush};
        std::copy(given.Logs.begin(), given.Logs.end(), std::back_inserter(logs));
        EXPECT_EQ(world.Logs, logs);
    }
}

TEST_F(StandardFlush, ResourceThatCannotBeReadKeepsTheChanges)
{
    struct Case
    {
        std::string Url;
        doubles::Answer Given;
        int Code;
        std::string Message;
    };
    const std::vector<Case> cases{
        {SystemsURL, {.Result = {24, "no connection", ""}, .Body = "", .Errors = {}}, 24, "no connection"},
        {SystemsURL, {.Body = Collection({}), .Errors = {}}, 26, ""},
        {BiosURL, {.Result = {33, "busy", ""}, .Body = "", .Errors = {}}, 33, "busy"},
        {BiosURL, {.Body = "", .Errors = {}}, 32, ""},
    };
    for (const Case& given : cases)
    {
        SCOPED_TRACE(given.Url + " " + std::to_string(given.Code));
        doubles::ResetWorld();
        world.Tell("GET", given.Url, given.Given);
        if (given.Url != SystemsURL)
        {
            TellSystems();
        }
        BiosStandardSettingAssistant assistant(m_Connection);
        assistant.m_ChangedValues = m_Change;
        EXPECT_THAT(assistant.FlushChanges(), IsResult(given.Code, given.Message, ""));
        EXPECT_EQ(assistant.m_ChangedValues, m_Change);
        ASSERT_FALSE(world.Calls.empty());
        ASSERT_GE(world.Logs.size(), 2U);
        EXPECT_EQ(world.Calls.back(), Get(given.Url));
        EXPECT_EQ(world.Logs.back(), NoPatchURL);
        EXPECT_EQ(*std::prev(world.Logs.end(), 2), NoResponse);
    }
}

TEST_F(StandardFlush, KnownURLWithoutAResponseFailsAtTheHeaders)
{
    m_Assistant.m_PatchURL = SettingsURL;
    m_Assistant.m_ValueURL = BiosURL;
    m_Assistant.m_ChangedValues = m_Change;
    world.Fail("GET", BiosURL, 33, "busy");
    EXPECT_THAT(m_Assistant.FlushChanges(), IsResult(33, "busy", ""));
    EXPECT_EQ(m_Assistant.m_ChangedValues, m_Change);
    EXPECT_THAT(world.Calls, ElementsAre(Get(BiosURL)));
    EXPECT_THAT(world.Logs,
                ElementsAre(EnterFlush, Masked("\"A\":********"), EnterResponse, NoResource, NoResponse, NoHeaders));
}

TEST_F(StandardFlush, ChangesThatSurvivedAreSentByTheNextFlush)
{
    m_Assistant.SetValueResponse(BiosResource("{}", SettingsURL, ""));
    m_Assistant.m_ChangedValues = m_Change;
    world.Tell("PATCH", SettingsURL, "");
    EXPECT_THAT(m_Assistant.FlushChanges(), IsBare(26));
    m_Assistant.SetValueResponse(BiosResource("{}", SettingsURL, "tag-2"));
    EXPECT_THAT(m_Assistant.FlushChanges(), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(Patch("{\"Attributes\":{\"A\":7}}", "tag-2")));
    EXPECT_THAT(m_Assistant.m_ChangedValues, IsEmpty());
}

} // namespace
