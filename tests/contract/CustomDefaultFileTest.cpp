// The custom default file, carried between the caller and two actions of the BMC.
#include "ReadingFixture.h"

using namespace reading;
using namespace Tavrine;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

const std::string ReadUrl = "/redfish/v1/Systems/1/Actions/Oem/ZorvanComputerSystem.DSReadFile";
const std::string WriteUrl = "/redfish/v1/Systems/1/Actions/Oem/ZorvanComputerSystem.DSWriteFile";
const std::string ReadBody = R"({"FileName":"custom_default","Volatile":false})";

std::string WriteBody(const std::string& escaped)
{
    return R"({"FileName":"custom_default","Volatile":false,"ClearWrite":true,"Content":")" + escaped +
           R"(","Create":true})";
}
RestCall Post(const std::string& url, const std::string& body)
{
    return {.Verb = "POST", .Url = url, .Body = body, .Flag = false, .Timeout = 60, .Headers = {}};
}
LogLine Prepared(const std::string& url, const std::string& body)
{
    return {4, "Prepare post: " + body + " to URL: " + url};
}

class CustomDefaultFile : public FrontClassTest
{
  protected:
    void Answer(const std::string& url, RedfishConfigResult result, const std::string& body)
    {
        world.Answers.clear();
        world.Tell("POST", url, {.Result = std::move(result), .Body = body, .Errors = {}});
    }
    /// Nothing was read, made or kept on the way.
    static void ExpectUntouched(const Front& front)
    {
        EXPECT_EQ(front.m_SettingManager, nullptr);
        EXPECT_EQ(front.m_Schema, "");
        EXPECT_THAT(front.m_ProcCreator->m_ProcMap, IsEmpty());
        EXPECT_THAT(front.m_ErrorList, ElementsAre(IsResult(18, "kept", "Boot")));
    }
    std::unique_ptr<Front> MakeWithError(int systemType)
    {
        auto front = Make(static_cast<ConfigurateSupportedSystemType>(systemType), {});
        front->m_ErrorList.emplace_back(18, "kept", "Boot");
        return front;
    }
};

const int SystemTypes[] = {0, 1, 4, 5, 6};

// --- read ---------------------------------------------------------------------------------

TEST_F(CustomDefaultFile, ReadGivesTheAnswerAsItStandsOnAnySystem)
{
    const std::string answer = "{\"Content\": \"a\\nb\" }\n";
    Answer(ReadUrl, {0, "remark", "s"}, answer);
    for (const int systemType : SystemTypes)
    {
        SCOPED_TRACE(systemType);
        const auto front = MakeWithError(systemType);
        world.Calls.clear();
        std::string content = "former text";
        EXPECT_THAT(front->ExportUEFICustomDefaultFile(content), IsResult(0, "remark", "s"));
        EXPECT_EQ(content, answer);
        EXPECT_THAT(world.Calls, ElementsAre(Post(ReadUrl, ReadBody)));
        EXPECT_THAT(world.Logs, ElementsAre(Prepared(ReadUrl, ReadBody)));
        ExpectUntouched(*front);
    }
}

TEST_F(CustomDefaultFile, EmptyAnswerEmptiesTheText)
{
    Answer(ReadUrl, {0, "", ""}, "");
    std::string content = "former text";
    EXPECT_THAT(MakeUefi()->ExportUEFICustomDefaultFile(content), IsBare(0));
    EXPECT_EQ(content, "");
}

TEST_F(CustomDefaultFile, FailedReadGivesTheErrorAnswer)
{
    const auto front = MakeWithError(5);
    // A success that wants a reset counts as a failure of the log line.
    for (const int code : {1, 24, 28, 33})
    {
        SCOPED_TRACE(code);
        world.Logs.clear();
        Answer(ReadUrl, {code, "refused", "s"}, R"({"error":"no file"})");
        std::string content = "former text";
        EXPECT_THAT(front->ExportUEFICustomDefaultFile(content), IsResult(code, "refused", "s"));
        EXPECT_EQ(content, R"({"error":"no file"})");
        EXPECT_THAT(world.Logs,
                    ElementsAre(Prepared(ReadUrl, ReadBody),
                                LogLine{1, R"(Failed to read custom_default file due to: {"error":"no file"})"}));
    }
    ExpectUntouched(*front);
}

TEST_F(CustomDefaultFile, EveryReadAsksTheBmcAnew)
{
    world.Tell("POST", ReadUrl, "first");
    world.Tell("POST", ReadUrl, "second");
    const auto front = MakeUefi();
    std::string content;
    EXPECT_THAT(front->ExportUEFICustomDefaultFile(content), IsBare(0));
    EXPECT_EQ(content, "first");
    EXPECT_THAT(front->ExportUEFICustomDefaultFile(content), IsBare(0));
    EXPECT_EQ(content, "second");
    EXPECT_THAT(world.Calls, ElementsAre(Post(ReadUrl, ReadBody), Post(ReadUrl, ReadBody)));
}

// --- write --------------------------------------------------------------------------------

TEST_F(CustomDefaultFile, WriteCarriesTheTextAsAJsonString)
{
    struct Text
    {
        std::string Content;
        std::string Escaped;
    };
    const std::vector<Text> texts = {
        {"plain", "plain"},
        {"", ""},
        {"say \"yes\"", R"(say \"yes\")"},
        {"one\ntwo\r\n\tthree", R"(one\ntwo\r\n\tthree)"},
        {R"({"Attributes":{"Boot":1}})", R"({\"Attributes\":{\"Boot\":1}})"},
        {"null", "null"},
        {R"(C:\new)", R"(C:\\new)"},
        {"https://a/b", "https://a/b"},
        {"größer €", "größer €"},
        {std::string("a\0\x01z", 4), R"(a\u0000\u0001z)"},
        {std::string(100000, 'x'), std::string(100000, 'x')},
    };
    Answer(WriteUrl, {0, "remark", "s"}, "ignored");
    const auto front = MakeWithError(5);
    for (const auto& [content, escaped] : texts)
    {
        SCOPED_TRACE(escaped.substr(0, 40));
        world.Calls.clear();
        world.Logs.clear();
        const std::string body = WriteBody(escaped);
        EXPECT_THAT(front->ImportUEFICustomDefaultFile(content), IsResult(0, "remark", "s"));
        EXPECT_THAT(world.Calls, ElementsAre(Post(WriteUrl, body)));
        EXPECT_THAT(world.Logs, ElementsAre(Prepared(WriteUrl, body)));
    }
    ExpectUntouched(*front);
}

TEST_F(CustomDefaultFile, WriteIsSentOnAnySystem)
{
    Answer(WriteUrl, {0, "", ""}, "");
    for (const int systemType : SystemTypes)
    {
        SCOPED_TRACE(systemType);
        const auto front = MakeWithError(systemType);
        world.Calls.clear();
        EXPECT_THAT(front->ImportUEFICustomDefaultFile("text"), IsBare(0));
        EXPECT_THAT(world.Calls, ElementsAre(Post(WriteUrl, WriteBody("text"))));
        ExpectUntouched(*front);
    }
}

TEST_F(CustomDefaultFile, FailedWriteIsHandedOn)
{
    const auto front = MakeWithError(5);
    const std::string body = WriteBody("text");
    for (const int code : {1, 24, 28, 33})
    {
        SCOPED_TRACE(code);
        world.Logs.clear();
        Answer(WriteUrl, {code, "refused", "s"}, R"({"error":"no room"})");
        EXPECT_THAT(front->ImportUEFICustomDefaultFile("text"), IsResult(code, "refused", "s"));
        EXPECT_THAT(world.Logs,
                    ElementsAre(Prepared(WriteUrl, body),
                                LogLine{4, R"(Failed to write custom_default file duo to: {"error":"no room"})"}));
    }
    ExpectUntouched(*front);
}

TEST_F(CustomDefaultFile, WriteDropsNoValueThatWasRead)
{
    TellStandard(R"({"Boot":"Uefi"})");
    Know("Boot");
    world.Tell("POST", WriteUrl, "");
    const auto front = MakeBios();
    front->m_Schema = Schema;
    SettingStringMap values;
    ASSERT_THAT(front->QuerySettingValue("Boot", values), IsBare(0));
    world.Calls.clear();
    EXPECT_THAT(front->ImportUEFICustomDefaultFile("text"), IsBare(0));
    EXPECT_THAT(front->QuerySettingValue("Boot", values), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(Post(WriteUrl, WriteBody("text"))));
}

// --- the assistant alone ------------------------------------------------------------------

TEST_F(CustomDefaultFile, AssistantOfTheFrontObjectDoesTheWork)
{
    world.Tell("POST", ReadUrl, "file");
    world.Tell("POST", WriteUrl, "");
    BiosSettingAssistant assistant(m_Connection, SystemTypeUefi);
    std::string content;
    EXPECT_THAT(assistant.ExportUEFICustomDefaultFile(content), IsBare(0));
    EXPECT_EQ(content, "file");
    EXPECT_THAT(assistant.ImportUEFICustomDefaultFile("text"), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(Post(ReadUrl, ReadBody), Post(WriteUrl, WriteBody("text"))));
    EXPECT_EQ(assistant.m_ValueURL, "");
}

} // namespace
