#include "BiosStandardSettingProc.h"

#include <boost/json/parse.hpp>

#include "AssistantWorld.h"
#include "BiosStandardSettingAssistant.h"
#include "JsonNodes.h"
#include "TemporaryFolder.h"

using namespace assistants;
using namespace Tavrine;
using doubles::BiosResource;
using doubles::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace
{

const LogLine NoFile{1, "The specified debug configfile doesn't exist."};
const LogLine NoNode{1, "Failed to get the schema from debug config file"};

class StandardProc : public AssistantTest
{
  protected:
    BiosStandardSettingAssistant& Assistant()
    {
        return dynamic_cast<BiosStandardSettingAssistant&>(*m_Proc.m_Assistant);
    }

    /// Gives a debug file of this content to the proc.
    void Load(const std::string& content) { m_Proc.SetDebugConfigFile(m_Folder.Write("debug.json", content)); }

    testdata::TemporaryFolder m_Folder;
    BiosStandardSettingProc m_Proc{m_Connection, assistants::EveryOption};
};

TEST_F(StandardProc, MakesItsAssistantAndCopiesTheOptions)
{
    ASSERT_NE(dynamic_cast<BiosStandardSettingAssistant*>(m_Proc.m_Assistant.get()), nullptr);
    ExpectNew(m_Proc);
}

TEST_F(StandardProc, FlushGoesToTheAssistantOfThisResource)
{
    Assistant().m_PatchURL = SettingsURL;
    Assistant().SetValueResponse(BiosResource("{}", SettingsURL, "tag-1"));
    m_Proc.StageChangedValue("A", "on", false);
    m_Proc.StageChangedValue("B", "5", true);
    world.Fail("PATCH", SettingsURL, 1, "reboot");
    EXPECT_THAT(m_Proc.FlushChanges(), IsResult(1, "reboot", ""));
    EXPECT_THAT(world.Calls, ElementsAre(doubles::RestCall{.Verb = "PATCH",
                                                           .Url = SettingsURL,
                                                           .Body = "{\"Attributes\":{\"A\":\"on\",\"B\":5}}",
                                                           .Flag = true,
                                                           .Timeout = 0,
                                                           .Headers = {{"If-None-Match", "tag-1"}, {"Expect", ""}}}));
}

// ---- the debug file

TEST_F(StandardProc, NodeResourceStandsInForTheBiosResource)
{
    Load("{ \"schema\" : 1, \"resource\" : { \"Attributes\" : { \"A\" : [ 1, \"x\", null, true ] } } }");
    EXPECT_EQ(m_Proc.m_DebugConfigFile, (m_Folder.Path() / "debug.json").string());
    EXPECT_EQ(Assistant().m_ValueResponse, "{\"Attributes\":{\"A\":[1,\"x\",null,true]}}");
    EXPECT_THAT(world.Logs, IsEmpty());
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(StandardProc, ResourceInForceSparesTheSystemsAndTheBiosResource)
{
    Load("{\"resource\":" + BiosResource("{\"A\":1}", SettingsURL, "W/\\\"9\\\"") + "}");
    world.Tell("GET", SettingsURL, "{\"Attributes\":{\"A\":2}}");
    world.Tell("PATCH", SettingsURL, "");
    SettingValueMap values;
    EXPECT_THAT(m_Proc.GetCurrentValuesMap(values), IsBare(0));
    EXPECT_EQ(values, (SettingValueMap{{"A", Number(2)}}));
    EXPECT_THAT(m_Proc.ReloadAllSettingValues(values), IsBare(0));
    m_Proc.StageChangedValue("A", "3", true);
    EXPECT_THAT(m_Proc.FlushChanges(), IsBare(0));
    EXPECT_THAT(world.Requests(), ElementsAre("GET " + SettingsURL, "GET " + SettingsURL, "PATCH " + SettingsURL));
    ASSERT_FALSE(world.Calls.empty());
    EXPECT_EQ(world.Calls.back().Headers, (SettingStringMap{{"If-None-Match", "9"}, {"Expect", ""}}));
}

TEST_F(StandardProc, EmptyPathIsStoredAndNothingElse)
{
    m_Proc.m_DebugConfigFile = "former";
    Assistant().SetValueResponse("kept");
    m_Proc.SetDebugConfigFile("");
    EXPECT_THAT(m_Proc.m_DebugConfigFile, IsEmpty());
    EXPECT_EQ(Assistant().m_ValueResponse, "kept");
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(StandardProc, MissingFileLeavesAJsonNull)
{
    const std::string path = (m_Folder.Path() / "absent.json").string();
    m_Proc.SetDebugConfigFile(path);
    EXPECT_EQ(m_Proc.m_DebugConfigFile, path);
    EXPECT_EQ(Assistant().m_ValueResponse, "null");
    EXPECT_THAT(world.Logs, ElementsAre(NoFile, NoNode));
}

TEST_F(StandardProc, FolderInPlaceOfAFileLeavesAJsonNull)
{
    EXPECT_NO_THROW(m_Proc.SetDebugConfigFile(m_Folder.Path().string()));
    EXPECT_EQ(Assistant().m_ValueResponse, "null");
    EXPECT_THAT(world.LogsAt(1), testing::Contains(NoNode.Text));
}

TEST_F(StandardProc, FileWithoutTheNodeLeavesAJsonNull)
{
    const std::string tooDeep = "{\"resource\":" + std::string(2000, '[') + std::string(2000, ']') + "}";
    for (const std::string& content :
         {std::string(), std::string("no json"), std::string("{\"resource\":{}"), std::string("{\"resource\":{}} {}"),
          std::string("{\"Resource\":{}}"), std::string("{\"schema\":{\"resource\":{}}}"), std::string("[]"),
          std::string("null"), std::string("{}"), tooDeep})
    {
        SCOPED_TRACE(content.substr(0, 40));
        world.Logs.clear();
        Assistant().SetValueResponse("former");
        Load(content);
        EXPECT_EQ(Assistant().m_ValueResponse, "null");
        EXPECT_THAT(world.Logs, ElementsAre(NoNode));
    }
}

TEST_F(StandardProc, NodeOfAnyKindIsTakenAsItIs)
{
    for (const auto& [node, text] : {std::pair{"null", "null"}, std::pair{"\"\"", "\"\""}, std::pair{" [ 1 ] ", "[1]"},
                                     std::pair{"17", "17"}, std::pair{"{}", "{}"}})
    {
        Load(std::string("{\"resource\":") + node + "}");
        EXPECT_EQ(Assistant().m_ValueResponse, text);
    }
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(StandardProc, UselessFileIsRefusedByEveryLaterReadWithoutARequest)
{
    Load("no json");
    world.Logs.clear();
    SettingValueMap values;
    EXPECT_THAT(Assistant().QueryEffectiveValue(values), IsResult(27, "no attributes", ""));
    EXPECT_THAT(Assistant().QueryPatchURL(), IsBare(26));
    SettingStringMap headers;
    EXPECT_THAT(Assistant().BuildPatchHeaders(headers), IsBare(26));
    EXPECT_THAT(world.LogsAt(1), ElementsAre("Failed to get the current values.", "Failed to get the odata id",
                                             "Failed to get the odata id"));
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(StandardProc, LaterFileReplacesTheFormerResource)
{
    Load("{\"resource\":{\"first\":1}}");
    Load("{\"resource\":{\"second\":2}}");
    EXPECT_EQ(Assistant().m_ValueResponse, "{\"second\":2}");
}

// ---- reading a node by its path

TEST_F(StandardProc, TokensOfAPathAreEscaped)
{
    const std::string document =
        "{\"a/b\":{\"c~d\":\"found\"},\"~1\":\"tilde\",\"a\":{\"b\":\"wrong\"},\"/\":\"slash\"}";
    for (const auto& [path, expected] : {std::pair{std::vector<std::string_view>{"a/b", "c~d"}, "found"},
                                         std::pair{std::vector<std::string_view>{"~1"}, "tilde"},
                                         std::pair{std::vector<std::string_view>{"/"}, "slash"}})
    {
        std::string text = "before";
        const bool read = path.size() == 2 ? ReadStringNode(document, {path[0], path[1]}, text)
                                           : ReadStringNode(document, {path[0]}, text);
        EXPECT_TRUE(read);
        EXPECT_EQ(text, expected);
        // The same from a document.
        const boost::json::value root = boost::json::parse(document);
        std::string ofRoot = "before";
        EXPECT_TRUE(path.size() == 2 ? ReadStringNode(root, {path[0], path[1]}, ofRoot)
                                     : ReadStringNode(root, {path[0]}, ofRoot));
        EXPECT_EQ(ofRoot, expected);
    }
}

TEST_F(StandardProc, NodeThatIsNoStringIsRefusedAndLeavesTheText)
{
    for (const std::string document : {"", "{", "null", "{\"x\":\"y\"}", "{\"key\":1}", "{\"key\":null}",
                                       "{\"key\":[\"y\"]}", "{\"key\":\"y\"} x", "[\"y\"]"})
    {
        std::string text = "before";
        EXPECT_FALSE(ReadStringNode(document, {"key"}, text)) << document;
        EXPECT_EQ(text, "before");
    }
}

/// What stands behind the text or around the node changes nothing, as long as it is JSON of no more than 32 levels.
TEST_F(StandardProc, NodeOfAWholeTextAlone)
{
    const auto nested = [](std::size_t levels)
    { return R"({"x":)" + std::string(levels, '[') + std::string(levels, ']') + R"(,"a":{"b":"text"}})"; };
    const std::string good = R"({"a":{"b":"text"}})";
    for (const std::string& whole : {good, good + "\n", good + " \t\r\n", " \n" + good, nested(31)})
    {
        std::string text;
        EXPECT_TRUE(ReadStringNode(whole, {"a", "b"}, text)) << whole;
        EXPECT_EQ(text, "text") << whole;
    }
    for (const std::string& broken : {good + "}", good + "\n1", good.substr(0, good.size() - 1), nested(32)})
    {
        std::string text = "before";
        EXPECT_FALSE(ReadStringNode(broken, {"a", "b"}, text)) << broken;
        EXPECT_EQ(text, "before") << broken;
    }
}

/// Whatever stands at the path and beside it, twice or nested, the text is the one that a document of it has.
TEST_F(StandardProc, NodeIsThatOfADocument)
{
    const std::vector<std::string> values = {
        "1",
        "18446744073709551615",
        "2.5",
        "true",
        "null",
        R"("text")",
        R"("\u00e4\"\n")",
        "[]",
        R"([{"b":"in an array"}])",
        "{}",
        R"({"b":"inner"})",
        R"({"b":1})",
        R"({"b":"inner","b":2})",
        R"({"b":{"b":"deep"}})",
        R"({"c":{"b":"aside"},"b":"after"})",
        R"({"b":"inner","c":["x",{"b":"aside"},"y"]})",
        R"({"\u0062":"escaped"})",
        R"({"b":")" + std::string(5000, 'x') + R"(\u00e4"})",
        R"({")" + std::string(5000, 'y') + R"(\u00e4":1,"b":"behind a long key"})",
    };
    std::size_t found = 0;
    for (const std::string& first : values)
    {
        for (const std::string& second : values)
        {
            for (const char* key : {"a", "b", "\\u0061"})
            {
                const std::string document = R"({"a":)" + first + ",\"" + key + "\":" + second + "}";
                const boost::json::value root = boost::json::parse(document);
                for (const auto& path : {std::vector<std::string_view>{"a"}, std::vector<std::string_view>{"a", "b"},
                                         std::vector<std::string_view>{"b", "b"}})
                {
                    std::string expected = "before";
                    std::string text = "before";
                    const bool isThere = path.size() == 1 ? ReadStringNode(root, {path[0]}, expected)
                                                          : ReadStringNode(root, {path[0], path[1]}, expected);
                    const bool read = path.size() == 1 ? ReadStringNode(document, {path[0]}, text)
                                                       : ReadStringNode(document, {path[0], path[1]}, text);
                    EXPECT_EQ(read, isThere) << document;
                    EXPECT_EQ(text, expected) << document;
                    found += read ? 1U : 0U;
                }
            }
        }
    }
    EXPECT_GT(found, 300U);
}

} // namespace
