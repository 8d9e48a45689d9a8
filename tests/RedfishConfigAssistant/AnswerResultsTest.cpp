#include "AnswerResults.h"

#include <ostream>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "AnswerMessages.h"
#include "JsonParts.h"
#include "JsonText.h"
#include "Logging.h"
#include "SharedData.h"
#include "TestServer.h"

using namespace Tavrine;
using resttest::Fails;
using resttest::HasCode;

namespace
{

namespace json = boost::json;

HttpAnswer Answer(int status, const std::string& body, std::map<std::string, std::string> headers = {})
{
    return {status, std::move(headers), body};
}

AnsweredRequest Patch() { return {HttpVerb::Patch, true, "/settings", "bmc:443", true}; }

RedfishConfigResult JudgePatch(int status, const std::string& body, std::vector<RedfishConfigResult>& errors)
{
    return JudgeAnswer(Patch(), Answer(status, body), errors);
}

/// These two where the entries are of no interest.
RedfishConfigResult Judge(const AnsweredRequest& request, const HttpAnswer& answer)
{
    std::vector<RedfishConfigResult> errors;
    return JudgeAnswer(request, answer, errors);
}

RedfishConfigResult JudgePatch(int status, const std::string& body) { return Judge(Patch(), Answer(status, body)); }

/// "Name=code" of each entry.
std::vector<std::string> Listed(std::vector<RedfishConfigResult> errors)
{
    std::vector<std::string> listed;
    for (RedfishConfigResult& error : errors)
    {
        listed.push_back(error.ErrorSetting() + "=" + std::to_string(error.ErrorCode()));
    }
    return listed;
}

std::string ListOf(const std::string& messages)
{
    return R"({"error":{"code":"Base.1.8.GeneralError","message":"A general error has occurred.",)"
           R"("@Message.ExtendedInfo":[)" +
           messages + "]}}";
}

/// Messages of one kind, each about a setting of its own.
std::string ManyOf(const std::string& id, std::size_t count)
{
    std::string many;
    for (std::size_t i = 0; i < count; ++i)
    {
        const std::string number = std::to_string(i);
        many += (i == 0 ? R"({"MessageId":")" : R"(,{"MessageId":")") + id + R"(","Message":"No )" + number +
                R"(","RelatedProperties":["S)" + number + R"("]})";
    }
    return many;
}

} // namespace

TEST(AnswerResults, ShapesSeenInTheField)
{
    const auto file = testdata::SharedData() / "answers" / "answers.json";
    if (!std::filesystem::exists(file))
    {
        GTEST_SKIP() << "no answers of real machines beside this checkout";
    }
    const json::value document = json::parse(testdata::ReadFile(file));
    ASSERT_GE(document.as_array().size(), 20U);
    for (const json::value& entry : document.as_array())
    {
        SCOPED_TRACE(entry.at("id").as_string().c_str());
        const json::value& body = entry.at("body");
        HttpAnswer answer = Answer(static_cast<int>(entry.at("status").as_int64()),
                                   body.is_string() ? std::string(body.as_string()) : json::serialize(body));
        if (const json::value* const headers = entry.as_object().if_contains("headers"))
        {
            for (const auto& header : headers->as_object())
            {
                answer.Headers[header.key() == "Retry-After" ? "retry-after" : std::string(header.key())] =
                    header.value().as_string();
            }
        }
        std::vector<std::string> expected;
        for (const json::value& setting : entry.at("settings").as_array())
        {
            expected.push_back(std::string(setting.at("setting").as_string()) + "=" +
                               std::to_string(setting.at("code").as_int64()));
        }
        std::vector<RedfishConfigResult> errors;
        EXPECT_THAT(JudgeAnswer(Patch(), answer, errors), HasCode(static_cast<int>(entry.at("code").as_int64())));
        EXPECT_EQ(Listed(errors), expected);
    }
}

TEST(AnswerResults, CodesByVerbAndStatus)
{
    struct Row
    {
        HttpVerb Verb;
        bool WithErrors;
        int Status;
        int Code;
    };
    constexpr Row rows[] = {
        {HttpVerb::Get, false, 200, 0},     {HttpVerb::Get, false, 204, 0},    {HttpVerb::Get, false, 302, 26},
        {HttpVerb::Get, false, 400, 26},    {HttpVerb::Get, false, 404, 26},   {HttpVerb::Get, false, 401, 24},
        {HttpVerb::Get, false, 403, 24},    {HttpVerb::Get, false, 405, 26},   {HttpVerb::Get, false, 500, 32},
        {HttpVerb::Get, false, 501, 32},    {HttpVerb::Get, false, 503, 33},   {HttpVerb::Patch, true, 200, 0},
        {HttpVerb::Patch, true, 202, 0},    {HttpVerb::Patch, true, 204, 0},   {HttpVerb::Patch, true, 307, 18},
        {HttpVerb::Patch, true, 400, 18},   {HttpVerb::Patch, true, 401, 24},  {HttpVerb::Patch, true, 405, 18},
        {HttpVerb::Patch, true, 502, 32},   {HttpVerb::Patch, true, 503, 33},  {HttpVerb::Post, true, 400, 18},
        {HttpVerb::Post, false, 400, 28},   {HttpVerb::Post, false, 404, 28},  {HttpVerb::Post, false, 201, 0},
        {HttpVerb::Post, false, 500, 32},   {HttpVerb::Delete, false, 200, 0}, {HttpVerb::Delete, false, 404, 28},
        {HttpVerb::Delete, false, 403, 24}, {HttpVerb::Get, false, 599, 32},   {HttpVerb::Get, false, 304, 26},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(std::string(VerbName(row.Verb)) + " " + std::to_string(row.Status));
        RedfishConfigResult result = Judge({row.Verb, row.WithErrors, "/x", "bmc:443", true}, Answer(row.Status, ""));
        EXPECT_THAT(result, HasCode(row.Code));
        EXPECT_EQ(result.ErrorMsg().empty(), row.Code == 0);
    }
}

TEST(AnswerResults, RefusalNamesRequestPlaceAndStatusAndEndsInTheBmcsWords)
{
    std::vector<RedfishConfigResult> errors;
    RedfishConfigResult result =
        JudgePatch(400,
                   ListOf(R"({"MessageId":"Base.1.8.PropertyUnknown","Message":"First.","RelatedProperties":["#/A"]},)"
                          R"({"MessageId":"X.1.Y","Message":"Second."})"),
                   errors);
    EXPECT_EQ(result.ErrorMsg(), "PATCH /settings was refused by bmc:443 (400 Bad Request): First. Second.");
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_EQ(errors[0].ErrorMsg(), "First.");
}

TEST(AnswerResults, MessageWithoutTextIsFilledFromTheTable)
{
    std::vector<RedfishConfigResult> errors;
    RedfishConfigResult result = JudgePatch(
        400, ListOf(R"({"MessageId":"Base.1.12.PropertyValueTypeError","MessageArgs":["\"Lit\"","NumaGroupSize"]})"),
        errors);
    ASSERT_EQ(Listed(errors), std::vector<std::string>{"NumaGroupSize=10"});
    EXPECT_EQ(errors[0].ErrorMsg(),
              "The value 'Lit' for the property NumaGroupSize is not a type that the property can accept.");
    EXPECT_TRUE(result.ErrorMsg().ends_with(errors[0].ErrorMsg()));
}

TEST(AnswerResults, MessageWithoutTextAndUnknownKeyShowsItsId)
{
    EXPECT_THAT(JudgePatch(400, ListOf(R"({"MessageId":"X.2.3.SYS409"})")), Fails(18, "X.2.3.SYS409"));
}

TEST(AnswerResults, OneFaultToldTwiceIsListedOnce)
{
    std::vector<RedfishConfigResult> errors;
    JudgePatch(400,
               R"({"error":{"@Message.ExtendedInfo":[
                   {"MessageId":"Base.1.8.PropertyValueNotInList","Message":"Not in list.","RelatedProperties":["#/Attributes/A"]},
                   {"MessageId":"Base.1.8.PropertyValueNotInList","Message":"Not in list.","RelatedProperties":["#/Attributes/A"]}]},
                   "Attributes":{"A@Message.ExtendedInfo":[{"MessageId":"Base.1.8.PropertyValueNotInList","Message":"In other words."}]}})",
               errors);
    EXPECT_EQ(Listed(errors), std::vector<std::string>{"A=10"});
}

TEST(AnswerResults, SuccessBesideAFaultDoesNotHideIt)
{
    std::vector<RedfishConfigResult> errors;
    EXPECT_THAT(JudgePatch(200,
                           ListOf(R"({"MessageId":"Base.1.8.Success"},)"
                                  R"({"MessageId":"Base.1.8.PropertyNotWritable","MessageArgs":["Mode"]})"),
                           errors),
                HasCode(18));
    EXPECT_EQ(Listed(errors), std::vector<std::string>{"Mode=18"});
}

TEST(AnswerResults, NotesAreNoFaults)
{
    for (const char* message :
         {R"({"MessageId":"Base.1.8.PropertyValueModified","MessageArgs":["A","3"],"Severity":"Warning"})",
          R"({"MessageId":"OEM.1.0.Unheard","Message":"Fine.","Severity":"OK"})",
          R"({"MessageId":"OEM.1.0.Unheard","Message":"Hm.","Severity":"Warning"})"})
    {
        EXPECT_THAT(JudgePatch(200, ListOf(message)), HasCode(0)) << message;
    }
    EXPECT_THAT(JudgePatch(200, ListOf(R"({"MessageId":"OEM.1.0.Unheard","Message":"Bad.","Severity":"Critical"})")),
                Fails(18, "Bad."));
}

TEST(AnswerResults, ResetNeededIsToldForChangesAlone)
{
    const std::string body = ListOf(R"({"MessageId":"Base.1.18.ResetRequired"})");
    EXPECT_THAT(JudgePatch(200, body), HasCode(1));
    EXPECT_THAT(Judge({HttpVerb::Post, false, "/x", "bmc:443", true}, Answer(200, body)), HasCode(1));
    EXPECT_THAT(Judge({HttpVerb::Get, false, "/x", "bmc:443", true}, Answer(200, body)), HasCode(0));
}

TEST(AnswerResults, BusyIsToldByStatusOrMessage)
{
    for (const char* key : {"ServiceTemporarilyUnavailable", "ServiceShuttingDown", "ServiceStarting"})
    {
        const std::string body = ListOf(R"({"MessageId":"Base.1.8.)" + std::string(key) + R"("})");
        for (const int status : {200, 400, 404, 500})
        {
            EXPECT_THAT(JudgePatch(status, body), HasCode(33)) << key << " " << status;
        }
    }
    EXPECT_THAT(JudgePatch(500, ListOf(R"({"MessageId":"Base.1.8.ServiceInUnknownState"})")), HasCode(32));
    EXPECT_THAT(Judge(Patch(), Answer(503, "", {{"retry-after", "30"}})), Fails(33, "after 30 s"));
}

TEST(AnswerResults, LoginFailuresNameTheCause)
{
    EXPECT_THAT(JudgePatch(401, ""), Fails(24, "bmc:443: it refuses the user name or the password"));
    EXPECT_THAT(Judge({HttpVerb::Get, false, "/x", "bmc:443", false}, Answer(401, "")),
                Fails(24, "bmc:443: it asks for a user name and a password"));
    EXPECT_THAT(JudgePatch(403, ""), Fails(24, "has not the privilege for PATCH /settings"));
}

TEST(AnswerResults, NamesComeFromPropertiesThenAnnotationThenArguments)
{
    struct Row
    {
        std::string Body;
        std::string Listed;
    };
    const Row rows[] = {
        {ListOf(
             R"({"MessageId":"B.PropertyUnknown","MessageArgs":["Argument"],"RelatedProperties":["#/Attributes/Related"]})"),
         "Related=9"},
        {ListOf(R"({"MessageId":"B.PropertyUnknown","MessageArgs":["Argument"],"RelatedProperties":[]})"),
         "Argument=9"},
        {ListOf(R"({"MessageId":"B.PropertyUnknown","MessageArgs":["Argument"],"RelatedProperties":["#/Attributes"]})"),
         "Argument=9"},
        {R"({"A@Message.ExtendedInfo":[{"MessageId":"B.PropertyUnknown","MessageArgs":["Argument"]}]})", "A=9"},
        {R"({"error":{"Mode@Message.ExtendedInfo":[{"MessageId":"B:PropertyNotWritable"}]}})", "Mode=18"},
        {ListOf(R"({"MessageId":"B.ActionParameterUnknown","MessageArgs":["Set","Parameter"]})"), "Parameter=9"},
    };
    for (const Row& row : rows)
    {
        std::vector<RedfishConfigResult> errors;
        JudgePatch(400, row.Body, errors);
        EXPECT_EQ(Listed(errors), std::vector<std::string>{row.Listed}) << row.Body;
    }
}

TEST(AnswerResults, BodiesOfWrongShapeAreHarmless)
{
    for (
        const char* body :
        {"", "nonsense", "[]", "null", "7", "\"text\"", R"({"error":7})", R"({"error":[]})", R"({"error":{}})",
         R"({"error":{"@Message.ExtendedInfo":7}})", R"({"error":{"@Message.ExtendedInfo":[7,null,[]]}})",
         R"({"error":{"@Message.ExtendedInfo":[{"MessageId":7,"Message":{},"MessageArgs":{},"RelatedProperties":7}]}})",
         R"({"error":{"@Message.ExtendedInfo":[{"MessageArgs":[null,7,{}],"RelatedProperties":[null,7,{}]}]}})",
         R"({"error":{"message":{"value":7},"code":[]}})", R"({"Attributes":7,"Messages":{}})"})
    {
        std::vector<RedfishConfigResult> errors;
        EXPECT_THAT(JudgePatch(400, body, errors), HasCode(18)) << body;
        EXPECT_THAT(JudgePatch(200, body, errors), HasCode(0)) << body;
        EXPECT_EQ(Listed(errors), std::vector<std::string>()) << body;
    }
}

TEST(AnswerResults, AnErrorWithoutListInsideA200IsAFault)
{
    EXPECT_THAT(JudgePatch(200, R"({"error":{"code":"1","message":"It failed."}})"), Fails(18, "It failed."));
    EXPECT_THAT(JudgePatch(200, R"({"error":{"code":"Base.1.0.Success","message":"Done."}})"), HasCode(0));
    EXPECT_THAT(JudgePatch(200, R"({"error":{"code":"X.0.10.ExtendedInfo","message":"See the list."}})"), HasCode(0));
}

TEST(AnswerResults, FloodsOfMessagesAreCut)
{
    for (const std::size_t count : {500U, 501U, 2000U})
    {
        const CapturingLogSink log(1);
        std::vector<RedfishConfigResult> errors;
        RedfishConfigResult result = JudgePatch(400, ListOf(ManyOf("B.PropertyUnknown", count)), errors);
        EXPECT_THAT(result, HasCode(18));
        EXPECT_EQ(errors.size(), 500U);
        EXPECT_LT(result.ErrorMsg().size(), 4200U);
        EXPECT_EQ(log.Records().size(), count == 500U ? 0U : 1U) << count;
    }
}

TEST(AnswerResults, WhatIsNoFaultTakesNoPlaceOfOne)
{
    for (const char* harmless : {"B.Success", "B.PropertyValueModified", "B.ResetRequired", "Oem.1.0.Unheard"})
    {
        std::vector<RedfishConfigResult> errors;
        const std::string refusal = R"(,{"MessageId":"B.PropertyNotWritable","MessageArgs":["Mode"]})";
        EXPECT_THAT(JudgePatch(200, ListOf(ManyOf(harmless, 552) + refusal), errors), HasCode(18)) << harmless;
        EXPECT_EQ(Listed(errors), std::vector<std::string>{"Mode=18"}) << harmless;
    }
    EXPECT_THAT(JudgePatch(200, ListOf(ManyOf("B.Success", 552) + R"(,{"MessageId":"B.ResetRequired"})")), HasCode(1));
}

TEST(AnswerResults, AFaultIsNoDuplicateOfAHarmlessMessage)
{
    std::vector<RedfishConfigResult> errors;
    EXPECT_THAT(JudgePatch(200,
                           ListOf(R"({"MessageId":"Oem.1.Odd","Severity":"OK","RelatedProperties":["A"]},)"
                                  R"({"MessageId":"Oem.1.Odd","Severity":"Critical","RelatedProperties":["A"]})"),
                           errors),
                HasCode(18));
    EXPECT_EQ(Listed(errors), std::vector<std::string>{"A=18"});
}

TEST(AnswerResults, MessagesOfALargeAnswerAreReadWhereTheyStand)
{
    const CapturingLogSink log(1);
    const std::string filler = R"("Filler":")" + std::string(20'000'000, 'x') + "\"";
    const std::string refusal = R"([{"MessageId":"B.PropertyNotWritable","MessageArgs":["Mode"]}])";
    for (const std::string& member :
         {R"("error":{"@Message.ExtendedInfo":)" + refusal + "}", R"("@Message.ExtendedInfo":)" + refusal,
          R"("Attributes":{"Mode@Message.ExtendedInfo":)" + refusal + "}", R"("Messages":)" + refusal,
          std::string(R"("error":{"code":"1","message":"It failed."})")})
    {
        EXPECT_THAT(JudgePatch(200, "{" + filler + "," + member + "}"), HasCode(18)) << member;
        EXPECT_THAT(JudgePatch(200, "{" + member + "," + filler + "}"), HasCode(18)) << member;
    }
    for (const std::string member :
         {R"("Content":"\"Messages\": and X@Message.ExtendedInfo\": of a file")", R"("error":"none")",
          R"("X":{"error":{}})", R"("X":{"Messages":[{"MessageId":"B.PropertyNotWritable"}]})",
          R"("Attributes":{"X":{"@Message.ExtendedInfo":[{"MessageId":"B.PropertyNotWritable"}]}})",
          R"("@Message.ExtendedInfo":[{"MessageId":"Base.1.8.Success"}])"})
    {
        EXPECT_THAT(JudgePatch(200, "{" + filler + "," + member + "}"), HasCode(0)) << member;
    }
    EXPECT_TRUE(log.Records().empty());
}

TEST(AnswerResults, AnAnswerWithMoreMessagesThanAreReadIsNoSuccess)
{
    for (const bool cut : {false, true})
    {
        const CapturingLogSink log(1);
        const std::string body =
            R"({"@Message.ExtendedInfo":[{"MessageId":"B.Success"},{"MessageId":"B.Success","Oem":")" +
            std::string(MaxPartsBytes - (cut ? 0 : 1000), 'x') + R"("}]})";
        EXPECT_THAT(JudgePatch(200, body), cut ? Fails(27, "PATCH /settings") : Fails(0, ""));
        EXPECT_EQ(log.Records().size(), cut ? 1U : 0U);
        EXPECT_THAT(JudgePatch(400, body), HasCode(18));
        EXPECT_THAT(JudgePatch(503, body), HasCode(33));
    }
}

TEST(AnswerResults, AnAnswerThatIsNoWholeObjectIsNoSuccess)
{
    const std::string fault = R"({"error":{"@Message.ExtendedInfo":[{"MessageId":"B.PropertyNotWritable"}]})";
    const std::vector<std::string> tails = {
        "",
        R"(,"Oem":1e400})",
        ",\"Oem\":\"\xff\"}",
        "} and more",
        R"(,"Oem":)" + std::string(MaxJsonDepth, '[') + std::string(MaxJsonDepth, ']') + "}",
    };
    for (const std::string& tail : tails)
    {
        EXPECT_THAT(JudgePatch(200, " " + fault + tail),
                    Fails(27, tail.ends_with("]}")              ? "is nested deeper"
                              : tail.find("1e400") != tail.npos ? "is unusable: a number is too large"
                                                                : "is no JSON"))
            << tail;
        EXPECT_THAT(JudgePatch(400, fault + tail), HasCode(18)) << tail;
    }
    EXPECT_THAT(JudgePatch(200, "\xEF\xBB\xBF" + fault + "}"), Fails(27, "is no JSON"));
    for (const std::string body : {"OK", "<html>{</html>", "[1", " ", "\"{"})
    {
        EXPECT_THAT(JudgePatch(200, body), HasCode(0)) << body;
    }
}

TEST(AnswerResults, MessagesInFrontOfThoseThatAreTooLargeAreRead)
{
    const MessageList list =
        ReadMessages(R"({"@Message.ExtendedInfo":[{"MessageId":"B.PropertyUnknown"}],"Messages":[")" +
                         std::string(MaxPartsBytes, 'x') + R"(",{"MessageId":"B.PropertyUnknown"}]})",
                     true);
    EXPECT_EQ(list.Messages.size(), 1U);
    EXPECT_EQ(list.Unread, "too large to be read whole");
}

TEST(AnswerResults, ControlCharactersOfTheBmcDoNotReachAMessage)
{
    RedfishConfigResult result = JudgePatch(400, ListOf(R"({"MessageId":"X","Message":"a\nb\u001b[2Jc"})"));
    EXPECT_TRUE(result.ErrorMsg().ends_with("a b [2Jc")) << result.ErrorMsg();
}

TEST(AnswerResults, SecretsAreBlottedOutOfTheBmcsWordsAlone)
{
    std::vector<RedfishConfigResult> errors;
    AnsweredRequest request = Patch();
    request.Secrets = {"password", "abc", "refused", ""};
    RedfishConfigResult result = JudgeAnswer(
        request, Answer(400, ListOf(R"({"MessageId":"X","Message":"passwordpassword ab","RelatedProperties":["A"]})")),
        errors);
    EXPECT_EQ(result.ErrorMsg(), "PATCH /settings was refused by bmc:443 (400 Bad Request): **************** ab");
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_EQ(errors[0].ErrorMsg(), "**************** ab");
}

TEST(AnswerResults, WordsThatHoldAShortSecretAreLeftOut)
{
    for (const std::string_view secret : {"abc", "b", "x"})
    {
        std::vector<RedfishConfigResult> errors;
        AnsweredRequest request = Patch();
        request.Secrets = {secret};
        RedfishConfigResult result = JudgeAnswer(
            request, Answer(400, ListOf(R"({"MessageId":"X","Message":"No abc.","RelatedProperties":["A"]})")), errors);
        const std::string words = secret == "x" ? "No abc." : "********";
        EXPECT_EQ(result.ErrorMsg(), "PATCH /settings was refused by bmc:443 (400 Bad Request): " + words);
        ASSERT_EQ(errors.size(), 1U);
        EXPECT_EQ(errors[0].ErrorMsg(), words);
    }
}

TEST(AnswerResults, TheOrderOfMessagesDoesNotDecideWhichAreOne)
{
    // Two that came without words, and one whose words are what stands in for them.
    const std::string bare = R"({"MessageId":"Oem.1.Odd","MessageArgs":["1"]},)"
                             R"({"MessageId":"Oem.1.Odd","MessageArgs":["2"]})";
    const std::string words = R"({"MessageId":"Oem.1.Odd","Message":"Oem.1.Odd"})";
    EXPECT_EQ(ReadMessages(ListOf(bare + "," + words), true).Messages.size(), 3U);
    EXPECT_EQ(ReadMessages(ListOf(words + "," + bare), true).Messages.size(), 3U);
}
